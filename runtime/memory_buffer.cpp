#include "runtime/memory_buffer.h"

#include <cstring>

namespace {

// Room for `count` octets behind those in use, in whole segments.
int make_room(ASN1MemBuf* buf, uint32_t count) {
    const uint64_t needed = uint64_t{buf->usedCount} + count;
    if (needed <= buf->bufferSize) {
        return RT_OK;
    }
    const uint64_t segment = buf->segSize == 0 ? needed : buf->segSize;
    const uint64_t size = (needed + segment - 1) / segment * segment;
    if (size > UINT32_MAX) {
        return RT_E_NOMEM;
    }
    rtMemHeap** heap = &buf->ctxt->typeHeap;
    // Intended: contents that are not on the heap are not taken along; their place reads as zeros.
    void* block = buf->isDynamic != 0 && buf->buffer != nullptr ? rtMemHeapRealloc(heap, buf->buffer, size)
                                                                : rtMemHeapAllocZ(heap, size);
    if (block == nullptr) {
        return RT_E_NOMEM;
    }
    buf->buffer = static_cast<uint8_t*>(block);
    buf->bufferSize = static_cast<uint32_t>(size);
    buf->isDynamic = 1;
    return RT_OK;
}

}  // namespace

extern "C" {

void rtMemBufInit(ASN1CTXT* ctxt, ASN1MemBuf* buf, uint32_t segSize) {
    *buf = ASN1MemBuf{};
    buf->ctxt = ctxt;
    buf->segSize = segSize;
}

void rtMemBufFree(ASN1MemBuf* buf) {
    if (buf->isDynamic == 0) {
        return;
    }
    rtMemHeapFreePtr(&buf->ctxt->typeHeap, buf->buffer);
}

void rtMemBufReset(ASN1MemBuf* buf) {
    buf->startIndex = 0;
    buf->usedCount = 0;
    buf->bitOffset = 0;
}

int rtMemBufAppend(ASN1MemBuf* buf, const uint8_t* data, uint32_t count) {
    if (count == 0) {
        return RT_OK;
    }
    if (const int status = make_room(buf, count); status != RT_OK || data == nullptr) {
        return status;
    }
    std::memcpy(buf->buffer + buf->usedCount, data, count);
    buf->usedCount += count;
    return RT_OK;
}

int rtMemBufPreAllocate(ASN1MemBuf* buf, uint32_t count) {
    return count == 0 ? RT_OK : make_room(buf, count);
}

int rtMemBufSet(ASN1MemBuf* buf, uint8_t value, uint32_t count) {
    if (count == 0) {
        return RT_OK;
    }
    if (const int status = make_room(buf, count); status != RT_OK) {
        return status;
    }
    std::memset(buf->buffer + buf->usedCount, value, count);
    buf->usedCount += count;
    return RT_OK;
}

uint8_t* rtMemBufGetData(const ASN1MemBuf* buf, uint32_t* length) {
    if (length != nullptr) {
        *length = buf->usedCount - buf->startIndex;
    }
    return buf->buffer == nullptr ? nullptr : buf->buffer + buf->startIndex;
}

}  // extern "C"
