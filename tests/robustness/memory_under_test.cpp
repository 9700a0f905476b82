#include "tests/robustness/memory_under_test.h"

#include <cstdint>
#include <limits>
#include <new>

// The linker puts `__wrap_x` in the place of `x`, and `x` in the place of `__real_x`, in every object of the
// program.
// Visible, because the sanitizers' libraries refer to the functions too.
#pragma GCC visibility push(default)
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void __wrap_free(void* block);
}
#pragma GCC visibility pop

namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

std::size_t count = 0;
std::ptrdiff_t live_blocks = 0;
std::size_t before_refusal = kNever;
bool refused_one = false;

bool refuses() {
    ++count;
    if (before_refusal == kNever) {
        return false;
    }
    if (before_refusal != 0) {
        --before_refusal;
        return false;
    }
    before_refusal = kNever;
    refused_one = true;
    return true;
}

// The address sanitizer ends the program for a size that no object can have.
bool possible(std::size_t size) {
    return size <= PTRDIFF_MAX;
}

void* counted(void* block) {
    live_blocks += block != nullptr ? 1 : 0;
    return block;
}

void* allocate(std::size_t size) noexcept {
    return refuses() || !possible(size) ? nullptr : counted(__real_malloc(size != 0 ? size : 1));
}

void* allocate_or_throw(std::size_t size) {
    void* const block = allocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void release(void* block) noexcept {
    live_blocks -= block != nullptr ? 1 : 0;
    __real_free(block);
}

}  // namespace

void* __wrap_malloc(std::size_t size) {
    return refuses() ? nullptr : counted(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return refuses() ? nullptr : counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size) {
    if (refuses()) {
        return nullptr;
    }
    void* const moved = __real_realloc(block, size);
    return block == nullptr ? counted(moved) : moved;
}

void __wrap_free(void* block) {
    release(block);
}

void* operator new(std::size_t size) {
    return allocate_or_throw(size);
}
void* operator new[](std::size_t size) {
    return allocate_or_throw(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    release(block);
}

namespace Quillmark::test {

RefusedAllocation::RefusedAllocation(std::size_t n) {
    refused_one = false;
    before_refusal = n;
}

RefusedAllocation::~RefusedAllocation() {
    before_refusal = kNever;
}

bool RefusedAllocation::reached() const {
    return refused_one;
}

std::size_t allocation_count() {
    return count;
}

std::ptrdiff_t live_block_count() {
    return live_blocks;
}

}  // namespace Quillmark::test
