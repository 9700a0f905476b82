#pragma once

// The doubly linked list behind SEQUENCE OF and SET OF, and the singly linked one behind the SET OF sort.
//
//     ASN1TSeqOfList list;
//     rtDListInit(&list);
//     if (rtDListAppend(ctxt, &list, element) == nullptr) { ... out of memory ... }
//     for (const _Asn1RTDListNode* node = list.head; node != nullptr; node = node->next) { ... }
//
// A node and its element can be one block of the heap, the element directly behind the node: decoders of list
// types allocate them so and link them with `rtDListAppendNode`. Such an element is freed with its node.

#include <cstddef>
#include <cstdint>

#include "runtime/context.h"

/// `data` is not owned by the node unless it lies behind it.
struct _Asn1RTDListNode {
    void* data;
    _Asn1RTDListNode* next;
    _Asn1RTDListNode* prev;
};

/// `head` to `tail` in the order of the message; nodes and payloads lie on a context's `typeHeap`.
struct _Asn1RTDList {
    uint32_t count;
    _Asn1RTDListNode* head;
    _Asn1RTDListNode* tail;
};

typedef _Asn1RTDList ASN1TSeqOfList;

/// The record of a generated list type.
struct ASN1TPDUSeqOfList : ASN1TSeqOfList, ASN1TPDU {
    ASN1TPDUSeqOfList() : ASN1TSeqOfList{} {}
};

extern "C" {

/// Makes `list` an empty list.
QUILLMARK_API void rtDListInit(_Asn1RTDList* list);

/// Insert a new node for `data`. Each returns the node, or null when memory fails or the place does not
/// exist.
QUILLMARK_API _Asn1RTDListNode* rtDListAppend(ASN1CTXT* ctxt, _Asn1RTDList* list, void* data);
/// Links the node in front of `payload`, with which it is one block; takes no memory.
QUILLMARK_API _Asn1RTDListNode* rtDListAppendNode(ASN1CTXT* ctxt, _Asn1RTDList* list, void* payload);
/// An `index` equal to the count appends, one below 1 inserts at the head, one above the count is no place.
QUILLMARK_API _Asn1RTDListNode* rtDListInsert(ASN1CTXT* ctxt, _Asn1RTDList* list, int index, void* data);
QUILLMARK_API _Asn1RTDListNode* rtDListInsertBefore(ASN1CTXT* ctxt, _Asn1RTDList* list,
                                                    _Asn1RTDListNode* node, void* data);
QUILLMARK_API _Asn1RTDListNode* rtDListInsertAfter(ASN1CTXT* ctxt, _Asn1RTDList* list, _Asn1RTDListNode* node,
                                                   void* data);

/// Null for an `index` at or past the count; one below 1 is the head.
QUILLMARK_API _Asn1RTDListNode* rtDListFindByIndex(const _Asn1RTDList* list, int index);
/// The first node with this very pointer, or null.
QUILLMARK_API _Asn1RTDListNode* rtDListFindByData(const _Asn1RTDList* list, const void* data);
/// Its place, or -1.
QUILLMARK_API int rtDListFindIndexByData(const _Asn1RTDList* list, const void* data);

/// Unlinks the node and frees nothing.
QUILLMARK_API void rtDListRemove(_Asn1RTDList* list, _Asn1RTDListNode* node);
/// Empties the list, frees its nodes and leaves the elements; nodes that are one block with theirs stay too.
QUILLMARK_API void rtDListFreeNodes(ASN1CTXT* ctxt, _Asn1RTDList* list);
/// Empties the list and frees elements and nodes, all of which must lie on the `typeHeap`.
QUILLMARK_API void rtDListFreeAll(ASN1CTXT* ctxt, _Asn1RTDList* list);
/// The same for a list of `ASN1OpenType`, with the octets of each.
QUILLMARK_API void rtMemFreeOpenSeqExt(ASN1CTXT* ctxt, _Asn1RTDList* list);

/// Copies the elements, `elemSize` octets each, to `*array`; a null `*array` receives a block of the
/// `typeHeap`, the caller's own has room for all. Returns the number of elements, also in `*count` where that
/// is not null, or `RT_E_NOMEM`.
QUILLMARK_API int rtDListToArray(ASN1CTXT* ctxt, const _Asn1RTDList* list, void** array, uint32_t* count,
                                 size_t elemSize);
/// Appends nodes for the elements of an array, which stay where they are. Returns 0 or `RT_E_NOMEM`; the list
/// then has some of them.
QUILLMARK_API int rtDListAppendArray(ASN1CTXT* ctxt, _Asn1RTDList* list, void* array, uint32_t count,
                                     size_t elemSize);
/// The same with copies of the elements.
QUILLMARK_API int rtDListAppendArrayCopy(ASN1CTXT* ctxt, _Asn1RTDList* list, const void* array,
                                         uint32_t count, size_t elemSize);

/// An empty list whose nodes come from `ctxt`, or from `malloc` when that is null.
QUILLMARK_API void rtSListInitEx(ASN1CTXT* ctxt, rtSList* list);
/// Returns the new node, or null when memory fails.
QUILLMARK_API rtSListNode* rtSListAppend(rtSList* list, void* data);
/// Frees the nodes, leaves the data, and clears all fields, the owner too.
QUILLMARK_API void rtSListFree(rtSList* list);

}  // extern "C"
