// Our Authenticode stamps in `openssl cms -verify` and `openssl smime -verify`, and signed messages of these
// commands in CMSStamp.

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "tests/interop/authority.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/result_code.h"
#include "tsp/cms_stamp.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::hex;
using test::OpenSSLAuthority;

const CDateTime kTime(2024u, 2u, 29u, 23u, 59u, 58u, 0u, 0u);

/// What is stamped: the first 256 octet values, so that no line end passes for text.
CBlob data() {
    CBlob octets(256ul);
    for (int i = 0; i < 256; ++i) {
        octets.pbData()[i] = static_cast<unsigned char>(i);
    }
    return octets;
}

struct StampCase {
    const char* name;
    const char* key;
    const char* digest;
    bool with_certificates;
};

void PrintTo(const StampCase& row, std::ostream* out) {
    *out << row.name;
}

class OurStamp : public testing::TestWithParam<StampCase> {
  protected:
    /// Leaves the stamp as stamp.p7.
    OurStamp() {
        const test::TestKey key(GetParam().key);
        CMSStamp stamp(toOctetString(data()), kTime);
        if (GetParam().with_certificates) {
            const CBlobList certificates = {test::certificate(GetParam().key), test::certificate("ca")};
            stamp.put_certificates(&certificates);
        }
        stamp.sign(key.provider(), AT_SIGNATURE, test::certificate(GetParam().key),
                   CAlgorithmIdentifierEx(GetParam().digest));
        openssl_.directory().write("stamp.p7", stamp.encode());
    }

    /// The certificate of the signer as an option, where the message has none.
    static std::string signer() {
        return GetParam().with_certificates ? "" : " -certfile " + std::string(GetParam().key) + ".pem";
    }

    OpenSSLAuthority openssl_;
};

TEST_P(OurStamp, IsVerifiedAsAMessageForTimeStamping) {
    const std::string output = openssl_.run(
        "openssl cms -verify -inform DER -binary -in stamp.p7 -CAfile ca.pem -purpose timestampsign -out "
        "content" +
        signer());
    EXPECT_NE(output.find("CMS Verification successful"), std::string::npos) << output;
    EXPECT_EQ(hex(openssl_.directory().read("content")), hex(data()));
}

TEST_P(OurStamp, IsVerifiedAsAPkcs7Message) {
    const std::string output = openssl_.run(
        "openssl smime -verify -inform DER -binary -in stamp.p7 -CAfile ca.pem -purpose any -out content" +
        signer());
    EXPECT_NE(output.find("Verification successful"), std::string::npos) << output;
    EXPECT_EQ(hex(openssl_.directory().read("content")), hex(data()));
}

TEST_P(OurStamp, IsNotVerifiedUnderAnotherAuthority) {
    const auto result = openssl_.directory().run(
        "openssl cms -verify -inform DER -binary -in stamp.p7 -CAfile other_ca.pem -purpose timestampsign "
        "-out content" +
        signer());
    EXPECT_NE(result.status, 0) << result.output;
}

TEST_P(OurStamp, HasJustTheThreeAttributes) {
    const std::string text = openssl_.run("openssl cms -cmsout -print -noout -inform DER -in stamp.p7");
    const auto begin = text.find("signedAttrs:");
    const auto end = text.find("signatureAlgorithm:", begin);
    ASSERT_NE(end, std::string::npos) << text;
    const std::string attributes = text.substr(begin, end - begin);
    const std::regex object("object: ([A-Za-z]+) ");
    std::vector<std::string> names;
    for (std::sregex_iterator found(attributes.begin(), attributes.end(), object), none; found != none;
         ++found) {
        names.push_back((*found)[1]);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"contentType", "signingTime", "messageDigest"})) << attributes;
    EXPECT_NE(attributes.find("UTCTIME:Feb 29 23:59:58 2024 GMT"), std::string::npos) << attributes;
    EXPECT_NE(attributes.find("OBJECT:pkcs7-data"), std::string::npos) << attributes;
    const std::regex no_unsigned("unsignedAttrs:\\s*<ABSENT>");
    EXPECT_TRUE(std::regex_search(text, no_unsigned)) << text;
}

constexpr char kSha1[] = "1.3.14.3.2.26";
constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";
constexpr char kSha384[] = "2.16.840.1.101.3.4.2.2";

const StampCase kStamps[] = {
    {.name = "Rsa", .key = "tsa_rsa2048", .digest = kSha256, .with_certificates = true},
    {.name = "RsaWithoutCertificates", .key = "tsa_rsa2048", .digest = kSha256, .with_certificates = false},
    {.name = "RsaWithSha1", .key = "tsa_rsa2048", .digest = kSha1, .with_certificates = true},
    {.name = "P256", .key = "tsa_p256", .digest = kSha256, .with_certificates = true},
    {.name = "P256WithoutCertificates", .key = "tsa_p256", .digest = kSha256, .with_certificates = false},
    {.name = "P384", .key = "tsa_p384", .digest = kSha384, .with_certificates = true},
};

INSTANTIATE_TEST_SUITE_P(Keys, OurStamp, testing::ValuesIn(kStamps), test::case_name);

// Messages of the commands

/// "20240229235958Z" for the UTCTime behind the name in what `openssl asn1parse` prints.
std::string signing_time_of(const std::string& parsed) {
    static const std::regex time(":signingTime[\\s\\S]*?UTCTIME +:([0-9]{12}Z)");
    std::smatch found;
    return std::regex_search(parsed, found, time) ? "20" + found[1].str() : "no signing time in\n" + parsed;
}

struct MessageCase {
    const char* name;
    const char* key;
    const char* command;
    unsigned long certificates;
    const char* options = "";  ///< behind the signer
};

