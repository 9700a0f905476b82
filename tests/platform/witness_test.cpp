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

}  // namespace
}  // namespace Quillmark::test
