// CResponse: TimeStampResp of RFC 3161 2.4.2.

#include "tsp/response.h"

#include <gtest/gtest.h>

#include <new>

#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_token.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::blob_of;
using test::element;
using test::hex;
using test::join;
using test::MessageService;
using test::Octets;
using test::sample_token;
using test::sequence;
using test::TokenParts;

const Octets kGranted = sequence({element(0x02, "00")});

Octets response_with(const Octets& token) {
    return sequence({kGranted, token});
}

CResponse decoded(const Octets& octets) {
    CResponse response;
    response.decode(blob_of(octets));
    return response;
}

CToken token_of(const Octets& octets) {
    CToken token;
    token.decode(blob_of(octets));
    return token;
}

CPKIStatusInfo rejection() {
    CPKIStatusInfo status(PKIStatus_rejection);
    CPKIFailureInfo failure;
    failure.put_bit(2, true);  // badRequest, RFC 3161 2.4.2
    status.put_failureInfo(failure);
    status.put_statusString(CPKIFreeText(L"no", CLanguageTagDefaultRead()));
    return status;
}

// Intended: a response must be told that it grants.
TEST(CResponse, StartsAsARejectionWithoutToken) {
    const CResponse response;
    EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_rejection);
    EXPECT_EQ(response.get_timeStampToken(), nullptr);
    EXPECT_EQ(hex(response.encode()), "30 05 30 03 02 01 02");
}

// Encoding

TEST(CResponse, EncodesStatusTextAndFailureBits) {
    CResponse response;
    response.put_status(rejection());
    EXPECT_EQ(hex(response.encode()), "30 0f 30 0d 02 01 02 30 04 0c 02 6e 6f 03 02 05 20");
}

TEST(CResponse, EncodesATokenByteForByte) {
    CResponse response;
    response.put_status(CPKIStatusInfo(PKIStatus_granted));
    const CToken token = token_of(sample_token());
    response.put_timeStampToken(&token);
    EXPECT_EQ(hex(response.encode()), test::to_hex(response_with(sample_token())));
}

TEST(CResponse, ATokenNeitherSignedNorDecodedCannotBeEncoded) {
    CResponse response;
    const CToken token;
    response.put_timeStampToken(&token);
    EXPECT_CODE(E_FAIL, response.encode());
}

TEST(CResponse, ATokenThatIsNoContentInfoCannotBeEncoded) {
    CResponse response;
    CToken token = token_of(sample_token());
    token.put_nonce(nullptr);  // what is left to encode is the TSTInfo alone
    response.put_timeStampToken(&token);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, response.encode());
}

// Decoding

TEST(CResponse, DecodesStatusTextAndFailureBits) {
    CResponse response;
    response.decode(blob("30 0f 30 0d 02 01 02 30 04 0c 02 6e 6f 03 02 05 20"));
    EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_rejection);
    EXPECT_TRUE(response.get_status().get_failureInfo().get_bit(2));
    EXPECT_STREQ(response.get_status().get_statusString().front().get_value(), L"no");
    EXPECT_EQ(response.get_timeStampToken(), nullptr);
}

TEST(CResponse, DecodesATokenByteForByte) {
    TokenParts parts;
    parts.certificates = join({test::sample_certificate("02 01 01"), test::sample_certificate("02 01 09")});
    parts.tst_info = test::sample_tst_info(join({element(0x30, "02 01 01"), element(0x02, "2a")}));
    const CResponse response = decoded(response_with(sample_token(parts)));
    EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_granted);
    ASSERT_NE(response.get_timeStampToken(), nullptr);
    EXPECT_STREQ(response.get_timeStampToken()->get_policy(), "1.2.3");
    EXPECT_EQ(hex(response.get_timeStampToken()->encode()), test::to_hex(sample_token(parts)));
    EXPECT_EQ(hex(response.encode()), test::to_hex(response_with(sample_token(parts))));
}

// Intended: the token is written anew, in DER, before it is read.
TEST(CResponse, SortsCertificatesThatAreOutOfOrder) {
    TokenParts parts;
    const Octets low = test::sample_certificate("02 01 01");
    const Octets high = test::sample_certificate("02 01 09");
    parts.certificates = join({high, low});
    const CResponse response = decoded(response_with(sample_token(parts)));
    parts.certificates = join({low, high});
    EXPECT_EQ(hex(response.get_timeStampToken()->encode()), test::to_hex(sample_token(parts)));
}

