// Which digests go with which keys, row by row: what is written when a message is signed, and what is taken
// when one is verified (RFC 3279, RFC 4055, RFC 5754, RFC 5758, RFC 8419).

#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>

#include "tests/platform/containers.h"
#include "tests/platform/pieces.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct DigestCase {
    const char* name;
    const char* oid;
    const char* rsa;    // PKCS #1 v1.5 signature that names the digest
    const char* ecdsa;  // ECDSA signature with it, null where no identifier exists
    const char* libcrypto;
};

void PrintTo(const DigestCase& row, std::ostream* out) {
    *out << row.name;
}

// RFC 3279 2.2.1, 2.2.3; RFC 4055 5; RFC 5758 3.2; the hash functions' register (2.16.840.1.101.3.4.2, .3)
constexpr DigestCase kDigests[] = {
    {"Sha1", "1.3.14.3.2.26", "1.2.840.113549.1.1.5", "1.2.840.10045.4.1", "SHA1"},
    {"Sha224", "2.16.840.1.101.3.4.2.4", "1.2.840.113549.1.1.14", "1.2.840.10045.4.3.1", "SHA224"},
    {"Sha256", "2.16.840.1.101.3.4.2.1", "1.2.840.113549.1.1.11", "1.2.840.10045.4.3.2", "SHA256"},
    {"Sha384", "2.16.840.1.101.3.4.2.2", "1.2.840.113549.1.1.12", "1.2.840.10045.4.3.3", "SHA384"},
    {"Sha512", "2.16.840.1.101.3.4.2.3", "1.2.840.113549.1.1.13", "1.2.840.10045.4.3.4", "SHA512"},
    {"Sha512Of224", "2.16.840.1.101.3.4.2.5", "1.2.840.113549.1.1.15", nullptr, "SHA512-224"},
    {"Sha512Of256", "2.16.840.1.101.3.4.2.6", "1.2.840.113549.1.1.16", nullptr, "SHA512-256"},
    {"Sha3Of224", "2.16.840.1.101.3.4.2.7", "2.16.840.1.101.3.4.3.13", "2.16.840.1.101.3.4.3.9", "SHA3-224"},
    {"Sha3Of256", "2.16.840.1.101.3.4.2.8", "2.16.840.1.101.3.4.3.14", "2.16.840.1.101.3.4.3.10", "SHA3-256"},
    {"Sha3Of384", "2.16.840.1.101.3.4.2.9", "2.16.840.1.101.3.4.3.15", "2.16.840.1.101.3.4.3.11", "SHA3-384"},
    {"Sha3Of512", "2.16.840.1.101.3.4.2.10", "2.16.840.1.101.3.4.3.16", "2.16.840.1.101.3.4.3.12",
     "SHA3-512"},
};

class DigestRow : public testing::TestWithParam<DigestCase> {
  protected:
    static Octets signed_by(const std::string& signer) {
        return sign({.signers = {{.name = signer, .digest = GetParam().oid}}}, kContent);
    }
    static Octets signature_algorithm(const Octets& message) {
        return signer_fields(message).at(Pieces::kAlgorithm);
    }
};

const Octets kNullElement = element(0x05, "");

Octets pss_parameters(const char* digest, std::uint8_t salt) {
    const Octets hash = sequence({object_id(digest), kNullElement});
    return sequence({element(0xA0, hash), element(0xA1, sequence({object_id("1.2.840.113549.1.1.8"), hash})),
                     element(0xA2, element(0x02, Octets{salt}))});
}

TEST_P(DigestRow, IsComputedOverTheContent) {
    Octets expected(64);
    unsigned int size = 0;
    EVP_MD* const digest = EVP_MD_fetch(nullptr, GetParam().libcrypto, nullptr);
    EVP_Digest(kContent.data(), kContent.size(), expected.data(), &size, digest, nullptr);
    EVP_MD_free(digest);
    expected.resize(size);
    const Message encoded(open_to_encode({.signers = {{.name = "tsa_rsa2048", .digest = GetParam().oid}}}));
    ASSERT_TRUE(encoded.update(kContent));
    EXPECT_EQ(encoded.param(CMSG_COMPUTED_HASH_PARAM), expected);
    const Message decoded(open_to_decode());
    ASSERT_TRUE(decoded.update(encoded.param(CMSG_CONTENT_PARAM)));
    EXPECT_EQ(decoded.param(CMSG_COMPUTED_HASH_PARAM), expected);
}

