#include "runtime/time_string.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

std::string describe(const ASN1TimeRecord& record) {
    char text[96];
    std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d .%s %+d:%d %s", record.year, record.mon, record.day,
                  record.hour, record.min, record.sec, record.fraction, record.diffHour, record.diffMin,
                  record.utc != 0 ? "utc" : "local");
    return text;
}

struct ParseCase {
    const char* name;
    const char* text;
    const char* want = nullptr;  ///< null: malformed
};

// X.680 46 for the good ones.
constexpr ParseCase kGeneralizedTimes[] = {
    {.name = "WithSeconds", .text = "20240102030405Z", .want = "2024-1-2 3:4:5 . +0:0 utc"},
    {.name = "WithMinutes", .text = "202401020304Z", .want = "2024-1-2 3:4:0 . +0:0 utc"},
    {.name = "HoursOnly", .text = "2024010212", .want = "2024-1-2 12:0:0 . +0:0 local"},
    {.name = "LeapDayOfLeapYear", .text = "20240229000000Z", .want = "2024-2-29 0:0:0 . +0:0 utc"},
    {.name = "LeapDayOfCommonYear", .text = "20230229000000Z"},
    {.name = "LeapDayOf1900", .text = "19000229000000Z"},
    {.name = "LeapDayOf2000", .text = "20000229000000Z", .want = "2000-2-29 0:0:0 . +0:0 utc"},
    {.name = "April30", .text = "20240430000000Z", .want = "2024-4-30 0:0:0 . +0:0 utc"},
    {.name = "April31", .text = "20240431000000Z"},
    {.name = "Month0", .text = "20240002000000Z"},
    {.name = "Month12", .text = "20241231000000Z", .want = "2024-12-31 0:0:0 . +0:0 utc"},
    {.name = "Month13", .text = "20241302000000Z"},
    {.name = "Day0", .text = "20240100000000Z"},
    {.name = "Hour23", .text = "20240102230000Z", .want = "2024-1-2 23:0:0 . +0:0 utc"},
    {.name = "Hour24", .text = "20240102240000Z"},
    {.name = "Minute59", .text = "20240102035900Z", .want = "2024-1-2 3:59:0 . +0:0 utc"},
    {.name = "Minute60", .text = "20240102036000Z"},
    {.name = "Second59", .text = "20240102030459Z", .want = "2024-1-2 3:4:59 . +0:0 utc"},
    {.name = "Second60", .text = "20240102030460Z"},
    {.name = "Year0", .text = "00000102030405Z", .want = "0-1-2 3:4:5 . +0:0 utc"},
    {.name = "YearNegative", .text = "-0240102030405Z"},
    // Intended: the date is read as `sscanf` reads numbers, with blanks and signs in front.
    {.name = "BlanksInTheDate", .text = " 2024 01 0203Z", .want = "2024-1-2 3:0:0 . +0:0 utc"},
    {.name = "SignsInTheDate", .text = "2024+1+203Z", .want = "2024-1-2 3:0:0 . +0:0 utc"},
    {.name = "BlankBeforeTheHours", .text = "20240102 3Z"},
    {.name = "HourOfOneDigit", .text = "202401023Z", .want = "2024-1-2 3:0:0 . +0:0 utc"},
    {.name = "NoHours", .text = "20240102"},
    {.name = "FractionWithoutSeconds", .text = "20240102.5"},
    {.name = "FractionBehindHours", .text = "2024010203.5Z"},
    {.name = "FractionBehindMinutes", .text = "202401020304.5Z"},
    {.name = "Fraction", .text = "20240102030405.25Z", .want = "2024-1-2 3:4:5 .25 +0:0 utc"},
    // Intended: leading zeros of the fraction get lost.
    {.name = "FractionWithLeadingZeros",
     .text = "20240102030405.000120Z",
     .want = "2024-1-2 3:4:5 .120 +0:0 utc"},
    {.name = "FractionOfZeros", .text = "20240102030405.000Z", .want = "2024-1-2 3:4:5 . +0:0 utc"},
    {.name = "FractionWithoutDigits", .text = "20240102030405.Z"},
    {.name = "FractionOf20Digits",
     .text = "20240102030405.12345678901234567890Z",
     .want = "2024-1-2 3:4:5 .12345678901234567890 +0:0 utc"},
    // Intended: the twenty-first digit ends the time, which thereby is a local one.
    {.name = "FractionOf21Digits",
     .text = "20240102030405.123456789012345678901Z",
     .want = "2024-1-2 3:4:5 .12345678901234567890 +0:0 local"},
    {.name = "OffsetEast", .text = "20240102030405+0230", .want = "2024-1-2 3:4:5 . +2:30 local"},
    {.name = "OffsetWest", .text = "20240102030405-0230", .want = "2024-1-2 3:4:5 . -2:-30 local"},
    {.name = "OffsetInHours", .text = "2024010203+02", .want = "2024-1-2 3:0:0 . +2:0 local"},
    {.name = "OffsetOf12Hours", .text = "20240102030405+1259", .want = "2024-1-2 3:4:5 . +12:59 local"},
    {.name = "OffsetOf13Hours", .text = "20240102030405+1300"},
    {.name = "OffsetOf60Minutes", .text = "20240102030405+0260"},
    {.name = "OffsetWithoutDigits", .text = "20240102030405+"},
    {.name = "ZBehindOffset", .text = "20240102030405+0230Z", .want = "2024-1-2 3:4:5 . +2:30 utc"},
    {.name = "CharactersBehindZ", .text = "20240102030405ZZ"},
    // Intended: any other end character is that of a local time.
    {.name = "OtherEndCharacter", .text = "20240102030405X", .want = "2024-1-2 3:4:5 . +0:0 local"},
    {.name = "Empty", .text = ""},
    {.name = "Letters", .text = "not a time"},
    {.name = "Null", .text = nullptr},
};

