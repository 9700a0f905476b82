#include "runtime/detail/set_of_order.h"

#include <algorithm>
#include <cstring>

namespace Quillmark::detail {

namespace {

const ASN1BufLocDescr* location_of(const rtSListNode* node) {
    return static_cast<const ASN1BufLocDescr*>(node->data);
}

// Elements as they lie in the encode buffer. The first of the list is the last of the message, so the list
// has to descend.
class SetElements {
  public:
    explicit SetElements(const ASN1BUFFER& buffer) : last_(buffer.data + buffer.size - 1) {}

    const uint8_t* octets(const rtSListNode* node) const { return last_ - location_of(node)->offset; }

    bool less(const rtSListNode* a, const rtSListNode* b) const {
        const uint32_t length_a = location_of(a)->length;
        const uint32_t length_b = location_of(b)->length;
        const int order = std::memcmp(octets(a), octets(b), std::min(length_a, length_b));
        return order != 0 ? order < 0 : length_a < length_b;
    }

    bool descends(const rtSListNode* node) const {
        for (; node->next != nullptr; node = node->next) {
            if (less(node, node->next)) {
                return false;
            }
        }
        return true;
    }

    // Stable, on the links alone: a merge sort needs no memory on a list. `rest` moves behind the nodes
    // taken.
    rtSListNode* sorted(rtSListNode*& rest, uint32_t count) const {
        if (count == 1) {
            rtSListNode* node = rest;
            rest = node->next;
            node->next = nullptr;
            return node;
        }
        rtSListNode* left = sorted(rest, count / 2);
        rtSListNode* right = sorted(rest, count - count / 2);
        return merged(left, right);
    }

  private:
    rtSListNode* merged(rtSListNode* left, rtSListNode* right) const {
        rtSListNode* head = nullptr;
        rtSListNode** link = &head;
        while (left != nullptr && right != nullptr) {
            rtSListNode*& next = less(left, right) ? right : left;
            *link = next;
            link = &next->next;
            next = next->next;
        }
        *link = left != nullptr ? left : right;
        return head;
    }

    const uint8_t* last_;
};

uint32_t total_length(const rtSList* list) {
    uint32_t total = 0;
    for (const rtSListNode* node = list->head; node != nullptr; node = node->next) {
        total += location_of(node)->length;  // all of it lies in one buffer, so the sum fits
    }
    return total;
}

// Rewrites the elements at the write position in the order of the list, from the end of the room to its
// start.
int rearrange(ASN1CTXT* ctxt, const rtSList* list, const SetElements& elements, uint32_t total) {
    uint8_t* block = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt->typeHeap, total));
    if (block == nullptr) {
        return RT_E_NOMEM;
    }
    uint8_t* place = block + total;
    for (const rtSListNode* node = list->head; node != nullptr; node = node->next) {
        const uint32_t length = location_of(node)->length;
        place -= length;
        std::memcpy(place, elements.octets(node), length);
    }
    std::memcpy(xe_getp(ctxt), block, total);
    rtMemHeapFreePtr(&ctxt->typeHeap, block);
    return RT_OK;
}

int put_in_order(ASN1CTXT* ctxt, rtSList* list, uint32_t total) {
    const SetElements elements(ctxt->buffer);
    if (elements.descends(list->head)) {
        return RT_OK;
    }
    rtSListNode* rest = list->head;
    list->head = elements.sorted(rest, list->count);
    return rearrange(ctxt, list, elements, total);
}

}  // namespace

int order_set_of(ASN1CTXT* ctxt, rtSList* list) {
    if (list->head == nullptr) {
        return 0;
    }
    const uint32_t total = total_length(list);
    const int status = put_in_order(ctxt, list, total);
    return status == RT_OK ? static_cast<int>(total) : status;
}

}  // namespace Quillmark::detail
