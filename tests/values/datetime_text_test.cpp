// Text forms of times and spans.

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "tests/support/failing_new.h"
#include "tests/support/result_code.h"
#include "values/datetime.h"
#include "values/detail/date_text.h"
#include "values/detail/ticks.h"

namespace {

using Quillmark::CDateTime;
using Quillmark::CDateTimeSpan;
using Quillmark::fromXsdDateTimeString;
using Quillmark::toXsdDateTimeString;
using Quillmark::detail::TickAccess;
using Quillmark::detail::ticks;

const HRESULT kBadText = HRESULT_FROM_WIN32(ERROR_INVALID_TIME);

// 2024-01-02 03:04:05 UTC and `ticks` of 100 nanoseconds
CDateTime some_time(std::uint64_t ticks_more = 0) {
    return CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u) + TickAccess::span(ticks_more);
}

std::string row_name(const char* name) {
    return name;
}

struct WriteCase {
    const char* name;
    std::uint64_t ticks;  // behind 2024-01-02 03:04:05
    const char* generalized;
    const char* display;
    const char* xsd;
};

class CDateTimeText : public testing::TestWithParam<WriteCase> {};

TEST_P(CDateTimeText, IsWrittenInEveryForm) {
    const CDateTime time = some_time(GetParam().ticks);
    EXPECT_STREQ(time.getGeneralizedTime().c_str(), GetParam().generalized);
    EXPECT_STREQ(time.tostring().c_str(), GetParam().display);
    EXPECT_STREQ(toXsdDateTimeString(time).c_str(), GetParam().xsd);
    const std::string display = GetParam().display;
    EXPECT_EQ(std::wstring(time.towstring().c_str()), std::wstring(display.begin(), display.end()));
    EXPECT_STREQ(time.getGeneralizedTimeTrimMicroseconds().c_str(), "02.01.2024 03:04:05");
}

INSTANTIATE_TEST_SUITE_P(Fractions, CDateTimeText,
                         testing::Values(WriteCase{"None", 0, "20240102030405Z", "02.01.2024 03:04:05",
                                                   "2024-01-02T03:04:05Z"},
                                         WriteCase{"Half", 5000000, "20240102030405.5Z",
                                                   "02.01.2024 03:04:05.500", "2024-01-02T03:04:05.500Z"},
                                         WriteCase{"Milliseconds", 1200000, "20240102030405.12Z",
                                                   "02.01.2024 03:04:05.120", "2024-01-02T03:04:05.120Z"},
                                         WriteCase{"OneMicrosecond", 10, "20240102030405.000001Z",
                                                   "02.01.2024 03:04:05.000001", "2024-01-02T03:04:05Z"},
                                         WriteCase{"AlmostAMillisecond", 9990, "20240102030405.000999Z",
                                                   "02.01.2024 03:04:05.000999", "2024-01-02T03:04:05Z"},
                                         WriteCase{"OneMillisecond", 10000, "20240102030405.001Z",
                                                   "02.01.2024 03:04:05.001", "2024-01-02T03:04:05.001Z"},
                                         WriteCase{"AllDigits", 1234560, "20240102030405.123456Z",
                                                   "02.01.2024 03:04:05.123456", "2024-01-02T03:04:05.123Z"},
                                         WriteCase{"BelowAMicrosecond", 9, "20240102030405Z",
                                                   "02.01.2024 03:04:05.000", "2024-01-02T03:04:05Z"}),
                         [](const auto& row) { return row_name(row.param.name); });

TEST(CDateTimeText, HasYearsOfFourDigitsAtLeast) {
    EXPECT_STREQ(TickAccess::time(0).getGeneralizedTime().c_str(), "16010101000000Z");
    EXPECT_STREQ(CDateTime(30827u, 12u, 31u, 23u, 59u, 59u, 0u, 0u).getGeneralizedTime().c_str(),
                 "308271231235959Z");
}

struct ReadCase {
    const char* name;
    const char* text;
    std::uint64_t ticks;  // behind 2024-01-02 03:04:05
};

class CDateTimeCompact : public testing::TestWithParam<ReadCase> {};