class ParseGeneralizedTime : public testing::TestWithParam<ParseCase> {};

TEST_P(ParseGeneralizedTime, GivesPartsOrRecordsInvalidFormat) {
    CodecContext ctxt;
    ASN1TimeRecord record{};
    const int status = rtParseGeneralizedTime(ctxt, GetParam().text, &record);
    const int want = GetParam().want != nullptr ? RT_OK : RT_E_INVFORMAT;
    EXPECT_EQ(status, want);
    EXPECT_EQ(ctxt.recorded(), want);
    if (GetParam().want != nullptr) {
        EXPECT_EQ(describe(record), GetParam().want);
    }
}

INSTANTIATE_TEST_SUITE_P(X680, ParseGeneralizedTime, testing::ValuesIn(kGeneralizedTimes), case_name);

constexpr ParseCase kUtcTimes[] = {
    {.name = "WithSeconds", .text = "240102030405Z", .want = "2024-1-2 3:4:5 . +0:0 utc"},
    {.name = "WithoutSeconds", .text = "2401020304Z", .want = "2024-1-2 3:4:0 . +0:0 utc"},
    {.name = "Year49", .text = "490102030405Z", .want = "2049-1-2 3:4:5 . +0:0 utc"},
    {.name = "Year50", .text = "500102030405Z", .want = "1950-1-2 3:4:5 . +0:0 utc"},
    {.name = "LeapDayOf2000", .text = "000229030405Z", .want = "2000-2-29 3:4:5 . +0:0 utc"},
    {.name = "LeapDayOfCommonYear", .text = "010229030405Z"},
    {.name = "YearNegative", .text = "-10102030405Z"},
    {.name = "Year99", .text = "990102030405Z", .want = "1999-1-2 3:4:5 . +0:0 utc"},
    {.name = "Year00", .text = "000102030405Z", .want = "2000-1-2 3:4:5 . +0:0 utc"},
    {.name = "Month13", .text = "241302030405Z"},
    {.name = "Day0", .text = "240100030405Z"},
    {.name = "Hour24", .text = "240102240000Z"},
    {.name = "Minute60", .text = "240102036000Z"},
    {.name = "Second60", .text = "240102030460Z"},
    {.name = "WithoutMinutes", .text = "24010203Z"},
    {.name = "Offset", .text = "2401020304-0130", .want = "2024-1-2 3:4:0 . -1:-30 local"},
    {.name = "OffsetBehindSeconds", .text = "240102030405+1259", .want = "2024-1-2 3:4:5 . +12:59 local"},
    {.name = "OffsetOf60Minutes", .text = "2401020304+0160"},
    {.name = "OffsetOfThreeDigits", .text = "2401020304+013"},
    {.name = "OffsetOf13Hours", .text = "2401020304+1300"},
    {.name = "CharactersBehindOffset", .text = "2401020304+0130Z"},
    {.name = "NeitherZNorOffset", .text = "240102030405"},
    {.name = "CharactersBehindZ", .text = "240102030405Z0"},
    {.name = "Fraction", .text = "240102030405.5Z"},
    {.name = "Empty", .text = ""},
    {.name = "Null", .text = nullptr},
};

class ParseUTCTime : public testing::TestWithParam<ParseCase> {};

TEST_P(ParseUTCTime, GivesPartsOrRecordsInvalidFormat) {
    CodecContext ctxt;
    ASN1TimeRecord record{};
    const int status = rtParseUTCTime(ctxt, GetParam().text, &record);
    const int want = GetParam().want != nullptr ? RT_OK : RT_E_INVFORMAT;
    EXPECT_EQ(status, want);
    EXPECT_EQ(ctxt.recorded(), want);
    if (GetParam().want != nullptr) {
        EXPECT_EQ(describe(record), GetParam().want);
    }
}

