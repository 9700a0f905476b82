#include "asn1/other_hash.h"

#include "asn1/choice.h"
#include "asn1/detail/bridge.h"
#include "asn1/detail/heap.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_OtherHashAlgAndValue_traits> {
    using Record = asn1data::ASN1T_OtherHashAlgAndValue;
    using Control = asn1data::ASN1C_OtherHashAlgAndValue;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_OtherHash_traits> {
    using Record = asn1data::ASN1T_OtherHash;
    using Control = asn1data::ASN1C_OtherHash;
};

namespace Quillmark::ASN1 {

using asn1data::T_OtherHash_otherHash;
using asn1data::T_OtherHash_sha1Hash;

template CBlob asn1Encode<ASN1T_OtherHashAlgAndValue_traits, COtherHashAlgAndValue>(
    const COtherHashAlgAndValue&);
template void asn1Decode<ASN1T_OtherHashAlgAndValue_traits, COtherHashAlgAndValue>(const CBlob&,
                                                                                   COtherHashAlgAndValue&);
template CBlob asn1Encode<ASN1T_OtherHash_traits, COtherHash>(const COtherHash&);
template void asn1Decode<ASN1T_OtherHash_traits, COtherHash>(const CBlob&, COtherHash&);

class COtherHashImpl final : public Choice {
  public:
    COtherHashImpl() = default;
    COtherHashImpl(const COtherHashImpl& other) : Choice() { copy_from(other); }
    COtherHashImpl& operator=(const COtherHashImpl&) = delete;
    ~COtherHashImpl() override { delete_value(); }

