#include "runtime/detail/decode_position.h"

#include <climits>
#include <cstring>

#include "runtime/ber_decode.h"
#include "runtime/detail/element.h"

using Quillmark::detail::contents_end;
using Quillmark::detail::octets_left;
using Quillmark::detail::step_over;

namespace {

// Steps over headers and contents until `depth` elements of indefinite length have ended.
int leave_indefinite(ASN1CTXT* ctxt, uint32_t depth) {
    do {
        ASN1TAG tag;
        int length;
        const int status = xd_tag_len(ctxt, &tag, &length, XM_ADVANCE);
        if (status != RT_OK) {
            return status;
        }
        if (length == RT_INDEFLEN) {
            ++depth;
        } else if (tag == 0 && length == 0) {
            --depth;
        }
        step_over(ctxt, length);
    } while (depth > 0);
    return RT_OK;
}

// A context for reading alone: it allocates nothing.
struct Reader : ASN1CTXT {
    Reader() : ASN1CTXT{} { magic = RT_MAGIC; }
};

// Of an element with one identifier octet and one or two further length octets at most, as nearly all have;
// 0 for any other, and for one that is not all there.
int plain_size(const uint8_t* data, uint32_t available) {
    constexpr uint8_t kLongNumber = 0x1F;
    if (available < 4 || (data[0] & kLongNumber) == kLongNumber) {
        return 0;
    }
    uint32_t size = 0;
    if (data[1] < 0x80) {
        size = 2u + data[1];
    } else if (data[1] == 0x81) {
        size = 3u + data[2];
    } else if (data[1] == 0x82) {
        size = 4u + (uint32_t{data[2]} << 8 | data[3]);
    }
    return size <= available ? static_cast<int>(size) : 0;
}

int indefinite_size(Reader& reader) {
    const int status = leave_indefinite(&reader, 0);
    return status == RT_OK ? static_cast<int>(reader.buffer.byteIndex) : status;
}

}  // namespace

int Quillmark::detail::element_size(const uint8_t* data, uint32_t available) {
    if (available > INT_MAX) {
        return RT_E_INVLEN;
    }
    if (const int size = plain_size(data, available); size != 0) {
        return size;
    }
    Reader reader;
    int total;
    const int status = xd_setp(&reader, data, static_cast<int>(available), nullptr, &total);
    if (status != RT_OK || total != RT_INDEFLEN) {
        return status == RT_OK ? total : status;
    }
    return indefinite_size(reader);
}

extern "C" {

int xd_memcpy(ASN1CTXT* ctxt, uint8_t* dest, size_t count) {
    if (count > octets_left(ctxt)) {
        return RT_E_ENDOFBUF;
    }
    if (count != 0) {
        std::memcpy(dest, ctxt->buffer.data + ctxt->buffer.byteIndex, count);
        ctxt->buffer.byteIndex += static_cast<uint32_t>(count);
    }
    return RT_OK;
}

int xd_count(ASN1CTXT* ctxt, int length, int* countOut) {
    const ASN1BUFFER before = ctxt->buffer;
    int count = 0;
    if (length >= 1 || length == RT_INDEFLEN) {
        while (!contents_end(ctxt, before.byteIndex, length)) {
            const int status = xd_NextElement(ctxt);
            if (status != RT_OK) {
                return status;
            }
            ++count;
        }
    }
    ctxt->buffer = before;
    *countOut = count;
    return RT_OK;
}

int xd_NextElement(ASN1CTXT* ctxt) {
    ASN1TAG tag;
    int length;
    const int status = xd_tag_len(ctxt, &tag, &length, XM_ADVANCE);
    if (status != RT_OK) {
        return status;
    }
    if (length == RT_INDEFLEN) {
        return xd_MovePastEOC(ctxt);
    }
    step_over(ctxt, length);
    return RT_OK;
}

int xd_MovePastEOC(ASN1CTXT* ctxt) {
    return leave_indefinite(ctxt, 1);
}

int xd_indeflen_ex(const uint8_t* msg, int bufSize) {
    if (msg == nullptr) {
        return RT_E_INVPARAM;
    }
    if (bufSize < 5) {
        return 0;
    }
    Reader reader;
    int total;
    const int status = xd_setp(&reader, msg, bufSize, nullptr, &total);
    if (status != RT_OK) {
        return status;
    }
    return total == RT_INDEFLEN ? indefinite_size(reader) : RT_E_INVLEN;
}

}  // extern "C"
