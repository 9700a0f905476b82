#pragma once

// The Gregorian calendar, as far as time texts need it.

#include "runtime/time_string.h"

namespace Quillmark::detail {

constexpr bool is_leap_year(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

/// Days of `month` (1 to 12). A negative year stands for one that is not known, and has a February 29.
inline int days_in_month(int year, int month) {
    const bool leapDay = month == 2 && (year < 0 || is_leap_year(year));
    return OS_daysInMonth[month - 1] + (leapDay ? 1 : 0);
}

inline bool date_exists(int year, int month, int day) {
    return month >= 1 && month <= 12 && day >= 1 && day <= days_in_month(year, month);
}

}  // namespace Quillmark::detail
