#pragma once

// What an operation reports when the heap of its codec contexts ends. A test program that uses this also
// builds `codec_heap.cpp`.

#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "runtime/context.h"
#include "runtime/message_buffer.h"
#include "tests/support/codec_heap.h"
#include "values/result.h"

namespace Quillmark::test {

/// Runs `call` with the first, second, third .. allocation refused, until it gets through. Every failure must
/// be a clean one. Returns the result codes that were seen.
template <class Call>
std::vector<HRESULT> codes_without_memory(Call&& call) {
    CodecHeap heap;
    std::vector<HRESULT> codes;
    for (std::size_t n = 0;; ++n) {
        heap.fail_after(n);
        try {
            call();
        } catch (const CAtlException& failure) {
            codes.push_back(failure);
        } catch (const ASN1MessageBuffer::RTLError& failure) {
            EXPECT_EQ(failure.getStatus(), RT_E_NOMEM);
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(heap.live_blocks(), 0u) << "after allocation " << n << " failed";
        if (!heap.failed()) {
            return codes;
        }
    }
}

}  // namespace Quillmark::test
