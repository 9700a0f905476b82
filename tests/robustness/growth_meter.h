#pragma once

// What a call costs: allocations, memory, stack and processor time. A program that uses this also builds
// `growth_meter.cpp`, which counts every allocation of the process, those of libcrypto and of `malloc` itself
// included.

#include <chrono>
#include <cstddef>
#include <functional>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUILLMARK_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUILLMARK_TEST_SANITIZED 1
#endif
#endif
#ifndef QUILLMARK_TEST_SANITIZED
#define QUILLMARK_TEST_SANITIZED 0
#endif

namespace Quillmark::test {

inline constexpr bool kSanitized = QUILLMARK_TEST_SANITIZED != 0;

struct Cost {
    std::size_t allocations = 0;
    std::size_t octets = 0;           ///< of all allocations together
    std::size_t peak = 0;             ///< most octets that were allocated at one time
    std::size_t kept = 0;             ///< octets that are allocated still
    std::size_t stack = 0;            ///< octets of stack that were written to
    std::chrono::nanoseconds time{};  ///< of the processor
};

/// Runs `call` and counts, all but its stack. Calls may be counted within calls.
Cost count(const std::function<void()>& call);

/// Runs `call` on a thread of its own, whose stack is painted so that its use can be read off. An exception
/// of `call` ends the program.
Cost measure(const std::function<void()>& call);

}  // namespace Quillmark::test
