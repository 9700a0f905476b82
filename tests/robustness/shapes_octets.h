#pragma once

// Octets in great number: what the shapes are made of.

#include <cstdint>

#include "tests/support/der.h"

namespace Quillmark::test {

/// One element, its contents moved in.
Octets wrap(std::uint8_t tag, Octets contents);
/// One element of indefinite length (X.690 8.1.3.6).
Octets wrap_indefinite(std::uint8_t tag, Octets contents);

/// `piece` `count` times.
Octets repeated(const Octets& piece, std::size_t count);
Octets repeated(std::string_view hex, std::size_t count);

/// A primitive element with `count` octets of contents, each 55.
Octets filled(std::uint8_t tag, std::size_t count);

/// `levels` elements around `inner`.
Octets nested(std::uint8_t tag, std::size_t levels, const Octets& inner);
/// Headers of indefinite length alone, one in the other.
Octets nested_headers(std::uint8_t tag, std::size_t levels);

/// An object identifier of `arcs` arcs, each from the third on with `octets` octets (X.690 8.19).
Octets long_object_id(std::size_t arcs, std::size_t octets = 1);

}  // namespace Quillmark::test
