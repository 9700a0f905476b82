#include "values/datetime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <type_traits>

#include "tests/support/result_code.h"
#include "values/detail/ticks.h"

namespace {

using Quillmark::CDateTime;
using Quillmark::CDateTimeSpan;
using Quillmark::detail::TickAccess;
using Quillmark::detail::ticks;

static_assert(!std::is_default_constructible_v<CDateTime>);
static_assert(sizeof(CDateTime) == 8);

constexpr std::uint64_t kEpoch = 116444736000000000;

FILETIME file_time(std::uint64_t ticks) {
    return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// 2024-01-02 03:04:05.678901 UTC
CDateTime some_time() {
    return CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 678u, 901u);
}

TEST(CDateTime, ZeroIsTheUnixEpoch) {
    const CDateTime time(0L, 0);
    EXPECT_EQ(ticks(time), kEpoch);
    EXPECT_EQ(time.getTime(), 0u);
}

TEST(CDateTime, CountsUnixSecondsAndMicroseconds) {
    EXPECT_EQ(ticks(CDateTime(2L, 3)), kEpoch + 20000030);
    EXPECT_EQ(ticks(CDateTime(2LL, 3)), kEpoch + 20000030);
    EXPECT_EQ(ticks(CDateTime(-1L, 0)), kEpoch - 10000000);
}

// Intended: microseconds become ticks in 32 bits.
TEST(CDateTime, ProductOfMicrosecondsWraps) {
    EXPECT_EQ(ticks(CDateTime(0L, 429496729)), kEpoch + 4294967290);
    EXPECT_EQ(ticks(CDateTime(0L, 429496730)), kEpoch + 4);
    EXPECT_EQ(ticks(CDateTime(0LL, 429496730)), kEpoch + 4);
    EXPECT_EQ(ticks(CDateTime(1970u, 1u, 1u, 0u, 0u, 0u, 0u, 429496730u)), kEpoch + 4);
}

TEST(CDateTime, OfAFileTimeIsCutToMicroseconds) {
    EXPECT_EQ(ticks(CDateTime(file_time(12345))), 12340u);
}

TEST(CDateTime, HighHalfComesFirst) {
    const CDateTime time(file_time(0x0123456789ABCDE4));  // a multiple of ten
    const auto* halves = reinterpret_cast<const unsigned int*>(&time);
    ASSERT_EQ(ticks(time), 0x0123456789ABCDE4u - 0x0123456789ABCDE4u % 10);
    EXPECT_EQ(halves[0], 0x01234567u);
    EXPECT_EQ(halves[1], static_cast<unsigned int>(ticks(time)));
}

TEST(CDateTime, GivesTheFileTimeBack) {
    const FILETIME time = CDateTime(file_time(0x0123456789ABCDE0)).getFileTime();
    EXPECT_EQ(time.dwHighDateTime, 0x01234567u);
    EXPECT_EQ(time.dwLowDateTime, static_cast<DWORD>(0x0123456789ABCDE0 - 0x0123456789ABCDE0 % 10));
}

TEST(CDateTime, OfFieldsHasThem) {
    const CDateTime time = some_time();
    EXPECT_EQ(time.year(), 2024u);
    EXPECT_EQ(time.month(), 1u);
    EXPECT_EQ(time.day(), 2u);
    EXPECT_EQ(time.hour(), 3u);
    EXPECT_EQ(time.minute(), 4u);
    EXPECT_EQ(time.second(), 5u);
    EXPECT_EQ(time.millisecond(), 678u);
    EXPECT_EQ(time.microsecond(), 901u);
    EXPECT_EQ(time.getTime(), 1704164645u);  // date -u -d '2024-01-02 03:04:05' +%s
}

TEST(CDateTime, SplitsTheFractionIntoMilliAndMicroseconds) {
    const CDateTime time(1L, 234567);
    EXPECT_EQ(time.millisecond(), 234u);
    EXPECT_EQ(time.microsecond(), 567u);
}

TEST(CDateTime, OfASystemTimeHasItsFields) {
    const SYSTEMTIME fields{2024, 2, 0, 29, 23, 59, 58, 7};
    const CDateTime time(fields);
    const SYSTEMTIME back = time.getSystemTime();
    EXPECT_EQ(back.wYear, 2024);
    EXPECT_EQ(back.wMonth, 2);
    EXPECT_EQ(back.wDay, 29);
    EXPECT_EQ(back.wDayOfWeek, 4);  // a Thursday
    EXPECT_EQ(back.wHour, 23);
    EXPECT_EQ(back.wMinute, 59);
    EXPECT_EQ(back.wSecond, 58);
    EXPECT_EQ(back.wMilliseconds, 7);
}

// Intended: no cut to whole microseconds here, nor a test of any field but the platform's.
TEST(CDateTime, OfFieldsAddsMicrosecondsWithoutATest) {
    EXPECT_EQ(ticks(CDateTime(1970u, 1u, 1u, 0u, 0u, 0u, 0u, 1000001u)), kEpoch + 10000010);
}

struct FieldsCase {
    const char* name;
    unsigned int year, month, day, hour, minute, second, millisecond;
};

class CDateTimeFields : public testing::TestWithParam<FieldsCase> {};

TEST_P(CDateTimeFields, OutOfRangeFailWithThePlatformsCode) {
    const FieldsCase& f = GetParam();
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER),
                CDateTime(f.year, f.month, f.day, f.hour, f.minute, f.second, f.millisecond, 0u));
}

