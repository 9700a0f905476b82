#pragma once

// Reading the elements of a structure for the generated decoders: where a structure ends, which element comes
// next, and what a failure of one means for the whole.

#include <cstddef>
#include <cstdint>

#include "runtime/ber_decode.h"
#include "runtime/context.h"
#include "runtime/detail/decode_position.h"
#include "runtime/detail/element_encoder.h"
#include "runtime/detail/record_memory.h"
#include "runtime/value_types.h"

namespace Quillmark::detail {

/// What the decoders of structures have in common: the first failure, recorded, and the length of the element
/// whose header was read last.
class ElementDecoder {
  public:
    int status() const { return status_; }
    bool failed() const { return status_ != RT_OK; }
    int length() const { return length_; }

    /// Takes the outcome of an element that is there: every failure is final.
    bool taken(int status) { return status == RT_OK || fail(status); }
    bool check_range(uint32_t value, uint32_t low, uint32_t high, const char* path) {
        return take_check(detail::check_range(ctxt_, value, low, high, path));
    }
    bool check_minimum(uint32_t value, uint32_t low, const char* path) {
        return take_check(detail::check_minimum(ctxt_, value, low, path));
    }
    /// Takes the end-of-contents octets of the element whose header was read last, if its length was
    /// indefinite (X.690 8.1.5).
    bool close() { return length_ != RT_INDEFLEN || take_end(); }
    /// Goes back in front of the header read last, for a type that reads it itself.
    void rewind() { ctxt_->buffer.byteIndex = element_start_; }
    /// Reads the element whose header was read last into `value`, with tag `own` in the place of its own.
    /// Returns 0 or a failure, unrecorded.
    int keep_retagged(ASN1OpenType& value, ASN1TAG own);
    /// Makes the record of an alternative.
    template <typename Record>
    bool allocate(Record*& record);
    /// Records `status`; always false.
    bool fail(int status);

  protected:
    explicit ElementDecoder(ASN1CTXT* ctxt) : ctxt_(ctxt) {}

    bool take_check(int status) {
        status_ = status;
        return status == RT_OK;
    }
    bool take_end();

    ASN1CTXT* ctxt_;
    int status_ = RT_OK;
    int length_ = 0;
    uint32_t element_start_ = 0;
};

/// Reads the contents of a SEQUENCE, or of a list. The end of its contents ends it, whatever element is due;
/// end-of-contents octets are left unread unless `finish_closed` is called.
class SequenceDecoder : public ElementDecoder {
  public:
    SequenceDecoder(ASN1CTXT* ctxt, ASN1TAG tag, ASN1TagType tagging, int length);

    /// Whether there is one more element.
    bool more() {
        element_start_ = ctxt_->buffer.byteIndex;
        return status_ == RT_OK && (element_start_ < limit_ || more_indefinite());
    }
    /// Whether the next element has context tag `number`, in either form; takes its header.
    bool tagged(uint32_t number);
    /// Whether the next element has one of the tags; moves nothing.
    template <typename... Tags>
    bool next_is(Tags... tags) const {
        const ASN1TAG next = next_tag();
        return ((next == tags) || ...);
    }
    /// Takes the outcome of an element that must be there.
    bool required(int status);
    /// Takes the outcome of trying an element that may be absent: with another tag there, the position comes
    /// back to where the element was tried.
    bool optional(int status);
    /// The outcome. `RT_E_SEQOVFL` when elements are left, `RT_E_SETMISSING` when fewer than
    /// `required_count` were taken.
    int finish(uint32_t required_count);
    /// The same, and takes the end-of-contents octets if the own header was read here.
    int finish_closed(uint32_t required_count);

    uint32_t start() const { return start_; }
    int contents_length() const { return contents_length_; }

  private:
    bool more_indefinite() const;
    ASN1TAG next_tag() const;  // 0 when there is none to read

    uint32_t start_ = 0;  // of the contents
    uint32_t limit_ = 0;  // their end; 0 in the indefinite form
    int contents_length_;
    uint32_t required_taken_ = 0;
    bool read_header_;
};

/// Reads the contents of a SET: its elements come in any order.
class SetDecoder : public ElementDecoder {
  public:
    SetDecoder(ASN1CTXT* ctxt, ASN1TagType tagging, int length);

    /// Takes the header of the next element.
    bool next(ASN1TAG& tag);
    /// Notes element `index`; fails with `RT_E_SETDUP` when it came before.
    bool first(uint32_t index);
    /// The outcome. `RT_E_SETMISSING` unless all of `required`, a mask of indexes, came.
    int finish(uint32_t required);

  private:
    uint32_t start_ = 0;
    int contents_length_;
    uint32_t seen_ = 0;
};

/// Reads one alternative of a CHOICE: takes its header and tells its tag.
class ChoiceDecoder : public ElementDecoder {
  public:
    explicit ChoiceDecoder(ASN1CTXT* ctxt);

    ASN1TAG tag() const { return tag_; }
    /// The outcome for a tag that no alternative has: `RT_E_INVOPT`, unless the header could not be read.
    int unknown();

  private:
    ASN1TAG tag_ = 0;
};

/// `xd_charstr` and `xd_bigint` write the pointer of a text that nobody writes through.
inline char** text_cell(const char*& text) {
    return const_cast<char**>(&text);
}

int decode_enumerated(ASN1CTXT* ctxt, uint32_t& value, uint32_t bound, ASN1TagType tagging, int length);
/// Into the array of a record, whose room is known.
template <size_t Room>
int decode_sized_octets(ASN1CTXT* ctxt, uint8_t (&data)[Room], uint32_t& count, ASN1TagType tagging,
                        int length) {
    count = Room;
    return xd_octstr_s(ctxt, data, &count, tagging, length);
}
template <size_t Room>
int decode_sized_bits(ASN1CTXT* ctxt, uint8_t (&data)[Room], uint32_t& count, uint32_t capacity,
                      ASN1TagType tagging, int length) {
    static_assert(Room <= UINT32_MAX / 8);
    count = capacity;
    return xd_bitstr_s(ctxt, data, &count, tagging, length);
}
int decode_open(ASN1CTXT* ctxt, ASN1OpenType& value);
int decode_open(ASN1CTXT* ctxt, Asn1Object& value);
/// Keeps the elements behind an extension marker in `list`, to the end of the structure.
int keep_unknown(ASN1CTXT* ctxt, const SequenceDecoder& in, ASN1TSeqOfList& list);

template <typename Record>
bool ElementDecoder::allocate(Record*& record) {
    record = make_record<Record>(ctxt_);
    return record != nullptr || fail(RT_E_NOMEM);
}

}  // namespace Quillmark::detail
