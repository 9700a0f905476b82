// Text forms of times and spans.

#include "values/datetime.h"

#include "values/detail/date_text.h"
#include "values/detail/last_error.h"
#include "values/detail/ticks.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmark {

using detail::TickAccess;
using detail::ticks;

namespace {

// Intended: a time beyond the platform's calendar makes no code here. The exception being handled leaves
// again, and without one the process terminates.
SYSTEMTIME fields_or_rethrow(const CDateTime& time) {
    const FILETIME file_time = time.getFileTime();
    SYSTEMTIME fields;
    if (!FileTimeToSystemTime(&file_time, &fields)) {
        throw;
    }
    return fields;
}

std::tm to_tm(const SYSTEMTIME& fields) {
    std::tm broken_down{};
    broken_down.tm_year = fields.wYear - 1900;
    broken_down.tm_mon = fields.wMonth - 1;
    broken_down.tm_mday = fields.wDay;
    broken_down.tm_hour = fields.wHour;
    broken_down.tm_min = fields.wMinute;
    broken_down.tm_sec = fields.wSecond;
    broken_down.tm_wday = fields.wDayOfWeek;
    return broken_down;
}

std::size_t format_time(char* out, std::size_t room, const char* format, const std::tm& time) {
    return std::strftime(out, room, format, &time);
}

std::size_t format_time(wchar_t* out, std::size_t room, const wchar_t* format, const std::tm& time) {
    return std::wcsftime(out, room, format, &time);
}

// Empty when the C library writes nothing.
template <typename Char>
std::basic_string<Char> formatted(const CDateTime& time, const Char* format) {
    std::array<Char, 256> text{};
    const std::size_t length = format_time(text.data(), text.size(), format, to_tm(fields_or_rethrow(time)));
    return {text.data(), length};
}

template <typename Char>
std::basic_string<Char> formatted_or_fail(const CDateTime& time, const Char* format) {
    std::basic_string<Char> text = formatted(time, format);
    if (text.empty()) {
        throw CAtlException(E_FAIL);
    }
    return text;
}

// Appends at least `width` digits, filled with zeros.
void append_number(std::string& text, std::uint64_t number, std::size_t width) {
    const std::string digits = std::to_string(number);
    text.append(width - std::min(width, digits.size()), '0');
    text += digits;
}

// Appends three digits of milliseconds and, unless they are 0, three of microseconds; nothing for a whole
// second.
void append_display_fraction(std::string& text, const CDateTime& time) {
    if (detail::ticks_below_second(ticks(time)) == 0) {
        return;
    }
    text += '.';
    append_number(text, time.millisecond(), 3);
    if (time.microsecond() != 0) {
        append_number(text, time.microsecond(), 3);
    }
}

// X.690 11.7: the fraction has no trailing zeros, and a whole second has none at all.
void append_der_fraction(std::string& text, const CDateTime& time) {
    const std::uint64_t microseconds = detail::ticks_below_second(ticks(time)) / detail::kTicksPerMicrosecond;
    if (microseconds == 0) {
        return;
    }
    text += '.';
    append_number(text, microseconds, 6);
    text.erase(text.find_last_not_of('0') + 1);
}

unsigned int number(std::string_view digits) {
    unsigned int value = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') {
            throw CAtlException(HRESULT_FROM_WIN32(ERROR_INVALID_TIME));
        }
        value = value * 10 + static_cast<unsigned int>(digit - '0');
    }
    return value;
}

int field(std::string_view text, std::size_t position, std::size_t width) {
    if (position + width > text.size()) {
        return 0;
    }
    return static_cast<int>(number(text.substr(position, width)));
}

// Intended: the fraction begins at the sixteenth character, whatever stands before it.
unsigned int fraction_microseconds(const std::string& text) {
    constexpr std::size_t kStart = 15;
    constexpr std::size_t kDigits = 6;
    if (text.size() <= kStart) {
        return 0;
    }
    std::string digits = text.substr(kStart);
    if (digits.back() == 'Z') {
        digits.pop_back();
    }
    digits.resize(kDigits, '0');
    return number(digits);
}

}  // namespace

std::tm GeneralizedTimeToTm(const std::string& text, unsigned int& microseconds, bool span) {
    std::tm time{};
    time.tm_year = field(text, 0, 4) - (span ? 0 : 1900);
    time.tm_mon = field(text, 4, 2) - (span ? 0 : 1);
    time.tm_mday = field(text, 6, 2);
    time.tm_hour = field(text, 8, 2);
    time.tm_min = field(text, 10, 2);
    time.tm_sec = field(text, 12, 2);
    microseconds = fraction_microseconds(text);
    return time;
}

