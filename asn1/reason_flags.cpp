#include "asn1/reason_flags.h"

#include "asn1/detail/bridge.h"
#include "asn1/detail/named_bits.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_ReasonFlags_traits> {
    using Record = asn1data::ASN1T_ReasonFlags;
    using Control = asn1data::ASN1C_ReasonFlags;
};

namespace Quillmark::ASN1 {

template CBlob asn1Encode<ASN1T_ReasonFlags_traits, CReasonFlags>(const CReasonFlags&);
template void asn1Decode<ASN1T_ReasonFlags_traits, CReasonFlags>(const CBlob&, CReasonFlags&);

namespace {

constexpr unsigned int kWordBits = 32;
// Room for the nine named bits in whole octets.
constexpr unsigned int kWrittenBits = 16;

}  // namespace

bool CReasonFlags::get_bit(unsigned int bit) const {
    // Intended: no bit number is refused.
    return (value_ >> bit % kWordBits & 1) != 0;
}

void CReasonFlags::put_bit(unsigned int bit, bool on) {
    const unsigned int mask = 1u << bit % kWordBits;
    value_ = on ? value_ | mask : value_ & ~mask;
}

CBlob CReasonFlags::encode() const {
    return asn1Encode<ASN1T_ReasonFlags_traits>(*this);
}

void CReasonFlags::decode(const CBlob& der) {
    asn1Decode<ASN1T_ReasonFlags_traits>(der, *this);
}

void ASN1T_ReasonFlags_traits::set(ASN1CTXT*, ASN1_T& record, const CReasonFlags& value) {
    // Intended: the upper half of the word has no place on the wire and is left out without a failure.
    detail::put_named_bits(record, value.get_value(), kWrittenBits);
}

void ASN1T_ReasonFlags_traits::get(const ASN1_T& record, CReasonFlags& value) {
    value.put_value(detail::named_bits(record));
}

void ASN1T_ReasonFlags_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_ReasonFlags(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
