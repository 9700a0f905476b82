// What `verify` leaves to the application, done as docs/robustness.md shows it: the certificate that the
// signer names, and the path from it to a root at the time of the stamp.

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <cstring>
#include <memory>
#include <string>

#include "asn1/signing_certificate.h"
#include "platform/cryptoapi.h"
#include "tsp/token.h"

namespace Quillmark::test {
namespace {

using namespace ASN1;
using PKI::TSP::CToken;

constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";

template <typename Object, void (*Free)(Object*)>
struct Freed {
    void operator()(Object* object) const { Free(object); }
};
template <typename Object, void (*Free)(Object*)>
using Owned = std::unique_ptr<Object, Freed<Object, Free>>;

using Certificate = Owned<X509, X509_free>;
using Store = Owned<X509_STORE, X509_STORE_free>;

void free_all(STACK_OF(X509) * certificates) {
    sk_X509_pop_free(certificates, X509_free);
}
using Certificates = Owned<STACK_OF(X509), free_all>;

Certificate parse(const CBlob& der) {
    const unsigned char* position = der.pbData();
    return Certificate(d2i_X509(nullptr, &position, static_cast<long>(der.cbData())));
}

CBlob read(const std::string& name) {
    CBlob octets;
    octets.readFromFile((QUILLMARK_TEST_PKI "/" + name).c_str());
    return octets;
}

Store store_with(const CBlob& root) {
    Store store(X509_STORE_new());
    X509_STORE_add_cert(store.get(), parse(root).get());
    return store;
}

// RFC 3161 2.3: the certificate is for time stamping alone; its path must have held when the stamp was made.
bool is_trusted(const CBlob& signer, const CBlobList* others, X509_STORE* roots, const CDateTime& when) {
    const Certificate certificate = parse(signer);
    const Certificates untrusted(sk_X509_new_null());
    if (others != nullptr) {
        for (const CBlob& other : *others) {
            if (Certificate parsed = parse(other)) {
                sk_X509_push(untrusted.get(), parsed.release());
            }
        }
    }
    const Owned<X509_STORE_CTX, X509_STORE_CTX_free> path(X509_STORE_CTX_new());
    if (X509_STORE_CTX_init(path.get(), roots, certificate.get(), untrusted.get()) != 1) {
        return false;
    }
    X509_STORE_CTX_set_purpose(path.get(), X509_PURPOSE_TIMESTAMP_SIGN);
    X509_STORE_CTX_set_time(path.get(), 0, static_cast<time_t>(when.getTime()));
    return X509_verify_cert(path.get()) == 1;
}

CBlob sha256(const CBlob& octets) {
    CBlob hash(32);
    EVP_Digest(octets.pbData(), octets.cbData(), hash.pbData(), nullptr, EVP_sha256(), nullptr);
    return hash;
}

// RFC 5816 2.2.1: the first identifier is that of the signer's certificate.
bool names(const CToken& token, const CBlob& certificate) {
    const CAttributes* attributes = token.get_signedAttributes();
    if (attributes == nullptr) {
        return false;
    }
    const auto found = attributes->find("1.2.840.113549.1.9.16.2.47");
    if (found == attributes->end() || found->size() != 1) {
        return false;
    }
    const CAttrSigningCertificateV2 value(found->begin()->get_value());
    const CESSCertIDv2List& certificates = value.get_certs();
    return !certificates.empty() &&
           std::strcmp(certificates.front().get_hashAlgorithm().get_algorithm(), kSha256) == 0 &&
           certificates.front().get_certHash() == sha256(certificate);
}

class Trust : public testing::Test {
  protected:
    Trust() {
        const unsigned char hash[32] = {};
        const unsigned char serial[] = {5};
        CToken token("1.2.3", CAlgorithmIdentifierEx(kSha256), CBlob(hash, sizeof hash),
                     CBigInteger(serial, sizeof serial), CDateTime::Now(), false);
        const CAttrSigningCertificateV2 value(CESSCertIDv2List{CESSCertIDv2(sha256(signer_))});
        CAttribute attribute(value.get_oid());
        attribute.add(value);
        CAttributes attributes;
        attributes.push_back(attribute);
        token.put_signedAttributes(&attributes);
        HCRYPTPROV key = 0;
        CryptAcquireContextA(&key, QUILLMARK_TEST_PKI "/tsa_p256.key", nullptr, PROV_RSA_AES, CRYPT_SILENT);
        token.sign(key, AT_SIGNATURE, signer_, CAlgorithmIdentifierEx(kSha256));
        CryptReleaseContext(key, 0);
        token_.decode(token.encode());
    }

    const CBlob signer_ = read("tsa_p256.der");
    const Store roots_ = store_with(read("ca.der"));
    CToken token_;
};

TEST_F(Trust, IsInAPathThatHeldWhenTheStampWasMade) {
    EXPECT_TRUE(token_.verify(signer_));
    EXPECT_TRUE(is_trusted(signer_, token_.get_certificates(), roots_.get(), token_.get_genTime()));
}

TEST_F(Trust, IsNotInAPathToAnotherRoot) {
    const Store others = store_with(read("other_ca.der"));
    EXPECT_FALSE(is_trusted(signer_, nullptr, others.get(), token_.get_genTime()));
}

TEST_F(Trust, IsNotInAPathThatHasEnded) {
    const CDateTime later(static_cast<long long>(token_.get_genTime().getTime()) + 20LL * 366 * 86400, 0);
    EXPECT_FALSE(is_trusted(signer_, nullptr, roots_.get(), later));
    EXPECT_TRUE(token_.verify(signer_)) << "which asks for no time";
}

TEST_F(Trust, IsNotInACertificateForOtherPurposes) {
    EXPECT_FALSE(is_trusted(read("ca.der"), nullptr, roots_.get(), token_.get_genTime()));
}

TEST_F(Trust, IsInTheCertificateThatTheSignerNames) {
    EXPECT_TRUE(names(token_, signer_));
    EXPECT_FALSE(names(token_, read("tsa_rsa2048.der")));
}

}  // namespace
}  // namespace Quillmark::test
