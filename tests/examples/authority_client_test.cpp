// The authority, asked with the classes that a client uses. curl carries the octets.

#include <gtest/gtest.h>

#include <openssl/evp.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/blob.h"
#include "tests/support/command.h"
#include "tests/support/test_keys.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"
#include "tsp/request.h"
#include "tsp/response.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::certificate;
using test::pki_path;

constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";
constexpr char kData[] = "1.2.840.113549.1.7.1";
constexpr char kTimeStampAlgorithm[] = "1.3.6.1.4.1.311.3.2.1";

/// The authority with the key tsa_p256, for the life of the object. It ends by itself should that be cut
/// short.
class Server {
  public:
    Server() {
        directory_.run(
            "no_proxy=127.0.0.1 timeout 120 " QUILLMARK_EXAMPLES "/authority --key " +
            pki_path("tsa_p256.key") + " --certificate " + pki_path("tsa_p256.pem") + " --chain " +
            pki_path("ca.pem") +
            " --policy 2.999.1 --policy 2.999.2 --accuracy 1.5 --tsa-name --ordering --serials serials"
            " --address 127.0.0.1 --port 0 > log 2> errors & echo $! > process");
        wait_for_url();
    }
    ~Server() { directory_.run("kill $(cat process)"); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    CBlob post(const CBlob& body, const std::string& content_type) const {
        directory_.write("body", body);
        const test::CommandResult done =
            directory_.run("curl -sS --fail --noproxy '*' -H 'Content-Type: " + content_type +
                           "' --data-binary @body -o answer " + url_);
        EXPECT_EQ(done.status, 0) << done.output;
        return directory_.read("answer");
    }

  private:
    void wait_for_url() {
        for (int attempt = 0; attempt < 1000; ++attempt) {
            std::string line;
            if (std::getline(std::ifstream(directory_.path() / "log"), line)) {
                url_ = line.substr(line.find("http:"));
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        throw std::runtime_error("the authority does not listen: " + directory_.run("cat errors").output);
    }

    test::ScratchDirectory directory_;
    std::string url_;
};

CBlob digest() {
    CBlob octets;
    octets.readFromHexString("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    return octets;
}

CBigInteger number(unsigned char octet) {
    return CBigInteger(&octet, 1);
}

CResponse stamp(const Server& server, const CRequest& request) {
    CResponse response;
    response.decode(server.post(request.encode(), "application/timestamp-query"));
    return response;
}

std::string base64(const CBlob& octets) {
    std::vector<unsigned char> text(4 * ((octets.cbData() + 2) / 3) + 1);
    const int size = EVP_EncodeBlock(text.data(), octets.pbData(), static_cast<int>(octets.cbData()));
    return std::string(text.begin(), text.begin() + size);
}

CBlob from_base64(const CBlob& text) {
    std::string one_line(text.pbData(), text.pbData() + text.cbData());
    std::erase_if(one_line, [](char character) { return character == '\r' || character == '\n'; });
    std::vector<unsigned char> octets(one_line.size());
    const int size = EVP_DecodeBlock(octets.data(), reinterpret_cast<const unsigned char*>(one_line.data()),
                                     static_cast<int>(one_line.size()));
    if (size < 0) {
        throw std::runtime_error("no base64: " + one_line);
    }
    const auto padding = std::count(one_line.end() - 2, one_line.end(), '=');
    return CBlob(octets.data(), static_cast<unsigned long>(size - padding));
}

/// The DER of an OCTET STRING of 64 octets, as a signature value is one.
CBlob signature_value() {
    std::vector<unsigned char> der{0x04, 64};
    for (unsigned char octet = 0; octet < 64; ++octet) {
        der.push_back(octet);
    }
    return CBlob(der.data(), der.size());
}

TEST(AuthorityClient, GetsTheStampThatItAskedFor) {
    const Server server;
    CRequest request(CAlgorithmIdentifierEx(kSha256), digest(), true);
    const CBigInteger nonce = number(0x5A);
    request.put_nonce(&nonce);
    request.put_reqPolicy("2.999.2");
    const CDateTime before = CDateTime::Now();
    const CResponse response = stamp(server, request);

    ASSERT_EQ(response.get_status().get_pkiStatus(), PKIStatus_granted);
    const CToken* token = response.get_timeStampToken();
    ASSERT_NE(token, nullptr);
    EXPECT_TRUE(token->verify(certificate("tsa_p256")));
    EXPECT_FALSE(token->verify(certificate("other_tsa")));
    EXPECT_STREQ(token->get_policy(), "2.999.2");
    EXPECT_EQ(token->get_hashedMessage(), digest());
    ASSERT_NE(token->get_nonce(), nullptr);
    EXPECT_EQ(*token->get_nonce(), nonce);
    EXPECT_TRUE(token->get_ordering());
    EXPECT_NE(token->get_tsa(), nullptr);
    ASSERT_NE(token->get_accuracy(), nullptr);
    EXPECT_EQ(token->get_accuracy()->seconds, 1u);
    EXPECT_EQ(token->get_accuracy()->millis, 500u);
    ASSERT_NE(token->get_certificates(), nullptr);
    EXPECT_EQ(token->get_certificates()->size(), 2u);
    // The fraction of a second in a stamp may be cut.
    EXPECT_LE(before - CDateTimeSpan(1, 0), token->get_genTime());
    EXPECT_LE(token->get_genTime(), CDateTime::Now());
}

TEST(AuthorityClient, GetsNoMoreThanItAskedFor) {
    const Server server;
    const CResponse response = stamp(server, CRequest(CAlgorithmIdentifierEx(kSha256), digest(), false));
    const CToken* token = response.get_timeStampToken();
    ASSERT_NE(token, nullptr);
    EXPECT_STREQ(token->get_policy(), "2.999.1");
    EXPECT_EQ(token->get_nonce(), nullptr);
    EXPECT_EQ(token->get_certificates(), nullptr);
    EXPECT_TRUE(token->verify(certificate("tsa_p256")));
}

TEST(AuthorityClient, IsToldWhyThereIsNoStamp) {
    const Server server;
    CRequest request(CAlgorithmIdentifierEx(kSha256), digest(), false);
    request.put_reqPolicy("1.2.3");
    const CResponse response = stamp(server, request);
    EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_rejection);
    EXPECT_TRUE(response.get_status().get_failureInfo().get_bit(15)) << "unacceptedPolicy (RFC 3161 2.4.2)";
    EXPECT_FALSE(response.get_status().get_statusString().empty());
    EXPECT_EQ(response.get_timeStampToken(), nullptr);
}

TEST(AuthorityClient, GetsAStampOfAuthenticode) {
    const Server server;
    const CMSRequest request(kTimeStampAlgorithm, CContentInfo(kData, signature_value()));
    const std::string text = base64(request.encode());
    const CDateTime before = CDateTime::Now();
    const CBlob answer = server.post(CBlob(reinterpret_cast<const unsigned char*>(text.data()), text.size()),
                                     "application/octet-stream");

    CMSStamp stamp;
    stamp.decode(from_base64(answer));
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
    EXPECT_FALSE(stamp.verify(certificate("other_tsa")));
    EXPECT_EQ(stamp.get_content(), signature_value());
    // A signing time has whole seconds (X.680 47).
    EXPECT_LE(before - CDateTimeSpan(1, 0), stamp.get_signingTime());
    EXPECT_LE(stamp.get_signingTime(), CDateTime::Now());
    ASSERT_NE(stamp.get_certificates(), nullptr);
    EXPECT_EQ(stamp.get_certificates()->size(), 2u);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
