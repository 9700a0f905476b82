#pragma once

// File times: 100-nanosecond ticks since 1601-01-01T00:00:00 UTC.

#include <cstdint>
#include <optional>

#include "platform/cryptoapi.h"

namespace Quillmark::platform {

inline FILETIME file_time(std::uint64_t ticks) {
    return {.dwLowDateTime = static_cast<DWORD>(ticks), .dwHighDateTime = static_cast<DWORD>(ticks >> 32)};
}

/// Ticks of a date of the proleptic Gregorian calendar, or nothing when a field is out of its range (years
/// 1601 to 30827). The day of the week is not looked at.
std::optional<std::uint64_t> ticks_of(const SYSTEMTIME& time);

}  // namespace Quillmark::platform
