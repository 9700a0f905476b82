// Requests of `openssl ts -query` in CRequest, and ours in `openssl ts`.

#include "tsp/request.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/interop/authority.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tsp/response.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::hex;
using test::OpenSSLAuthority;

struct QueryCase {
    const char* name;
    const char* options;
    const char* algorithm;
    unsigned long hash_octets;
};

class OpenSSLQuery : public testing::TestWithParam<QueryCase> {};

TEST_P(OpenSSLQuery, ComesBackByteForByte) {
    const OpenSSLAuthority openssl;
    const CBlob bytes = openssl.query(GetParam().options);
    CRequest request;
    request.decode(bytes);
    EXPECT_STREQ(request.get_hashAlgorithm().get_algorithm(), GetParam().algorithm);
    EXPECT_EQ(hex(request.get_hashAlgorithm().get_parameters()), "05 00");
    EXPECT_EQ(request.get_hashedMessage().cbData(), GetParam().hash_octets);
    EXPECT_EQ(hex(request.encode()), hex(bytes));
}

constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";

const QueryCase kQueries[] = {
    {.name = "Sha1", .options = "-sha1", .algorithm = "1.3.14.3.2.26", .hash_octets = 20},
    {.name = "Sha224", .options = "-sha224", .algorithm = "2.16.840.1.101.3.4.2.4", .hash_octets = 28},
    {.name = "Sha256", .options = "-sha256", .algorithm = kSha256, .hash_octets = 32},
    {.name = "Sha384", .options = "-sha384", .algorithm = "2.16.840.1.101.3.4.2.2", .hash_octets = 48},
    {.name = "Sha512", .options = "-sha512", .algorithm = "2.16.840.1.101.3.4.2.3", .hash_octets = 64},
    {.name = "Sha512_256",
     .options = "-sha512-256",
     .algorithm = "2.16.840.1.101.3.4.2.6",
     .hash_octets = 32},
    {.name = "Sha3_256", .options = "-sha3-256", .algorithm = "2.16.840.1.101.3.4.2.8", .hash_octets = 32},
    {.name = "Sha3_512", .options = "-sha3-512", .algorithm = "2.16.840.1.101.3.4.2.10", .hash_octets = 64},
    {.name = "Md5", .options = "-md5", .algorithm = "1.2.840.113549.2.5", .hash_octets = 16},
    {.name = "Sm3", .options = "-sm3", .algorithm = "1.2.156.10197.1.401", .hash_octets = 32},
    {.name = "WithoutNonce", .options = "-sha256 -no_nonce", .algorithm = kSha256, .hash_octets = 32},
    {.name = "WithCertReq", .options = "-sha256 -cert", .algorithm = kSha256, .hash_octets = 32},
    {.name = "WithPolicy", .options = "-sha256 -tspolicy 1.2.3.4.1", .algorithm = kSha256, .hash_octets = 32},
    {.name = "WithLargestArcs",
     .options = "-sha256 -tspolicy 2.4294967215.4294967295.0.127.128.16383.16384",
     .algorithm = kSha256,
     .hash_octets = 32},
    {.name = "WithPolicyOfManyArcs",
     .options = "-sha256 -tspolicy 1.3.6.1.4.1.99999.1.2.3.4.5.6.7.8.9.10.11.12.13.14.15.16.17.18.19.20",
     .algorithm = kSha256,
     .hash_octets = 32},
    {.name = "WithEverything",
     .options = "-sha512 -cert -tspolicy 1.2.3.4.1",
     .algorithm = "2.16.840.1.101.3.4.2.3",
     .hash_octets = 64},
    {.name = "WithNothing",
     .options = "-sha256 -no_nonce -tspolicy 0.39.1",
     .algorithm = kSha256,
     .hash_octets = 32},
};

INSTANTIATE_TEST_SUITE_P(Options, OpenSSLQuery, testing::ValuesIn(kQueries), test::case_name);

