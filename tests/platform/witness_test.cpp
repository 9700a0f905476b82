// The openssl command reads what the service signs, and the service reads what the command signs.

#include "tests/platform/service.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

const Octets kContent = from_hex("30 03 02 01 05");

struct KeyCase {
    const char* name;
    const char* key;
    const char* digest;
    const char* digest_option;  // of the openssl command
};

void PrintTo(const KeyCase& row, std::ostream* out) {
    *out << row.name;
}

constexpr KeyCase kKeys[] = {
    {.name = "RsaSha256", .key = "tsa_rsa2048", .digest = kSha256Oid, .digest_option = "sha256"},
    {.name = "RsaSha1", .key = "tsa_rsa2048", .digest = kSha1Oid, .digest_option = "sha1"},
    {.name = "RsaSha512", .key = "tsa_rsa2048", .digest = kSha512Oid, .digest_option = "sha512"},
    {.name = "P256Sha256", .key = "tsa_p256", .digest = kSha256Oid, .digest_option = "sha256"},
    {.name = "P256Sha3", .key = "tsa_p256", .digest = "2.16.840.1.101.3.4.2.8", .digest_option = "sha3-256"},
    {.name = "P384Sha384", .key = "tsa_p384", .digest = kSha384Oid, .digest_option = "sha384"},
    {.name = "P384Sha512", .key = "tsa_p384", .digest = kSha512Oid, .digest_option = "sha512"},
    {.name = "PssSha256", .key = "tsa_pss", .digest = kSha256Oid, .digest_option = "sha256"},
    {.name = "PssSha1", .key = "tsa_pss", .digest = kSha1Oid, .digest_option = "sha1"},
};

class Witness : public testing::TestWithParam<KeyCase> {
  protected:
    TemporaryDirectory directory_;
};

TEST_P(Witness, AcceptsMessageSignedHere) {
    const Octets message = sign({.signers = {{.name = GetParam().key, .digest = GetParam().digest}},
                                 .certificates = {read_pki(std::string(GetParam().key) + ".der")}},
                                kContent);
    write_file(directory_.path("message.der"), message);
    ASSERT_TRUE(
        directory_.run("openssl cms -verify -inform DER -in message.der -purpose timestampsign -CAfile " +
                       pki_path("ca.pem") + " -out content.der"));
    EXPECT_EQ(read_file(directory_.path("content.der")), kContent);
}

class SigningWitness : public Witness {};

TEST_P(SigningWitness, IsAcceptedHere) {
    const std::string key = pki_path(GetParam().key);
    write_file(directory_.path("content.der"), kContent);
    const bool is_pss = std::string_view(GetParam().key) == "tsa_pss";
    ASSERT_TRUE(directory_.run(
        "openssl cms -sign -binary -nodetach -outform DER -in content.der -out message.der -md " +
        std::string(GetParam().digest_option) + " -econtent_type " + kTstInfoOid + " -signer " + key +
        ".pem -inkey " + key + ".key" + (is_pss ? " -keyopt rsa_padding_mode:pss" : "")));
    const Message message(open_to_decode());
    ASSERT_TRUE(message.update(read_file(directory_.path("message.der")))) << std::hex << GetLastError();
    EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kContent);
    const Certificate certificate(std::string(GetParam().key) + ".der");
    EXPECT_TRUE(message.verify(certificate.info())) << std::hex << GetLastError();
}

// ECDSA with SHA-3 the command verifies but does not make.
std::vector<KeyCase> keys_without_sha3() {
    std::vector<KeyCase> keys(std::begin(kKeys), std::end(kKeys));
    std::erase_if(keys, [](const KeyCase& row) { return std::string_view(row.digest_option) == "sha3-256"; });
    return keys;
}

INSTANTIATE_TEST_SUITE_P(Keys, Witness, testing::ValuesIn(kKeys), case_name);
INSTANTIATE_TEST_SUITE_P(Keys, SigningWitness, testing::ValuesIn(keys_without_sha3()), case_name);

// Replies of the command's own time-stamp authority, and tokens signed here in its eyes.
class TimeStampWitness : public testing::TestWithParam<const char*> {
  protected:
    TemporaryDirectory directory_;
};

