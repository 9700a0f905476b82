#include "asn1/certificate_identifier.h"

#include <cstring>

#include "asn1/detail/bridge.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/list_traits.h"
#include "asn1/detail/optional_member.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_IssuerSerial_traits> {
    using Record = asn1data::ASN1T_IssuerSerial;
    using Control = asn1data::ASN1C_IssuerSerial;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_ESSCertID_traits> {
    using Record = asn1data::ASN1T_ESSCertID;
    using Control = asn1data::ASN1C_ESSCertID;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_ESSCertIDv2_traits> {
    using Record = asn1data::ASN1T_ESSCertIDv2;
    using Control = asn1data::ASN1C_ESSCertIDv2;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_OtherCertID_traits> {
    using Record = asn1data::ASN1T_OtherCertID;
    using Control = asn1data::ASN1C_OtherCertID;
};

namespace Quillmark::ASN1 {

using detail::same_optional;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_ESSCertID, ASN1T_ESSCertID_traits, CESSCertID,
                                      CESSCertIDList>;
template struct ASN1TSeqOfList_traits<asn1data::ASN1T_ESSCertIDv2, ASN1T_ESSCertIDv2_traits, CESSCertIDv2,
                                      CESSCertIDv2List>;
template struct ASN1TSeqOfList_traits<asn1data::ASN1T_OtherCertID, ASN1T_OtherCertID_traits, COtherCertID,
                                      COtherCertIDList>;
template CBlob asn1Encode<ASN1T_IssuerSerial_traits, CIssuerSerial>(const CIssuerSerial&);
template void asn1Decode<ASN1T_IssuerSerial_traits, CIssuerSerial>(const CBlob&, CIssuerSerial&);
template CBlob asn1Encode<ASN1T_ESSCertID_traits, CESSCertID>(const CESSCertID&);
template void asn1Decode<ASN1T_ESSCertID_traits, CESSCertID>(const CBlob&, CESSCertID&);
template CBlob asn1Encode<ASN1T_ESSCertIDv2_traits, CESSCertIDv2>(const CESSCertIDv2&);
template void asn1Decode<ASN1T_ESSCertIDv2_traits, CESSCertIDv2>(const CBlob&, CESSCertIDv2&);
template CBlob asn1Encode<ASN1T_OtherCertID_traits, COtherCertID>(const COtherCertID&);
template void asn1Decode<ASN1T_OtherCertID_traits, COtherCertID>(const CBlob&, COtherCertID&);

namespace {

constexpr const char* kSha256 = "2.16.840.1.101.3.4.2.1";

// The optional last element that the three identifiers share.

template <class Record, class Value>
void set_issuer_serial(ASN1CTXT* ctxt, Record& record, const Value& value) {
    record.m.issuerSerialPresent = 0;
    if (value.get_issuerSerial() != nullptr) {
        record.m.issuerSerialPresent = 1;
        ASN1T_IssuerSerial_traits::set(ctxt, record.issuerSerial, *value.get_issuerSerial());
    }
}

template <class Record, class Value>
void get_issuer_serial(const Record& record, Value& value) {
    if (!record.m.issuerSerialPresent) {
        value.put_issuerSerial(nullptr);
        return;
    }
    CIssuerSerial issuer_serial;
    ASN1T_IssuerSerial_traits::get(record.issuerSerial, issuer_serial);
    value.put_issuerSerial(&issuer_serial);
}

}  // namespace

struct CESSCertID::Impl {
    CBlob certHash;
    auto_ptr<CIssuerSerial> issuerSerial;

    Impl() = default;
    Impl(const Impl& other) : certHash(other.certHash) {
        copy_to_auto_ptr(issuerSerial, other.issuerSerial.get());
    }
};

struct CESSCertIDv2::Impl {
    CAlgorithmIdentifier hashAlgorithm{kSha256};
    CBlob certHash;
    auto_ptr<CIssuerSerial> issuerSerial;

    Impl() = default;
    Impl(const Impl& other) : hashAlgorithm(other.hashAlgorithm), certHash(other.certHash) {
        copy_to_auto_ptr(issuerSerial, other.issuerSerial.get());
    }
};

struct COtherCertID::Impl {
    COtherHash otherCertHash;
    auto_ptr<CIssuerSerial> issuerSerial;

    Impl() = default;
    Impl(const Impl& other) : otherCertHash(other.otherCertHash) {
        copy_to_auto_ptr(issuerSerial, other.issuerSerial.get());
    }
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

CESSCertID::CESSCertID() : impl_(std::make_unique<Impl>()) {}

CESSCertID::CESSCertID(const CBlob& certHash) : CESSCertID() {
    impl_->certHash = certHash;
}

CESSCertID::CESSCertID(const CESSCertID& other) : impl_(std::make_unique<Impl>(*other.impl_)) {}

CESSCertID& CESSCertID::operator=(const CESSCertID& other) {
    if (impl_ != other.impl_) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CESSCertID::~CESSCertID() = default;

const CBlob& CESSCertID::get_certHash() const {
    return impl_->certHash;
}

const CIssuerSerial* CESSCertID::get_issuerSerial() const {
    return impl_->issuerSerial.get();
}

void CESSCertID::put_certHash(const CBlob& certHash) {
    impl_->certHash = certHash;
}

void CESSCertID::put_issuerSerial(const CIssuerSerial* issuerSerial) {
    copy_to_auto_ptr(impl_->issuerSerial, issuerSerial);
}

CBlob CESSCertID::encode() const {
    return asn1Encode<ASN1T_ESSCertID_traits>(*this);
}

void CESSCertID::decode(const CBlob& der) {
    asn1Decode<ASN1T_ESSCertID_traits>(der, *this);
}

bool operator==(const CESSCertID& left, const CESSCertID& right) {
    return left.get_certHash() == right.get_certHash() &&
           same_optional(left.get_issuerSerial(), right.get_issuerSerial());
}

bool operator!=(const CESSCertID& left, const CESSCertID& right) {
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
           same_optional(left.get_issuerSerial(), right.get_issuerSerial());
}

bool operator!=(const CESSCertIDv2& left, const CESSCertIDv2& right) {
    return !(left == right);
}

COtherCertID::COtherCertID() : impl_(std::make_unique<Impl>()) {}

COtherCertID::COtherCertID(const CBlob& sha1Hash) : COtherCertID() {
    impl_->otherCertHash.put_sha1Hash(sha1Hash);
}

COtherCertID::COtherCertID(const CBlob& hashValue, const CAlgorithmIdentifier& hashAlgorithm)
    : COtherCertID() {
    impl_->otherCertHash.put_otherHash(COtherHashAlgAndValue(hashValue, hashAlgorithm));
}

COtherCertID::COtherCertID(const COtherCertID& other) : impl_(std::make_unique<Impl>(*other.impl_)) {}

COtherCertID& COtherCertID::operator=(const COtherCertID& other) {
    if (impl_ != other.impl_) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

COtherCertID::~COtherCertID() = default;

const COtherHash& COtherCertID::get_otherCertHash() const {
    return impl_->otherCertHash;
}

const CIssuerSerial* COtherCertID::get_issuerSerial() const {
    return impl_->issuerSerial.get();
}

void COtherCertID::put_otherCertHash(const COtherHash& otherCertHash) {
    impl_->otherCertHash = otherCertHash;
}

void COtherCertID::put_issuerSerial(const CIssuerSerial* issuerSerial) {
    copy_to_auto_ptr(impl_->issuerSerial, issuerSerial);
}

CBlob COtherCertID::encode() const {
    return asn1Encode<ASN1T_OtherCertID_traits>(*this);
}

void COtherCertID::decode(const CBlob& der) {
    asn1Decode<ASN1T_OtherCertID_traits>(der, *this);
}

bool COtherCertID::compare_noHashParam(const COtherCertID& other) const {
    return get_otherCertHash().compare_hashValue(other.get_otherCertHash()) &&
           same_optional(get_issuerSerial(), other.get_issuerSerial());
}

bool operator==(const COtherCertID& left, const COtherCertID& right) {
    return left.get_otherCertHash() == right.get_otherCertHash() &&
           same_optional(left.get_issuerSerial(), right.get_issuerSerial());
}

bool operator!=(const COtherCertID& left, const COtherCertID& right) {
    return !(left == right);
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

void ASN1T_ESSCertID_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CESSCertID& value) {
    detail::put_octets(ctxt, record.certHash, value.get_certHash());
    set_issuer_serial(ctxt, record, value);
}

void ASN1T_ESSCertID_traits::get(const ASN1_T& record, CESSCertID& value) {
    value.put_certHash(CBlob(record.certHash.data, record.certHash.numocts));
    get_issuer_serial(record, value);
}

void ASN1T_ESSCertID_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_ESSCertID(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_ESSCertIDv2_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CESSCertIDv2& value) {
    record.m.hashAlgorithmPresent = 0;
    // Intended: the default goes unwritten by its identifier alone, with or without parameters.
    if (std::strcmp(value.get_hashAlgorithm().get_algorithm(), kSha256) != 0) {
        record.m.hashAlgorithmPresent = 1;
        ASN1T_AlgorithmIdentifier_traits::set(ctxt, record.hashAlgorithm, value.get_hashAlgorithm());
    }
    detail::put_octets(ctxt, record.certHash, value.get_certHash());
    set_issuer_serial(ctxt, record, value);
}

void ASN1T_ESSCertIDv2_traits::get(const ASN1_T& record, CESSCertIDv2& value) {
    CAlgorithmIdentifier hash_algorithm(kSha256);
    if (record.m.hashAlgorithmPresent) {
        ASN1T_AlgorithmIdentifier_get(hash_algorithm, record.hashAlgorithm);
    }
    value.put_hashAlgorithm(hash_algorithm);
    value.put_certHash(CBlob(record.certHash.data, record.certHash.numocts));
    get_issuer_serial(record, value);
}

void ASN1T_ESSCertIDv2_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_ESSCertIDv2(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_OtherCertID_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const COtherCertID& value) {
    ASN1T_OtherHash_traits::set(ctxt, record.otherCertHash, value.get_otherCertHash());
    set_issuer_serial(ctxt, record, value);
}

void ASN1T_OtherCertID_traits::get(const ASN1_T& record, COtherCertID& value) {
    COtherHash other_cert_hash;
    ASN1T_OtherHash_traits::get(record.otherCertHash, other_cert_hash);
    value.put_otherCertHash(other_cert_hash);
    get_issuer_serial(record, value);
}

void ASN1T_OtherCertID_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_OtherCertID(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
