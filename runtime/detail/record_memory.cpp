#include "runtime/detail/record_memory.h"

#include <algorithm>

#include "runtime/copy.h"

namespace Quillmark::detail {

bool in_message(const ASN1CTXT* ctxt, const void* block) {
    const auto* octet = static_cast<const uint8_t*>(block);
    return ctxt->buffer.data != nullptr && octet >= ctxt->buffer.data &&
           octet < ctxt->buffer.data + ctxt->buffer.size;
}

void free_block(ASN1CTXT* ctxt, const void* block) {
    if (block != nullptr && !in_message(ctxt, block) && rtMemHeapCheckPtr(&ctxt->typeHeap, block) != 0) {
        rtMemHeapFreePtr(&ctxt->typeHeap, block);
    }
}

void copy_text(ASN1CTXT* ctxt, const char* src, const char*& dst) {
    dst = nullptr;
    require(src == nullptr || rtCopyCharStr(ctxt, src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1TDynOctStr& src, ASN1TDynOctStr& dst) {
    require(rtCopyDynOctStr(ctxt, &src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1TDynBitStr& src, ASN1TDynBitStr& dst) {
    require(rtCopyDynBitStr(ctxt, &src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1_16BITCHARSTRING& src, ASN1_16BITCHARSTRING& dst) {
    require(rtCopy16BitCharStr(ctxt, &src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1_32BITCHARSTRING& src, ASN1_32BITCHARSTRING& dst) {
    require(rtCopy32BitCharStr(ctxt, &src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1OpenType& src, ASN1OpenType& dst) {
    require(rtCopyOpenType(ctxt, &src, &dst) != 0);
}

void copy_extensions(ASN1CTXT* ctxt, const ASN1TSeqOfList& src, ASN1TSeqOfList& dst) {
    require(rtCopyOpenTypeExt(ctxt, &src, &dst) != 0);
}

void copy_sized(uint32_t count, const uint8_t* src, uint32_t room, uint8_t* dst) {
    std::copy_n(src, std::min(count, room), dst);
}

}  // namespace Quillmark::detail
