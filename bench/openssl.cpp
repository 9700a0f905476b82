#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pkcs7.h>
#include <openssl/ts.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "bench/sides.h"

namespace Quillmark::bench::openssl {

namespace {

void require(bool condition, const char* what) {
    if (!condition) {
        ERR_print_errors_fp(stderr);
        throw std::runtime_error(std::string("OpenSSL: ") + what);
    }
}

template <auto Free>
struct Deleter {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};
using ReqPtr = std::unique_ptr<TS_REQ, Deleter<TS_REQ_free>>;
using RespPtr = std::unique_ptr<TS_RESP, Deleter<TS_RESP_free>>;
using RespCtxPtr = std::unique_ptr<TS_RESP_CTX, Deleter<TS_RESP_CTX_free>>;
using ImprintPtr = std::unique_ptr<TS_MSG_IMPRINT, Deleter<TS_MSG_IMPRINT_free>>;
using AlgorPtr = std::unique_ptr<X509_ALGOR, Deleter<X509_ALGOR_free>>;
using ObjectPtr = std::unique_ptr<ASN1_OBJECT, Deleter<ASN1_OBJECT_free>>;
using IntegerPtr = std::unique_ptr<ASN1_INTEGER, Deleter<ASN1_INTEGER_free>>;
using ExtensionPtr = std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION_free>>;
using OctetPtr = std::unique_ptr<ASN1_OCTET_STRING, Deleter<ASN1_OCTET_STRING_free>>;
using BioPtr = std::unique_ptr<BIO, Deleter<BIO_free_all>>;
using MdCtxPtr = std::unique_ptr<EVP_MD_CTX, Deleter<EVP_MD_CTX_free>>;

RespPtr decode_response(const Bytes& der) {
    const unsigned char* at = der.data();
    RespPtr response(d2i_TS_RESP(nullptr, &at, static_cast<long>(der.size())));
    require(response != nullptr, "d2i_TS_RESP");
    return response;
}

ReqPtr build_request() {
    ReqPtr request(TS_REQ_new());
    ImprintPtr message(TS_MSG_IMPRINT_new());
    AlgorPtr algorithm(X509_ALGOR_new());
    X509_ALGOR_set0(algorithm.get(), OBJ_nid2obj(NID_sha256), V_ASN1_NULL, nullptr);
    Bytes hash = imprint();
    TS_MSG_IMPRINT_set_algo(message.get(), algorithm.get());
    TS_MSG_IMPRINT_set_msg(message.get(), hash.data(), static_cast<int>(hash.size()));
    const ObjectPtr policy(OBJ_txt2obj(kPolicy, 1));
    IntegerPtr number(ASN1_INTEGER_new());
    ASN1_STRING_set(number.get(), nonce().data(), static_cast<int>(nonce().size()));
    const ObjectPtr extension_id(OBJ_txt2obj(kExtension, 1));
    OctetPtr value(ASN1_OCTET_STRING_new());
    ASN1_OCTET_STRING_set(value.get(), extension_value().data(), static_cast<int>(extension_value().size()));
    const ExtensionPtr extension(X509_EXTENSION_create_by_OBJ(nullptr, extension_id.get(), 0, value.get()));
    require(TS_REQ_set_version(request.get(), 1) && TS_REQ_set_msg_imprint(request.get(), message.get()) &&
                TS_REQ_set_policy_id(request.get(), policy.get()) &&
                TS_REQ_set_nonce(request.get(), number.get()) && TS_REQ_set_cert_req(request.get(), 1) &&
                TS_REQ_add_ext(request.get(), extension.get(), -1),
            "TS_REQ");
    return request;
}

template <typename Object, typename Encoder>
Bytes encode(Object* object, Encoder i2d) {
    unsigned char* bytes = nullptr;
    const int size = i2d(object, &bytes);
    require(size > 0, "i2d");
    Bytes der(bytes, bytes + size);
    OPENSSL_free(bytes);
    return der;
}

ASN1_INTEGER* next_serial(TS_RESP_CTX*, void*) {
    static std::uint64_t serial = 0x0123456789ABCDEF;
    ASN1_INTEGER* number = ASN1_INTEGER_new();
    ASN1_INTEGER_set_uint64(number, ++serial);
    return number;
}

int accept_extension(TS_RESP_CTX*, X509_EXTENSION*, void*) {
    return 1;
}

}  // namespace

Bytes make_request() {
    const ReqPtr request = build_request();
    return encode(request.get(), i2d_TS_REQ);
}

Bytes answer(KeyKind kind, const Bytes& request) {
    const Authority& tsa = authority(kind);
    RespCtxPtr context(TS_RESP_CTX_new());
    const ObjectPtr policy(OBJ_txt2obj(kPolicy, 1));
    STACK_OF(X509)* chain = sk_X509_new_null();
    sk_X509_push(chain, tsa.ca.get());
    require(TS_RESP_CTX_set_signer_cert(context.get(), tsa.certificate.get()) &&
                TS_RESP_CTX_set_signer_key(context.get(), tsa.key.get()) &&
                TS_RESP_CTX_set_signer_digest(context.get(), EVP_sha256()) &&
                TS_RESP_CTX_set_ess_cert_id_digest(context.get(), EVP_sha256()) &&
                TS_RESP_CTX_set_certs(context.get(), chain) &&
                TS_RESP_CTX_set_def_policy(context.get(), policy.get()) &&
                TS_RESP_CTX_add_md(context.get(), EVP_sha256()) &&
                TS_RESP_CTX_set_accuracy(context.get(), 1, 500, 100) &&
                TS_RESP_CTX_set_clock_precision_digits(context.get(), 3),
            "TS_RESP_CTX");
    TS_RESP_CTX_set_serial_cb(context.get(), next_serial, nullptr);
    TS_RESP_CTX_set_extension_cb(context.get(), accept_extension, nullptr);
    const BioPtr input(BIO_new_mem_buf(request.data(), static_cast<int>(request.size())));
    const RespPtr response(TS_RESP_create_response(context.get(), input.get()));
    sk_X509_free(chain);
    require(response != nullptr && TS_RESP_get_token(response.get()) != nullptr, "TS_RESP_create_response");
    return encode(response.get(), i2d_TS_RESP);
}

std::size_t request_decode() {
    const unsigned char* at = request().data();
    const ReqPtr decoded(d2i_TS_REQ(nullptr, &at, static_cast<long>(request().size())));
    require(decoded != nullptr && TS_REQ_get_nonce(decoded.get()) != nullptr, "d2i_TS_REQ");
    return static_cast<std::size_t>(TS_REQ_get_ext_count(decoded.get()));
}

std::size_t request_build_encode() {
    return make_request().size();
}

std::size_t response_decode() {
    const RespPtr decoded = decode_response(response(KeyKind::P256));
    TS_TST_INFO* info = TS_RESP_get_tst_info(decoded.get());
    require(info != nullptr && TS_TST_INFO_get_time(info) != nullptr, "TS_TST_INFO");
    return static_cast<std::size_t>(ASN1_STRING_length(TS_TST_INFO_get_serial(info)));
}

std::size_t authority_step(KeyKind kind) {
    return answer(kind, request()).size();
}

void client_step(KeyKind kind) {
    const RespPtr decoded = decode_response(response(kind));
    PKCS7* token = TS_RESP_get_token(decoded.get());
    const BioPtr content(PKCS7_dataInit(token, nullptr));
    require(content != nullptr, "PKCS7_dataInit");
    unsigned char buffer[4096];
    while (BIO_read(content.get(), buffer, sizeof buffer) > 0) {
    }
    PKCS7_SIGNER_INFO* signer = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(token), 0);
    X509* certificate = PKCS7_cert_from_signer_info(token, signer);
    require(certificate != nullptr && PKCS7_signatureVerify(content.get(), token, signer, certificate) == 1,
            "PKCS7_signatureVerify");
}

