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

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_CertificateList_traits> {
    using Record = asn1data::ASN1T_CertificateList;
    using Control = asn1data::ASN1C_CertificateList;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_CertificateValues_traits> {
    using Record = asn1data::ASN1T_CertificateValues;
    using Control = asn1data::ASN1C_CertificateValues;
};

namespace Quillmark::ASN1 {

using CertificateValueRecords = ASN1TSeqOfList_traits<asn1data::ASN1T_Certificate, ASN1T_Certificate_traits,
                                                      CCertificateValue, CCertificateValues>;

template CBlob asn1EncodeT<ASN1T_Certificate_traits>(const asn1data::ASN1T_Certificate&);
template void asn1DecodeT<ASN1T_Certificate_traits>(const CBlob&, ASN1CTXT*, asn1data::ASN1T_Certificate&);
template CBlob asn1EncodeT<ASN1T_CertificateList_traits>(const asn1data::ASN1T_CertificateList&);
template void asn1DecodeT<ASN1T_CertificateList_traits>(const CBlob&, ASN1CTXT*,
                                                        asn1data::ASN1T_CertificateList&);
template struct ASN1TSeqOfList_traits<asn1data::ASN1T_Certificate, ASN1T_Certificate_traits, CBlob,
                                      CBlobList>;
template CBlob asn1Encode<ASN1T_Certificate_traits, CCertificateValue>(const CCertificateValue&);
template void asn1Decode<ASN1T_Certificate_traits, CCertificateValue>(const CBlob&, CCertificateValue&);
template CBlob asn1Encode<ASN1T_CertificateValues_traits, CCertificateValues>(const CCertificateValues&);
template void asn1Decode<ASN1T_CertificateValues_traits, CCertificateValues>(const CBlob&,
                                                                             CCertificateValues&);

CBlob CCertificateValue::encode() const {
    return asn1Encode<ASN1T_Certificate_traits>(*this);
}

void CCertificateValue::decode(const CBlob& der) {
    asn1Decode<ASN1T_Certificate_traits>(der, *this);
}

CBlob CCertificateValues::encode() const {
    return asn1Encode<ASN1T_CertificateValues_traits>(*this);
}

void CCertificateValues::decode(const CBlob& der) {
    asn1Decode<ASN1T_CertificateValues_traits>(der, *this);
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

void ASN1T_CertificateList_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& value) {
    detail::decode_onto(ctxt, value, record, asn1data::asn1D_CertificateList);
}

void ASN1T_CertificateList_traits::get(const ASN1_T& record, CBlob& value) {
    value = asn1EncodeT<ASN1T_CertificateList_traits>(record);
}

void ASN1T_CertificateList_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_CertificateList(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_CertificateValues_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record,
                                         const CCertificateValues& value) {
    CertificateValueRecords::set(ctxt, record, value);
}

void ASN1T_CertificateValues_traits::get(const ASN1TSeqOfList& record, CCertificateValues& value) {
    CertificateValueRecords::get(record, value);
}

void ASN1T_CertificateValues_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source,
                                          ASN1TSeqOfList& target) {
    CertificateValueRecords::copy(ctxt, source, target);
}

}  // namespace Quillmark::ASN1
