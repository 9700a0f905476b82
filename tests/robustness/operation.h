#pragma once

// Operations as rows of a table, run with each of their allocations refused in turn.
//
//     {"ReadsHexadecimalText", [](Trial& trial) {
//          CBlob blob = old_blob();
//          trial.call([&] { blob.readFromHexString("AABB"); });
//          EXPECT_TRUE(trial.refused() ? blob == old_blob() : hex(blob) == "aabb");
//      }},
//
// A row makes what it needs, makes the calls that are tested through its `Trial`, and looks at what they
// left. It is run until no allocation is left to refuse. Each refusal must come out of the call in the way
// that is stated for its layer, and when the row is done no block may be live that was not before.

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <limits>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "platform/cryptoapi.h"
#include "runtime/message_buffer.h"
#include "tests/robustness/memory_under_test.h"
#include "values/result.h"

namespace Quillmark::test {

/// One run of a row.
class Trial {
  public:
    /// Nothing is refused.
    Trial() = default;
    /// The allocation with the number `n` over all calls of the row is refused.
    explicit Trial(std::size_t n) : left_(n) {}

    /// Runs a step of the layers that throw. True when it ended without an exception.
    template <class Step>
    bool call(Step&& step);
    /// Runs a step that returns a status of the run-time: `RT_E_NOMEM` for a refusal, else 0 or a length.
    template <class Step>
    int status(Step&& step);
    /// Runs a step of the run-time that returns null for a refusal, or 0 where it copies.
    template <class Step>
    auto result(Step&& step);
    /// Runs a step of the platform service, which answers FALSE or null, and E_OUTOFMEMORY for a refusal.
    template <class Step>
    auto service(Step&& step);
    /// Runs a step that does without the memory that it does not get: it may fail or not, but in the stated
    /// way.
    template <class Step>
    bool call_that_may_do_without(Step&& step);

    /// Whether a step of this row had an allocation refused.
    bool refused() const { return refused_; }
    /// Allocations of the steps so far.
    std::size_t allocations() const { return allocations_; }

  private:
    template <class Step>
    auto run(Step&& step);
    template <class Step>
    bool throws(Step&& step);

    std::size_t left_ = std::numeric_limits<std::size_t>::max();
    std::size_t allocations_ = 0;
    bool refused_ = false;
    bool step_refused_ = false;
};

struct Operation {
    const char* name;
    std::function<void(Trial&)> run;
};

inline void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

using Operations = std::vector<Operation>;

template <class Step>
auto Trial::run(Step&& step) {
    // Counts the step's allocations down, also when it ends by an exception.
    struct Count {
        explicit Count(Trial& counted) : trial(counted), before(allocation_count()), refusal(counted.left_) {}
        ~Count() {
            const std::size_t taken = allocation_count() - before;
            trial.allocations_ += taken;
            trial.step_refused_ = refusal.reached();
            trial.refused_ = trial.refused_ || trial.step_refused_;
            if (trial.left_ != std::numeric_limits<std::size_t>::max()) {
                trial.left_ =
                    trial.step_refused_ ? std::numeric_limits<std::size_t>::max() : trial.left_ - taken;
            }
        }
        Trial& trial;
        std::size_t before;
        RefusedAllocation refusal;
    };
    const Count count(*this);
    return step();
}

/// Whether the step threw; what it threw must be what exhausted memory is reported by.
template <class Step>
bool Trial::throws(Step&& step) {
    try {
        run([&] { step(); });
        return false;
    } catch (const CAtlException& exception) {
        const HRESULT code = exception;
        EXPECT_TRUE(code == CRYPT_E_ASN1_MEMORY || code == CRYPT_E_ASN1_INTERNAL || code == ::E_OUTOFMEMORY ||
                    code == NTE_NO_MEMORY)
            << result_name(code);
    } catch (const ASN1RTLException& exception) {
        EXPECT_EQ(exception.getStatus(), RT_E_NOMEM);
    } catch (const std::bad_alloc&) {
    }
    return true;
}

template <class Step>
bool Trial::call(Step&& step) {
    const bool threw = throws(step);
    EXPECT_EQ(threw, step_refused_) << "an exception for a refusal and nothing else";
    return !threw;
}

template <class Step>
bool Trial::call_that_may_do_without(Step&& step) {
    const bool threw = throws(step);
    EXPECT_TRUE(!threw || step_refused_);
    return !threw;
}

template <class Step>
int Trial::status(Step&& step) {
    const int status = run(step);
    if (step_refused_) {
        EXPECT_EQ(status, RT_E_NOMEM);
    } else {
        EXPECT_GE(status, RT_OK);
    }
    return status;
}

template <class Step>
auto Trial::result(Step&& step) {
    const auto result = run(step);
    EXPECT_EQ(!result, step_refused_) << "null or 0 for a refusal and nothing else";
    return result;
}

template <class Step>
auto Trial::service(Step&& step) {
    SetLastError(0);
    const auto result = run(step);
    const DWORD last_error = GetLastError();
    EXPECT_EQ(!result, step_refused_) << "last error " << std::hex << last_error;
    EXPECT_EQ(last_error, step_refused_ ? static_cast<DWORD>(::E_OUTOFMEMORY) : 0u);
    return result;
}

}  // namespace Quillmark::test