INSTANTIATE_TEST_SUITE_P(X680, ParseUTCTime, testing::ValuesIn(kUtcTimes), case_name);

TEST(ParseTime, LeavesTheRecordAfterAFailure) {
    CodecContext ctxt;
    ASN1TimeRecord record{};
    record.year = 1999;
    rtParseGeneralizedTime(ctxt, "20240102xx", &record);
    EXPECT_EQ(record.year, 1999);
}

ASN1TimeRecord second_of_january() {
    ASN1TimeRecord record{};
    record.year = 2024;
    record.mon = 1;
    record.day = 2;
    record.hour = 3;
    record.min = 4;
    record.sec = 5;
    return record;
}

std::string make(const ASN1TimeRecord& record) {
    CodecContext ctxt;
    char buffer[64];
    char* text = buffer;
    const int status = rtMakeGeneralizedTime(ctxt, &record, &text, sizeof buffer);
    return status == RT_OK ? buffer : std::to_string(status);
}

TEST(MakeGeneralizedTime, WritesLocalTimeWithoutOffset) {
    EXPECT_EQ(make(second_of_january()), "20240102030405");
}

TEST(MakeGeneralizedTime, WritesFractionAndZ) {
    ASN1TimeRecord record = second_of_january();
    std::strcpy(record.fraction, "25");
    record.utc = 1;
    EXPECT_EQ(make(record), "20240102030405.25Z");
}

TEST(MakeGeneralizedTime, WritesOffsetWithItsSign) {
    ASN1TimeRecord record = second_of_january();
    record.diffHour = -2;
    record.diffMin = -30;
    EXPECT_EQ(make(record), "20240102030405-0230");
    record.diffHour = 0;
    record.diffMin = 15;
    EXPECT_EQ(make(record), "20240102030405+0015");
}

TEST(MakeGeneralizedTime, PrefersZToTheOffset) {
    ASN1TimeRecord record = second_of_january();
    record.utc = 1;
    record.diffHour = 2;
    EXPECT_EQ(make(record), "20240102030405Z");
}

TEST(MakeGeneralizedTime, RefusesDatesThatDoNotExist) {
    ASN1TimeRecord record = second_of_january();
    record.year = 9999;
    EXPECT_EQ(make(record), "99990102030405");
    record.year = 10000;
    EXPECT_EQ(make(record), "-31");
    record.year = -1;
    EXPECT_EQ(make(record), "-31");
    record.year = 2023;
    record.mon = 2;
    record.day = 29;
    EXPECT_EQ(make(record), "-31");
}

TEST(MakeGeneralizedTime, NeedsRoomForTheTerminator) {
    CodecContext ctxt;
    const ASN1TimeRecord record = second_of_january();
    char buffer[16];
    char* text = buffer;
    EXPECT_EQ(rtMakeGeneralizedTime(ctxt, &record, &text, 14), RT_E_STROVFL);
    EXPECT_EQ(ctxt.recorded(), RT_E_STROVFL);
    EXPECT_EQ(rtMakeGeneralizedTime(ctxt, &record, &text, 15), RT_OK);
    EXPECT_STREQ(buffer, "20240102030405");
}

TEST(MakeGeneralizedTime, TakesABlockOfTheHeapForSizeZero) {
    CodecContext ctxt;
    const ASN1TimeRecord record = second_of_january();
    char* text = nullptr;
    ASSERT_EQ(rtMakeGeneralizedTime(ctxt, &record, &text, 0), RT_OK);
    EXPECT_STREQ(text, "20240102030405");
}

TEST(MakeGeneralizedTime, ReportsAHeapThatIsEmpty) {
    CodecHeap heap;
    CodecContext ctxt;
    const ASN1TimeRecord record = second_of_january();
    char* text = nullptr;
    heap.fail_after(0);
    EXPECT_EQ(rtMakeGeneralizedTime(ctxt, &record, &text, 0), RT_E_NOMEM);
}

TEST(MakeGeneralizedTime, StaysInItsBufferWhateverThePartsAre) {
    ASN1TimeRecord record = second_of_january();
    record.hour = record.min = record.sec = record.diffHour = record.diffMin = INT16_MIN;
    std::memset(record.fraction, '9', sizeof record.fraction);  // not even terminated
    EXPECT_EQ(make(record), "20240102-32768-32768-32768.99999999999999999999-3276832768");
}

TEST(DaysInMonth, AreThoseOfACommonYear) {
    int days = 0;
    for (const int8_t month : OS_daysInMonth) {
        days += month;
    }
    EXPECT_EQ(days, 365);
    EXPECT_EQ(OS_daysInMonth[1], 28);
}

}  // namespace
}  // namespace Quillmark::test
