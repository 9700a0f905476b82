#include <openssl/evp.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>

#include "asn1/attribute.h"
#include "asn1/signing_certificate.h"
#include "bench/sides.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"

namespace Quillmark::bench::ours {

namespace {

using namespace Quillmark::ASN1;
using namespace Quillmark::PKI::TSP;

CBlob blob_of(const Bytes& bytes) {
    return CBlob(bytes.data(), bytes.size());
}

// What came in is there in the form that each side reads.

const CBlob& received_request() {
    static const CBlob request = blob_of(Quillmark::bench::request());
    return request;
}

const CBlob& received_response(KeyKind kind) {
    static const CBlob p256 = blob_of(response(KeyKind::P256));
    static const CBlob rsa = blob_of(response(KeyKind::Rsa2048));
    return kind == KeyKind::P256 ? p256 : rsa;
}

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(std::string("Quillmark: ") + what);
    }
}

CAlgorithmIdentifierEx sha256() {
    static constexpr unsigned char kNull[] = {0x05, 0x00};
    CAlgorithmIdentifierEx algorithm(kSha256);
    algorithm.put_parameters(CBlob(kNull, sizeof kNull));
    return algorithm;
}

/// Fetched once, as a server would.
const EVP_MD* sha256_digest() {
    static const EVP_MD* const digest = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return digest;
}

CBlob digest_of(const Bytes& bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    require(EVP_Digest(bytes.data(), bytes.size(), digest, &size, sha256_digest(), nullptr) == 1, "digest");
    return CBlob(digest, size);
}

CRequest build_request() {
    CRequest request(sha256(), blob_of(imprint()), true);
    request.put_reqPolicy(kPolicy);
    const CBigInteger number(nonce().data(), nonce().size());
    request.put_nonce(&number);
    CExtensions extensions;
    extensions.insert(CExtension(CExtValue(kExtension, blob_of(extension_value())), false));
    request.put_extensions(&extensions);
    return request;
}

/// Signing time and signing certificate (RFC 5035); the service adds content type and message digest.
CAttributes signed_attributes(const Bytes& certificate, const CDateTime& now) {
    CAttributes attributes;
    attributes.emplace_back("1.2.840.113549.1.9.5").add(CAttrSigningTime(now));
    CESSCertIDv2List certificates;
    certificates.emplace_back(digest_of(certificate));
    attributes.emplace_back("1.2.840.113549.1.9.16.2.47").add(CAttrSigningCertificateV2(certificates));
    return attributes;
}

CBigInteger next_serial() {
    static std::atomic<std::uint64_t> serial{0x0123456789ABCDEF};
    const std::uint64_t value = ++serial;
    unsigned char octets[8];
    for (int i = 0; i < 8; ++i) {
        octets[i] = static_cast<unsigned char>(value >> (56 - 8 * i));
    }
    return CBigInteger(octets, sizeof octets);
}

}  // namespace

std::size_t request_decode() {
    CRequest request;
    request.decode(received_request());
    require(request.get_nonce() != nullptr, "nonce");
    return request.get_extensions()->size();
}

std::size_t request_build_encode() {
    return build_request().encode().cbData();
}

std::size_t response_decode() {
    CResponse decoded;
    decoded.decode(received_response(KeyKind::P256));
    const CToken* token = decoded.get_timeStampToken();
    require(token != nullptr && token->get_genTime().year() >= 2026, "token");
    return token->get_serialNumber().cbData();
}

std::size_t authority_step(KeyKind kind) {
    const Authority& tsa = authority(kind);
    CRequest request;
    request.decode(received_request());

    const CDateTime now = CDateTime::Now();
    CToken token(request.get_reqPolicy(), request.get_hashAlgorithm(), request.get_hashedMessage(),
                 next_serial(), now, false);
    token.put_nonce(request.get_nonce());
    const CAccuracy accuracy{1, 500, 100};
    token.put_accuracy(&accuracy);
    const CAttributes attributes = signed_attributes(tsa.certificate_der, now);
    token.put_signedAttributes(&attributes);
    const CBlob certificate = blob_of(tsa.certificate_der);
    CBlobList certificates;
    certificates.push_back(certificate);
    certificates.push_back(blob_of(tsa.ca_der));
    token.put_certificates(&certificates);
    token.sign(tsa.provider, AT_SIGNATURE, certificate, sha256());

    CResponse response;
    response.put_status(CPKIStatusInfo(PKIStatus_granted));
    response.put_timeStampToken(&token);
    return response.encode().cbData();
}

void client_step(KeyKind kind) {
    CResponse decoded;
    decoded.decode(received_response(kind));
    const CToken* token = decoded.get_timeStampToken();
    require(token != nullptr && token->verify(blob_of(authority(kind).certificate_der)), "verify");
}

struct ResponseEncoder::State {
    CResponse response;
};

ResponseEncoder::ResponseEncoder() : state_(new State) {
    state_->response.decode(received_response(KeyKind::P256));
}
ResponseEncoder::~ResponseEncoder() {
    delete state_;
}
std::size_t ResponseEncoder::encode() const {
    return state_->response.encode().cbData();
}

}  // namespace Quillmark::bench::ours
