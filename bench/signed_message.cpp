#include <stdexcept>
#include <string>

#include "asn1/attribute.h"
#include "asn1/signing_certificate.h"
#include "bench/sides.h"
#include "platform/cryptoapi.h"

namespace Quillmark::bench::ours {

namespace {

using namespace Quillmark::ASN1;

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(std::string("message service: ") + what);
    }
}

LPSTR text(const char* oid) {
    return const_cast<LPSTR>(oid);
}

CRYPT_ATTR_BLOB view(const CBlob& blob) {
    return {static_cast<DWORD>(blob.cbData()), blob.pbData()};
}

CERT_BLOB view(const Bytes& bytes) {
    return {static_cast<DWORD>(bytes.size()), const_cast<BYTE*>(bytes.data())};
}

CESSCertIDv2List signing_certificates() {
    CESSCertIDv2List list;
    list.emplace_back(CBlob(imprint().data(), imprint().size()));
    return list;
}

}  // namespace

/// All that a caller of the service has ready: the records that describe the message, and its content.
struct SignedMessage::State {
    explicit State(const Authority& authority)
        : tsa(authority),
          context(CertCreateCertificateContext(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING,
                                               tsa.certificate_der.data(),
                                               static_cast<DWORD>(tsa.certificate_der.size()))) {
        require(context != nullptr, "certificate");
        signer.cbSize = sizeof signer;
        signer.pCertInfo = context->pCertInfo;
        signer.hCryptProv = tsa.provider;
        signer.dwKeySpec = AT_SIGNATURE;
        signer.HashAlgorithm.pszObjId = text(kSha256);
        signer.cAuthAttr = 2;
        signer.rgAuthAttr = attributes;
        description.cbSize = sizeof description;
        description.cSigners = 1;
        description.rgSigners = &signer;
        description.cCertEncoded = 2;
        description.rgCertEncoded = certificates;
    }
    ~State() { CertFreeCertificateContext(context); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    const Authority& tsa;
    PCCERT_CONTEXT context;
    Bytes content = Bytes(200, 0x30);
    CAttrSigningTime signing_time{CDateTime::Now()};
    CAttrSigningCertificateV2 signing_certificate{signing_certificates()};
    CRYPT_ATTR_BLOB values[2] = {view(signing_time.get_value()), view(signing_certificate.get_value())};
    CRYPT_ATTRIBUTE attributes[2] = {{text("1.2.840.113549.1.9.5"), 1, &values[0]},
                                     {text("1.2.840.113549.1.9.16.2.47"), 1, &values[1]}};
    CERT_BLOB certificates[2] = {view(tsa.certificate_der), view(tsa.ca_der)};
    CMSG_SIGNER_ENCODE_INFO signer{};
    CMSG_SIGNED_ENCODE_INFO description{};
};

SignedMessage::SignedMessage(KeyKind kind) : state_(new State(authority(kind))) {}

SignedMessage::~SignedMessage() {
    delete state_;
}

void SignedMessage::build() const {
    HCRYPTMSG message =
        CryptMsgOpenToEncode(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING, CMSG_CMS_ENCAPSULATED_CONTENT_FLAG,
                             CMSG_SIGNED, &state_->description, text("1.2.840.113549.1.9.16.1.4"), nullptr);
    require(message != nullptr, "open");
    require(
        CryptMsgUpdate(message, state_->content.data(), static_cast<DWORD>(state_->content.size()), 1) != 0,
        "update");
    require(CryptMsgClose(message) != 0, "close");
}

}  // namespace Quillmark::bench::ours
