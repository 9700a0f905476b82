#pragma once

// Allocations of `operator new` that fail on demand. A test program that uses this also builds
// `failing_new.cpp`, which replaces the global allocation functions.

#include <cstddef>
#include <new>

namespace Quillmark::test {

/// While it lives, the allocation of this thread with the number `n`, counted from 0, throws
/// `std::bad_alloc`.
class FailNthNew {
  public:
    explicit FailNthNew(std::size_t n);
    ~FailNthNew();
    FailNthNew(const FailNthNew&) = delete;
    FailNthNew& operator=(const FailNthNew&) = delete;

    /// Whether the allocation was reached.
    bool failed() const;
};

/// Runs `call` again and again, each time with one allocation later failing, until one run needs no more.
/// `check` is run after each failure, whatever exception it came out as. Returns the number of failures.
template <typename Call, typename Check>
std::size_t for_each_failing_new(Call&& call, Check&& check) {
    for (std::size_t n = 0;; ++n) {
        bool reached = false;
        {
            FailNthNew failing(n);
            try {
                call();
            } catch (...) {
                reached = failing.failed();
                if (!reached) {
                    throw;
                }
            }
            reached = failing.failed();
        }
        if (!reached) {
            return n;
        }
        check();
    }
}

}  // namespace Quillmark::test
