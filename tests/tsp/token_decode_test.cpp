// CToken::decode: what the message service finds in the bytes becomes the token.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_token.h"
#include "tsp/token.h"

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

const Octets kUnknownAlgorithm = sequence({element(0x06, "2a 03 04")});

CToken decoded(const Octets& octets) {
    CToken token;
    token.decode(blob_of(octets));
    return token;
}

/// An Attribute with the type 1.2.`last` and the values.
Octets attribute(std::uint8_t last, const Octets& values) {
    return sequence({element(0x06, Octets{0x2a, last}), element(0x31, values)});
}

TEST(CTokenDecode, AsksTheServiceStepByStep) {
    MessageService service;
    const CToken token = decoded(sample_token());
    EXPECT_EQ(service.calls(),
              (std::vector<std::string>{"CryptMsgOpenToDecode", "CryptMsgUpdate", "CryptMsgGetParam 2",
                                        "CryptMsgGetParam 2", "CryptMsgGetParam 4", "CryptMsgGetParam 4",
                                        "CryptMsgGetParam 28", "CryptMsgGetParam 28", "CryptMsgGetParam 9",
                                        "CryptMsgGetParam 10", "CryptMsgGetParam 11"}));
}

TEST(CTokenDecode, ReadsTheSigner) {
    const CToken token = decoded(sample_token());
    const CSignerInfo& signer = token.get_signerInfo();
    EXPECT_EQ(signer.get_version(), 1u);
    EXPECT_EQ(hex(signer.get_issuer()), "30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41");
    EXPECT_EQ(hex(signer.get_serialNumber()), "07");
    EXPECT_STREQ(signer.get_digestAlgorithm().get_algorithm(), "2.16.840.1.101.3.4.2.1");
    EXPECT_STREQ(signer.get_signatureAlgorithm().get_algorithm(), "1.2.840.113549.1.1.1");
    EXPECT_EQ(hex(signer.get_signature()), "de ad be ef");
}

TEST(CTokenDecode, ReadsAttributesOfBothKindsInOrder) {
    TokenParts parts;
    parts.signed_attributes = join(
        {attribute(3, element(0x02, "01")), attribute(4, join({element(0x02, "02"), element(0x02, "03")}))});
    parts.unsigned_attributes = attribute(5, element(0x02, "04"));
    const CToken token = decoded(sample_token(parts));
    ASSERT_NE(token.get_signedAttributes(), nullptr);
    ASSERT_EQ(token.get_signedAttributes()->size(), 2u);
    EXPECT_STREQ(token.get_signedAttributes()->front().get_oid(), "1.2.3");
    const CAttribute& second = token.get_signedAttributes()->back();
    EXPECT_STREQ(second.get_oid(), "1.2.4");
    ASSERT_EQ(second.size(), 2u);
    EXPECT_EQ(hex(second.begin()->get_value()), "02 01 02");
    ASSERT_NE(token.get_unsignedAttributes(), nullptr);
    EXPECT_STREQ(token.get_unsignedAttributes()->front().get_oid(), "1.2.5");
}

TEST(CTokenDecode, HasNoAttributesWhereThereAreNone) {
    const CToken token = decoded(sample_token());
    EXPECT_EQ(token.get_signedAttributes(), nullptr);
    EXPECT_EQ(token.get_unsignedAttributes(), nullptr);
}

TEST(CTokenDecode, ReadsCertificatesInTheOrderOfTheMessage) {
    TokenParts parts;
    parts.certificates = join({test::sample_certificate("02 01 09"), test::sample_certificate("02 01 01")});
    const CToken token = decoded(sample_token(parts));
    ASSERT_NE(token.get_certificates(), nullptr);
    ASSERT_EQ(token.get_certificates()->size(), 2u);
    EXPECT_EQ(hex(token.get_certificates()->front()), test::to_hex(test::sample_certificate("02 01 09")));
    EXPECT_EQ(hex(token.get_certificates()->back()), test::to_hex(test::sample_certificate("02 01 01")));
}

