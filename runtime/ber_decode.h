#pragma once

// BER in (X.690 8): the decoders of the universal types and of headers. Every form of BER is accepted, and
// nothing is refused for not being DER.
//
// Decoders return 0 or a negative status and move `buffer.byteIndex`. With `ASN1EXPL` a decoder reads its
// universal tag and the length; with `ASN1IMPL` the caller has done so and gives the length of the contents,
// `RT_INDEFLEN` included. Values are placed on `typeHeap`. Nothing is read outside the message:
// running out of octets is `RT_E_ENDOFBUF`.
//
//     xd_setp(&ctxt, message, size, nullptr, nullptr);
//     int status = xd_integer(&ctxt, &value, ASN1EXPL, 0);

#include <cstddef>
#include <cstdint>

#include "runtime/context.h"
#include "runtime/list.h"
#include "runtime/object_id.h"
#include "runtime/value_types.h"
#include "values/export.h"

/// Mode bits of `xd_tag_len` and `xd_match`.
enum : int {
    XM_SEEK = 1,     ///< search on, depth first, until the tag is found
    XM_ADVANCE = 2,  ///< stay behind the header; without it the position comes back
    XM_SKIP =
        8  ///< first leave the element at the position: step over a primitive one, enter a constructed one
};

/// The enclosing element of an extension addition, for `xd_OpenTypeExt`.
struct ASN1ElementExtent {
    uint32_t start;  ///< `byteIndex` of the first octet of its contents
    int32_t length;  ///< of its contents, or `RT_INDEFLEN`
};

