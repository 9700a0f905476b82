// For programs that run the operations and refuse them nothing, in any number of threads.

#include "tests/robustness/memory_under_test.h"

namespace Quillmark::test {

RefusedAllocation::RefusedAllocation(std::size_t /*n*/) {}

RefusedAllocation::~RefusedAllocation() = default;

bool RefusedAllocation::reached() const {
    return false;
}

std::size_t allocation_count() {
    return 0;
}

std::ptrdiff_t live_block_count() {
    return 0;
}

}  // namespace Quillmark::test