CDateTime::CDateTime(const char* text) {
    unsigned int microseconds = 0;
    const std::tm time = GeneralizedTimeToTm(text != nullptr ? text : "", microseconds, false);
    const SYSTEMTIME fields{.wYear = static_cast<WORD>(time.tm_year + 1900),
                            .wMonth = static_cast<WORD>(time.tm_mon + 1),
                            .wDayOfWeek = 0,
                            .wDay = static_cast<WORD>(time.tm_mday),
                            .wHour = static_cast<WORD>(time.tm_hour),
                            .wMinute = static_cast<WORD>(time.tm_min),
                            .wSecond = static_cast<WORD>(time.tm_sec),
                            .wMilliseconds = 0};
    FILETIME file_time;
    if (!SystemTimeToFileTime(&fields, &file_time)) {
        throw CAtlException(E_FAIL);
    }
    *this = TickAccess::time(detail::from_file_time(file_time) + detail::ticks_of_microseconds(microseconds));
}

CStringProxy CDateTime::getGeneralizedTime() const {
    const SYSTEMTIME fields = fields_or_rethrow(*this);
    std::string text;
    append_number(text, fields.wYear, 4);
    for (const WORD field : {fields.wMonth, fields.wDay, fields.wHour, fields.wMinute, fields.wSecond}) {
        append_number(text, field, 2);
    }
    append_der_fraction(text, *this);
    text += 'Z';
    return CStringProxy(text.c_str());
}

CStringProxy CDateTime::getGeneralizedTimeTrimMicroseconds() const {
    return CStringProxy(formatted_or_fail(*this, "%d.%m.%Y %X").c_str());
}

CStringProxy CDateTime::tostring() const {
    std::string text = formatted_or_fail(*this, "%d.%m.%Y %H:%M:%S");
    append_display_fraction(text, *this);
    return CStringProxy(text.c_str());
}

CWStringProxy CDateTime::towstring() const {
    std::string fraction;
    append_display_fraction(fraction, *this);
    std::wstring text = formatted_or_fail(*this, L"%d.%m.%Y %H:%M:%S");
    text.append(fraction.begin(), fraction.end());
    return CWStringProxy(text.c_str());
}

CDateTimeSpan::CDateTimeSpan(const char* text) {
    unsigned int microseconds = 0;
    const std::tm time = GeneralizedTimeToTm(text != nullptr ? text : "", microseconds, true);
    // At most four digits of years and two of the rest, so nothing here comes near 64 bits.
    const std::uint64_t total = static_cast<std::uint64_t>(time.tm_year) * detail::kTicksPerYear +
                                static_cast<std::uint64_t>(time.tm_mon) * detail::kTicksPerMonth +
                                static_cast<std::uint64_t>(time.tm_mday) * detail::kTicksPerDay +
                                static_cast<std::uint64_t>(time.tm_hour) * detail::kTicksPerHour +
                                static_cast<std::uint64_t>(time.tm_min) * detail::kTicksPerMinute +
                                static_cast<std::uint64_t>(time.tm_sec) * detail::kTicksPerSecond +
                                detail::ticks_of_microseconds(microseconds);
    *this = TickAccess::span(total);
}

CStringProxy CDateTimeSpan::getGeneralizedTime() const {
    const std::uint64_t total = ticks(*this);
    const std::uint64_t below_year = total % detail::kTicksPerYear;
    std::string text;
    append_number(text, total / detail::kTicksPerYear, 4);
    append_number(text, below_year / detail::kTicksPerMonth, 2);
    append_number(text, below_year % detail::kTicksPerMonth / detail::kTicksPerDay, 2);
    append_number(text, total % detail::kTicksPerDay / detail::kTicksPerHour, 2);
    append_number(text, total % detail::kTicksPerHour / detail::kTicksPerMinute, 2);
    append_number(text, total % detail::kTicksPerMinute / detail::kTicksPerSecond, 2);
    text += '.';
    append_number(text, detail::ticks_below_second(total) / detail::kTicksPerMicrosecond, 6);
    // Intended: the point is no barrier, zeros before it go as well.
    text.erase(text.find_last_not_of("0.") + 1);
    text += 'Z';
    return CStringProxy(text.c_str());
}

CStringProxy CDateTimeSpan::tostring() const {
    return getGeneralizedTime();
}

CWStringProxy CDateTimeSpan::towstring() const {
    const CStringProxy narrow = getGeneralizedTime();
    const int size = MultiByteToWideChar(CP_ACP, 0, narrow.c_str(), -1, nullptr, 0);
    detail::check_call(size > 0);
    std::vector<wchar_t> wide(static_cast<std::size_t>(size));
    detail::check_call(MultiByteToWideChar(CP_ACP, 0, narrow.c_str(), -1, wide.data(), size) > 0);
    return CWStringProxy(wide.data());
}

CStringProxy toXsdDateTimeString(const CDateTime& time) {
    std::string text = formatted(time, "%Y-%m-%dT%H:%M:%S");
    // Intended: unlike the display forms, an empty result is no failure.
    if (text.empty()) {
        return CStringProxy("");
    }
    if (detail::ticks_below_second(ticks(time)) >= detail::kTicksPerMillisecond) {
        text += '.';
        append_number(text, time.millisecond(), 3);
    }
    text += 'Z';
    return CStringProxy(text.c_str());
}

}  // namespace Quillmark
