#pragma once

// The law of growth: whatever the octets are, a call takes no more than in proportion to their number,
// nearly, and its memory and stack have bounds. It is tried over four sizes, each twice the one before; the
// measured table is printed and stands in docs/robustness.md.

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

#include "tests/robustness/growth_meter.h"
#include "tests/support/der.h"
#include "values/blob.h"

namespace Quillmark::test {

/// What a way into the library answers: 0 when the input is taken, else the result code or status that
/// refuses it.
using Outcome = std::int32_t;
inline constexpr Outcome kTaken = 0;

using Way = Outcome (*)(const CBlob& input);

/// Octets of a shape, and the way that they go.
struct Shape {
    const char* name;
    Way way;
    Octets (*make)(std::size_t count);
    std::size_t largest;  ///< the largest of the four counts, to be divided by `kSizePart`
    Outcome outcome;
    double memory;  ///< octets of memory that an octet of input may take at most
};

inline void PrintTo(const Shape& shape, std::ostream* out) {
    *out << shape.name;
}

/// Real messages nest about ten levels; this is promised for the deepest that is read.
inline constexpr std::size_t kStackBound = kSanitized ? 4 << 20 : 256 << 10;

/// What the sizes are divided by where calls are slower by about as much: under a sanitizer, and in a build
/// without optimisation.
#ifdef __OPTIMIZE__
inline constexpr std::size_t kSizePart = kSanitized ? 10 : 1;
#else
inline constexpr std::size_t kSizePart = 10;
#endif

/// Runs the four sizes and expects the law of each.
void expect_growth(const Shape& shape);

/// One input: expects its outcome, and stack and memory in their bounds. Memory of a few KiB is always free.
void expect_bounds(const std::string& name, Way way, const Octets& input, Outcome outcome, double memory);

}  // namespace Quillmark::test
