#pragma once

// BIT STRING with named bits held in place in a record, against a word whose bit `n` (mask `1 << n`) is the
// named bit `n`.

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "runtime/bits.h"

namespace Quillmark::detail {

/// Writes the bits below `bit_count` and no others.
template <class R>
void put_named_bits(R& record, std::uint32_t word, unsigned int bit_count) {
    std::fill(std::begin(record.data), std::end(record.data), std::uint8_t{0});
    record.numbits = 0;
    for (unsigned int bit = 0; bit < bit_count; ++bit) {
        if ((word >> bit & 1) != 0) {
            rtSetBit(record.data, bit_count, bit);
            // Trailing zero bits of named bits are left out in DER (X.690 11.2.2).
            record.numbits = bit + 1;
        }
    }
}

/// The bits of a record that has room for no more than 32.
template <class R>
std::uint32_t named_bits(const R& record) {
    static_assert(sizeof(record.data) <= sizeof(std::uint32_t));
    const auto room = static_cast<std::uint32_t>(sizeof(record.data) * 8);
    const std::uint32_t bit_count = std::min(record.numbits, room);
    std::uint32_t word = 0;
    for (std::uint32_t bit = 0; bit < bit_count; ++bit) {
        if (rtTestBit(record.data, bit_count, bit) != 0) {
            word |= std::uint32_t{1} << bit;
        }
    }
    return word;
}

}  // namespace Quillmark::detail
