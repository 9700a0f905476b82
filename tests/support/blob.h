#pragma once

// Blobs in tests.

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/hex.h"
#include "values/blob.h"

namespace Quillmark {

/// How GoogleTest shows a blob.
inline void PrintTo(const CBlob& blob, std::ostream* out) {
    *out << test::to_hex(blob.pbData(), blob.cbData());
}

namespace test {

using Octets = std::vector<std::uint8_t>;

inline CBlob blob_of(const Octets& octets) {
    return CBlob(octets.data(), octets.size());
}

/// The octets of hexadecimal text.
inline CBlob blob(std::string_view hex) {
    return blob_of(from_hex(hex));
}

inline std::string hex(const CBlob& blob) {
    return to_hex(blob.pbData(), blob.cbData());
}

inline Octets octets(const CBlob& blob) {
    return Octets(blob.pbData(), blob.pbData() + blob.cbData());
}

}  // namespace test
}  // namespace Quillmark
