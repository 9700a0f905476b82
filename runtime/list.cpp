#include "runtime/list.h"

#include <cstdlib>
#include <cstring>

#include "runtime/value_types.h"

namespace {

_Asn1RTDListNode* new_node(ASN1CTXT* ctxt, void* data) {
    void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(_Asn1RTDListNode));
    if (block == nullptr) {
        return nullptr;
    }
    auto* node = static_cast<_Asn1RTDListNode*>(block);
    node->data = data;
    return node;
}

// Links `node` behind `prev`, at the head when that is null.
void link_behind(_Asn1RTDList* list, _Asn1RTDListNode* prev, _Asn1RTDListNode* node) {
    _Asn1RTDListNode* next = prev == nullptr ? list->head : prev->next;
    node->prev = prev;
    node->next = next;
    (prev == nullptr ? list->head : prev->next) = node;
    (next == nullptr ? list->tail : next->prev) = node;
    ++list->count;
}

_Asn1RTDListNode* insert_behind(ASN1CTXT* ctxt, _Asn1RTDList* list, _Asn1RTDListNode* prev, void* data) {
    _Asn1RTDListNode* node = new_node(ctxt, data);
    if (node != nullptr) {
        link_behind(list, prev, node);
    }
    return node;
}

bool is_one_block(const _Asn1RTDListNode* node) {
    return node->data == node + 1;
}

bool lies_in_message(const ASN1CTXT* ctxt, const uint8_t* data) {
    const uint8_t* message = ctxt->buffer.data;
    return message != nullptr && data >= message && data < message + ctxt->buffer.size;
}

void free_octets(ASN1CTXT* ctxt, ASN1OpenType* value) {
    // With RT_F_FASTCOPY the octets were never copied.
    if (value == nullptr || lies_in_message(ctxt, value->data)) {
        return;
    }
    rtMemHeapFreePtr(&ctxt->typeHeap, value->data);
    value->data = nullptr;
}

// The size of `count` elements, 0 when it is none that the heap could give.
size_t array_size(uint32_t count, size_t elemSize) {
    size_t size = 0;
    return __builtin_mul_overflow(count, elemSize, &size) ? 0 : size;
}

void copy_element(uint8_t* target, const void* data, size_t elemSize) {
    if (data == nullptr) {
        std::memset(target, 0, elemSize);
    } else {
        std::memcpy(target, data, elemSize);
    }
}

}  // namespace

