#include "asn1/attribute.h"
#include "asn1/detail/text.h"
#include "asn1/extension_value.h"
#include "asn1/name.h"

namespace Quillmark::ASN1 {
namespace {

constexpr const char* kContentType = "1.2.840.113549.1.9.3";
constexpr const char* kMessageDigest = "1.2.840.113549.1.9.4";
constexpr const char* kSigningTime = "1.2.840.113549.1.9.5";

}  // namespace

CAttrContentType::CAttrContentType(const char* contentType)
    : CAttrValue(kContentType), contentType_(contentType) {
    encode();
}

CAttrContentType::CAttrContentType(const CBlob& der) : CAttrValue(kContentType, der), contentType_("") {
    decode();
}

void CAttrContentType::encode() {
    value() = asn1Encode<ASN1TObjId_traits, const char*>(contentType_.c_str());
}

void CAttrContentType::decode() {
    asn1Decode<ASN1TObjId_traits>(get_value(), contentType_);
}

void CAttrContentType::put_contentType(const char* contentType) {
    contentType_ = CStringProxy(contentType);
    encode();
}

CAttrMessageDigest::CAttrMessageDigest() : CAttrValue(kMessageDigest) {}

CAttrMessageDigest::CAttrMessageDigest(const CBlob& der) : CAttrValue(kMessageDigest, der) {
    decode();
}

void CAttrMessageDigest::encode() {
    value() = toOctetString(messageDigest_);
}

void CAttrMessageDigest::decode() {
    messageDigest_ = fromOctetString(get_value());
}

void CAttrMessageDigest::put_messageDigest(const CBlob& messageDigest) {
    messageDigest_ = messageDigest;
    encode();
}

CAttrSigningTime::CAttrSigningTime(const CDateTime& time)
    : CAttrValue(kSigningTime), time_(std::make_unique<CTimeChoice>(time)) {
    encode();
}

CAttrSigningTime::CAttrSigningTime(const CBlob& der)
    : CAttrValue(kSigningTime, der), time_(std::make_unique<CTimeChoice>()) {
    decode();
}

CAttrSigningTime::CAttrSigningTime(const CAttrSigningTime& other)
    : CAttrValue(other), time_(std::make_unique<CTimeChoice>(*other.time_)) {}

CAttrSigningTime& CAttrSigningTime::operator=(const CAttrSigningTime& other) {
    CAttrValue::operator=(other);
    *time_ = *other.time_;
    return *this;
}

CAttrSigningTime::~CAttrSigningTime() = default;

void CAttrSigningTime::encode() {
    value() = time_->encode();
}

void CAttrSigningTime::decode() {
    time_->decode(get_value());
}

CDateTime CAttrSigningTime::get_time() const {
    return *time_->get_time();
}

void CAttrSigningTime::put_time(const CDateTime& time) {
    time_->put_time(time);
    encode();
}

CAttrStringValue::CAttrStringValue(const char* oid, const char* text)
    : CAttrStringValue(oid, towstring(detail::or_empty(text)).c_str()) {}

CAttrStringValue::CAttrStringValue(const char* oid, const wchar_t* text)
    : CAttrValue(oid, CATAVRegister::valueFromStr(oid, text, StringTypeDefault)) {}

}  // namespace Quillmark::ASN1