struct ResponseEncoder::State {
    RespPtr response;
};

ResponseEncoder::ResponseEncoder() : state_(new State{decode_response(response(KeyKind::P256))}) {}
ResponseEncoder::~ResponseEncoder() {
    delete state_;
}
std::size_t ResponseEncoder::encode() const {
    return openssl::encode(state_->response.get(), i2d_TS_RESP).size();
}

namespace {

const Bytes& signed_octets() {
    static const Bytes octets(100, 0x5C);
    return octets;
}

Bytes raw_signature(KeyKind kind) {
    const MdCtxPtr context(EVP_MD_CTX_new());
    require(EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, authority(kind).key.get()) == 1,
            "init");
    Bytes signature(512);
    std::size_t size = signature.size();
    require(EVP_DigestSign(context.get(), signature.data(), &size, signed_octets().data(),
                           signed_octets().size()) == 1,
            "sign");
    signature.resize(size);
    return signature;
}

}  // namespace

void sign(KeyKind kind) {
    raw_signature(kind);
}

void verify(KeyKind kind) {
    static const Bytes p256 = raw_signature(KeyKind::P256);
    static const Bytes rsa = raw_signature(KeyKind::Rsa2048);
    const Bytes& signature = kind == KeyKind::P256 ? p256 : rsa;
    const MdCtxPtr context(EVP_MD_CTX_new());
    require(
        EVP_DigestVerifyInit(context.get(), nullptr, EVP_sha256(), nullptr, authority(kind).key.get()) == 1,
        "init");
    require(EVP_DigestVerify(context.get(), signature.data(), signature.size(), signed_octets().data(),
                             signed_octets().size()) == 1,
            "verify");
}

}  // namespace Quillmark::bench::openssl
