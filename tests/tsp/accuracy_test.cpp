// CAccuracy and the Accuracy of RFC 3161 2.4.2.

#include "tsp/accuracy.h"

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/case_name.h"
#include "tests/support/hex.h"

namespace Quillmark::PKI::TSP {
namespace {

using asn1data::ASN1C_Accuracy;
using asn1data::ASN1T_Accuracy;
using test::from_hex;
using test::to_hex;

/// The encoding of `record` in hexadecimal, or the status in decimal.
std::string encoding_of(ASN1T_Accuracy& record) {
    ASN1BEREncodeBuffer buffer;
    const int length = ASN1C_Accuracy(buffer, record).EncodeTo(buffer);
    return length < 0 ? std::to_string(length) : to_hex(buffer.getMsgPtr(), static_cast<std::size_t>(length));
}

std::string encoding_of(const CAccuracy& accuracy) {
    ASN1T_Accuracy record;
    TSP_AccuracyToASN1T_Accuracy(nullptr, record, accuracy);
    return encoding_of(record);
}

struct Decoded {
    int status;
    CAccuracy accuracy;
    unsigned position;
};

Decoded decode(const char* hex) {
    const auto octets = from_hex(hex);
    ASN1BERDecodeBuffer buffer(octets.data(), static_cast<int>(octets.size()));
    ASN1T_Accuracy record;
    Decoded decoded{};
    decoded.status = ASN1C_Accuracy(buffer, record).DecodeFrom(buffer);
    ASN1T_AccuracyToTSP_Accuracy(decoded.accuracy, record);
    decoded.position = buffer.getCtxtPtr()->buffer.byteIndex;
    return decoded;
}

TEST(CAccuracy, ZerosAreNoElementsAtAll) {
    EXPECT_EQ(encoding_of(CAccuracy{}), "30 00");
}

TEST(CAccuracy, ZerosSetNoPresenceFlag) {
    ASN1T_Accuracy record;
    record.m.secondsPresent = record.m.millisPresent = record.m.microsPresent = 1;
    TSP_AccuracyToASN1T_Accuracy(nullptr, record, CAccuracy{});
    EXPECT_FALSE(record.m.secondsPresent);
    EXPECT_FALSE(record.m.millisPresent);
    EXPECT_FALSE(record.m.microsPresent);
}

struct ValueCase {
    const char* name;
    CAccuracy accuracy;
    const char* der;
};

class AccuracyValue : public testing::TestWithParam<ValueCase> {};

TEST_P(AccuracyValue, Encodes) {
    EXPECT_EQ(encoding_of(GetParam().accuracy), GetParam().der);
}

TEST_P(AccuracyValue, DecodesBack) {
    const Decoded decoded = decode(GetParam().der);
    EXPECT_EQ(decoded.status, RT_OK);
    EXPECT_TRUE(decoded.accuracy == GetParam().accuracy);
}

const ValueCase kValues[] = {
    {.name = "Seconds", .accuracy = {1, 0, 0}, .der = "30 03 02 01 01"},
    {.name = "LeastMillis", .accuracy = {0, 1, 0}, .der = "30 03 80 01 01"},
    {.name = "MostMillis", .accuracy = {0, 999, 0}, .der = "30 04 80 02 03 e7"},
    {.name = "LeastMicros", .accuracy = {0, 0, 1}, .der = "30 03 81 01 01"},
    {.name = "MostMicros", .accuracy = {0, 0, 999}, .der = "30 04 81 02 03 e7"},
    {.name = "All", .accuracy = {128, 255, 256}, .der = "30 0c 02 02 00 80 80 02 00 ff 81 02 01 00"},
};

INSTANTIATE_TEST_SUITE_P(Rfc3161, AccuracyValue, testing::ValuesIn(kValues), test::case_name);

TEST(CAccuracy, SecondsHaveNoRangeCheck) {
    EXPECT_EQ(encoding_of(CAccuracy{0xFFFFFFFF, 0, 0}), "30 03 02 01 ff");
    EXPECT_EQ(decode("30 03 02 01 ff").accuracy.seconds, 0xFFFFFFFFu);
}

TEST(CAccuracy, RefusesToEncodeMillisAndMicrosAbove999) {
    EXPECT_EQ(encoding_of(CAccuracy{0, 1000, 0}), "-23");
    EXPECT_EQ(encoding_of(CAccuracy{0, 0, 1000}), "-23");
}

// Intended: the value is cut to 16 bits and its presence is not, so what would vanish is refused.
TEST(CAccuracy, CutsMillisAndMicrosTo16BitsButKeepsThemPresent) {
    ASN1T_Accuracy record;
    TSP_AccuracyToASN1T_Accuracy(nullptr, record, CAccuracy{0, 65536, 65537});
    EXPECT_TRUE(record.m.millisPresent);
    EXPECT_EQ(record.millis, 0);
    EXPECT_EQ(record.micros, 1);
    EXPECT_EQ(encoding_of(record), "-23");
}

struct RefusedCase {
    const char* name;
    const char* der;
    int status;
};

class RefusedAccuracy : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedAccuracy, FailsWithItsStatus) {
    EXPECT_EQ(decode(GetParam().der).status, GetParam().status);
}

const RefusedCase kRefused[] = {
    {.name = "MillisAbove999", .der = "30 04 80 02 03 e8", .status = RT_E_CONSVIO},
    {.name = "MillisZero", .der = "30 03 80 01 00", .status = RT_E_CONSVIO},
    {.name = "MicrosAbove999", .der = "30 04 81 02 03 e8", .status = RT_E_CONSVIO},
    {.name = "MicrosZero", .der = "30 03 81 01 00", .status = RT_E_CONSVIO},
    {.name = "FourthElement", .der = "30 0c 02 01 01 80 01 01 81 01 01 02 01 01", .status = RT_E_SEQOVFL},
    {.name = "MicrosBeforeMillis", .der = "30 06 81 01 01 80 01 01", .status = RT_E_SEQOVFL},
    {.name = "NoSequence", .der = "31 00", .status = RT_E_IDNOTFOUND},
    {.name = "SecondsTooLarge", .der = "30 07 02 05 01 00 00 00 00", .status = RT_E_TOOBIG},
};

INSTANTIATE_TEST_SUITE_P(Rfc3161, RefusedAccuracy, testing::ValuesIn(kRefused), test::case_name);

// Intended: the form bit of the tag is not looked at.
TEST(CAccuracy, ConstructedTagsReadAsMillisAndMicros) {
    const Decoded decoded = decode("30 06 a0 01 07 a1 01 08");
    EXPECT_EQ(decoded.status, RT_OK);
    EXPECT_TRUE(decoded.accuracy == (CAccuracy{0, 7, 8}));
}

// Intended: the end-of-contents octets of the SEQUENCE are left to whoever reads on.
TEST(CAccuracy, LeavesTheEndOfTheIndefiniteFormUnread) {
    const Decoded decoded = decode("30 80 02 01 05 00 00");
    EXPECT_EQ(decoded.status, RT_OK);
    EXPECT_EQ(decoded.accuracy.seconds, 5u);
    EXPECT_EQ(decoded.position, 5u);
}

TEST(CAccuracy, EmptySequenceDecodesToZeros) {
    EXPECT_EQ(decode("30 00").status, RT_OK);
    EXPECT_TRUE(decode("30 00").accuracy == CAccuracy{});
}

TEST(CAccuracy, ReadingReplacesWhatWasThere) {
    ASN1T_Accuracy record;
    TSP_AccuracyToASN1T_Accuracy(nullptr, record, CAccuracy{0, 5, 0});
    CAccuracy accuracy{1, 2, 3};
    ASN1T_AccuracyToTSP_Accuracy(accuracy, record);
    EXPECT_TRUE(accuracy == (CAccuracy{0, 5, 0}));
}

TEST(CAccuracy, DiffersInAnyField) {
    const CAccuracy accuracy{1, 2, 3};
    for (const CAccuracy& other : {CAccuracy{9, 2, 3}, CAccuracy{1, 9, 3}, CAccuracy{1, 2, 9}}) {
        EXPECT_FALSE(accuracy == other);
        EXPECT_TRUE(accuracy != other);
    }
    EXPECT_TRUE(accuracy == (CAccuracy{1, 2, 3}));
    EXPECT_FALSE(accuracy != (CAccuracy{1, 2, 3}));
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
