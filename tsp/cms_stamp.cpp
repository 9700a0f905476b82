#include "tsp/cms_stamp.h"

#include <utility>

#include "asn1/attribute.h"
#include "asn1/codec.h"
#include "tsp/detail/cms_stamp_impl.h"
#include "tsp/detail/crypt_attributes.h"
#include "tsp/detail/handles.h"
#include "tsp/detail/message.h"
#include "tsp/detail/record.h"
#include "tsp/detail/signed_message.h"
#include "values/detail/last_error.h"
#include "values/result.h"

namespace Quillmark::PKI::TSP {

using namespace ASN1;

namespace {

constexpr char kSigningTime[] = "1.2.840.113549.1.9.5";  // id-signingTime, RFC 5652 11.3
constexpr InnerContent kData = {0, nullptr};

CAttributes signing_time_attributes(const CDateTime& time) {
    const CAttrSigningTime value(time);
    CAttribute attribute(value.get_oid());
    attribute.add(value);
    CAttributes attributes;
    attributes.push_back(attribute);
    return attributes;
}

CDateTime signing_time_of(const CAttributes& attributes) {
    const auto found = attributes.find(kSigningTime);
    if (found == attributes.end() || found->size() == 0) {
        throw CAtlException(CRYPT_E_BAD_MSG);
    }
    return CAttrSigningTime(found->begin()->get_value()).get_time();
}

void update_message(const ATL2::CCryptMsg& message, const CBlob& octets) {
    const auto size = static_cast<DWORD>(detail::checked_length(octets));
    detail::check_call(CryptMsgUpdate(message.get(), octets.pbData(), size, 1));
}

}  // namespace

CMSStampImpl::CMSStampImpl(const CMSStampImpl& other, WithoutProvider)
    : content(other.content),
      signingTime(other.signingTime),
      keySpec(other.keySpec),
      signerCertificate(other.signerCertificate),
      signerHashAlgorithm(other.signerHashAlgorithm),
      signingRequested(other.signingRequested),
      stampMessage(other.stampMessage) {
    copy_to_auto_ptr(certificates, other.certificates.get());
}

CMSStampImpl::CMSStampImpl(const CMSStampImpl& other) : CMSStampImpl(other, WithoutProvider{}) {
    share_provider(other);
}

CMSStampImpl::~CMSStampImpl() {
    if (providerHandle != 0) {
        CryptReleaseContext(providerHandle, 0);
    }
}

// Intended: asked for without a provider too, and a refusal is not looked at.
void CMSStampImpl::share_provider(const CMSStampImpl& other) {
    CryptContextAddRef(other.providerHandle, nullptr, 0);
    providerHandle = other.providerHandle;
}

void CMSStampImpl::update() {
    if (!signingRequested) {
        return;
    }
    ATL2::CCryptMsg message(nullptr);  // closed when the certificate is freed already
    const ATL2::CCertContext context(detail::open_certificate(signerCertificate));
    SignerDescription signer(context.get()->pCertInfo, providerHandle, keySpec, signerHashAlgorithm);
    const CAttributes attributes = signing_time_attributes(signingTime);
    signer.set_attributes(&attributes, nullptr);
    message.attach(open_to_encode(signer, certificates.get(), kData));
    update_message(message, fromOctetString(content));
    CBlob encoded = detail::MessageReader(message.get()).read(CMSG_CONTENT_PARAM);
    stampMessage.swap(encoded);
}

CMSStamp::CMSStamp() : impl_(new CMSStampImpl) {}

CMSStamp::CMSStamp(const CBlob& content, const CDateTime& signingTime) : impl_(nullptr) {
    auto fresh = std::make_unique<CMSStampImpl>();
    fresh->content = content;
    fresh->signingTime = signingTime;
    impl_ = fresh.release();
}

CMSStamp::CMSStamp(const CMSStamp& other) : impl_(new CMSStampImpl(*other.impl_)) {}

CMSStamp& CMSStamp::operator=(const CMSStamp& other) {
    if (this == &other) {
        return *this;
    }
    // All that can fail comes first. Of the providers the old one is released before the new one is shared.
    auto fresh = std::make_unique<CMSStampImpl>(*other.impl_, CMSStampImpl::WithoutProvider{});
    clear();
    fresh->share_provider(*other.impl_);
    impl_ = fresh.release();
    return *this;
}

void CMSStamp::clear() {
    delete std::exchange(impl_, nullptr);
}

CMSStamp::~CMSStamp() {
    clear();
}

const CBlob& CMSStamp::get_content() const {
    return impl_->content;
}

const CDateTime& CMSStamp::get_signingTime() const {
    return impl_->signingTime;
}

const CBlobList* CMSStamp::get_certificates() const {
    return impl_->certificates.get();
}

void CMSStamp::put_content(const CBlob& content) const {
    impl_->content = content;
    impl_->update();
}

void CMSStamp::put_signingTime(const CDateTime& signingTime) {
    impl_->signingTime = signingTime;
    impl_->update();
}

void CMSStamp::put_certificates(const CBlobList* certificates) {
    copy_to_auto_ptr(impl_->certificates, certificates);
    impl_->update();
}

void CMSStamp::sign(unsigned long long provider, unsigned int keySpec, const CBlob& certificate,
                    const CAlgorithmIdentifierEx& hashAlgorithm) {
    // Intended: the old reference goes before the new one is sure, and until then its handle stays. The
    // service refuses a handle on which no reference is left.
    if (impl_->providerHandle != 0) {
        CryptReleaseContext(impl_->providerHandle, 0);
    }
    detail::check_call(CryptContextAddRef(provider, nullptr, 0));
    impl_->providerHandle = provider;
    impl_->keySpec = keySpec;
    impl_->signerCertificate = certificate;
    impl_->signerHashAlgorithm = hashAlgorithm;
    impl_->signingRequested = true;
    impl_->update();
}

// Intended: a stamp that was decoded and never signed does not encode, though it has the bytes.
CBlob CMSStamp::encode() const {
    if (!impl_->signingRequested) {
        throw CAtlException(E_FAIL);
    }
    return impl_->stampMessage;
}

void CMSStamp::decode(const CBlob& blob) {
    impl_->stampMessage = blob;
    const ATL2::CCryptMsg message(detail::open_to_decode());
    update_message(message, impl_->stampMessage);

    detail::MessageReader reader(message.get());
    impl_->content = toOctetString(reader.read(CMSG_CONTENT_PARAM));
    impl_->signingTime = signing_time_of(attributes_in(reader.read(CMSG_SIGNER_AUTH_ATTR_PARAM)));
    // Intended: a message without certificates leaves those of the object.
    if (std::unique_ptr<CBlobList> certificates = reader.read_certificates()) {
        impl_->certificates = std::move(certificates);
    }
}

// Intended: the first signer is the one that counts, however many there are.
bool CMSStamp::verify(const CBlob& certificate) const {
    const ATL2::CCertContext context(detail::open_certificate(certificate));
    const ATL2::CCryptMsg message(detail::open_to_decode());
    update_message(message, impl_->stampMessage);
    return CryptMsgControl(message.get(), 0, CMSG_CTRL_VERIFY_SIGNATURE, context.get()->pCertInfo) != 0;
}

CSignerInfo CMSStamp::get_signerInfo() const {
    const ATL2::CCryptMsg message(detail::open_to_decode());
    update_message(message, impl_->stampMessage);
    CSignerInfo signer;
    detail::MessageReader(message.get()).read_signer(signer);
    return signer;
}

}  // namespace Quillmark::PKI::TSP
