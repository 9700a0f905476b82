// TSTInfo, Accuracy, PKIStatusInfo and their parts (RFC 3161 2.4.2) as records.

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "tests/asn1data/record_codec.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

using Accuracy = Decoded<ASN1T_Accuracy, ASN1C_Accuracy>;
using TstInfo = Decoded<ASN1T_TSTInfo, ASN1C_TSTInfo>;
using StatusInfo = Decoded<ASN1T_PKIStatusInfo, ASN1C_PKIStatusInfo>;

struct OctetsCase {
    const char* name;
    Octets ber;
    int status;
};

void PrintTo(const OctetsCase& row, std::ostream* out) {
    *out << row.name << ": " << to_hex(row.ber);
}

// Accuracy

class DecodingAccuracy : public testing::TestWithParam<OctetsCase> {};

TEST_P(DecodingAccuracy, GivesStatus) {
    EXPECT_EQ(Accuracy(GetParam().ber).status(), GetParam().status);
}

const OctetsCase kAccuracies[] = {
    {"Empty", from_hex("30 00"), RT_OK},
    {"LargestMillis", from_hex("30 04 80 02 03 e7"), RT_OK},
    {"MillisAboveRange", from_hex("30 04 80 02 03 e8"), RT_E_CONSVIO},
    {"MillisZero", from_hex("30 03 80 01 00"), RT_E_CONSVIO},
    {"LargestMicros", from_hex("30 04 81 02 03 e7"), RT_OK},
    {"MicrosAboveRange", from_hex("30 04 81 02 03 e8"), RT_E_CONSVIO},
    {"MicrosZero", from_hex("30 03 81 01 00"), RT_E_CONSVIO},
    {"FourthElement", from_hex("30 0c 02 01 01 80 01 01 81 01 01 02 01 01"), RT_E_SEQOVFL},
    {"MicrosBeforeMillis", from_hex("30 06 81 01 01 80 01 01"), RT_E_SEQOVFL},
    {"ConstructedMillis", from_hex("30 03 a0 01 05"), RT_OK},  // Intended: the form is not looked at
    {"ConstructedMicros", from_hex("30 03 a1 01 05"), RT_OK},
    {"SecondsAboveInteger", from_hex("30 07 02 05 01 00 00 00 00"), RT_E_TOOBIG},
    {"IndefiniteLength", from_hex("30 80 02 01 07 00 00"), RT_OK},
};

INSTANTIATE_TEST_SUITE_P(Rfc3161, DecodingAccuracy, testing::ValuesIn(kAccuracies), case_name);

TEST(Accuracy, IsAnEmptySequenceWithoutElements) {
    ASN1T_Accuracy record;
    EXPECT_EQ(to_hex(encode<ASN1C_Accuracy>(record).octets), "30 00");
}

TEST(Accuracy, WritesTheLargestMillis) {
    ASN1T_Accuracy record;
    record.m.millisPresent = 1;
    record.millis = 999;
    EXPECT_EQ(to_hex(encode<ASN1C_Accuracy>(record).octets), "30 04 80 02 03 e7");
}

TEST(Accuracy, WritesNegativeSeconds) {  // Intended: seconds have no range
    ASN1T_Accuracy record;
    record.m.secondsPresent = 1;
    record.seconds = -1;
    EXPECT_EQ(to_hex(encode<ASN1C_Accuracy>(record).octets), "30 03 02 01 ff");
}

TEST(Accuracy, RefusesMicrosOutOfRange) {
    for (const std::uint16_t micros : std::initializer_list<std::uint16_t>{0, 1000}) {
        ASN1T_Accuracy record;
        record.m.microsPresent = 1;
        record.micros = micros;
        EXPECT_EQ(encode<ASN1C_Accuracy>(record).result, RT_E_CONSVIO) << micros;
    }
}

TEST(Accuracy, ReadsConstructedMillis) {
    Accuracy decoded(from_hex("30 03 a0 01 05"));
    EXPECT_TRUE(decoded.record().m.millisPresent);
    EXPECT_EQ(decoded.record().millis, 5);
}

TEST(Accuracy, KeepsWhatWasReadBeforeAFailure) {
    Accuracy decoded(from_hex("30 06 02 01 07 80 01 00"));
    EXPECT_EQ(decoded.status(), RT_E_CONSVIO);
    EXPECT_TRUE(decoded.record().m.secondsPresent);
    EXPECT_EQ(decoded.record().seconds, 7);
    EXPECT_FALSE(decoded.record().m.millisPresent);
}

// TSTInfo

