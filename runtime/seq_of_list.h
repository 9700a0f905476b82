#pragma once

// The list of a SEQUENCE OF or SET OF as a class, with an iterator that notices changes made behind it.
//
//     ASN1CSeqOfList list(buffer, record);
//     ASN1CSeqOfListIterator position = list.iterator();
//     while (void* element = position.next()) { ... }

#include <cstdint>

#include "runtime/list.h"
#include "runtime/message_buffer.h"

class ASN1CSeqOfListIterator;

/// A list of a caller, or one of its own on the heap of its context. Elements are never owned: they lie on
/// that heap or where the caller has them. Operations that return a status give 0, `RT_E_NOMEM` or, for a
/// place that is not in the list, `RT_E_INVPARAM`; both are recorded.
class QUILLMARK_API ASN1CSeqOfList : public ASN1CType {
  public:
    /// Work on the caller's list, emptied first when `initialise` says so.
    ASN1CSeqOfList(ASN1MessageBufferIF& buffer, _Asn1RTDList& callersList, unsigned char initialise = 0);
    ASN1CSeqOfList(ASN1MessageBufferIF& buffer, ASN1TPDUSeqOfList& callersList, unsigned char initialise = 0);
    ASN1CSeqOfList(ASN1Context& context, _Asn1RTDList& callersList, unsigned char initialise = 0);
    ASN1CSeqOfList(ASN1Context& context, ASN1TPDUSeqOfList& callersList, unsigned char initialise = 0);

    /// Make a list. When memory fails it stays without one: empty, and changes fail with `RT_E_NOMEM`.
    explicit ASN1CSeqOfList(ASN1MessageBufferIF& buffer);
    explicit ASN1CSeqOfList(ASN1Context& context);

    /// Frees the nodes and the list where it is not the caller's.
    ~ASN1CSeqOfList() override;
    ASN1CSeqOfList(const ASN1CSeqOfList&) = delete;
    ASN1CSeqOfList& operator=(const ASN1CSeqOfList&) = delete;

    /// Appends the pointer, not what it points at.
    int append(void* data);
    /// Appends `count` elements of `elemSize` octets that stay where they are.
    int appendArray(const void* array, int count, int elemSize);
    /// Appends copies on the heap.
    int appendArrayCopy(const void* array, int count, int elemSize);
    /// An `index` equal to the size appends, one below 1 inserts at the head.
    int insert(int index, void* data);
    int insertBefore(_Asn1RTDListNode* node, void* data);
    int insertAfter(_Asn1RTDListNode* node, void* data);

    /// Take an element out of the list; its data stays. The node goes back to the heap.
    int remove(int index);
    int remove(void* data);
    int remove(_Asn1RTDListNode* node);

    /// Place of the first element with this very pointer, -1 when there is none.
    int indexOf(const void* data) const;
    /// Null for an `index` at or past the size; one below 1 is the head.
    void* get(int index) const;
    int set(int index, void* data);
    void* getFirst() const;
    void* getLast() const;

    /// Empties the list and leaves the elements.
    void clear();
    /// Empties the list and frees the elements, which must lie on the context's `typeHeap`.
    void freeAll();
    bool isEmpty() const { return size() == 0; }
    int size() const;

    /// Copies of the elements, `elemSize` octets each, in one block on the heap; null for an empty list or
    /// when memory fails.
    void* toArray(int elemSize) const;
    /// The same in the caller's array of `room` elements; null when it is too small.
    void* toArray(void* array, int elemSize, int room) const;

    /// Starts at the first element, for `next`.
    ASN1CSeqOfListIterator iterator();
    /// Starts at the last element, for `prev`.
    ASN1CSeqOfListIterator iteratorFromLast();
    /// Starts at the element with this very pointer; past the end when there is none.
    ASN1CSeqOfListIterator iteratorFrom(const void* data);

  private:
    friend class ASN1CSeqOfListIterator;

    void wrap(_Asn1RTDList& callersList, unsigned char initialise);
    void make_list();
    int record(int status) const;
    int inserted(const _Asn1RTDListNode* node);
    _Asn1RTDListNode* lastNode() const { return list == nullptr ? nullptr : list->tail; }

    _Asn1RTDList* list;
    int32_t modCount;   ///< changes so far
    uint8_t wrapsList;  ///< the list belongs to the caller
};

/// A position in a list. Each operation fails with `RT_E_CONCMODF` when the list was changed otherwise than
/// through this iterator. It must not outlive the list.
class QUILLMARK_API ASN1CSeqOfListIterator {
  public:
    /// The next element; null at the end (`RT_E_SETMISSING`) or after a change (`RT_E_CONCMODF`).
    void* next();
    /// The element before the one returned last, or the element that the iterator starts at when none was
    /// returned yet; null as for `next`.
    void* prev();
    /// Takes the element returned last out of the list. Returns 0, `RT_E_CONCMODF`, or `RT_E_ILLSTATE` when
    /// there is none.
    int remove();
    /// Puts `data` in its place; returns as `remove` does.
    int set(void* data);
    /// Inserts before the element that `next` would return. Returns 0, `RT_E_CONCMODF` or `RT_E_NOMEM`.
    int insert(void* data);
    /// Status of the last operation that failed, 0 when none did.
    int getStat() const { return stat; }

  private:
    friend class ASN1CSeqOfList;
    ASN1CSeqOfListIterator(ASN1CSeqOfList& owner, _Asn1RTDListNode* start);

    bool changed_behind();
    int fail(int status);
    void* arrive(_Asn1RTDListNode* node);

    ASN1CSeqOfList* list;
    _Asn1RTDListNode* nextNode;
    _Asn1RTDListNode* lastNode;
    int32_t expectedModCount;
    int32_t stat;
    bool moved;  ///< an element was returned before
};
