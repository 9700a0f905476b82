#pragma once

// ReasonFlags (RFC 5280 4.2.1.13): why a certificate may have been revoked, as a set of flags.
//
//     CReasonFlags reasons;
//     reasons.add_flag(CReasonFlags::keyCompromise);

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_ReasonFlags;
}

namespace Quillmark::ASN1 {

/// A word of 32 flags, of which bits 0 to 15 can be written. Bit `n` of the word (mask `1 << n`) is the named
/// bit `n` of the BIT STRING.
class CReasonFlags {
  public:
    /// Masks over the word.
    enum Flag : unsigned int {
        unused = 1u << 0,
        keyCompromise = 1u << 1,
        cACompromise = 1u << 2,
        affiliationChanged = 1u << 3,
        superseded = 1u << 4,
        cessationOfOperation = 1u << 5,
        certificateHold = 1u << 6,
        privilegeWithdrawn = 1u << 7,
        aACompromise = 1u << 8
    };

    CReasonFlags() = default;
    explicit CReasonFlags(unsigned int value) : value_(value) {}

    unsigned int get_value() const { return value_; }
    void put_value(unsigned int value) { value_ = value; }
    /// Bit numbers are taken modulo 32.
    bool get_bit(unsigned int bit) const;
    void put_bit(unsigned int bit, bool on);

    void add_flag(Flag flag) { value_ |= flag; }
    void remove_flag(Flag flag) { value_ &= ~static_cast<unsigned int>(flag); }
    /// Whether the mask has any bit in common with the word.
    bool get_flag(Flag flag) const { return (value_ & flag) != 0; }

    /// Bits 16 to 31 are not written.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    unsigned int value_ = 0;
};

inline bool operator==(const CReasonFlags& left, const CReasonFlags& right) {
    return left.get_value() == right.get_value();
}
inline bool operator!=(const CReasonFlags& left, const CReasonFlags& right) {
    return !(left == right);
}

struct ASN1T_ReasonFlags_traits {
    typedef asn1data::ASN1T_ReasonFlags ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CReasonFlags& value);
    static void get(const ASN1_T& record, CReasonFlags& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
