// Calendar arithmetic and comparison of times.

#include <algorithm>
#include <chrono>

#include "runtime/detail/calendar.h"
#include "runtime/time_class.h"

namespace {

constexpr int64_t kMillisPerDay = 86'400'000;

int64_t floor_divide(int64_t dividend, int64_t divisor) {
    const int64_t quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

// Days since 1970-01-01.
constexpr int64_t day_number(int year, int month, int day) {
    const std::chrono::year_month_day first{
        std::chrono::year(year), std::chrono::month(static_cast<unsigned>(std::clamp(month, 1, 12))),
        std::chrono::day(1)};
    return std::chrono::sys_days(first).time_since_epoch().count() + std::max(day, 1) - 1;
}

// Moves a date; false, with nothing moved, when it would leave the years that a field can hold.
bool move_date(int64_t days, int16_t& year, int16_t& month, int16_t& day) {
    constexpr int64_t kFirst = day_number(0, 1, 1);
    constexpr int64_t kLast = day_number(INT16_MAX, 12, 31);
    const int64_t from = day_number(year, month, day);
    if (days < kFirst - from || days > kLast - from) {
        return false;
    }
    const std::chrono::year_month_day moved{std::chrono::sys_days(std::chrono::days(from + days))};
    year = static_cast<int16_t>(static_cast<int>(moved.year()));
    month = static_cast<int16_t>(static_cast<unsigned>(moved.month()));
    day = static_cast<int16_t>(static_cast<unsigned>(moved.day()));
    return true;
}

}  // namespace

const int16_t ASN1CTime::daysInMonth[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

int ASN1CTime::checkDate(int day, int month, int year) {
    return day < 1 || month < 1 || Quillmark::detail::date_exists(year, month, day) ? 1 : 0;
}

void ASN1CTime::addDays(int days, int16_t& year, int16_t& month, int16_t& day) {
    move_date(days, year, month, day);
}

void ASN1CTime::addMilliseconds(long milliseconds, int16_t& year, int16_t& month, int16_t& day, int16_t& hour,
                                int16_t& minute, int16_t& second, int32_t& secFraction) {
    const int64_t seconds = (hour * 60LL + minute) * 60 + second;
    // Less than a day is added at a time, so that the sum cannot overflow.
    const int64_t sum = seconds * 1000 + secFraction * 100LL + milliseconds % kMillisPerDay;
    const int64_t days = floor_divide(sum, kMillisPerDay);
    int64_t rest = sum - days * kMillisPerDay;
    if (!move_date(milliseconds / kMillisPerDay + days, year, month, day)) {
        return;
    }
    secFraction = static_cast<int32_t>(rest % 1000 / 100);
    rest /= 1000;
    second = static_cast<int16_t>(rest % 60);
    minute = static_cast<int16_t>(rest / 60 % 60);
    hour = static_cast<int16_t>(rest / 3600);
}

long ASN1CTime::getDaysNum() const {
    return static_cast<long>(day_number(std::max<int>(year, 0), month, day));
}

long long ASN1CTime::getMillisNum() const {
    const long long seconds = (std::max<int>(hour, 0) * 60LL + minute) * 60 + second;
    return seconds * 1000 + secFraction * 100LL - (diffHour * 60LL + diffMinute) * 60'000;
}

long ASN1CTime::equals(const ASN1CTime& other) const {
    ensureParsed();
    other.ensureParsed();
    const long days = getDaysNum() - other.getDaysNum();
    return days != 0 ? days : static_cast<long>(getMillisNum() - other.getMillisNum());
}

bool ASN1CTime::operator==(const ASN1CTime& other) const {
    return equals(other) == 0;
}

bool ASN1CTime::operator!=(const ASN1CTime& other) const {
    return equals(other) != 0;
}

bool ASN1CTime::operator>(const ASN1CTime& other) const {
    return equals(other) > 0;
}

bool ASN1CTime::operator<(const ASN1CTime& other) const {
    return equals(other) < 0;
}

bool ASN1CTime::operator>=(const ASN1CTime& other) const {
    return equals(other) >= 0;
}

bool ASN1CTime::operator<=(const ASN1CTime& other) const {
    return equals(other) <= 0;
}
