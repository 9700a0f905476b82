#pragma once

// Open types whose type an identifier tells: the carried record is encoded in the place of the octets, and
// decoded from them. `Object` is an information object class, and the operation one of its virtual functions.

#include <cstdint>

#include "runtime/ber_decode.h"
#include "runtime/context.h"
#include "runtime/detail/element_encoder.h"
#include "runtime/detail/record_list.h"
#include "runtime/list.h"
#include "runtime/value_types.h"

namespace Quillmark::detail {

/// Puts buffer and flags of a context back when it goes.
class BufferSnapshot {
  public:
    explicit BufferSnapshot(ASN1CTXT* ctxt) : ctxt_(ctxt), buffer_(ctxt->buffer), flags_(ctxt->flags) {}
    ~BufferSnapshot() {
        ctxt_->buffer = buffer_;
        ctxt_->flags = flags_;
    }
    BufferSnapshot(const BufferSnapshot&) = delete;
    BufferSnapshot& operator=(const BufferSnapshot&) = delete;

  private:
    ASN1CTXT* ctxt_;
    ASN1BUFFER buffer_;
    uint16_t flags_;
};

/// Writes a value: by `object`, the one found for its identifier, or as its octets stand when there is none
/// or it carries no type.
template <typename Object>
int encode_open(ASN1CTXT* ctxt, const Object* object, int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const,
                Asn1TObject& value) {
    const int written = object == nullptr ? 0 : (object->*encode)(ctxt, value);
    return written != 0 ? written : xe_OpenType(ctxt, value.data, value.numocts);
}

/// The same for a value in an OCTET STRING. Without a carried record the string stands as it is.
template <typename Object>
int encode_wrapped(ASN1CTXT* ctxt, const Object* object, int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const,
                   const ASN1TDynOctStr& wrapper, Asn1TObject& value, ASN1TagType tagging) {
    const int written = object == nullptr || value.decoded == nullptr ? 0 : (object->*encode)(ctxt, value);
    if (written == 0) {
        return xe_octstr(ctxt, wrapper.data, wrapper.numocts, tagging);
    }
    return tagging == ASN1EXPL ? xe_tag_len(ctxt, universal(4), written) : written;
}

/// The same for the values of a SET OF.
template <typename Object>
int encode_open_set(ASN1CTXT* ctxt, const Object* object,
                    int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const, const ASN1TSeqOfList& list,
                    ASN1TagType tagging) {
    SetOfEncoder out(ctxt);
    for (const _Asn1RTDListNode* node = list.tail; node != nullptr && out.good(); node = node->prev) {
        if (out.given(node->data)) {
            out.add(encode_open(ctxt, object, encode, *element_of<Asn1TObject>(node)));
        }
    }
    return out.finish(kSet, tagging);
}

/// Starts reading the octets of a value. Returns 0 or a failure, unrecorded.
int open_octets(ASN1CTXT* ctxt, const ASN1OpenType& value);

/// Starts a buffer for a carried value. Returns 0 or a recorded failure.
int begin_carried(ASN1CTXT* ctxt);
/// Moves what was written, `written` octets, to a block of its own in `value` and frees the buffer. An object
/// that carries no type writes nothing: `value` then stays. Returns 0 or a recorded failure.
int end_carried(ASN1CTXT* ctxt, int written, Asn1Object& value);

/// Encodes `value.decoded` by `object`, the one found for its identifier; without one the octets stay.
template <typename Object>
int encode_carried(ASN1CTXT* ctxt, const Object* object, int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const,
                   Asn1TObject& value) {
    if (object == nullptr) {
        return RT_OK;
    }
    const int status = begin_carried(ctxt);
    return status != RT_OK ? status : end_carried(ctxt, (object->*encode)(ctxt, value), value);
}

/// Decodes the octets of `value`, if there are any, by `object`; without one nothing is decoded.
template <typename Object>
int decode_carried(ASN1CTXT* ctxt, const Object* object, int (Object::*decode)(ASN1CTXT*, Asn1TObject&) const,
                   Asn1TObject& value) {
    if (object == nullptr || value.numocts == 0) {
        return RT_OK;
    }
    const int status = open_octets(ctxt, value);
    return recorded(ctxt, status != RT_OK ? status : (object->*decode)(ctxt, value));
}

template <typename Object>
void copy_carried(ASN1CTXT* ctxt, const Object* object,
                  void (Object::*copy)(ASN1CTXT*, Asn1TObject&, Asn1TObject&) const, Asn1TObject& src,
                  Asn1TObject& dst) {
    dst.decoded = nullptr;
    if (object != nullptr) {
        (object->*copy)(ctxt, src, dst);
    }
}

template <typename Object>
void free_carried(ASN1CTXT* ctxt, const Object* object,
                  void (Object::*release)(ASN1CTXT*, Asn1TObject&) const, Asn1TObject& value) {
    if (object != nullptr) {
        (object->*release)(ctxt, value);
    }
    value.decoded = nullptr;
}

// The same for a list of values under one identifier. A node without a value is passed over.

template <typename Object>
int encode_carried_list(ASN1CTXT* ctxt, const Object* object,
                        int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const, const ASN1TSeqOfList& list) {
    int status = RT_OK;
    for (const _Asn1RTDListNode* node = list.head; node != nullptr && status == RT_OK; node = node->next) {
        if (node->data != nullptr) {
            status = encode_carried(ctxt, object, encode, *element_of<Asn1TObject>(node));
        }
    }
    return status;
}

template <typename Object>
int decode_carried_list(ASN1CTXT* ctxt, const Object* object,
                        int (Object::*decode)(ASN1CTXT*, Asn1TObject&) const, const ASN1TSeqOfList& list) {
    int status = RT_OK;
    for (const _Asn1RTDListNode* node = list.head; node != nullptr && status == RT_OK; node = node->next) {
        if (node->data != nullptr) {
            status = decode_carried(ctxt, object, decode, *element_of<Asn1TObject>(node));
        }
    }
    return status;
}

/// `dst` is a copy of `src` that lacks the carried records.
template <typename Object>
void copy_carried_list(ASN1CTXT* ctxt, const Object* object,
                       void (Object::*copy)(ASN1CTXT*, Asn1TObject&, Asn1TObject&) const,
                       const ASN1TSeqOfList& src, const ASN1TSeqOfList& dst) {
    const _Asn1RTDListNode* target = dst.head;
    for (const _Asn1RTDListNode* node = src.head; node != nullptr; node = node->next, target = target->next) {
        if (node->data != nullptr) {
            copy_carried(ctxt, object, copy, *element_of<Asn1TObject>(node),
                         *element_of<Asn1TObject>(target));
        }
    }
}

template <typename Object>
void free_carried_list(ASN1CTXT* ctxt, const Object* object,
                       void (Object::*release)(ASN1CTXT*, Asn1TObject&) const, const ASN1TSeqOfList& list) {
    for (const _Asn1RTDListNode* node = list.head; node != nullptr; node = node->next) {
        if (node->data != nullptr) {
            free_carried(ctxt, object, release, *element_of<Asn1TObject>(node));
        }
    }
}

/// Lets `value` stand for the contents of the string that wraps it.
inline void view_contents(const ASN1TDynOctStr& wrapper, Asn1TObject& value) {
    value.numocts = wrapper.numocts;
    value.data = wrapper.data;
    value.decoded = nullptr;
}

/// Lets the string have the octets that `value` was encoded to.
inline void take_contents(const Asn1TObject& value, ASN1TDynOctStr& wrapper) {
    wrapper.numocts = value.numocts;
    wrapper.data = value.data;
}

}  // namespace Quillmark::detail