TEST_P(CDateTimeCompact, IsRead) {
    EXPECT_EQ(CDateTime(GetParam().text), some_time(GetParam().ticks));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CDateTimeCompact,
    testing::Values(ReadCase{"WithZ", "20240102030405Z", 0}, ReadCase{"WithoutZ", "20240102030405", 0},
                    ReadCase{"Fraction", "20240102030405.5Z", 5000000},
                    ReadCase{"FractionWithoutZ", "20240102030405.25", 2500000},
                    ReadCase{"SixDigits", "20240102030405.123456Z", 1234560},
                    ReadCase{"SeventhDigitIsDropped", "20240102030405.1234569Z", 1234560},
                    ReadCase{"PointAloneIsNoFraction", "20240102030405.", 0},
                    ReadCase{"EmptyFraction", "20240102030405.Z", 0},
                    // Intended: the fraction begins at the sixteenth character whatever stands before it.
                    ReadCase{"ZoneIsTakenForAFraction", "20240102030405+0300", 300000},
                    ReadCase{"AnyCharacterForThePoint", "20240102030405x5", 5000000}),
    [](const auto& row) { return row_name(row.param.name); });

struct RefusedCase {
    const char* name;
    const char* text;
    HRESULT code;
};

class CDateTimeCompactRefused : public testing::TestWithParam<RefusedCase> {};

