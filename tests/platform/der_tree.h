#pragma once

// Taking DER apart in tests, independent of the code under test: definite lengths and tags of one octet only.

#include <stdexcept>
#include <vector>

#include "tests/support/der.h"

namespace Quillmark::test {

/// The elements that `contents` consists of, each with its header.
inline std::vector<Octets> elements_of(const Octets& contents) {
    std::vector<Octets> elements;
    for (std::size_t at = 0; at < contents.size();) {
        std::size_t header = 2;
        std::size_t length = contents.at(at + 1);
        if (length >= 0x80) {
            const std::size_t count = length & 0x7F;
            length = 0;
            for (std::size_t i = 0; i < count; ++i) {
                length = length << 8 | contents.at(at + header++);
            }
        }
        if (length > contents.size() - at - header) {
            throw std::invalid_argument("an element passes its container");
        }
        const auto begin = contents.begin() + static_cast<std::ptrdiff_t>(at);
        at += header + length;
        elements.emplace_back(begin, contents.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return elements;
}

/// What is behind the header of one element.
inline Octets contents_of(const Octets& element) {
    const std::size_t header = element.at(1) < 0x80 ? 2u : 2u + (element.at(1) & 0x7Fu);
    return {element.begin() + static_cast<std::ptrdiff_t>(header), element.end()};
}

inline std::vector<Octets> children(const Octets& element) {
    return elements_of(contents_of(element));
}

/// The fields of the SignedData in a ContentInfo (RFC 5652 5.1).
inline std::vector<Octets> signed_data_fields(const Octets& message) {
    return children(children(children(message).at(1)).at(0));
}

/// The fields of the first SignerInfo.
inline std::vector<Octets> signer_fields(const Octets& message) {
    return children(children(signed_data_fields(message).back()).at(0));
}

}  // namespace Quillmark::test
