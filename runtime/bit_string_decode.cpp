// BIT STRING (X.690 8.6): one octet that counts the unused bits of the last octet, then the bits.

#include <cstring>

#include "runtime/ber_decode.h"
#include "runtime/detail/decode_position.h"
#include "runtime/detail/nesting.h"

using Quillmark::detail::at_end_of_contents_octets;
using Quillmark::detail::contents_end;
using Quillmark::detail::contents_here;
using Quillmark::detail::last_was_constructed;
using Quillmark::detail::NestingLevel;
using Quillmark::detail::octets_left;

namespace {

constexpr uint8_t kBitString = 3;
constexpr unsigned kMostUnusedBits = 7;
constexpr uint64_t kMostOctets = UINT32_MAX / 8;  // their bits are counted in 32 bits

int record(ASN1CTXT* ctxt, int status) {
    return status == RT_OK ? RT_OK : rtErrSetData(&ctxt->errInfo, status);
}

uint64_t octets_of(uint32_t numbits) {
    return (uint64_t{numbits} + 7) / 8;
}

int count_bits(uint64_t octets, unsigned unused, uint32_t& numbits) {
    if (unused > kMostUnusedBits) {
        return RT_E_BADVALUE;
    }
    if (octets > kMostOctets || (octets == 0 && unused != 0)) {
        return RT_E_INVLEN;
    }
    numbits = static_cast<uint32_t>(octets * 8 - unused);
    return RT_OK;
}

int read_primitive(ASN1CTXT* ctxt, uint8_t* data, uint64_t room, uint32_t& numbits, int length) {
    if (length < 0) {
        return RT_E_INVLEN;
    }
    if (length == 0) {
        numbits = 0;
        return RT_OK;
    }
    uint8_t unused;
    int status = xd_memcpy(ctxt, &unused, 1);
    if (status != RT_OK) {
        return status;
    }
    const uint32_t octets = static_cast<uint32_t>(length) - 1;
    if (octets == 0 && unused != 0) {
        return RT_E_INVLEN;
    }
    status = count_bits(octets, unused, numbits);
    if (status != RT_OK) {
        return status;
    }
    return octets > room ? RT_E_STROVFL : xd_memcpy(ctxt, data, octets);
}

// The segments of a constructed string, joined in the caller's array.
// Intended: the unused-bits octet of every segment but the last becomes data.
class Segments {
  public:
    Segments(uint8_t* data, uint64_t room) : data_(data), room_(room) {}

    int append(ASN1CTXT* ctxt, uint32_t length);
    int finish(uint32_t& numbits);

