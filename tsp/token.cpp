#include "tsp/token.h"

#include <utility>

#include "asn1/codec.h"
#include "asn1/detail/oid_text.h"
#include "asn1data/records.h"
#include "tsp/detail/message.h"
#include "tsp/detail/record.h"
#include "tsp/detail/token_impl.h"
#include "values/result.h"

namespace Quillmark::PKI::TSP {

using namespace ASN1;
using asn1data::ASN1T_TSTInfo;

CToken::Impl::Impl() = default;

CToken::Impl::Impl(const Impl& other, WithoutMessage)
    : version(other.version),
      policy(other.policy),
      hashAlgorithm(other.hashAlgorithm),
      hashedMessage(other.hashedMessage),
      serialNumber(other.serialNumber),
      genTime(other.genTime),
      ordering(other.ordering),
      signerInfo(other.signerInfo),
      encodedToken(other.encodedToken),
      unknownAlgorithm(other.unknownAlgorithm) {
    copy_to_auto_ptr(accuracy, other.accuracy.get());
    copy_to_auto_ptr(nonce, other.nonce.get());
    copy_to_auto_ptr(tsa, other.tsa.get());
    copy_to_auto_ptr(extensions, other.extensions.get());
    copy_to_auto_ptr(signedAttributes, other.signedAttributes.get());
    copy_to_auto_ptr(unsignedAttributes, other.unsignedAttributes.get());
    copy_to_auto_ptr(certificates, other.certificates.get());
}

CToken::Impl::Impl(const Impl& other) : Impl(other, WithoutMessage{}) {
    duplicate_message(other);
}

CToken::Impl::~Impl() {
    if (messageHandle != nullptr) {
        CryptMsgClose(messageHandle);
    }
}

// Intended: a null result is stored as it is. The copy is then a token without a message.
void CToken::Impl::duplicate_message(const Impl& other) {
    if (other.messageHandle != nullptr) {
        messageHandle = CryptMsgDuplicate(other.messageHandle);
    }
}

// RFC 3161 2.4.2
//
//     TSTInfo ::= SEQUENCE  {
//        version                      INTEGER  { v1(1) },
//        policy                       TSAPolicyId,
//        messageImprint               MessageImprint,
//        serialNumber                 INTEGER,
//        genTime                      GeneralizedTime,
//        accuracy                     Accuracy                 OPTIONAL,
//        ordering                     BOOLEAN             DEFAULT FALSE,
//        nonce                        INTEGER                  OPTIONAL,
//        tsa                          [0] GeneralName          OPTIONAL,
//        extensions                   [1] IMPLICIT Extensions  OPTIONAL   }
void CToken::Impl::fillTSTInfo(ASN1T_TSTInfo& record, ASN1CTXT* ctxt) const {
    detail::zero_record(record);
    record.version = DWORDToASN1BigInteger(ctxt, version);
    ASN1TObjId_traits::set(ctxt, record.policy, policy.c_str());
    ASN1T_AlgorithmIdentifier_traits::set(ctxt, record.messageImprint.hashAlgorithm, hashAlgorithm);
    ASN1TDynOctStr_traits::set(ctxt, record.messageImprint.hashedMessage, hashedMessage);
    record.serialNumber = BigIntegerToASN1String(ctxt, serialNumber);
    ASN1IA5String_traits::set(ctxt, record.genTime, genTime.c_str());
    record.ordering = ordering;
    if (accuracy) {
        TSP_AccuracyToASN1T_Accuracy(ctxt, record.accuracy, *accuracy);
        record.m.accuracyPresent = 1;
    }
    if (nonce) {
        record.m.noncePresent = 1;
        record.nonce = BigIntegerToASN1String(ctxt, *nonce);
    }
    if (tsa) {
        record.m.tsaPresent = 1;
        ASN1T_GeneralName_traits::set(ctxt, record.tsa, *tsa);
    }
    if (extensions && !extensions->empty()) {  // SIZE (1..MAX), RFC 5280 4.1
        record.m.extensionsPresent = 1;
        ASN1T_Extensions_traits::set(ctxt, record.extensions, *extensions);
    }
}

void CToken::Impl::readTSTInfo(const ASN1T_TSTInfo& record) {
    version = ASN1BigIntegerToDWORD(record.version);
    policy = Quillmark::detail::OidText(record.policy).c_str();
    ASN1T_AlgorithmIdentifier_get(hashAlgorithm, record.messageImprint.hashAlgorithm);
    hashedMessage.assign(record.messageImprint.hashedMessage.data,
                         record.messageImprint.hashedMessage.numocts);
    ASN1StringToBigInteger(record.serialNumber, serialNumber);
    genTime = record.genTime;
    ordering = record.ordering != 0;
    if (record.m.accuracyPresent) {
        auto received = std::make_unique<CAccuracy>();
        ASN1T_AccuracyToTSP_Accuracy(*received, record.accuracy);
        accuracy = std::move(received);
    }
    if (record.m.noncePresent) {
        auto received = std::make_unique<CBigInteger>();
        ASN1StringToBigInteger(record.nonce, *received);
        nonce = std::move(received);
    }
    if (record.m.tsaPresent) {
        auto received = std::make_unique<CGeneralName>();
        ASN1T_GeneralName_traits::get(record.tsa, *received);
        tsa = std::move(received);
    }
    if (record.m.extensionsPresent) {
        auto received = std::make_unique<CExtensions>();
        ASN1T_Extensions_traits::get(record.extensions, *received);
        extensions = std::move(received);
    }
}

CToken::CToken() : impl_(new Impl) {}

CToken::CToken(const char* policy, const CAlgorithmIdentifierEx& hashAlgorithm, const CBlob& hashedMessage,
               const CBigInteger& serialNumber, const CDateTime& genTime, bool ordering)
    : impl_(nullptr) {
    auto fresh = std::make_unique<Impl>();
    fresh->policy = policy != nullptr ? policy : "";
    fresh->hashAlgorithm = hashAlgorithm;
    fresh->hashedMessage = hashedMessage;
    fresh->serialNumber = serialNumber;
    fresh->genTime = genTime.getGeneralizedTime().c_str();
    fresh->ordering = ordering;
    impl_ = fresh.release();
}

CToken::CToken(const CToken& other) : impl_(new Impl(*other.impl_)) {}

CToken& CToken::operator=(const CToken& other) {
    if (this == &other) {
        return *this;
    }
    // All that can fail comes first. Of the messages the old one is closed before the new one is duplicated.
    auto fresh = std::make_unique<Impl>(*other.impl_, Impl::WithoutMessage{});
    delete std::exchange(impl_, nullptr);
    fresh->duplicate_message(*other.impl_);
    impl_ = fresh.release();
    return *this;
}

// Intended: the pointer keeps its value, so nothing may be done with the object any more.
void CToken::clear() {
    delete impl_;
}

CToken::~CToken() {
    clear();
}

std::uint32_t CToken::get_version() const {
    return impl_->version;
}

const char* CToken::get_policy() const {
    return impl_->policy.c_str();
}

const CAlgorithmIdentifierEx& CToken::get_hashAlgorithm() const {
    return impl_->hashAlgorithm;
}

const CBlob& CToken::get_hashedMessage() const {
    return impl_->hashedMessage;
}

const CBigInteger& CToken::get_serialNumber() const {
    return impl_->serialNumber;
}

CDateTime CToken::get_genTime() const {
    return CDateTime(impl_->genTime.c_str());
}

const char* CToken::get_genTimeZ() const {
    return impl_->genTime.c_str();
}

bool CToken::get_ordering() const {
    return impl_->ordering;
}

const CSignerInfo& CToken::get_signerInfo() const {
    return impl_->signerInfo;
}

const CAccuracy* CToken::get_accuracy() const {
    return impl_->accuracy.get();
}

const CBigInteger* CToken::get_nonce() const {
    return impl_->nonce.get();
}

const CGeneralName* CToken::get_tsa() const {
    return impl_->tsa.get();
}

const CExtensions* CToken::get_extensions() const {
    return impl_->extensions.get();
}

const CAttributes* CToken::get_signedAttributes() const {
    return impl_->signedAttributes.get();
}

const CAttributes* CToken::get_unsignedAttributes() const {
    return impl_->unsignedAttributes.get();
}

const CBlobList* CToken::get_certificates() const {
    return impl_->certificates.get();
}

// Intended: putting a field drops the encoded form alone. The message stays, so that `encode` answers with
// what was signed, or decoded, before.

void CToken::put_accuracy(const CAccuracy* accuracy) {
    impl_->encodedToken.clear();
    copy_to_auto_ptr(impl_->accuracy, accuracy);
}

void CToken::put_nonce(const CBigInteger* nonce) {
    impl_->encodedToken.clear();
    copy_to_auto_ptr(impl_->nonce, nonce);
}

void CToken::put_tsa(const CGeneralName* tsa) {
    impl_->encodedToken.clear();
    copy_to_auto_ptr(impl_->tsa, tsa);
}

void CToken::put_extensions(const CExtensions* extensions) {
    impl_->encodedToken.clear();
    copy_to_auto_ptr(impl_->extensions, extensions);
}

void CToken::put_signedAttributes(const CAttributes* attributes) {
    impl_->encodedToken.clear();
    copy_to_auto_ptr(impl_->signedAttributes, attributes);
}

void CToken::put_unsignedAttributes(const CAttributes* attributes) {
    impl_->encodedToken.clear();
    copy_to_auto_ptr(impl_->unsignedAttributes, attributes);
}

void CToken::put_certificates(const CBlobList* certificates) {
    impl_->encodedToken.clear();
    copy_to_auto_ptr(impl_->certificates, certificates);
}

// Intended: reading the message refreshes the signer, also of a const token, and fills no cache; `sign` does.
CBlob CToken::encode() const {
    if (impl_->encodedToken.cbData() != 0) {
        return impl_->encodedToken;
    }
    if (impl_->messageHandle == nullptr) {
        throw CAtlException(E_FAIL);
    }
    detail::MessageReader message(impl_->messageHandle);
    CBlob encoded = message.read(CMSG_CONTENT_PARAM);
    message.read_signer(impl_->signerInfo);
    return encoded;
}

}  // namespace Quillmark::PKI::TSP
