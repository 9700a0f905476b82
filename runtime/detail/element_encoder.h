#pragma once

// Writing the elements of a structure, last to first, for the generated encoders: tags, constraints, and the
// sum of what was written.

#include <cstdint>

#include "runtime/context.h"
#include "runtime/der_encode.h"
#include "runtime/list.h"
#include "runtime/value_types.h"

namespace Quillmark::detail {

constexpr ASN1TAG universal(uint32_t number) {
    return number;
}
constexpr ASN1TAG context_primitive(uint32_t number) {
    return 0x80000000u | number;
}
constexpr ASN1TAG context_constructed(uint32_t number) {
    return 0xA0000000u | number;
}
constexpr ASN1TAG application_constructed(uint32_t number) {
    return 0x60000000u | number;
}
inline constexpr ASN1TAG kSequence = 0x20000010u;
inline constexpr ASN1TAG kSet = 0x20000011u;

/// The identifier octet of a tag whose number is at most 30.
constexpr uint8_t identifier_octet(ASN1TAG tag) {
    return static_cast<uint8_t>(tag >> 24 | (tag & 0x1F));
}

/// Records a negative result and gives it back, as it does a good one.
inline int recorded(ASN1CTXT* ctxt, int result) {
    return result < 0 ? rtErrSetData(&ctxt->errInfo, result) : result;
}

/// Reports a size or value out of its range: records and returns `RT_E_CONSVIO`.
int constraint_violation(ASN1CTXT* ctxt, uint32_t value, const char* path);

/// Whether `low` <= `value` <= `high` in one unsigned comparison, as a value below `low` wraps; `high` is at
/// least `low`. Returns `RT_E_CONSVIO`, recorded, when not.
inline int check_range(ASN1CTXT* ctxt, uint32_t value, uint32_t low, uint32_t high, const char* path) {
    return value - low < high - low + 1 ? RT_OK : constraint_violation(ctxt, value, path);
}

inline int check_minimum(ASN1CTXT* ctxt, uint32_t value, uint32_t low, const char* path) {
    return value >= low ? RT_OK : constraint_violation(ctxt, value, path);
}

/// Octets of a text, characters of a UTF-8 text. A null text has none, one that is no UTF-8 more than any
/// bound.
uint32_t text_length(const char* text);
uint32_t utf8_length(const char* text);

/// Sums up the elements of a structure, which are written last to first. After a failure, which is recorded,
/// `good` is false and nothing more may be written.
class ContentEncoder {
  public:
    explicit ContentEncoder(ASN1CTXT* ctxt) : ctxt_(ctxt) {}

    bool good() const { return result_ >= 0; }
    /// Counts what an encoder wrote.
    void add(int written);
    /// Puts a tag in front of what an encoder wrote, and counts both.
    void add_tagged(ASN1TAG tag, int written) { add(xe_tag_len(ctxt_, tag, written)); }
    bool check_range(uint32_t value, uint32_t low, uint32_t high, const char* path);
    bool check_minimum(uint32_t value, uint32_t low, const char* path);
    /// Whether a CHOICE has the value that it announces; fails with `RT_E_BADVALUE` when not.
    bool given(const void* alternative);
    /// What was written so far, or the failure.
    int result() const { return result_; }
    /// The octets of the contents or, with `ASN1EXPL`, of the element; or the failure.
    int finish(ASN1TAG tag, ASN1TagType tagging);

  private:
    ASN1CTXT* ctxt_;
    int result_ = 0;
};

/// Writes a value that is kept as an element with tag `own`, under `tag` in its place.
int encode_retagged(ASN1CTXT* ctxt, const ASN1OpenType& value, ASN1TAG own, ASN1TAG tag);

/// Whether a big integer differs from a default.
bool differs(ASN1CTXT* ctxt, const char* number, const char* default_number);

int encode_enumerated(ASN1CTXT* ctxt, uint32_t value, uint32_t bound, ASN1TagType tagging);

/// The elements of a SET OF, put in order once they are written (X.690 11.6). Throws `std::bad_alloc`.
class SetOfEncoder {
  public:
    explicit SetOfEncoder(ASN1CTXT* ctxt) : ctxt_(ctxt) {}
    ~SetOfEncoder();
    SetOfEncoder(const SetOfEncoder&) = delete;
    SetOfEncoder& operator=(const SetOfEncoder&) = delete;

    bool good() const { return status_ == RT_OK; }
    bool given(const void* element);
    void add(int written);
    int finish(ASN1TAG tag, ASN1TagType tagging);

  private:
    struct Element {
        rtSListNode node;
        ASN1BufLocDescr location;
    };
    // Most sets have no more elements than one block.
    struct Block {
        static constexpr uint32_t kRoom = 4;

        Block* next;
        uint32_t used;
        Element elements[kRoom];
    };

    Element& new_element();

    ASN1CTXT* ctxt_;
    rtSList elements_{};
    Block* blocks_ = nullptr;  // newest first
    int status_ = RT_OK;
};

}  // namespace Quillmark::detail
