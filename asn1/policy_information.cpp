#include "asn1/policy_information.h"

#include "asn1/detail/bridge.h"
#include "asn1/detail/list_traits.h"
#include "asn1/detail/oid_text.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_PolicyInformation_traits> {
    using Record = asn1data::ASN1T_PolicyInformation;
    using Control = asn1data::ASN1C_PolicyInformation;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_CertificatePoliciesSyntax_traits> {
    using Record = asn1data::ASN1T_CertificatePoliciesSyntax;
    using Control = asn1data::ASN1C_CertificatePoliciesSyntax;
};

namespace Quillmark::ASN1 {

using PolicyRecords = ASN1TSeqOfList_traits<asn1data::ASN1T_PolicyInformation, ASN1T_PolicyInformation_traits,
                                            CPolicyInformation, CPolicyInformationList>;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_PolicyInformation, ASN1T_PolicyInformation_traits,
                                      CPolicyInformation, CPolicyInformationList>;
template CBlob asn1Encode<ASN1T_PolicyInformation_traits, CPolicyInformation>(const CPolicyInformation&);
template void asn1Decode<ASN1T_PolicyInformation_traits, CPolicyInformation>(const CBlob&,
                                                                             CPolicyInformation&);
template CBlob asn1Encode<ASN1T_CertificatePoliciesSyntax_traits, CPolicyInformationList>(
    const CPolicyInformationList&);
template void asn1Decode<ASN1T_CertificatePoliciesSyntax_traits, CPolicyInformationList>(
    const CBlob&, CPolicyInformationList&);

CPolicyInformation::CPolicyInformation() : policyIdentifier_("") {}

CPolicyInformation::CPolicyInformation(const char* policyIdentifier) : policyIdentifier_(policyIdentifier) {}

void CPolicyInformation::put_policyIdentifier(const char* policyIdentifier) {
    policyIdentifier_ = CStringProxy(policyIdentifier);
}

CBlob CPolicyInformation::encode() const {
    return asn1Encode<ASN1T_PolicyInformation_traits>(*this);
}

void CPolicyInformation::decode(const CBlob& der) {
    asn1Decode<ASN1T_PolicyInformation_traits>(der, *this);
}

CBlob CPolicyInformationList::encode() const {
    return asn1Encode<ASN1T_CertificatePoliciesSyntax_traits>(*this);
}

void CPolicyInformationList::decode(const CBlob& der) {
    asn1Decode<ASN1T_CertificatePoliciesSyntax_traits>(der, *this);
}

void ASN1T_PolicyInformation_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CPolicyInformation& value) {
    ASN1TObjId_traits::set(ctxt, record.policyIdentifier, value.get_policyIdentifier());
    // Intended: qualifiers have no place in the value and are never written.
    record.m.policyQualifiersPresent = 0;
}

void ASN1T_PolicyInformation_traits::get(const ASN1_T& record, CPolicyInformation& value) {
    value.put_policyIdentifier(detail::OidText(record.policyIdentifier).c_str());
}

void ASN1T_PolicyInformation_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_PolicyInformation(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_CertificatePoliciesSyntax_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record,
                                                 const CPolicyInformationList& value) {
    PolicyRecords::set(ctxt, record, value);
}

void ASN1T_CertificatePoliciesSyntax_traits::get(const ASN1TSeqOfList& record,
                                                 CPolicyInformationList& value) {
    PolicyRecords::get(record, value);
}

void ASN1T_CertificatePoliciesSyntax_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source,
                                                  ASN1TSeqOfList& target) {
    PolicyRecords::copy(ctxt, source, target);
}

}  // namespace Quillmark::ASN1
