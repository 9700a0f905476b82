#include "runtime/time_class.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <ctime>
#include <string>
#include <type_traits>

#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

// A time over a text pointer of its own.
template <typename Time>
struct Held {
    explicit Held(const char* start = nullptr, unsigned char useDerivedUTC = 0)
        : text(start), time(buffer, text, useDerivedUTC) {}

    int recorded() { return buffer.getCtxtPtr()->errInfo.status; }

    ASN1BEREncodeBuffer buffer;
    const char* text;
    Time time;
};

using Generalized = Held<ASN1CGeneralizedTime>;
using Utc = Held<ASN1CUTCTime>;

template <typename Time>
void set_date_and_time(Time& time, int year, int month, int day, int hour, int minute, int second) {
    EXPECT_EQ(time.setYear(year), RT_OK);
    EXPECT_EQ(time.setMonth(month), RT_OK);
    EXPECT_EQ(time.setDay(day), RT_OK);
    EXPECT_EQ(time.setHour(hour), RT_OK);
    EXPECT_EQ(time.setMinute(minute), RT_OK);
    EXPECT_EQ(time.setSecond(second), RT_OK);
}

TEST(GeneralizedTime, ReadsItsFieldsFromTheText) {
    Generalized held("20240102030405.25+0230");
    EXPECT_EQ(held.time.getYear(), 2024);
    EXPECT_EQ(held.time.getMonth(), 1);
    EXPECT_EQ(held.time.getDay(), 2);
    EXPECT_EQ(held.time.getHour(), 3);
    EXPECT_EQ(held.time.getMinute(), 4);
    EXPECT_EQ(held.time.getSecond(), 5);
    EXPECT_EQ(held.time.getFraction(), 25);
    EXPECT_EQ(held.time.getDiffHour(), 2);
    EXPECT_EQ(held.time.getDiffMinute(), 30);
    EXPECT_EQ(held.time.getDiff(), 150);
    EXPECT_EQ(held.time.getUTC(), 0);
    EXPECT_EQ(held.time.getCentury(), 20);
}

TEST(GeneralizedTime, GetterReportsAndRecordsAMalformedText) {
    Generalized held("20240132");
    EXPECT_EQ(held.time.getYear(), RT_E_INVFORMAT);
    EXPECT_EQ(held.recorded(), RT_E_INVFORMAT);
}

TEST(GeneralizedTime, IsMadeFieldByFieldAfterClear) {
    Generalized held(nullptr, 1);
    held.time.clear();
    EXPECT_EQ(held.time.getTimeStringLen(), 0);
    set_date_and_time(held.time, 2050, 2, 28, 23, 59, 58);
    EXPECT_STREQ(held.text, "20500228235958Z");
    EXPECT_EQ(held.recorded(), RT_OK);
}

TEST(GeneralizedTime, IsMadeFieldByFieldWithoutClear) {
    Generalized held;
    set_date_and_time(held.time, 2050, 2, 28, 23, 59, 58);
    EXPECT_STREQ(held.text, "20500228235958");
    EXPECT_EQ(held.recorded(), RT_OK);
}

TEST(GeneralizedTime, FirstSetterReplacesAMalformedTextWithoutRecording) {
    Generalized held("garbage");
    set_date_and_time(held.time, 2024, 1, 2, 3, 4, 5);
    EXPECT_STREQ(held.text, "20240102030405");
    EXPECT_EQ(held.recorded(), RT_OK);
}

TEST(GeneralizedTime, SetterKeepsTheOtherFieldsOfTheText) {
    Generalized held("20240102030405Z");
    EXPECT_EQ(held.time.setDay(31), RT_OK);
    EXPECT_STREQ(held.text, "20240131030405Z");
}

