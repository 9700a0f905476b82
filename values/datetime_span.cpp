#include "values/datetime.h"

#include "values/detail/ticks.h"
#include "values/result.h"

#include <utility>

namespace Quillmark {

using detail::TickAccess;
using detail::ticks;

// Set by the compiler and not at load, so that static objects of any source may use them.
constinit const CDateTimeSpan CDateTimeSpan::oneYear = TickAccess::span(detail::kTicksPerYear);
constinit const CDateTimeSpan CDateTimeSpan::oneMonth = TickAccess::span(detail::kTicksPerMonth);
constinit const CDateTimeSpan CDateTimeSpan::oneDay = TickAccess::span(detail::kTicksPerDay);
constinit const CDateTimeSpan CDateTimeSpan::oneHour = TickAccess::span(detail::kTicksPerHour);
constinit const CDateTimeSpan CDateTimeSpan::oneMinute = TickAccess::span(detail::kTicksPerMinute);
constinit const CDateTimeSpan CDateTimeSpan::oneSecond = TickAccess::span(detail::kTicksPerSecond);
constinit const CDateTimeSpan CDateTimeSpan::oneMillisecond = TickAccess::span(detail::kTicksPerMillisecond);

const CDateTimeSpan& CDateTimeSpan::OneYear() noexcept {
    return oneYear;
}
const CDateTimeSpan& CDateTimeSpan::OneMonth() noexcept {
    return oneMonth;
}
const CDateTimeSpan& CDateTimeSpan::OneDay() noexcept {
    return oneDay;
}
const CDateTimeSpan& CDateTimeSpan::OneHour() noexcept {
    return oneHour;
}
const CDateTimeSpan& CDateTimeSpan::OneMinute() noexcept {
    return oneMinute;
}
const CDateTimeSpan& CDateTimeSpan::OneSecond() noexcept {
    return oneSecond;
}
const CDateTimeSpan& CDateTimeSpan::OneMillisecond() noexcept {
    return oneMillisecond;
}

CDateTimeSpan::CDateTimeSpan(unsigned int seconds, unsigned int microseconds) noexcept
    : CDateTimeSpan(TickAccess::span(seconds * detail::kTicksPerSecond +
                                     detail::ticks_of_microseconds(microseconds))) {}

void CDateTimeSpan::swap(CDateTimeSpan& other) noexcept {
    std::swap(*this, other);
}

unsigned int CDateTimeSpan::getLowPart() const noexcept {
    return low_;
}
unsigned int CDateTimeSpan::getHighPart() const noexcept {
    return high_;
}

bool operator==(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept {
    return ticks(left) == ticks(right);
}

bool operator!=(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept {
    return ticks(left) != ticks(right);
}

bool operator<(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept {
    return ticks(left) < ticks(right);
}

bool operator<=(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept {
    return ticks(left) <= ticks(right);
}

bool operator>(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept {
    return ticks(left) > ticks(right);
}

bool operator>=(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept {
    return ticks(left) >= ticks(right);
}

CDateTimeSpan operator+(const CDateTimeSpan& left, const CDateTimeSpan& right) noexcept {
    return TickAccess::span(ticks(left) + ticks(right));
}

CDateTimeSpan& operator+=(CDateTimeSpan& left, const CDateTimeSpan& right) noexcept {
    return left = left + right;
}

CDateTimeSpan operator-(const CDateTimeSpan& left, const CDateTimeSpan& right) {
    if (right > left) {
        throw CAtlException(E_FAIL);
    }
    return TickAccess::span(ticks(left) - ticks(right));
}

CDateTimeSpan& operator-=(CDateTimeSpan& left, const CDateTimeSpan& right) {
    return left = left - right;
}

CDateTimeSpan operator*(const CDateTimeSpan& span, unsigned int factor) noexcept {
    return TickAccess::span(ticks(span) * factor);
}

CDateTimeSpan& operator*=(CDateTimeSpan& span, unsigned int factor) noexcept {
    return span = span * factor;
}

CDateTimeSpan operator/(const CDateTimeSpan& span, unsigned int divisor) noexcept {
    return TickAccess::span(ticks(span) / divisor);
}

CDateTimeSpan& operator/=(CDateTimeSpan& span, unsigned int divisor) noexcept {
    return span = span / divisor;
}

CDateTimeSpan operator%(const CDateTimeSpan& span, unsigned int divisor) noexcept {
    return TickAccess::span(ticks(span) % divisor);
}

CDateTimeSpan& operator%=(CDateTimeSpan& span, unsigned int divisor) noexcept {
    return span = span % divisor;
}

unsigned long long operator/(const CDateTimeSpan& span, const CDateTimeSpan& divisor) noexcept {
    return ticks(span) / ticks(divisor);
}

CDateTimeSpan operator%(const CDateTimeSpan& span, const CDateTimeSpan& divisor) noexcept {
    return TickAccess::span(ticks(span) % ticks(divisor));
}

}  // namespace Quillmark
