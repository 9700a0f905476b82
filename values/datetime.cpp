#include "values/datetime.h"

#include "values/detail/last_error.h"
#include "values/detail/ticks.h"

#include <ctime>
#include <utility>

namespace Quillmark {

using detail::check_call;
using detail::TickAccess;
using detail::ticks;

namespace {

std::uint64_t unix_ticks(long long seconds, unsigned int microseconds) {
    return detail::kUnixEpochTicks + static_cast<std::uint64_t>(seconds) * detail::kTicksPerSecond +
           detail::ticks_of_microseconds(microseconds);
}

std::uint64_t ticks_of(const SYSTEMTIME& fields) {
    FILETIME time;
    check_call(SystemTimeToFileTime(&fields, &time));
    return detail::from_file_time(time);
}

std::uint64_t difference(std::uint64_t left, std::uint64_t right) {
    if (right > left) {
        throw CAtlException(E_FAIL);
    }
    return left - right;
}

// Ticks from local time to UTC, modulo 2^64 for a zone east of Greenwich.
std::uint64_t local_offset() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    tzset();
    // Intended: whether daylight saving applies is asked of this moment and not of the date to convert.
    const long seconds_west = timezone - (local.tm_isdst > 0 ? 3600 : 0);
    return static_cast<std::uint64_t>(seconds_west) * detail::kTicksPerSecond;
}

}  // namespace

CDateTime::CDateTime(long seconds, unsigned int microseconds) noexcept
    : CDateTime(TickAccess::time(unix_ticks(seconds, microseconds))) {}

CDateTime::CDateTime(long long seconds, unsigned int microseconds) noexcept
    : CDateTime(TickAccess::time(unix_ticks(seconds, microseconds))) {}

CDateTime::CDateTime(_FILETIME time) noexcept
    : CDateTime(TickAccess::time(detail::cut_to_microseconds(detail::from_file_time(time)))) {}

CDateTime::CDateTime(_SYSTEMTIME time)
    : CDateTime(TickAccess::time(detail::cut_to_microseconds(ticks_of(time)))) {}

CDateTime::CDateTime(unsigned int year, unsigned int month, unsigned int day, unsigned int hour,
                     unsigned int minute, unsigned int second, unsigned int millisecond,
                     unsigned int microsecond) {
    // Intended: each field is cut to the 16 bits that it has there.
    const SYSTEMTIME fields{.wYear = static_cast<WORD>(year),
                            .wMonth = static_cast<WORD>(month),
                            .wDayOfWeek = 0,
                            .wDay = static_cast<WORD>(day),
                            .wHour = static_cast<WORD>(hour),
                            .wMinute = static_cast<WORD>(minute),
                            .wSecond = static_cast<WORD>(second),
                            .wMilliseconds = static_cast<WORD>(millisecond)};
    *this = TickAccess::time(ticks_of(fields) + detail::ticks_of_microseconds(microsecond));
}

CDateTime CDateTime::Now() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return CDateTime(time);
}

unsigned int CDateTime::year() const {
    return getSystemTime().wYear;
}
unsigned int CDateTime::month() const {
    return getSystemTime().wMonth;
}
unsigned int CDateTime::day() const {
    return getSystemTime().wDay;
}
unsigned int CDateTime::hour() const {
    return getSystemTime().wHour;
}
unsigned int CDateTime::minute() const {
    return getSystemTime().wMinute;
}
unsigned int CDateTime::second() const {
    return getSystemTime().wSecond;
}

unsigned int CDateTime::millisecond() const noexcept {
    return static_cast<unsigned int>(detail::ticks_below_second(ticks(*this)) / detail::kTicksPerMillisecond);
}

unsigned int CDateTime::microsecond() const noexcept {
    return static_cast<unsigned int>(detail::ticks_below_second(ticks(*this)) / detail::kTicksPerMicrosecond %
                                     1000);
}

_SYSTEMTIME CDateTime::getSystemTime() const {
    const FILETIME time = getFileTime();
    SYSTEMTIME fields;
    check_call(FileTimeToSystemTime(&time, &fields));
    return fields;
}

_FILETIME CDateTime::getFileTime() const noexcept {
    return detail::to_file_time(ticks(*this));
}

unsigned long long CDateTime::getTime() const noexcept {
    return (ticks(*this) - detail::kUnixEpochTicks) / detail::kTicksPerSecond;
}

CDateTime CDateTime::utcToLocal() const {
    return TickAccess::time(detail::cut_to_microseconds(ticks(*this) - local_offset()));
}

CDateTime CDateTime::localToUtc() const {
    return TickAccess::time(detail::cut_to_microseconds(ticks(*this) + local_offset()));
}

void CDateTime::swap(CDateTime& other) noexcept {
    std::swap(*this, other);
}

bool operator==(const CDateTime& left, const CDateTime& right) noexcept {
    return ticks(left) == ticks(right);
}
bool operator!=(const CDateTime& left, const CDateTime& right) noexcept {
    return ticks(left) != ticks(right);
}
bool operator<(const CDateTime& left, const CDateTime& right) noexcept {
    return ticks(left) < ticks(right);
}
bool operator<=(const CDateTime& left, const CDateTime& right) noexcept {
    return ticks(left) <= ticks(right);
}
bool operator>(const CDateTime& left, const CDateTime& right) noexcept {
    return ticks(left) > ticks(right);
}
bool operator>=(const CDateTime& left, const CDateTime& right) noexcept {
    return ticks(left) >= ticks(right);
}

CDateTime operator+(const CDateTime& time, const CDateTimeSpan& span) noexcept {
    return TickAccess::time(ticks(time) + ticks(span));
}

CDateTime& operator+=(CDateTime& time, const CDateTimeSpan& span) noexcept {
    return time = time + span;
}

CDateTime operator-(const CDateTime& time, const CDateTimeSpan& span) {
    return TickAccess::time(difference(ticks(time), ticks(span)));
}

CDateTime& operator-=(CDateTime& time, const CDateTimeSpan& span) {
    return time = time - span;
}

CDateTimeSpan operator-(const CDateTime& later, const CDateTime& earlier) {
    return TickAccess::span(difference(ticks(later), ticks(earlier)));
}

}  // namespace Quillmark