  private:
    uint8_t* data_;
    uint64_t room_;
    uint64_t used_ = 0;
    uint64_t last_start_ = 0;
    bool empty_ = true;
    bool unused_taken_ = false;
    uint8_t unused_ = 0;
};

int Segments::append(ASN1CTXT* ctxt, uint32_t length) {
    const uint8_t* octets = contents_here(ctxt, length);
    if (octets == nullptr) {
        return RT_E_ENDOFBUF;
    }
    const uint64_t left = room_ - used_;
    if (length > left + 1) {
        return RT_E_STROVFL;
    }
    ctxt->buffer.byteIndex += length;
    empty_ = false;
    last_start_ = used_;
    // One octet too many: the array is full but for the unused-bits octet, so this is the last segment.
    unused_taken_ = length == left + 1;
    if (unused_taken_) {
        unused_ = *octets++;
        --length;
    }
    if (length != 0) {
        std::memcpy(data_ + used_, octets, length);
    }
    used_ += length;
    return RT_OK;
}

int Segments::finish(uint32_t& numbits) {
    if (empty_) {
        numbits = 0;
        return RT_OK;
    }
    if (!unused_taken_) {
        if (used_ == last_start_) {
            return RT_E_INVLEN;  // not even the unused-bits octet
        }
        unused_ = data_[last_start_];
        --used_;
        std::memmove(data_ + last_start_, data_ + last_start_ + 1, used_ - last_start_);
    }
    return count_bits(used_, unused_, numbits);
}

int collect_segments(ASN1CTXT* ctxt, Segments& segments, int length) {
    const NestingLevel level(ctxt);
    if (level.too_deep()) {
        return RT_E_NOTSUPP;
    }
    const uint32_t start = ctxt->buffer.byteIndex;
    while (!contents_end(ctxt, start, length)) {
        int part;
        int status = xd_match1(ctxt, kBitString, &part);
        if (status != RT_OK) {
            return status;
        }
        if (part < 0) {
            return RT_E_INVLEN;
        }
        status = last_was_constructed(ctxt) ? collect_segments(ctxt, segments, part)
                                            : segments.append(ctxt, static_cast<uint32_t>(part));
        if (status != RT_OK) {
            return status;
        }
    }
    if (length == RT_INDEFLEN) {
        return at_end_of_contents_octets(ctxt) ? RT_OK : RT_E_ENDOFBUF;
    }
    return int64_t{ctxt->buffer.byteIndex} - start == length ? RT_OK : RT_E_INVLEN;
}

// End-of-contents octets are left.
int read_bits(ASN1CTXT* ctxt, uint8_t* data, uint64_t room, uint32_t& numbits, int length) {
    if (!last_was_constructed(ctxt)) {
        return read_primitive(ctxt, data, room, numbits, length);
    }
    Segments segments(data, room);
    const int status = collect_segments(ctxt, segments, length);
    return status == RT_OK ? segments.finish(numbits) : status;
}

// The same with the end-of-contents octets.
int read_contents(ASN1CTXT* ctxt, uint8_t* data, uint64_t room, uint32_t& numbits, int length) {
    const int status = read_bits(ctxt, data, room, numbits, length);
    if (status == RT_OK && length == RT_INDEFLEN) {
        ctxt->buffer.byteIndex += 2;  // collect_segments has stopped at them
    }
    return status;
}

// A string of no bits, which needs no memory.
int read_empty(ASN1CTXT* ctxt, int length) {
    uint32_t numbits;
    if (length == RT_INDEFLEN) {
        return read_contents(ctxt, nullptr, 0, numbits, length);
    }
    return length == 1 ? read_primitive(ctxt, nullptr, 0, numbits, length) : RT_OK;
}

int lend_bits(ASN1CTXT* ctxt, const uint8_t** data, uint32_t& numbits, uint32_t count) {
    const uint8_t* contents = contents_here(ctxt, count);
    const int status = count_bits(count - 1, contents[0], numbits);
    if (status != RT_OK) {
        return status;
    }
    *data = contents + 1;
    ctxt->buffer.byteIndex += count;
    return RT_OK;
}

int read_new_bits(ASN1CTXT* ctxt, const uint8_t** data, uint32_t& numbits, uint32_t room, int length) {
    uint8_t* block = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt->typeHeap, room));
    if (block == nullptr) {
        return RT_E_NOMEM;
    }
    const int status = read_contents(ctxt, block, room, numbits, length);
    if (status != RT_OK) {
        rtMemHeapFreePtr(&ctxt->typeHeap, block);
        return status;
    }
    *data = block;
    return RT_OK;
}

int read_bit_string(ASN1CTXT* ctxt, const uint8_t** data, uint32_t* numbits, int length) {
    const bool constructed = last_was_constructed(ctxt);
    uint32_t count = length > 0 ? static_cast<uint32_t>(length) : 0;
    if (length == RT_INDEFLEN) {
        uint32_t total;
        const int status = xd_consStrIndefLenAndSize(ctxt, kBitString, &count, &total);
        if (status != RT_OK) {
            return status;
        }
    } else if (!constructed && count > octets_left(ctxt)) {
        return RT_E_ENDOFBUF;  // before memory is taken for it
    }
    *data = nullptr;
    *numbits = 0;
    if (count < 2) {
        return read_empty(ctxt, length);
    }
    uint32_t bits = 0;
    const bool lend = (ctxt->flags & RT_F_FASTCOPY) != 0 && !constructed && length > 0;
    const int status =
        lend ? lend_bits(ctxt, data, bits, count) : read_new_bits(ctxt, data, bits, count - 1, length);
    if (status == RT_OK) {
        *numbits = bits;
    }
    return status;
}

}  // namespace

extern "C" {

int xd_bitstr(ASN1CTXT* ctxt, const uint8_t** data, uint32_t* numbits, ASN1TagType tagging, int length) {
    if (tagging == ASN1EXPL) {
        const int status = xd_match1(ctxt, kBitString, &length);
        if (status != RT_OK) {
            return status;
        }
    }
    return record(ctxt, read_bit_string(ctxt, data, numbits, length));
}

int xd_bitstr_s(ASN1CTXT* ctxt, uint8_t* data, uint32_t* numbits, ASN1TagType tagging, int length) {
    if (tagging == ASN1EXPL) {
        const int status = xd_match1(ctxt, kBitString, &length);
        if (status != RT_OK) {
            return status;
        }
    }
    return record(ctxt, read_bits(ctxt, data, octets_of(*numbits), *numbits, length));
}

}  // extern "C"