TEST_P(CDateTimeCompactRefused, Throws) {
    EXPECT_CODE(GetParam().code, CDateTime(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Texts, CDateTimeCompactRefused,
                         testing::Values(RefusedCase{"Null", nullptr, E_FAIL},
                                         RefusedCase{"Empty", "", E_FAIL},
                                         RefusedCase{"NoDay", "202401", E_FAIL},
                                         RefusedCase{"Month13", "20241302030405Z", E_FAIL},
                                         RefusedCase{"February30", "20240230030405Z", E_FAIL},
                                         RefusedCase{"YearBefore1601", "16001231235959Z", E_FAIL},
                                         RefusedCase{"LetterInTheYear", "2o240102030405Z", kBadText},
                                         RefusedCase{"LetterInTheMonth", "20240x02030405Z", kBadText},
                                         RefusedCase{"SignInTheDay", "202401-1030405Z", kBadText},
                                         RefusedCase{"LetterInTheHour", "2024010203040xZ", kBadText},
                                         RefusedCase{"LetterInTheFraction", "20240102030405.5xZ", kBadText},
                                         // Intended: only the upper-case letter is removed.
                                         RefusedCase{"SmallZBehindAFraction", "20240102030405.5z", kBadText},
                                         RefusedCase{"TwoZ", "20240102030405.5ZZ", kBadText}),
                         [](const auto& row) { return row_name(row.param.name); });

TEST(GeneralizedTimeToTm, ReducesYearAndMonthOfATime) {
    unsigned int microseconds = 0;
    const std::tm time = Quillmark::GeneralizedTimeToTm("20240102030405.000007Z", microseconds, false);
    EXPECT_EQ(time.tm_year, 124);
    EXPECT_EQ(time.tm_mon, 0);
    EXPECT_EQ(time.tm_mday, 2);
    EXPECT_EQ(time.tm_hour, 3);
    EXPECT_EQ(time.tm_min, 4);
    EXPECT_EQ(time.tm_sec, 5);
    EXPECT_EQ(microseconds, 7u);
}

TEST(GeneralizedTimeToTm, LeavesYearAndMonthOfASpan) {
    unsigned int microseconds = 0;
    const std::tm time = Quillmark::GeneralizedTimeToTm("00010102030405", microseconds, true);
    EXPECT_EQ(time.tm_year, 1);
    EXPECT_EQ(time.tm_mon, 1);
}

TEST(GeneralizedTimeToTm, CountsMissingFieldsAsZero) {
    unsigned int microseconds = 9;
    const std::tm time = Quillmark::GeneralizedTimeToTm("2024010", microseconds, true);
    EXPECT_EQ(time.tm_year, 2024);
    EXPECT_EQ(time.tm_mon, 1);
    EXPECT_EQ(time.tm_mday, 0);
    EXPECT_EQ(microseconds, 0u);
}

struct SpanCase {
    const char* name;
    std::uint64_t ticks;
    const char* text;
};

class CDateTimeSpanText : public testing::TestWithParam<SpanCase> {};

TEST_P(CDateTimeSpanText, IsWrittenInEveryForm) {
    const CDateTimeSpan span = TickAccess::span(GetParam().ticks);
    EXPECT_STREQ(span.getGeneralizedTime().c_str(), GetParam().text);
    EXPECT_STREQ(span.tostring().c_str(), GetParam().text);
    const std::string text = GetParam().text;
    EXPECT_EQ(std::wstring(span.towstring().c_str()), std::wstring(text.begin(), text.end()));
}

// Intended: zeros are stripped through the point into the seconds and beyond.
INSTANTIATE_TEST_SUITE_P(
    Spans, CDateTimeSpanText,
    testing::Values(SpanCase{"Zero", 0, "Z"}, SpanCase{"OneSecond", 10000000, "00000000000001Z"},
                    SpanCase{"TenSeconds", 100000000, "0000000000001Z"},
                    SpanCase{"OneHour", 36000000000, "0000000001Z"},
                    SpanCase{"OneMicrosecond", 10, "00000000000000.000001Z"},
                    SpanCase{"HalfASecond", 5000000, "00000000000000.5Z"},
                    SpanCase{"AllFields",
                             ((((1ull * 365 + 2 * 30 + 3) * 24 + 4) * 60 + 5) * 60 + 6) * 10000000 + 1234560,
                             "00010203040506.123456Z"},
                    SpanCase{"Greatest", ~0ull, "584940228053610.955161Z"}),
    [](const auto& row) { return row_name(row.param.name); });

TEST(CDateTimeSpanCompact, IsReadWithFixedYearsAndMonths) {
    EXPECT_EQ(CDateTimeSpan("00010203040506.5Z"),
              CDateTimeSpan::oneYear + CDateTimeSpan::oneMonth * 2 + CDateTimeSpan::oneDay * 3 +
                  CDateTimeSpan::oneHour * 4 + CDateTimeSpan::oneMinute * 5 + CDateTimeSpan(6, 500000));
}

TEST(CDateTimeSpanCompact, HasNoRangeOfFields) {
    EXPECT_EQ(CDateTimeSpan("00009999999999"), CDateTimeSpan::oneMonth * 99 + CDateTimeSpan::oneDay * 99 +
                                                   CDateTimeSpan::oneHour * 99 +
                                                   CDateTimeSpan::oneMinute * 99 + CDateTimeSpan(99, 0));
}

TEST(CDateTimeSpanCompact, OfNothingIsZero) {
    EXPECT_EQ(CDateTimeSpan(""), CDateTimeSpan());
    EXPECT_EQ(CDateTimeSpan(static_cast<const char*>(nullptr)), CDateTimeSpan());
}

TEST(CDateTimeSpanCompact, RefusesLetters) {
    EXPECT_CODE(kBadText, CDateTimeSpan("00010x"));
}

class FromXsd : public testing::TestWithParam<ReadCase> {};

TEST_P(FromXsd, IsRead) {
    EXPECT_EQ(fromXsdDateTimeString(GetParam().text), some_time(GetParam().ticks)) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FromXsd,
    testing::Values(ReadCase{"Utc", "2024-01-02T03:04:05Z", 0},
                    ReadCase{"Fraction", "2024-01-02T03:04:05.25Z", 2500000},
                    ReadCase{"FractionWithoutZoneIsUtc", "2024-01-02T03:04:05.25", 2500000},
                    ReadCase{"SeventhDigitIsDropped", "2024-01-02T03:04:05.1234569Z", 1234560},
                    ReadCase{"EastOfGreenwich", "2024-01-02T06:04:05+03:00", 0},
                    ReadCase{"WestOfGreenwich", "2024-01-02T00:04:05-03:00", 0},
                    ReadCase{"FractionAndZone", "2024-01-02T06:04:05.5+03:00", 5000000},
                    ReadCase{"ZeroZone", "2024-01-02T03:04:05-00:00", 0},
                    ReadCase{"FourteenHours", "2024-01-02T17:04:05+14:00", 0},
                    // Intended: only the sum of hours and minutes has a limit.
                    ReadCase{"ThirteenHoursAndSixtyMinutes", "2024-01-02T17:04:05+13:60", 0},
                    ReadCase{"MinusIsLookedForFirst", "2024-01-02T00:04:05+-3:00", 0},
                    ReadCase{"SingleDigits", "2024-1-2T3:4:5Z", 0},
                    ReadCase{"BlankBeforeTheZone", "2024-01-02T03:04:05 Z", 0},
                    // Intended: a small letter passes where the compact form does not look.
                    ReadCase{"SmallZ", "2024-01-02T03:04:05z", 0},
                    ReadCase{"SmallZBehindSixDigits", "2024-01-02T03:04:05.123456z", 1234560},
                    ReadCase{"ColonBeforeTwoCharactersIsRemovedBehindZ", "2024-01-02T03:04:05.1:2Z", 1200000},
                    ReadCase{"ThirtyOneCharactersBehindTheSeconds",
                             "2024-01-02T03:04:05.12345678901234567890123456789Z", 1234560}),
    [](const auto& row) { return row_name(row.param.name); });

class FromXsdRefused : public testing::TestWithParam<RefusedCase> {};

TEST_P(FromXsdRefused, Throws) {
    EXPECT_CODE(GetParam().code, fromXsdDateTimeString(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FromXsdRefused,
    testing::Values(RefusedCase{"Null", nullptr, kBadText}, RefusedCase{"Empty", "", kBadText},
                    // Intended: something must follow the seconds.
                    RefusedCase{"NothingBehindTheSeconds", "2024-01-02T03:04:05", kBadText},
                    RefusedCase{"NoTime", "2024-01-02", kBadText},
                    RefusedCase{"BlankForT", "2024-01-02 03:04:05Z", kBadText},
                    RefusedCase{"ZoneOfAMinuteTooMuch", "2024-01-02T03:04:05+14:01", kBadText},
                    RefusedCase{"ZoneOfAMinuteTooMuchWest", "2024-01-02T03:04:05-14:01", kBadText},
                    RefusedCase{"ZoneWithoutMinutes", "2024-01-02T03:04:05+03", kBadText},
                    RefusedCase{"ZoneOfLetters", "2024-01-02T03:04:05+ab:cd", kBadText},
                    RefusedCase{"NegativeHoursOfTheZone", "2024-01-02T03:04:05--3:00", kBadText},
                    RefusedCase{"NegativeYear", "-202-01-02T03:04:05Z", kBadText},
                    RefusedCase{"NegativeDay", "2024-01--2T03:04:05Z", kBadText},
                    RefusedCase{"SmallZBehindOneDigit", "2024-01-02T03:04:05.5z", kBadText},
                    RefusedCase{"Month13", "2024-13-02T03:04:05Z", E_FAIL},
                    RefusedCase{"BeforeTheFirstTick", "1601-01-01T00:00:00+00:01", E_FAIL},
                    RefusedCase{"ThirtyTwoCharactersBehindTheSeconds",
                                "2024-01-02T03:04:05.123456789012345678901234567890Z", kBadText},
                    RefusedCase{
                        "EndlessFraction",
                        "2024-01-02T03:04:05.1111111111111111111111111111111111111111111111111111111111"
                        "111111111111111111111111111111111111111111111111111111111111111111111111+03:00",
                        kBadText}),
    [](const auto& row) { return row_name(row.param.name); });

TEST(FromXsd, AppliesTheZoneAcrossMidnight) {
    EXPECT_EQ(fromXsdDateTimeString("2024-01-02T03:04:05+03:00"), CDateTime("20240102000405Z"));
    EXPECT_EQ(fromXsdDateTimeString("2024-01-02T03:04:05-03:00"), CDateTime("20240102060405Z"));
    EXPECT_EQ(fromXsdDateTimeString("2024-01-01T00:30:00+01:00"), CDateTime("20231231233000Z"));
}

TEST(FromXsd, ReportsExhaustedMemoryWithACodeOfItsOwn) {
    for (std::size_t n = 0;; ++n) {
        const Quillmark::test::FailNthNew failing(n);
        HRESULT code = S_OK;
        try {
            fromXsdDateTimeString("2024-01-02T06:04:05.12345678901234567890+03:00");
        } catch (const CAtlException& exception) {
            code = exception;
        }
        if (!failing.failed()) {
            EXPECT_GT(n, 0u);
            EXPECT_EQ(code, S_OK);
            return;
        }
        EXPECT_EQ(code, NTE_NO_MEMORY) << "allocation " << n;
    }
}

// A time that the platform's calendar does not reach.
CDateTime beyond_the_calendar() {
    return TickAccess::time(0x8000000000000000);
}

template <typename Call>
void expect_rethrow(Call call) {
    try {
        try {
            throw std::runtime_error("being handled");
        } catch (const std::runtime_error&) {
            call();
        }
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& exception) {
        EXPECT_STREQ(exception.what(), "being handled");
    }
}

// Intended: no code is made of this failure.
TEST(BeyondTheCalendar, TextFormsRethrowTheExceptionBeingHandled) {
    expect_rethrow([] { beyond_the_calendar().getGeneralizedTime(); });
    expect_rethrow([] { beyond_the_calendar().getGeneralizedTimeTrimMicroseconds(); });
    expect_rethrow([] { beyond_the_calendar().tostring(); });
    expect_rethrow([] { beyond_the_calendar().towstring(); });
    expect_rethrow([] { toXsdDateTimeString(beyond_the_calendar()); });
}

TEST(BeyondTheCalendarDeathTest, TextFormsTerminateWithoutAnException) {
    EXPECT_DEATH(beyond_the_calendar().getGeneralizedTime(), "terminate");
    EXPECT_DEATH(toXsdDateTimeString(beyond_the_calendar()), "terminate");
}

}  // namespace
