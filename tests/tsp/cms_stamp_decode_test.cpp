// CMSStamp::decode and CMSStamp::verify: what the message service finds in the bytes becomes the stamp.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_stamp.h"
#include "tests/support/test_keys.h"
#include "tsp/cms_stamp.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::blob_of;
using test::certificate;
using test::element;
using test::hex;
using test::join;
using test::MessageService;
using test::Octets;
using test::sample_stamp;
using test::sequence;
using test::StampParts;
using test::TestKey;

const CDateTime kTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u);
const CDateTime kOtherTime(2030u, 1u, 1u, 0u, 0u, 0u, 0u, 0u);

void sign(CMSStamp& stamp) {
    const TestKey key("tsa_p256");
    stamp.sign(key.provider(), AT_SIGNATURE, certificate("tsa_p256"),
               CAlgorithmIdentifierEx("2.16.840.1.101.3.4.2.1"));
}

CMSStamp signed_stamp() {
    CMSStamp stamp(blob("04 02 aa bb"), kTime);
    sign(stamp);
    return stamp;
}

CMSStamp decoded(const CBlob& bytes) {
    CMSStamp stamp;
    stamp.decode(bytes);
    return stamp;
}

CMSStamp decoded(const StampParts& parts) {
    return decoded(blob_of(sample_stamp(parts)));
}

TEST(CMSStampDecode, ReadsEveryField) {
    StampParts parts;
    parts.certificates = join({test::sample_certificate("02 01 09"), test::sample_certificate("02 01 01")});
    const CMSStamp stamp = decoded(parts);
    EXPECT_EQ(hex(stamp.get_content()), "04 02 aa bb");
    EXPECT_TRUE(stamp.get_signingTime() == kTime);
    ASSERT_NE(stamp.get_certificates(), nullptr);
    ASSERT_EQ(stamp.get_certificates()->size(), 2u);
    EXPECT_EQ(hex(stamp.get_certificates()->front()), test::to_hex(test::sample_certificate("02 01 09")))
        << "in the order of the message";
    const CSignerInfo signer = stamp.get_signerInfo();
    EXPECT_EQ(hex(signer.get_issuer()), "30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41");
    EXPECT_EQ(hex(signer.get_serialNumber()), "07");
    EXPECT_EQ(hex(signer.get_signature()), "de ad be ef");
}

TEST(CMSStampDecode, ReplacesContentTimeAndCertificates) {
    CMSStamp stamp(blob("04 01 cc"), kOtherTime);
    const CBlobList certificates = CBlobList({blob("00"), blob("01")});
    stamp.put_certificates(&certificates);
    StampParts parts;
    parts.certificates = test::sample_certificate("02 01 09");
    stamp.decode(blob_of(sample_stamp(parts)));
    EXPECT_EQ(hex(stamp.get_content()), "04 02 aa bb");
    EXPECT_TRUE(stamp.get_signingTime() == kTime);
    EXPECT_EQ(stamp.get_certificates()->size(), 1u);
}

// Intended: a message without certificates says nothing of those that the object has.
TEST(CMSStampDecode, KeepsOldCertificatesWhenTheMessageHasNone) {
    CMSStamp stamp;
    const CBlobList certificates = CBlobList({blob("00"), blob("01")});
    stamp.put_certificates(&certificates);
    stamp.decode(blob_of(sample_stamp()));
    ASSERT_NE(stamp.get_certificates(), nullptr);
    EXPECT_TRUE(*stamp.get_certificates() == certificates);
    CMSStamp fresh = decoded(StampParts{});
    EXPECT_EQ(fresh.get_certificates(), nullptr);
}

TEST(CMSStampDecode, ReadsBytesThatLieInTheStampItself) {
    CMSStamp stamp(blob_of(sample_stamp()), kOtherTime);
    stamp.decode(stamp.get_content());
    EXPECT_EQ(hex(stamp.get_content()), "04 02 aa bb");
    const CBlobList list = CBlobList({blob_of(sample_stamp())});
    stamp.put_certificates(&list);
    stamp.decode(stamp.get_certificates()->front());
    EXPECT_TRUE(stamp.get_signingTime() == kTime);
}

TEST(CMSStampDecode, IgnoresOctetsBehindTheMessage) {
    const CBlob bytes = blob_of(join({sample_stamp(), {0x30, 0x03}}));
    EXPECT_EQ(hex(decoded(bytes).get_content()), "04 02 aa bb");
}

struct ContentCase {
    const char* name;
    Octets content;  ///< behind the type of the content
    const char* read;
};

class StampContent : public testing::TestWithParam<ContentCase> {};

TEST_P(StampContent, IsTheDerOfAnOctetString) {
    StampParts parts;
    parts.content = GetParam().content;
    EXPECT_EQ(hex(decoded(parts).get_content()), GetParam().read);
}

