// Dates and spans at the edges: texts without some of their fields, zones where none is understood, wrapping
// products.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>

#include "tests/support/case_name.h"
#include "tests/support/result_code.h"
#include "values/datetime.h"
#include "values/detail/ticks.h"

namespace {

using Quillmark::CDateTime;
using Quillmark::CDateTimeSpan;
using Quillmark::DateAddA;
using Quillmark::fromXsdDateTimeString;
using Quillmark::detail::TickAccess;
using Quillmark::detail::ticks;

const HRESULT kBadText = HRESULT_FROM_WIN32(ERROR_INVALID_TIME);

struct CompactCase {
    const char* name;
    const char* text;
    const char* canonical;  // null for a text that is refused
};

class CDateTimeShortText : public testing::TestWithParam<CompactCase> {};

// Intended: fields are found by their positions, and one that is not there whole counts as 0.
TEST_P(CDateTimeShortText, IsReadByPositions) {
    if (GetParam().canonical == nullptr) {
        EXPECT_CODE(kBadText, CDateTime(GetParam().text));
    } else {
        EXPECT_STREQ(CDateTime(GetParam().text).getGeneralizedTime().c_str(), GetParam().canonical);
    }
}

const CompactCase kShortTexts[] = {
    {.name = "DateAlone", .text = "20240102", .canonical = "20240102000000Z"},
    {.name = "NoMinutes", .text = "2024010203", .canonical = "20240102030000Z"},
    {.name = "HalfAMinute", .text = "20240102030", .canonical = "20240102030000Z"},
    {.name = "NoSeconds", .text = "202401020304", .canonical = "20240102030400Z"},
    {.name = "NoSecondsButZ", .text = "202401020304Z", .canonical = "20240102030400Z"},
    {.name = "HalfASecond", .text = "2024010203040", .canonical = "20240102030400Z"},
    // What stands where the seconds should be must be digits.
    {.name = "NoSecondsButZone", .text = "202401020304+0300", .canonical = nullptr},
    {.name = "NoSecondsButFraction", .text = "202401020304.5Z", .canonical = nullptr},
    {.name = "CommaForThePoint", .text = "20240102030405,5Z", .canonical = "20240102030405.5Z"},
    {.name = "ZoneBehindAFraction", .text = "20240102030405.5+0300", .canonical = nullptr},
    {.name = "ZoneWithAColon", .text = "20240102030405+03:00", .canonical = nullptr},
    {.name = "SmallZWithoutFraction", .text = "20240102030405z", .canonical = "20240102030405Z"},
    {.name = "BehindZ", .text = "20240102030405Z5", .canonical = "20240102030405.5Z"},
};

INSTANTIATE_TEST_SUITE_P(Texts, CDateTimeShortText, testing::ValuesIn(kShortTexts),
                         Quillmark::test::case_name);

TEST(CDateTimeOfASystemTime, FailsWithThePlatformsCodeForADateThatDoesNotExist) {
    const SYSTEMTIME february_30{2024, 2, 0, 30, 0, 0, 0, 0};
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), CDateTime(february_30));
}

TEST(CDateTimeOfASystemTime, LooksAtNoDayOfTheWeek) {
    const SYSTEMTIME tuesday{2024, 1, 2, 2, 3, 4, 5, 0};
    const SYSTEMTIME no_day{2024, 1, 77, 2, 3, 4, 5, 0};
    EXPECT_EQ(CDateTime(tuesday), CDateTime(no_day));
}

// Intended: the product of number and unit wraps silently, also on the way back.
TEST(DateAddProduct, Wraps) {
    const std::uint64_t week = 7 * 864000000000;
    const CDateTime date = TickAccess::time(0x4000000000000000);
    EXPECT_EQ(ticks(DateAddA("w", INT_MAX, date)), 0x4000000000000000 + week * INT_MAX);
    const std::uint64_t back = week * 3050057;  // just above 2^64
    ASSERT_LT(back, week);
    EXPECT_EQ(ticks(DateAddA("w", -3050057, date)), 0x4000000000000000 - back);
}

TEST(CDateTimeSpanOperators, FailedSubtractionLeavesBothSidesUnchanged) {
    CDateTimeSpan left(1, 0);
    const CDateTimeSpan right(2, 0);
    EXPECT_CODE(E_FAIL, left -= right);
    EXPECT_EQ(left, CDateTimeSpan(1, 0));
    EXPECT_EQ(right, CDateTimeSpan(2, 0));
}

// Intended: hours and minutes of a zone are numbers of two characters, whose signs nobody looks at.
TEST(FromXsdZone, NegativeMinutesAreAHugeOffset) {
    EXPECT_CODE(kBadText, fromXsdDateTimeString("2024-01-02T03:04:05+03:-5"));
}

TEST(FromXsdZone, ZeroWithASignIsZero) {
    EXPECT_EQ(fromXsdDateTimeString("2024-01-02T03:04:05+-0:-0"), CDateTime("20240102030405Z"));
}

TEST(FromXsdZone, IsNotReadBehindZ) {
    // The text that is left is taken for a fraction, from its second character on.
    EXPECT_EQ(fromXsdDateTimeString("2024-01-02T03:04:05Z03:00"), CDateTime("20240102030405.03Z"));
    EXPECT_CODE(kBadText, fromXsdDateTimeString("2024-01-02T03:04:05Z+03:00"));
}

}  // namespace
