// The Authenticode exchange through the library as an application has it.

#include <gtest/gtest.h>

#include "tests/support/blob.h"
#include "tests/support/result_code.h"
#include "tests/support/test_keys.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"

namespace {

using namespace Quillmark;
using namespace Quillmark::ASN1;
using namespace Quillmark::PKI::TSP;
using test::blob;

constexpr char kTimeStampRequest[] = "1.3.6.1.4.1.311.3.2.1";
constexpr char kData[] = "1.2.840.113549.1.7.1";
constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";

/// What a client sends for the signature value of a file.
CBlob request_for(const CBlob& signature) {
    CMSRequest request(kTimeStampRequest, CContentInfo(kData, toOctetString(signature)));
    CAttributes attributes;
    attributes.push_back(CAttribute("2.999.1"));
    attributes.back().add(blob("0c0161"));
    request.put_attributes(&attributes);
    return request.encode();
}

/// What an authority answers.
CBlob answer_to(const CBlob& bytes, const CDateTime& time) {
    CMSRequest request;
    request.decode(bytes);
    CMSStamp stamp(request.get_contentInfo().get_content(), time);
    CBlobList chain;
    chain.push_back(test::certificate("tsa_p256"));
    chain.push_back(test::certificate("ca"));
    stamp.put_certificates(&chain);
    const test::TestKey key("tsa_p256");
    stamp.sign(key.provider(), AT_SIGNATURE, test::certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256));
    return stamp.encode();
}

TEST(AuthenticodeBoundary, AStampTravelsFromRequestToVerifiedAnswer) {
    const CBlob signature = blob("00112233445566778899aabbccddeeff");
    const CDateTime time("20240229235959Z");
    CMSStamp stamp;
    stamp.decode(answer_to(request_for(signature), time));
    EXPECT_TRUE(stamp.verify(test::certificate("tsa_p256")));
    EXPECT_FALSE(stamp.verify(test::certificate("other_tsa")));
    EXPECT_TRUE(fromOctetString(stamp.get_content()) == signature);
    EXPECT_TRUE(stamp.get_signingTime() == time);
    ASSERT_NE(stamp.get_certificates(), nullptr);
    EXPECT_EQ(stamp.get_certificates()->size(), 2u);
    EXPECT_NE(stamp.get_signerInfo().get_signature().cbData(), 0u);
}

TEST(AuthenticodeBoundary, RequestsAreValues) {
    CMSRequest request;
    request.decode(request_for(blob("aabb")));
    EXPECT_STREQ(request.get_timeStampAlgorithm(), kTimeStampRequest);
    ASSERT_NE(request.get_attributes(), nullptr);
    CMSRequest copy(request);
    request.put_timeStampAlgorithm("1.2.3");
    request.put_contentInfo(CContentInfo(kData, toOctetString(blob("cc"))));
    request.put_attributes(nullptr);
    EXPECT_EQ(copy.encode(), request_for(blob("aabb")));
    copy = request;
    EXPECT_EQ(copy.encode(), request.encode());
    copy.clear();
}

TEST(AuthenticodeBoundary, StampsAreValues) {
    CMSStamp stamp(toOctetString(blob("aabb")), CDateTime("20240229235959Z"));
    {
        const test::TestKey key("tsa_p256");
        stamp.sign(key.provider(), AT_SIGNATURE, test::certificate("tsa_p256"),
                   CAlgorithmIdentifierEx(kSha256));
    }
    CMSStamp copy(stamp);
    copy.put_content(toOctetString(blob("cc")));
    copy.put_signingTime(CDateTime("20250101000000Z"));
    copy.put_certificates(nullptr);
    EXPECT_TRUE(copy.verify(test::certificate("tsa_p256")));
    EXPECT_NE(copy.encode(), stamp.encode());
    copy = stamp;
    EXPECT_EQ(copy.encode(), stamp.encode());
    copy.clear();
}

TEST(AuthenticodeBoundary, ResultCodesCrossAsExceptions) {
    CMSRequest request;
    CMSStamp stamp;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, request.decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_EOD, stamp.decode(CBlob()));
    EXPECT_CODE(E_FAIL, stamp.encode());
}

}  // namespace