const ContentCase kContents[] = {
    {.name = "Data", .content = element(0xa0, element(0x04, "aa bb cc")), .read = "04 03 aa bb cc"},
    {.name = "Empty", .content = element(0xa0, element(0x04, "")), .read = "04 00"},
    {.name = "Absent", .content = {}, .read = "04 00"},
    {.name = "Constructed",
     .content = element(0xa0, test::from_hex("24 80 04 01 aa 04 01 bb 00 00")),
     .read = "04 02 aa bb"},
    // Content of another kind than data (RFC 2315 7) comes whole.
    {.name = "Sequence", .content = element(0xa0, element(0x30, "05 00")), .read = "04 04 30 02 05 00"},
};

INSTANTIATE_TEST_SUITE_P(Contents, StampContent, testing::ValuesIn(kContents), test::case_name);

TEST(CMSStampDecode, DoesNotLookAtTheTypeOfTheContent) {
    StampParts parts;
    parts.content_type = test::kTSTInfoType;
    EXPECT_EQ(hex(decoded(parts).get_content()), "04 02 aa bb");
}

// Intended: the first of several is the one that counts.
TEST(CMSStampDecode, TakesTheFirstSigningTime) {
    StampParts parts;
    parts.signed_attributes =
        join({test::signing_time_attribute(join(
                  {test::text_element(0x17, "240102030405Z"), test::text_element(0x17, "250102030405Z")})),
              test::signing_time_attribute(test::text_element(0x17, "260102030405Z"))});
    EXPECT_TRUE(decoded(parts).get_signingTime() == kTime);
}

TEST(CMSStampDecode, FindsTheSigningTimeBehindOtherAttributes) {
    StampParts parts;
    parts.signed_attributes =
        join({sequence({element(0x06, "2a 03"), element(0x31, "05 00")}),
              test::signing_time_attribute(test::text_element(0x18, "20240102030405Z"))});
    EXPECT_TRUE(decoded(parts).get_signingTime() == kTime);
}

// Intended: no count of signers is asked for; the first is the one that counts.
TEST(CMSStampDecode, ReadsTheFirstOfSeveralSigners) {
    StampParts parts;
    parts.more_signers = test::sample_stamp_signer(test::text_element(0x17, "300102030405Z"), 0x08);
    const CMSStamp stamp = decoded(parts);
    EXPECT_TRUE(stamp.get_signingTime() == kTime);
    EXPECT_EQ(hex(stamp.get_signerInfo().get_serialNumber()), "07");
}

TEST(CMSStampDecode, ReadsASignerNamedByKeyIdentifierAllTheSame) {
    StampParts parts;
    parts.signer_identifier = element(0x80, "01 02 03");
    const CMSStamp stamp = decoded(parts);
    EXPECT_TRUE(stamp.get_signingTime() == kTime);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, stamp.get_signerInfo());
}

// What is refused

struct RefusedCase {
    const char* name;
    Octets message;
    HRESULT code;
    bool content_is_read = false;  ///< before the failure
};

class RefusedStamp : public testing::TestWithParam<RefusedCase> {};

// Intended: the object is changed field by field, and what was reached before the failure stays.
TEST_P(RefusedStamp, ThrowsAndHasTheNewMessage) {
    CMSStamp stamp(blob("04 01 cc"), kOtherTime);
    const CBlobList certificates = CBlobList({certificate("tsa_p256")});
    stamp.put_certificates(&certificates);
    sign(stamp);
    MessageService service;
    EXPECT_CODE(GetParam().code, stamp.decode(blob_of(GetParam().message)));
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(hex(stamp.encode()), test::to_hex(GetParam().message));
    EXPECT_EQ(hex(stamp.get_content()), GetParam().content_is_read ? "04 02 aa bb" : "04 01 cc");
    EXPECT_TRUE(stamp.get_signingTime() == kOtherTime);
    EXPECT_TRUE(*stamp.get_certificates() == certificates);
}

StampParts with_attributes(const Octets& signed_attributes) {
    StampParts parts;
    parts.signed_attributes = signed_attributes;
    parts.certificates = test::sample_certificate("02 01 09");
    return parts;
}

StampParts with_time(const Octets& values) {
    return with_attributes(test::signing_time_attribute(values));
}

StampParts without_time() {
    return with_attributes(sequence({element(0x06, "2a 03"), element(0x31, "05 00")}));
}

StampParts unknown_digest() {
    StampParts parts;
    parts.digest_algorithm = sequence({element(0x06, "2a 03 04")});
    return parts;
}

StampParts without_signer() {
    StampParts parts;
    parts.with_signer = false;
    return parts;
}

Octets cut_off() {
    Octets message = sample_stamp();
    message.pop_back();
    return message;
}

