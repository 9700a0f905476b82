#pragma once

// OBJECT IDENTIFIER: content octets (X.690 8.19) and the dotted text that the interface uses. Arcs have up
// to 64 bits.

#include <array>
#include <string>

#include "platform/detail/der_walker.h"

namespace Quillmark::platform {

/// Whether `content` is a well-formed identifier with arcs of at most 64 bits.
bool is_object_id(Octets content) noexcept;

/// The next element, an OBJECT IDENTIFIER; gives its content octets. A malformed one is
/// `CRYPT_E_ASN1_CORRUPT`.
Octets next_object_id(DerWalker& walker);

/// Length of the text without a terminator. `content` must be well-formed, here and below.
std::size_t object_id_text_size(Octets content) noexcept;

/// Writes the text and a terminator and gives the place behind the terminator.
char* write_object_id_text(Octets content, char* out) noexcept;

std::string object_id_text(Octets content);

/// Content octets of the identifier. `E_INVALIDARG` for null, `CRYPT_E_OID_FORMAT` for text that is none.
Bytes object_id_from_text(const char* text);

/// An identifier that the service knows, its content octets made of the text by the compiler.
class KnownObjectId {
  public:
    /// None at all: equal to no identifier.
    consteval KnownObjectId() = default;
    consteval KnownObjectId(const char* text) {
        std::uint64_t first = take_arc(text);
        append(first * 40 + take_arc(text));
        while (*text != '\0') {
            append(take_arc(text));
        }
    }

    constexpr operator Octets() const { return {octets_.data(), size_}; }

  private:
    static consteval std::uint64_t take_arc(const char*& text) {
        std::uint64_t arc = 0;
        for (; *text != '.' && *text != '\0'; ++text) {
            arc = arc * 10 + static_cast<std::uint64_t>(*text - '0');
        }
        text += *text == '.' ? 1 : 0;
        return arc;
    }

    consteval void append(std::uint64_t arc) {
        int shift = 0;
        while (arc >> shift >= 0x80) {
            shift += 7;
        }
        for (; shift >= 0; shift -= 7) {
            octets_.at(size_++) = static_cast<std::uint8_t>((shift > 0 ? 0x80 : 0) | (arc >> shift & 0x7F));
        }
    }

    std::array<std::uint8_t, 15> octets_{};
    std::uint8_t size_ = 0;
};

// RFC 5652 sections 4, 5.1, 11.1, 11.2
inline constexpr KnownObjectId kData{"1.2.840.113549.1.7.1"};
inline constexpr KnownObjectId kSignedData{"1.2.840.113549.1.7.2"};
inline constexpr KnownObjectId kContentType{"1.2.840.113549.1.9.3"};
inline constexpr KnownObjectId kMessageDigest{"1.2.840.113549.1.9.4"};

}  // namespace Quillmark::platform