extern "C" {

/// Starts reading `msg`, of `msgLength` octets; below 1 the size is unknown and the message trusted. Reads
/// the first header, bounds the buffer by it and goes back to the start. `*tagOut` is the tag, `*lengthOut`
/// the octets of the whole message or `RT_INDEFLEN`; both may be null. `RT_E_INVLEN` when the message is
/// longer than `msgLength`: the position is then behind the header.
QUILLMARK_API int xd_setp(ASN1CTXT* ctxt, const uint8_t* msg, int msgLength, ASN1TAG* tagOut, int* lengthOut);

/// Reads identifier octets (X.690 8.1.2). `RT_E_BADTAG` for a number above 0x1FFFFFFF or more than nine
/// octets of it.
QUILLMARK_API int xd_tag(ASN1CTXT* ctxt, ASN1TAG* tagOut);
/// Reads length octets (X.690 8.1.3), at most four behind the first. A length of the long form must lie in
/// the buffer, else `RT_E_INVLEN`; the short form is left to the decoder of the value.
QUILLMARK_API int xd_len(ASN1CTXT* ctxt, int* lengthOut);
/// Reads a header. Without `XM_ADVANCE` in `mode` the position comes back. `savedState` is the state before
/// it.
QUILLMARK_API int xd_tag_len(ASN1CTXT* ctxt, ASN1TAG* tagOut, int* lengthOut, int mode);
/// Reads a header of which the caller has already compared the one identifier octet.
QUILLMARK_API int xd_Tag1AndLen(ASN1CTXT* ctxt, int* lengthOut);
/// Looks for an element by its tag, whatever its form. Returns 0 or `RT_E_IDNOTFOUND`, also at the end of
/// the buffer; the position then comes back.
QUILLMARK_API int xd_match(ASN1CTXT* ctxt, ASN1TAG tag, int* lengthOut, int mode);
/// Reads a header whose identifier octet must be `tagByte`, whatever its form. Records its failures, a
/// mismatch being `RT_E_IDNOTFOUND` with the position unchanged.
QUILLMARK_API int xd_match1(ASN1CTXT* ctxt, uint8_t tagByte, int* lengthOut);

/// Copies `count` octets out. `RT_E_ENDOFBUF` when so many are not left.
QUILLMARK_API int xd_memcpy(ASN1CTXT* ctxt, uint8_t* dest, size_t count);
/// Counts the elements of contents of `length` octets at the position, which comes back on success.
QUILLMARK_API int xd_count(ASN1CTXT* ctxt, int length, int* countOut);
/// Steps over one element.
QUILLMARK_API int xd_NextElement(ASN1CTXT* ctxt);
/// Steps behind the end-of-contents octets of the element of indefinite length whose contents begin at the
/// position.
QUILLMARK_API int xd_MovePastEOC(ASN1CTXT* ctxt);
/// The octets of a message of indefinite outer length in a buffer of `bufSize`, 0 when `bufSize` is below 5,
/// `RT_E_INVLEN` when the length is definite.
QUILLMARK_API int xd_indeflen_ex(const uint8_t* msg, int bufSize);

/// The octet is stored as it is read.
QUILLMARK_API int xd_boolean(ASN1CTXT* ctxt, uint8_t* value, ASN1TagType tagging, int length);
/// `RT_E_TOOBIG` for more than four octets, `RT_E_INVLEN` for none.
QUILLMARK_API int xd_integer(ASN1CTXT* ctxt, int32_t* value, ASN1TagType tagging, int length);
/// The contents are taken for a magnitude; no octets are 0. `RT_E_TOOBIG` above 32 bits.
QUILLMARK_API int xd_unsigned(ASN1CTXT* ctxt, uint32_t* value, ASN1TagType tagging, int length);
/// The same for 16 bits; no octets take one all the same.
QUILLMARK_API int xd_uint16(ASN1CTXT* ctxt, uint16_t* value, ASN1TagType tagging, int length);
QUILLMARK_API int xd_enum(ASN1CTXT* ctxt, int32_t* value, ASN1TagType tagging, int length);
QUILLMARK_API int xd_null(ASN1CTXT* ctxt, ASN1TagType tagging);
/// Reads an OBJECT IDENTIFIER (X.690 8.19), at most 128 arcs of 32 bits: larger ones wrap. `RT_E_INVOBJID`
/// for more arcs, with `numids` 128 left in `value`.
QUILLMARK_API int xd_objid(ASN1CTXT* ctxt, ASN1OBJID* value, ASN1TagType tagging, int length);

/// Reads a string of 8-bit characters under any tag; `*text` is NUL-terminated and never null.
QUILLMARK_API int xd_charstr(ASN1CTXT* ctxt, char** text, ASN1TagType tagging, ASN1TAG tag, int length);
/// An octet that does not make a whole character is dropped. No characters are null `data`.
QUILLMARK_API int xd_16BitCharStr(ASN1CTXT* ctxt, ASN1_16BITCHARSTRING* value, ASN1TagType tagging,
                                  ASN1TAG tag, int length);
QUILLMARK_API int xd_32BitCharStr(ASN1CTXT* ctxt, ASN1_32BITCHARSTRING* value, ASN1TagType tagging,
                                  ASN1TAG tag, int length);
/// With `RT_F_FASTCOPY` a primitive string is not copied: `*data` points into the message.
QUILLMARK_API int xd_octstr(ASN1CTXT* ctxt, const uint8_t** data, uint32_t* numocts, ASN1TagType tagging,
                            int length);
/// Into a caller's array: `*numocts` is its room before and the octets read after. `RT_E_STROVFL` when it is
/// too small. Of a string of indefinite length the end-of-contents octets are left unread.
QUILLMARK_API int xd_octstr_s(ASN1CTXT* ctxt, uint8_t* data, uint32_t* numocts, ASN1TagType tagging,
                              int length);
/// With `RT_F_FASTCOPY` a primitive string is not copied: `*data` points into the message.
QUILLMARK_API int xd_bitstr(ASN1CTXT* ctxt, const uint8_t** data, uint32_t* numbits, ASN1TagType tagging,
                            int length);
/// Into a caller's array: `*numbits` is its room before, which counts whole octets, and the bits read after.
QUILLMARK_API int xd_bitstr_s(ASN1CTXT* ctxt, uint8_t* data, uint32_t* numbits, ASN1TagType tagging,
                              int length);
/// Measures the contents of a string of indefinite length without moving: `*count` octets of its segments,
/// `*total` with their headers. `RT_E_BADTAG` for a segment that is not a primitive `tag`.
QUILLMARK_API int xd_consStrIndefLenAndSize(ASN1CTXT* ctxt, ASN1TAG tag, uint32_t* count, uint32_t* total);

/// Takes one element whole, header and end-of-contents octets included. The end of the buffer is success
/// without an element: `*numocts` 0, null `*data`. `RT_E_BADVALUE` for an element beyond the buffer or
/// end-of-contents octets.
QUILLMARK_API int xd_OpenType(ASN1CTXT* ctxt, const uint8_t** data, uint32_t* numocts);
/// Collects elements in `list` up to the one with `tag` or, with `tag` 0xFFFFFFFF, to the end of the
/// enclosing element. A null `list` drops them. `RT_E_ENDOFBUF`, recorded, when that end comes before `tag`.
QUILLMARK_API int xd_OpenTypeExt(ASN1CTXT* ctxt, const ASN1ElementExtent* ccb, ASN1TAG tag,
                                 _Asn1RTDList* list);
/// Takes one element and appends it; with a null `list` steps over it.
QUILLMARK_API int xd_OpenTypeAppend(ASN1CTXT* ctxt, _Asn1RTDList* list);

/// Reads an INTEGER of any size as text on `typeHeap`: "0x" and two lower-case digits for each octet. Leading
/// octets 00 are dropped but for one digit that keeps a set top bit positive. No contents and zero are "0x0".
QUILLMARK_API int xd_bigint(ASN1CTXT* ctxt, char** text, ASN1TagType tagging, int length);

/// Remembers the read position and flags, in `savedState` of the context when `state` is null.
QUILLMARK_API void xu_SaveBufferState(ASN1CTXT* ctxt, ASN1BUFSAVE* state);
/// Goes back to them; clears `RT_F_LASTEOC`.
QUILLMARK_API void xu_RestoreBufferState(ASN1CTXT* ctxt, const ASN1BUFSAVE* state);

}  // extern "C"
