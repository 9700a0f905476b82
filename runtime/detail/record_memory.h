#pragma once

// Making, freeing and copying what records hold on the heap of a context.

#include <cstddef>
#include <cstdint>
#include <new>

#include "runtime/context.h"
#include "runtime/list.h"
#include "runtime/object_id.h"
#include "runtime/value_types.h"

namespace Quillmark::detail {

/// A record on the heap of the context, constructed; null when memory fails.
template <typename Record>
Record* make_record(ASN1CTXT* ctxt) {
    void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(Record));
    return block == nullptr ? nullptr : new (block) Record();
}

/// Throws `std::bad_alloc` when an allocation or what needs one did not succeed.
inline void require(bool succeeded) {
    if (!succeeded) {
        throw std::bad_alloc();
    }
}

/// The same; throws `std::bad_alloc`.
template <typename Record>
Record* make_record_or_throw(ASN1CTXT* ctxt) {
    Record* record = make_record<Record>(ctxt);
    require(record != nullptr);
    return record;
}

/// Whether `block` begins in the message of the context.
bool in_message(const ASN1CTXT* ctxt, const void* block);

/// Frees a block of the heap unless it lies in the message, as `RT_F_FASTCOPY` has it.
void free_block(ASN1CTXT* ctxt, const void* block);

template <typename Pointee>
void free_pointer(ASN1CTXT* ctxt, Pointee*& pointer) {
    free_block(ctxt, pointer);
    pointer = nullptr;
}

/// Frees a text that is not the library's own default.
inline void free_text(ASN1CTXT* ctxt, const char*& text, const char* constant) {
    if (text != constant) {
        free_pointer(ctxt, text);
    }
}

// Copies: deep, on the heap of `ctxt`. A null source gives a null copy. Throw `std::bad_alloc`.

void copy_text(ASN1CTXT* ctxt, const char* src, const char*& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1TDynOctStr& src, ASN1TDynOctStr& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1TDynBitStr& src, ASN1TDynBitStr& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1_16BITCHARSTRING& src, ASN1_16BITCHARSTRING& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1_32BITCHARSTRING& src, ASN1_32BITCHARSTRING& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1OpenType& src, ASN1OpenType& dst);
void copy_extensions(ASN1CTXT* ctxt, const ASN1TSeqOfList& src, ASN1TSeqOfList& dst);

/// No more than the array holds, whatever the count says.
void copy_sized(uint32_t count, const uint8_t* src, uint32_t room, uint8_t* dst);

template <size_t Room>
void copy_sized_octets(uint32_t count, const uint8_t (&src)[Room], uint32_t& dst_count,
                       uint8_t (&dst)[Room]) {
    dst_count = count < Room ? count : Room;
    copy_sized(dst_count, src, Room, dst);
}

template <size_t Room>
void copy_sized_bits(uint32_t count, const uint8_t (&src)[Room], uint32_t& dst_count, uint8_t (&dst)[Room]) {
    dst_count = count < Room * 8 ? count : Room * 8;
    copy_sized((dst_count + 7) / 8, src, Room, dst);
}

/// A copy of the record that an alternative points at.
template <typename Record>
Record* copy_alternative(ASN1CTXT* ctxt, Record* src, void (*copy)(ASN1CTXT*, Record*, Record*)) {
    if (src == nullptr) {
        return nullptr;
    }
    Record* dst = make_record_or_throw<Record>(ctxt);
    copy(ctxt, src, dst);
    return dst;
}

inline ASN1TObjId* copy_alternative(ASN1CTXT* ctxt, ASN1TObjId* src) {
    if (src == nullptr) {
        return nullptr;
    }
    ASN1TObjId* dst = make_record_or_throw<ASN1TObjId>(ctxt);
    *dst = *src;
    return dst;
}

template <typename Value>
Value* copy_alternative(ASN1CTXT* ctxt, Value* src) {
    if (src == nullptr) {
        return nullptr;
    }
    Value* dst = make_record_or_throw<Value>(ctxt);
    copy_value(ctxt, *src, *dst);
    return dst;
}

}  // namespace Quillmark::detail