    const ChoiceValueTraits* findTraits(unsigned int type) const override {
        switch (type) {
            case T_OtherHash_sha1Hash:
                return &ChoiceValueTraitsT<CBlob, T_OtherHash_sha1Hash>::instance;
            case T_OtherHash_otherHash:
                return &ChoiceValueTraitsT<COtherHashAlgAndValue, T_OtherHash_otherHash>::instance;
            default:
                return &NoChoiceValueTraits::instance;
        }
    }
};

namespace {

/// Same form, and the values of the form alike.
template <class SameOtherHash>
bool same_hash(const COtherHash& left, const COtherHash& right, SameOtherHash same_other_hash) {
    if (left.get_type() != right.get_type()) {
        return false;
    }
    switch (left.get_type()) {
        case T_OtherHash_sha1Hash:
            return *left.get_sha1Hash() == *right.get_sha1Hash();
        case T_OtherHash_otherHash:
            return same_other_hash(*left.get_otherHash(), *right.get_otherHash());
        default:
            return true;
    }
}

}  // namespace

COtherHashAlgAndValue::COtherHashAlgAndValue(const CBlob& hashValue,
                                             const CAlgorithmIdentifier& hashAlgorithm)
    : hashAlgorithm_(hashAlgorithm), hashValue_(hashValue) {}

void COtherHashAlgAndValue::put_hashAlgorithm(const CAlgorithmIdentifier& hashAlgorithm) {
    hashAlgorithm_ = hashAlgorithm;
}

void COtherHashAlgAndValue::put_hashValue(const CBlob& hashValue) {
    hashValue_ = hashValue;
}

CBlob COtherHashAlgAndValue::encode() const {
    return asn1Encode<ASN1T_OtherHashAlgAndValue_traits>(*this);
}

void COtherHashAlgAndValue::decode(const CBlob& der) {
    asn1Decode<ASN1T_OtherHashAlgAndValue_traits>(der, *this);
}

bool COtherHashAlgAndValue::compare_hashValue(const COtherHashAlgAndValue& other) const {
    return hashValue_ == other.hashValue_;
}

bool operator==(const COtherHashAlgAndValue& left, const COtherHashAlgAndValue& right) {
    return left.get_hashAlgorithm() == right.get_hashAlgorithm() &&
           left.get_hashValue() == right.get_hashValue();
}

bool operator!=(const COtherHashAlgAndValue& left, const COtherHashAlgAndValue& right) {
    return !(left == right);
}

COtherHash::COtherHash() : impl_(std::make_unique<COtherHashImpl>()) {}

COtherHash::COtherHash(const CBlob& sha1Hash) : COtherHash() {
    put_sha1Hash(sha1Hash);
}

COtherHash::COtherHash(const COtherHashAlgAndValue& otherHash) : COtherHash() {
    put_otherHash(otherHash);
}

COtherHash::COtherHash(const COtherHash& other)
    : impl_(other.impl_ ? std::make_unique<COtherHashImpl>(*other.impl_) : nullptr) {}

COtherHash& COtherHash::operator=(const COtherHash& other) {
    if (impl_ != other.impl_) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

COtherHash::~COtherHash() = default;

void COtherHash::clear() {
    impl_.reset();
}

unsigned int COtherHash::get_type() const {
    return impl_->get_type();
}

const CBlob* COtherHash::get_sha1Hash() const {
    return impl_->get<CBlob>(T_OtherHash_sha1Hash);
}

const COtherHashAlgAndValue* COtherHash::get_otherHash() const {
    return impl_->get<COtherHashAlgAndValue>(T_OtherHash_otherHash);
}

void COtherHash::put_sha1Hash(const CBlob& sha1Hash) {
    impl_->put(T_OtherHash_sha1Hash, &sha1Hash);
}

void COtherHash::put_otherHash(const COtherHashAlgAndValue& otherHash) {
    impl_->put(T_OtherHash_otherHash, &otherHash);
}

CBlob COtherHash::encode() const {
    return asn1Encode<ASN1T_OtherHash_traits>(*this);
}

void COtherHash::decode(const CBlob& der) {
    asn1Decode<ASN1T_OtherHash_traits>(der, *this);
}

bool COtherHash::compare_hashValue(const COtherHash& other) const {
    return same_hash(*this, other, [](const COtherHashAlgAndValue& left, const COtherHashAlgAndValue& right) {
        return left.compare_hashValue(right);
    });
}

bool operator==(const COtherHash& left, const COtherHash& right) {
    return same_hash(left, right,
                     [](const COtherHashAlgAndValue& a, const COtherHashAlgAndValue& b) { return a == b; });
}

bool operator!=(const COtherHash& left, const COtherHash& right) {
    return !(left == right);
}

void ASN1T_OtherHashAlgAndValue_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                            const COtherHashAlgAndValue& value) {
    ASN1T_AlgorithmIdentifier_traits::set(ctxt, record.hashAlgorithm, value.get_hashAlgorithm());
    detail::put_octets(ctxt, record.hashValue, value.get_hashValue());
}

void ASN1T_OtherHashAlgAndValue_traits::get(const ASN1_T& record, COtherHashAlgAndValue& value) {
    CAlgorithmIdentifier hash_algorithm;
    ASN1T_AlgorithmIdentifier_get(hash_algorithm, record.hashAlgorithm);
    value.put_hashAlgorithm(hash_algorithm);
    value.put_hashValue(CBlob(record.hashValue.data, record.hashValue.numocts));
}

void ASN1T_OtherHashAlgAndValue_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_OtherHashAlgAndValue(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_OtherHash_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const COtherHash& value) {
    // Intended: a hash of no form is left for the encoder to refuse.
    switch (value.get_type()) {
        case T_OtherHash_sha1Hash:
            record.t = T_OtherHash_sha1Hash;
            record.u.sha1Hash = detail::new_record<ASN1TDynOctStr>(ctxt);
            ASN1TDynOctStr_traits::set(ctxt, *record.u.sha1Hash, *value.get_sha1Hash());
            return;
        case T_OtherHash_otherHash:
            record.t = T_OtherHash_otherHash;
            record.u.otherHash = detail::new_record<asn1data::ASN1T_OtherHashAlgAndValue>(ctxt);
            ASN1T_OtherHashAlgAndValue_traits::set(ctxt, *record.u.otherHash, *value.get_otherHash());
            return;
        default:
            return;
    }
}

void ASN1T_OtherHash_traits::get(const ASN1_T& record, COtherHash& value) {
    switch (record.t) {
        case T_OtherHash_sha1Hash: {
            CBlob octets;
            ASN1TDynOctStr_traits::get(*record.u.sha1Hash, octets);
            value.put_sha1Hash(octets);
            return;
        }
        case T_OtherHash_otherHash: {
            COtherHashAlgAndValue other_hash;
            ASN1T_OtherHashAlgAndValue_traits::get(*record.u.otherHash, other_hash);
            value.put_otherHash(other_hash);
            return;
        }
        default:
            return;
    }
}

void ASN1T_OtherHash_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_OtherHash(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
