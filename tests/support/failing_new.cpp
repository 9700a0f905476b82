#include "tests/support/failing_new.h"

#include <cstdint>
#include <cstdlib>
#include <limits>

namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

thread_local std::size_t allocations_left = kNever;
thread_local bool has_failed = false;

void* allocate(std::size_t size) {
    if (allocations_left == 0) {
        allocations_left = kNever;
        has_failed = true;
        throw std::bad_alloc();
    }
    if (allocations_left != kNever) {
        --allocations_left;
    }
    // The address sanitizer ends the program for a size that no object can have.
    void* block = size <= PTRDIFF_MAX ? std::malloc(size != 0 ? size : 1) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

namespace Quillmark::test {

FailNthNew::FailNthNew(std::size_t n) {
    has_failed = false;
    allocations_left = n;
}

FailNthNew::~FailNthNew() {
    allocations_left = kNever;
}

bool FailNthNew::failed() const {
    return has_failed;
}

}  // namespace Quillmark::test
