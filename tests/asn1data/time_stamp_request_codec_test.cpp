// TimeStampReq and MessageImprint (RFC 3161 2.4.1) as records.

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "tests/asn1data/record_codec.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

using Request = Decoded<ASN1T_TimeStampReq, ASN1C_TimeStampReq>;

// version, imprint of an empty hash under 1.2.4
const Octets kVersion = from_hex("02 01 01");
const Octets kImprint = from_hex("30 07 30 03 06 01 2a 04 00");
const Octets kPolicy = from_hex("06 02 2a 03");
const Octets kNonce = from_hex("02 01 05");
const Octets kTrue = from_hex("01 01 ff");
const Octets kExtensions = from_hex("a0 0a 30 08 06 02 2a 03 04 02 05 00");

struct RequestCase {
    const char* name;
    Octets ber;
    int status;
};

void PrintTo(const RequestCase& row, std::ostream* out) {
    *out << row.name << ": " << to_hex(row.ber);
}

class DecodingRequest : public testing::TestWithParam<RequestCase> {};

TEST_P(DecodingRequest, GivesStatus) {
    Request decoded(GetParam().ber);
    EXPECT_EQ(decoded.status(), GetParam().status);
    EXPECT_EQ(decoded.first_status(), GetParam().status);
}

const RequestCase kCases[] = {
    {"RequiredOnly", sequence({kVersion, kImprint}), RT_OK},
    {"AllElements", sequence({kVersion, kImprint, kPolicy, kNonce, kTrue, kExtensions}), RT_OK},
    {"VersionOnly", sequence({kVersion}), RT_E_SETMISSING},
    {"NoContents", sequence({}), RT_E_SETMISSING},
    {"SeventhElement", sequence({kVersion, kImprint, kPolicy, kNonce, kTrue, kExtensions, kTrue}),
     RT_E_SEQOVFL},
    {"PolicyBehindNonce", sequence({kVersion, kImprint, kNonce, kPolicy}), RT_E_SEQOVFL},
    {"UnknownElement", sequence({kVersion, kImprint, from_hex("05 00")}), RT_E_SEQOVFL},
    {"VersionMissing", sequence({kImprint}), RT_E_IDNOTFOUND},
    {"ImprintMissing", sequence({kVersion, kPolicy}), RT_E_IDNOTFOUND},
    {"NotASequence", from_hex("31 03 02 01 01"), RT_E_IDNOTFOUND},
    // Intended: what lies behind the message is not looked at.
    {"TrailingOctets", join({sequence({kVersion, kImprint}), from_hex("de ad")}), RT_OK},
    // Intended: the form of a context tag does not matter.
    {"PrimitiveExtensions", sequence({kVersion, kImprint, from_hex("80 0a 30 08 06 02 2a 03 04 02 05 00")}),
     RT_OK},
    {"NoExtension", sequence({kVersion, kImprint, from_hex("a0 00")}), RT_E_CONSVIO},
    {"IndefiniteLength", join({from_hex("30 80"), kVersion, kImprint, kTrue, from_hex("00 00")}), RT_OK},
    {"IndefiniteLengthWithoutEnd", join({from_hex("30 80"), kVersion, kImprint}), RT_OK},
    // Intended: a structure leaves its end-of-contents octets unread, and they end what is around it as well.
    {"IndefiniteImprintInDefiniteRequest", from_hex("30 0f 02 01 01 30 80 30 03 06 01 2a 04 01 aa 00 00"),
     RT_E_SEQOVFL},
    {"IndefiniteImprintInIndefiniteRequest",
     from_hex("30 80 02 01 01 30 80 30 03 06 01 2a 04 01 aa 00 00 01 01 ff 00 00"), RT_OK},
    {"ImprintWithoutHash", sequence({kVersion, from_hex("30 05 30 03 06 01 2a")}), RT_E_SETMISSING},
    {"ImprintWithThirdElement", sequence({kVersion, from_hex("30 09 30 03 06 01 2a 04 00 05 00")}),
     RT_E_SEQOVFL},
    {"EmptyImprint", sequence({kVersion, from_hex("30 00")}), RT_E_SETMISSING},
};

INSTANTIATE_TEST_SUITE_P(Rfc3161, DecodingRequest, testing::ValuesIn(kCases), case_name);

TEST(TimeStampReq, LeavesUndecodedWhatFollowsANestedIndefiniteElement) {
    Request decoded(from_hex("30 80 02 01 01 30 80 30 03 06 01 2a 04 01 aa 00 00 01 01 ff 00 00"));
    EXPECT_EQ(decoded.record().certReq, 0);
    EXPECT_EQ(decoded.record().messageImprint.hashedMessage.numocts, 1u);
}

TEST(TimeStampReq, ReadsTheIndefiniteFormAsTheDefiniteOne) {
    Request decoded(join({from_hex("30 80"), kVersion, kImprint, kNonce, kTrue, from_hex("00 00")}));
    const Encoded again = encode<ASN1C_TimeStampReq>(decoded.record());
    EXPECT_EQ(to_hex(again.octets), to_hex(sequence({kVersion, kImprint, kNonce, kTrue})));
}

