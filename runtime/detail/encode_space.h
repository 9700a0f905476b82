#pragma once

// Room in front of what has been written, taken with one bounds test for all octets of a primitive.
// All inline, for generated code too.

#include <cstddef>
#include <cstdint>

#include "runtime/context.h"
#include "runtime/der_encode.h"

namespace Quillmark::detail {

/// Moves the write position back by `count` octets and points `octets` at the first of them. Returns 0 or the
/// status of `xe_expandBuffer`, with nothing moved.
inline int take_front(ASN1CTXT* ctxt, uint8_t*& octets, size_t count) {
    if (ctxt->buffer.byteIndex < count) {
        const int status = xe_expandBuffer(ctxt, count);
        if (status != RT_OK) {
            return status;
        }
    }
    ctxt->buffer.byteIndex -= static_cast<uint32_t>(count);
    octets = ctxt->buffer.data + ctxt->buffer.byteIndex;
    return RT_OK;
}

inline constexpr ASN1TAG kTagNumber = 0x1FFFFFFF;

/// Whether identifier and length take one octet each.
inline bool is_short_header(ASN1TAG tag, int length) {
    return (tag & kTagNumber) <= 30 && length >= 0 && length <= 0x7F;
}

/// `xe_tag_len`, with the short header inline.
inline int write_header(ASN1CTXT* ctxt, ASN1TAG tag, int length) {
    if (!is_short_header(tag, length)) {
        return xe_tag_len(ctxt, tag, length);
    }
    uint8_t* octets;
    const int status = take_front(ctxt, octets, 2);
    if (status != RT_OK) {
        return status;
    }
    octets[0] = static_cast<uint8_t>(tag >> 24 | (tag & kTagNumber));
    octets[1] = static_cast<uint8_t>(length);
    return length + 2;
}

/// The universal header in front of a value when `tagging` asks for it.
inline int finish_value(ASN1CTXT* ctxt, ASN1TAG tag, ASN1TagType tagging, int length) {
    return tagging == ASN1EXPL ? write_header(ctxt, tag, length) : length;
}

}  // namespace Quillmark::detail