TEST_P(DigestRow, GoesWithRsa) {
    Pieces pieces(signed_by("tsa_rsa2048"));
    const Certificate certificate("tsa_rsa2048.der");
    EXPECT_EQ(pieces.signer.at(Pieces::kAlgorithm),
              sequence({object_id("1.2.840.113549.1.1.1"), kNullElement}));
    EXPECT_TRUE(verifies(pieces.message(), certificate.info()));
    pieces.signer.at(Pieces::kAlgorithm) = sequence({object_id(GetParam().rsa), kNullElement});
    EXPECT_TRUE(verifies(pieces.message(), certificate.info())) << "with the digest in its name";
}

TEST_P(DigestRow, IsTheOnlyOneOfARsaSignatureThatNamesIt) {
    Pieces pieces(signed_by("tsa_rsa2048"));
    const Certificate certificate("tsa_rsa2048.der");
    for (const DigestCase& other : kDigests) {
        if (other.oid != GetParam().oid) {
            pieces.signer.at(Pieces::kAlgorithm) = sequence({object_id(other.rsa), kNullElement});
            EXPECT_TRUE(fails_to_verify(NTE_BAD_ALGID, pieces.message(), certificate.info())) << other.name;
        }
    }
}

TEST_P(DigestRow, GoesWithPss) {
    const Octets message = signed_by("tsa_pss");
    const Certificate certificate("tsa_pss.der");
    EXPECT_TRUE(verifies(message, certificate.info()));
    const std::size_t size =
        contents_of(children(children(signer_fields(message).at(Pieces::kAttributes)).at(1)).at(1)).size() -
        2;
    const Octets parameters = std::string_view(GetParam().name) == "Sha1"
                                  ? element(0x30, "")  // all defaults
                                  : pss_parameters(GetParam().oid, static_cast<std::uint8_t>(size));
    EXPECT_EQ(signature_algorithm(message), sequence({object_id("1.2.840.113549.1.1.10"), parameters}));
}

TEST_P(DigestRow, GoesWithPssOfAPlainRsaKey) {
    const Octets message = signed_by("tsa_pss");
    const Certificate certificate("tsa_pss.der");
    CERT_INFO info = *certificate.info();
    char rsa_encryption[] = "1.2.840.113549.1.1.1";
    info.SubjectPublicKeyInfo.Algorithm.pszObjId = rsa_encryption;
    EXPECT_TRUE(verifies(message, &info));
}

TEST_P(DigestRow, GoesWithEcdsaIfThatHasAnIdentifier) {
    for (const char* const signer : {"tsa_p256", "tsa_p384"}) {
        if (GetParam().ecdsa == nullptr) {
            const Provider provider(std::string(signer) + ".key");
            EXPECT_TRUE(fails_with(NTE_BAD_ALGID, open_with(provider.handle(), signer, AT_SIGNATURE,
                                                            GetParam().oid) != nullptr));
            continue;
        }
        const Octets message = signed_by(signer);
        EXPECT_EQ(signature_algorithm(message), sequence({object_id(GetParam().ecdsa)}));
        const Certificate certificate(std::string(signer) + ".der");
        EXPECT_TRUE(verifies(message, certificate.info()));
    }
}

TEST_P(DigestRow, GoesWithEd25519OnlyIfItIsSha512) {
    if (std::string_view(GetParam().name) == "Sha512") {
        const Octets message = signed_by("tsa_ed25519");
        EXPECT_EQ(signature_algorithm(message), sequence({object_id("1.3.101.112")}));
        const Certificate certificate("tsa_ed25519.der");
        EXPECT_TRUE(verifies(message, certificate.info()));
        return;
    }
    const Provider provider("tsa_ed25519.key");
    EXPECT_TRUE(fails_with(
        NTE_BAD_ALGID, open_with(provider.handle(), "tsa_ed25519", AT_SIGNATURE, GetParam().oid) != nullptr));
}

INSTANTIATE_TEST_SUITE_P(Digests, DigestRow, testing::ValuesIn(kDigests), case_name);

