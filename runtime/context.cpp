#include "runtime/context.h"

#include <cassert>

#include "runtime/detail/buffer_room.h"
#include "runtime/list.h"
#include "runtime/message_buffer.h"
#include "runtime/stream.h"

using Quillmark::detail::kFixedRoom;
using Quillmark::detail::kHeapRoom;

namespace {

constexpr uint32_t kDefaultBufferSize = 16384;

void share_heap(rtMemHeap** cell, rtMemHeap** from) {
    if (*cell == *from) {
        return;
    }
    rtMemHeapRelease(cell);
    *cell = *from;
    rtMemHeapAddRef(cell);
}

void free_buffer(ASN1CTXT* ctxt) {
    if (ctxt->buffer.dynamic != kHeapRoom || ctxt->buffer.data == nullptr) {
        return;
    }
    if ((ctxt->flags & RT_F_SAVEBUF) != 0) {
        rtMemHeapMarkSaved();
        return;
    }
    rtMemHeapFreePtr(&ctxt->msgHeap, ctxt->buffer.data);
}

}  // namespace

extern "C" {

int rtInitContext(ASN1CTXT* ctxt, void* memContext) {
    if (ctxt == nullptr) {
        return RT_E_INVPARAM;
    }
    *ctxt = ASN1CTXT{};
    ctxt->magic = RT_MAGIC;
    const int status = rtMemHeapCreate(&ctxt->typeHeap, memContext);
    if (status != RT_OK) {
        return status;
    }
    ctxt->memContext = memContext;
    ctxt->msgHeap = ctxt->typeHeap;
    rtMemHeapAddRef(&ctxt->msgHeap);
    rtSListInitEx(ctxt, &ctxt->listB);
    rtSListInitEx(ctxt, &ctxt->listA);
    return RT_OK;
}

int rtInitContextBuffer(ASN1CTXT* ctxt, const uint8_t* buffer, uint32_t size) {
    if (ctxt == nullptr || ctxt->magic != RT_MAGIC) {
        return RT_E_NOTINIT;
    }
    ASN1BUFFER fresh = {
        .data = const_cast<uint8_t*>(buffer),  // only a dynamic buffer or an encoder's is written
        .byteIndex = 0,
        .size = size,
        .bitOffset = 8,
        .dynamic = kFixedRoom};
    if (buffer == nullptr) {
        fresh.size = size == 0 ? kDefaultBufferSize : size;
        fresh.data = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt->msgHeap, fresh.size));
        fresh.dynamic = kHeapRoom;
        if (fresh.data == nullptr) {
            return RT_E_NOMEM;
        }
        fresh.data[fresh.size - 1] =
            0;  // an encoder never writes the last octet, but getMsgCopy hands it out
    }
    ctxt->buffer = fresh;
    return RT_OK;
}

void rtFreeContext(ASN1CTXT* ctxt) {
    if (ctxt == nullptr || ctxt->magic != RT_MAGIC) {
        return;
    }
    free_buffer(ctxt);
    rtStreamRelease(ctxt);
    rtSListFree(&ctxt->listA);
    rtSListFree(&ctxt->listB);
    rtMemHeapRelease(&ctxt->typeHeap);
    rtMemHeapRelease(&ctxt->msgHeap);
    ctxt->magic = 0;
}

void rtCopyContext(ASN1CTXT* dst, const ASN1CTXT* src) {
    dst->buffer = src->buffer;
    dst->flags = src->flags;
}

void rtCtxtSetFlag(ASN1CTXT* ctxt, uint16_t mask) {
    ctxt->flags = static_cast<uint16_t>(ctxt->flags | mask);
}

void rtCtxtSetMemHeap(ASN1CTXT* ctxt, ASN1CTXT* src) {
    if (ctxt != nullptr && src != nullptr) {
        share_heap(&ctxt->typeHeap, &src->typeHeap);
    }
}

void rtCtxtSetMsgMemHeap(ASN1CTXT* ctxt, ASN1CTXT* src) {
    if (ctxt != nullptr && src != nullptr) {
        share_heap(&ctxt->msgHeap, &src->msgHeap);
    }
}

}  // extern "C"

ASN1RTLException::~ASN1RTLException() = default;

ASN1Context::ASN1Context() : refCount(0) {
    const int status = rtInitContext(this, nullptr);
    if (status != RT_OK) {
        throw ASN1MessageBuffer::RTLError(status);
    }
}

ASN1Context::~ASN1Context() {
    rtFreeContext(this);
}

void ASN1Context::_unref() {
    assert(refCount > 0);
    if (--refCount == 0) {
        delete this;  // which frees the context
    }
}

void ASN1Context::PrintErrorInfo() const {
    rtErrPrint(&errInfo);
}
