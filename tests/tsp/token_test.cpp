// CToken as a model: the fields of TSTInfo (RFC 3161 2.4.2), what is cached, copies.

#include "tsp/token.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_token.h"
#include "tsp/detail/token_impl.h"

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
using test::text_element;

CBigInteger number(const char* hex) {
    const CBlob octets = blob(hex);
    return CBigInteger(octets.pbData(), octets.cbData());
}

const CDateTime kTime(2024u, 1u, 2u, 3u, 4u, 5u, 500u, 0u);

CToken fields_only(bool ordering = false) {
    return CToken("1.2.3", CAlgorithmIdentifierEx("2.16.840.1.101.3.4.2.1"), blob("aa bb"), number("05"),
                  kTime, ordering);
}

CToken decoded(const Octets& octets) {
    CToken token;
    token.decode(blob_of(octets));
    return token;
}

/// Its TSTInfo in DER.
std::string tst_info_of(const CToken::Impl& fields) {
    ASN1BEREncodeBuffer buffer;
    asn1data::ASN1T_TSTInfo record;
    fields.fillTSTInfo(record, buffer.getCtxtPtr());
    const int length = asn1data::ASN1C_TSTInfo(buffer, record).EncodeTo(buffer);
    return length < 0 ? std::to_string(length)
                      : test::to_hex(buffer.getMsgPtr(), static_cast<std::size_t>(length));
}

CToken::Impl sample_fields() {
    CToken::Impl fields;
    fields.policy = "1.2.3";
    fields.hashAlgorithm = CAlgorithmIdentifierEx("2.16.840.1.101.3.4.2.1");
    fields.hashedMessage = blob("aa bb");
    fields.serialNumber = number("05");
    fields.genTime = "20240102030405.5Z";
    return fields;
}

TEST(CToken, StartsWithVersion1AndNothingElse) {
    const CToken token;
    EXPECT_EQ(token.get_version(), 1u);
    EXPECT_STREQ(token.get_policy(), "");
    EXPECT_STREQ(token.get_hashAlgorithm().get_algorithm(), "");
    EXPECT_EQ(token.get_hashedMessage().cbData(), 0u);
    EXPECT_EQ(token.get_serialNumber().cbData(), 0u);
    EXPECT_STREQ(token.get_genTimeZ(), "");
    EXPECT_FALSE(token.get_ordering());
    EXPECT_EQ(token.get_accuracy(), nullptr);
    EXPECT_EQ(token.get_nonce(), nullptr);
    EXPECT_EQ(token.get_tsa(), nullptr);
    EXPECT_EQ(token.get_extensions(), nullptr);
    EXPECT_EQ(token.get_signedAttributes(), nullptr);
    EXPECT_EQ(token.get_unsignedAttributes(), nullptr);
    EXPECT_EQ(token.get_certificates(), nullptr);
    EXPECT_TRUE(token.get_signerInfo() == CSignerInfo());
}

TEST(CToken, ConstructorTakesTheRequiredFields) {
    const CToken token = fields_only(true);
    EXPECT_STREQ(token.get_policy(), "1.2.3");
    EXPECT_STREQ(token.get_hashAlgorithm().get_algorithm(), "2.16.840.1.101.3.4.2.1");
    EXPECT_EQ(hex(token.get_hashedMessage()), "aa bb");
    EXPECT_EQ(hex(token.get_serialNumber()), "05");
    EXPECT_STREQ(token.get_genTimeZ(), "20240102030405.5Z");
    EXPECT_TRUE(token.get_genTime() == kTime);
    EXPECT_TRUE(token.get_ordering());
}

TEST(CToken, TakesANullPolicyAsEmpty) {
    const CToken token(nullptr, CAlgorithmIdentifierEx("1.2.3"), blob("aa"), number("05"), kTime, false);
    EXPECT_STREQ(token.get_policy(), "");
}

