#include "bench/authority.h"

#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <stdexcept>
#include <string>

#include "platform/key_container.h"

namespace Quillmark::bench {

namespace {

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(std::string("cannot make the test authority: ") + what);
    }
}

PkeyPtr make_key(KeyKind kind) {
    PkeyPtr key(kind == KeyKind::P256 ? EVP_EC_gen("P-256") : EVP_RSA_gen(2048));
    require(key != nullptr, "key");
    return key;
}

void set_name(X509_NAME* name, const char* common_name) {
    const auto add = [name](const char* type, const char* value) {
        require(X509_NAME_add_entry_by_txt(name, type, MBSTRING_UTF8,
                                           reinterpret_cast<const unsigned char*>(value), -1, -1, 0) == 1,
                "name");
    };
    add("C", "NL");
    add("O", "Benchmark");
    add("CN", common_name);
}

void add_extension(X509* certificate, X509* issuer, int nid, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
    require(extension != nullptr && X509_add_ext(certificate, extension, -1) == 1, "extension");
    X509_EXTENSION_free(extension);
}

X509Ptr make_certificate(EVP_PKEY* key, const char* common_name, X509* issuer, EVP_PKEY* issuer_key) {
    X509Ptr certificate(X509_new());
    require(certificate != nullptr, "certificate");
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()),
                            issuer == nullptr ? 1 : 0x3C4D5E6F708192A3);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -86400);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 10L * 365 * 86400);
    set_name(X509_get_subject_name(certificate.get()), common_name);
    X509* const signer = issuer == nullptr ? certificate.get() : issuer;
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(signer));
    X509_set_pubkey(certificate.get(), key);
    if (issuer == nullptr) {
        add_extension(certificate.get(), signer, NID_basic_constraints, "critical,CA:TRUE");
        add_extension(certificate.get(), signer, NID_key_usage, "critical,keyCertSign,cRLSign");
    } else {
        add_extension(certificate.get(), signer, NID_key_usage, "critical,digitalSignature");
        add_extension(certificate.get(), signer, NID_ext_key_usage, "critical,timeStamping");
    }
    add_extension(certificate.get(), signer, NID_subject_key_identifier, "hash");
    require(X509_sign(certificate.get(), issuer_key, EVP_sha256()) > 0, "signature");
    return certificate;
}

std::vector<std::uint8_t> der_of(X509* certificate) {
    unsigned char* bytes = nullptr;
    const int size = i2d_X509(certificate, &bytes);
    require(size > 0, "DER");
    std::vector<std::uint8_t> der(bytes, bytes + size);
    OPENSSL_free(bytes);
    return der;
}

Authority make_authority(KeyKind kind) {
    Authority made;
    const PkeyPtr ca_key = make_key(kind);
    made.key = make_key(kind);
    made.ca = make_certificate(ca_key.get(), "Benchmark CA", nullptr, ca_key.get());
    made.certificate = make_certificate(made.key.get(), "Benchmark TSA", made.ca.get(), ca_key.get());
    made.certificate_der = der_of(made.certificate.get());
    made.ca_der = der_of(made.ca.get());
    require(KeyContainerFromKey(&made.provider, made.key.get()) != 0, "key container");
    return made;
}

}  // namespace

const Authority& authority(KeyKind kind) {
    if (kind == KeyKind::P256) {
        static const Authority p256 = make_authority(KeyKind::P256);
        return p256;
    }
    static const Authority rsa = make_authority(KeyKind::Rsa2048);
    return rsa;
}

}  // namespace Quillmark::bench
