#pragma once

// INTEGER values beyond 32 bits: serial numbers and nonces. The value is its content octets (X.690 8.3), most
// significant first, in two's complement and not necessarily minimal. Generated records hold the same number
// as text, "0x" and two hexadecimal digits for each octet.

#include "asn1/codec.h"

namespace Quillmark::ASN1 {

/// The content octets of an INTEGER. No octets at all are a legal state.
class CBigInteger : public CBlob {
  public:
    CBigInteger() = default;
    CBigInteger(const unsigned char* data, unsigned long length);
    /// A value of `length` zero octets.
    explicit CBigInteger(unsigned long length);

    /// Adds one to the last octet and carries towards the front, no further than the octet number `limit`,
    /// counted from 1.
    void increment(int limit);
    /// Adds `other`, which must have the same number of octets (else `E_INVALIDARG`). Returns the carry, 0
    /// or 1.
    int add(const CBigInteger& other);
    /// `increment(1)`: never grows, so that all bits set wrap to zero.
    CBigInteger& operator++();
    CBigInteger operator++(int);

    /// The DER of the INTEGER; a number without octets is written as 0.
    CBlob encode() const;
    void decode(const CBlob& der);

    /// Negative, zero or positive. After redundant leading octets are left out a longer number is greater,
    /// also among negative numbers.
    int compare(const CBigInteger& other) const;
    /// A copy with the top bit of the first octet cleared.
    CBigInteger abs() const;
};

inline bool operator==(const CBigInteger& left, const CBigInteger& right) {
    return left.compare(right) == 0;
}
inline bool operator!=(const CBigInteger& left, const CBigInteger& right) {
    return left.compare(right) != 0;
}
inline bool operator<(const CBigInteger& left, const CBigInteger& right) {
    return left.compare(right) < 0;
}
inline bool operator>(const CBigInteger& left, const CBigInteger& right) {
    return left.compare(right) > 0;
}
inline bool operator<=(const CBigInteger& left, const CBigInteger& right) {
    return left.compare(right) <= 0;
}
inline bool operator>=(const CBigInteger& left, const CBigInteger& right) {
    return left.compare(right) >= 0;
}

/// Reads "0x" and hexadecimal digits. Throws `CRYPT_E_ASN1_INTERNAL` without the prefix or without a digit.
void StringToBigInteger(const char* text, CBigInteger& value);
/// Writes "0x", two digits for each octet and the terminator.
void BigIntegerToString(const CBigInteger& value, CBlob& text);

/// `StringToBigInteger` under the name that goes with `BigIntegerToASN1String`.
void ASN1StringToBigInteger(const char* text, CBigInteger& value);
/// The text of `value` on the heap of `ctxt`. Throws `CRYPT_E_ASN1_MEMORY`.
const char* BigIntegerToASN1String(ASN1CTXT* ctxt, const CBigInteger& value);

/// The text of `value` in eight digits on the heap of `ctxt`. Throws `E_OUTOFMEMORY`.
const char* DWORDToASN1BigInteger(ASN1CTXT* ctxt, unsigned int value);
/// Folds at most four octets (else `E_INVALIDARG`) into a number with the factor 11, so that values of one
/// octet come out as they are.
unsigned int ASN1BigIntegerToDWORD(const char* text);

}  // namespace Quillmark::ASN1