TEST(CToken, GivesTheTimeAsItCameAndParsesItOnDemand) {
    test::TokenParts parts;
    parts.tst_info = test::sequence({element(0x02, "01"), element(0x06, "2a 03"),
                                     test::sequence({test::kSha256, element(0x04, "aa bb")}),
                                     element(0x02, "05"), text_element(0x18, "20240102030405.500Z")});
    const CToken token = decoded(test::sample_token(parts));
    EXPECT_STREQ(token.get_genTimeZ(), "20240102030405.500Z");
    EXPECT_TRUE(token.get_genTime() == kTime);
}

TEST(CToken, ATimeThatIsNoneFailsOnlyWhenAskedFor) {
    test::TokenParts parts;
    parts.tst_info = test::sequence({element(0x02, "01"), element(0x06, "2a 03"),
                                     test::sequence({test::kSha256, element(0x04, "aa bb")}),
                                     element(0x02, "05"), text_element(0x18, "yesterday")});
    const CToken token = decoded(test::sample_token(parts));
    EXPECT_STREQ(token.get_genTimeZ(), "yesterday");
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_TIME), token.get_genTime());
}

// The record

TEST(TSTInfo, HasTheRequiredElements) {
    EXPECT_EQ(tst_info_of(sample_fields()), test::to_hex(test::sample_tst_info()));
}

TEST(TSTInfo, WritesEveryOptionalElement) {
    CToken::Impl fields = sample_fields();
    fields.accuracy = std::make_unique<CAccuracy>(CAccuracy{1, 2, 3});
    fields.ordering = true;
    fields.nonce = std::make_unique<CBigInteger>(number("2a"));
    CGeneralName name;
    name.put_dNSName(L"a");
    fields.tsa = std::make_unique<CGeneralName>(name);
    fields.extensions = std::make_unique<CExtensions>();
    fields.extensions->insert(CExtension(CExtValue("1.2.5", blob("05 00"))));
    const Octets optional =
        join({element(0x30, "02 01 01 80 01 02 81 01 03"), element(0x01, "ff"), element(0x02, "2a"),
              element(0xa0, text_element(0x82, "a")), element(0xa1, "30 08 06 02 2a 05 04 02 05 00")});
    EXPECT_EQ(tst_info_of(fields), test::to_hex(test::sample_tst_info(optional)));
}

TEST(TSTInfo, AnAccuracyOfZerosIsPresentAndEmpty) {
    CToken::Impl fields = sample_fields();
    fields.accuracy = std::make_unique<CAccuracy>();
    EXPECT_EQ(tst_info_of(fields), test::to_hex(test::sample_tst_info(element(0x30, ""))));
}

TEST(TSTInfo, LeavesAnEmptyExtensionListOut) {
    CToken::Impl fields = sample_fields();
    fields.extensions = std::make_unique<CExtensions>();
    EXPECT_EQ(tst_info_of(fields), test::to_hex(test::sample_tst_info()));
}

TEST(TSTInfo, RefusesAnAccuracyOutOfRange) {
    CToken::Impl fields = sample_fields();
    fields.accuracy = std::make_unique<CAccuracy>(CAccuracy{0, 1000, 0});
    EXPECT_EQ(tst_info_of(fields), "-23");
}

TEST(TSTInfo, RefusesAPolicyThatIsNoOid) {
    CToken::Impl fields = sample_fields();
    fields.policy = "";
    EXPECT_CODE(E_INVALIDARG, tst_info_of(fields));
}

