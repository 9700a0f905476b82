#include "asn1/big_integer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <span>

#include "asn1/detail/bridge.h"
#include "asn1/detail/check.h"
#include "asn1/detail/heap.h"
#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "runtime/detail/local_buffer.h"
#include "values/detail/hex_text.h"

namespace Quillmark::ASN1 {
namespace {

using Octets = std::span<const unsigned char>;

constexpr unsigned char kSignBit = 0x80;

bool is_negative(Octets octets) {
    return (octets.front() & kSignBit) != 0;
}

/// Leaves out leading octets that only repeat the sign; one octet stays.
Octets significant(Octets octets) {
    const unsigned char filler = is_negative(octets) ? 0xFF : 0x00;
    while (octets.size() > 1 && octets[0] == filler && (octets[1] & kSignBit) == (filler & kSignBit)) {
        octets = octets.subspan(1);
    }
    return octets;
}

Octets octets_of(const CBlob& blob) {
    return {blob.pbData(), blob.cbData()};
}

/// "0x", two digits for each octet and the terminator.
std::size_t text_size(std::size_t octet_count) {
    return 2 * octet_count + 3;
}

void write_text(Octets octets, char* text) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    *text++ = '0';
    *text++ = 'x';
    for (const unsigned char octet : octets) {
        *text++ = kDigits[octet >> 4];
        *text++ = kDigits[octet & 0x0F];
    }
    *text = '\0';
}

/// The octets of a text that begins with "0x"; any other throws `CRYPT_E_ASN1_INTERNAL`.
class NumberOctets {
  public:
    explicit NumberOctets(const char* text) {
        const std::size_t size = text == nullptr ? 0 : std::strlen(text);
        if (size < 3 || std::strncmp(text, "0x", 2) != 0) {
            throw CAtlException(CRYPT_E_ASN1_INTERNAL);
        }
        digits_ = text + 2;
        count_ = size - 2;
    }

    /// No number has more octets.
    std::size_t most() const { return count_ / 2 + 1; }

    template <class Take>
    void for_each(Take take) const {
        // Intended: an odd number of digits that begins with another digit is read as it stands, so its last
        // is lost.
        const bool half_octet = count_ % 2 != 0 && digits_[0] == '0';
        if (half_octet) {
            take(0x00);
        }
        detail::for_each_hex_octet(half_octet ? digits_ + 1 : digits_, take);
    }

  private:
    const char* digits_;
    std::size_t count_;
};

}  // namespace

CBigInteger::CBigInteger(const unsigned char* data, unsigned long length) : CBlob(data, length) {}

CBigInteger::CBigInteger(unsigned long length) : CBlob(length) {}

void CBigInteger::increment(int limit) {
    const unsigned long last_changed = limit < 1 ? 1 : static_cast<unsigned long>(limit);
    for (unsigned long number = cbData(); number >= last_changed; --number) {
        if (++pbData()[number - 1] != 0) {
            return;
        }
    }
}

int CBigInteger::add(const CBigInteger& other) {
    detail::check_argument(cbData() == other.cbData());
    CBlob sum(cbData());
    unsigned int carry = 0;
    for (unsigned long i = cbData(); i-- > 0;) {
        carry += pbData()[i] + static_cast<unsigned int>(other.pbData()[i]);
        sum.pbData()[i] = static_cast<unsigned char>(carry);
        carry >>= 8;
    }
    swap(sum);
    return static_cast<int>(carry);
}

CBigInteger& CBigInteger::operator++() {
    increment(1);
    return *this;
}

CBigInteger CBigInteger::operator++(int) {
    CBigInteger before(*this);
    increment(1);
    return before;
}

CBlob CBigInteger::encode() const {
    detail::LocalEncodeBuffer buffer;
    ASN1CTXT* ctxt = buffer.getCtxtPtr();
    const int length = xe_bigint(ctxt, BigIntegerToASN1String(ctxt, *this), ASN1EXPL);
    // An INTEGER has no empty encoding, so nothing written is a failure too.
    if (length < 1) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    return CBlob(buffer.getMsgPtr(), static_cast<unsigned long>(length));
}

void CBigInteger::decode(const CBlob& der) {
    detail::LocalDecodeBuffer buffer(der.pbData(), detail::message_size(der));
    buffer.init();
    char* text = nullptr;
    detail::check_codec(xd_bigint(buffer.getCtxtPtr(), &text, ASN1EXPL, 0));
    ASN1StringToBigInteger(text, *this);
}

int CBigInteger::compare(const CBigInteger& other) const {
    Octets left = octets_of(*this);
    Octets right = octets_of(other);
    if (left.empty() && right.empty()) {
        return 0;
    }
    if (right.empty()) {
        return is_negative(left) ? -1 : 1;
    }
    if (left.empty()) {
        return is_negative(right) ? 1 : -1;
    }
    if (is_negative(left) != is_negative(right)) {
        return is_negative(left) ? -1 : 1;
    }
    if (left.size() != right.size()) {
        left = significant(left);
        right = significant(right);
    }
    // Intended: of two negative numbers too the one with more octets is the greater.
    if (left.size() != right.size()) {
        return left.size() > right.size() ? 1 : -1;
    }
    return std::memcmp(left.data(), right.data(), left.size());
}

CBigInteger CBigInteger::abs() const {
    // Intended: the sign bit is cleared and nothing is negated.
    CBigInteger copy(*this);
    if (copy.cbData() != 0) {
        copy.pbData()[0] &= static_cast<unsigned char>(~kSignBit);
    }
    return copy;
}

void StringToBigInteger(const char* text, CBigInteger& value) {
    NumberOctets number(text);
    CBlob octets(number.most());
    unsigned char* end = octets.pbData();
    number.for_each([&end](unsigned char octet) { *end++ = octet; });
    octets.resize_to(static_cast<unsigned long>(end - octets.pbData()));
    value.swap(octets);
}

void BigIntegerToString(const CBigInteger& value, CBlob& text) {
    text.resize_to(text_size(value.cbData()));
    write_text(octets_of(value), reinterpret_cast<char*>(text.pbData()));
}

void ASN1StringToBigInteger(const char* text, CBigInteger& value) {
    StringToBigInteger(text, value);
}

const char* BigIntegerToASN1String(ASN1CTXT* ctxt, const CBigInteger& value) {
    char* text = static_cast<char*>(detail::allocate(ctxt, text_size(value.cbData())));
    write_text(octets_of(value), text);
    return text;
}

const char* DWORDToASN1BigInteger(ASN1CTXT* ctxt, unsigned int value) {
    unsigned char octets[4];
    for (int i = 0; i < 4; ++i) {
        octets[i] = static_cast<unsigned char>(value >> (24 - 8 * i));
    }
    char* text = static_cast<char*>(rtMemHeapAlloc(&ctxt->typeHeap, text_size(sizeof octets)));
    if (text == nullptr) {
        throw CAtlException(E_OUTOFMEMORY);
    }
    write_text(octets, text);
    return text;
}

unsigned int ASN1BigIntegerToDWORD(const char* text) {
    unsigned int number = 0;
    unsigned int count = 0;
    NumberOctets(text).for_each([&](unsigned char octet) {
        number = number * 11 + octet;  // Intended: the factor is 11; versions have one octet
        ++count;
    });
    detail::check_argument(count <= 4);
    return number;
}

}  // namespace Quillmark::ASN1
