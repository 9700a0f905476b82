#pragma once

// Building DER by hand in tests (X.690), independent of the code under test.

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "tests/support/blob.h"
#include "tests/support/hex.h"

namespace Quillmark::test {

inline Octets join(std::initializer_list<Octets> parts) {
    Octets all;
    for (const Octets& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// One element: a tag of one octet, a definite length in its shortest form, the contents.
inline Octets element(std::uint8_t tag, const Octets& contents) {
    Octets length;
    for (std::size_t rest = contents.size(); rest != 0; rest >>= 8) {
        length.insert(length.begin(), static_cast<std::uint8_t>(rest));
    }
    if (contents.size() < 0x80) {
        length = {static_cast<std::uint8_t>(contents.size())};
    } else {
        length.insert(length.begin(), static_cast<std::uint8_t>(0x80 | length.size()));
    }
    return join({{tag}, length, contents});
}

inline Octets element(std::uint8_t tag, std::initializer_list<Octets> parts) {
    return element(tag, join(parts));
}

/// One element with contents in hexadecimal text.
inline Octets element(std::uint8_t tag, std::string_view hex) {
    return element(tag, from_hex(hex));
}

inline Octets sequence(std::initializer_list<Octets> parts) {
    return element(0x30, join(parts));
}

inline Octets text_element(std::uint8_t tag, std::string_view text) {
    return element(tag, Octets(text.begin(), text.end()));
}

}  // namespace Quillmark::test