void PrintTo(const MessageCase& row, std::ostream* out) {
    *out << row.name;
}

class TheirMessage : public testing::TestWithParam<MessageCase> {};

TEST_P(TheirMessage, IsReadAndVerified) {
    const OpenSSLAuthority openssl;
    openssl.directory().write("data", data());
    const std::string key = GetParam().key;
    openssl.run(std::string(GetParam().command) + " -binary -nodetach -outform DER -in data -signer " + key +
                ".pem -inkey " + key + ".key -out message.p7" + GetParam().options);
    CMSStamp stamp;
    stamp.decode(openssl.directory().read("message.p7"));
    EXPECT_EQ(hex(fromOctetString(stamp.get_content())), hex(data()));
    EXPECT_EQ(stamp.get_signingTime().getGeneralizedTime().c_str(),
              signing_time_of(openssl.run("openssl asn1parse -inform DER -in message.p7")));
    EXPECT_EQ(stamp.get_certificates() != nullptr ? stamp.get_certificates()->size() : 0u,
              GetParam().certificates);
    EXPECT_TRUE(stamp.verify(test::certificate(key)));
    EXPECT_FALSE(stamp.verify(test::certificate("other_tsa")));
}

const MessageCase kMessages[] = {
    {.name = "SmimeRsa", .key = "tsa_rsa2048", .command = "openssl smime -sign", .certificates = 1},
    {.name = "SmimeP256", .key = "tsa_p256", .command = "openssl smime -sign", .certificates = 1},
    {.name = "SmimeWithoutCertificates",
     .key = "tsa_rsa2048",
     .command = "openssl smime -sign -nocerts",
     .certificates = 0},
    {.name = "SmimeWithTheChain",
     .key = "tsa_rsa2048",
     .command = "openssl smime -sign -certfile ca.pem",
     .certificates = 2},
    {.name = "CmsRsa", .key = "tsa_rsa2048", .command = "openssl cms -sign", .certificates = 1},
    {.name = "CmsP256", .key = "tsa_p256", .command = "openssl cms -sign -nosmimecap", .certificates = 1},
    {.name = "CmsPss",
     .key = "tsa_rsa2048",
     .command = "openssl cms -sign",
     .certificates = 1,
     .options = " -keyopt rsa_padding_mode:pss"},
    {.name = "CmsNamedByKeyIdentifier",
     .key = "tsa_p256",
     .command = "openssl cms -sign -keyid",
     .certificates = 1},
    // BER: indefinite lengths, the content in pieces
    {.name = "CmsStreamed", .key = "tsa_p256", .command = "openssl cms -sign -stream", .certificates = 1},
};

INSTANTIATE_TEST_SUITE_P(Commands, TheirMessage, testing::ValuesIn(kMessages), test::case_name);

TEST(TheirMessageWithoutAttributes, IsRefusedWithItsContentRead) {
    const OpenSSLAuthority openssl;
    openssl.directory().write("data", data());
    for (const std::string command : {"smime", "cms"}) {
        openssl.run("openssl " + command +
                    " -sign -noattr -binary -nodetach -outform DER -in data -signer tsa_p256.pem -inkey "
                    "tsa_p256.key -out message.p7");
        CMSStamp stamp;
        EXPECT_CODE(CRYPT_E_ATTRIBUTES_MISSING, stamp.decode(openssl.directory().read("message.p7")));
        EXPECT_EQ(hex(fromOctetString(stamp.get_content())), hex(data()));
        EXPECT_TRUE(stamp.verify(test::certificate("tsa_p256")))
            << "the signature is over the content itself";
    }
}

// A token has a content type of its own, which a stamp does not ask for, and a signing time, which it does.
TEST(TheirToken, IsReadAsAStampOfItsTSTInfo) {
    const OpenSSLAuthority openssl;
    const CBlob token = openssl.token_of(openssl.reply(openssl.query("-sha256 -cert"), "tsa_p256"));
    CMSStamp stamp;
    stamp.decode(token);
    EXPECT_TRUE(stamp.verify(test::certificate("tsa_p256")));
    EXPECT_EQ(stamp.get_signingTime().getGeneralizedTime().c_str(),
              signing_time_of(openssl.run("openssl asn1parse -inform DER -in token.der")));
}

// Intended: unlike a token a stamp may have several signers. The SignerInfos are a DER set, so which comes
// first is for the command to say.
TEST(TheirMessageOfTwoSigners, IsReadByTheFirst) {
    const OpenSSLAuthority openssl;
    openssl.directory().write("data", data());
    openssl.run(
        "openssl cms -sign -binary -nodetach -outform DER -in data -out message.p7 -signer tsa_rsa2048.pem "
        "-inkey "
        "tsa_rsa2048.key -signer tsa_p256.pem -inkey tsa_p256.key");
    const std::string text = openssl.run("openssl cms -cmsout -print -noout -inform DER -in message.p7");
    const std::regex serial("signerInfos:[\\s\\S]*?serialNumber: ([0-9A-Fx]+)");
    std::smatch found;
    ASSERT_TRUE(std::regex_search(text, found, serial)) << text;
    const bool rsa_first = found[1] == "17";
    CMSStamp stamp;
    stamp.decode(openssl.directory().read("message.p7"));
    EXPECT_EQ(hex(stamp.get_signerInfo().get_serialNumber()),
              rsa_first ? "11" : "00 f1 23 45 67 89 ab cd ef");
    EXPECT_TRUE(stamp.verify(test::certificate(rsa_first ? "tsa_rsa2048" : "tsa_p256")));
    EXPECT_FALSE(stamp.verify(test::certificate("other_tsa")));
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