TEST(TSTInfo, ReadsEveryElement) {
    test::TokenParts parts;
    parts.tst_info = test::sample_tst_info(
        join({element(0x30, "02 01 01 80 01 02 81 01 03"), element(0x01, "ff"), element(0x02, "2a"),
              element(0xa0, text_element(0x82, "a")), element(0xa1, "30 08 06 02 2a 05 04 02 05 00")}));
    const CToken token = decoded(test::sample_token(parts));
    EXPECT_EQ(token.get_version(), 1u);
    EXPECT_STREQ(token.get_policy(), "1.2.3");
    EXPECT_STREQ(token.get_hashAlgorithm().get_algorithm(), "2.16.840.1.101.3.4.2.1");
    EXPECT_EQ(hex(token.get_hashedMessage()), "aa bb");
    EXPECT_EQ(hex(token.get_serialNumber()), "05");
    EXPECT_TRUE(token.get_ordering());
    ASSERT_NE(token.get_accuracy(), nullptr);
    EXPECT_TRUE(*token.get_accuracy() == (CAccuracy{1, 2, 3}));
    ASSERT_NE(token.get_nonce(), nullptr);
    EXPECT_EQ(hex(*token.get_nonce()), "2a");
    ASSERT_NE(token.get_tsa(), nullptr);
    EXPECT_STREQ(token.get_tsa()->get_dNSName(), L"a");
    ASSERT_NE(token.get_extensions(), nullptr);
    EXPECT_STREQ(token.get_extensions()->front().get_extnID(), "1.2.5");
}

TEST(TSTInfo, AnEmptyAccuracyIsPresent) {
    test::TokenParts parts;
    parts.tst_info = test::sample_tst_info(element(0x30, ""));
    const CToken token = decoded(test::sample_token(parts));
    ASSERT_NE(token.get_accuracy(), nullptr);
    EXPECT_TRUE(*token.get_accuracy() == CAccuracy{});
}

// Intended: as in a request, octets of a version fold with the factor 11.
TEST(TSTInfo, FoldsAVersionOfTwoOctetsWithTheFactor11) {
    test::TokenParts parts;
    parts.tst_info = test::sequence({element(0x02, "01 00"), element(0x06, "2a 03"),
                                     test::sequence({test::kSha256, element(0x04, "aa")}),
                                     element(0x02, "05"), text_element(0x18, "20240102030405Z")});
    EXPECT_EQ(decoded(test::sample_token(parts)).get_version(), 11u);
}

TEST(TSTInfo, RefusesAVersionOfFiveOctets) {
    test::TokenParts parts;
    parts.tst_info = test::sequence({element(0x02, "01 00 00 00 00"), element(0x06, "2a 03"),
                                     test::sequence({test::kSha256, element(0x04, "aa")}),
                                     element(0x02, "05"), text_element(0x18, "20240102030405Z")});
    EXPECT_CODE(E_INVALIDARG, decoded(test::sample_token(parts)));
}

// What is cached

TEST(CToken, EncodeNeedsASignedOrDecodedToken) {
    EXPECT_CODE(E_FAIL, CToken().encode());
    EXPECT_CODE(E_FAIL, fields_only().encode());
}

TEST(CToken, EncodeReturnsTheDecodedBytesWithoutAskingTheService) {
    const CBlob bytes = blob_of(test::sample_token());
    CToken token;
    token.decode(bytes);
    MessageService service;
    EXPECT_EQ(hex(token.encode()), hex(bytes));
    EXPECT_TRUE(service.calls().empty());
}

using Put = void (*)(CToken&);

struct PutCase {
    const char* name;
    Put put;
};

class CTokenPut : public testing::TestWithParam<PutCase> {};

// Intended: the message outlives the cache, and the content of a decoded message is the TSTInfo alone.
TEST_P(CTokenPut, DropsTheCacheAndKeepsTheMessage) {
    CToken token = decoded(test::sample_token());
    GetParam().put(token);
    MessageService service;
    EXPECT_EQ(hex(token.encode()), test::to_hex(test::sample_tst_info()));
    EXPECT_EQ(service.calls(), (std::vector<std::string>{"CryptMsgGetParam 2", "CryptMsgGetParam 2",
                                                         "CryptMsgGetParam 28", "CryptMsgGetParam 28"}));
}

