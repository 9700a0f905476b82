#pragma once

// The read position of a context: how much is left, where contents end, stepping on. The position can lie
// behind the end of the buffer, since a length of the short form is not held against it, so nothing here
// subtracts before it has compared. All inline, for generated code too.

#include <cstdint>

#include "runtime/ber_decode.h"
#include "runtime/context.h"

namespace Quillmark::detail {

inline bool at_end(const ASN1CTXT* ctxt) {
    return ctxt->buffer.byteIndex >= ctxt->buffer.size;
}

inline uint32_t octets_left(const ASN1CTXT* ctxt) {
    return at_end(ctxt) ? 0 : ctxt->buffer.size - ctxt->buffer.byteIndex;
}

/// The octet at the position; only when it is not the end.
inline uint8_t next_octet(const ASN1CTXT* ctxt) {
    return ctxt->buffer.data[ctxt->buffer.byteIndex];
}

/// Where contents of `length` octets at the position would lie, null when the buffer does not hold so many.
inline const uint8_t* contents_here(const ASN1CTXT* ctxt, uint32_t length) {
    return length <= octets_left(ctxt) ? ctxt->buffer.data + ctxt->buffer.byteIndex : nullptr;
}

/// Moves on by a length that was read; saturates, and does not move for a length that is no count.
inline void step_over(ASN1CTXT* ctxt, int length) {
    if (length <= 0) {
        return;
    }
    const uint32_t room = UINT32_MAX - ctxt->buffer.byteIndex;
    const uint32_t count = static_cast<uint32_t>(length);
    ctxt->buffer.byteIndex += count < room ? count : room;
}

/// End-of-contents octets (X.690 8.1.5) at the position.
inline bool at_end_of_contents_octets(const ASN1CTXT* ctxt) {
    const uint8_t* octets = contents_here(ctxt, 2);
    return octets != nullptr && octets[0] == 0 && octets[1] == 0;
}

/// Whether the contents of an element are used up: `start` is the position of their first octet, `length`
/// theirs. In the indefinite form fewer than two octets left are the end as well.
inline bool contents_end(const ASN1CTXT* ctxt, uint32_t start, int length) {
    if (length == RT_INDEFLEN) {
        return octets_left(ctxt) < 2 || at_end_of_contents_octets(ctxt);
    }
    return at_end(ctxt) || static_cast<int64_t>(ctxt->buffer.byteIndex) - start >= length;
}

/// Whether the last identifier octet read announced the constructed form.
inline bool last_was_constructed(const ASN1CTXT* ctxt) {
    return (ctxt->flags & RT_F_CONSTAG) != 0;
}

inline void note_form(ASN1CTXT* ctxt, uint8_t identifier) {
    ctxt->flags = static_cast<uint16_t>((identifier & 0x20) != 0 ? ctxt->flags | RT_F_CONSTAG
                                                                 : ctxt->flags & ~RT_F_CONSTAG);
}

/// Reads the header that most elements have: this very identifier octet and a length of the short form. For
/// anything else it is false and moves nothing; the reader of all headers then tells what is there.
inline bool take_short_header(ASN1CTXT* ctxt, uint8_t identifier, int& length) {
    const uint8_t* octets = contents_here(ctxt, 2);
    if (octets == nullptr || octets[0] != identifier || octets[1] > 0x7F) {
        return false;
    }
    note_form(ctxt, identifier);
    ctxt->buffer.byteIndex += 2;
    length = octets[1];
    return true;
}

}  // namespace Quillmark::detail