TEST(CTokenDecode, HasNoCertificatesWhereThereAreNone) {
    EXPECT_EQ(decoded(sample_token()).get_certificates(), nullptr);
}

TEST(CTokenDecode, EndsTextsAtAnEmbeddedZero) {
    const Octets time = element(0x18, "32 30 32 34 30 31 30 32 30 33 30 34 30 35 5a 00 39 39");
    const Octets authority = element(0xa0, element(0x82, "74 73 61 00 65 76 69 6c"));
    TokenParts parts;
    parts.tst_info =
        sequence({element(0x02, "01"), element(0x06, "2a 03"),
                  sequence({test::kSha256, element(0x04, "aa bb")}), element(0x02, "05"), time, authority});
    const CToken token = decoded(sample_token(parts));
    EXPECT_STREQ(token.get_genTimeZ(), "20240102030405Z");
    EXPECT_EQ(token.get_genTime().second(), 5u);
    EXPECT_STREQ(token.get_tsa()->get_dNSName(), L"tsa");
}

TEST(CTokenDecode, ReplacesWhatWasThere) {
    TokenParts parts;
    parts.tst_info = test::sample_tst_info(element(0x02, "2a"));
    parts.signed_attributes = attribute(3, element(0x02, "01"));
    parts.certificates = test::sample_certificate("02 01 09");
    CToken token = decoded(sample_token(parts));
    token.decode(blob_of(sample_token()));
    EXPECT_EQ(token.get_nonce(), nullptr);
    EXPECT_EQ(token.get_signedAttributes(), nullptr);
    EXPECT_EQ(token.get_certificates(), nullptr);
}

TEST(CTokenDecode, ClosesTheOldMessageBeforeItOpensTheNew) {
    CToken token = decoded(sample_token());
    MessageService service;
    token.decode(blob_of(sample_token()));
    ASSERT_GE(service.calls().size(), 2u);
    EXPECT_EQ(service.calls()[0], "CryptMsgClose");
    EXPECT_EQ(service.calls()[1], "CryptMsgOpenToDecode");
}

TEST(CTokenDecode, ReadsBytesThatLieInTheTokenItself) {
    TokenParts outer;
    outer.tst_info = sequence({element(0x02, "01"), element(0x06, "2a 03"),
                               sequence({test::kSha256, element(0x04, sample_token())}), element(0x02, "05"),
                               test::text_element(0x18, "20240102030405Z")});
    CToken token = decoded(sample_token(outer));
    token.decode(token.get_hashedMessage());
    EXPECT_EQ(hex(token.encode()), test::to_hex(sample_token()));
    EXPECT_EQ(hex(token.get_hashedMessage()), "aa bb");
}

TEST(CTokenDecode, UnwrapsContentThatComesAsAnOctetString) {
    MessageService service;
    service.answer(CMSG_CONTENT_PARAM, element(0x04, test::sample_tst_info()));
    EXPECT_STREQ(decoded(sample_token()).get_policy(), "1.2.3");
}

TEST(CTokenDecode, RefusesContentThatBeginsLikeAnOctetStringAndIsNone) {
    MessageService service;
    service.answer(CMSG_CONTENT_PARAM, std::vector<BYTE>{0x04, 0x7f});
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decoded(sample_token()));
}

// Intended: what is signed is what is read.
TEST(CTokenDecode, TakesTheContentFromTheServiceAndNotFromTheInput) {
    MessageService service;
    service.answer(CMSG_CONTENT_PARAM, test::sample_tst_info(element(0x02, "2a")));
    const CToken token = decoded(sample_token());
    ASSERT_NE(token.get_nonce(), nullptr);
    EXPECT_EQ(hex(*token.get_nonce()), "2a");
}

// Algorithms that the service does not know

