#include "runtime/seq_of_list.h"

#include <cstring>

// A list of the caller's.

ASN1CSeqOfList::ASN1CSeqOfList(ASN1MessageBufferIF& buffer, _Asn1RTDList& callersList,
                               unsigned char initialise)
    : ASN1CType(buffer) {
    wrap(callersList, initialise);
}

ASN1CSeqOfList::ASN1CSeqOfList(ASN1MessageBufferIF& buffer, ASN1TPDUSeqOfList& callersList,
                               unsigned char initialise)
    : ASN1CType(buffer) {
    wrap(callersList, initialise);
}

ASN1CSeqOfList::ASN1CSeqOfList(ASN1Context& context, _Asn1RTDList& callersList, unsigned char initialise)
    : ASN1CType(context) {
    wrap(callersList, initialise);
}

ASN1CSeqOfList::ASN1CSeqOfList(ASN1Context& context, ASN1TPDUSeqOfList& callersList, unsigned char initialise)
    : ASN1CType(context) {
    wrap(callersList, initialise);
}

// A list of its own.

ASN1CSeqOfList::ASN1CSeqOfList(ASN1MessageBufferIF& buffer) : ASN1CType(buffer) {
    make_list();
}

ASN1CSeqOfList::ASN1CSeqOfList(ASN1Context& context) : ASN1CType(context) {
    make_list();
}

ASN1CSeqOfList::~ASN1CSeqOfList() {
    if (wrapsList != 0 || list == nullptr) {
        return;
    }
    rtDListFreeNodes(mpContext, list);
    rtMemHeapFreePtr(&mpContext->typeHeap, list);
}

void ASN1CSeqOfList::wrap(_Asn1RTDList& callersList, unsigned char initialise) {
    list = &callersList;
    modCount = 0;
    wrapsList = 1;
    if (initialise != 0) {
        rtDListInit(list);
    }
}

void ASN1CSeqOfList::make_list() {
    list = static_cast<_Asn1RTDList*>(rtMemHeapAllocZ(&mpContext->typeHeap, sizeof(_Asn1RTDList)));
    modCount = 0;
    wrapsList = 0;
}

int ASN1CSeqOfList::record(int status) const {
    return rtErrSetData(&mpContext->errInfo, status);
}

int ASN1CSeqOfList::inserted(const _Asn1RTDListNode* node) {
    if (node == nullptr) {
        return record(RT_E_NOMEM);
    }
    ++modCount;
    return RT_OK;
}

int ASN1CSeqOfList::append(void* data) {
    return inserted(list == nullptr ? nullptr : rtDListAppend(mpContext, list, data));
}

int ASN1CSeqOfList::appendArray(const void* array, int count, int elemSize) {
    if (list == nullptr) {
        return record(RT_E_NOMEM);
    }
    if (count < 0 || elemSize < 0) {
        return record(RT_E_INVPARAM);
    }
    ++modCount;
    const int status = rtDListAppendArray(mpContext, list, const_cast<void*>(array),
                                          static_cast<uint32_t>(count), static_cast<size_t>(elemSize));
    return status == RT_OK ? status : record(status);
}

int ASN1CSeqOfList::appendArrayCopy(const void* array, int count, int elemSize) {
    if (list == nullptr) {
        return record(RT_E_NOMEM);
    }
    if (count < 0 || elemSize < 0) {
        return record(RT_E_INVPARAM);
    }
    ++modCount;
    const int status = rtDListAppendArrayCopy(mpContext, list, array, static_cast<uint32_t>(count),
                                              static_cast<size_t>(elemSize));
    return status == RT_OK ? status : record(status);
}

int ASN1CSeqOfList::insert(int index, void* data) {
    if (list == nullptr) {
        return record(RT_E_NOMEM);
    }
    if (index > size()) {
        return record(RT_E_INVPARAM);
    }
    return inserted(rtDListInsert(mpContext, list, index, data));
}

int ASN1CSeqOfList::insertBefore(_Asn1RTDListNode* node, void* data) {
    if (list == nullptr || node == nullptr) {
        return record(RT_E_INVPARAM);
    }
    return inserted(rtDListInsertBefore(mpContext, list, node, data));
}

int ASN1CSeqOfList::insertAfter(_Asn1RTDListNode* node, void* data) {
    if (list == nullptr || node == nullptr) {
        return record(RT_E_INVPARAM);
    }
    return inserted(rtDListInsertAfter(mpContext, list, node, data));
}

int ASN1CSeqOfList::remove(int index) {
    return remove(list == nullptr ? nullptr : rtDListFindByIndex(list, index));
}

int ASN1CSeqOfList::remove(void* data) {
    return remove(list == nullptr ? nullptr : rtDListFindByData(list, data));
}

int ASN1CSeqOfList::remove(_Asn1RTDListNode* node) {
    if (list == nullptr || node == nullptr) {
        return record(RT_E_INVPARAM);
    }
    rtDListRemove(list, node);
    // A node in one block with its element stays for the element's sake.
    if (node->data != node + 1) {
        rtMemHeapFreePtr(&mpContext->typeHeap, node);
    }
    ++modCount;
    return RT_OK;
}

