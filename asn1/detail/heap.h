#pragma once

// What traits place on the heap of a context. Nothing of it is freed one by one: it goes with the context.

#include <cstdint>
#include <cstring>
#include <new>

#include "asn1/detail/check.h"
#include "runtime/context.h"
#include "runtime/list.h"
#include "values/blob.h"

namespace Quillmark::detail {

inline void* allocate(ASN1CTXT* ctxt, std::size_t size) {
    return check_allocation(rtMemHeapAlloc(&ctxt->typeHeap, size));
}

/// A copy of `size` octets, never null.
inline std::uint8_t* copy_octets(ASN1CTXT* ctxt, const void* octets, std::size_t size) {
    auto* copy = static_cast<std::uint8_t*>(allocate(ctxt, size));
    if (size != 0) {
        std::memcpy(copy, octets, size);
    }
    return copy;
}

/// A copy of a text with its terminator.
inline const char* copy_text(ASN1CTXT* ctxt, const char* text) {
    return reinterpret_cast<const char*>(copy_octets(ctxt, text, std::strlen(text) + 1));
}

/// Fills one of the records that are a count and a pointer to octets.
template <class OctetRecord>
void put_octets(ASN1CTXT* ctxt, OctetRecord& record, const CBlob& octets) {
    // The heap has no blocks of 2 GiB, so the size fits the count of the record.
    record.data = copy_octets(ctxt, octets.pbData(), octets.cbData());
    record.numocts = static_cast<std::uint32_t>(octets.cbData());
}

/// A fresh record.
template <class R>
R* new_record(ASN1CTXT* ctxt) {
    return new (allocate(ctxt, sizeof(R))) R();
}

/// A fresh record at the end of a list, in one block with its node.
template <class R>
R& append_record(ASN1CTXT* ctxt, ASN1TSeqOfList& list) {
    static_assert(sizeof(_Asn1RTDListNode) % alignof(R) == 0);
    auto* node = static_cast<std::uint8_t*>(allocate(ctxt, sizeof(_Asn1RTDListNode) + sizeof(R)));
    R* record = new (node + sizeof(_Asn1RTDListNode)) R();
    rtDListAppendNode(ctxt, &list, record);
    return *record;
}

}  // namespace Quillmark::detail