// Intended: DER leaves the default out, and so the content is not what was signed any more.
TEST(CResponse, DropsAnExplicitDefaultFromTheContent) {
    TokenParts parts;
    parts.tst_info = test::sample_tst_info(element(0x01, "00"));
    const CResponse response = decoded(response_with(sample_token(parts)));
    EXPECT_EQ(hex(response.get_timeStampToken()->encode()), test::to_hex(sample_token()));
}

// Intended: nobody compares the two.
TEST(CResponse, StatusAndTokenNeedNotAgree) {
    const CResponse rejected = decoded(sequence({element(0x30, "02 01 02"), sample_token()}));
    EXPECT_EQ(rejected.get_status().get_pkiStatus(), PKIStatus_rejection);
    EXPECT_NE(rejected.get_timeStampToken(), nullptr);
    EXPECT_EQ(decoded(sequence({kGranted})).get_timeStampToken(), nullptr);
}

// Intended: a status is a number, read without its sign.
TEST(CResponse, TakesAnyStatusNumber) {
    EXPECT_EQ(decoded(sequence({element(0x30, "02 01 ff")})).get_status().get_pkiStatus(), 255u);
}

TEST(CResponse, IgnoresTrailingOctets) {
    const Octets octets = join({response_with(sample_token()), {0x30, 0x7f}});
    EXPECT_NE(decoded(octets).get_timeStampToken(), nullptr);
}

struct RefusedCase {
    const char* name;
    Octets response;
    HRESULT code = CRYPT_E_ASN1_INTERNAL;
};

class RefusedResponse : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedResponse, ThrowsItsCodeAndLosesTheOldContent) {
    MessageService service;
    CResponse response = decoded(response_with(sample_token()));
    EXPECT_CODE(GetParam().code, response.decode(blob_of(GetParam().response)));
    if (response.get_timeStampToken() != nullptr) {
        EXPECT_CODE(E_FAIL, response.get_timeStampToken()->verify(blob("30 00")));
    }
    EXPECT_EQ(service.open_messages(), 0);
}

Octets with_content_type(const Octets& type) {
    TokenParts parts;
    parts.content_type = type;
    return response_with(sample_token(parts));
}

Octets with_tst_info(const Octets& tst_info) {
    TokenParts parts;
    parts.tst_info = tst_info;
    return response_with(sample_token(parts));
}

Octets with_certificates(const Octets& certificates) {
    TokenParts parts;
    parts.certificates = certificates;
    return response_with(sample_token(parts));
}

Octets without_content() {
    TokenParts parts;
    parts.with_content = false;
    return response_with(sample_token(parts));
}

const RefusedCase kRefused[] = {
    {.name = "OneOctet", .response = {0x30}},
    {.name = "EmptySequence", .response = sequence({})},
    {.name = "NoSequence", .response = element(0x31, kGranted)},
    {.name = "ThirdElement", .response = sequence({kGranted, sample_token(), element(0x02, "01")})},
    {.name = "EmptyFreeText", .response = sequence({element(0x30, "02 01 00 30 00")})},
    {.name = "TokenIsNoContentInfo", .response = sequence({kGranted, element(0x30, "02 01 00")})},
    // A known content type without content.
    {.name = "ContentInfoWithoutContent",
     .response =
         sequence({kGranted, sequence({element(0x06, "2a 86 48 86 f7 0d 01 07 02"), element(0xa0, "")})})},
    {.name = "MalformedTSTInfo", .response = with_tst_info(element(0x30, ""))},
    // Attribute certificates of version 2 and other formats have no place in the type.
    {.name = "CertificateOfAnotherKind", .response = with_certificates(element(0xa2, "02 01 01"))},
    {.name = "NestedIndefiniteCertificates",
     .response = response_with([] {
         Octets token = sample_token();
         const Octets inner = sequence({element(0x02, "03"), element(0x31, ""), sequence({test::kDataType}),
                                        test::from_hex("a0 80 30 00 00 00"), element(0x31, "")});
         return sequence({element(0x06, "2a 86 48 86 f7 0d 01 07 02"), element(0xa0, inner)});
     }())},
    // These get as far as the token.
    {.name = "ContentTypeData", .response = with_content_type(test::kDataType), .code = CRYPT_E_BAD_MSG},
    {.name = "TokenWithoutContent", .response = without_content(), .code = TRUST_E_TIME_STAMP},
};

INSTANTIATE_TEST_SUITE_P(Messages, RefusedResponse, testing::ValuesIn(kRefused), test::case_name);

