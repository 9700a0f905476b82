#include <algorithm>
#include <cstring>

#include "runtime/der_encode.h"
#include "runtime/detail/buffer_room.h"
#include "runtime/detail/encode_space.h"

using Quillmark::detail::kFixedRoom;
using Quillmark::detail::kHeapRoom;

namespace {

constexpr uint64_t kGrowthStep = 16384;
// Fixed steps would copy a long message too often: from here on a buffer grows by half of itself.
constexpr uint64_t kLongBuffer = 1 << 20;
constexpr uint64_t kLargestBuffer = 0x7FFFFFFF;

uint64_t growth_of(uint64_t size, uint64_t needed) {
    return std::max({needed, kGrowthStep, size >= kLongBuffer ? size / 2 : 0});
}

}  // namespace

extern "C" {

int xe_setp(ASN1CTXT* ctxt, uint8_t* buffer, int size) {
    if (size < 0 || (buffer != nullptr && size < 1)) {
        return RT_E_INVPARAM;
    }
    const int status = rtInitContextBuffer(ctxt, buffer, static_cast<uint32_t>(size));
    if (status != RT_OK) {
        return status;
    }
    ctxt->buffer.byteIndex = ctxt->buffer.size - 1;
    return RT_OK;
}

uint8_t* xe_getp(ASN1CTXT* ctxt) {
    return ctxt->buffer.data + ctxt->buffer.byteIndex;
}

int xe_memcpy(ASN1CTXT* ctxt, const uint8_t* bytes, size_t count) {
    if (bytes == nullptr) {
        return RT_E_BADVALUE;
    }
    uint8_t* octets;
    const int status = Quillmark::detail::take_front(ctxt, octets, count);
    if (status != RT_OK) {
        return status;
    }
    if (count == 1) {
        *octets = *bytes;
    } else {
        std::memcpy(octets, bytes, count);
    }
    return static_cast<int>(count);
}

int xe_expandBuffer(ASN1CTXT* ctxt, size_t needed) {
    ASN1BUFFER& buffer = ctxt->buffer;
    if (buffer.dynamic == kFixedRoom) {
        return RT_E_BUFOVFL;
    }
    if (needed > kLargestBuffer) {
        return RT_E_NOMEM;
    }
    const uint64_t step = growth_of(buffer.size, needed);
    if (buffer.size + step > kLargestBuffer) {
        return RT_E_NOMEM;
    }
    uint8_t* grown = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt->typeHeap, buffer.size + step));
    if (grown == nullptr) {
        return RT_E_NOMEM;
    }
    const uint32_t written_from = buffer.byteIndex;
    buffer.byteIndex += static_cast<uint32_t>(step);
    std::memcpy(grown + buffer.byteIndex, buffer.data + written_from, buffer.size - written_from);
    if (buffer.dynamic == kHeapRoom) {
        rtMemHeapFreePtr(&ctxt->typeHeap, buffer.data);
    }
    buffer.dynamic = kHeapRoom;
    buffer.data = grown;
    buffer.size += static_cast<uint32_t>(step);
    return RT_OK;
}

void xe_free(ASN1CTXT* ctxt) {
    if (ctxt->buffer.dynamic != kHeapRoom || ctxt->buffer.data == nullptr) {
        return;
    }
    rtMemHeapFreePtr(&ctxt->typeHeap, ctxt->buffer.data);
    ctxt->buffer =
        ASN1BUFFER{};  // a fixed buffer without room: writing again fails instead of reaching through null
}

}  // extern "C"
