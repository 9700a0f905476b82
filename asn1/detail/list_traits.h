#pragma once

// The bodies of `ASN1TSeqOfList_traits`, for the sources that instantiate them.

#include "asn1/codec.h"
#include "asn1/detail/heap.h"

namespace Quillmark::ASN1 {

template <class R, class Traits, class Value, class Container>
void ASN1TSeqOfList_traits<R, Traits, Value, Container>::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record,
                                                             const Container& values) {
    rtDListInit(&record);
    for (const Value& value : values) {
        Traits::set(ctxt, detail::append_record<R>(ctxt, record), value);
    }
}

template <class R, class Traits, class Value, class Container>
void ASN1TSeqOfList_traits<R, Traits, Value, Container>::get(const ASN1TSeqOfList& record,
                                                             Container& values) {
    values.clear();
    for (const _Asn1RTDListNode* node = record.head; node != nullptr; node = node->next) {
        // Read apart and moved over whole, so that a failing element is not left in the container.
        Container element;
        Traits::get(*static_cast<const R*>(node->data), element.emplace_back());
        values.splice(values.end(), element);
    }
}

template <class R, class Traits, class Value, class Container>
void ASN1TSeqOfList_traits<R, Traits, Value, Container>::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source,
                                                              ASN1TSeqOfList& target) {
    rtDListInit(&target);
    for (const _Asn1RTDListNode* node = source.head; node != nullptr; node = node->next) {
        Traits::copy(ctxt, *static_cast<const R*>(node->data), detail::append_record<R>(ctxt, target));
    }
}

}  // namespace Quillmark::ASN1
