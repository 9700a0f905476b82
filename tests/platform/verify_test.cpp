// Checking signatures (RFC 5652 5.4, 5.6): which signer a certificate means, what binds the content, which
// algorithms go together, and what a changed octet does.

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <algorithm>
#include <memory>

#include "tests/platform/pieces.h"

namespace Quillmark::test {
namespace {

const Octets kContent = from_hex("30 03 02 01 05");

// A function with output of any length: found as a digest, and of no use in a signature.
constexpr char kShake128Oid[] = "2.16.840.1.101.3.4.2.11";

Octets signature_of(const std::string& key_file, const EVP_MD* digest, const Octets& octets) {
    FILE* const file = fopen(pki_path(key_file).c_str(), "r");
    EVP_PKEY* const key = PEM_read_PrivateKey(file, nullptr, nullptr, nullptr);
    fclose(file);
    EVP_MD_CTX* const context = EVP_MD_CTX_new();
    Octets signature(1024);
    std::size_t size = signature.size();
    EXPECT_EQ(EVP_DigestSignInit(context, nullptr, digest, nullptr, key), 1);
    EXPECT_EQ(EVP_DigestSign(context, signature.data(), &size, octets.data(), octets.size()), 1);
    signature.resize(size);
    EVP_MD_CTX_free(context);
    EVP_PKEY_free(key);
    return signature;
}

// Signs whatever attributes the pieces have now, as the RSA key of the tests.
void sign_attributes_again(Pieces& pieces) {
    Octets attributes = pieces.signer.at(Pieces::kAttributes);
    attributes.at(0) = 0x31;
    pieces.signer.at(Pieces::kSignature) =
        element(0x04, signature_of("tsa_rsa2048.key", EVP_sha256(), attributes));
}

SignRequest by_rsa() {
    return {.signers = {{.name = "tsa_rsa2048"}}};
}

class AnyKey : public testing::TestWithParam<Signer> {};

TEST_P(AnyKey, VerifiesWhatItSigned) {
    const Octets message = sign({.signers = {GetParam()}}, kContent);
    const Certificate certificate(GetParam().name + ".der");
    EXPECT_TRUE(verifies(message, certificate.info()));
    EXPECT_TRUE(verifies(message, certificate.info())) << "with the key in the cache";
}

TEST_P(AnyKey, NoticesAChangedSignature) {
    Pieces pieces(sign({.signers = {GetParam()}}, kContent));
    pieces.signer.at(Pieces::kSignature).back() ^= 1;
    const Certificate certificate(GetParam().name + ".der");
    EXPECT_TRUE(fails_to_verify(NTE_BAD_SIGNATURE, pieces.message(), certificate.info()));
}

TEST_P(AnyKey, VerifiesBareData) {
    const Octets message = sign({.signers = {GetParam()}, .inner_type = std::nullopt, .flags = 0}, kContent);
    const Certificate certificate(GetParam().name + ".der");
    EXPECT_TRUE(verifies(message, certificate.info()));
}

INSTANTIATE_TEST_SUITE_P(Keys, AnyKey,
                         testing::Values(Signer{.name = "tsa_rsa2048", .digest = kSha256Oid},
                                         Signer{.name = "tsa_rsa2048", .digest = "2.16.840.1.101.3.4.2.10"},
                                         Signer{.name = "tsa_p256", .digest = kSha256Oid},
                                         Signer{.name = "tsa_p384", .digest = kSha512Oid},
                                         Signer{.name = "tsa_pss", .digest = kSha384Oid},
                                         Signer{.name = "tsa_ed25519", .digest = kSha512Oid}),
                         [](const auto& row) {
                             return row.param.name.substr(4) + std::to_string(row.index);
                         });

TEST(Verify, ChecksTheSignerThatTheCertificateNames) {
    const Octets message = sign({.signers = {{.name = "tsa_p256"}, {.name = "tsa_rsa2048"}}}, kContent);
    const Certificate first("tsa_p256.der");
    const Certificate second("tsa_rsa2048.der");
    const Certificate other("other_tsa.der");  // same serial number as the second, another issuer
    EXPECT_TRUE(verifies(message, first.info()));
    EXPECT_TRUE(verifies(message, second.info()));
    EXPECT_TRUE(fails_to_verify(CRYPT_E_SIGNER_NOT_FOUND, message, other.info()));
}

TEST(Verify, SetsSignOctetsOfSerialNumbersAside) {
    const Octets message = sign({}, kContent);
    const Certificate certificate("tsa_p256.der");
    CERT_INFO info = *certificate.info();
    info.SerialNumber.cbData = 8;  // without the sign octet, which is the last one
    EXPECT_TRUE(verifies(message, &info));
    info.SerialNumber.cbData = 7;
    EXPECT_TRUE(fails_to_verify(CRYPT_E_SIGNER_NOT_FOUND, message, &info));
}

Octets with_key_identifier(const Octets& identifier) {
    Pieces pieces(sign({}, kContent));
    pieces.signer.at(Pieces::kIdentifier) = element(0x80, identifier);
    return pieces.message();
}

TEST(Verify, FindsASignerByTheSubjectKeyIdentifierOfTheCertificate) {
    const Certificate certificate("tsa_p256.der");
    const CRYPT_OBJID_BLOB& value = certificate.info()->rgExtension[3].Value;
    const Octets identifier = contents_of(Octets(value.pbData, value.pbData + value.cbData));
    EXPECT_TRUE(verifies(with_key_identifier(identifier), certificate.info()));
    EXPECT_TRUE(fails_to_verify(CRYPT_E_SIGNER_NOT_FOUND, with_key_identifier({1, 2}), certificate.info()));
}

TEST(Verify, FindsNoSignerByASubjectKeyIdentifierThatIsMalformed) {
    const Certificate certificate("tsa_p256.der");
    CERT_INFO info = *certificate.info();
    Octets no_octet_string = {0x84, 0x02, 0x01, 0x02};
    CERT_EXTENSION extension = info.rgExtension[3];
    extension.Value = {.cbData = static_cast<DWORD>(no_octet_string.size()),
                       .pbData = no_octet_string.data()};
    info.rgExtension = &extension;
    info.cExtension = 1;
    EXPECT_TRUE(fails_to_verify(CRYPT_E_SIGNER_NOT_FOUND, with_key_identifier({1, 2}), &info));
    EXPECT_TRUE(verifies(sign({}, kContent), &info));
}

TEST(Verify, FindsASignerByTheSha1OfTheKeyWithoutThatExtension) {
    const Certificate certificate("tsa_p256.der");
    CERT_INFO info = *certificate.info();
    info.cExtension = 0;
    Octets identifier(20);
    EVP_Digest(info.SubjectPublicKeyInfo.PublicKey.pbData, info.SubjectPublicKeyInfo.PublicKey.cbData,
               identifier.data(), nullptr, EVP_sha1(), nullptr);
    EXPECT_TRUE(verifies(with_key_identifier(identifier), &info));
}

TEST(Verify, RefusesRecordsThatCountWhatIsNotThere) {
    const Certificate certificate("tsa_p256.der");
    CERT_INFO info = *certificate.info();
    info.Issuer.pbData = nullptr;
    EXPECT_TRUE(fails_to_verify(E_INVALIDARG, sign({}, kContent), &info));
    info = *certificate.info();
    info.SerialNumber.pbData = nullptr;
    EXPECT_TRUE(fails_to_verify(E_INVALIDARG, sign({}, kContent), &info));
    info = *certificate.info();
    info.rgExtension = nullptr;
    EXPECT_TRUE(fails_to_verify(E_INVALIDARG, with_key_identifier({1, 2}), &info));
    EXPECT_TRUE(verifies(sign({}, kContent), &info)) << "a signer that is named without an extension";
}

TEST(Verify, NoticesChangedContent) {
    Pieces pieces(sign(by_rsa(), kContent));
    pieces.data.at(2).back() ^= 1;
    const Certificate certificate("tsa_rsa2048.der");
    EXPECT_TRUE(fails_to_verify(CRYPT_E_HASH_VALUE, pieces.message(), certificate.info()));
}

TEST(Verify, NoticesChangedContentOfBareData) {
    Pieces pieces(
        sign({.signers = {{.name = "tsa_rsa2048"}}, .inner_type = std::nullopt, .flags = 0}, kContent));
    pieces.data.at(2).back() ^= 1;
    const Certificate certificate("tsa_rsa2048.der");
    EXPECT_TRUE(fails_to_verify(NTE_BAD_SIGNATURE, pieces.message(), certificate.info()));
}

TEST(Verify, NoticesChangedAttributes) {
    Pieces pieces(sign({.signers = {{.signed_attributes = {{"1.2.4", {from_hex("02 01 01")}}}}}}, kContent));
    Octets& attributes = pieces.signer.at(Pieces::kAttributes);
    const Octets value = from_hex("31 03 02 01 01");
    const auto found = std::search(attributes.begin(), attributes.end(), value.begin(), value.end());
    ASSERT_NE(found, attributes.end());
    found[4] = 2;
    const Certificate certificate("tsa_p256.der");
    EXPECT_TRUE(fails_to_verify(NTE_BAD_SIGNATURE, pieces.message(), certificate.info()));
}

TEST(Verify, RefusesAMessageWithoutContent) {
    Pieces pieces(sign({}, kContent));
    pieces.data.at(2) = sequence({object_id(kTstInfoOid)});
    const Certificate certificate("tsa_p256.der");
    EXPECT_TRUE(fails_to_verify(CRYPT_E_MSG_ERROR, pieces.message(), certificate.info()));
}

TEST(Verify, RequiresSignedAttributesForOtherContentThanData) {
    Pieces pieces(sign({}, kContent));
    pieces.signer.erase(pieces.signer.begin() + Pieces::kAttributes);
    const Certificate certificate("tsa_p256.der");
    EXPECT_TRUE(fails_to_verify(CRYPT_E_AUTH_ATTR_MISSING, pieces.message(), certificate.info()));
}

// Attributes of a well signed message, replaced by others that are well signed too.
struct AttributeCase {
    const char* name;
    std::vector<Octets> (*change)(const Octets& content_type, const Octets& message_digest);
    DWORD code;
};

void PrintTo(const AttributeCase& row, std::ostream* out) {
    *out << row.name;
}

Octets attribute(const char* oid, const Octets& values) {
    return sequence({object_id(oid), element(0x31, values)});
}

constexpr char kContentTypeOid[] = "1.2.840.113549.1.9.3";
constexpr char kMessageDigestOid[] = "1.2.840.113549.1.9.4";

const AttributeCase kAttributeCases[] = {
    {"Unchanged",
     [](const Octets& a, const Octets& b) {
         return std::vector<Octets>{a, b};
     },
     ERROR_SUCCESS},
    {"AnotherOne",
     [](const Octets& a, const Octets& b) {
         return std::vector<Octets>{a, b, attribute("1.2.4", {})};
     },
     ERROR_SUCCESS},
    {"NoMessageDigest", [](const Octets& a, const Octets&) { return std::vector<Octets>{a}; },
     CRYPT_E_AUTH_ATTR_MISSING},
    {"NoContentType", [](const Octets&, const Octets& b) { return std::vector<Octets>{b}; },
     CRYPT_E_AUTH_ATTR_MISSING},
    {"TwoMessageDigests",
     [](const Octets& a, const Octets& b) {
         return std::vector<Octets>{a, b, b};
     },
     CRYPT_E_AUTH_ATTR_MISSING},
    {"TwoContentTypes",
     [](const Octets& a, const Octets& b) {
         return std::vector<Octets>{a, a, b};
     },
     CRYPT_E_AUTH_ATTR_MISSING},
    {"MessageDigestWithoutValue",
     [](const Octets& a, const Octets&) {
         return std::vector<Octets>{a, attribute(kMessageDigestOid, {})};
     },
     CRYPT_E_AUTH_ATTR_MISSING},
    {"MessageDigestWithTwoValues",
     [](const Octets& a, const Octets& b) {
         const Octets value = children(children(b).at(1)).at(0);
         return std::vector<Octets>{a, attribute(kMessageDigestOid, join({value, value}))};
     },
     CRYPT_E_AUTH_ATTR_MISSING},
    {"MessageDigestNoOctetString",
     [](const Octets& a, const Octets&) {
         return std::vector<Octets>{a, attribute(kMessageDigestOid, {5, 0})};
     },
     CRYPT_E_AUTH_ATTR_MISSING},
    {"ShortMessageDigest",
     [](const Octets& a, const Octets&) {
         return std::vector<Octets>{a, attribute(kMessageDigestOid, {4, 0})};
     },
     CRYPT_E_HASH_VALUE},
    {"OtherContentType",
     [](const Octets&, const Octets& b) {
         return std::vector<Octets>{attribute(kContentTypeOid, object_id(kDataOid)), b};
     },
     CRYPT_E_AUTH_ATTR_MISSING},
};

class VerifyAttributes : public testing::TestWithParam<AttributeCase> {};

TEST_P(VerifyAttributes, BindContentAndItsType) {
    Pieces pieces(sign(by_rsa(), kContent));
    const std::vector<Octets> attributes = children(pieces.signer.at(Pieces::kAttributes));
    Octets changed;
    for (const Octets& each : GetParam().change(attributes.at(0), attributes.at(1))) {
        changed = join({changed, each});
    }
    pieces.signer.at(Pieces::kAttributes) = element(0xA0, changed);
    sign_attributes_again(pieces);
    const Certificate certificate("tsa_rsa2048.der");
    if (GetParam().code == ERROR_SUCCESS) {
        EXPECT_TRUE(verifies(pieces.message(), certificate.info()));
        return;
    }
    EXPECT_TRUE(fails_to_verify(GetParam().code, pieces.message(), certificate.info()));
}

INSTANTIATE_TEST_SUITE_P(Rfc5652, VerifyAttributes, testing::ValuesIn(kAttributeCases),
                         [](const auto& row) { return row.param.name; });

TEST(Verify, TakesAttributesSignedInDerOrderAndSentInAnother) {
    Pieces pieces(sign(by_rsa(), kContent));
    const std::vector<Octets> attributes = children(pieces.signer.at(Pieces::kAttributes));
    pieces.signer.at(Pieces::kAttributes) = element(0xA0, {attributes.at(1), attributes.at(0)});
    const Certificate certificate("tsa_rsa2048.der");
    EXPECT_TRUE(verifies(pieces.message(), certificate.info()));
    sign_attributes_again(pieces);
    EXPECT_TRUE(verifies(pieces.message(), certificate.info())) << "signed as they were sent";
}

TEST(Verify, TakesAttributesInIndefiniteForm) {
    Pieces pieces(sign(by_rsa(), kContent));
    const Octets contents = contents_of(pieces.signer.at(Pieces::kAttributes));
    pieces.signer.at(Pieces::kAttributes) = join({{0xA0, 0x80}, contents, {0, 0}});
    const Certificate certificate("tsa_rsa2048.der");
    EXPECT_TRUE(verifies(pieces.message(), certificate.info()));
}

// The signature algorithm as written by others, over an RSA signature with this digest.
testing::AssertionResult verifies_with_algorithm(const Octets& algorithm, DWORD code = ERROR_SUCCESS) {
    Pieces pieces(sign(by_rsa(), kContent));
    pieces.signer.at(Pieces::kAlgorithm) = algorithm;
    const Certificate certificate("tsa_rsa2048.der");
    return code == ERROR_SUCCESS ? verifies(pieces.message(), certificate.info())
                                 : fails_to_verify(code, pieces.message(), certificate.info());
}

TEST(VerifyAlgorithm, TakesTheRsaSignatureThatNamesItsDigest) {
    EXPECT_TRUE(verifies_with_algorithm(sequence({object_id("1.2.840.113549.1.1.11"), element(0x05, "")})));
    EXPECT_TRUE(verifies_with_algorithm(sequence({object_id("1.2.840.113549.1.1.1")})));
}

TEST(VerifyAlgorithm, RefusesSignatureAlgorithmsThatDoNotFit) {
    EXPECT_TRUE(verifies_with_algorithm(sequence({object_id("1.2.840.113549.1.1.12")}), NTE_BAD_ALGID))
        << "SHA-384";
    EXPECT_TRUE(verifies_with_algorithm(sequence({object_id("1.2.840.10045.4.3.2")}), NTE_BAD_ALGID))
        << "ECDSA";
    EXPECT_TRUE(verifies_with_algorithm(sequence({object_id("1.2.3.4")}), NTE_BAD_ALGID)) << "unknown";
    EXPECT_TRUE(verifies_with_algorithm(sequence({object_id("1.2.840.113549.1.1.10")}), NTE_BAD_ALGID))
        << "RSASSA-PSS without parameters";
}

TEST(VerifyAlgorithm, TakesPssSignaturesOfPlainRsaKeys) {
    const Octets message = sign({.signers = {{.name = "tsa_pss"}}}, kContent);
    const Certificate certificate("tsa_pss.der");
    CERT_INFO info = *certificate.info();
    char rsa_encryption[] = "1.2.840.113549.1.1.1";
    info.SubjectPublicKeyInfo.Algorithm.pszObjId = rsa_encryption;
    EXPECT_TRUE(verifies(message, &info));
}

TEST(VerifyAlgorithm, RefusesPssParametersThatDoNotFit) {
    const Octets null = element(0x05, "");
    const auto parameters = [&](const char* hash_oid, const char* salt, const Octets& behind = {}) {
        const Octets hash = sequence({object_id(hash_oid), null});
        return sequence({element(0xA0, hash),
                         element(0xA1, sequence({object_id("1.2.840.113549.1.1.8"), hash})),
                         element(0xA2, element(0x02, salt)), behind});
    };
    const auto outcome = [](DWORD code, const Octets& encoded) {
        Pieces pieces(sign({.signers = {{.name = "tsa_pss"}}}, kContent));
        pieces.signer.at(Pieces::kAlgorithm) = sequence({object_id("1.2.840.113549.1.1.10"), encoded});
        const Certificate certificate("tsa_pss.der");
        return code == ERROR_SUCCESS ? verifies(pieces.message(), certificate.info())
                                     : fails_to_verify(code, pieces.message(), certificate.info());
    };
    EXPECT_TRUE(outcome(ERROR_SUCCESS, parameters(kSha256Oid, "20")));
    EXPECT_TRUE(outcome(ERROR_SUCCESS, parameters(kSha256Oid, "20", element(0xA3, element(0x02, "01")))));
    EXPECT_TRUE(outcome(NTE_BAD_ALGID, parameters(kSha256Oid, "20", element(0xA3, element(0x02, "02")))));
    EXPECT_TRUE(outcome(NTE_BAD_ALGID, parameters(kSha384Oid, "20"))) << "not the digest of the signer";
    EXPECT_TRUE(outcome(NTE_BAD_ALGID, parameters(kSha256Oid, "ff"))) << "negative salt";
    EXPECT_TRUE(outcome(NTE_BAD_ALGID, parameters(kSha256Oid, "01 00 00"))) << "huge salt";
    EXPECT_TRUE(outcome(NTE_BAD_SIGNATURE, parameters(kSha256Oid, "1f"))) << "another salt";
    EXPECT_TRUE(outcome(NTE_BAD_ALGID, null));
}

// RFC 8017 A.2.3: the mask generation function is MGF1 over a digest.
TEST(VerifyAlgorithm, RefusesPssMasksThatCannotBeMade) {
    const auto with_mask = [](const char* function, const char* hash_oid) {
        const Octets mask = sequence({object_id(function), sequence({object_id(hash_oid)})});
        const Octets parameters = sequence({element(0xA0, sequence({object_id(kSha256Oid)})),
                                            element(0xA1, mask), element(0xA2, element(0x02, "20"))});
        return sequence({object_id("1.2.840.113549.1.1.10"), parameters});
    };
    constexpr char kMgf1[] = "1.2.840.113549.1.1.8";
    EXPECT_TRUE(verifies_with_algorithm(with_mask(kMgf1, kSha256Oid), NTE_BAD_SIGNATURE))
        << "the signature is of another kind";
    EXPECT_TRUE(verifies_with_algorithm(with_mask("1.2.840.113549.1.1.9", kSha256Oid), NTE_BAD_ALGID));
    EXPECT_TRUE(verifies_with_algorithm(with_mask(kMgf1, "1.2.3.4"), NTE_BAD_ALGID)) << "no digest";
    EXPECT_TRUE(verifies_with_algorithm(with_mask(kMgf1, kShake128Oid), NTE_BAD_ALGID))
        << "libcrypto refuses";
}

// Data signed without attributes by the RSA key of the tests, and said to be so with this digest.
Octets bare_data(const char* digest_oid, const EVP_MD* digest) {
    Pieces pieces(
        sign({.signers = {{.name = "tsa_rsa2048"}}, .inner_type = std::nullopt, .flags = 0}, kContent));
    constexpr std::size_t kSignatureOfBareData = 4;
    pieces.signer.at(Pieces::kDigest) = sequence({object_id(digest_oid), element(0x05, "")});
    pieces.signer.at(kSignatureOfBareData) = element(0x04, signature_of("tsa_rsa2048.key", digest, kContent));
    return pieces.message();
}

TEST(VerifyAlgorithm, TakesMd5OfOldMessages) {
    const Certificate certificate("tsa_rsa2048.der");
    EXPECT_TRUE(verifies(bare_data("1.2.840.113549.2.5", EVP_md5()), certificate.info()));
}

TEST(VerifyAlgorithm, RefusesDigestsThatLibcryptoDoesNotUseWithRsa) {
    const Certificate certificate("tsa_rsa2048.der");
    EXPECT_TRUE(fails_to_verify(NTE_BAD_ALGID, bare_data(kShake128Oid, EVP_sha256()), certificate.info()));
}

// Verifies a good message with a certificate whose key was changed.
template <typename Change>
testing::AssertionResult with_key(const std::string& signer, DWORD code, Change&& change) {
    const Octets message = sign({.signers = {{.name = signer}}}, kContent);
    const Certificate certificate(signer + ".der");
    CERT_INFO info = *certificate.info();
    change(info.SubjectPublicKeyInfo);
    return fails_to_verify(code, message, &info);
}

TEST(VerifyKey, RefusesMalformedKeys) {
    const auto refused = [](const char* signer, auto&& change) {
        return with_key(signer, NTE_BAD_PUBLIC_KEY, change);
    };
    EXPECT_TRUE(refused("tsa_p256", [](CERT_PUBLIC_KEY_INFO& key) { key.PublicKey.cUnusedBits = 1; }));
    EXPECT_TRUE(refused("tsa_p256", [](CERT_PUBLIC_KEY_INFO& key) { key.PublicKey.cbData = 0; }));
    EXPECT_TRUE(refused("tsa_p256", [](CERT_PUBLIC_KEY_INFO& key) { key.PublicKey.cbData -= 1; }));
    EXPECT_TRUE(refused("tsa_p256", [](CERT_PUBLIC_KEY_INFO& key) { key.Algorithm.Parameters.cbData = 0; }));
    EXPECT_TRUE(refused("tsa_rsa2048", [](CERT_PUBLIC_KEY_INFO& key) { key.PublicKey.cbData -= 1; }));
    Octets parameters = element(0x04, "");
    const auto other_parameters = [&](CERT_PUBLIC_KEY_INFO& key) {
        key.Algorithm.Parameters = {2, parameters.data()};
    };
    EXPECT_TRUE(refused("tsa_rsa2048", other_parameters));
    EXPECT_TRUE(refused("tsa_p256", other_parameters));
}

TEST(VerifyKey, RefusesHybridPointsAndPointsOffTheCurve) {
    Octets point;
    const auto change_octet = [&](std::size_t index, std::uint8_t value) {
        return [&point, index, value](CERT_PUBLIC_KEY_INFO& key) {
            point.assign(key.PublicKey.pbData, key.PublicKey.pbData + key.PublicKey.cbData);
            point.at(index) = value != 0 ? value : static_cast<std::uint8_t>(point.at(index) ^ 1);
            key.PublicKey.pbData = point.data();
        };
    };
    EXPECT_TRUE(with_key("tsa_p256", NTE_BAD_PUBLIC_KEY, change_octet(0, 6)));
    EXPECT_TRUE(with_key("tsa_p256", NTE_BAD_PUBLIC_KEY, change_octet(0, 7)));
    EXPECT_TRUE(with_key("tsa_p256", NTE_BAD_PUBLIC_KEY, change_octet(64, 0)));
}

TEST(VerifyKey, RefusesUnknownKeyAlgorithms) {
    char unknown[] = "1.2.3.4";
    EXPECT_TRUE(with_key("tsa_p256", CRYPT_E_UNKNOWN_ALGO,
                         [&](CERT_PUBLIC_KEY_INFO& key) { key.Algorithm.pszObjId = unknown; }));
    EXPECT_TRUE(with_key("tsa_p256", E_INVALIDARG,
                         [&](CERT_PUBLIC_KEY_INFO& key) { key.Algorithm.pszObjId = nullptr; }));
}

TEST(VerifyKey, NoticesTheKeyOfAnother) {
    const Certificate other("other_tsa.der");
    EXPECT_TRUE(with_key("tsa_p256", NTE_BAD_SIGNATURE,
                         [&](CERT_PUBLIC_KEY_INFO& key) { key = other.info()->SubjectPublicKeyInfo; }));
}

}  // namespace
}  // namespace Quillmark::test