extern "C" {

void rtDListInit(_Asn1RTDList* list) {
    *list = _Asn1RTDList{};
}

_Asn1RTDListNode* rtDListAppend(ASN1CTXT* ctxt, _Asn1RTDList* list, void* data) {
    return insert_behind(ctxt, list, list->tail, data);
}

_Asn1RTDListNode* rtDListAppendNode(ASN1CTXT* /*ctxt*/, _Asn1RTDList* list, void* payload) {
    if (payload == nullptr) {
        return nullptr;
    }
    _Asn1RTDListNode* node = static_cast<_Asn1RTDListNode*>(payload) - 1;
    node->data = payload;
    link_behind(list, list->tail, node);
    return node;
}

_Asn1RTDListNode* rtDListInsert(ASN1CTXT* ctxt, _Asn1RTDList* list, int index, void* data) {
    if (index < 1) {
        return insert_behind(ctxt, list, nullptr, data);
    }
    if (static_cast<uint32_t>(index) > list->count) {
        return nullptr;
    }
    return insert_behind(ctxt, list, rtDListFindByIndex(list, index - 1), data);
}

_Asn1RTDListNode* rtDListInsertBefore(ASN1CTXT* ctxt, _Asn1RTDList* list, _Asn1RTDListNode* node,
                                      void* data) {
    return node == nullptr ? nullptr : insert_behind(ctxt, list, node->prev, data);
}

_Asn1RTDListNode* rtDListInsertAfter(ASN1CTXT* ctxt, _Asn1RTDList* list, _Asn1RTDListNode* node, void* data) {
    return node == nullptr ? nullptr : insert_behind(ctxt, list, node, data);
}

_Asn1RTDListNode* rtDListFindByIndex(const _Asn1RTDList* list, int index) {
    if (index < 1) {
        return list->head;
    }
    uint32_t left = static_cast<uint32_t>(index);
    if (left >= list->count) {
        return nullptr;
    }
    if (left > list->count / 2) {
        _Asn1RTDListNode* node = list->tail;
        for (left = list->count - 1 - left; left != 0; --left) {
            node = node->prev;
        }
        return node;
    }
    _Asn1RTDListNode* node = list->head;
    for (; left != 0; --left) {
        node = node->next;
    }
    return node;
}

_Asn1RTDListNode* rtDListFindByData(const _Asn1RTDList* list, const void* data) {
    _Asn1RTDListNode* node = list->head;
    while (node != nullptr && node->data != data) {
        node = node->next;
    }
    return node;
}

int rtDListFindIndexByData(const _Asn1RTDList* list, const void* data) {
    int index = 0;
    for (const _Asn1RTDListNode* node = list->head; node != nullptr; node = node->next) {
        if (node->data == data) {
            return index;
        }
        ++index;
    }
    return -1;
}

void rtDListRemove(_Asn1RTDList* list, _Asn1RTDListNode* node) {
    if (node == nullptr) {
        return;
    }
    (node->prev == nullptr ? list->head : node->prev->next) = node->next;
    (node->next == nullptr ? list->tail : node->next->prev) = node->prev;
    --list->count;
}

void rtDListFreeNodes(ASN1CTXT* ctxt, _Asn1RTDList* list) {
    for (_Asn1RTDListNode* node = list->head; node != nullptr;) {
        _Asn1RTDListNode* next = node->next;
        if (!is_one_block(node)) {
            rtMemHeapFreePtr(&ctxt->typeHeap, node);
        }
        node = next;
    }
    rtDListInit(list);
}

void rtDListFreeAll(ASN1CTXT* ctxt, _Asn1RTDList* list) {
    for (_Asn1RTDListNode* node = list->head; node != nullptr;) {
        _Asn1RTDListNode* next = node->next;
        if (!is_one_block(node)) {
            rtMemHeapFreePtr(&ctxt->typeHeap, node->data);
        }
        rtMemHeapFreePtr(&ctxt->typeHeap, node);
        node = next;
    }
    rtDListInit(list);
}

void rtMemFreeOpenSeqExt(ASN1CTXT* ctxt, _Asn1RTDList* list) {
    for (const _Asn1RTDListNode* node = list->head; node != nullptr; node = node->next) {
        free_octets(ctxt, static_cast<ASN1OpenType*>(node->data));
    }
    rtDListFreeAll(ctxt, list);
}

int rtDListToArray(ASN1CTXT* ctxt, const _Asn1RTDList* list, void** array, uint32_t* count, size_t elemSize) {
    if (*array == nullptr && list->count != 0) {
        const size_t size = array_size(list->count, elemSize);
        *array = size == 0 ? nullptr : rtMemHeapAlloc(&ctxt->typeHeap, size);
        if (*array == nullptr) {
            return RT_E_NOMEM;
        }
    }
    auto* target = static_cast<uint8_t*>(*array);
    for (const _Asn1RTDListNode* node = list->head; node != nullptr; node = node->next) {
        copy_element(target, node->data, elemSize);
        target += elemSize;
    }
    if (count != nullptr) {
        *count = list->count;
    }
    return static_cast<int>(list->count);
}

int rtDListAppendArray(ASN1CTXT* ctxt, _Asn1RTDList* list, void* array, uint32_t count, size_t elemSize) {
    auto* element = static_cast<uint8_t*>(array);
    for (uint32_t i = 0; i < count; ++i) {
        if (rtDListAppend(ctxt, list, element) == nullptr) {
            return RT_E_NOMEM;
        }
        element += elemSize;
    }
    return RT_OK;
}

int rtDListAppendArrayCopy(ASN1CTXT* ctxt, _Asn1RTDList* list, const void* array, uint32_t count,
                           size_t elemSize) {
    const auto* element = static_cast<const uint8_t*>(array);
    for (uint32_t i = 0; i < count; ++i) {
        void* copy = rtMemHeapAlloc(&ctxt->typeHeap, elemSize);
        if (copy == nullptr) {
            return RT_E_NOMEM;
        }
        std::memcpy(copy, element, elemSize);
        if (rtDListAppend(ctxt, list, copy) == nullptr) {
            rtMemHeapFreePtr(&ctxt->typeHeap, copy);
            return RT_E_NOMEM;
        }
        element += elemSize;
    }
    return RT_OK;
}

void rtSListInitEx(ASN1CTXT* ctxt, rtSList* list) {
    *list = rtSList{};
    list->owner = ctxt;
}

rtSListNode* rtSListAppend(rtSList* list, void* data) {
    void* block = list->owner == nullptr ? std::malloc(sizeof(rtSListNode))
                                         : rtMemHeapAlloc(&list->owner->typeHeap, sizeof(rtSListNode));
    if (block == nullptr) {
        return nullptr;
    }
    auto* node = static_cast<rtSListNode*>(block);
    node->data = data;
    node->next = nullptr;
    (list->tail == nullptr ? list->head : list->tail->next) = node;
    list->tail = node;
    ++list->count;
    return node;
}

void rtSListFree(rtSList* list) {
    for (rtSListNode* node = list->head; node != nullptr;) {
        rtSListNode* next = node->next;
        if (list->owner == nullptr) {
            std::free(node);
        } else {
            rtMemHeapFreePtr(&list->owner->typeHeap, node);
        }
        node = next;
    }
    *list = rtSList{};
}

}  // extern "C"
