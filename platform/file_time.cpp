#include "platform/detail/file_time.h"

#include <chrono>
#include <ctime>

#include "platform/detail/error_code.h"

namespace Quillmark::platform {

namespace {

constexpr std::uint64_t kTicksPerMillisecond = 10'000;
constexpr std::uint64_t kTicksPerSecond = 1'000 * kTicksPerMillisecond;
constexpr std::uint64_t kTicksPerDay = 86'400 * kTicksPerSecond;
constexpr std::uint64_t kTicksBeforeUnixEpoch = 116'444'736'000'000'000;

// The calendar of <chrono> ends with the year 32767, so that all file times below 2^63 (year 30828) are in
// it.
constexpr std::chrono::sys_days kFirstDay{std::chrono::year{1601} / 1 / 1};

// Above 255 the fields would wrap in the calendar's types.
bool is_month_and_day(const SYSTEMTIME& time) {
    return time.wMonth <= 12 && time.wDay <= 31;
}

bool is_time_of_day(const SYSTEMTIME& time) {
    return time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
}

SYSTEMTIME split(std::uint64_t ticks) {
    const std::chrono::sys_days day = kFirstDay + std::chrono::days{ticks / kTicksPerDay};
    const std::chrono::year_month_day date{day};
    const std::uint64_t milliseconds = ticks % kTicksPerDay / kTicksPerMillisecond;
    return {.wYear = static_cast<WORD>(static_cast<int>(date.year())),
            .wMonth = static_cast<WORD>(static_cast<unsigned>(date.month())),
            .wDayOfWeek = static_cast<WORD>(std::chrono::weekday{day}.c_encoding()),
            .wDay = static_cast<WORD>(static_cast<unsigned>(date.day())),
            .wHour = static_cast<WORD>(milliseconds / 3'600'000),
            .wMinute = static_cast<WORD>(milliseconds / 60'000 % 60),
            .wSecond = static_cast<WORD>(milliseconds / 1'000 % 60),
            .wMilliseconds = static_cast<WORD>(milliseconds % 1'000)};
}

BOOL refuse() {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
}

}  // namespace

std::optional<std::uint64_t> ticks_of(const SYSTEMTIME& time) {
    if (time.wYear < 1601 || time.wYear > 30827 || !is_month_and_day(time) || !is_time_of_day(time)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year{time.wYear}, std::chrono::month{time.wMonth},
                                           std::chrono::day{time.wDay}};
    if (!date.ok()) {
        return std::nullopt;
    }
    const auto days = static_cast<std::uint64_t>((std::chrono::sys_days{date} - kFirstDay).count());
    const std::uint64_t seconds = time.wHour * 3'600u + time.wMinute * 60u + time.wSecond;
    return days * kTicksPerDay + seconds * kTicksPerSecond + time.wMilliseconds * kTicksPerMillisecond;
}

}  // namespace Quillmark::platform

using namespace Quillmark::platform;

void GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    *lpSystemTimeAsFileTime =
        file_time(kTicksBeforeUnixEpoch + static_cast<std::uint64_t>(now.tv_sec) * kTicksPerSecond +
                  static_cast<std::uint64_t>(now.tv_nsec) / 100);
}

BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime) {
    // At or above 2^63 the value is no time (published limit).
    if (lpFileTime == nullptr || lpSystemTime == nullptr || lpFileTime->dwHighDateTime >= 0x80000000u) {
        return refuse();
    }
    *lpSystemTime = split(std::uint64_t{lpFileTime->dwHighDateTime} << 32 | lpFileTime->dwLowDateTime);
    return 1;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime) {
    if (lpSystemTime == nullptr || lpFileTime == nullptr) {
        return refuse();
    }
    const std::optional<std::uint64_t> ticks = ticks_of(*lpSystemTime);
    if (!ticks) {
        return refuse();
    }
    *lpFileTime = file_time(*ticks);
    return 1;
}
