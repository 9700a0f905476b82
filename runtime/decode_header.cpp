#include <algorithm>
#include <climits>
#include <cstring>

#include "runtime/ber_decode.h"
#include "runtime/detail/decode_position.h"

using Quillmark::detail::at_end;
using Quillmark::detail::last_was_constructed;
using Quillmark::detail::next_octet;
using Quillmark::detail::note_form;
using Quillmark::detail::octets_left;
using Quillmark::detail::step_over;

namespace {

constexpr ASN1TAG kLargestNumber = 0x1FFFFFFF;
constexpr ASN1TAG kConstructed = 0x20000000;
constexpr uint8_t kFormBit = 0x20;
constexpr int kMostNumberOctets = 9;
constexpr uint32_t kMostLengthOctets = 4;

bool end_announced(const ASN1CTXT* ctxt) {
    constexpr uint16_t kBoth = RT_F_INDEFLEN | RT_F_LASTEOC;
    return (ctxt->flags & kBoth) == kBoth;
}

ASN1BUFSAVE state_of(const ASN1CTXT* ctxt) {
    return {.byteIndex = ctxt->buffer.byteIndex, .bitOffset = ctxt->buffer.bitOffset, .flags = ctxt->flags};
}

// X.690 8.1.2.4.2: the number in base 128, the last octet with the top bit clear.
int read_long_number(ASN1CTXT* ctxt, ASN1TAG& number) {
    number = 0;
    for (int count = 0; count < kMostNumberOctets; ++count) {
        if (at_end(ctxt)) {
            return RT_E_ENDOFBUF;
        }
        const uint8_t octet = next_octet(ctxt);
        ++ctxt->buffer.byteIndex;
        if (number > kLargestNumber >> 7) {
            return RT_E_BADTAG;
        }
        number = number << 7 | (octet & 0x7F);
        if ((octet & 0x80) == 0) {
            return RT_OK;
        }
    }
    return RT_E_BADTAG;
}

int read_tag(ASN1CTXT* ctxt, ASN1TAG& tag) {
    if (at_end(ctxt)) {
        return RT_E_ENDOFBUF;
    }
    const uint8_t octet = next_octet(ctxt);
    ++ctxt->buffer.byteIndex;
    note_form(ctxt, octet);
    ASN1TAG number = octet & 0x1F;
    if (number == 0x1F) {
        const int status = read_long_number(ctxt, number);
        if (status != RT_OK) {
            return status;
        }
    }
    tag = ASN1TAG{octet & 0xE0u} << 24 | number;
    return RT_OK;
}

int read_long_length(ASN1CTXT* ctxt, int& length) {
    const uint32_t count = next_octet(ctxt) & 0x7F;
    ++ctxt->buffer.byteIndex;
    if (count == 0) {
        length = RT_INDEFLEN;
        return RT_OK;
    }
    if (count > kMostLengthOctets) {
        return RT_E_INVLEN;
    }
    if (count > octets_left(ctxt)) {
        ctxt->buffer.byteIndex = ctxt->buffer.size;
        return RT_E_ENDOFBUF;
    }
    uint32_t assembled = 0;
    for (uint32_t i = 0; i < count; ++i) {
        assembled = assembled << 8 | next_octet(ctxt);  // at most four octets, so no bit is lost
        ++ctxt->buffer.byteIndex;
    }
    length = static_cast<int>(assembled);
    // Intended: 84 FF FF D8 F1 assembles to RT_INDEFLEN and is taken for it.
    if (length == RT_INDEFLEN || (ctxt->flags & RT_F_NOLENCHECK) != 0) {
        return RT_OK;
    }
    return length < 0 || assembled > octets_left(ctxt) ? RT_E_INVLEN : RT_OK;
}

// Intended: a length of the short form is not held against the octets left; the decoder of the value does
// that.
int read_length(ASN1CTXT* ctxt, int& length) {
    length = 0;
    if (at_end(ctxt)) {
        return RT_E_ENDOFBUF;
    }
    if ((next_octet(ctxt) & 0x80) != 0) {
        return read_long_length(ctxt, length);
    }
    length = next_octet(ctxt);
    ++ctxt->buffer.byteIndex;
    return RT_OK;
}

int read_header(ASN1CTXT* ctxt, ASN1TAG& tag, int& length) {
    if (end_announced(ctxt) || at_end(ctxt)) {
        return RT_E_ENDOFBUF;
    }
    ctxt->savedState = state_of(ctxt);
    int status = read_tag(ctxt, tag);
    if (status != RT_OK) {
        return status;
    }
    status = read_length(ctxt, length);
    if (status == RT_OK && length == RT_INDEFLEN && (tag & kConstructed) == 0) {
        return RT_E_INVLEN;
    }
    return status;
}

bool same_tag(ASN1TAG a, ASN1TAG b) {
    return ((a ^ b) & ~kConstructed) == 0;
}

int end_as_not_found(int status) {
    return status == RT_E_ENDOFBUF ? RT_E_IDNOTFOUND : status;
}

// Leaves the element whose header was just read: a constructed one is entered.
void leave_header(ASN1CTXT* ctxt, int length) {
    if (!last_was_constructed(ctxt)) {
        step_over(ctxt, length);
    }
}

int skip_current(ASN1CTXT* ctxt) {
    const ASN1BUFSAVE before = state_of(ctxt);
    ASN1TAG tag;
    int length;
    const int status = read_header(ctxt, tag, length);
    if (status != RT_OK) {
        xu_RestoreBufferState(ctxt, &before);
        return end_as_not_found(status);
    }
    leave_header(ctxt, length);
    return RT_OK;
}

// Reads headers up to the one with `tag`; without `seek` the first must be it.
int find_header(ASN1CTXT* ctxt, ASN1TAG tag, int& length, bool seek) {
    for (;;) {
        ASN1TAG found;
        const int status = read_header(ctxt, found, length);
        if (status != RT_OK) {
            return end_as_not_found(status);
        }
        if (same_tag(found, tag)) {
            return RT_OK;
        }
        if (!seek) {
            return RT_E_IDNOTFOUND;
        }
        leave_header(ctxt, length);
    }
}

}  // namespace

