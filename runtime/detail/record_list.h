#pragma once

// SEQUENCE OF and SET OF for the generated codecs: linked lists, whose node and record are one block, and
// arrays.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "runtime/context.h"
#include "runtime/detail/element_decoder.h"
#include "runtime/detail/element_encoder.h"
#include "runtime/detail/record_memory.h"
#include "runtime/list.h"

namespace Quillmark::detail {

/// The record of a list node.
template <typename Record>
Record* element_of(const _Asn1RTDListNode* node) {
    return static_cast<Record*>(node->data);
}

/// A node with room for a record of `size` octets behind it, null when memory fails.
void* allocate_node(ASN1CTXT* ctxt, size_t size);

template <typename Record>
int encode_list(ASN1CTXT* ctxt, const ASN1TSeqOfList& list, int (*encode)(ASN1CTXT*, Record*, ASN1TagType),
                ASN1TAG tag, ASN1TagType tagging) {
    ContentEncoder out(ctxt);
    for (const _Asn1RTDListNode* node = list.tail; node != nullptr && out.good(); node = node->prev) {
        if (out.given(node->data)) {
            out.add(encode(ctxt, element_of<Record>(node), ASN1EXPL));
        }
    }
    return out.finish(tag, tagging);
}

template <typename Record>
int encode_sorted_list(ASN1CTXT* ctxt, const ASN1TSeqOfList& list,
                       int (*encode)(ASN1CTXT*, Record*, ASN1TagType), ASN1TAG tag, ASN1TagType tagging) {
    SetOfEncoder out(ctxt);
    for (const _Asn1RTDListNode* node = list.tail; node != nullptr && out.good(); node = node->prev) {
        if (out.given(node->data)) {
            out.add(encode(ctxt, element_of<Record>(node), ASN1EXPL));
        }
    }
    return out.finish(tag, tagging);
}

/// Reads a list. Returns 0 or a failure that is recorded.
template <typename Record>
int decode_list(ASN1CTXT* ctxt, ASN1TSeqOfList& list, int (*decode)(ASN1CTXT*, Record*, ASN1TagType, int),
                ASN1TAG tag, ASN1TagType tagging, int length) {
    rtDListInit(&list);
    SequenceDecoder in(ctxt, tag, tagging, length);
    while (in.more()) {
        void* block = allocate_node(ctxt, sizeof(Record));
        if (block == nullptr) {
            in.fail(RT_E_NOMEM);
            break;
        }
        Record* record = new (block) Record();
        if (in.taken(decode(ctxt, record, ASN1EXPL, 0))) {
            rtDListAppendNode(ctxt, &list, record);
        }
    }
    return in.status();
}

template <typename Record>
void free_list(ASN1CTXT* ctxt, ASN1TSeqOfList& list, void (*release)(ASN1CTXT*, Record*)) {
    for (const _Asn1RTDListNode* node = list.head; node != nullptr; node = node->next) {
        if (node->data != nullptr) {
            release(ctxt, element_of<Record>(node));
        }
    }
    rtDListFreeAll(ctxt, &list);
}

/// Appends `record` to a list. Throws `std::bad_alloc`.
void append_record(ASN1CTXT* ctxt, ASN1TSeqOfList& list, void* record);

template <typename Record>
void copy_list(ASN1CTXT* ctxt, const ASN1TSeqOfList& src, ASN1TSeqOfList& dst,
               void (*copy)(ASN1CTXT*, Record*, Record*)) {
    rtDListInit(&dst);
    for (const _Asn1RTDListNode* node = src.head; node != nullptr; node = node->next) {
        if (node->data == nullptr) {
            append_record(ctxt, dst, nullptr);
            continue;
        }
        Record* record = make_record_or_throw<Record>(ctxt);
        append_record(ctxt, dst, record);
        copy(ctxt, element_of<Record>(node), record);
    }
}

// Arrays

/// Counts the elements of contents of `length` octets at the position. Returns 0 or a recorded failure.
int count_elements(ASN1CTXT* ctxt, int length, uint32_t& count);
/// Room for `count` elements, null when memory fails or so many do not fit in memory.
void* allocate_array(ASN1CTXT* ctxt, uint32_t count, size_t element_size);

/// Elements that point at something begin null, so that they can be freed. Others are left as they are: an
/// OBJECT IDENTIFIER has 516 octets and touching them would cost more than reading the message.
template <typename Element>
inline constexpr bool kBeginsNull =
    std::is_pointer_v<Element> || !(std::is_arithmetic_v<Element> || std::is_base_of_v<ASN1OBJID, Element>);

template <typename Element>
Element* make_array(ASN1CTXT* ctxt, uint32_t count) {
    auto* elements = static_cast<Element*>(allocate_array(ctxt, count, sizeof(Element)));
    if constexpr (kBeginsNull<Element>) {
        if (elements != nullptr) {
            std::uninitialized_value_construct_n(elements, count);
        }
    }
    return elements;
}

template <typename Encoder, typename Array, typename Element>
int encode_array_by(ASN1CTXT* ctxt, const Array& array, int (*encode)(ASN1CTXT*, Element*, ASN1TagType),
                    ASN1TAG tag, ASN1TagType tagging) {
    if (array.elem == nullptr && array.n != 0) {
        return rtErrSetData(&ctxt->errInfo, RT_E_BADVALUE);
    }
    Encoder out(ctxt);
    for (uint32_t rest = array.n; rest != 0 && out.good(); --rest) {
        out.add(encode(ctxt, &array.elem[rest - 1], ASN1EXPL));
    }
    return out.finish(tag, tagging);
}

template <typename Array, typename Element>
int encode_array(ASN1CTXT* ctxt, const Array& array, int (*encode)(ASN1CTXT*, Element*, ASN1TagType),
                 ASN1TAG tag, ASN1TagType tagging) {
    return encode_array_by<ContentEncoder>(ctxt, array, encode, tag, tagging);
}

template <typename Array, typename Element>
int encode_sorted_array(ASN1CTXT* ctxt, const Array& array, int (*encode)(ASN1CTXT*, Element*, ASN1TagType),
                        ASN1TAG tag, ASN1TagType tagging) {
    return encode_array_by<SetOfEncoder>(ctxt, array, encode, tag, tagging);
}

/// Reads an array; `n` is the number of elements read, also after a failure. `RT_E_NOMEM` is not recorded.
template <typename Array, typename Element>
int decode_array(ASN1CTXT* ctxt, Array& array, int (*decode)(ASN1CTXT*, Element*, ASN1TagType, int),
                 ASN1TAG tag, ASN1TagType tagging, int length) {
    array.n = 0;
    array.elem = nullptr;
    SequenceDecoder in(ctxt, tag, tagging, length);
    uint32_t count = 0;
    if (in.failed() || !in.taken(count_elements(ctxt, in.contents_length(), count))) {
        return in.status();
    }
    array.elem = make_array<Element>(ctxt, count);
    if (array.elem == nullptr) {
        return RT_E_NOMEM;
    }
    while (array.n < count && in.more() && in.taken(decode(ctxt, &array.elem[array.n], ASN1EXPL, 0))) {
        ++array.n;
    }
    return in.finish(0);
}

template <typename Array, typename Element>
void free_array(ASN1CTXT* ctxt, Array& array, void (*release)(ASN1CTXT*, Element*)) {
    for (uint32_t i = 0; array.elem != nullptr && i < array.n; ++i) {
        release(ctxt, &array.elem[i]);
    }
    free_pointer(ctxt, array.elem);
}

template <typename Array, typename Element>
void copy_array(ASN1CTXT* ctxt, const Array& src, Array& dst, void (*copy)(ASN1CTXT*, Element*, Element*)) {
    dst.n = 0;
    dst.elem = nullptr;
    if (src.elem == nullptr) {
        return;
    }
    Element* elements = make_array<Element>(ctxt, src.n);
    require(elements != nullptr);
    dst.elem = elements;
    for (; dst.n < src.n; ++dst.n) {
        copy(ctxt, &src.elem[dst.n], &elements[dst.n]);
    }
}

}  // namespace Quillmark::detail
