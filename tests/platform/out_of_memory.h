#pragma once

// Calls of the service that run out of memory.

#include "tests/platform/service.h"
#include "tests/support/failing_new.h"

namespace Quillmark::test {

/// Every allocation of C++ in the service fails once; the call then answers E_OUTOFMEMORY and nothing is
/// lost.
template <typename Call>
void expect_out_of_memory_at_each_allocation(Call&& call) {
    std::size_t failures = 0;
    for (;; ++failures) {
        bool reached = false;
        bool succeeded = false;
        DWORD code = 0;
        {
            FailNthNew failing(failures);
            succeeded = call();
            code = GetLastError();
            reached = failing.failed();
        }
        if (!reached) {
            EXPECT_TRUE(succeeded);
            break;
        }
        if (!succeeded) {
            EXPECT_EQ(code, E_OUTOFMEMORY) << "allocation " << failures;
        }
    }
    EXPECT_GT(failures, 0u);
}

}  // namespace Quillmark::test
