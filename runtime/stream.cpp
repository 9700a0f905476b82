#include "runtime/stream.h"

#include <algorithm>
#include <cstring>

#include "runtime/detail/buffer_room.h"

using Quillmark::detail::kHeapRoom;

namespace {

constexpr uint32_t kMinGrowth = 16384;
constexpr uint16_t kAnyOutput = RT_STREAM_OUTPUT | RT_STREAM_BUFFERED_OUTPUT;

bool fits(const ASN1BUFFER& buffer, uint32_t count) {
    return uint64_t{buffer.byteIndex} + count <= buffer.size;
}

int grow(ASN1CTXT* ctxt, uint32_t count) {
    ASN1BUFFER& buffer = ctxt->buffer;
    const uint64_t size = uint64_t{buffer.size} + std::max(count, kMinGrowth);
    // Sizes are signed 32-bit numbers wherever the run-time passes them on.
    if (size > INT32_MAX) {
        return RT_E_NOMEM;
    }
    void* block = rtMemHeapRealloc(&ctxt->msgHeap, buffer.data, size);
    if (block == nullptr) {
        return RT_E_NOMEM;
    }
    buffer.data = static_cast<uint8_t*>(block);
    buffer.size = static_cast<uint32_t>(size);
    return RT_OK;
}

void copy_in(ASN1BUFFER& buffer, const uint8_t* data, uint32_t count) {
    std::memcpy(buffer.data + buffer.byteIndex, data, count);
    buffer.byteIndex += count;
}

// What the buffer holds goes to the stream; it stays in the buffer when that fails.
int send_buffer(ASN1CTXT* ctxt) {
    const int status = rtStreamWrite(ctxt, ctxt->buffer.data, ctxt->buffer.byteIndex);
    if (status == RT_OK) {
        ctxt->buffer.byteIndex = 0;
    }
    return status;
}

}  // namespace

extern "C" {

int rtCheckBuffer(ASN1CTXT* ctxt, uint32_t count) {
    if (fits(ctxt->buffer, count)) {
        return RT_OK;
    }
    if (ctxt->stream != nullptr) {
        if (const int status = rtStreamBufFlush(ctxt); status != RT_OK) {
            return status;
        }
        if (fits(ctxt->buffer, count)) {
            return RT_OK;
        }
    }
    return ctxt->buffer.dynamic == kHeapRoom ? grow(ctxt, count) : RT_E_BUFOVFL;
}

int rtWriteBytes(ASN1CTXT* ctxt, const uint8_t* data, uint32_t count) {
    if (count == 0) {
        return RT_OK;
    }
    if (ctxt->stream != nullptr) {
        return rtStreamBufWrite(ctxt, data, count);
    }
    if (const int status = rtCheckBuffer(ctxt, count); status != RT_OK) {
        return status;
    }
    copy_in(ctxt->buffer, data, count);
    return RT_OK;
}

int rtStreamWrite(ASN1CTXT* ctxt, const uint8_t* data, uint32_t count) {
    rtStream* stream = ctxt->stream;
    if (stream == nullptr || stream->write == nullptr || (stream->mode & kAnyOutput) == 0) {
        return RT_E_NOTINIT;
    }
    while (count != 0) {
        const int result = stream->write(stream, data, count);
        if (result < 0) {
            return result;
        }
        if (result == 0) {
            return RT_E_BUFOVFL;
        }
        const uint32_t written = std::min(static_cast<uint32_t>(result), count);
        stream->byteCount += written;
        data += written;
        count -= written;
    }
    return RT_OK;
}

int rtStreamFlush(ASN1CTXT* ctxt) {
    rtStream* stream = ctxt->stream;
    if (stream == nullptr) {
        return RT_E_NOTINIT;
    }
    if ((stream->mode & RT_STREAM_OUTPUT) == 0) {
        return RT_E_INVPARAM;
    }
    return stream->flush == nullptr ? RT_OK : stream->flush(stream);
}

int rtStreamBufWrite(ASN1CTXT* ctxt, const uint8_t* data, uint32_t count) {
    if (count == 0) {
        return RT_OK;
    }
    if (!fits(ctxt->buffer, count)) {
        if (const int status = send_buffer(ctxt); status != RT_OK) {
            return status;
        }
    }
    if (count >= ctxt->buffer.size) {
        return rtStreamWrite(ctxt, data, count);
    }
    copy_in(ctxt->buffer, data, count);
    return RT_OK;
}

int rtStreamBufFlush(ASN1CTXT* ctxt) {
    const rtStream* stream = ctxt->stream;
    if (stream == nullptr) {
        return RT_E_NOTINIT;
    }
    if ((stream->mode & kAnyOutput) == 0) {
        return RT_E_INVPARAM;
    }
    if (stream->write == nullptr) {
        return RT_E_NOTINIT;
    }
    if (const int status = send_buffer(ctxt); status != RT_OK) {
        return status;
    }
    return rtStreamFlush(ctxt);
}

void rtStreamRelease(ASN1CTXT* ctxt) {
    if (ctxt->stream == nullptr) {
        return;
    }
    rtMemHeapFreePtr(&ctxt->msgHeap, ctxt->stream);
    ctxt->stream = nullptr;
}

}  // extern "C"