TEST(GeneralizedTime, DoesNotCompileUntilTheHourIsSet) {
    Generalized held;
    held.time.clear();
    held.time.setYear(2024);
    held.time.setMonth(1);
    held.time.setDay(2);
    EXPECT_EQ(held.time.getTimeStringLen(), 0);
    EXPECT_EQ(held.time.compileString(), RT_E_INVFORMAT);
    EXPECT_EQ(held.recorded(), RT_E_INVFORMAT);
}

TEST(GeneralizedTime, WritesMinutesAndSecondsThatTheTextLeftOut) {
    Generalized held("2024010212Z");
    EXPECT_EQ(held.time.getHour(), 12);
    EXPECT_EQ(held.time.compileString(), RT_OK);
    EXPECT_STREQ(held.text, "20240102120000Z");
}

TEST(GeneralizedTime, WritesFractionAndOffset) {
    Generalized held("20240102030405");
    EXPECT_EQ(held.time.setFraction(25), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405.25");
    EXPECT_EQ(held.time.setDiff(-2, 30), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405.25-0230");
    EXPECT_EQ(held.time.setDiff(2, 0), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405.25+02");
    EXPECT_EQ(held.time.setUTC(1), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405.25Z");
}

TEST(GeneralizedTime, LeavesANegativeFractionOut) {
    Generalized held("20240102030405.5Z");
    EXPECT_EQ(held.time.setFraction(-1), RT_OK);  // Intended: any number is taken.
    EXPECT_EQ(held.time.getFraction(), -1);
    EXPECT_STREQ(held.text, "20240102030405Z");
}

TEST(GeneralizedTime, EndsInNothingWithoutZAndOffset) {
    Generalized held("20240102030405Z");
    EXPECT_EQ(held.time.setUTC(0), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405");
}

TEST(GeneralizedTime, OffsetOfMinutesAloneHasASignOfItsOwn) {
    Generalized held("20240102030405");
    EXPECT_EQ(held.time.setDiff(0, -30), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405-0030");
    EXPECT_EQ(held.time.setDiff(-90), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405-0130");
    EXPECT_EQ(held.time.setDiffHour(2), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405+0230");
    EXPECT_EQ(held.time.getDiff(), 150);
}

TEST(GeneralizedTime, LosesLeadingZerosOfTheFraction) {
    Generalized held("20240102030405.05Z");
    EXPECT_EQ(held.time.getFraction(), 5);  // Intended.
}

TEST(GeneralizedTime, TakesAsManyDigitsOfTheFractionAs32BitsHold) {
    EXPECT_EQ(Generalized("20240102030405.2147483647Z").time.getFraction(), 2147483647);
    EXPECT_EQ(Generalized("20240102030405.2147483648Z").time.getFraction(), 214748364);
    EXPECT_EQ(Generalized("20240102030405.99999999999999999999Z").time.getFraction(), 999999999);
}

TEST(GeneralizedTime, SettersKeepToTheirRanges) {
    Generalized held("20240102030405Z");
    ASN1CGeneralizedTime& time = held.time;
    EXPECT_EQ(time.setYear(-1), RT_E_INVFORMAT);
    EXPECT_EQ(time.setYear(32768), RT_E_INVFORMAT);
    EXPECT_EQ(time.setMonth(0), RT_E_INVFORMAT);
    EXPECT_EQ(time.setMonth(13), RT_E_INVFORMAT);
    EXPECT_EQ(time.setDay(0), RT_E_INVFORMAT);
    EXPECT_EQ(time.setDay(32), RT_E_INVFORMAT);
    EXPECT_EQ(time.setHour(-1), RT_E_INVFORMAT);
    EXPECT_EQ(time.setHour(24), RT_E_INVFORMAT);
    EXPECT_EQ(time.setMinute(60), RT_E_INVFORMAT);
    EXPECT_EQ(time.setSecond(60), RT_E_INVFORMAT);
    EXPECT_EQ(time.setDiffHour(13), RT_E_INVFORMAT);
    EXPECT_EQ(time.setDiffHour(-13), RT_E_INVFORMAT);
    EXPECT_EQ(time.setDiff(1, 60), RT_E_INVFORMAT);
    EXPECT_EQ(time.setDiff(13 * 60), RT_E_INVFORMAT);
    EXPECT_EQ(time.setDiff(INT_MIN), RT_E_INVFORMAT);
    EXPECT_STREQ(held.text, "20240102030405Z");
    EXPECT_EQ(held.recorded(), RT_E_INVFORMAT);
    EXPECT_EQ(time.setDiff(12 * 60 + 59), RT_OK);
    EXPECT_EQ(time.getDiff(), 779);
}

TEST(GeneralizedTime, SettersKeepTheDateInItsMonth) {
    Generalized held("20240229000000Z");
    EXPECT_EQ(held.time.setYear(2023), RT_E_INVFORMAT);
    EXPECT_EQ(held.time.setMonth(4), RT_OK);
    EXPECT_EQ(held.time.setDay(31), RT_E_INVFORMAT);
    EXPECT_EQ(held.time.setDay(30), RT_OK);
}

TEST(GeneralizedTime, AcceptsFebruary29WhileTheYearIsUnset) {
    Generalized held;
    held.time.clear();
    EXPECT_EQ(held.time.setMonth(2), RT_OK);
    EXPECT_EQ(held.time.setDay(30), RT_E_INVFORMAT);
    EXPECT_EQ(held.time.setDay(29), RT_OK);
    EXPECT_EQ(held.time.setYear(1900), RT_E_INVFORMAT);
    EXPECT_EQ(held.time.setYear(2000), RT_OK);
}

TEST(GeneralizedTime, SetCenturyReplacesTheUpperDigits) {
    Generalized held("20240102030405Z");
    EXPECT_EQ(held.time.setCentury(19), RT_OK);
    EXPECT_STREQ(held.text, "19240102030405Z");
    EXPECT_EQ(held.time.setCentury(100), RT_E_INVFORMAT);
}

TEST(GeneralizedTime, FlagForUTCAloneCannotBeChanged) {
    Generalized held(nullptr, 1);
    held.time.clear();
    EXPECT_EQ(held.time.getUTC(), 1);
    EXPECT_EQ(held.time.setUTC(0), RT_OK);
    EXPECT_EQ(held.time.getUTC(), 1);
}

TEST(GeneralizedTime, ParsingAnotherTextRenewsItsOwn) {
    Generalized held;
    EXPECT_EQ(held.time.parseString("2024010203Z"), RT_OK);
    EXPECT_STREQ(held.text, "20240102030000Z");
    EXPECT_EQ(held.time.parseString("2024"), RT_E_INVFORMAT);
    EXPECT_EQ(held.time.getYear(), 2024);
}

TEST(GeneralizedTime, WritesIntoACallersBufferOf30Octets) {
    char octets[30] = "20240102030405Z";
    char* text = octets;
    ASN1BEREncodeBuffer buffer;
    ASN1CGeneralizedTime time(buffer, text, sizeof octets, 0);
    EXPECT_EQ(time.setHour(23), RT_OK);
    EXPECT_STREQ(octets, "20240102230405Z");
    EXPECT_EQ(text, octets);
}

TEST(GeneralizedTime, LeavesACallersBufferBelow30Octets) {
    char octets[29] = "20240102030405Z";
    char* text = octets;
    ASN1BEREncodeBuffer buffer;
    ASN1CGeneralizedTime time(buffer, text, sizeof octets, 0);
    EXPECT_EQ(time.setHour(23), RT_OK);
    EXPECT_STREQ(octets, "20240102030405Z");
    EXPECT_STREQ(text, "20240102230405Z");
}

TEST(GeneralizedTime, RefusesATextThatTheCallersBufferCannotHold) {
    char octets[30] = "20240102030405";
    char* text = octets;
    ASN1BEREncodeBuffer buffer;
    ASN1CGeneralizedTime time(buffer, text, sizeof octets, 0);
    EXPECT_EQ(time.setDiff(12, 59), RT_OK);
    EXPECT_EQ(time.setFraction(123456789), RT_OK);  // 29 characters
    EXPECT_STREQ(octets, "20240102030405.123456789+1259");
    EXPECT_EQ(time.setFraction(1234567890), RT_E_STROVFL);
    EXPECT_STREQ(octets, "20240102030405.123456789+1259");
}

TEST(GeneralizedTime, HandsOutItsTextWithTerminator) {
    Generalized held("2024010203Z");
    EXPECT_EQ(held.time.getTimeStringLen(), 11);
    char copy[12];
    EXPECT_EQ(held.time.getTimeString(copy, 11), nullptr);
    EXPECT_EQ(held.time.getTimeString(copy, 12), copy);
    EXPECT_STREQ(copy, "2024010203Z");
}

TEST(GeneralizedTime, WorksWithoutBufferAndOnAContext) {
    const char* text = "20240102030405Z";
    EXPECT_EQ(ASN1CGeneralizedTime(text).getYear(), 2024);
    ASN1CtxtPtr context = new ASN1Context;
    const char* wrong = "2024";
    EXPECT_EQ(ASN1CGeneralizedTime(*context, wrong).getYear(), RT_E_INVFORMAT);
    EXPECT_EQ(context->errInfo.status, RT_E_INVFORMAT);
}

// Each way to make a time: over a constant text or the caller's array, with a buffer, with a context, with
// neither.
template <typename Time>
class TimeConstructors : public testing::Test {};
using TimeTypes = testing::Types<ASN1CGeneralizedTime, ASN1CUTCTime>;
TYPED_TEST_SUITE(TimeConstructors, TimeTypes);

template <typename Time>
void expect_written_over_array(Time&& time, const char* octets, const char* text) {
    set_date_and_time(time, 2024, 1, 2, 3, 4, 5);
    const std::string want =
        std::is_same_v<std::decay_t<Time>, ASN1CUTCTime> ? "240102030405Z" : "20240102030405Z";
    EXPECT_EQ(octets, want);
    EXPECT_EQ(text, octets) << "the text left the array";
}

TYPED_TEST(TimeConstructors, WriteOverTheCallersArray) {
    char octets[30] = "";
    char* text = octets;
    expect_written_over_array(TypeParam(text, sizeof octets, 1), octets, text);
    octets[0] = '\0';
    ASN1BEREncodeBuffer buffer;
    expect_written_over_array(TypeParam(buffer, text, sizeof octets, 1), octets, text);
    octets[0] = '\0';
    const ASN1CtxtPtr context = new ASN1Context;
    expect_written_over_array(TypeParam(*context, text, sizeof octets, 1), octets, text);
}

template <typename Time>
void expect_written_beside_text(Time&& time, const char*& text) {
    set_date_and_time(time, 2024, 1, 2, 3, 4, 5);
    EXPECT_STREQ(text,
                 (std::is_same_v<std::decay_t<Time>, ASN1CUTCTime> ? "240102030405Z" : "20240102030405Z"));
    text = nullptr;
}

TYPED_TEST(TimeConstructors, WriteBesideAConstantText) {
    const char* text = nullptr;
    expect_written_beside_text(TypeParam(text, 1), text);
    ASN1BEREncodeBuffer buffer;
    expect_written_beside_text(TypeParam(buffer, text, 1), text);
    const ASN1CtxtPtr context = new ASN1Context;
    expect_written_beside_text(TypeParam(*context, text, 1), text);
}

// The zone of the process for the life of the object.
class Zone {
  public:
    explicit Zone(const char* name) {
        const char* before = std::getenv("TZ");
        before_ = before == nullptr ? "" : before;
        setenv("TZ", name, 1);
        tzset();
    }
    ~Zone() {
        if (before_.empty()) {
            unsetenv("TZ");
        } else {
            setenv("TZ", before_.c_str(), 1);
        }
        tzset();
    }

  private:
    std::string before_;
};

constexpr long kInstant = 1704164645;  // date -u -d @1704164645: 2024-01-02 03:04:05

TEST(TimeClass, SetTimeInUTC) {
    const Zone zone("EST+5");
    Generalized held(nullptr, 1);
    held.time.clear();
    EXPECT_EQ(held.time.setTime(kInstant, 1), RT_OK);
    EXPECT_STREQ(held.text, "20240102030405Z");
    EXPECT_EQ(held.time.getTime(), kInstant);
}

TEST(TimeClass, SetTimeInTheLocalZoneWithItsOffset) {
    const Zone zone("XST-3:30");
    Generalized held;
    held.time.clear();
    EXPECT_EQ(held.time.setTime(kInstant, 1), RT_OK);
    EXPECT_STREQ(held.text, "20240102063405+0330");
    EXPECT_EQ(held.time.getTime(), kInstant);
}

TEST(TimeClass, SetTimeInTheLocalZoneWithoutItsOffset) {
    const Zone zone("EST+5");
    Generalized held;
    held.time.clear();
    EXPECT_EQ(held.time.setTime(kInstant, 0), RT_OK);
    EXPECT_STREQ(held.text, "20240101220405");
    EXPECT_EQ(held.time.getTime(), kInstant);
}

TEST(TimeClass, SetTimeRefusesYearsBeyondTheField) {
    Generalized held(nullptr, 1);
    EXPECT_EQ(held.time.setTime(LONG_MAX, 0), RT_E_INVFORMAT);
    EXPECT_EQ(held.time.setTime(LONG_MIN, 0), RT_E_INVFORMAT);
}

TEST(TimeClass, GetTimeReportsUnsetFields) {
    Generalized held;
    held.time.clear();
    EXPECT_EQ(held.time.getTime(), RT_E_INVFORMAT);
}

TEST(TimeClass, GetTimeReportsAMalformedText) {
    EXPECT_EQ(Generalized("2024").time.getTime(), RT_E_INVFORMAT);
    EXPECT_EQ(Utc("2401020304").time.getTime(), RT_E_INVFORMAT);
}

TEST(UTCTime, KnowsTheCenturyByTheRuleOf50) {
    EXPECT_EQ(Utc("491231235959Z").time.getYear(), 2049);
    EXPECT_EQ(Utc("500101000000Z").time.getYear(), 1950);
    Utc held;
    held.time.clear();
    EXPECT_EQ(held.time.setYear(49), RT_OK);
    EXPECT_EQ(held.time.getYear(), 2049);
    EXPECT_EQ(held.time.setYear(50), RT_OK);
    EXPECT_EQ(held.time.getYear(), 1950);
    EXPECT_EQ(held.time.setYear(2024), RT_OK);
    EXPECT_EQ(held.time.getYear(), 2024);
    EXPECT_EQ(held.time.setYear(-1), RT_E_INVFORMAT);
}

TEST(UTCTime, IsMadeFieldByField) {
    Utc held(nullptr, 1);
    held.time.clear();
    set_date_and_time(held.time, 2024, 2, 29, 1, 2, 3);
    EXPECT_STREQ(held.text, "240229010203Z");
    char copy[16];
    EXPECT_STREQ(held.time.getTimeString(copy, sizeof copy), "240229010203Z");
}

TEST(UTCTime, KeepsTheLastTwoDigitsOfALaterYear) {
    Utc held("240102030405Z");
    EXPECT_EQ(held.time.setYear(2124), RT_OK);
    EXPECT_EQ(held.time.getYear(), 2124);
    EXPECT_STREQ(held.text, "240102030405Z");
    EXPECT_EQ(held.time.setYear(100), RT_OK);
    EXPECT_STREQ(held.text, "000102030405Z");
}

TEST(UTCTime, WritesSecondsThatTheTextLeftOut) {
    Utc held("2401020304-0130");
    EXPECT_EQ(held.time.getMinute(), 4);
    EXPECT_EQ(held.time.compileString(), RT_OK);
    EXPECT_STREQ(held.text, "240102030400-0130");
}

TEST(UTCTime, SetTime) {
    const Zone zone("XST-3:30");
    Utc held;
    held.time.clear();
    EXPECT_EQ(held.time.setTime(kInstant, 1), RT_OK);
    EXPECT_STREQ(held.text, "240102030405Z");
    EXPECT_EQ(held.time.setDiff(1, 0), RT_OK);
    EXPECT_EQ(held.time.setUTC(0), RT_OK);
    EXPECT_EQ(held.time.setTime(kInstant, 1), RT_OK);
    EXPECT_STREQ(held.text, "240102063405+0330");
    EXPECT_EQ(held.time.getTime(), kInstant);
}

TEST(UTCTime, ReportsAMalformedText) {
    Utc held("240102030405");
    EXPECT_EQ(held.time.getYear(), RT_E_INVFORMAT);
    EXPECT_EQ(held.recorded(), RT_E_INVFORMAT);
}

TEST(UTCTime, HasNoFraction) {
    Utc held("240102030405Z");
    EXPECT_EQ(held.time.getFraction(), 0);
    EXPECT_EQ(held.time.setFraction(0), RT_E_NOTSUPP);
    EXPECT_EQ(held.recorded(), RT_E_NOTSUPP);
    EXPECT_EQ(held.time.getFraction(), 0);
}

TEST(UTCTime, KeepsItsZForAZeroFlagAndAZeroOffset) {
    Utc held("240102030405Z");
    EXPECT_EQ(held.time.setUTC(0), RT_OK);  // Intended: the text must end in "Z" or an offset.
    EXPECT_EQ(held.time.getUTC(), 1);
    EXPECT_EQ(held.time.setDiff(1, 30), RT_OK);
    EXPECT_EQ(held.time.setUTC(0), RT_OK);
    EXPECT_STREQ(held.text, "240102030405+0130");
}

TEST(UTCTime, DoesNotCompileUntilTheHourIsSet) {
    Utc held;
    EXPECT_EQ(held.time.setYear(2024), RT_OK);
    EXPECT_EQ(held.time.setMonth(1), RT_OK);
    EXPECT_EQ(held.time.setDay(2), RT_OK);
    EXPECT_EQ(held.time.getTimeStringLen(), 0);
    EXPECT_EQ(held.recorded(), RT_OK);
    EXPECT_EQ(held.time.compileString(), RT_E_INVFORMAT);
    EXPECT_EQ(held.recorded(), RT_E_INVFORMAT);
    EXPECT_EQ(held.time.setHour(3), RT_OK);
    EXPECT_STREQ(held.text, "240102030000Z");
}

TEST(UTCTime, HasItsFlagAfterClear) {
    Utc held("2401020304+0130");
    EXPECT_EQ(held.time.getUTC(), 0);
    held.time.clear();
    EXPECT_EQ(held.time.getUTC(), 1);
    EXPECT_EQ(held.time.getYear(), -3);
    EXPECT_EQ(held.time.getMinute(), 0);
}

TEST(TimeClass, ComparesDatesFirstAndThenTimesLessTheirOffset) {
    const Generalized early("20240102030405Z");
    EXPECT_EQ(early.time.equals(Generalized("20240103000000Z").time), -1);
    EXPECT_EQ(early.time.equals(Generalized("20231231000000Z").time), 2);
    EXPECT_EQ(early.time.equals(Generalized("20240102050405+02").time), 0);
    EXPECT_EQ(early.time.equals(Generalized("20240102030404Z").time), 1000);
    EXPECT_EQ(early.time.equals(Utc("240102030405Z").time), 0);
    // Intended: a fraction counts in tenths of a second.
    EXPECT_EQ(early.time.equals(Generalized("20240102030405.5Z").time), -500);
    // Intended: dates are compared as written.
    EXPECT_EQ(Generalized("20240101003000+01").time.equals(Generalized("20231231233000Z").time), 1);
}

TEST(TimeClass, OperatorsFollowTheComparison) {
    const Generalized a("20240102030405Z");
    const Generalized b("20240102030406Z");
    EXPECT_TRUE(a.time < b.time);
    EXPECT_TRUE(a.time <= b.time);
    EXPECT_TRUE(a.time != b.time);
    EXPECT_FALSE(a.time == b.time);
    EXPECT_FALSE(a.time > b.time);
    EXPECT_FALSE(a.time >= b.time);
    EXPECT_TRUE(a.time == a.time);
}

TEST(TimeClass, CheckDateLetsUnsetPartsPass) {
    EXPECT_EQ(ASN1CTime::checkDate(29, 2, 2023), 0);
    EXPECT_EQ(ASN1CTime::checkDate(29, 2, 2024), 1);
    EXPECT_EQ(ASN1CTime::checkDate(29, 2, -3), 1);
    EXPECT_EQ(ASN1CTime::checkDate(30, 2, -3), 0);
    EXPECT_EQ(ASN1CTime::checkDate(31, -3, 2023), 1);
    EXPECT_EQ(ASN1CTime::checkDate(-3, 2, 2023), 1);
    EXPECT_EQ(ASN1CTime::checkDate(1, 13, 2023), 0);
}

struct Fields {
    int16_t year, month, day, hour, minute, second;
    int32_t fraction;
};

std::string text_of(const Fields& f) {
    char text[64];
    std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d.%d", f.year, f.month, f.day, f.hour, f.minute,
                  f.second, f.fraction);
    return text;
}

std::string after(Fields f, long milliseconds) {
    ASN1CTime::addMilliseconds(milliseconds, f.year, f.month, f.day, f.hour, f.minute, f.second, f.fraction);
    return text_of(f);
}

TEST(TimeClass, AddsMillisecondsThroughTheCalendar) {
    const Fields end_of_february{2024, 2, 28, 23, 59, 59, 9};
    EXPECT_EQ(after(end_of_february, 100), "2024-2-29 0:0:0.0");
    EXPECT_EQ(after(end_of_february, 100 + 86'400'000L), "2024-3-1 0:0:0.0");
    EXPECT_EQ(after({2024, 1, 1, 0, 0, 0, 0}, -100), "2023-12-31 23:59:59.9");
    EXPECT_EQ(after({2024, 1, 1, 0, 0, 0, 0}, 0), "2024-1-1 0:0:0.0");
}

TEST(TimeClass, DoesNotMoveATimeBeyondTheYearsOfTheField) {
    EXPECT_EQ(after({2024, 1, 1, 0, 0, 0, 0}, LONG_MAX), "2024-1-1 0:0:0.0");
    EXPECT_EQ(after({2024, 1, 1, 0, 0, 0, 0}, LONG_MIN), "2024-1-1 0:0:0.0");
}

TEST(TimeClass, AddsDays) {
    int16_t year = 2023;
    int16_t month = 12;
    int16_t day = 31;
    ASN1CTime::addDays(60, year, month, day);
    EXPECT_EQ(text_of({year, month, day, 0, 0, 0, 0}), "2024-2-29 0:0:0.0");
    ASN1CTime::addDays(-60, year, month, day);
    EXPECT_EQ(text_of({year, month, day, 0, 0, 0, 0}), "2023-12-31 0:0:0.0");
}

TEST(TimeClass, MonthTableCountsFromOne) {
    EXPECT_EQ(ASN1CTime::daysInMonth[1], 31);
    EXPECT_EQ(ASN1CTime::daysInMonth[2], 28);
    EXPECT_EQ(ASN1CTime::daysInMonth[12], 31);
}

static_assert(std::is_abstract_v<ASN1CTime>);

}  // namespace
}  // namespace Quillmark::test