TEST(TimeStampReq, AcceptsAnExplicitFalseAndDropsIt) {
    Request decoded(sequence({kVersion, kImprint, from_hex("01 01 00")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_TimeStampReq>(decoded.record()).octets),
              to_hex(sequence({kVersion, kImprint})));
}

TEST(TimeStampReq, WritesCertReqOnlyWhenItIsSet) {
    Request decoded(sequence({kVersion, kImprint}));
    decoded.record().certReq = 1;
    EXPECT_EQ(to_hex(encode<ASN1C_TimeStampReq>(decoded.record()).octets),
              to_hex(sequence({kVersion, kImprint, kTrue})));
}

TEST(TimeStampReq, HoldsNumbersAsText) {
    Request decoded(sequence({from_hex("02 02 01 00"), kImprint, from_hex("02 02 00 ff")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_STREQ(decoded.record().version, "0x0100");
    EXPECT_STREQ(decoded.record().nonce, "0x0ff");
    EXPECT_TRUE(decoded.record().m.noncePresent);
}

TEST(TimeStampReq, IsEmptyWhenNew) {
    ASN1T_TimeStampReq record;
    EXPECT_TRUE(record.mpContext.isNull());
    EXPECT_TRUE(record.messageImprint.mpContext.isNull());
    EXPECT_FALSE(record.m.reqPolicyPresent || record.m.noncePresent || record.m.extensionsPresent);
    EXPECT_EQ(record.certReq, 0);
    EXPECT_EQ(record.reqPolicy.numids, 0u);
    EXPECT_EQ(record.messageImprint.hashedMessage.data, nullptr);
    EXPECT_EQ(record.extensions.head, nullptr);
}

TEST(TimeStampReq, RefusesAnEmptyListOfExtensionsThatIsSaidToBeThere) {
    Request decoded(sequence({kVersion, kImprint}));
    decoded.record().m.extensionsPresent = 1;
    EXPECT_EQ(encode<ASN1C_TimeStampReq>(decoded.record()).result, RT_E_CONSVIO);
}

TEST(TimeStampReq, EncodesWithoutItsTagWhenTheCallerWritesIt) {
    Request decoded(sequence({kVersion, kImprint}));
    ASN1BEREncodeBuffer buffer;
    const int length = asn1E_TimeStampReq(buffer.getCtxtPtr(), &decoded.record(), ASN1IMPL);
    EXPECT_EQ(to_hex(buffer.getMsgPtr(), static_cast<std::size_t>(length)),
              to_hex(join({kVersion, kImprint})));
}

TEST(TimeStampReq, StopsWithTheStatusOfItsElement) {
    Request decoded(sequence({kVersion, kImprint}));
    decoded.record().version = nullptr;
    EXPECT_EQ(encode<ASN1C_TimeStampReq>(decoded.record()).result, RT_E_BADVALUE);
}

TEST(TimeStampReq, FreesNothingOfARecordWithoutContext) {
    Request decoded(sequence({kVersion, kImprint, kPolicy, kNonce, kTrue, kExtensions}));
    EXPECT_TRUE(decoded.record().mpContext.isNull());
}

TEST(TimeStampReq, CopiedByItsControlClassKeepsTheContextAlive) {
    ASN1T_TimeStampReq copy;
    {
        const Octets der = sequence({kVersion, kImprint, kPolicy, kNonce, kTrue, kExtensions});
        ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
        ASN1T_TimeStampReq record;
        ASN1C_TimeStampReq control(buffer, record);
        ASSERT_EQ(control.Decode(), RT_OK);
        control.getCopy(&copy);
    }
    ASSERT_FALSE(copy.mpContext.isNull());
    EXPECT_EQ(copy.mpContext->getRefCount(), 1u);
    EXPECT_EQ(to_hex(encode<ASN1C_TimeStampReq>(copy).octets),
              to_hex(sequence({kVersion, kImprint, kPolicy, kNonce, kTrue, kExtensions})));
}

TEST(TimeStampReq, ConstructedFromAControlObjectIsACopy) {
    Request decoded(sequence({kVersion, kImprint, kNonce}));
    ASN1C_TimeStampReq control(decoded.record());
    ASN1T_TimeStampReq copy(control);
    EXPECT_NE(copy.nonce, decoded.record().nonce);
    EXPECT_STREQ(copy.nonce, decoded.record().nonce);
}

TEST(TimeStampReq, NewCopyBelongsToTheCaller) {
    Request decoded(sequence({kVersion, kImprint, kNonce}));
    ASN1C_TimeStampReq control(decoded.record());
    const std::unique_ptr<ASN1T_TimeStampReq> copy(control.newCopy());
    EXPECT_STREQ(copy->nonce, "0x05");
    EXPECT_FALSE(copy->mpContext.isNull());
}

TEST(TimeStampReq, ControlObjectIsCopiedWithItsRecord) {
    Request decoded(sequence({kVersion, kImprint, kNonce}));
    ASN1C_TimeStampReq control(decoded.record());
    ASN1C_TimeStampReq copy(control);
    decoded.record().nonce = nullptr;
    ASN1BEREncodeBuffer buffer;
    const int length = copy.EncodeTo(buffer);
    ASSERT_GT(length, 0);
    EXPECT_EQ(to_hex(buffer.getMsgPtr(), static_cast<std::size_t>(length)),
              to_hex(sequence({kVersion, kImprint, kNonce})));
}

TEST(TimeStampReq, ControlObjectIsAssignedARecord) {
    Request decoded(sequence({kVersion, kImprint, kNonce}));
    ASN1C_TimeStampReq control(decoded.record());
    ASN1T_TimeStampReq other;
    ASN1C_TimeStampReq target(other);
    target = control;
    EXPECT_STREQ(other.nonce, "0x05");
}

}  // namespace
}  // namespace Quillmark::test