INSTANTIATE_TEST_SUITE_P(Bad, CDateTimeFields,
                         testing::Values(FieldsCase{"February30", 2024, 2, 30, 0, 0, 0, 0},
                                         FieldsCase{"February29OfACommonYear", 2023, 2, 29, 0, 0, 0, 0},
                                         FieldsCase{"Month13", 2024, 13, 1, 0, 0, 0, 0},
                                         FieldsCase{"Month0", 2024, 0, 1, 0, 0, 0, 0},
                                         FieldsCase{"Day0", 2024, 1, 0, 0, 0, 0, 0},
                                         FieldsCase{"Hour24", 2024, 1, 1, 24, 0, 0, 0},
                                         FieldsCase{"Second60", 2024, 1, 1, 0, 0, 60, 0},
                                         FieldsCase{"Millisecond1000", 2024, 1, 1, 0, 0, 0, 1000},
                                         FieldsCase{"Year1600", 1600, 12, 31, 0, 0, 0, 0}),
                         [](const auto& row) { return std::string(row.param.name); });

// Intended: the platform's record has 16 bits for a field, and what is above is cut off.
TEST(CDateTime, FieldsAreCutToSixteenBits) {
    EXPECT_EQ(CDateTime(2024u, 65537u, 2u, 3u, 4u, 5u, 0u, 0u), CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u));
}

TEST(CDateTime, GettersFailWithThePlatformsCodeBeyondItsCalendar) {
    const CDateTime time = TickAccess::time(0x8000000000000000);
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), time.year());
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), time.month());
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), time.day());
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), time.hour());
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), time.minute());
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), time.second());
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), time.getSystemTime());
    EXPECT_NO_THROW(TickAccess::time(0x7FFFFFFFFFFFFFFF).year());
}

// Intended: the difference to the epoch is unsigned.
TEST(CDateTime, UnixTimeBefore1970IsHuge) {
    EXPECT_EQ(CDateTime(-1L, 0).getTime(), (~std::uint64_t{0} - 9999999) / 10000000);
}

TEST(CDateTime, NowIsNowInWholeMicroseconds) {
    const auto before = static_cast<unsigned long long>(std::time(nullptr));
    const CDateTime now = CDateTime::Now();
    const auto after = static_cast<unsigned long long>(std::time(nullptr));
    EXPECT_GE(now.getTime() + 1, before);  // the two clocks may be read at different resolutions
    EXPECT_LE(now.getTime(), after + 1);
    EXPECT_EQ(ticks(now) % 10, 0u);
}

TEST(CDateTime, Swaps) {
    CDateTime left(1L, 0);
    CDateTime right(2L, 0);
    left.swap(right);
    EXPECT_EQ(left.getTime(), 2u);
    EXPECT_EQ(right.getTime(), 1u);
}

