#include "tsp/response.h"

#include <new>
#include <optional>
#include <utility>

#include "asn1/codec.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "runtime/detail/local_buffer.h"
#include "tsp/detail/record.h"
#include "tsp/detail/response_impl.h"
#include "tsp/detail/token_impl.h"
#include "values/result.h"

namespace Quillmark::PKI::TSP {

using namespace ASN1;
using asn1data::ASN1C_TimeStampResp;
using asn1data::ASN1C_TimeStampToken;
using asn1data::ASN1T_TimeStampResp;

CResponse::Impl::Impl() : status(PKIStatus_rejection) {}

CResponse::Impl::Impl(const CPKIStatusInfo& initial) : status(initial) {}

CResponse::Impl::Impl(const Impl& other) : status(other.status) {
    copy_to_auto_ptr(timeStampToken, other.timeStampToken.get());
}

CResponse::Impl::~Impl() = default;

CResponse::CResponse() : impl_(new Impl) {}

CResponse::CResponse(const CResponse& other) : impl_(new Impl(*other.impl_)) {}

CResponse& CResponse::operator=(const CResponse& other) {
    if (this == &other) {
        return *this;
    }
    auto fresh = std::make_unique<Impl>(other.impl_->status);
    if (other.impl_->timeStampToken && impl_->timeStampToken) {
        // Assigning to the old token closes its message before the new one is duplicated.
        *impl_->timeStampToken = *other.impl_->timeStampToken;
        fresh->timeStampToken = std::move(impl_->timeStampToken);
    } else {
        copy_to_auto_ptr(fresh->timeStampToken, other.impl_->timeStampToken.get());
    }
    delete std::exchange(impl_, fresh.release());
    return *this;
}

// Intended: the pointer keeps its value, so nothing may be done with the object any more.
void CResponse::clear() {
    delete impl_;
}

CResponse::~CResponse() {
    clear();
}

const CPKIStatusInfo& CResponse::get_status() const {
    return impl_->status;
}

const CToken* CResponse::get_timeStampToken() const {
    return impl_->timeStampToken.get();
}

void CResponse::put_status(const CPKIStatusInfo& status) {
    CPKIStatusInfo copy(status);  // what can fail comes first, so that the old status stays whole
    impl_->status = std::move(copy);
}

void CResponse::put_timeStampToken(const CToken* token) {
    copy_to_auto_ptr(impl_->timeStampToken, token);
}

// RFC 3161 2.4.2
//
//     TimeStampResp ::= SEQUENCE  {
//        status                  PKIStatusInfo,
//        timeStampToken          TimeStampToken     OPTIONAL  }
CBlob CResponse::encode() const {
    detail::LocalEncodeBuffer buffer;
    // What the record holds of the token lies on the context of its buffer and in its octets: the cached
    // ones, or those of its message.
    std::optional<detail::LocalDecodeBuffer> token_buffer;
    CBlob message;
    ASN1T_TimeStampResp record;
    ASN1T_PKIStatusInfo_traits::set(buffer.getCtxtPtr(), record.status, impl_->status);
    if (impl_->timeStampToken) {
        const CBlob& cached = impl_->timeStampToken->impl_->encodedToken;
        if (cached.cbData() == 0) {
            message = impl_->timeStampToken->encode();
        }
        const CBlob& token = cached.cbData() == 0 ? message : cached;
        token_buffer.emplace(token.pbData(), detail::checked_length(token));
        detail::lend_message(token_buffer->getCtxtPtr());
        if (ASN1C_TimeStampToken(*token_buffer, record.timeStampToken).DecodeFrom(*token_buffer) < 0) {
            throw CAtlException(CRYPT_E_ASN1_INTERNAL);
        }
        record.m.timeStampTokenPresent = 1;
    }
    const int length = ASN1C_TimeStampResp(buffer, record).EncodeTo(buffer);
    if (length == 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    // Intended: a failed encoder is not told apart from a length that cannot be allocated.
    if (length < 0) {
        throw std::bad_alloc();
    }
    return CBlob(buffer.getMsgPtr(), static_cast<unsigned long>(length));
}

void CResponse::decode(const CBlob& blob) {
    if (blob.cbData() == 0 || blob.pbData() == nullptr) {
        throw CAtlException(E_INVALIDARG);
    }
    auto fresh = std::make_unique<Impl>();
    // Kept until the end, since `blob` may lie in it.
    const std::unique_ptr<Impl> previous(std::exchange(impl_, fresh.release()));

    detail::LocalDecodeBuffer buffer(blob.pbData(), detail::checked_length(blob));
    detail::lend_message(buffer.getCtxtPtr());
    ASN1T_TimeStampResp record;
    if (ASN1C_TimeStampResp(buffer, record).DecodeFrom(buffer) < 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    ASN1T_PKIStatusInfo_traits::get(record.status, impl_->status);
    if (!record.m.timeStampTokenPresent) {
        return;
    }
    // The token is written anew, in DER, before its own decoder sees it.
    detail::LocalEncodeBuffer token_buffer;
    const int length = ASN1C_TimeStampToken(token_buffer, record.timeStampToken).EncodeTo(token_buffer);
    if (length < 1) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    auto token = std::make_unique<CToken>();
    token->impl_->encodedToken.assign(token_buffer.getMsgPtr(), static_cast<unsigned long>(length));
    impl_->timeStampToken = std::move(token);
    impl_->timeStampToken->impl_->decode();
}

}  // namespace Quillmark::PKI::TSP
