#include "fuzz/memory.h"

#include <malloc.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "runtime/context.h"

namespace {

// Atomic because the fuzzer's own thread allocates too.
std::atomic<std::size_t> octets_in_use = 0;
std::atomic<std::size_t> most_octets = 0;
std::atomic<std::size_t> blocks_of_codec = 0;

void* counted(void* block) {
    if (block != nullptr) {
        const std::size_t now = octets_in_use += malloc_usable_size(block);
        if (now > most_octets) {
            most_octets = now;
        }
    }
    return block;
}

void count_out(void* block) {
    if (block != nullptr) {
        octets_in_use -= malloc_usable_size(block);
    }
}

void* codec_malloc(void* /*memContext*/, std::size_t size) {
    ++blocks_of_codec;
    return counted(std::malloc(size));
}

void codec_free(void* /*memContext*/, void* block) {
    if (block != nullptr) {
        --blocks_of_codec;
    }
    count_out(block);
    std::free(block);
}

const bool hooks_are_set = [] {
    g_malloc_func = codec_malloc;
    g_free_func = codec_free;
    return true;
}();

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    // The address sanitizer ends the program for a size that no object can have.
    return size <= PTRDIFF_MAX ? counted(std::malloc(size != 0 ? size : 1)) : nullptr;
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void* operator new(std::size_t size) {
    void* block = operator new(size, std::nothrow);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* block) noexcept {
    count_out(block);
    std::free(block);
}
void operator delete[](void* block) noexcept {
    operator delete(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace Quillmark::fuzz {

MemoryUse::MemoryUse() : in_use_before_(octets_in_use) {
    most_octets = in_use_before_;
}

std::size_t MemoryUse::peak() const {
    return most_octets - in_use_before_;
}

std::size_t MemoryUse::codec_blocks() const {
    return blocks_of_codec;
}

}  // namespace Quillmark::fuzz