const Octets kVersion = from_hex("02 01 01");
const Octets kPolicy = from_hex("06 02 2a 03");
const Octets kImprint = from_hex("30 07 30 03 06 01 2a 04 00");
const Octets kSerial = from_hex("02 01 09");
const Octets kTime = text_element(0x18, "20240102030405Z");
const Octets kAccuracy = from_hex("30 03 02 01 01");
const Octets kTrue = from_hex("01 01 ff");
const Octets kNonce = from_hex("02 01 05");
const Octets kTsa = from_hex("a0 05 82 03 61 62 63");
const Octets kExtensions = from_hex("a1 0a 30 08 06 02 2a 03 04 02 05 00");

Octets tst_info(std::initializer_list<Octets> optional) {
    return element(0x30, join({kVersion, kPolicy, kImprint, kSerial, kTime, join(optional)}));
}

class DecodingTstInfo : public testing::TestWithParam<OctetsCase> {};

TEST_P(DecodingTstInfo, GivesStatus) {
    EXPECT_EQ(TstInfo(GetParam().ber).status(), GetParam().status);
}

const OctetsCase kTstInfos[] = {
    {"RequiredOnly", tst_info({}), RT_OK},
    {"AllElements", tst_info({kAccuracy, kTrue, kNonce, kTsa, kExtensions}), RT_OK},
    {"ElementBehindExtensions", tst_info({kExtensions, kNonce}), RT_E_SEQOVFL},
    {"CutBehindSerialNumber", sequence({kVersion, kPolicy, kImprint, kSerial}), RT_E_SETMISSING},
    {"EmptySequence", sequence({}), RT_E_SETMISSING},
    {"OrderingBeforeAccuracy", tst_info({kTrue, kAccuracy}), RT_E_SEQOVFL},
    // Intended: the form of [0] is not looked at, what it holds is.
    {"PrimitiveTsaAroundAName", tst_info({from_hex("80 05 82 03 61 62 63")}), RT_OK},
    {"PrimitiveTsaAroundNoName", tst_info({from_hex("80 02 05 00")}), RT_E_INVOPT},
    {"TimeIsNotParsed",
     element(0x30, join({kVersion, kPolicy, kImprint, kSerial, text_element(0x18, "soon")})), RT_OK},
    {"EmptyAccuracy", tst_info({from_hex("30 00")}), RT_OK},
};

INSTANTIATE_TEST_SUITE_P(Rfc3161, DecodingTstInfo, testing::ValuesIn(kTstInfos), case_name);

TEST(TSTInfo, WritesOrderingOnlyWhenItIsSet) {
    TstInfo decoded(tst_info({kTrue}));
    EXPECT_EQ(decoded.record().ordering, 0xFF);
    EXPECT_EQ(to_hex(encode<ASN1C_TSTInfo>(decoded.record()).octets), to_hex(tst_info({kTrue})));
    decoded.record().ordering = 0;
    EXPECT_EQ(to_hex(encode<ASN1C_TSTInfo>(decoded.record()).octets), to_hex(tst_info({})));
}

TEST(TSTInfo, AcceptsAnExplicitFalseAndDropsIt) {
    TstInfo decoded(tst_info({from_hex("01 01 00")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().ordering, 0);
    EXPECT_EQ(to_hex(encode<ASN1C_TSTInfo>(decoded.record()).octets), to_hex(tst_info({})));
}

TEST(TSTInfo, ForgetsTheOrderingOfAnEarlierValue) {
    ASN1T_TSTInfo record;
    record.ordering = 1;
    record.m.noncePresent = 1;
    const Octets der = tst_info({});
    ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
    ASSERT_EQ(ASN1C_TSTInfo(buffer, record).Decode(), RT_OK);
    EXPECT_EQ(record.ordering, 0);
    EXPECT_FALSE(record.m.noncePresent);
}

TEST(TSTInfoRaw, KeepsTheNameAsItCame) {
    const Octets der = tst_info({from_hex("a0 02 05 00")});  // no GeneralName
    Decoded<ASN1T_TSTInfoRaw, ASN1C_TSTInfoRaw> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_TRUE(decoded.record().m.tsaPresent);
    EXPECT_EQ(to_hex(decoded.record().tsa.data, decoded.record().tsa.numocts), "05 00");
    EXPECT_EQ(to_hex(encode<ASN1C_TSTInfoRaw>(decoded.record()).octets), to_hex(der));
}

TEST(TimeStampRespRaw, TakesAnyElementForTheToken) {
    const Octets der = from_hex("30 08 30 03 02 01 00 13 01 78");
    Decoded<ASN1T_TimeStampRespRaw, ASN1C_TimeStampRespRaw> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(decoded.record().timeStampToken.data, decoded.record().timeStampToken.numocts),
              "13 01 78");
}

TEST(TimeStampResp, NeedsAStatus) {
    using Response = Decoded<ASN1T_TimeStampResp, ASN1C_TimeStampResp>;
    EXPECT_EQ(Response(from_hex("30 00")).status(), RT_E_SETMISSING);
    EXPECT_EQ(Response(from_hex("30 05 30 03 02 01 02")).status(), RT_OK);
}

// Status

TEST(PKIStatusInfo, DoesNotCheckTheNumber) {
    StatusInfo decoded(from_hex("30 03 02 01 ff"));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().status, 255u);  // Intended: read as a magnitude
}

