#include "bench/allocations.h"

#include <cstddef>

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* ptr, std::size_t size);

}  // extern "C"

namespace {

// Static TLS, so that reading it never allocates.
__attribute__((tls_model("initial-exec"))) thread_local std::uint64_t g_allocations = 0;

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    ++g_allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    ++g_allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* ptr, std::size_t size) {
    ++g_allocations;
    return __libc_realloc(ptr, size);
}

}  // extern "C"

namespace Quillmark::bench {

std::uint64_t allocation_count() {
    return g_allocations;
}

}  // namespace Quillmark::bench
