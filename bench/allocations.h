#pragma once

// Counts what a piece of work takes from the C heap. malloc and its kin are replaced for the whole
// process, so both sides are counted alike, whichever allocator function they call.

#include <cstdint>

namespace Quillmark::bench {

/// Allocations of this thread since it started.
std::uint64_t allocation_count();

}  // namespace Quillmark::bench