int ASN1CSeqOfList::indexOf(const void* data) const {
    return list == nullptr ? -1 : rtDListFindIndexByData(list, data);
}

void* ASN1CSeqOfList::get(int index) const {
    const _Asn1RTDListNode* node = list == nullptr ? nullptr : rtDListFindByIndex(list, index);
    return node == nullptr ? nullptr : node->data;
}

int ASN1CSeqOfList::set(int index, void* data) {
    _Asn1RTDListNode* node = list == nullptr ? nullptr : rtDListFindByIndex(list, index);
    if (node == nullptr) {
        return record(RT_E_INVPARAM);
    }
    node->data = data;
    ++modCount;
    return RT_OK;
}

void* ASN1CSeqOfList::getFirst() const {
    return isEmpty() ? nullptr : list->head->data;
}

void* ASN1CSeqOfList::getLast() const {
    return isEmpty() ? nullptr : list->tail->data;
}

void ASN1CSeqOfList::clear() {
    if (list == nullptr) {
        return;
    }
    rtDListFreeNodes(mpContext, list);
    ++modCount;
}

void ASN1CSeqOfList::freeAll() {
    if (list == nullptr) {
        return;
    }
    rtDListFreeAll(mpContext, list);
    ++modCount;
}

int ASN1CSeqOfList::size() const {
    return list == nullptr ? 0 : static_cast<int>(list->count);
}

void* ASN1CSeqOfList::toArray(int elemSize) const {
    void* array = nullptr;
    if (isEmpty() || elemSize < 0) {
        return nullptr;
    }
    const int result = rtDListToArray(mpContext, list, &array, nullptr, static_cast<size_t>(elemSize));
    if (result < 0) {
        record(result);
        return nullptr;
    }
    return array;
}

void* ASN1CSeqOfList::toArray(void* array, int elemSize, int room) const {
    if (array == nullptr || elemSize < 0 || size() > room) {
        return nullptr;
    }
    if (!isEmpty()) {
        rtDListToArray(mpContext, list, &array, nullptr, static_cast<size_t>(elemSize));
    }
    return array;
}

ASN1CSeqOfListIterator ASN1CSeqOfList::iterator() {
    return {*this, list == nullptr ? nullptr : list->head};
}

ASN1CSeqOfListIterator ASN1CSeqOfList::iteratorFromLast() {
    return {*this, list == nullptr ? nullptr : list->tail};
}

ASN1CSeqOfListIterator ASN1CSeqOfList::iteratorFrom(const void* data) {
    return {*this, list == nullptr ? nullptr : rtDListFindByData(list, data)};
}

ASN1CSeqOfListIterator::ASN1CSeqOfListIterator(ASN1CSeqOfList& owner, _Asn1RTDListNode* start)
    : list(&owner),
      nextNode(start),
      lastNode(nullptr),
      expectedModCount(owner.modCount),
      stat(RT_OK),
      moved(false) {}

int ASN1CSeqOfListIterator::fail(int status) {
    stat = status;
    return status;
}

bool ASN1CSeqOfListIterator::changed_behind() {
    if (list->modCount == expectedModCount) {
        return false;
    }
    stat = RT_E_CONCMODF;
    return true;
}

void* ASN1CSeqOfListIterator::arrive(_Asn1RTDListNode* node) {
    if (node == nullptr) {
        stat = RT_E_SETMISSING;
        return nullptr;
    }
    moved = true;
    lastNode = node;
    nextNode = node->next;
    return node->data;
}

void* ASN1CSeqOfListIterator::next() {
    return changed_behind() ? nullptr : arrive(nextNode);
}

void* ASN1CSeqOfListIterator::prev() {
    if (changed_behind()) {
        return nullptr;
    }
    // Intended: it steps first, unless nothing was returned yet.
    if (!moved) {
        return arrive(nextNode);
    }
    if (lastNode != nullptr) {
        return arrive(lastNode->prev);
    }
    return arrive(nextNode == nullptr ? list->lastNode() : nextNode->prev);
}

int ASN1CSeqOfListIterator::remove() {
    if (changed_behind()) {
        return stat;
    }
    if (lastNode == nullptr) {
        return fail(RT_E_ILLSTATE);
    }
    const int status = list->remove(lastNode);
    lastNode = nullptr;
    expectedModCount = list->modCount;
    return status;
}

int ASN1CSeqOfListIterator::set(void* data) {
    if (changed_behind()) {
        return stat;
    }
    if (lastNode == nullptr) {
        return fail(RT_E_ILLSTATE);
    }
    lastNode->data = data;
    return RT_OK;
}

int ASN1CSeqOfListIterator::insert(void* data) {
    if (changed_behind()) {
        return stat;
    }
    const int status = nextNode == nullptr ? list->append(data) : list->insertBefore(nextNode, data);
    if (status != RT_OK) {
        return fail(status);
    }
    lastNode = nullptr;
    moved = true;
    expectedModCount = list->modCount;
    return RT_OK;
}
