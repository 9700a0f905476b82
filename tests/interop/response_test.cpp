// Responses of `openssl ts -reply` in CResponse.

#include "tsp/response.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/interop/authority.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tsp/request.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::hex;
using test::OpenSSLAuthority;

struct ReplyCase {
    const char* name;
    const char* key;
    const char* changes;  ///< sed commands for the configuration
    const char* query = "-sha256";
};

/// Writes the configuration of the case; its section is "tsa_" and the key.
void configure(const OpenSSLAuthority& openssl, const std::string& changes) {
    openssl.run("sed -e '" + changes + "' tsa.cnf > case.cnf");
}

class OpenSSLReply : public testing::TestWithParam<ReplyCase> {};

TEST_P(OpenSSLReply, DecodesVerifiesAndComesBackByteForByte) {
    const OpenSSLAuthority openssl;
    configure(openssl, GetParam().changes);
    const std::string section = std::string("tsa_") + GetParam().key;
    const CBlob request_bytes = openssl.query(GetParam().query);
    const CBlob bytes = openssl.reply(request_bytes, section, "case.cnf");

    CResponse response;
    response.decode(bytes);
    ASSERT_EQ(response.get_status().get_pkiStatus(), PKIStatus_granted);
    const CToken* token = response.get_timeStampToken();
    ASSERT_NE(token, nullptr);
    EXPECT_TRUE(token->verify(test::certificate(section)));
    EXPECT_FALSE(token->verify(test::certificate("other_tsa")));
    EXPECT_EQ(hex(token->encode()), hex(openssl.token_of(bytes)));
    EXPECT_EQ(hex(response.encode()), hex(bytes));
    EXPECT_EQ(token->get_version(), 1u);
    EXPECT_LT(CDateTime(2024u, 1u, 1u, 0u, 0u, 0u, 0u, 0u), token->get_genTime());
    EXPECT_NE(token->get_signedAttributes(), nullptr);
    EXPECT_EQ(token->get_unsignedAttributes(), nullptr);
}

const ReplyCase kReplies[] = {
    {.name = "Rsa", .key = "rsa2048", .changes = ""},
    {.name = "P256", .key = "p256", .changes = ""},
    {.name = "P384", .key = "p384", .changes = ""},
    {.name = "WithTheSignersCertificate", .key = "p256", .changes = "/^certs/d", .query = "-sha256 -cert"},
    {.name = "WithoutNonce", .key = "p256", .changes = "", .query = "-sha256 -no_nonce"},
    {.name = "Ordering", .key = "p256", .changes = "s/^ordering = no/ordering = yes/"},
    {.name = "WithoutTsaName", .key = "p256", .changes = "s/^tsa_name = yes/tsa_name = no/"},
    {.name = "WithoutAccuracy", .key = "p256", .changes = "/^accuracy/d"},
    {.name = "AccuracyOfSeconds", .key = "p256", .changes = "s/^accuracy.*/accuracy = secs:300/"},
    {.name = "AccuracyOfMicroseconds", .key = "p256", .changes = "s/^accuracy.*/accuracy = microsecs:999/"},
    {.name = "AccuracyInFull",
     .key = "p256",
     .changes = "s/^accuracy.*/accuracy = secs:1, millisecs:999, microsecs:1/"},
    {.name = "FractionOfASecond",
     .key = "p256",
     .changes = "s/^ordering/clock_precision_digits = 6\\nordering/"},
    {.name = "ChainOfIdentifiers",
     .key = "p256",
     .changes = "s/^ess_cert_id_chain = no/ess_cert_id_chain = yes/"},
    {.name = "IdentifierBySha1",
     .key = "p256",
     .changes = "s/^ess_cert_id_alg = sha256/ess_cert_id_alg = sha1/"},
    {.name = "IdentifierBySha512",
     .key = "p256",
     .changes = "s/^ess_cert_id_alg = sha256/ess_cert_id_alg = sha512/"},
    {.name = "SignedWithSha512",
     .key = "p256",
     .changes = "s/^signer_digest = sha256/signer_digest = sha512/"},
    {.name = "SignedWithSha1",
     .key = "rsa2048",
     .changes = "s/^signer_digest = sha256/signer_digest = sha1/"},
};

INSTANTIATE_TEST_SUITE_P(Configurations, OpenSSLReply, testing::ValuesIn(kReplies), test::case_name);