TEST(CDateTime, ComparesHighHalfFirstAndUnsigned) {
    const CDateTime smaller = TickAccess::time(0x00000001FFFFFFFF);
    const CDateTime greater = TickAccess::time(0x8000000000000000);
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

TEST(CDateTime, DifferenceOfEqualTimesIsZero) {
    EXPECT_EQ(some_time() - some_time(), CDateTimeSpan());
}

TEST(CDateTime, DifferenceToALaterTimeFails) {
    EXPECT_CODE(E_FAIL, some_time() - (some_time() + CDateTimeSpan(0, 1)));
}

TEST(CDateTime, MovesByASpan) {
    CDateTime time(100L, 0);
    EXPECT_EQ(time + CDateTimeSpan(5, 0), CDateTime(105L, 0));
    EXPECT_EQ(time - CDateTimeSpan(5, 0), CDateTime(95L, 0));
    time += CDateTimeSpan(7, 0);
    EXPECT_EQ(time, CDateTime(107L, 0));
    time -= CDateTimeSpan(8, 0);
    EXPECT_EQ(time, CDateTime(99L, 0));
}

TEST(CDateTime, FailedSubtractionLeavesItUnchanged) {
    CDateTime time = TickAccess::time(10);
    EXPECT_CODE(E_FAIL, time -= CDateTimeSpan(0, 2));
    EXPECT_EQ(ticks(time), 10u);
    EXPECT_CODE(E_FAIL, time - CDateTimeSpan(0, 2));
    EXPECT_EQ(ticks(time - CDateTimeSpan(0, 1)), 0u);
}

// Intended: sums wrap silently.
TEST(CDateTime, SumWraps) {
    EXPECT_EQ(ticks(TickAccess::time(~std::uint64_t{0}) + TickAccess::span(11)), 10u);
}

// A time zone for the life of the object.
class Zone {
  public:
    explicit Zone(const char* name) {
        if (const char* old = std::getenv("TZ")) {
            old_ = old;
        }
        setenv("TZ", name, 1);
        tzset();
    }
    ~Zone() {
        old_ ? setenv("TZ", old_->c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;

  private:
    std::optional<std::string> old_;
};

TEST(CDateTimeLocal, EastOfGreenwichIsAhead) {
    const Zone zone("MSK-3");
    EXPECT_EQ(some_time().utcToLocal(), some_time() + CDateTimeSpan::oneHour * 3);
    EXPECT_EQ(some_time().localToUtc(), some_time() - CDateTimeSpan::oneHour * 3);
}

TEST(CDateTimeLocal, WestOfGreenwichIsBehindByHoursAndMinutes) {
    const Zone zone("NST3:30");
    const CDateTimeSpan offset = CDateTimeSpan::oneHour * 3 + CDateTimeSpan::oneMinute * 30;
    EXPECT_EQ(some_time().utcToLocal(), some_time() - offset);
    EXPECT_EQ(some_time().localToUtc(), some_time() + offset);
}

TEST(CDateTimeLocal, IsUtcInUtc) {
    const Zone zone("UTC0");
    EXPECT_EQ(some_time().utcToLocal(), some_time());
    EXPECT_EQ(some_time().localToUtc(), some_time());
}

// Intended: the state of this moment counts. These zones have daylight saving time all the year round, and
// never (it ends the second it begins), so the test does not depend on the day it runs.
TEST(CDateTimeLocal, DaylightSavingOfThisMomentMovesEveryDate) {
    const Zone zone("XST0XDT-1,J1/0,J365/25");
    const CDateTime january(2024u, 1u, 15u, 12u, 0u, 0u, 0u, 0u);
    const CDateTime july(2024u, 7u, 15u, 12u, 0u, 0u, 0u, 0u);
    EXPECT_EQ(january.utcToLocal(), january + CDateTimeSpan::oneHour);
    EXPECT_EQ(july.utcToLocal(), july + CDateTimeSpan::oneHour);
    EXPECT_EQ(july.localToUtc(), july - CDateTimeSpan::oneHour);
}

TEST(CDateTimeLocal, StandardTimeOfThisMomentMovesEveryDate) {
    const Zone zone("XST-2");
    const CDateTime january(2024u, 1u, 15u, 12u, 0u, 0u, 0u, 0u);
    const CDateTime july(2024u, 7u, 15u, 12u, 0u, 0u, 0u, 0u);
    EXPECT_EQ(january.utcToLocal() - january, july.utcToLocal() - july);
}

TEST(CDateTimeLocal, IsCutToMicroseconds) {
    const Zone zone("MSK-3");
    EXPECT_EQ(ticks(TickAccess::time(kEpoch + 9).utcToLocal()), kEpoch + 3 * 36000000000);
    EXPECT_EQ(ticks(TickAccess::time(kEpoch + 9).localToUtc()), kEpoch - 3 * 36000000000);
}

}  // namespace
