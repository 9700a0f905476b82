// The library as an application has it: through Quillmark::tsp alone. What is not exported does not link
// here, and an exception that is not the same type on both sides is not caught.

#include <gtest/gtest.h>

#include <cstring>

#include "asn1/name.h"
#include "asn1/signing_certificate.h"
#include "runtime/ber_decode.h"
#include "runtime/context.h"
#include "runtime/message_buffer.h"
#include "tests/support/test_keys.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"
#include "values/datetime.h"
#include "values/result.h"

namespace {

using namespace Quillmark;
using namespace Quillmark::ASN1;
using namespace Quillmark::PKI::TSP;

constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";
constexpr unsigned char kHash[32] = {1, 2, 3};
constexpr unsigned char kNonce[] = {0x2a};

CRequest make_request() {
    CRequest request(CAlgorithmIdentifierEx(kSha256), CBlob(kHash, sizeof kHash), true);
    const CBigInteger nonce(kNonce, sizeof kNonce);
    request.put_nonce(&nonce);
    return request;
}

CToken make_token(const CRequest& request) {
    CToken token("1.2.3.4", request.get_hashAlgorithm(), request.get_hashedMessage(),
                 CBigInteger(kNonce, sizeof kNonce), CDateTime::Now(), false);
    const CAccuracy accuracy{1, 0, 0};
    token.put_accuracy(&accuracy);
    token.put_nonce(request.get_nonce());
    CGeneralName name;
    name.put_dNSName(L"tsa.example");
    token.put_tsa(&name);
    CAttributes attributes;
    attributes.push_back(CAttribute("1.2.840.113549.1.9.5"));
    attributes.back().add(CAttrSigningTime(CDateTime::Now()));
    token.put_signedAttributes(&attributes);
    CBlobList certificates;
    certificates.push_back(test::certificate("tsa_p256"));
    token.put_certificates(&certificates);
    const test::TestKey key("tsa_p256");
    token.sign(key.provider(), AT_SIGNATURE, test::certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256));
    return token;
}

TEST(Boundary, AStampTravelsFromRequestToVerifiedToken) {
    CRequest received;
    received.decode(make_request().encode());

    const CToken token = make_token(received);
    CResponse answer;
    answer.put_status(CPKIStatusInfo(PKIStatus_granted));
    answer.put_timeStampToken(&token);

    CResponse response;
    response.decode(answer.encode());
    ASSERT_EQ(response.get_status().get_pkiStatus(), PKIStatus_granted);
    const CToken* stamp = response.get_timeStampToken();
    ASSERT_NE(stamp, nullptr);
    EXPECT_TRUE(stamp->verify(test::certificate("tsa_p256")));
    EXPECT_FALSE(stamp->verify(test::certificate("other_tsa")));
    EXPECT_TRUE(stamp->get_hashedMessage() == CBlob(kHash, sizeof kHash));
    EXPECT_TRUE(*stamp->get_nonce() == *received.get_nonce());
    EXPECT_TRUE(*stamp->get_accuracy() == (CAccuracy{1, 0, 0}));
    EXPECT_STREQ(stamp->get_tsa()->get_dNSName(), L"tsa.example");
    EXPECT_EQ(stamp->get_certificates()->size(), 1u);
    EXPECT_TRUE(stamp->encode() == token.encode());
}

TEST(Boundary, ResultCodesCrossAsExceptions) {
    HRESULT code = S_OK;
    try {
        CRequest().decode(CBlob());
    } catch (const CAtlException& failure) {
        code = failure;
    }
    EXPECT_EQ(code, CRYPT_E_ASN1_EOD);
    EXPECT_STREQ(result_name(code), "CRYPT_E_ASN1_EOD");
    EXPECT_THROW(CToken().encode(), ATL::CAtlException);
}

// The object layer is linked into the application; the run-time below it is not.
TEST(Boundary, TheObjectLayerWorksOnTheSharedRunTime) {
    CName name;
    name.fromString(L"CN=Authority,O=Example");
    CName back;
    back.decode(name.encode());
    EXPECT_TRUE(back.encode() == name.encode());
    EXPECT_THROW(back.decode(CBlob(kNonce, sizeof kNonce)), CAtlException);
}

TEST(Boundary, RunTimeExceptionsCrossToo) {
    const auto allocate = g_malloc_func;
    g_malloc_func = [](void* /*memContext*/, size_t /*size*/) -> void* { return nullptr; };
    int status = RT_OK;
    try {
        ASN1BEREncodeBuffer buffer;
    } catch (const ASN1MessageBuffer::RTLError& failure) {
        status = failure.getStatus();
    }
    g_malloc_func = allocate;
    EXPECT_EQ(status, RT_E_NOMEM);
}

TEST(Boundary, MemoryOfContextsComesFromTheHooks) {
    static int allocations = 0;
    g_malloc_func = [](void* memContext, size_t size) {
        ++allocations;
        return rtDefaultMalloc(memContext, size);
    };
    (void)make_request().encode();
    g_malloc_func = rtDefaultMalloc;
    EXPECT_GT(allocations, 0);
}

TEST(Boundary, TheRunTimeIsUsableByName) {
    const unsigned char message[] = {0x02, 0x01, 0x2a};
    ASN1CTXT context;
    ASSERT_EQ(rtInitContext(&context, nullptr), RT_OK);
    ASSERT_EQ(xd_setp(&context, message, sizeof message, nullptr, nullptr), RT_OK);
    int32_t number = 0;
    EXPECT_EQ(xd_integer(&context, &number, ASN1EXPL, 0), RT_OK);
    EXPECT_EQ(number, 42);
    rtFreeContext(&context);
}

TEST(Boundary, SpansAreData) {
    EXPECT_TRUE(CDateTimeSpan::oneDay == CDateTimeSpan::OneHour() * 24);
    EXPECT_EQ(&CDateTimeSpan::oneDay, &CDateTimeSpan::OneDay());
}

}  // namespace
