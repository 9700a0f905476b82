#include "runtime/der_encode.h"
#include "runtime/detail/set_of_order.h"

namespace {

void free_locations(ASN1CTXT* ctxt, rtSList* list) {
    for (const rtSListNode* node = list->head; node != nullptr; node = node->next) {
        rtMemHeapFreePtr(&ctxt->typeHeap, node->data);
    }
    rtSListFree(list);
}

}  // namespace

extern "C" {

void xe_getBufLocDescr(ASN1CTXT* ctxt, uint32_t length, ASN1BufLocDescr* descr) {
    descr->length = length;
    descr->offset = ctxt->buffer.size - ctxt->buffer.byteIndex - 1;
}

int xe_derCanonicalSort(ASN1CTXT* ctxt, rtSList* list) {
    const int result = Quillmark::detail::order_set_of(ctxt, list);
    free_locations(ctxt, list);
    return result;
}

}  // extern "C"
