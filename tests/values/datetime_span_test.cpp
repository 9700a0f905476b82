#include <gtest/gtest.h>

#include <string>

#include "tests/support/result_code.h"
#include "values/datetime.h"
#include "values/detail/ticks.h"

namespace {

using Quillmark::CDateTimeSpan;
using Quillmark::detail::TickAccess;
using Quillmark::detail::ticks;

// A static object of another source: the constants must be there already.
const CDateTimeSpan two_hours_at_load = CDateTimeSpan::oneHour * 2;

TEST(CDateTimeSpan, IsZeroByDefault) {
    EXPECT_EQ(ticks(CDateTimeSpan()), 0u);
}

TEST(CDateTimeSpan, CountsSecondsAndMicroseconds) {
    EXPECT_EQ(ticks(CDateTimeSpan(3, 4)), 30000040u);
    EXPECT_EQ(ticks(CDateTimeSpan(0xFFFFFFFF, 0)), 42949672950000000u);
}

// Intended: microseconds become ticks in 32 bits.
TEST(CDateTimeSpan, ProductOfMicrosecondsWraps) {
    EXPECT_EQ(ticks(CDateTimeSpan(0, 429496729)), 4294967290u);
    EXPECT_EQ(ticks(CDateTimeSpan(0, 429496730)), 4u);
}

TEST(CDateTimeSpan, ConstantsHaveTheirLengths) {
    EXPECT_EQ(ticks(CDateTimeSpan::oneYear), 315360000000000u);
    EXPECT_EQ(ticks(CDateTimeSpan::oneMonth), 25920000000000u);
    EXPECT_EQ(ticks(CDateTimeSpan::oneDay), 864000000000u);
    EXPECT_EQ(ticks(CDateTimeSpan::oneHour), 36000000000u);
    EXPECT_EQ(ticks(CDateTimeSpan::oneMinute), 600000000u);
    EXPECT_EQ(ticks(CDateTimeSpan::oneSecond), 10000000u);
    EXPECT_EQ(ticks(CDateTimeSpan::oneMillisecond), 10000u);
}

TEST(CDateTimeSpan, AccessorsGiveTheConstantsThemselves) {
    EXPECT_EQ(&CDateTimeSpan::OneYear(), &CDateTimeSpan::oneYear);
    EXPECT_EQ(&CDateTimeSpan::OneMonth(), &CDateTimeSpan::oneMonth);
    EXPECT_EQ(&CDateTimeSpan::OneDay(), &CDateTimeSpan::oneDay);
    EXPECT_EQ(&CDateTimeSpan::OneHour(), &CDateTimeSpan::oneHour);
    EXPECT_EQ(&CDateTimeSpan::OneMinute(), &CDateTimeSpan::oneMinute);
    EXPECT_EQ(&CDateTimeSpan::OneSecond(), &CDateTimeSpan::oneSecond);
    EXPECT_EQ(&CDateTimeSpan::OneMillisecond(), &CDateTimeSpan::oneMillisecond);
}

TEST(CDateTimeSpan, ConstantsAreSetBeforeStaticObjectsUseThem) {
    EXPECT_EQ(ticks(two_hours_at_load), 72000000000u);
}

// Intended: years and months are fixed lengths.
TEST(CDateTimeSpan, YearIs365DaysAndMonth30) {
    EXPECT_EQ(CDateTimeSpan::oneYear / CDateTimeSpan::oneDay, 365u);
    EXPECT_EQ(CDateTimeSpan::oneMonth / CDateTimeSpan::oneDay, 30u);
}

TEST(CDateTimeSpan, GivesItsHalves) {
    const CDateTimeSpan span = TickAccess::span(0x0123456789ABCDEF);
    EXPECT_EQ(span.getHighPart(), 0x01234567u);
    EXPECT_EQ(span.getLowPart(), 0x89ABCDEFu);
}

TEST(CDateTimeSpan, Swaps) {
    CDateTimeSpan left(1, 0);
    CDateTimeSpan right(2, 0);
    left.swap(right);
    EXPECT_EQ(left, CDateTimeSpan(2, 0));
    EXPECT_EQ(right, CDateTimeSpan(1, 0));
}

TEST(CDateTimeSpan, ComparesHighHalfFirstAndUnsigned) {
    const CDateTimeSpan smaller = TickAccess::span(0x00000001FFFFFFFF);
    const CDateTimeSpan greater = TickAccess::span(0x8000000000000000);
    EXPECT_TRUE(smaller < greater);
    EXPECT_TRUE(smaller <= greater);
    EXPECT_TRUE(greater > smaller);
    EXPECT_TRUE(greater >= smaller);
    EXPECT_TRUE(smaller != greater);
    EXPECT_FALSE(smaller == greater);
    EXPECT_TRUE(smaller <= smaller);
    EXPECT_TRUE(smaller >= smaller);
    EXPECT_FALSE(smaller < smaller);
    EXPECT_FALSE(smaller > smaller);
}

TEST(CDateTimeSpan, AddsAndSubtracts) {
    CDateTimeSpan span(5, 0);
    EXPECT_EQ(span + CDateTimeSpan(2, 0), CDateTimeSpan(7, 0));
    EXPECT_EQ(span - CDateTimeSpan(2, 0), CDateTimeSpan(3, 0));
    EXPECT_EQ(span - span, CDateTimeSpan());
    span += CDateTimeSpan(1, 0);
    EXPECT_EQ(span, CDateTimeSpan(6, 0));
    span -= CDateTimeSpan(4, 0);
    EXPECT_EQ(span, CDateTimeSpan(2, 0));
}

TEST(CDateTimeSpan, HasNoNegativeValue) {
    CDateTimeSpan span(1, 0);
    EXPECT_CODE(E_FAIL, span - CDateTimeSpan(1, 1));
    EXPECT_CODE(E_FAIL, span -= CDateTimeSpan(1, 1));
    EXPECT_EQ(span, CDateTimeSpan(1, 0));
}

TEST(CDateTimeSpan, MultipliesAndDivides) {
    CDateTimeSpan span(7, 0);
    EXPECT_EQ(span * 3, CDateTimeSpan(21, 0));
    EXPECT_EQ(ticks(span / 3), 23333333u);
    EXPECT_EQ(ticks(span % 3), 1u);
    EXPECT_EQ(span / CDateTimeSpan(2, 0), 3u);
    EXPECT_EQ(span % CDateTimeSpan(2, 0), CDateTimeSpan(1, 0));
    span *= 2;
    EXPECT_EQ(span, CDateTimeSpan(14, 0));
    span /= 7;
    EXPECT_EQ(span, CDateTimeSpan(2, 0));
    span %= 3;
    EXPECT_EQ(ticks(span), 20000000u % 3);
}

// Intended: sums and products wrap silently.
TEST(CDateTimeSpan, SumsAndProductsWrap) {
    const CDateTimeSpan greatest = TickAccess::span(~std::uint64_t{0});
    EXPECT_EQ(ticks(greatest + TickAccess::span(3)), 2u);
    EXPECT_EQ(ticks(TickAccess::span(0x8000000000000001) * 2), 2u);
}

}  // namespace
