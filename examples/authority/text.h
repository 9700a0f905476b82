#pragma once

// Octets as text.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace authority {

/// Lower-case hexadecimal digits, two an octet.
std::string to_hex(const unsigned char* octets, std::size_t size);

/// Null for text that `to_hex` does not write.
std::optional<std::vector<unsigned char>> from_hex(const std::string& text);

/// Base64 (RFC 4648 4) in lines of 64 characters.
std::string to_base64(const unsigned char* octets, std::size_t size);

/// White space is skipped. Null for text with other characters, with padding in another place than the end,
/// or of a length that no octets have.
std::optional<std::vector<unsigned char>> from_base64(std::string text);

}  // namespace authority