TEST(CResponse, FailedDecodeOfTheTokenLeavesStatusAndTokenWithItsBytes) {
    CResponse response;
    EXPECT_CODE(CRYPT_E_BAD_MSG, response.decode(blob_of(with_content_type(test::kDataType))));
    EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_granted);
    ASSERT_NE(response.get_timeStampToken(), nullptr);
    TokenParts parts;
    parts.content_type = test::kDataType;
    EXPECT_EQ(hex(response.get_timeStampToken()->encode()), test::to_hex(sample_token(parts)));
}

TEST(CResponse, FailedDecodeLeavesARejection) {
    CResponse response;
    response.put_status(CPKIStatusInfo(PKIStatus_granted));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, response.decode(blob("30 00")));
    EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_rejection);
}

// Intended: this code is the response's own, other classes have others.
TEST(CResponse, RefusesAnEmptyBlobAndChangesNothing) {
    CResponse response = decoded(response_with(sample_token()));
    EXPECT_CODE(E_INVALIDARG, response.decode(CBlob()));
    EXPECT_CODE(E_INVALIDARG, response.decode(CBlob(0ul)));
    EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_granted);
    EXPECT_NE(response.get_timeStampToken(), nullptr);
}

// The run-time counts in signed 32 bits.
TEST(CResponse, RefusesABlobOfTwoGigabytes) {
    CBlob huge;
    huge.resize_to(0x80000000ul);
    huge.pbData()[0] = 0x30;
    CResponse response;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, response.decode(huge));
}

TEST(CResponse, DecodesBytesThatLieInItself) {
    TokenParts outer;
    outer.tst_info = sequence({element(0x02, "01"), element(0x06, "2a 03"),
                               sequence({test::kSha256, element(0x04, response_with(sample_token()))}),
                               element(0x02, "05"), test::text_element(0x18, "20240102030405Z")});
    CResponse response = decoded(response_with(sample_token(outer)));
    response.decode(response.get_timeStampToken()->get_hashedMessage());
    EXPECT_EQ(hex(response.get_timeStampToken()->get_hashedMessage()), "aa bb");
}

// Put, copy, clear

TEST(CResponse, PutTakesItsOwnValueAndNullClears) {
    CResponse response = decoded(response_with(sample_token()));
    response.put_timeStampToken(response.get_timeStampToken());
    EXPECT_EQ(hex(response.encode()), test::to_hex(response_with(sample_token())));
    response.put_timeStampToken(nullptr);
    EXPECT_EQ(response.get_timeStampToken(), nullptr);
    response.put_timeStampToken(nullptr);
    EXPECT_EQ(hex(response.encode()), "30 05 30 03 02 01 00");
}

TEST(CResponse, CopyIsIndependent) {
    const CResponse original = decoded(response_with(sample_token()));
    CResponse copy(original);
    copy.put_timeStampToken(nullptr);
    copy.put_status(rejection());
    EXPECT_EQ(hex(original.encode()), test::to_hex(response_with(sample_token())));
}

TEST(CResponse, AssignmentReplacesEverything) {
    MessageService service;
    {
        const CResponse with_token = decoded(response_with(sample_token()));
        CResponse response;
        CResponse& result = response = with_token;
        EXPECT_EQ(&result, &response);
        EXPECT_EQ(hex(response.encode()), test::to_hex(response_with(sample_token())));
        response = with_token;
        EXPECT_EQ(hex(response.encode()), test::to_hex(response_with(sample_token())));
        response = CResponse();
        EXPECT_EQ(response.get_timeStampToken(), nullptr);
        EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_rejection);
    }
    EXPECT_EQ(service.open_messages(), 0);
}

TEST(CResponse, AssignmentClosesTheOldMessageBeforeItDuplicatesTheNew) {
    CResponse response = decoded(response_with(sample_token()));
    const CResponse other = decoded(response_with(sample_token()));
    MessageService service;
    response = other;
    EXPECT_EQ(service.calls(), (std::vector<std::string>{"CryptMsgClose", "CryptMsgDuplicate"}));
}

TEST(CResponse, SelfAssignmentDoesNothing) {
    CResponse response = decoded(response_with(sample_token()));
    MessageService service;
    const CResponse& self = response;
    response = self;
    EXPECT_TRUE(service.calls().empty());
}

// Intended: the object may not even be destroyed afterwards, so it lives in raw storage here.
TEST(CResponse, ClearDestroysTheContentForGood) {
    MessageService service;
    alignas(CResponse) unsigned char storage[sizeof(CResponse)];
    auto* response = new (storage) CResponse(decoded(response_with(sample_token())));
    const auto pointer_before = *reinterpret_cast<void**>(storage);
    response->clear();
    EXPECT_EQ(*reinterpret_cast<void**>(storage), pointer_before);
    EXPECT_EQ(service.open_messages(), 0);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
