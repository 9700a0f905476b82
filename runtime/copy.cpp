#include "runtime/copy.h"

#include <algorithm>
#include <cstring>

namespace {

// A copy of `size` octets, null when there is nothing to copy or no memory.
void* copy_block(ASN1CTXT* ctxt, const void* data, size_t size) {
    if (data == nullptr || size == 0) {
        return nullptr;
    }
    void* block = rtMemHeapAlloc(&ctxt->typeHeap, size);
    return block == nullptr ? nullptr : std::memcpy(block, data, size);
}

size_t octets_of_bits(uint32_t numbits) {
    return (size_t{numbits} + 7) / 8;
}

// Any record of a count and a pointer: `size` octets stand behind the pointer of `src`.
template <typename Value>
int copy_counted(ASN1CTXT* ctxt, const Value* src, Value* dst, uint32_t Value::*count, size_t size) {
    const auto* data = src->data;
    const uint32_t units = src->*count;
    dst->data = static_cast<decltype(dst->data)>(copy_block(ctxt, data, size));
    dst->*count = dst->data != nullptr ? units : 0;
    return dst->data != nullptr || units == 0 ? 1 : 0;
}

int copy_into_array(const uint8_t* src, size_t size, uint8_t* dst) {
    if (src == nullptr || dst == nullptr || size == 0) {
        return 0;
    }
    std::memcpy(dst, src, size);
    return 1;
}

int copy_element(ASN1CTXT* ctxt, const ASN1OpenType* src, _Asn1RTDList* list) {
    void* block = rtMemHeapAllocZ(&ctxt->typeHeap, sizeof(_Asn1RTDListNode) + sizeof(ASN1OpenType));
    if (block == nullptr) {
        return 0;
    }
    ASN1OpenType* copy = reinterpret_cast<ASN1OpenType*>(static_cast<_Asn1RTDListNode*>(block) + 1);
    rtDListAppendNode(ctxt, list, copy);
    return rtCopyOpenType(ctxt, src, copy);
}

}  // namespace

extern "C" {

int rtCopyOctStr(ASN1CTXT*, uint32_t numocts, const uint8_t* src, uint32_t* dstCount, uint8_t* dst) {
    if (dstCount == nullptr) {
        return 0;
    }
    const int copied = copy_into_array(src, numocts, dst);
    *dstCount = copied != 0 ? numocts : 0;
    return copied;
}

int rtCopyBitStr(ASN1CTXT*, uint32_t numbits, const uint8_t* src, uint32_t* dstCount, uint8_t* dst) {
    if (dstCount == nullptr) {
        return 0;
    }
    const int copied = copy_into_array(src, octets_of_bits(numbits), dst);
    *dstCount = copied != 0 ? numbits : 0;
    return copied;
}

int rtCopyDynOctStr(ASN1CTXT* ctxt, const ASN1TDynOctStr* src, ASN1TDynOctStr* dst) {
    if (ctxt == nullptr || src == nullptr || dst == nullptr) {
        return 0;
    }
    return copy_counted(ctxt, src, dst, &ASN1TDynOctStr::numocts, src->numocts);
}

int rtCopyDynBitStr(ASN1CTXT* ctxt, const ASN1TDynBitStr* src, ASN1TDynBitStr* dst) {
    if (ctxt == nullptr || src == nullptr || dst == nullptr) {
        return 0;
    }
    return copy_counted(ctxt, src, dst, &ASN1TDynBitStr::numbits, octets_of_bits(src->numbits));
}

int rtCopyCharStr(ASN1CTXT* ctxt, const char* src, const char** dst) {
    if (ctxt == nullptr || src == nullptr || dst == nullptr) {
        return 0;
    }
    *dst = static_cast<const char*>(copy_block(ctxt, src, std::strlen(src) + 1));
    return *dst != nullptr ? 1 : 0;
}

int rtCopy16BitCharStr(ASN1CTXT* ctxt, const ASN1_16BITCHARSTRING* src, ASN1_16BITCHARSTRING* dst) {
    if (ctxt == nullptr || src == nullptr || dst == nullptr) {
        return 0;
    }
    return copy_counted(ctxt, src, dst, &ASN1_16BITCHARSTRING::nchars,
                        size_t{src->nchars} * sizeof(uint16_t));
}

int rtCopy32BitCharStr(ASN1CTXT* ctxt, const ASN1_32BITCHARSTRING* src, ASN1_32BITCHARSTRING* dst) {
    if (ctxt == nullptr || src == nullptr || dst == nullptr) {
        return 0;
    }
    return copy_counted(ctxt, src, dst, &ASN1_32BITCHARSTRING::nchars,
                        size_t{src->nchars} * sizeof(uint32_t));
}

int rtCopyOID(ASN1CTXT*, const ASN1OBJID* src, ASN1OBJID* dst) {
    if (src == nullptr || dst == nullptr) {
        return 0;
    }
    dst->numids = std::min(src->numids, ASN1_K_MAXSUBIDS);
    std::memmove(dst->subid, src->subid, dst->numids * sizeof(uint32_t));
    return 1;
}

int rtCopyOpenType(ASN1CTXT* ctxt, const ASN1OpenType* src, ASN1OpenType* dst) {
    if (ctxt == nullptr || src == nullptr || dst == nullptr) {
        return 0;
    }
    return copy_counted(ctxt, src, dst, &ASN1OpenType::numocts, src->numocts);
}

int rtCopyOpenTypeExt(ASN1CTXT* ctxt, const _Asn1RTDList* src, _Asn1RTDList* dst) {
    if (ctxt == nullptr || src == nullptr || dst == nullptr) {
        return 0;
    }
    rtDListInit(dst);
    for (const _Asn1RTDListNode* node = src->head; node != nullptr; node = node->next) {
        const ASN1OpenType* element = static_cast<const ASN1OpenType*>(node->data);
        if (element != nullptr && copy_element(ctxt, element, dst) == 0) {
            return 0;
        }
    }
    return 1;
}

}  // extern "C"
