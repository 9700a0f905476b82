#pragma once

// The octets of a fuzzer's input, taken from the front piece by piece. What is asked for beyond the end is 0
// or empty.

#include <algorithm>
#include <cstdint>
#include <string>

#include "fuzz/law.h"

namespace Quillmark::fuzz {

class Input {
  public:
    explicit Input(Octets octets) : rest_(octets) {}

    std::uint8_t octet() {
        const Octets taken = take(1);
        return taken.empty() ? 0 : taken[0];
    }
    bool flag() { return (octet() & 1) != 0; }

    /// Most significant octet first.
    std::uint32_t number(std::size_t octet_count) {
        std::uint32_t value = 0;
        for (const std::uint8_t octet : take(octet_count)) {
            value = value << 8 | octet;
        }
        return value;
    }
    std::uint64_t number64() {
        const std::uint64_t high = number(4);
        return high << 32 | number(4);
    }

    /// The number of one of `count` choices, from two octets whatever the count, so that a choice that is
    /// added leaves those before it alone.
    std::size_t choice(std::size_t count) { return number(2) % count; }

    /// As many octets as an octet in front of them tells.
    Octets octets() { return take(octet()); }
    CBlob blob() { return blob_of(octets()); }
    /// The same as text, which ends at the first 0.
    std::string text() { return text_of(octets()); }

    Octets rest() { return take(rest_.size()); }
    std::string rest_as_text() { return text_of(rest()); }

  private:
    Octets take(std::size_t count) {
        const Octets taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    static std::string text_of(Octets octets) {
        return std::string(octets.begin(), std::find(octets.begin(), octets.end(), 0));
    }

    Octets rest_;
};

}  // namespace Quillmark::fuzz