extern "C" {

int xd_setp(ASN1CTXT* ctxt, const uint8_t* msg, int msgLength, ASN1TAG* tagOut, int* lengthOut) {
    const uint32_t limit = msgLength < 1 ? 0x7FFFFFFF : static_cast<uint32_t>(msgLength);
    int status = rtInitContextBuffer(ctxt, msg, limit);
    if (status != RT_OK) {
        return status;
    }
    if (msg == nullptr) {
        std::memset(ctxt->buffer.data, 0, limit);
    }
    ctxt->flags = static_cast<uint16_t>(ctxt->flags & ~(RT_F_INDEFLEN | RT_F_LASTEOC));
    ASN1TAG tag;
    int length;
    status = read_header(ctxt, tag, length);
    if (status != RT_OK) {
        if (status == RT_E_INVLEN) {
            ctxt->buffer.byteIndex = 0;
        }
        return status;
    }
    int total = RT_INDEFLEN;
    if (length == RT_INDEFLEN) {
        ctxt->flags = static_cast<uint16_t>(ctxt->flags | RT_F_INDEFLEN);
    } else {
        const int64_t end = int64_t{ctxt->buffer.byteIndex} + static_cast<uint32_t>(length);
        total = static_cast<int>(std::min<int64_t>(end, INT_MAX));
        if (end <= limit) {
            ctxt->buffer.size = static_cast<uint32_t>(end);
        } else if ((ctxt->flags & RT_F_NOLENCHECK) == 0) {
            return RT_E_INVLEN;
        }
    }
    ctxt->buffer.byteIndex = 0;
    if (tagOut != nullptr) {
        *tagOut = tag;
    }
    if (lengthOut != nullptr) {
        *lengthOut = total;
    }
    return RT_OK;
}

int xd_tag(ASN1CTXT* ctxt, ASN1TAG* tagOut) {
    return read_tag(ctxt, *tagOut);
}

int xd_len(ASN1CTXT* ctxt, int* lengthOut) {
    return read_length(ctxt, *lengthOut);
}

int xd_tag_len(ASN1CTXT* ctxt, ASN1TAG* tagOut, int* lengthOut, int mode) {
    const uint32_t position = ctxt->buffer.byteIndex;
    const uint16_t flags = ctxt->flags;
    const int status = read_header(ctxt, *tagOut, *lengthOut);
    if ((mode & XM_ADVANCE) == 0) {
        ctxt->buffer.byteIndex = position;
        ctxt->flags = flags;
    }
    return status;
}

int xd_Tag1AndLen(ASN1CTXT* ctxt, int* lengthOut) {
    if (end_announced(ctxt) || at_end(ctxt)) {
        return RT_E_ENDOFBUF;
    }
    note_form(ctxt, next_octet(ctxt));
    ++ctxt->buffer.byteIndex;
    return read_length(ctxt, *lengthOut);
}

int xd_match1(ASN1CTXT* ctxt, uint8_t tagByte, int* lengthOut) {
    if (at_end(ctxt)) {
        return rtErrSetData(&ctxt->errInfo, RT_E_ENDOFBUF);
    }
    const uint8_t identifier = next_octet(ctxt);
    // Intended: either form passes, a primitive 10 for a SEQUENCE too.
    if (((identifier ^ tagByte) & ~kFormBit) != 0) {
        return rtErrSetData(&ctxt->errInfo, RT_E_IDNOTFOUND);
    }
    ++ctxt->buffer.byteIndex;
    note_form(ctxt, identifier);
    int length;
    const int status = read_length(ctxt, length);
    if (status != RT_OK) {
        return rtErrSetData(&ctxt->errInfo, status);
    }
    if (lengthOut == nullptr) {
        return RT_OK;
    }
    if (length == RT_INDEFLEN && (identifier & kFormBit) == 0) {
        return rtErrSetData(&ctxt->errInfo, RT_E_INVLEN);
    }
    *lengthOut = length;
    return RT_OK;
}

int xd_match(ASN1CTXT* ctxt, ASN1TAG tag, int* lengthOut, int mode) {
    if ((mode & XM_SKIP) != 0) {
        const int status = skip_current(ctxt);
        if (status != RT_OK) {
            return status;
        }
    }
    const ASN1BUFSAVE before = state_of(ctxt);
    int length;
    const int status = find_header(ctxt, tag, length, (mode & XM_SEEK) != 0);
    if (status != RT_OK) {
        xu_RestoreBufferState(ctxt, &before);
        return status;
    }
    if (lengthOut != nullptr) {
        *lengthOut = length;
    }
    if ((mode & XM_ADVANCE) == 0) {
        xu_RestoreBufferState(ctxt, nullptr);
    }
    return RT_OK;
}

void xu_SaveBufferState(ASN1CTXT* ctxt, ASN1BUFSAVE* state) {
    *(state != nullptr ? state : &ctxt->savedState) = state_of(ctxt);
}

void xu_RestoreBufferState(ASN1CTXT* ctxt, const ASN1BUFSAVE* state) {
    const ASN1BUFSAVE& saved = state != nullptr ? *state : ctxt->savedState;
    ctxt->buffer.byteIndex = saved.byteIndex;
    ctxt->buffer.bitOffset = saved.bitOffset;
    ctxt->flags = static_cast<uint16_t>(saved.flags & ~RT_F_LASTEOC);
}

}  // extern "C"
