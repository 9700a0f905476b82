#pragma once

// All memory that the library, the run-time and the platform service take, whatever the road: `operator new`,
// `malloc` and its relatives, and the hooks of codec contexts, which end in `malloc`. A program that uses
// this builds `memory_under_test.cpp` and is linked with `--wrap` for these functions. For one thread.

#include <cstddef>

namespace Quillmark::test {

/// While it lives, the allocation with the number `n`, counted from 0, gets nothing.
class RefusedAllocation {
  public:
    explicit RefusedAllocation(std::size_t n);
    ~RefusedAllocation();
    RefusedAllocation(const RefusedAllocation&) = delete;
    RefusedAllocation& operator=(const RefusedAllocation&) = delete;

    /// Whether the allocation was asked for.
    bool reached() const;
};

/// Allocations since the start of the program, those that were refused included.
std::size_t allocation_count();

/// Blocks that were allocated and not freed.
std::ptrdiff_t live_block_count();

}  // namespace Quillmark::test