TEST_P(TimeStampWitness, RepliesWithATokenThatVerifiesHere) {
    const std::string kind = GetParam();
    ASSERT_TRUE(directory_.run("cp " + pki_path("*.pem") + " " + pki_path("*.key") + " " +
                               pki_path("tsa.cnf") + " ."));
    ASSERT_TRUE(
        directory_.run("echo text > data && openssl ts -query -data data -sha256 -cert -out query && "
                       "openssl ts -reply -config tsa.cnf -section tsa_" +
                       kind + " -queryfile query -token_out -out token"));
    const Message token(open_to_decode());
    ASSERT_TRUE(token.update(read_file(directory_.path("token"))));
    const Octets type = token.param(CMSG_INNER_CONTENT_TYPE_PARAM);
    EXPECT_STREQ(reinterpret_cast<const char*>(type.data()), kTstInfoOid);
    EXPECT_EQ(token.count(CMSG_CERT_COUNT_PARAM), 2u);
    const Certificate certificate("tsa_" + kind + ".der");
    EXPECT_TRUE(token.verify(certificate.info())) << std::hex << GetLastError();
}

// The TSTInfo and the attributes of the command's token are signed anew here; its own verification must take
// the result.
TEST_P(TimeStampWitness, VerifiesATokenSignedAnewHere) {
    const std::string kind = GetParam();
    ASSERT_TRUE(directory_.run("cp " + pki_path("*.pem") + " " + pki_path("*.key") + " " +
                               pki_path("tsa.cnf") + " ."));
    ASSERT_TRUE(
        directory_.run("echo text > data && openssl ts -query -data data -sha256 -cert -out query && "
                       "openssl ts -reply -config tsa.cnf -section tsa_" +
                       kind + " -queryfile query -token_out -out token"));
    const Message token(open_to_decode());
    ASSERT_TRUE(token.update(read_file(directory_.path("token"))));
    Octets block = token.param(CMSG_SIGNER_AUTH_ATTR_PARAM);
    const auto* attributes = reinterpret_cast<const CRYPT_ATTRIBUTES*>(block.data());

    const SignRequest request{
        .signers = {{.name = "tsa_" + kind}},
        .certificates = {token.param(CMSG_CERT_PARAM, 0), token.param(CMSG_CERT_PARAM, 1)}};
    EncodeRecords records(request);
    records.signers[0].cAuthAttr = attributes->cAttr;
    records.signers[0].rgAuthAttr = attributes->rgAttr;
    const Message anew(records.open(request));
    ASSERT_TRUE(anew.update(token.param(CMSG_CONTENT_PARAM)));
    write_file(directory_.path("anew"), anew.param(CMSG_CONTENT_PARAM));
    EXPECT_TRUE(directory_.run("openssl ts -verify -data data -in anew -token_in -CAfile ca.pem"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, TimeStampWitness, testing::Values("rsa2048", "p256", "p384"));

// OpenSSL 3.0 has no Ed25519 in CMS, GnuTLS has.
TEST(Ed25519Witness, AcceptsMessageSignedHere) {
    const TemporaryDirectory directory;
    if (!directory.run("command -v certtool")) {
        GTEST_SKIP() << "certtool is not installed (Debian: gnutls-bin)";
    }
    Octets message = sign({.signers = {{.name = "tsa_ed25519", .digest = kSha512Oid}},
                           .certificates = {read_pki("tsa_ed25519.der")}},
                          kContent);
    const std::string verify = "certtool --p7-verify --inder --infile message.der --load-ca-certificate " +
                               pki_path("ca.pem") + " 2>&1 | grep 'Signature status: ok'";
    write_file(directory.path("message.der"), message);
    EXPECT_TRUE(directory.run(verify));
    message.back() ^= 1;  // the end of the signature
    write_file(directory.path("message.der"), message);
    EXPECT_FALSE(directory.run(verify));
}

TEST(KeyIdentifierWitness, NamesItsSignerByTheCertificatesKeyIdentifier) {
    const TemporaryDirectory directory;
    write_file(directory.path("content"), kContent);
    const std::string key = pki_path("tsa_p256");
    ASSERT_TRUE(directory.run(
        "openssl cms -sign -binary -nodetach -keyid -outform DER -in content -out message -signer " + key +
        ".pem -inkey " + key + ".key"));
    const Message message(open_to_decode());
    ASSERT_TRUE(message.update(read_file(directory.path("message"))));
    const Certificate certificate("tsa_p256.der");
    EXPECT_TRUE(message.verify(certificate.info())) << std::hex << GetLastError();
    const Certificate other("other_tsa.der");
    EXPECT_TRUE(fails_with(CRYPT_E_SIGNER_NOT_FOUND, message.verify(other.info())));
}

}  // namespace
}  // namespace Quillmark::test
