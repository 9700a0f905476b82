#include "asn1/signing_certificate.h"

#include <algorithm>
#include <cstring>

#include "asn1/detail/bridge.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/list_traits.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_IssuerSerial_traits> {
    using Record = asn1data::ASN1T_IssuerSerial;
    using Control = asn1data::ASN1C_IssuerSerial;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_ESSCertIDv2_traits> {
    using Record = asn1data::ASN1T_ESSCertIDv2;
    using Control = asn1data::ASN1C_ESSCertIDv2;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_SigningCertificateV2_traits> {
    using Record = asn1data::ASN1T_SigningCertificateV2;
    using Control = asn1data::ASN1C_SigningCertificateV2;
};

namespace Quillmark::ASN1 {

using CertIDv2List = ASN1TSeqOfList_traits<asn1data::ASN1T_ESSCertIDv2, ASN1T_ESSCertIDv2_traits,
                                           CESSCertIDv2, CESSCertIDv2List>;
using PolicyList = ASN1TSeqOfList_traits<asn1data::ASN1T_PolicyInformation, ASN1T_PolicyInformation_traits,
                                         CPolicyInformation, CPolicyInformationList>;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_ESSCertIDv2, ASN1T_ESSCertIDv2_traits, CESSCertIDv2,
                                      CESSCertIDv2List>;
template CBlob asn1Encode<ASN1T_IssuerSerial_traits, CIssuerSerial>(const CIssuerSerial&);
template void asn1Decode<ASN1T_IssuerSerial_traits, CIssuerSerial>(const CBlob&, CIssuerSerial&);
template CBlob asn1Encode<ASN1T_ESSCertIDv2_traits, CESSCertIDv2>(const CESSCertIDv2&);
template void asn1Decode<ASN1T_ESSCertIDv2_traits, CESSCertIDv2>(const CBlob&, CESSCertIDv2&);
template CBlob asn1Encode<ASN1T_SigningCertificateV2_traits, CAttrSigningCertificateV2>(
    const CAttrSigningCertificateV2&);
template void asn1Decode<ASN1T_SigningCertificateV2_traits, CAttrSigningCertificateV2>(
    const CBlob&, CAttrSigningCertificateV2&);

namespace {

constexpr const char* kSigningCertificateV2 = "1.2.840.113549.1.9.16.2.47";
constexpr const char* kSha256 = "2.16.840.1.101.3.4.2.1";

/// Both absent, or both there and equal.
bool same_issuer_serial(const CIssuerSerial* left, const CIssuerSerial* right) {
    if (left == nullptr || right == nullptr) {
        return left == right;
    }
    return *left == *right;
}

}  // namespace

struct CESSCertIDv2::Impl {
    CAlgorithmIdentifier hashAlgorithm{kSha256};
    CBlob certHash;
    auto_ptr<CIssuerSerial> issuerSerial;

    Impl() = default;
    Impl(const Impl& other) : hashAlgorithm(other.hashAlgorithm), certHash(other.certHash) {
        copy_to_auto_ptr(issuerSerial, other.issuerSerial.get());
    }
};

struct CAttrSigningCertificateV2::Impl {
    CESSCertIDv2List certs;
    auto_ptr<CPolicyInformationList> policies;

    Impl() = default;
    Impl(const Impl& other) : certs(other.certs) { copy_to_auto_ptr(policies, other.policies.get()); }
};

CIssuerSerial::CIssuerSerial(const CGeneralNames& issuer, const CBigInteger& serialNumber)
    : issuer_(issuer), serialNumber_(serialNumber) {}

void CIssuerSerial::put_issuer(const CGeneralNames& issuer) {
    issuer_ = issuer;
}

void CIssuerSerial::put_serialNumber(const CBigInteger& serialNumber) {
    serialNumber_ = serialNumber;
}

CBlob CIssuerSerial::encode() const {
    return asn1Encode<ASN1T_IssuerSerial_traits>(*this);
}

void CIssuerSerial::decode(const CBlob& der) {
    asn1Decode<ASN1T_IssuerSerial_traits>(der, *this);
}

bool operator==(const CIssuerSerial& left, const CIssuerSerial& right) {
    return left.get_issuer() == right.get_issuer() && left.get_serialNumber() == right.get_serialNumber();
}

bool operator!=(const CIssuerSerial& left, const CIssuerSerial& right) {
    return !(left == right);
}

CESSCertIDv2::CESSCertIDv2() : impl_(std::make_unique<Impl>()) {}

CESSCertIDv2::CESSCertIDv2(const CBlob& certHash) : CESSCertIDv2() {
    impl_->certHash = certHash;
}

CESSCertIDv2::CESSCertIDv2(const CBlob& certHash, const CAlgorithmIdentifier& hashAlgorithm)
    : CESSCertIDv2(certHash) {
    impl_->hashAlgorithm = hashAlgorithm;
}

CESSCertIDv2::CESSCertIDv2(const CESSCertIDv2& other) : impl_(std::make_unique<Impl>(*other.impl_)) {}

CESSCertIDv2& CESSCertIDv2::operator=(const CESSCertIDv2& other) {
    if (impl_ != other.impl_) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CESSCertIDv2::~CESSCertIDv2() = default;

const CAlgorithmIdentifier& CESSCertIDv2::get_hashAlgorithm() const {
    return impl_->hashAlgorithm;
}

const CBlob& CESSCertIDv2::get_certHash() const {
    return impl_->certHash;
}

const CIssuerSerial* CESSCertIDv2::get_issuerSerial() const {
    return impl_->issuerSerial.get();
}

void CESSCertIDv2::put_hashAlgorithm(const CAlgorithmIdentifier& hashAlgorithm) {
    impl_->hashAlgorithm = hashAlgorithm;
}

void CESSCertIDv2::put_certHash(const CBlob& certHash) {
    impl_->certHash = certHash;
}

void CESSCertIDv2::put_issuerSerial(const CIssuerSerial* issuerSerial) {
    copy_to_auto_ptr(impl_->issuerSerial, issuerSerial);
}

CBlob CESSCertIDv2::encode() const {
    return asn1Encode<ASN1T_ESSCertIDv2_traits>(*this);
}

void CESSCertIDv2::decode(const CBlob& der) {
    asn1Decode<ASN1T_ESSCertIDv2_traits>(der, *this);
}

bool operator==(const CESSCertIDv2& left, const CESSCertIDv2& right) {
    return left.get_hashAlgorithm() == right.get_hashAlgorithm() &&
           left.get_certHash() == right.get_certHash() &&
           same_issuer_serial(left.get_issuerSerial(), right.get_issuerSerial());
}

bool operator!=(const CESSCertIDv2& left, const CESSCertIDv2& right) {
    return !(left == right);
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

void ASN1T_IssuerSerial_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CIssuerSerial& value) {
    ASN1T_GeneralNames_traits::set(ctxt, record.issuer, value.get_issuer());
    record.serialNumber = BigIntegerToASN1String(ctxt, value.get_serialNumber());
}

void ASN1T_IssuerSerial_traits::get(const ASN1_T& record, CIssuerSerial& value) {
    CGeneralNames issuer;
    ASN1T_GeneralNames_traits::get(record.issuer, issuer);
    CBigInteger serial_number;
    ASN1StringToBigInteger(record.serialNumber, serial_number);
    value.put_issuer(issuer);
    value.put_serialNumber(serial_number);
}

void ASN1T_IssuerSerial_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_IssuerSerial(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_ESSCertIDv2_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CESSCertIDv2& value) {
    record.m.hashAlgorithmPresent = 0;
    record.m.issuerSerialPresent = 0;
    // Intended: the default goes unwritten by its identifier alone, with or without parameters.
    if (std::strcmp(value.get_hashAlgorithm().get_algorithm(), kSha256) != 0) {
        record.m.hashAlgorithmPresent = 1;
        ASN1T_AlgorithmIdentifier_traits::set(ctxt, record.hashAlgorithm, value.get_hashAlgorithm());
    }
    detail::put_octets(ctxt, record.certHash, value.get_certHash());
    if (value.get_issuerSerial() != nullptr) {
        record.m.issuerSerialPresent = 1;
        ASN1T_IssuerSerial_traits::set(ctxt, record.issuerSerial, *value.get_issuerSerial());
    }
}

void ASN1T_ESSCertIDv2_traits::get(const ASN1_T& record, CESSCertIDv2& value) {
    CAlgorithmIdentifier hash_algorithm(kSha256);
    if (record.m.hashAlgorithmPresent) {
        ASN1T_AlgorithmIdentifier_get(hash_algorithm, record.hashAlgorithm);
    }
    value.put_hashAlgorithm(hash_algorithm);
    value.put_certHash(CBlob(record.certHash.data, record.certHash.numocts));
    if (!record.m.issuerSerialPresent) {
        value.put_issuerSerial(nullptr);
        return;
    }
    CIssuerSerial issuer_serial;
    ASN1T_IssuerSerial_traits::get(record.issuerSerial, issuer_serial);
    value.put_issuerSerial(&issuer_serial);
}

void ASN1T_ESSCertIDv2_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_ESSCertIDv2(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_SigningCertificateV2_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                            const CAttrSigningCertificateV2& value) {
    record.m.policiesPresent = 0;
    CertIDv2List::set(ctxt, record.certs, value.get_certs());
    const CPolicyInformationList* policies = value.get_policies();
    if (policies != nullptr && !policies->empty()) {
        record.m.policiesPresent = 1;
        PolicyList::set(ctxt, record.policies, *policies);
    }
}

void ASN1T_SigningCertificateV2_traits::get(const ASN1_T& record, CAttrSigningCertificateV2& value) {
    CESSCertIDv2List certs;
    CertIDv2List::get(record.certs, certs);
    value.put_certs(certs);
    if (!record.m.policiesPresent) {
        value.put_policies(nullptr);
        return;
    }
    CPolicyInformationList policies;
    PolicyList::get(record.policies, policies);
    value.put_policies(&policies);
}

void ASN1T_SigningCertificateV2_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_SigningCertificateV2(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