// Intended: what the service does not know hinders verifying alone.
TEST(CTokenDecode, AnUnknownDigestAlgorithmCanBeReadButNotVerified) {
    TokenParts parts;
    parts.digest_algorithm = kUnknownAlgorithm;
    const CToken token = decoded(sample_token(parts));
    EXPECT_STREQ(token.get_policy(), "1.2.3");
    EXPECT_EQ(hex(token.encode()), test::to_hex(sample_token(parts)));
    EXPECT_CODE(CRYPT_E_UNKNOWN_ALGO, token.verify(blob("30 00")));
}

TEST(CTokenDecode, ToleratesABadAlgorithmToo) {
    const CBlob bytes = blob_of(sample_token());
    CToken token;
    MessageService service;
    service.refuse("CryptMsgUpdate", static_cast<DWORD>(NTE_BAD_ALGID));
    // The service has seen nothing, so the first query fails; what was found stands.
    EXPECT_CODE(CRYPT_E_MSG_ERROR, token.decode(bytes));
    EXPECT_CODE(CRYPT_E_UNKNOWN_ALGO, token.verify(blob("30 00")));
}

TEST(CTokenDecode, CopiesKnowOfAnUnknownAlgorithm) {
    TokenParts parts;
    parts.digest_algorithm = kUnknownAlgorithm;
    const CToken copy = decoded(sample_token(parts));
    EXPECT_CODE(CRYPT_E_UNKNOWN_ALGO, CToken(copy).verify(blob("30 00")));
}

// What is refused

struct RefusedCase {
    const char* name;
    Octets token;
    HRESULT code;
};

class RefusedToken : public testing::TestWithParam<RefusedCase> {};

// Intended: the bytes are kept before anything of them is checked.
TEST_P(RefusedToken, ThrowsItsCodeAndKeepsTheBytes) {
    MessageService service;
    CToken token = decoded(sample_token());
    const CBlob bytes = blob_of(GetParam().token);
    EXPECT_CODE(GetParam().code, token.decode(bytes));
    EXPECT_EQ(service.open_messages(), 0);
    if (bytes.cbData() != 0) {
        EXPECT_EQ(hex(token.encode()), hex(bytes));
    }
    EXPECT_CODE(E_FAIL, token.verify(blob("30 00")));
}

TokenParts without_content() {
    TokenParts parts;
    parts.with_content = false;
    return parts;
}

TokenParts with_signers(int count) {
    TokenParts parts;
    parts.signer_count = count;
    return parts;
}

TokenParts with_content_type(const Octets& type) {
    TokenParts parts;
    parts.content_type = type;
    return parts;
}

TokenParts with_tst_info(const Octets& tst_info) {
    TokenParts parts;
    parts.tst_info = tst_info;
    return parts;
}

TokenParts named_by_key_identifier() {
    TokenParts parts;
    parts.signer_identifier = element(0x80, "01 02 03");
    return parts;
}

const RefusedCase kRefused[] = {
    // The service refuses these.
    {.name = "Empty", .token = {}, .code = CRYPT_E_ASN1_EOD},
    {.name = "OneOctet", .token = {0x30}, .code = CRYPT_E_ASN1_EOD},
    {.name = "NoMessage", .token = element(0x04, "00"), .code = CRYPT_E_ASN1_BADTAG},
    {.name = "WithoutSigner", .token = sample_token(with_signers(0)), .code = CRYPT_E_INVALID_INDEX},
    // These are well-formed messages.
    {.name = "WithoutContent", .token = sample_token(without_content()), .code = TRUST_E_TIME_STAMP},
    {.name = "EmptyContent", .token = sample_token(with_tst_info({})), .code = TRUST_E_TIME_STAMP},
    {.name = "ContentTypeData",
     .token = sample_token(with_content_type(test::kDataType)),
     .code = CRYPT_E_BAD_MSG},
    {.name = "ContentTypeWithOneArcMore",
     .token = sample_token(with_content_type(element(0x06, "2a 86 48 86 f7 0d 01 09 10 01 04 01"))),
     .code = CRYPT_E_BAD_MSG},
    {.name = "NoTSTInfo",
     .token = sample_token(with_tst_info(element(0x30, ""))),
     .code = CRYPT_E_ASN1_INTERNAL},
    {.name = "SignerNamedByKeyIdentifier",
     .token = sample_token(named_by_key_identifier()),
     .code = CRYPT_E_ASN1_INTERNAL},
};

