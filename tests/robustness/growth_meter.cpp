#include "tests/robustness/growth_meter.h"

#include <malloc.h>
#include <pthread.h>
#include <sys/mman.h>
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace Quillmark::test {
namespace {

struct Counters {
    std::size_t allocations = 0;
    std::size_t octets = 0;
    std::int64_t live = 0;  // below 0 when blocks go that were there before
    std::int64_t peak = 0;

    void take(std::size_t size) {
        ++allocations;
        octets += size;
        live += static_cast<std::int64_t>(size);
        peak = std::max(peak, live);
    }
    void give(std::size_t size) { live -= static_cast<std::int64_t>(size); }
};

thread_local Counters* counting = nullptr;

void count_taken(const volatile void* block) {
    if (counting != nullptr && block != nullptr) {
        counting->take(malloc_usable_size(const_cast<void*>(block)));
    }
}

void count_given(const volatile void* block) {
    if (counting != nullptr && block != nullptr) {
        counting->give(malloc_usable_size(const_cast<void*>(block)));
    }
}

}  // namespace
}  // namespace Quillmark::test

#if QUILLMARK_TEST_SANITIZED

// A sanitizer has the allocation functions for itself and tells of their calls.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*malloc_hook)(const volatile void*,
                                                                             std::size_t),
                                                         void (*free_hook)(const volatile void*));

namespace {

[[maybe_unused]] const int hooks_installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void* block, std::size_t) { Quillmark::test::count_taken(block); },
    Quillmark::test::count_given);

}  // namespace

#else

// The allocation functions of this program stand before those of the C library, which are still there under
// these names.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    void* block = __libc_malloc(size);
    Quillmark::test::count_taken(block);
    return block;
}

void* calloc(std::size_t count, std::size_t size) {
    void* block = __libc_calloc(count, size);
    Quillmark::test::count_taken(block);
    return block;
}

void* realloc(void* block, std::size_t size) {
    Quillmark::test::count_given(block);
    void* grown = __libc_realloc(block, size);
    Quillmark::test::count_taken(grown);
    return grown;
}

void free(void* block) {
    Quillmark::test::count_given(block);
    __libc_free(block);
}

}  // extern "C"

#endif

namespace Quillmark::test {
namespace {

// Frames are several times as large under a sanitizer.
constexpr std::size_t kStackSize = kSanitized ? 8 << 20 : 1 << 20;
constexpr std::size_t kGuardSize = 64 << 10;
constexpr std::uint8_t kPaint = 0xA5;

class PaintedStack {
  public:
    PaintedStack() {
        void* room = mmap(nullptr, kGuardSize + kStackSize, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (room == MAP_FAILED || mprotect(room, kGuardSize, PROT_NONE) != 0) {
            throw std::runtime_error("no room for a stack");
        }
        room_ = static_cast<std::uint8_t*>(room);
        std::memset(bottom(), kPaint, kStackSize);
    }
    ~PaintedStack() { munmap(room_, kGuardSize + kStackSize); }
    PaintedStack(const PaintedStack&) = delete;
    PaintedStack& operator=(const PaintedStack&) = delete;

    std::uint8_t* bottom() const { return room_ + kGuardSize; }

    /// Octets between the lowest one that was written to and `from`. What frames left behind is poisoned for
    /// the address sanitizer.
    __attribute__((no_sanitize("address"))) std::size_t used_below(const std::uint8_t* from) const {
        const std::uint8_t* lowest = bottom();
        while (lowest < from && *lowest == kPaint) {
            ++lowest;
        }
        return static_cast<std::size_t>(from - lowest);
    }

  private:
    std::uint8_t* room_;
};

std::chrono::nanoseconds processor_time() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

/// Large blocks always come fresh from the system, so that an octet costs the same in each of them.
void settle_allocator() {
    constexpr int kLargeBlock = 128 << 10;
    mallopt(M_MMAP_THRESHOLD, kLargeBlock);
}

struct Run {
    const std::function<void()>* call;
    Cost cost;
    const std::uint8_t* stack_at_start = nullptr;
};

void* run(void* argument) {
    Run& run = *static_cast<Run*>(argument);
    run.stack_at_start = static_cast<const std::uint8_t*>(__builtin_frame_address(0));
    run.cost = count(*run.call);
    return nullptr;
}

void run_on(const PaintedStack& stack, Run& one) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack.bottom(), kStackSize);
    pthread_t thread;
    const int failure = pthread_create(&thread, &attributes, run, &one);
    pthread_attr_destroy(&attributes);
    if (failure != 0) {
        throw std::runtime_error("no thread");
    }
    pthread_join(thread, nullptr);
}

}  // namespace

Cost count(const std::function<void()>& call) {
    Counters counters;
    Counters* const outer = std::exchange(counting, &counters);
    const std::chrono::nanoseconds start = processor_time();
    call();
    const std::chrono::nanoseconds time = processor_time() - start;
    counting = outer;
    return {.allocations = counters.allocations,
            .octets = counters.octets,
            .peak = static_cast<std::size_t>(counters.peak),
            .kept = static_cast<std::size_t>(std::max<std::int64_t>(counters.live, 0)),
            .time = time};
}

Cost measure(const std::function<void()>& call) {
    settle_allocator();
    const PaintedStack stack;
    Run one{.call = &call, .cost = {}};
    run_on(stack, one);
    one.cost.stack = stack.used_below(one.stack_at_start);
    return one.cost;
}

}  // namespace Quillmark::test
