#pragma once

// Times and spans as the one number that their two halves are.

#include "values/datetime.h"

#include <cstddef>
#include <cstdint>

namespace Quillmark::detail {

/// The way to the halves, which no public operation sets freely.
struct TickAccess {
    static constexpr std::uint64_t ticks(const CDateTime& time) { return joined(time.high_, time.low_); }
    static constexpr std::uint64_t ticks(const CDateTimeSpan& span) { return joined(span.high_, span.low_); }

    static constexpr CDateTime time(std::uint64_t ticks) {
        CDateTime time;
        time.high_ = static_cast<unsigned int>(ticks >> 32);
        time.low_ = static_cast<unsigned int>(ticks);
        return time;
    }

    static constexpr CDateTimeSpan span(std::uint64_t ticks) {
        CDateTimeSpan span;
        span.high_ = static_cast<unsigned int>(ticks >> 32);
        span.low_ = static_cast<unsigned int>(ticks);
        return span;
    }

  private:
    static constexpr std::uint64_t joined(unsigned int high, unsigned int low) {
        return static_cast<std::uint64_t>(high) << 32 | low;
    }

    static_assert(offsetof(CDateTime, high_) == 0 && offsetof(CDateTime, low_) == 4);
    static_assert(offsetof(CDateTimeSpan, high_) == 0 && offsetof(CDateTimeSpan, low_) == 4);
};

constexpr std::uint64_t ticks(const CDateTime& time) {
    return TickAccess::ticks(time);
}
constexpr std::uint64_t ticks(const CDateTimeSpan& span) {
    return TickAccess::ticks(span);
}

inline constexpr std::uint64_t kTicksPerMicrosecond = 10;
inline constexpr std::uint64_t kTicksPerMillisecond = 10'000;
inline constexpr std::uint64_t kTicksPerSecond = 10'000'000;
inline constexpr std::uint64_t kTicksPerMinute = 60 * kTicksPerSecond;
inline constexpr std::uint64_t kTicksPerHour = 60 * kTicksPerMinute;
inline constexpr std::uint64_t kTicksPerDay = 24 * kTicksPerHour;
inline constexpr std::uint64_t kTicksPerMonth = 30 * kTicksPerDay;
inline constexpr std::uint64_t kTicksPerYear = 365 * kTicksPerDay;

/// 1970-01-01, counted from 1601-01-01.
inline constexpr std::uint64_t kUnixEpochTicks = 116'444'736'000'000'000;

/// Whole microseconds, the resolution of the value classes.
constexpr std::uint64_t cut_to_microseconds(std::uint64_t ticks) {
    return ticks - ticks % kTicksPerMicrosecond;
}

/// The ticks below the second.
constexpr std::uint64_t ticks_below_second(std::uint64_t ticks) {
    return ticks % kTicksPerSecond;
}

/// Intended: the product is formed in 32 bits and wraps.
constexpr std::uint64_t ticks_of_microseconds(unsigned int microseconds) {
    return static_cast<std::uint32_t>(microseconds * 10u);
}

constexpr FILETIME to_file_time(std::uint64_t ticks) {
    return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

constexpr std::uint64_t from_file_time(const FILETIME& time) {
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

}  // namespace Quillmark::detail