INSTANTIATE_TEST_SUITE_P(Messages, RefusedToken, testing::ValuesIn(kRefused), test::case_name);

// Sizes are signed 32-bit numbers at the codecs and unsigned ones at the service.
TEST(CTokenDecode, RefusesABlobOfTwoGigabytesAndChangesNothing) {
    CBlob huge;
    huge.resize_to(0x80000000ul);
    CToken token = decoded(sample_token());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, token.decode(huge));
    EXPECT_EQ(hex(token.encode()), test::to_hex(sample_token()));
}

TEST(CTokenDecode, KeepsTheFieldsReadBeforeAFailure) {
    CToken token;
    MessageService service;
    service.refuse("CryptMsgGetParam 11", 6);
    EXPECT_CODE(HRESULT_FROM_WIN32(6), token.decode(blob_of(sample_token())));
    EXPECT_STREQ(token.get_policy(), "1.2.3");
    EXPECT_EQ(hex(token.get_signerInfo().get_serialNumber()), "07");
}

struct FailingCall {
    const char* function;
    int skip;
};

class CTokenDecodeFailure : public testing::TestWithParam<FailingCall> {};

TEST_P(CTokenDecodeFailure, ThrowsTheLastErrorAndClosesTheMessage) {
    TokenParts parts;
    parts.signed_attributes = attribute(3, element(0x02, "01"));
    parts.unsigned_attributes = attribute(5, element(0x02, "04"));
    parts.certificates = test::sample_certificate("02 01 09");
    const CBlob bytes = blob_of(sample_token(parts));
    MessageService service;
    CToken token;
    service.refuse(GetParam().function, 6, GetParam().skip);
    EXPECT_CODE(HRESULT_FROM_WIN32(6), token.decode(bytes));
    EXPECT_EQ(service.open_messages(), 0);
    service.refuse(GetParam().function, static_cast<DWORD>(CRYPT_E_MSG_ERROR), GetParam().skip);
    EXPECT_CODE(CRYPT_E_MSG_ERROR, token.decode(bytes));
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(hex(token.encode()), hex(bytes));
}

const FailingCall kFailingCalls[] = {
    {"CryptMsgOpenToDecode", 0}, {"CryptMsgUpdate", 0},      {"CryptMsgGetParam 2", 0},
    {"CryptMsgGetParam 2", 1},   {"CryptMsgGetParam 4", 0},  {"CryptMsgGetParam 4", 1},
    {"CryptMsgGetParam 28", 0},  {"CryptMsgGetParam 28", 1}, {"CryptMsgGetParam 9", 0},
    {"CryptMsgGetParam 9", 1},   {"CryptMsgGetParam 10", 0}, {"CryptMsgGetParam 10", 1},
    {"CryptMsgGetParam 11", 0},  {"CryptMsgGetParam 12", 0}, {"CryptMsgGetParam 12", 1},
};

INSTANTIATE_TEST_SUITE_P(EveryCall, CTokenDecodeFailure, testing::ValuesIn(kFailingCalls),
                         [](const auto& row) {
                             std::string name =
                                 row.param.function + std::string(row.param.skip == 0 ? "_first" : "_second");
                             std::replace(name.begin(), name.end(), ' ', '_');
                             return name;
                         });

TEST(CTokenDecode, ANullMessageWithoutALastErrorIsAFailureAllTheSame) {
    CToken token;
    MessageService service;
    service.refuse("CryptMsgOpenToDecode", 0);
    EXPECT_CODE(E_FAIL, token.decode(blob_of(sample_token())));
}

// The service's answers are not trusted further than their size.

