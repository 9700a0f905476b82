// Interval arithmetic with one-letter units.

#include "values/datetime.h"

#include "values/detail/date_text.h"
#include "values/detail/last_error.h"
#include "values/detail/ticks.h"

#include <algorithm>
#include <cstdint>

namespace Quillmark {

using detail::check_call;
using detail::TickAccess;
using detail::ticks;

namespace {

bool is_leap_year(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

WORD last_day(std::int64_t year, std::int64_t month) {
    static constexpr WORD kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && is_leap_year(year) ? 29 : kDays[month - 1];
}

// No year of the platform's calendar, which begins at 1601. A year that the 16 bits of the record do not
// hold is handed over as this one, and refused like any other that the platform cannot convert.
constexpr WORD kNoYear = 0;

WORD record_year(std::int64_t year) {
    return year >= 1601 && year <= 30827 ? static_cast<WORD>(year) : kNoYear;
}

// 64 bits, as `int` years are twelve times as many months.
CDateTime add_months(std::int64_t months, const CDateTime& date) {
    const SYSTEMTIME old = date.getSystemTime();
    std::int64_t year = old.wYear + months / 12;
    std::int64_t month = old.wMonth + months % 12;
    if (month <= 0) {
        month += 12;
        --year;
    } else if (month >= 13) {
        month -= 12;
        ++year;
    }
    const SYSTEMTIME moved{.wYear = record_year(year),
                           .wMonth = static_cast<WORD>(month),
                           .wDayOfWeek = 0,
                           .wDay = std::min(old.wDay, last_day(year, month)),
                           .wHour = old.wHour,
                           .wMinute = old.wMinute,
                           .wSecond = old.wSecond,
                           .wMilliseconds = static_cast<WORD>(date.millisecond())};
    FILETIME time;
    check_call(SystemTimeToFileTime(&moved, &time));
    return TickAccess::time(detail::from_file_time(time) + detail::ticks_of_microseconds(date.microsecond()));
}

CDateTime add_units(const CDateTimeSpan& unit, int number, const CDateTime& date) {
    // The absolute value of the smallest `int` is no `int`.
    const auto count = static_cast<unsigned int>(number > 0 ? number : -static_cast<std::int64_t>(number));
    return number > 0 ? date + unit * count : date - unit * count;
}

CDateTime date_add(char32_t unit, int number, const CDateTime& date) {
    switch (unit) {
        case 's':
            return add_units(CDateTimeSpan::oneSecond, number, date);
        case 'n':
            return add_units(CDateTimeSpan::oneMinute, number, date);
        case 'h':
            return add_units(CDateTimeSpan::oneHour, number, date);
        case 'd':
        case '\0':
            return add_units(CDateTimeSpan::oneDay, number, date);
        case 'w':
            return add_units(CDateTimeSpan::oneDay * 7, number, date);
        case 'm':
            return add_months(number, date);
        case 'y':
            return add_months(std::int64_t{12} * number, date);
        default:
            throw CAtlException(E_INVALIDARG);
    }
}

}  // namespace

CDateTime DateAddMonth(int months, const CDateTime& date) {
    return add_months(months, date);
}

CDateTime DateAddA(const char* interval, int number, const CDateTime& date) {
    if (interval == nullptr) {
        throw CAtlException(E_INVALIDARG);
    }
    return date_add(static_cast<unsigned char>(*interval), number, date);
}

CDateTime DateAddW(const wchar_t* interval, int number, const CDateTime& date) {
    const wchar_t unit = interval != nullptr ? *interval : L'\0';
    return date_add(static_cast<char32_t>(unit), number, date);
}

}  // namespace Quillmark
