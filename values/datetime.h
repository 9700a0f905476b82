#pragma once

// Points in time and lengths of time, with their text forms. Both are one unsigned 64-bit count of ticks
// of 100 nanoseconds, kept in two halves. The resolution is one microsecond: values are multiples of ten
// ticks, and constructors that take values from outside cut off what is finer. Calendar work is the
// platform's; see `FileTimeToSystemTime` for the range.
//
//     const CDateTime due = DateAddA("m", 1, CDateTime::Now());
//     std::puts(due.getGeneralizedTime().c_str());

#include "platform/cryptoapi.h"
#include "values/export.h"
#include "values/string_proxy.h"

namespace Quillmark {

namespace detail {
struct TickAccess;
}

/// A length of time. There are no negative ones: a subtraction that would give one throws `E_FAIL`.
/// Sums and products wrap silently.
class QUILLMARK_API CDateTimeSpan {
  public:
    constexpr CDateTimeSpan() noexcept : high_(0), low_(0) {}
    /// The product of `microseconds` and ten is formed in 32 bits and wraps.
    CDateTimeSpan(unsigned int seconds, unsigned int microseconds) noexcept;
    /// Reads the compact form YYYYMMDDHHMMSS with an optional fraction and "Z", with years of 365 and months
    /// of 30 days. Throws 0x8007076D (`ERROR_INVALID_TIME`) for a character that is no digit.
    explicit CDateTimeSpan(const char* text);
    CDateTimeSpan(const CDateTimeSpan& other) noexcept = default;
    CDateTimeSpan& operator=(const CDateTimeSpan& other) noexcept = default;

    void swap(CDateTimeSpan& other) noexcept;
    unsigned int getLowPart() const noexcept;
    unsigned int getHighPart() const noexcept;

    /// The compact form: years in four digits, the others in two, a fraction of six digits, then "Z".
    /// Zeros and the point are stripped from the end before the "Z", through the point into the seconds: ten
    /// seconds are "0000000000001Z" and a zero span is "Z".
    CStringProxy getGeneralizedTime() const;
    /// As `getGeneralizedTime`.
    CStringProxy tostring() const;
    CWStringProxy towstring() const;

    /// The constants below.
    static const CDateTimeSpan& OneYear() noexcept;
    static const CDateTimeSpan& OneMonth() noexcept;
    static const CDateTimeSpan& OneDay() noexcept;
    static const CDateTimeSpan& OneHour() noexcept;
    static const CDateTimeSpan& OneMinute() noexcept;
    static const CDateTimeSpan& OneSecond() noexcept;
    static const CDateTimeSpan& OneMillisecond() noexcept;

    static const CDateTimeSpan oneYear;   ///< 365 days
    static const CDateTimeSpan oneMonth;  ///< 30 days
    static const CDateTimeSpan oneDay;
    static const CDateTimeSpan oneHour;
    static const CDateTimeSpan oneMinute;
    static const CDateTimeSpan oneSecond;
    static const CDateTimeSpan oneMillisecond;

  private:
    friend struct detail::TickAccess;

    unsigned int high_;
    unsigned int low_;
};

/// A point in time, counted from 1601-01-01 00:00:00 UTC.
class QUILLMARK_API CDateTime {
  public:
    /// Unix seconds and microseconds; the product of `microseconds` and ten is formed in 32 bits and wraps.
    CDateTime(long seconds, unsigned int microseconds) noexcept;
    CDateTime(long long seconds, unsigned int microseconds) noexcept;
    /// Reads the compact form YYYYMMDDHHMMSS with an optional fraction and "Z"; zones are not understood.
    /// Throws 0x8007076D (`ERROR_INVALID_TIME`) for a character that is no digit, `E_FAIL` for a date that
    /// does not exist.
    explicit CDateTime(const char* text);
    CDateTime(_FILETIME time) noexcept;
    /// Throws the platform's code for a field out of range.
    CDateTime(_SYSTEMTIME time);
    /// Throws the platform's code for a field out of range. Each field is cut to 16 bits first. The product
    /// of `microsecond` and ten is formed in 32 bits and wraps.
    CDateTime(unsigned int year, unsigned int month, unsigned int day, unsigned int hour, unsigned int minute,
              unsigned int second, unsigned int millisecond, unsigned int microsecond);
    CDateTime(const CDateTime& other) noexcept = default;
    CDateTime& operator=(const CDateTime& other) noexcept = default;

    /// The time of the system's clock.
    static CDateTime Now();

    /// The fields in UTC. Each throws the platform's code for a time beyond its calendar.
    unsigned int year() const;
    unsigned int month() const;
    unsigned int day() const;
    unsigned int hour() const;
    unsigned int minute() const;
    unsigned int second() const;
    unsigned int millisecond() const noexcept;
    /// The microseconds within the millisecond.
    unsigned int microsecond() const noexcept;
    _SYSTEMTIME getSystemTime() const;
    _FILETIME getFileTime() const noexcept;
    /// Unix seconds, unsigned: a time before 1970 gives a huge number.
    unsigned long long getTime() const noexcept;

    /// The time moved by the offset of the local zone, with the daylight saving state of this moment and not
    /// of the date.
    CDateTime utcToLocal() const;
    CDateTime localToUtc() const;

    void swap(CDateTime& other) noexcept;

    // For a time beyond the platform's calendar the following re-throw the exception being handled, and
    // without one the process terminates.

