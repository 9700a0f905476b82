#include "tsp/request.h"

#include <utility>

#include "asn1/codec.h"
#include "asn1/detail/oid_text.h"
#include "asn1data/control_classes.h"
#include "runtime/detail/local_buffer.h"
#include "tsp/detail/record.h"
#include "tsp/detail/request_impl.h"
#include "values/result.h"

namespace Quillmark::PKI::TSP {

using namespace ASN1;
using asn1data::ASN1C_TimeStampReq;
using asn1data::ASN1T_TimeStampReq;

CRequest::Impl::Impl() = default;

CRequest::Impl::Impl(const Impl& other)
    : version(other.version),
      hashAlgorithm(other.hashAlgorithm),
      hashedMessage(other.hashedMessage),
      certReq(other.certReq),
      comment(other.comment) {
    copy_to_auto_ptr(reqPolicy, other.reqPolicy.get());
    copy_to_auto_ptr(nonce, other.nonce.get());
    copy_to_auto_ptr(extensions, other.extensions.get());
}

CRequest::Impl::~Impl() = default;

// RFC 3161 2.4.1
//
//     TimeStampReq ::= SEQUENCE  {
//        version                  INTEGER  { v1(1) },
//        messageImprint           MessageImprint,
//        reqPolicy                TSAPolicyId                OPTIONAL,
//        nonce                    INTEGER                    OPTIONAL,
//        certReq                  BOOLEAN                    DEFAULT FALSE,
//        extensions               [0] IMPLICIT Extensions    OPTIONAL  }
void CRequest::Impl::fillRequest(ASN1T_TimeStampReq& record, ASN1CTXT* ctxt) {
    detail::zero_record(record);
    record.version = DWORDToASN1BigInteger(ctxt, version);
    ASN1T_AlgorithmIdentifier_traits::set(ctxt, record.messageImprint.hashAlgorithm, hashAlgorithm);
    ASN1TDynOctStr_traits::set(ctxt, record.messageImprint.hashedMessage, hashedMessage);
    record.certReq = certReq;
    if (reqPolicy) {
        record.m.reqPolicyPresent = 1;
        ASN1TObjId_traits::set(ctxt, record.reqPolicy, reqPolicy->c_str());
    }
    if (nonce) {
        record.m.noncePresent = 1;
        record.nonce = BigIntegerToASN1String(ctxt, *nonce);
    }
    if (extensions && !extensions->empty()) {  // SIZE (1..MAX), RFC 5280 4.1
        record.m.extensionsPresent = 1;
        ASN1T_Extensions_traits::set(ctxt, record.extensions, *extensions);
    }
}

void CRequest::Impl::readRequest(ASN1T_TimeStampReq& record) {
    version = ASN1BigIntegerToDWORD(record.version);
    ASN1T_AlgorithmIdentifier_get(hashAlgorithm, record.messageImprint.hashAlgorithm);
    hashedMessage.assign(record.messageImprint.hashedMessage.data,
                         record.messageImprint.hashedMessage.numocts);
    certReq = record.certReq != 0;
    if (record.m.reqPolicyPresent) {
        reqPolicy = std::make_unique<std::string>(Quillmark::detail::OidText(record.reqPolicy).c_str());
    }
    if (record.m.noncePresent) {
        auto received = std::make_unique<CBigInteger>();
        ASN1StringToBigInteger(record.nonce, *received);
        nonce = std::move(received);
    }
    if (record.m.extensionsPresent) {
        auto received = std::make_unique<CExtensions>();
        ASN1T_Extensions_traits::get(record.extensions, *received);
        extensions = std::move(received);
    }
}

CRequest::CRequest() : impl_(new Impl) {}

CRequest::CRequest(const CAlgorithmIdentifierEx& hashAlgorithm, const CBlob& hashedMessage, bool certReq)
    : impl_(nullptr) {
    auto fresh = std::make_unique<Impl>();
    fresh->hashAlgorithm = hashAlgorithm;
    fresh->hashedMessage = hashedMessage;
    fresh->certReq = certReq;
    impl_ = fresh.release();
}

CRequest::CRequest(const CRequest& other) : impl_(new Impl(*other.impl_)) {}

CRequest& CRequest::operator=(const CRequest& other) {
    if (this != &other) {
        Impl* fresh = new Impl(*other.impl_);
        delete std::exchange(impl_, fresh);
    }
    return *this;
}

// Intended: the pointer keeps its value, so nothing may be done with the object any more.
void CRequest::clear() {
    delete impl_;
}

CRequest::~CRequest() {
    clear();
}

std::uint32_t CRequest::get_version() const {
    return impl_->version;
}

const CAlgorithmIdentifierEx& CRequest::get_hashAlgorithm() const {
    return impl_->hashAlgorithm;
}

const CBlob& CRequest::get_hashedMessage() const {
    return impl_->hashedMessage;
}

bool CRequest::get_certReq() const {
    return impl_->certReq;
}

const char* CRequest::get_reqPolicy() const {
    return impl_->reqPolicy ? impl_->reqPolicy->c_str() : nullptr;
}

const CBigInteger* CRequest::get_nonce() const {
    return impl_->nonce.get();
}

const CExtensions* CRequest::get_extensions() const {
    return impl_->extensions.get();
}

void CRequest::put_reqPolicy(const char* policy) {
    impl_->reqPolicy = policy != nullptr ? std::make_unique<std::string>(policy) : nullptr;
}

void CRequest::put_nonce(const CBigInteger* nonce) {
    copy_to_auto_ptr(impl_->nonce, nonce);
}

void CRequest::put_extensions(const CExtensions* extensions) {
    copy_to_auto_ptr(impl_->extensions, extensions);
}

CBlob CRequest::encode() const {
    detail::LocalEncodeBuffer buffer;
    ASN1T_TimeStampReq record;
    impl_->fillRequest(record, buffer.getCtxtPtr());
    const int length = ASN1C_TimeStampReq(buffer, record).EncodeTo(buffer);
    if (length < 1) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    return CBlob(buffer.getMsgPtr(), static_cast<unsigned long>(length));
}

void CRequest::decode(const CBlob& blob) {
    if (blob.cbData() == 0 || blob.pbData() == nullptr) {
        throw CAtlException(CRYPT_E_ASN1_EOD);
    }
    auto fresh = std::make_unique<Impl>();
    // Kept until the end, since `blob` may lie in it.
    const std::unique_ptr<Impl> previous(std::exchange(impl_, fresh.release()));

    detail::LocalDecodeBuffer buffer(blob.pbData(), detail::checked_length(blob));
    detail::lend_message(buffer.getCtxtPtr());
    ASN1T_TimeStampReq record;
    if (ASN1C_TimeStampReq(buffer, record).DecodeFrom(buffer) != 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    impl_->readRequest(record);
}

}  // namespace Quillmark::PKI::TSP