const RefusedCase kRefused[] = {
    {.name = "Empty", .message = {}, .code = CRYPT_E_ASN1_EOD},
    {.name = "OneOctet", .message = {0x30}, .code = CRYPT_E_ASN1_EOD},
    {.name = "CutOff", .message = cut_off(), .code = CRYPT_E_ASN1_EOD},
    {.name = "NoMessage", .message = element(0x04, "00"), .code = CRYPT_E_ASN1_BADTAG},
    {.name = "EnvelopedData",
     .message = sequence({element(0x06, "2a 86 48 86 f7 0d 01 07 03"), element(0xa0, "30 00")}),
     .code = CRYPT_E_INVALID_MSG_TYPE},
    // Intended: unlike a token a stamp with an unknown algorithm is not read at all.
    {.name = "UnknownDigestAlgorithm",
     .message = sample_stamp(unknown_digest()),
     .code = CRYPT_E_UNKNOWN_ALGO},
    {.name = "DataThatIsNotSigned",
     .message = sequence({test::kDataType, element(0xa0, element(0x04, "aa bb"))}),
     .code = CRYPT_E_INVALID_MSG_TYPE,
     .content_is_read = true},
    {.name = "WithoutSigner",
     .message = sample_stamp(without_signer()),
     .code = CRYPT_E_INVALID_INDEX,
     .content_is_read = true},
    // Intended: without them there is no signing time, so missing attributes are an error here.
    {.name = "WithoutSignedAttributes",
     .message = sample_stamp(with_attributes({})),
     .code = CRYPT_E_ATTRIBUTES_MISSING,
     .content_is_read = true},
    {.name = "WithoutSigningTime",
     .message = sample_stamp(without_time()),
     .code = CRYPT_E_BAD_MSG,
     .content_is_read = true},
    {.name = "SigningTimeWithoutValue",
     .message = sample_stamp(with_time({})),
     .code = CRYPT_E_BAD_MSG,
     .content_is_read = true},
    {.name = "SigningTimeThatIsNoTime",
     .message = sample_stamp(with_time(element(0x05, ""))),
     .code = CRYPT_E_ASN1_INTERNAL,
     .content_is_read = true},
    {.name = "SigningTimeOfAMonthThatIsNone",
     .message = sample_stamp(with_time(test::text_element(0x17, "241302030405Z"))),
     .code = E_INVALIDARG,
     .content_is_read = true},
};

INSTANTIATE_TEST_SUITE_P(Messages, RefusedStamp, testing::ValuesIn(kRefused), test::case_name);

TEST(CMSStampDecode, AfterAFailureTheNewMessageIsTheOneThatIsVerified) {
    CMSStamp stamp = signed_stamp();
    EXPECT_CODE(CRYPT_E_BAD_MSG, stamp.decode(blob_of(sample_stamp(without_time()))));
    EXPECT_EQ(hex(stamp.get_signerInfo().get_serialNumber()), "07");
    EXPECT_FALSE(stamp.verify(certificate("tsa_p256")));
    EXPECT_CODE(CRYPT_E_ASN1_EOD, stamp.decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_EOD, stamp.verify(certificate("tsa_p256")));
    EXPECT_CODE(CRYPT_E_ASN1_EOD, stamp.get_signerInfo());
}

TEST(CMSStampDecode, AStampThatFailedDecodesTheNext) {
    CMSStamp stamp;
    EXPECT_CODE(CRYPT_E_BAD_MSG, stamp.decode(blob_of(sample_stamp(without_time()))));
    stamp.decode(signed_stamp().encode());
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
}

// Verifying

TEST(CMSStampVerify, ThrowsWhatTheServiceReportsOfBytesThatAreNoCertificate) {
    const CMSStamp stamp = signed_stamp();
    MessageService service;
    EXPECT_CODE(CRYPT_E_ASN1_EOD, stamp.verify(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_BADTAG, stamp.verify(blob("04 00")));
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(service.open_certificates(), 0);
}

TEST(CMSStampVerify, LeavesTheStampAsItWas) {
    const CMSStamp stamp = signed_stamp();
    const CBlob before = stamp.encode();
    EXPECT_FALSE(stamp.verify(certificate("other_tsa")));
    EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
    EXPECT_EQ(stamp.encode(), before);
}

TEST(CMSStampVerify, SeesAChangedContentAndAChangedAttribute) {
    Octets octets = test::octets(signed_stamp().encode());
    const auto verifies_without = [&](const char* part) {
        const Octets sought = test::from_hex(part);
        const auto found = std::search(octets.begin(), octets.end(), sought.begin(), sought.end());
        EXPECT_NE(found, octets.end()) << part;
        *(found + static_cast<std::ptrdiff_t>(sought.size()) - 1) ^= 1;
        const bool verified = decoded(blob_of(octets)).verify(certificate("tsa_p256"));
        *(found + static_cast<std::ptrdiff_t>(sought.size()) - 1) ^= 1;
        return verified;
    };
    EXPECT_FALSE(verifies_without("04 02 aa bb"));
    EXPECT_FALSE(verifies_without("17 0d 32 34 30 31 30 32 30 33 30 34 30 35"));
    EXPECT_TRUE(decoded(blob_of(octets)).verify(certificate("tsa_p256")));
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
