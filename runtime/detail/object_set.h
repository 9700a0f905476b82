#pragma once

// What the generated information object sets and objects (X.681) share: the lookup by identifier, and the
// handling of a carried record. A set is built once and never changes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "runtime/ber_decode.h"
#include "runtime/detail/element_encoder.h"
#include "runtime/detail/nesting.h"
#include "runtime/detail/record_memory.h"
#include "runtime/message_buffer.h"
#include "runtime/object_id.h"
#include "runtime/value_types.h"

namespace Quillmark::detail {

/// Objects in the order of the set, owned.
template <typename Object, size_t Count>
class ObjectSet {
  public:
    /// The first object with the identifier, null when none has it.
    Object* lookupObject(const ASN1TObjId& id) const {
        Index at = first_in_[bucket_of(id)];
        while (at != kEnd && !(objects_[at]->id == id)) {
            at = next_[at];
        }
        return at == kEnd ? nullptr : objects_[at].get();
    }

    static constexpr size_t count() { return Count; }
    Object* object(size_t index) const { return objects_[index].get(); }

  protected:
    typedef std::array<std::unique_ptr<Object>, Count> Objects;

    explicit ObjectSet(Objects objects) : objects_(std::move(objects)) {
        first_in_.fill(kEnd);
        for (size_t i = Count; i-- > 0;) {  // the first of the set becomes the first of its bucket
            Index& first = first_in_[bucket_of(objects_[i]->id)];
            next_[i] = first;
            first = static_cast<Index>(i);
        }
    }

  private:
    typedef uint8_t Index;
    static constexpr Index kEnd = 0xFF;
    static_assert(Count < kEnd);
    // More than twice as many as the largest set has objects, so that an identifier of none meets an empty
    // one.
    static constexpr size_t kBuckets = 128;

    // The last two arcs tell nearly all identifiers apart.
    static size_t bucket_of(const ASN1OBJID& id) {
        if (id.numids < 2 || id.numids > ASN1_K_MAXSUBIDS) {
            return 0;
        }
        return (id.subid[id.numids - 1] + size_t{13} * id.subid[id.numids - 2]) % kBuckets;
    }

    Objects objects_;
    std::array<Index, kBuckets> first_in_;
    std::array<Index, Count> next_;  // in the same bucket
};

/// Makes a set for `pthread_once`, which runs again when this throws.
template <typename Set>
void build_set(Set*& instance) {
    std::unique_ptr<Set> set(new Set(nullptr));
    instance = set.release();
}

/// What an object does with a carried value of type `Family::Record`, through the functions of the type.
template <typename Family>
struct Carried {
    typedef typename Family::Record Record;

    static Record* record(Asn1TObject& value) { return static_cast<Record*>(value.decoded); }

    static void* construct(ASN1CTXT* ctxt) { return make_record_or_throw<Record>(ctxt); }

    static ASN1CType* control(ASN1MessageBufferIF& buffer, void* record) {
        ASN1CTXT* ctxt = buffer.getCtxtPtr();
        void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(typename Family::Control));
        require(block != nullptr);
        return new (block) typename Family::Control(buffer, *static_cast<Record*>(record));
    }

    static int encode(ASN1CTXT* ctxt, Asn1TObject& value) {
        if (value.decoded == nullptr) {
            return rtErrSetData(&ctxt->errInfo, RT_E_BADVALUE);
        }
        return Family::encode(ctxt, record(value), ASN1EXPL);
    }

    /// `decoded` is set whatever the outcome of decoding.
    static int decode(ASN1CTXT* ctxt, Asn1TObject& value) {
        const NestingLevel level(ctxt);
        if (level.too_deep()) {
            return rtErrSetData(&ctxt->errInfo, RT_E_NOTSUPP);
        }
        Record* made = make_record<Record>(ctxt);
        if (made == nullptr) {
            return rtErrSetData(&ctxt->errInfo, RT_E_NOMEM);
        }
        value.decoded = made;
        return Family::decode(ctxt, made, ASN1EXPL, 0);
    }

    static void copy(ASN1CTXT* ctxt, Asn1TObject& src, Asn1TObject& dst) {
        dst.decoded = copy_alternative(ctxt, record(src), Family::copy);
    }

    static void release(ASN1CTXT* ctxt, Asn1TObject& value) {
        if (value.decoded != nullptr) {
            Family::release(ctxt, record(value));
        }
        value.decoded = nullptr;
    }
};

/// A NULL has no record; one octet stands for it, so that it shows that the value was there.
template <typename Control>
struct CarriedNull {
    static void* construct(ASN1CTXT* ctxt) { return make_record_or_throw<uint8_t>(ctxt); }

    static ASN1CType* control(ASN1MessageBufferIF& buffer, void* record) {
        ASN1CTXT* ctxt = buffer.getCtxtPtr();
        void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(Control));
        require(block != nullptr);
        return new (block) Control(buffer, record);
    }

    static int encode(ASN1CTXT* ctxt, Asn1TObject& value) {
        return recorded(ctxt, value.decoded == nullptr ? RT_E_BADVALUE : xe_null(ctxt, ASN1EXPL));
    }

    static int decode(ASN1CTXT* ctxt, Asn1TObject& value) {
        value.decoded = make_record<uint8_t>(ctxt);
        return recorded(ctxt, value.decoded == nullptr ? RT_E_NOMEM : xd_null(ctxt, ASN1EXPL));
    }

    static void copy(ASN1CTXT* ctxt, Asn1TObject& src, Asn1TObject& dst) {
        dst.decoded = src.decoded == nullptr ? nullptr : construct(ctxt);
    }

    static void release(ASN1CTXT* /*ctxt*/, Asn1TObject& value) { value.decoded = nullptr; }
};

}  // namespace Quillmark::detail
