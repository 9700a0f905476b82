#include "authority/clock.h"

#include <algorithm>

#include "support/reply.h"

namespace authority {

using Quillmark::CDateTime;
using Quillmark::CDateTimeSpan;

CDateTime Clock::now() {
    const CDateTime now = CDateTime::Now();
    if (!ordering_) {
        return now;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    // Threads that ask within one microsecond, or are served in another order than they looked, may be ahead
    // of the clock by some milliseconds at most.
    if (now + CDateTimeSpan::OneSecond() < last_) {
        throw example::Refusal{example::timeNotAvailable, "the clock has been put back"};
    }
    last_ = std::max(now, last_ + CDateTimeSpan(0, 1));
    return last_;
}

}  // namespace authority