TEST(OpenSSLQueryFields, AreRead) {
    const OpenSSLAuthority openssl;
    CRequest request;
    request.decode(openssl.query("-sha256 -cert -tspolicy 1.2.3.4.1"));
    EXPECT_EQ(request.get_version(), 1u);
    EXPECT_TRUE(request.get_certReq());
    EXPECT_STREQ(request.get_reqPolicy(), "1.2.3.4.1");
    EXPECT_NE(request.get_nonce(), nullptr);
    EXPECT_EQ(request.get_extensions(), nullptr);
    request.decode(openssl.query("-sha256 -no_nonce"));
    EXPECT_FALSE(request.get_certReq());
    EXPECT_EQ(request.get_reqPolicy(), nullptr);
    EXPECT_EQ(request.get_nonce(), nullptr);
}

TEST(OpenSSLQueryFields, TakeADigestGivenByTheCaller) {
    const OpenSSLAuthority openssl;
    openssl.run("openssl ts -query -sha1 -digest 00112233445566778899aabbccddeeff00112233 -out request.tsq");
    const CBlob bytes = openssl.directory().read("request.tsq");
    CRequest request;
    request.decode(bytes);
    EXPECT_EQ(hex(request.get_hashedMessage()),
              "00 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff 00 11 22 33");
    EXPECT_EQ(hex(request.encode()), hex(bytes));
}

/// A request of ours for the octets "data".
CRequest our_request(const OpenSSLAuthority& openssl) {
    openssl.run("printf data > data && openssl dgst -sha256 -binary -out digest data");
    CAlgorithmIdentifierEx algorithm(kSha256);
    return CRequest(algorithm, openssl.directory().read("digest"), true);
}

void expect_answered(const OpenSSLAuthority& openssl, const CRequest& request) {
    const CBlob bytes = request.encode();
    CResponse response;
    response.decode(openssl.reply(bytes, "tsa_p256"));
    ASSERT_EQ(response.get_status().get_pkiStatus(), PKIStatus_granted);
    ASSERT_NE(response.get_timeStampToken(), nullptr);
    EXPECT_EQ(response.get_timeStampToken()->get_hashedMessage(), request.get_hashedMessage());
    EXPECT_TRUE(response.get_timeStampToken()->verify(test::certificate("tsa_p256")));
    openssl.run("openssl ts -verify -queryfile request.tsq -in response.tsr -CAfile ca.pem");
}

TEST(OurRequest, IsAnswered) {
    const OpenSSLAuthority openssl;
    expect_answered(openssl, our_request(openssl));
}

TEST(OurRequest, IsAnsweredWithItsNonceAndPolicy) {
    const OpenSSLAuthority openssl;
    CRequest request = our_request(openssl);
    const CBlob octets = test::blob("7f 01 02 03 04 05 06 07 08");
    const CBigInteger nonce(octets.pbData(), octets.cbData());
    request.put_nonce(&nonce);
    request.put_reqPolicy("1.2.3.4.1");
    expect_answered(openssl, request);
    CResponse response;
    response.decode(openssl.directory().read("response.tsr"));
    ASSERT_NE(response.get_timeStampToken()->get_nonce(), nullptr);
    EXPECT_EQ(hex(*response.get_timeStampToken()->get_nonce()), hex(nonce));
    EXPECT_STREQ(response.get_timeStampToken()->get_policy(), "1.2.3.4.1");
}

TEST(OurRequest, ReadsTheSameInTheCommandsOwnWords) {
    const OpenSSLAuthority openssl;
    CRequest request = our_request(openssl);
    request.put_reqPolicy("1.2.3.9.9");
    CExtensions extensions;
    extensions.insert(CExtension(CExtValue("1.2.3.9.8", test::blob("05 00")), true));
    request.put_extensions(&extensions);
    openssl.directory().write("request.tsq", request.encode());
    const std::string text = openssl.run("openssl ts -query -in request.tsq -text");
    EXPECT_NE(text.find("Version: 1"), std::string::npos) << text;
    EXPECT_NE(text.find("Hash Algorithm: sha256"), std::string::npos) << text;
    EXPECT_NE(text.find("Policy OID: 1.2.3.9.9"), std::string::npos) << text;
    EXPECT_NE(text.find("Nonce: unspecified"), std::string::npos) << text;
    EXPECT_NE(text.find("Certificate required: yes"), std::string::npos) << text;
    EXPECT_NE(text.find("1.2.3.9.8: critical"), std::string::npos) << text;
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