TEST(OpenSSLReplyFields, AreRead) {
    const OpenSSLAuthority openssl;
    configure(openssl,
              "s/^ordering = no/ordering = yes/; s/^accuracy.*/accuracy = secs:1, millisecs:2, microsecs:3/");
    const CBlob request_bytes = openssl.query("-sha384 -cert");
    CRequest request;
    request.decode(request_bytes);
    CResponse response;
    response.decode(openssl.reply(request_bytes, "tsa_rsa2048", "case.cnf"));
    const CToken& token = *response.get_timeStampToken();
    EXPECT_STREQ(token.get_policy(), "1.2.3.4.1");
    EXPECT_TRUE(token.get_hashAlgorithm() == request.get_hashAlgorithm());
    EXPECT_EQ(token.get_hashedMessage(), request.get_hashedMessage());
    ASSERT_NE(token.get_nonce(), nullptr);
    EXPECT_EQ(hex(*token.get_nonce()), hex(*request.get_nonce()));
    EXPECT_TRUE(token.get_ordering());
    ASSERT_NE(token.get_accuracy(), nullptr);
    EXPECT_TRUE(*token.get_accuracy() == (CAccuracy{1, 2, 3}));
    ASSERT_NE(token.get_tsa(), nullptr);
    EXPECT_NE(token.get_tsa()->get_directoryName(), nullptr);
    EXPECT_EQ(hex(token.get_signerInfo().get_serialNumber()), "11");
    ASSERT_NE(token.get_certificates(), nullptr);
    EXPECT_EQ(token.get_certificates()->size(), 2u);
}

// Certificates come in the order of the authority's files. SET OF is sorted in DER (X.690 11.6), and nothing
// but that happens to them.
TEST(OpenSSLReplyCertificates, AreSortedAndNothingElseChanges) {
    const OpenSSLAuthority openssl;
    openssl.run("cat ca.pem other_ca.pem tsa_p384.pem other_tsa.pem tsa_rsa2048.pem > certs.pem");
    configure(openssl, "s/^certs = .*/certs = .\\/certs.pem/");
    const CBlob bytes = openssl.reply(openssl.query("-sha256 -cert"), "tsa_p256", "case.cnf");
    const test::Octets sent = test::octets(openssl.token_of(bytes));

    CToken as_sent;
    as_sent.decode(test::blob_of(sent));
    std::vector<test::Octets> certificates;
    for (const CBlob& certificate : *as_sent.get_certificates()) {
        certificates.push_back(test::octets(certificate));
    }
    ASSERT_EQ(certificates.size(), 6u);
    ASSERT_FALSE(std::is_sorted(certificates.begin(), certificates.end())) << "the order is no test";
    test::Octets run;
    for (const test::Octets& certificate : certificates) {
        run.insert(run.end(), certificate.begin(), certificate.end());
    }
    test::Octets expected = sent;
    auto place = std::search(expected.begin(), expected.end(), run.begin(), run.end());
    ASSERT_NE(place, expected.end());
    std::sort(certificates.begin(), certificates.end());
    for (const test::Octets& certificate : certificates) {
        place = std::copy(certificate.begin(), certificate.end(), place);
    }

    CResponse response;
    response.decode(bytes);
    EXPECT_EQ(hex(response.get_timeStampToken()->encode()), test::to_hex(expected));
    EXPECT_TRUE(response.get_timeStampToken()->verify(test::certificate("tsa_p256")));
    openssl.directory().write("response.tsr", response.encode());
    openssl.run("openssl ts -verify -queryfile request.tsq -in response.tsr -CAfile ca.pem");
}

struct RejectionCase {
    const char* name;
    const char* query;
    unsigned failure_bit;  ///< RFC 3161 2.4.2
};

class OpenSSLRejection : public testing::TestWithParam<RejectionCase> {};

TEST_P(OpenSSLRejection, GivesItsReasonAndComesBackByteForByte) {
    const OpenSSLAuthority openssl;
    const CBlob bytes = openssl.reply(openssl.query(GetParam().query), "tsa_p256");
    CResponse response;
    response.decode(bytes);
    EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_rejection);
    EXPECT_TRUE(response.get_status().get_failureInfo().get_bit(GetParam().failure_bit));
    EXPECT_FALSE(response.get_status().get_statusString().empty());
    EXPECT_EQ(response.get_timeStampToken(), nullptr);
    EXPECT_EQ(hex(response.encode()), hex(bytes));
}

const RejectionCase kRejections[] = {
    {.name = "BadAlgorithm", .query = "-md5", .failure_bit = 0},
    {.name = "UnacceptedPolicy", .query = "-sha256 -tspolicy 1.2.3.9.9", .failure_bit = 15},
};

INSTANTIATE_TEST_SUITE_P(Reasons, OpenSSLRejection, testing::ValuesIn(kRejections), test::case_name);

}  // namespace
}  // namespace Quillmark::PKI::TSP