const PutCase kPuts[] = {
    {.name = "Accuracy", .put = [](CToken& token) { token.put_accuracy(nullptr); }},
    {.name = "Nonce", .put = [](CToken& token) { token.put_nonce(nullptr); }},
    {.name = "Tsa", .put = [](CToken& token) { token.put_tsa(nullptr); }},
    {.name = "Extensions", .put = [](CToken& token) { token.put_extensions(nullptr); }},
    {.name = "SignedAttributes", .put = [](CToken& token) { token.put_signedAttributes(nullptr); }},
    {.name = "UnsignedAttributes", .put = [](CToken& token) { token.put_unsignedAttributes(nullptr); }},
    {.name = "Certificates", .put = [](CToken& token) { token.put_certificates(nullptr); }},
};

INSTANTIATE_TEST_SUITE_P(Fields, CTokenPut, testing::ValuesIn(kPuts), test::case_name);

TEST(CToken, EncodeAfterPutFillsNoCache) {
    CToken token = decoded(test::sample_token());
    token.put_nonce(nullptr);
    (void)token.encode();
    MessageService service;
    (void)token.encode();
    EXPECT_EQ(service.calls().size(), 4u);
}

TEST(CToken, EncodeThrowsTheLastErrorOfAFailedQuery) {
    CToken token = decoded(test::sample_token());
    token.put_nonce(nullptr);
    MessageService service;
    for (int query = 0; query < 2; ++query) {
        service.refuse("CryptMsgGetParam 2", 6, query);
        EXPECT_CODE(HRESULT_FROM_WIN32(6), token.encode());
        service.refuse("CryptMsgGetParam 28", 0x80091008, query);
        EXPECT_CODE(CRYPT_E_INVALID_INDEX, token.encode());
    }
}

// Intended: a last error of 0 is thrown as it stands.
TEST(CToken, EncodeThrowsALastErrorOfZeroToo) {
    CToken token = decoded(test::sample_token());
    token.put_nonce(nullptr);
    MessageService service;
    service.refuse("CryptMsgGetParam 2", 0);
    EXPECT_CODE(S_OK, token.encode());
}

// Intended: also of a const token.
TEST(CToken, EncodeRefreshesTheSigner) {
    CToken token = decoded(test::sample_token());
    token.put_nonce(nullptr);
    test::TokenParts other;
    other.signer_identifier = test::sequence({test::sequence({}), element(0x02, "09")});
    MessageService service;
    service.answer(CMSG_ENCODED_SIGNER, test::sample_signer(other));
    const CToken& constant = token;
    (void)constant.encode();
    EXPECT_EQ(hex(token.get_signerInfo().get_serialNumber()), "09");
    EXPECT_EQ(hex(token.get_signerInfo().get_issuer()), "30 00");
}

TEST(CToken, EncodeRefusesASignerThatIsNone) {
    CToken token = decoded(test::sample_token());
    token.put_nonce(nullptr);
    MessageService service;
    service.answer(CMSG_ENCODED_SIGNER, std::vector<BYTE>{0x30, 0x00});
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, token.encode());
}

// Put

TEST(CToken, PutCopiesAndNullClears) {
    CToken token = fields_only();
    const CAccuracy accuracy{1, 2, 3};
    const CBigInteger nonce = number("2a");
    CGeneralName name;
    name.put_dNSName(L"a");
    CExtensions extensions;
    CAttributes attributes;
    CBlobList certificates;
    token.put_accuracy(&accuracy);
    token.put_nonce(&nonce);
    token.put_tsa(&name);
    token.put_extensions(&extensions);
    token.put_signedAttributes(&attributes);
    token.put_unsignedAttributes(&attributes);
    token.put_certificates(&certificates);
    EXPECT_TRUE(*token.get_accuracy() == accuracy);
    EXPECT_NE(token.get_nonce(), &nonce);
    EXPECT_EQ(hex(*token.get_nonce()), "2a");
    EXPECT_STREQ(token.get_tsa()->get_dNSName(), L"a");
    EXPECT_TRUE(token.get_extensions()->empty());
    EXPECT_TRUE(token.get_signedAttributes()->empty());
    EXPECT_TRUE(token.get_unsignedAttributes()->empty());
    EXPECT_TRUE(token.get_certificates()->empty());
    for (const PutCase& field : kPuts) {
        field.put(token);
    }
    EXPECT_EQ(token.get_accuracy(), nullptr);
    EXPECT_EQ(token.get_nonce(), nullptr);
    EXPECT_EQ(token.get_tsa(), nullptr);
    EXPECT_EQ(token.get_extensions(), nullptr);
    EXPECT_EQ(token.get_signedAttributes(), nullptr);
    EXPECT_EQ(token.get_unsignedAttributes(), nullptr);
    EXPECT_EQ(token.get_certificates(), nullptr);
}

