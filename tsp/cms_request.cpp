#include "tsp/cms_request.h"

#include <utility>

#include "asn1/detail/bridge.h"
#include "asn1/detail/oid_text.h"
#include "asn1/detail/text.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "tsp/detail/cms_request_impl.h"
#include "tsp/detail/record.h"

template <>
struct Quillmark::detail::Binding<Quillmark::PKI::TSP::ASN1T_TimeStampAuthenticodeRequest_traits> {
    using Record = asn1data::ASN1T_TimeStampAuthenticodeRequest;
    using Control = asn1data::ASN1C_TimeStampAuthenticodeRequest;
};

namespace Quillmark::PKI::TSP {

using namespace ASN1;
using Traits = ASN1T_TimeStampAuthenticodeRequest_traits;

CMSRequestImpl::CMSRequestImpl(const CMSRequestImpl& other)
    : timeStampAlgorithm(other.timeStampAlgorithm), contentInfo(other.contentInfo) {
    copy_to_auto_ptr(attributes, other.attributes.get());
}

CMSRequest::CMSRequest() : impl_(new CMSRequestImpl) {}

CMSRequest::CMSRequest(const char* timeStampAlgorithm, const CContentInfo& contentInfo) : impl_(nullptr) {
    auto fresh = std::make_unique<CMSRequestImpl>();
    fresh->timeStampAlgorithm = detail::or_empty(timeStampAlgorithm);
    fresh->contentInfo = contentInfo;
    impl_ = fresh.release();
}

CMSRequest::CMSRequest(const CMSRequest& other) : impl_(new CMSRequestImpl(*other.impl_)) {}

CMSRequest& CMSRequest::operator=(const CMSRequest& other) {
    if (this != &other) {
        auto* fresh = new CMSRequestImpl(*other.impl_);
        delete std::exchange(impl_, fresh);
    }
    return *this;
}

void CMSRequest::clear() {
    delete std::exchange(impl_, nullptr);
}

CMSRequest::~CMSRequest() {
    clear();
}

const char* CMSRequest::get_timeStampAlgorithm() const {
    return impl_->timeStampAlgorithm.c_str();
}

const CContentInfo& CMSRequest::get_contentInfo() const {
    return impl_->contentInfo;
}

const CAttributes* CMSRequest::get_attributes() const {
    return impl_->attributes.get();
}

void CMSRequest::put_timeStampAlgorithm(const char* timeStampAlgorithm) {
    impl_->timeStampAlgorithm = detail::or_empty(timeStampAlgorithm);
}

void CMSRequest::put_contentInfo(const CContentInfo& contentInfo) {
    CContentInfo copy(contentInfo);  // what can fail comes first, so that the old content stays whole
    impl_->contentInfo = std::move(copy);
}

void CMSRequest::put_attributes(const CAttributes* attributes) {
    copy_to_auto_ptr(impl_->attributes, attributes);
}

CBlob CMSRequest::encode() const {
    return asn1Encode<Traits>(*this);
}

void CMSRequest::decode(const CBlob& blob) {
    asn1Decode<Traits>(blob, *this);
}

//     TimeStampAuthenticodeRequest ::= SEQUENCE {
//         timeStampAlgorithm     OBJECT IDENTIFIER,
//         attributes             UnsignedAttributes OPTIONAL,
//         content                ContentInfo }
void Traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CMSRequest& value) {
    detail::zero_record(record);
    ASN1TObjId_traits::set(ctxt, record.timeStampAlgorithm, value.get_timeStampAlgorithm());
    ASN1T_ContentInfo_traits::set(ctxt, record.content, value.get_contentInfo());
    const CAttributes* attributes = value.get_attributes();
    if (attributes != nullptr && !attributes->empty()) {  // SIZE (1..MAX), RFC 5652 5.3
        record.m.attributesPresent = 1;
        ASN1T_Attributes_traits::set(ctxt, record.attributes, *attributes);
    }
}

void Traits::get(const ASN1_T& record, CMSRequest& value) {
    value.put_timeStampAlgorithm(detail::OidText(record.timeStampAlgorithm).c_str());
    CContentInfo content;
    ASN1T_ContentInfo_traits::get(record.content, content);
    value.put_contentInfo(content);
    if (!record.m.attributesPresent) {
        value.put_attributes(nullptr);
        return;
    }
    CAttributes attributes;
    ASN1T_Attributes_traits::get(record.attributes, attributes);
    value.put_attributes(&attributes);
}

void Traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_TimeStampAuthenticodeRequest(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::PKI::TSP
