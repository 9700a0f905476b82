#pragma once

// Running an operation with every one of its allocations failing in turn. A test program that uses this also
// builds `codec_heap.cpp` and `failing_new.cpp`.

#include <gtest/gtest.h>

#include <limits>
#include <new>

#include "runtime/context.h"
#include "tests/support/codec_heap.h"
#include "tests/support/failing_new.h"
#include "values/result.h"

namespace Quillmark::test {

/// Runs `operation` and tells whether it failed the way that exhausted memory is reported above the run-time:
/// by one of its codes, by the run-time's exception or by the standard one.
template <typename Operation>
bool fails_for_memory(Operation&& operation) {
    try {
        operation();
        return false;
    } catch (const CAtlException& exception) {
        const HRESULT code = exception;
        EXPECT_TRUE(code == CRYPT_E_ASN1_MEMORY || code == CRYPT_E_ASN1_INTERNAL || code == E_OUTOFMEMORY)
            << result_name(code);
    } catch (const ASN1RTLException& exception) {
        EXPECT_EQ(exception.getStatus(), RT_E_NOMEM);
    } catch (const std::bad_alloc&) {
    }
    return true;
}

/// Runs `operation` again and again, each time with one allocation later failing, until a run succeeds: first
/// the allocations of codec contexts, which go through the hooks, then those of `operator new`. Each failure
/// must be reported, must leave nothing on the heap of any context, and must satisfy `check`.
template <typename Operation, typename Check>
void for_each_failing_allocation(Operation&& operation, Check&& check) {
    CodecHeap heap;
    for (std::size_t n = 0;; ++n) {
        heap.fail_after(n);
        const bool failed = fails_for_memory(operation);
        ASSERT_EQ(failed, heap.failed()) << "allocation " << n << " of a context";
        ASSERT_EQ(heap.live_blocks(), 0u) << "allocation " << n << " of a context";
        if (!failed) {
            break;
        }
        check();
    }
    heap.fail_after(std::numeric_limits<std::size_t>::max());
    for (std::size_t n = 0;; ++n) {
        bool failed = false;
        bool reached = false;
        {
            FailNthNew failing(n);
            failed = fails_for_memory(operation);
            reached = failing.failed();
        }
        ASSERT_EQ(failed, reached) << "allocation " << n << " of operator new";
        ASSERT_EQ(heap.live_blocks(), 0u) << "allocation " << n << " of operator new";
        if (!failed) {
            break;
        }
        check();
    }
}

template <typename Operation>
void for_each_failing_allocation(Operation&& operation) {
    for_each_failing_allocation(operation, [] {});
}

}  // namespace Quillmark::test