TEST(CToken, PutTakesItsOwnValue) {
    CToken token = fields_only();
    const CBigInteger nonce = number("2a");
    token.put_nonce(&nonce);
    token.put_nonce(token.get_nonce());
    EXPECT_EQ(hex(*token.get_nonce()), "2a");
}

// Copies

TEST(CToken, CopyHasAMessageOfItsOwn) {
    MessageService service;
    {
        const CToken token = decoded(test::sample_token());
        service.forget_calls();
        CToken copy(token);
        EXPECT_EQ(service.calls(), std::vector<std::string>{"CryptMsgDuplicate"});
        EXPECT_EQ(service.open_messages(), 2);
        EXPECT_EQ(hex(copy.encode()), hex(token.encode()));
        EXPECT_TRUE(copy.get_signerInfo() == token.get_signerInfo());
        copy.put_nonce(nullptr);
        EXPECT_EQ(hex(token.encode()), test::to_hex(test::sample_token()));
        EXPECT_EQ(hex(copy.encode()), test::to_hex(test::sample_tst_info()));
    }
    EXPECT_EQ(service.open_messages(), 0);
}

TEST(CToken, CopyOfFieldsAloneAsksNoService) {
    MessageService service;
    const CToken token = fields_only();
    const CToken copy(token);
    EXPECT_TRUE(service.calls().empty());
    EXPECT_STREQ(copy.get_policy(), "1.2.3");
}

// Intended: the result of the duplication is not looked at.
TEST(CToken, CopyWithoutADuplicateIsATokenWithoutMessage) {
    CToken token = decoded(test::sample_token());
    MessageService service;
    service.refuse("CryptMsgDuplicate", 6);
    CToken copy(token);
    EXPECT_EQ(hex(copy.encode()), test::to_hex(test::sample_token()));
    copy.put_nonce(nullptr);
    EXPECT_CODE(E_FAIL, copy.encode());
}

TEST(CToken, AssignmentClosesTheOldMessageBeforeItDuplicatesTheNew) {
    MessageService service;
    {
        CToken token = decoded(test::sample_token());
        const CToken other = decoded(test::sample_token());
        service.forget_calls();
        CToken& result = token = other;
        EXPECT_EQ(&result, &token);
        EXPECT_EQ(service.calls(), (std::vector<std::string>{"CryptMsgClose", "CryptMsgDuplicate"}));
    }
    EXPECT_EQ(service.open_messages(), 0);
}

TEST(CToken, SelfAssignmentDoesNothing) {
    CToken token = decoded(test::sample_token());
    MessageService service;
    const CToken& self = token;
    token = self;
    EXPECT_TRUE(service.calls().empty());
    EXPECT_EQ(hex(token.encode()), test::to_hex(test::sample_token()));
}

// Intended: the object may not even be destroyed afterwards, so it lives in raw storage here.
TEST(CToken, ClearDestroysTheContentForGood) {
    MessageService service;
    alignas(CToken) unsigned char storage[sizeof(CToken)];
    auto* token = new (storage) CToken;
    token->decode(blob_of(test::sample_token()));
    const auto pointer_before = *reinterpret_cast<void**>(storage);
    token->clear();
    EXPECT_EQ(*reinterpret_cast<void**>(storage), pointer_before);
    EXPECT_EQ(service.open_messages(), 0);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