TEST(CTokenDecode, RefusesAContentTypeWithoutTerminator) {
    const std::string type = "1.2.840.113549.1.9.16.1.4";
    MessageService service;
    service.answer(CMSG_INNER_CONTENT_TYPE_PARAM, std::vector<BYTE>(type.begin(), type.end()));
    EXPECT_CODE(CRYPT_E_BAD_MSG, decoded(sample_token()));
}

TEST(CTokenDecode, RefusesAnEmptyContentType) {
    MessageService service;
    service.answer(CMSG_INNER_CONTENT_TYPE_PARAM, std::vector<BYTE>{});
    EXPECT_CODE(TRUST_E_TIME_STAMP, decoded(sample_token()));
}

TEST(CTokenDecode, RefusesAnAttributeBlockThatIsTooSmall) {
    MessageService service;
    service.answer(CMSG_SIGNER_AUTH_ATTR_PARAM, std::vector<BYTE>(sizeof(CRYPT_ATTRIBUTES) - 1));
    EXPECT_CODE(CRYPT_E_BAD_MSG, decoded(sample_token()));
}

TEST(CTokenDecode, AnAttributeBlockWithoutAttributesIsAnEmptyList) {
    MessageService service;
    service.answer(CMSG_SIGNER_AUTH_ATTR_PARAM, std::vector<BYTE>(sizeof(CRYPT_ATTRIBUTES)));
    const CToken token = decoded(sample_token());
    ASSERT_NE(token.get_signedAttributes(), nullptr);
    EXPECT_TRUE(token.get_signedAttributes()->empty());
}

// The size is the one of the query before it, when the service leaves it alone.
TEST(CTokenDecode, AsksForMissingAttributesWhenTheServiceLeavesASize) {
    MessageService service;
    DWORD size_seen = 0;
    service.answer(CMSG_SIGNER_AUTH_ATTR_PARAM, [&](DWORD /*index*/, void* data, DWORD* size) {
        if (data != nullptr) {
            size_seen = *size;
        }
        SetLastError(static_cast<DWORD>(data == nullptr ? CRYPT_E_ATTRIBUTES_MISSING : CRYPT_E_MSG_ERROR));
        return 0;
    });
    EXPECT_CODE(CRYPT_E_MSG_ERROR, decoded(sample_token()));
    EXPECT_EQ(size_seen, test::sample_signer().size());
}

// Verifying, as far as it goes without a signature

TEST(CTokenVerify, NeedsASignedOrDecodedToken) {
    EXPECT_CODE(E_FAIL, CToken().verify(blob("30 00")));
}

// Intended: no failure, the signature just does not hold.
TEST(CTokenVerify, IsFalseForTwoSigners) {
    EXPECT_FALSE(decoded(sample_token(with_signers(2))).verify(blob("30 00")));
}

TEST(CTokenVerify, IsFalseWhenTheServiceSaysThereIsNoSigner) {
    const CToken token = decoded(sample_token());
    MessageService service;
    service.answer(CMSG_SIGNER_COUNT_PARAM, std::vector<BYTE>(4));
    EXPECT_FALSE(token.verify(blob("30 00")));
}

TEST(CTokenVerify, ThrowsWhatTheServiceReportsOfBytesThatAreNoCertificate) {
    const CToken token = decoded(sample_token());
    EXPECT_CODE(CRYPT_E_ASN1_EOD, token.verify(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_BADTAG, token.verify(blob("04 00")));
}

TEST(CTokenVerify, ThrowsTheLastErrorOfAFailedCount) {
    const CToken token = decoded(sample_token());
    MessageService service;
    service.refuse("CryptMsgGetParam 5", 6);
    EXPECT_CODE(HRESULT_FROM_WIN32(6), token.verify(blob("30 00")));
}

TEST(CTokenVerify, ANullCertificateWithoutALastErrorIsAFailureAllTheSame) {
    const CToken token = decoded(sample_token());
    MessageService service;
    service.refuse("CertCreateCertificateContext", 0);
    EXPECT_CODE(E_FAIL, token.verify(blob("30 00")));
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