TEST(PKIStatusInfo, KeepsThePublishedLayout) {
    EXPECT_EQ(sizeof(ASN1T_PKIStatusInfo), 56u);
    EXPECT_EQ(sizeof(ASN1T_PKIFailureInfo), 16u);
    EXPECT_EQ(sizeof(ASN1T_Accuracy), 24u);
    EXPECT_EQ(sizeof(ASN1T_AlgorithmIdentifier), 552u);
    EXPECT_EQ(sizeof(ASN1T_MessageImprint), 576u);
    EXPECT_EQ(sizeof(ASN1T_TimeStampReq), 1168u);
    EXPECT_EQ(sizeof(ASN1T_TSTInfo), 1232u);
    EXPECT_EQ(sizeof(ASN1T_TimeStampResp), 624u);
    EXPECT_EQ(sizeof(ASN1T_ContentInfo), 552u);
    EXPECT_EQ(sizeof(ASN1T_Extension), 568u);
    EXPECT_EQ(sizeof(ASN1T_GeneralName), 24u);
}

TEST(PKIFreeText, NeedsAString) {
    using FreeText = Decoded<ASN1T_PKIFreeText, ASN1C_PKIFreeText>;
    EXPECT_EQ(FreeText(from_hex("30 00")).status(), RT_E_CONSVIO);
    EXPECT_EQ(FreeText(from_hex("30 02 0c 00")).status(), RT_OK);
    ASN1T_PKIFreeText record;
    EXPECT_EQ(encode<ASN1C_PKIFreeText>(record).result, RT_E_CONSVIO);
}

TEST(PKIFreeText, IsAnArrayOfTexts) {
    Decoded<ASN1T_PKIFreeText, ASN1C_PKIFreeText> decoded(from_hex("30 06 0c 01 61 0c 01 62"));
    ASSERT_EQ(decoded.status(), RT_OK);
    ASSERT_EQ(decoded.record().n, 2u);
    EXPECT_STREQ(decoded.record().elem[0], "a");
    EXPECT_STREQ(decoded.record().elem[1], "b");
}

TEST(PKIFreeText, CountsWhatItReadBeforeAFailure) {
    Decoded<ASN1T_PKIFreeText, ASN1C_PKIFreeText> decoded(from_hex("30 06 0c 01 61 13 01 62"));
    EXPECT_EQ(decoded.status(), RT_E_IDNOTFOUND);
    EXPECT_EQ(decoded.record().n, 1u);
}

TEST(PKIFreeText, RefusesACountWithoutTexts) {
    ASN1T_PKIFreeText record;
    record.n = 1;
    EXPECT_EQ(encode<ASN1C_PKIFreeText>(record).result, RT_E_BADVALUE);
}

TEST(PKIFailureInfo, HoldsThirtyTwoBitsAndNoMore) {
    using FailureInfo = Decoded<ASN1T_PKIFailureInfo, ASN1C_PKIFailureInfo>;
    EXPECT_EQ(FailureInfo(from_hex("03 05 00 00 00 00 01")).status(), RT_OK);
    EXPECT_EQ(FailureInfo(from_hex("03 06 07 00 00 00 00 80")).status(), RT_E_STROVFL);
    ASN1T_PKIFailureInfo record;
    std::fill(std::begin(record.data), std::end(record.data), std::uint8_t{0});
    record.numbits = 32;
    EXPECT_EQ(encode<ASN1C_PKIFailureInfo>(record).result, 7);
    record.numbits = 33;
    ASN1BEREncodeBuffer buffer;
    EXPECT_EQ(asn1E_PKIFailureInfo(buffer.getCtxtPtr(), &record, ASN1EXPL), RT_E_CONSVIO);
}

TEST(PKIFailureInfo, IsASetOfBitsForItsControlClass) {
    ASN1T_PKIFailureInfo record;
    ASN1C_PKIFailureInfo control(record);
    control.set(2);
    EXPECT_EQ(to_hex(encode<ASN1C_PKIFailureInfo>(record).octets), "03 02 05 20");
}

}  // namespace
}  // namespace Quillmark::test
