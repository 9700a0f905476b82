#include "asn1/signing_certificate.h"

#include "asn1/detail/bridge.h"
#include "asn1/detail/list_traits.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_SigningCertificate_traits> {
    using Record = asn1data::ASN1T_SigningCertificate;
    using Control = asn1data::ASN1C_SigningCertificate;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_SigningCertificateV2_traits> {
    using Record = asn1data::ASN1T_SigningCertificateV2;
    using Control = asn1data::ASN1C_SigningCertificateV2;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_OtherSigningCertificate_traits> {
    using Record = asn1data::ASN1T_OtherSigningCertificate;
    using Control = asn1data::ASN1C_OtherSigningCertificate;
};

namespace Quillmark::ASN1 {

using CertIDList =
    ASN1TSeqOfList_traits<asn1data::ASN1T_ESSCertID, ASN1T_ESSCertID_traits, CESSCertID, CESSCertIDList>;
using CertIDv2List = ASN1TSeqOfList_traits<asn1data::ASN1T_ESSCertIDv2, ASN1T_ESSCertIDv2_traits,
                                           CESSCertIDv2, CESSCertIDv2List>;
using OtherCertIDList = ASN1TSeqOfList_traits<asn1data::ASN1T_OtherCertID, ASN1T_OtherCertID_traits,
                                              COtherCertID, COtherCertIDList>;
using PolicyList = ASN1TSeqOfList_traits<asn1data::ASN1T_PolicyInformation, ASN1T_PolicyInformation_traits,
                                         CPolicyInformation, CPolicyInformationList>;

template CBlob asn1Encode<ASN1T_SigningCertificate_traits, CAttrSigningCertificate>(
    const CAttrSigningCertificate&);
template void asn1Decode<ASN1T_SigningCertificate_traits, CAttrSigningCertificate>(const CBlob&,
                                                                                   CAttrSigningCertificate&);
template CBlob asn1Encode<ASN1T_SigningCertificateV2_traits, CAttrSigningCertificateV2>(
    const CAttrSigningCertificateV2&);
template void asn1Decode<ASN1T_SigningCertificateV2_traits, CAttrSigningCertificateV2>(
    const CBlob&, CAttrSigningCertificateV2&);
template CBlob asn1Encode<ASN1T_OtherSigningCertificate_traits, CAttrOtherSigningCertificate>(
    const CAttrOtherSigningCertificate&);
template void asn1Decode<ASN1T_OtherSigningCertificate_traits, CAttrOtherSigningCertificate>(
    const CBlob&, CAttrOtherSigningCertificate&);

namespace {

constexpr const char* kSigningCertificate = "1.2.840.113549.1.9.16.2.12";
constexpr const char* kSigningCertificateV2 = "1.2.840.113549.1.9.16.2.47";
constexpr const char* kOtherSigningCertificate = "1.2.840.113549.1.9.16.2.19";

/// The typed members of an attribute.
template <class CertList>
struct Members {
    CertList certs;
    auto_ptr<CPolicyInformationList> policies;

    Members() = default;
    Members(const Members& other) : certs(other.certs) { copy_to_auto_ptr(policies, other.policies.get()); }
};

// The records have the same shape, but for the certificate identifiers, which `Certs` maps.

template <class Certs, class Record, class Value>
void set_members(ASN1CTXT* ctxt, Record& record, const Value& value) {
    record.m.policiesPresent = 0;
    Certs::set(ctxt, record.certs, value.get_certs());
    const CPolicyInformationList* policies = value.get_policies();
    if (policies != nullptr && !policies->empty()) {
        record.m.policiesPresent = 1;
        PolicyList::set(ctxt, record.policies, *policies);
    }
}

template <class Certs, class CertList, class Record, class Value>
void get_members(const Record& record, Value& value) {
    CertList certs;
    Certs::get(record.certs, certs);
    value.put_certs(certs);
    if (!record.m.policiesPresent) {
        value.put_policies(nullptr);
        return;
    }
    CPolicyInformationList policies;
    PolicyList::get(record.policies, policies);
    value.put_policies(&policies);
}

}  // namespace

struct CAttrSigningCertificate::Impl : Members<CESSCertIDList> {};
struct CAttrSigningCertificateV2::Impl : Members<CESSCertIDv2List> {};
struct CAttrOtherSigningCertificate::Impl : Members<COtherCertIDList> {};

CAttrSigningCertificate::CAttrSigningCertificate()
    : CAttrValue(kSigningCertificate), impl_(std::make_unique<Impl>()) {}

CAttrSigningCertificate::CAttrSigningCertificate(const CBlob& der)
    : CAttrValue(kSigningCertificate, der), impl_(std::make_unique<Impl>()) {
    decode();
}

CAttrSigningCertificate::CAttrSigningCertificate(const CESSCertIDList& certs) : CAttrSigningCertificate() {
    put_certs(certs);
}

CAttrSigningCertificate::CAttrSigningCertificate(const CAttrSigningCertificate& other)
    : CAttrValue(other), impl_(std::make_unique<Impl>(*other.impl_)) {}

CAttrSigningCertificate& CAttrSigningCertificate::operator=(const CAttrSigningCertificate& other) {
    if (this != &other) {
        CAttrValue::operator=(other);
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CAttrSigningCertificate::~CAttrSigningCertificate() = default;

void CAttrSigningCertificate::encode() {
    value() = asn1Encode<ASN1T_SigningCertificate_traits>(*this);
}

void CAttrSigningCertificate::decode() {
    // Reading replaces the octets that are read.
    const CBlob der(get_value());
    asn1Decode<ASN1T_SigningCertificate_traits>(der, *this);
}

const CESSCertIDList& CAttrSigningCertificate::get_certs() const {
    return impl_->certs;
}

const CPolicyInformationList* CAttrSigningCertificate::get_policies() const {
    return impl_->policies.get();
}

void CAttrSigningCertificate::put_certs(const CESSCertIDList& certs) {
    impl_->certs = certs;
    encode();
}

void CAttrSigningCertificate::put_policies(const CPolicyInformationList* policies) {
    // Intended: the octets change with the next encode and not here.
    copy_to_auto_ptr(impl_->policies, policies);
}

CAttrSigningCertificateV2::CAttrSigningCertificateV2()
    : CAttrValue(kSigningCertificateV2), impl_(std::make_unique<Impl>()) {}

CAttrSigningCertificateV2::CAttrSigningCertificateV2(const CBlob& der)
    : CAttrValue(kSigningCertificateV2, der), impl_(std::make_unique<Impl>()) {
    decode();
}

CAttrSigningCertificateV2::CAttrSigningCertificateV2(const CESSCertIDv2List& certs)
    : CAttrSigningCertificateV2() {
    put_certs(certs);
}

CAttrSigningCertificateV2::CAttrSigningCertificateV2(const CAttrSigningCertificateV2& other)
    : CAttrValue(other), impl_(std::make_unique<Impl>(*other.impl_)) {}

CAttrSigningCertificateV2& CAttrSigningCertificateV2::operator=(const CAttrSigningCertificateV2& other) {
    if (this != &other) {
        CAttrValue::operator=(other);
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CAttrSigningCertificateV2::~CAttrSigningCertificateV2() = default;

void CAttrSigningCertificateV2::encode() {
    value() = asn1Encode<ASN1T_SigningCertificateV2_traits>(*this);
}

void CAttrSigningCertificateV2::decode() {
    // Reading replaces the octets that are read.
    const CBlob der(get_value());
    asn1Decode<ASN1T_SigningCertificateV2_traits>(der, *this);
}

const CESSCertIDv2List& CAttrSigningCertificateV2::get_certs() const {
    return impl_->certs;
}

const CPolicyInformationList* CAttrSigningCertificateV2::get_policies() const {
    return impl_->policies.get();
}

void CAttrSigningCertificateV2::put_certs(const CESSCertIDv2List& certs) {
    impl_->certs = certs;
    encode();
}

void CAttrSigningCertificateV2::put_policies(const CPolicyInformationList* policies) {
    // Intended: the octets change with the next encode and not here.
    copy_to_auto_ptr(impl_->policies, policies);
}

CAttrOtherSigningCertificate::CAttrOtherSigningCertificate()
    : CAttrValue(kOtherSigningCertificate), impl_(std::make_unique<Impl>()) {}

CAttrOtherSigningCertificate::CAttrOtherSigningCertificate(const CBlob& der)
    : CAttrValue(kOtherSigningCertificate, der), impl_(std::make_unique<Impl>()) {
    decode();
}

CAttrOtherSigningCertificate::CAttrOtherSigningCertificate(const COtherCertIDList& certs)
    : CAttrOtherSigningCertificate() {
    put_certs(certs);
}

CAttrOtherSigningCertificate::CAttrOtherSigningCertificate(const CAttrOtherSigningCertificate& other)
    : CAttrValue(other), impl_(std::make_unique<Impl>(*other.impl_)) {}

CAttrOtherSigningCertificate& CAttrOtherSigningCertificate::operator=(
    const CAttrOtherSigningCertificate& other) {
    if (this != &other) {
        CAttrValue::operator=(other);
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CAttrOtherSigningCertificate::~CAttrOtherSigningCertificate() = default;

void CAttrOtherSigningCertificate::encode() {
    value() = asn1Encode<ASN1T_OtherSigningCertificate_traits>(*this);
}

void CAttrOtherSigningCertificate::decode() {
    // Reading replaces the octets that are read.
    const CBlob der(get_value());
    asn1Decode<ASN1T_OtherSigningCertificate_traits>(der, *this);
}

const COtherCertIDList& CAttrOtherSigningCertificate::get_certs() const {
    return impl_->certs;
}

const CPolicyInformationList* CAttrOtherSigningCertificate::get_policies() const {
    return impl_->policies.get();
}

void CAttrOtherSigningCertificate::put_certs(const COtherCertIDList& certs) {
    impl_->certs = certs;
    encode();
}

void CAttrOtherSigningCertificate::put_policies(const CPolicyInformationList* policies) {
    // Intended: of the three attributes this one alone encodes here.
    copy_to_auto_ptr(impl_->policies, policies);
    encode();
}

void ASN1T_SigningCertificate_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                          const CAttrSigningCertificate& value) {
    set_members<CertIDList>(ctxt, record, value);
}

void ASN1T_SigningCertificate_traits::get(const ASN1_T& record, CAttrSigningCertificate& value) {
    get_members<CertIDList, CESSCertIDList>(record, value);
}

void ASN1T_SigningCertificate_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_SigningCertificate(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_SigningCertificateV2_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                            const CAttrSigningCertificateV2& value) {
    set_members<CertIDv2List>(ctxt, record, value);
}

void ASN1T_SigningCertificateV2_traits::get(const ASN1_T& record, CAttrSigningCertificateV2& value) {
    get_members<CertIDv2List, CESSCertIDv2List>(record, value);
}

void ASN1T_SigningCertificateV2_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_SigningCertificateV2(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_OtherSigningCertificate_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                               const CAttrOtherSigningCertificate& value) {
    set_members<OtherCertIDList>(ctxt, record, value);
}

void ASN1T_OtherSigningCertificate_traits::get(const ASN1_T& record, CAttrOtherSigningCertificate& value) {
    get_members<OtherCertIDList, COtherCertIDList>(record, value);
}

void ASN1T_OtherSigningCertificate_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_OtherSigningCertificate(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
