#include "runtime/detail/record_list.h"

#include <cstdint>
#include <new>

namespace Quillmark::detail {

void* allocate_node(ASN1CTXT* ctxt, size_t size) {
    void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(_Asn1RTDListNode) + size);
    return block == nullptr ? nullptr : static_cast<_Asn1RTDListNode*>(block) + 1;
}

void append_record(ASN1CTXT* ctxt, ASN1TSeqOfList& list, void* record) {
    require(rtDListAppend(ctxt, &list, record) != nullptr);
}

int count_elements(ASN1CTXT* ctxt, int length, uint32_t& count) {
    int counted = 0;
    const int status = xd_count(ctxt, length, &counted);
    count = static_cast<uint32_t>(counted);
    return recorded(ctxt, status);
}

void* allocate_array(ASN1CTXT* ctxt, uint32_t count, size_t element_size) {
    return count > SIZE_MAX / element_size ? nullptr : rtMemHeapAlloc(&ctxt->typeHeap, count * element_size);
}

}  // namespace Quillmark::detail
