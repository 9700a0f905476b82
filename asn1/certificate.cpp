#include "asn1/certificate.h"

#include "asn1/detail/bridge.h"
#include "asn1/detail/decode_record.h"
#include "asn1/detail/list_traits.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_Certificate_traits> {
    using Record = asn1data::ASN1T_Certificate;
    using Control = asn1data::ASN1C_Certificate;
};

namespace Quillmark::ASN1 {

template CBlob asn1EncodeT<ASN1T_Certificate_traits>(const asn1data::ASN1T_Certificate&);
template void asn1DecodeT<ASN1T_Certificate_traits>(const CBlob&, ASN1CTXT*, asn1data::ASN1T_Certificate&);
template struct ASN1TSeqOfList_traits<asn1data::ASN1T_Certificate, ASN1T_Certificate_traits, CBlob,
                                      CBlobList>;
template CBlob asn1Encode<ASN1T_Certificate_traits, CCertificateValue>(const CCertificateValue&);
template void asn1Decode<ASN1T_Certificate_traits, CCertificateValue>(const CBlob&, CCertificateValue&);

CBlob CCertificateValue::encode() const {
    return asn1Encode<ASN1T_Certificate_traits>(*this);
}

void CCertificateValue::decode(const CBlob& der) {
    asn1Decode<ASN1T_Certificate_traits>(der, *this);
}

void ASN1T_Certificate_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& value) {
    detail::decode_onto(ctxt, value, record, asn1data::asn1D_Certificate);
}

void ASN1T_Certificate_traits::get(const ASN1_T& record, CBlob& value) {
    value = asn1EncodeT<ASN1T_Certificate_traits>(record);
}

void ASN1T_Certificate_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_Certificate(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
