#pragma once

// Octets as hexadecimal text in tests.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmark::test {

/// Octets of `text`: pairs of hexadecimal digits, blanks anywhere between pairs. Throws
/// `std::invalid_argument` for anything else, so that a slip in a test vector shows.
std::vector<std::uint8_t> from_hex(std::string_view text);

/// Lower-case digits, a blank between octets.
std::string to_hex(const std::uint8_t* data, std::size_t size);

template <typename Octets>
std::string to_hex(const Octets& octets) {
    return to_hex(octets.data(), octets.size());
}

}  // namespace Quillmark::test
