// Interval arithmetic with one-letter units.

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tests/support/result_code.h"
#include "values/datetime.h"
#include "values/detail/date_text.h"
#include "values/detail/ticks.h"

namespace {

using Quillmark::CDateTime;
using Quillmark::CDateTimeSpan;
using Quillmark::DateAddA;
using Quillmark::DateAddMonth;
using Quillmark::DateAddW;
using Quillmark::detail::TickAccess;
using Quillmark::detail::ticks;

const HRESULT kNoSuchDate = HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER);

struct AddCase {
    const char* name;
    const char* interval;
    int number;
    const char* from;
    const char* to;
};

class DateAdd : public testing::TestWithParam<AddCase> {};

TEST_P(DateAdd, MovesADate) {
    EXPECT_STREQ(DateAddA(GetParam().interval, GetParam().number, CDateTime(GetParam().from))
                     .getGeneralizedTime()
                     .c_str(),
                 GetParam().to);
}

TEST_P(DateAdd, MovesADateByAWideLetter) {
    const std::string narrow = GetParam().interval;
    const std::wstring interval(narrow.begin(), narrow.end());
    EXPECT_STREQ(DateAddW(interval.c_str(), GetParam().number, CDateTime(GetParam().from))
                     .getGeneralizedTime()
                     .c_str(),
                 GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(
    Intervals, DateAdd,
    testing::Values(AddCase{"Seconds", "s", 55, "20240102030405Z", "20240102030500Z"},
                    AddCase{"Minutes", "n", 2, "20240102030405Z", "20240102030605Z"},
                    AddCase{"Hours", "h", 21, "20240102030405Z", "20240103000405Z"},
                    AddCase{"Days", "d", 30, "20240102030405Z", "20240201030405Z"},
                    AddCase{"Weeks", "w", 2, "20240102030405Z", "20240116030405Z"},
                    AddCase{"Months", "m", 13, "20240102030405Z", "20250202030405Z"},
                    AddCase{"Years", "y", 2, "20240102030405Z", "20260102030405Z"},
                    AddCase{"SecondsBack", "s", -6, "20240102030405Z", "20240102030359Z"},
                    AddCase{"WeeksBack", "w", -1, "20240102030405Z", "20231226030405Z"},
                    AddCase{"NoSeconds", "s", 0, "20240102030405Z", "20240102030405Z"},
                    AddCase{"NoMonths", "m", 0, "20240131030405.123456Z", "20240131030405.123456Z"},
                    AddCase{"EmptyTextMeansDays", "", 2, "20240102030405Z", "20240104030405Z"},
                    AddCase{"OnlyTheFirstCharacterCounts", "month", 1, "20240102030405Z", "20240202030405Z"},
                    AddCase{"MinuteIsAMonth", "minute", 1, "20240102030405Z", "20240202030405Z"},
                    AddCase{"MonthEndOfALeapYear", "m", 1, "20240131030405Z", "20240229030405Z"},
                    AddCase{"MonthEndOfACommonYear", "m", 1, "20230131030405Z", "20230228030405Z"},
                    AddCase{"MonthEndBackOfALeapYear", "m", -1, "20240331030405Z", "20240229030405Z"},
                    AddCase{"MonthEndBackOfACommonYear", "m", -1, "20230331030405Z", "20230228030405Z"},
                    AddCase{"NoLeapYearIn1900", "m", 1, "19000131000000Z", "19000228000000Z"},
                    AddCase{"LeapYearIn2000", "m", 1, "20000131000000Z", "20000229000000Z"},
                    AddCase{"LeapDayPlusAYear", "y", 1, "20240229000000Z", "20250228000000Z"},
                    AddCase{"LeapDayPlusFourYears", "y", 4, "20240229000000Z", "20280229000000Z"},
                    AddCase{"DecemberToJanuary", "m", 1, "20231231000000Z", "20240131000000Z"},
                    AddCase{"JanuaryToDecember", "m", -1, "20240131000000Z", "20231231000000Z"},
                    AddCase{"TwelveMonthsBackFromDecember", "m", -12, "20241231000000Z", "20231231000000Z"},
                    AddCase{"FractionIsKept", "m", 1, "20240102030405.123456Z", "20240202030405.123456Z"}),
    [](const auto& row) { return std::string(row.param.name); });

// Intended: a clamped day does not come back.
TEST(DateAddMonth, DoesNotRestoreAClampedDay) {
    const CDateTime february = DateAddMonth(1, CDateTime("20240131000000Z"));
    EXPECT_STREQ(DateAddMonth(1, february).getGeneralizedTime().c_str(), "20240329000000Z");
}

TEST(DateAddMonth, FailsWithThePlatformsCodeBeyondItsCalendar) {
    EXPECT_CODE(kNoSuchDate, DateAddMonth(1, TickAccess::time(0x8000000000000000)));
    EXPECT_CODE(kNoSuchDate, DateAddMonth(-1, CDateTime("16010131000000Z")));
    EXPECT_CODE(kNoSuchDate, DateAddMonth(1, CDateTime(30827u, 12u, 1u, 0u, 0u, 0u, 0u, 0u)));
    EXPECT_NO_THROW(DateAddMonth(-1, CDateTime("16010228000000Z")));
    EXPECT_NO_THROW(DateAddMonth(1, CDateTime(30827u, 11u, 1u, 0u, 0u, 0u, 0u, 0u)));
}

// 65536 years on, the 16 bits of the record would hold the same year again.
TEST(DateAddMonth, DoesNotTakeAYearOfSeventeenBitsForAnother) {
    EXPECT_CODE(kNoSuchDate, DateAddMonth(65536 * 12, CDateTime("20240101000000Z")));
    EXPECT_CODE(kNoSuchDate, DateAddMonth(-65536 * 12, CDateTime("20240101000000Z")));
    EXPECT_CODE(kNoSuchDate, DateAddMonth(INT_MAX, CDateTime("20240101000000Z")));
    EXPECT_CODE(kNoSuchDate, DateAddMonth(INT_MIN, CDateTime("20240101000000Z")));
}

TEST(DateAdd, YearsBeyondIntegersOfMonthsAreRefused) {
    // 357913942 * 12 is 8 modulo 2^32.
    EXPECT_CODE(kNoSuchDate, DateAddA("y", 357913942, CDateTime("20240101000000Z")));
    EXPECT_CODE(kNoSuchDate, DateAddA("y", INT_MIN, CDateTime("20240101000000Z")));
}

TEST(DateAdd, TakesTheSmallestNumber) {
    const CDateTime date = TickAccess::time(0x8000000000000000);
    EXPECT_EQ(ticks(DateAddA("s", INT_MIN, date)), 0x8000000000000000 - 2147483648u * 10000000ull);
    EXPECT_CODE(E_FAIL, DateAddA("s", INT_MIN, CDateTime("16020101000000Z")));
}

TEST(DateAdd, FailsBelowTheFirstTick) {
    EXPECT_CODE(E_FAIL, DateAddA("s", -1, TickAccess::time(9999999)));
    EXPECT_EQ(ticks(DateAddA("s", -1, TickAccess::time(10000000))), 0u);
}

// Intended: letters are case-sensitive.
TEST(DateAdd, RefusesOtherLetters) {
    for (const char* interval : {"S", "D", "x", ".", " d", "\xE4"}) {
        EXPECT_CODE(E_INVALIDARG, DateAddA(interval, 1, CDateTime("20240101000000Z"))) << interval;
    }
    for (const wchar_t* interval : {L"S", L"x", L"\u0441", L"\x10064"}) {
        EXPECT_CODE(E_INVALIDARG, DateAddW(interval, 1, CDateTime("20240101000000Z")));
    }
}

TEST(DateAdd, RefusesNullNarrowText) {
    EXPECT_CODE(E_INVALIDARG, DateAddA(nullptr, 1, CDateTime("20240101000000Z")));
}

// Intended: the wide form has no test for null.
TEST(DateAdd, TakesNullWideTextForDays) {
    EXPECT_EQ(DateAddW(nullptr, 1, CDateTime("20240101000000Z")), CDateTime("20240102000000Z"));
}

}  // namespace
