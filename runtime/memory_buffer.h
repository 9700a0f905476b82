#pragma once

// A buffer that grows in whole segments on a context's `typeHeap`.
//
//     ASN1MemBuf buf;
//     rtMemBufInit(ctxt, &buf, 1024);
//     rtMemBufAppend(&buf, octets, count);
//     uint32_t length;
//     const uint8_t* contents = rtMemBufGetData(&buf, &length);
//     rtMemBufFree(&buf);
//
// To start on storage of one's own, set `buffer` and `bufferSize` after `rtMemBufInit` and leave
// `isDynamic` 0. Intended: growth then takes a fresh, zeroed block and the old contents stay behind.

#include <cstdint>

#include "runtime/context.h"

/// The buffer and the part of it that is in use.
struct ASN1MemBuf {
    ASN1CTXT* ctxt;
    uint32_t segSize;     ///< unit of growth
    uint32_t startIndex;  ///< where the unread contents begin
    uint32_t usedCount;   ///< octets in use, from 0 on
    uint32_t bufferSize;
    int16_t bitOffset;
    uint8_t* buffer;
    uint8_t isDynamic;  ///< `buffer` lies on the context's `typeHeap`
};

extern "C" {

/// An empty buffer without storage. A `segSize` of 0 grows to what is needed.
QUILLMARK_API void rtMemBufInit(ASN1CTXT* ctxt, ASN1MemBuf* buf, uint32_t segSize);

/// Frees storage on the heap and leaves the other fields as they are.
QUILLMARK_API void rtMemBufFree(ASN1MemBuf* buf);

/// Forgets the contents and keeps the storage.
QUILLMARK_API void rtMemBufReset(ASN1MemBuf* buf);

/// Appends `count` octets, which must not lie in the buffer itself. With null `data` it only makes room.
/// Returns 0 or `RT_E_NOMEM`, after which the buffer is as it was.
QUILLMARK_API int rtMemBufAppend(ASN1MemBuf* buf, const uint8_t* data, uint32_t count);

/// Makes room for `count` further octets. Returns 0 or `RT_E_NOMEM`.
QUILLMARK_API int rtMemBufPreAllocate(ASN1MemBuf* buf, uint32_t count);

/// Appends `count` octets of `value`. Returns 0 or `RT_E_NOMEM`.
QUILLMARK_API int rtMemBufSet(ASN1MemBuf* buf, uint8_t value, uint32_t count);

/// The unread contents, their count in `length` where that is not null. Lent: valid until the buffer grows.
QUILLMARK_API uint8_t* rtMemBufGetData(const ASN1MemBuf* buf, uint32_t* length);

}  // extern "C"