    /// YYYYMMDDHHMMSS, a fraction without trailing zeros when there is one, and "Z": DER of GeneralizedTime.
    CStringProxy getGeneralizedTime() const;
    /// In spite of its name a localised display form, without a fraction.
    CStringProxy getGeneralizedTimeTrimMicroseconds() const;
    /// DD.MM.YYYY HH:MM:SS, with a fraction of three or six digits when there is one.
    CStringProxy tostring() const;
    CWStringProxy towstring() const;

  private:
    friend struct detail::TickAccess;
    constexpr CDateTime() noexcept : high_(0), low_(0) {}

    unsigned int high_;
    unsigned int low_;
};

static_assert(sizeof(CDateTime) == 8 && sizeof(CDateTimeSpan) == 8, "a time is two halves");

QUILLMARK_API bool operator==(const CDateTime& left, const CDateTime& right) noexcept;
QUILLMARK_API bool operator!=(const CDateTime& left, const CDateTime& right) noexcept;
QUILLMARK_API bool operator<(const CDateTime& left, const CDateTime& right) noexcept;
QUILLMARK_API bool operator<=(const CDateTime& left, const CDateTime& right) noexcept;
QUILLMARK_API bool operator>(const CDateTime& left, const CDateTime& right) noexcept;
QUILLMARK_API bool operator>=(const CDateTime& left, const CDateTime& right) noexcept;

QUILLMARK_API bool operator==(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept;
QUILLMARK_API bool operator!=(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept;
QUILLMARK_API bool operator<(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept;
QUILLMARK_API bool operator<=(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept;
QUILLMARK_API bool operator>(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept;
QUILLMARK_API bool operator>=(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept;

QUILLMARK_API CDateTime operator+(const CDateTime& time, const CDateTimeSpan& span) noexcept;
QUILLMARK_API CDateTime& operator+=(CDateTime& time, const CDateTimeSpan& span) noexcept;
/// Throws `E_FAIL` when the result would lie before 1601; the left side of `-=` is then unchanged.
QUILLMARK_API CDateTime operator-(const CDateTime& time, const CDateTimeSpan& span);
QUILLMARK_API CDateTime& operator-=(CDateTime& time, const CDateTimeSpan& span);
/// Throws `E_FAIL` when `earlier` is the later one.
QUILLMARK_API CDateTimeSpan operator-(const CDateTime& later, const CDateTime& earlier);

QUILLMARK_API CDateTimeSpan operator+(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept;
QUILLMARK_API CDateTimeSpan& operator+=(CDateTimeSpan& left, const CDateTimeSpan& right) noexcept;
/// Throws `E_FAIL` when `right` is the greater one; the left side of `-=` is then unchanged.
QUILLMARK_API CDateTimeSpan operator-(const CDateTimeSpan& left, const CDateTimeSpan& right);
QUILLMARK_API CDateTimeSpan& operator-=(CDateTimeSpan& left, const CDateTimeSpan& right);
QUILLMARK_API CDateTimeSpan operator*(const CDateTimeSpan& span, unsigned int factor) noexcept;
QUILLMARK_API CDateTimeSpan& operator*=(CDateTimeSpan& span, unsigned int factor) noexcept;
// The divisor must not be zero.
QUILLMARK_API CDateTimeSpan operator/(const CDateTimeSpan& span, unsigned int divisor) noexcept;
QUILLMARK_API CDateTimeSpan& operator/=(CDateTimeSpan& span, unsigned int divisor) noexcept;
QUILLMARK_API CDateTimeSpan operator%(const CDateTimeSpan& span, unsigned int divisor) noexcept;
QUILLMARK_API CDateTimeSpan& operator%=(CDateTimeSpan& span, unsigned int divisor) noexcept;
/// How many times `divisor` goes into `span`.
QUILLMARK_API unsigned long long operator/(const CDateTimeSpan& span, const CDateTimeSpan& divisor) noexcept;
QUILLMARK_API CDateTimeSpan operator%(const CDateTimeSpan& span, const CDateTimeSpan& divisor) noexcept;

/// The dateTime form of XML Schema in UTC, with milliseconds when they are not 0; microseconds are cut off.
QUILLMARK_API CStringProxy toXsdDateTimeString(const CDateTime& time);
/// Reads the dateTime form of XML Schema: a fraction, a zone or both must follow the seconds, a zone being
/// "Z", or a sign, hours and minutes up to 14 hours. Digits of the fraction behind the sixth are ignored, and
/// without a zone the time is UTC. Throws 0x8007076D (`ERROR_INVALID_TIME`) for other text and for more than
/// 31 characters behind the seconds, `E_FAIL` for a date that does not exist or lies before 1601.
QUILLMARK_API CDateTime fromXsdDateTimeString(const char* text);

/// `date` moved by `number` units, back when negative. The first character of `interval` names the unit:
/// "s" second, "n" minute, "h" hour, "d" day, "w" week, "m" calendar month, "y" calendar year; empty text
/// means days. A day that the month reached does not have becomes its last. Throws `E_INVALIDARG` for null or
/// another letter, `E_FAIL` before 1601, the platform's code for a month or year beyond its calendar.
QUILLMARK_API CDateTime DateAddA(const char* interval, int number, const CDateTime& date);
/// The same for wide text; null is as empty text here.
QUILLMARK_API CDateTime DateAddW(const wchar_t* interval, int number, const CDateTime& date);

}  // namespace Quillmark
