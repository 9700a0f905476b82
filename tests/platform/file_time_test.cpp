// File times against dates that are counted by hand or published.

#include <cstring>
#include <ctime>

#include "tests/platform/service.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct TimeCase {
    const char* name;
    std::uint64_t ticks;
    SYSTEMTIME time;
};

constexpr std::uint64_t kSecond = 10'000'000;
constexpr std::uint64_t kDay = 86'400 * kSecond;

// Day 0 is Monday, 1 January 1601. 400 years have 146097 days.
constexpr TimeCase kTimes[] = {
    {.name = "FirstTick", .ticks = 0, .time = {1601, 1, 1, 1, 0, 0, 0, 0}},
    {.name = "LastMillisecondOfFirstDay", .ticks = kDay - 10'000, .time = {1601, 1, 1, 1, 23, 59, 59, 999}},
    {.name = "UnixEpoch", .ticks = 116'444'736'000'000'000, .time = {1970, 1, 4, 1, 0, 0, 0, 0}},
    {.name = "FourHundredYears", .ticks = 146'097 * kDay, .time = {2001, 1, 1, 1, 0, 0, 0, 0}},
    {.name = "LeapDayOf2000",
     .ticks = 116'444'736'000'000'000 + 951'782'400 * kSecond,
     .time = {2000, 2, 2, 29, 0, 0, 0, 0}},
    {.name = "NoLeapDayIn1900",
     .ticks = 116'444'736'000'000'000 - 2'203'891'200 * kSecond,
     .time = {1900, 3, 4, 1, 0, 0, 0, 0}},
    // The last second before 2^31 seconds of Unix time, known as a date from the 32-bit clocks.
    {.name = "EndOf32BitClocks",
     .ticks = 116'444'736'000'000'000 + 0x7FFF'FFFF * kSecond,
     .time = {2038, 1, 2, 19, 3, 14, 7, 0}},
};

FILETIME file_time_of(std::uint64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::uint64_t ticks_in(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

class FileTime : public testing::TestWithParam<TimeCase> {};

TEST_P(FileTime, BecomesDate) {
    const FILETIME ticks = file_time_of(GetParam().ticks);
    SYSTEMTIME got{};
    ASSERT_TRUE(FileTimeToSystemTime(&ticks, &got));
    EXPECT_EQ(0, memcmp(&got, &GetParam().time, sizeof(got)))
        << got.wYear << "-" << got.wMonth << "-" << got.wDay << " weekday " << got.wDayOfWeek;
}

TEST_P(FileTime, ComesFromDate) {
    FILETIME got{};
    ASSERT_TRUE(SystemTimeToFileTime(&GetParam().time, &got));
    EXPECT_EQ(ticks_in(got), GetParam().ticks);
}

INSTANTIATE_TEST_SUITE_P(Calendar, FileTime, testing::ValuesIn(kTimes), case_name);

TEST(FileTimeToSystemTime, CutsTicksBelowOneMillisecond) {
    const FILETIME ticks = file_time_of(19'999);
    SYSTEMTIME got{};
    ASSERT_TRUE(FileTimeToSystemTime(&ticks, &got));
    EXPECT_EQ(got.wMilliseconds, 1);
}

TEST(FileTimeToSystemTime, TakesLastValueBelowTwoToThe63) {
    const FILETIME ticks = file_time_of(0x7FFF'FFFF'FFFF'FFFF);
    SYSTEMTIME got{};
    ASSERT_TRUE(FileTimeToSystemTime(&ticks, &got));
    EXPECT_EQ(got.wYear, 30828);
    EXPECT_EQ(got.wMonth, 9);
    EXPECT_EQ(got.wDay, 14);
    EXPECT_EQ(got.wMilliseconds, 477);
}

TEST(FileTimeToSystemTime, RefusesTwoToThe63) {
    const FILETIME ticks = file_time_of(0x8000'0000'0000'0000);
    SYSTEMTIME got{};
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, FileTimeToSystemTime(&ticks, &got)));
}

TEST(FileTimeToSystemTime, RefusesNull) {
    const FILETIME ticks{};
    SYSTEMTIME got{};
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, FileTimeToSystemTime(nullptr, &got)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, FileTimeToSystemTime(&ticks, nullptr)));
}

TEST(SystemTimeToFileTime, RefusesNull) {
    const SYSTEMTIME time{2000, 1, 0, 1, 0, 0, 0, 0};
    FILETIME got{};
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, SystemTimeToFileTime(nullptr, &got)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, SystemTimeToFileTime(&time, nullptr)));
}

TEST(SystemTimeToFileTime, IgnoresDayOfWeek) {
    const SYSTEMTIME time{1601, 1, 77, 1, 0, 0, 0, 0};
    FILETIME got{};
    ASSERT_TRUE(SystemTimeToFileTime(&time, &got));
    EXPECT_EQ(ticks_in(got), 0u);
}

struct BoundCase {
    const char* name;
    SYSTEMTIME last_good;
    SYSTEMTIME first_bad;
};

constexpr BoundCase kBounds[] = {
    {"FirstYear", {1601, 1, 0, 1, 0, 0, 0, 0}, {1600, 12, 0, 31, 23, 59, 59, 999}},
    {"LastYear", {30827, 12, 0, 31, 23, 59, 59, 999}, {30828, 1, 0, 1, 0, 0, 0, 0}},
    {"FirstMonth", {2000, 1, 0, 1, 0, 0, 0, 0}, {2000, 0, 0, 1, 0, 0, 0, 0}},
    {"LastMonth", {2000, 12, 0, 1, 0, 0, 0, 0}, {2000, 13, 0, 1, 0, 0, 0, 0}},
    {"MonthDoesNotWrap", {2000, 1, 0, 1, 0, 0, 0, 0}, {2000, 257, 0, 1, 0, 0, 0, 0}},
    {"DayDoesNotWrap", {2000, 1, 0, 1, 0, 0, 0, 0}, {2000, 1, 0, 257, 0, 0, 0, 0}},
    {"FirstDay", {2000, 1, 0, 1, 0, 0, 0, 0}, {2000, 1, 0, 0, 0, 0, 0, 0}},
    {"LastDayOfApril", {2000, 4, 0, 30, 0, 0, 0, 0}, {2000, 4, 0, 31, 0, 0, 0, 0}},
    {"FebruaryOfLeapYear", {2004, 2, 0, 29, 0, 0, 0, 0}, {2004, 2, 0, 30, 0, 0, 0, 0}},
    {"FebruaryOfCommonYear", {2003, 2, 0, 28, 0, 0, 0, 0}, {2003, 2, 0, 29, 0, 0, 0, 0}},
    {"FebruaryOfFullCentury", {2000, 2, 0, 29, 0, 0, 0, 0}, {1900, 2, 0, 29, 0, 0, 0, 0}},
    {"Hour", {2000, 1, 0, 1, 23, 0, 0, 0}, {2000, 1, 0, 1, 24, 0, 0, 0}},
    {"Minute", {2000, 1, 0, 1, 0, 59, 0, 0}, {2000, 1, 0, 1, 0, 60, 0, 0}},
    {"SecondWithoutLeapSecond", {2000, 1, 0, 1, 0, 0, 59, 0}, {2000, 1, 0, 1, 0, 0, 60, 0}},
    {"Millisecond", {2000, 1, 0, 1, 0, 0, 0, 999}, {2000, 1, 0, 1, 0, 0, 0, 1000}},
};

class DateBounds : public testing::TestWithParam<BoundCase> {};

TEST_P(DateBounds, AreLastGoodAndFirstBad) {
    FILETIME got{};
    EXPECT_TRUE(SystemTimeToFileTime(&GetParam().last_good, &got));
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, SystemTimeToFileTime(&GetParam().first_bad, &got)));
}

INSTANTIATE_TEST_SUITE_P(Fields, DateBounds, testing::ValuesIn(kBounds), case_name);

TEST(GetSystemTimeAsFileTime, AgreesWithTheClockOfTheSystem) {
    const std::uint64_t before = static_cast<std::uint64_t>(time(nullptr));
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const std::uint64_t seconds = ticks_in(now) / kSecond - 11'644'473'600;
    EXPECT_GE(seconds + 1, before);
    EXPECT_LE(seconds, static_cast<std::uint64_t>(time(nullptr)) + 1);
}

TEST(LastError, StaysWhenACallSucceeds) {
    SetLastError(1234);
    const FILETIME ticks{};
    SYSTEMTIME got{};
    ASSERT_TRUE(FileTimeToSystemTime(&ticks, &got));
    EXPECT_EQ(GetLastError(), 1234u);
}

}  // namespace
}  // namespace Quillmark::test
