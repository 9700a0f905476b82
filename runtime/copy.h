#pragma once

// Deep copies of values from one context to another. Each returns 1, or 0 for a null argument and when memory
// fails; the copy is then empty. Memory comes from `typeHeap` of `ctxt`, the context of the copy.

#include <cstdint>

#include "runtime/context.h"
#include "runtime/list.h"
#include "runtime/object_id.h"
#include "runtime/value_types.h"
#include "values/export.h"

extern "C" {

/// Into an array that the caller knows to be large enough. 0 when there is nothing to copy.
QUILLMARK_API int rtCopyOctStr(ASN1CTXT* ctxt, uint32_t numocts, const uint8_t* src, uint32_t* dstCount,
                               uint8_t* dst);
QUILLMARK_API int rtCopyBitStr(ASN1CTXT* ctxt, uint32_t numbits, const uint8_t* src, uint32_t* dstCount,
                               uint8_t* dst);
QUILLMARK_API int rtCopyDynOctStr(ASN1CTXT* ctxt, const ASN1TDynOctStr* src, ASN1TDynOctStr* dst);
QUILLMARK_API int rtCopyDynBitStr(ASN1CTXT* ctxt, const ASN1TDynBitStr* src, ASN1TDynBitStr* dst);
QUILLMARK_API int rtCopyCharStr(ASN1CTXT* ctxt, const char* src, const char** dst);
QUILLMARK_API int rtCopy16BitCharStr(ASN1CTXT* ctxt, const ASN1_16BITCHARSTRING* src,
                                     ASN1_16BITCHARSTRING* dst);
QUILLMARK_API int rtCopy32BitCharStr(ASN1CTXT* ctxt, const ASN1_32BITCHARSTRING* src,
                                     ASN1_32BITCHARSTRING* dst);
/// At most 128 arcs.
QUILLMARK_API int rtCopyOID(ASN1CTXT* ctxt, const ASN1OBJID* src, ASN1OBJID* dst);
QUILLMARK_API int rtCopyOpenType(ASN1CTXT* ctxt, const ASN1OpenType* src, ASN1OpenType* dst);
/// A new list of `ASN1OpenType`; null records are skipped.
QUILLMARK_API int rtCopyOpenTypeExt(ASN1CTXT* ctxt, const _Asn1RTDList* src, _Asn1RTDList* dst);

}  // extern "C"