// A key keeps what it prepared for the schemes that it met first, and for no more than 16 of them.
TEST(Schemes, AreMoreThanAKeyKeepsPrepared) {
    const Provider provider("tsa_rsa2048.key");
    const Certificate certificate("tsa_rsa2048.der");
    char rsa_encryption[] = "1.2.840.113549.1.1.1";
    char rsassa_pss[] = "1.2.840.113549.1.1.10";
    CERT_INFO info = *certificate.info();
    for (char* const kind : {rsa_encryption, rsassa_pss}) {
        info.SubjectPublicKeyInfo.Algorithm = {.pszObjId = kind, .Parameters = {}};
        for (const DigestCase& digest : kDigests) {
            const SignRequest request{
                .signers = {{.name = "tsa_rsa2048", .digest = digest.oid, .provider = provider.handle()}}};
            EncodeRecords records(request);
            records.signers.at(0).pCertInfo = &info;
            const Message message(records.open(request));
            ASSERT_TRUE(message.update(kContent)) << digest.name << std::hex << GetLastError();
            EXPECT_TRUE(verifies(message.param(CMSG_CONTENT_PARAM), &info)) << kind << " " << digest.name;
        }
    }
}

// SM3 has no row of its own and is found by its identifier.
constexpr char kSm3[] = "1.2.156.10197.1.401";

TEST(OtherDigest, IsFoundByItsIdentifier) {
    Pieces pieces(sign({}, kContent));
    pieces.signer.at(Pieces::kDigest) = sequence({object_id(kSm3)});
    const Message message(open_to_decode());
    ASSERT_TRUE(message.update(pieces.message())) << std::hex << GetLastError();
    Octets expected(32);
    EVP_Digest(kContent.data(), kContent.size(), expected.data(), nullptr, EVP_sm3(), nullptr);
    EXPECT_EQ(message.param(CMSG_COMPUTED_HASH_PARAM), expected);
}

TEST(OtherDigest, GoesWithNoKeyWhoseSignatureHasToNameIt) {
    for (const char* const signer : {"tsa_p256", "tsa_pss", "tsa_ed25519"}) {
        const Provider provider(std::string(signer) + ".key");
        EXPECT_TRUE(
            fails_with(NTE_BAD_ALGID, open_with(provider.handle(), signer, AT_SIGNATURE, kSm3) != nullptr))
            << signer;
    }
}

// SHAKE128, whose output has any length
TEST(OtherDigest, GoesWithRsaOnlyIfLibcryptoUsesItSo) {
    const Provider provider("tsa_rsa2048.key");
    EXPECT_TRUE(fails_with(NTE_BAD_ALGID, open_with(provider.handle(), "tsa_rsa2048", AT_SIGNATURE,
                                                    "2.16.840.1.101.3.4.2.11") != nullptr));
}

// Curves that no certificate of the tests has

struct FreeKey {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};

class Curve : public testing::TestWithParam<const char*> {};

TEST_P(Curve, SignsAndVerifies) {
    const std::unique_ptr<EVP_PKEY, FreeKey> key(EVP_EC_gen(GetParam()));
    ASSERT_NE(key, nullptr);
    std::uint8_t* der = nullptr;
    const int size = i2d_PUBKEY(key.get(), &der);
    const std::vector<Octets> fields = children(Octets(der, der + size));
    OPENSSL_free(der);
    Octets parameters = children(fields.at(0)).at(1);
    Octets point = contents_of(fields.at(1));
    point.erase(point.begin());  // the count of unused bits
    Octets issuer = sequence({});
    Octets serial = {5};
    char oid[] = "1.2.840.10045.2.1";
    CERT_INFO certificate{};
    certificate.Issuer = {static_cast<DWORD>(issuer.size()), issuer.data()};
    certificate.SerialNumber = {1, serial.data()};
    certificate.SubjectPublicKeyInfo = {{oid, {static_cast<DWORD>(parameters.size()), parameters.data()}},
                                        {static_cast<DWORD>(point.size()), point.data(), 0}};

    HCRYPTPROV provider = 0;
    ASSERT_TRUE(KeyContainerFromKey(&provider, key.get()));
    const SignRequest request{.signers = {{.provider = provider}}};
    EncodeRecords records(request);
    records.signers[0].pCertInfo = &certificate;
    const Message message(records.open(request));
    ASSERT_NE(message.handle(), nullptr) << std::hex << GetLastError();
    ASSERT_TRUE(message.update(kContent));
    EXPECT_TRUE(verifies(message.param(CMSG_CONTENT_PARAM), &certificate));
    CryptReleaseContext(provider, 0);
}

INSTANTIATE_TEST_SUITE_P(OfLibcrypto, Curve,
                         testing::Values("P-521", "P-224", "secp256k1", "brainpoolP256r1", "brainpoolP512t1",
                                         "sect283k1"),
                         [](const auto& row) {
                             std::string name = row.param;
                             std::erase(name, '-');
                             return name;
                         });

}  // namespace
}  // namespace Quillmark::test
