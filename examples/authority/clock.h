#pragma once

// The time of stamps.

#include <mutex>

#include "values/datetime.h"

namespace authority {

/// The system's clock, and for stamps with ordering (RFC 3161 2.4.2) one that never gives a time twice.
/// Any number of threads may ask.
class Clock {
  public:
    explicit Clock(bool ordering) : ordering_(ordering) {}

    /// With ordering later than every time before it, by a microsecond at least. Then it throws
    /// `example::Refusal` (timeNotAvailable) as long as the system's clock is behind those times, as after it
    /// has been put back.
    Quillmark::CDateTime now();

  private:
    const bool ordering_;
    std::mutex mutex_;
    Quillmark::CDateTime last_{0L, 0};
};

}  // namespace authority
