#pragma once

// DER out (X.690 10 and 11): the encoders of the universal types and of headers.
//
// A message is written from the end of its buffer towards the start, contents before header, so that every
// length is known when it is written. Encoders return the number of octets that they wrote, or a negative
// status; nothing is recorded in the context. With `ASN1EXPL` the universal tag and the length go in front of
// the contents, with `ASN1IMPL` the caller writes them. `xe_tag_len` hands a negative length straight back,
// so that calls chain without a test between them:
//
//     xe_setp(&ctxt, nullptr, 0);
//     int length = xe_tag_len(&ctxt, 0xA0000000, xe_integer(&ctxt, &value, ASN1EXPL));
//     // success: the message is xe_getp(&ctxt), `length` octets

#include <cstddef>
#include <cstdint>

#include "runtime/context.h"
#include "runtime/list.h"
#include "runtime/object_id.h"
#include "runtime/value_types.h"
#include "values/export.h"

/// Where an element of a SET OF lies in the encode buffer, for `xe_derCanonicalSort`.
struct ASN1BufLocDescr {
    uint32_t length;  ///< octets of the element, header included
    uint32_t offset;  ///< from the last octet of the buffer back to the first of the element
};

extern "C" {

/// Starts a message. A null `buffer` takes one of `size` octets (16384 when `size` is 0) from the heap, and
/// it grows as needed; a caller's buffer is fixed. The last octet of a buffer is never written, so a fixed
/// buffer carries `size` - 1 octets. Returns 0, `RT_E_NOTINIT`, `RT_E_NOMEM`, or `RT_E_INVPARAM` for a
/// caller's buffer without room or a negative size.
QUILLMARK_API int xe_setp(ASN1CTXT* ctxt, uint8_t* buffer, int size);
/// The first octet of what has been written.
QUILLMARK_API uint8_t* xe_getp(ASN1CTXT* ctxt);
/// Writes `count` octets in front of what is there. Returns `count`, `RT_E_BADVALUE` for null, `RT_E_BUFOVFL`
/// when a fixed buffer is full, or `RT_E_NOMEM`.
QUILLMARK_API int xe_memcpy(ASN1CTXT* ctxt, const uint8_t* bytes, size_t count);
/// Makes a dynamic buffer larger by `needed` octets, at least 16384. Returns 0, `RT_E_BUFOVFL` for a fixed
/// buffer, or `RT_E_NOMEM`.
QUILLMARK_API int xe_expandBuffer(ASN1CTXT* ctxt, size_t needed);
/// Gives a dynamic buffer back to the heap.
QUILLMARK_API void xe_free(ASN1CTXT* ctxt);

/// Writes identifier octets (X.690 8.1.2).
QUILLMARK_API int xe_tag(ASN1CTXT* ctxt, ASN1TAG tag);
/// Writes length octets in the shortest form (X.690 10.1). `RT_INDEFLEN` writes the octet 80, any other
/// negative length nothing.
QUILLMARK_API int xe_len(ASN1CTXT* ctxt, int length);
/// Puts a header in front of `length` octets of contents. Returns contents and header together. A negative
/// `length` other than `RT_INDEFLEN` is taken for the status of the contents' encoder and comes back.
QUILLMARK_API int xe_tag_len(ASN1CTXT* ctxt, ASN1TAG tag, int length);
/// Writes one subidentifier of an OBJECT IDENTIFIER (X.690 8.19.2).
QUILLMARK_API int xe_identifier(ASN1CTXT* ctxt, uint32_t value);

// All that take a pointer to a value return `RT_E_BADVALUE` for null unless they say otherwise.

/// Writes FF for any octet but 0 (X.690 11.1).
QUILLMARK_API int xe_boolean(ASN1CTXT* ctxt, const uint8_t* value, ASN1TagType tagging);
QUILLMARK_API int xe_integer(ASN1CTXT* ctxt, const int32_t* value, ASN1TagType tagging);
QUILLMARK_API int xe_unsigned(ASN1CTXT* ctxt, const uint32_t* value, ASN1TagType tagging);
QUILLMARK_API int xe_uint16(ASN1CTXT* ctxt, const uint16_t* value, ASN1TagType tagging);
QUILLMARK_API int xe_enum(ASN1CTXT* ctxt, const int32_t* value, ASN1TagType tagging);
QUILLMARK_API int xe_null(ASN1CTXT* ctxt, ASN1TagType tagging);
/// Null `bytes` are an empty string.
QUILLMARK_API int xe_octstr(ASN1CTXT* ctxt, const uint8_t* bytes, uint32_t count, ASN1TagType tagging);
/// `RT_E_INVOBJID` for null, fewer than two or more than 128 arcs, a first arc above 2, a second above 39
/// under 0 and 1, or a first subidentifier above 32 bits.
QUILLMARK_API int xe_objid(ASN1CTXT* ctxt, const ASN1OBJID* value, ASN1TagType tagging);

/// Writes a NUL-terminated string under any tag.
QUILLMARK_API int xe_charstr(ASN1CTXT* ctxt, const char* text, ASN1TagType tagging, ASN1TAG tag);
QUILLMARK_API int xe_16BitCharStr(ASN1CTXT* ctxt, const ASN1_16BITCHARSTRING* value, ASN1TagType tagging,
                                  ASN1TAG tag);
QUILLMARK_API int xe_32BitCharStr(ASN1CTXT* ctxt, const ASN1_32BITCHARSTRING* value, ASN1TagType tagging,
                                  ASN1TAG tag);
/// Writes the octets as they stand: a caller that wants DER holds the unused bits of the last one at 0
/// (X.690 11.2.1). Null `data` with bits announced writes nothing and returns 0.
QUILLMARK_API int xe_bitstr(ASN1CTXT* ctxt, const uint8_t* data, uint32_t numbits, ASN1TagType tagging);

/// Writes one complete element. Octets behind the element are dropped. An element that already lies at the
/// write position is not copied: its length is returned. Returns 0 for no octets, `RT_E_BADVALUE` for null,
/// or the status of reading the element.
QUILLMARK_API int xe_OpenType(ASN1CTXT* ctxt, const uint8_t* data, uint32_t numocts);
/// Writes the elements of a list of `ASN1OpenType`. Records a failure.
QUILLMARK_API int xe_OpenTypeExt(ASN1CTXT* ctxt, const _Asn1RTDList* list);

/// Writes an INTEGER given as text: decimal, or two's complement digits behind "0x" or "0b". Digits that fill
/// whole octets and begin with a set bit are negative. `RT_E_BADVALUE` for anything else.
QUILLMARK_API int xe_bigint(ASN1CTXT* ctxt, const char* text, ASN1TagType tagging);
/// The same for a magnitude: "0", "0x" or "0b" forms only, and no octet 00 is put in front of a set top bit
/// unless the text has leading zeros.
QUILLMARK_API int xe_biguint(ASN1CTXT* ctxt, const char* text, ASN1TagType tagging);

/// Notes the element of `length` octets that begins at the write position.
QUILLMARK_API void xe_getBufLocDescr(ASN1CTXT* ctxt, uint32_t length, ASN1BufLocDescr* descr);
/// Puts the elements of a SET OF, just written, into ascending order (X.690 11.6). `list` holds their
/// `ASN1BufLocDescr` in the order of writing, on `typeHeap`; records and nodes are freed. Returns the octets
/// of all elements, or `RT_E_NOMEM`.
QUILLMARK_API int xe_derCanonicalSort(ASN1CTXT* ctxt, rtSList* list);

}  // extern "C"
