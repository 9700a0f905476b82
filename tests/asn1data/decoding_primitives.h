#pragma once

// Headers and primitives for the reader of decoding_rules.h: each type of its own by the rule of its encoding
// (X.690 8.1 to 8.23), and where a decoder of the catalogue is meant to differ from it.

#include <cstddef>
#include <cstdint>
#include <span>

#include "tests/asn1data/described_value.h"

namespace Quillmark::test {

/// Whether the header of a value is still to be read, or was, with the tag that stands in its place.
enum class Tagging { kImplicit, kExplicit };

/// What a reader met on the way that explains why octets were accepted.
struct Encounters {
    bool ended_early = false;  // a structure ended with the octets, though its length says more
    bool open_at_end = false;  // an element of any type was due where the octets end: read as none
    bool any_type = false;     // an element of any type was read, whatever its tag
    bool not_told = false;     // no rule here tells what comes: an indefinite length
};

/// A position in octets. Each function returns a status; a value that was read is in `value.contents`.
class PrimitiveReader {
  public:
    const Encounters& met() const { return met_; }

  protected:
    /// Contents that began at `start` and have `length` octets.
    struct Contents {
        std::size_t start;
        int length;
    };

    static constexpr std::uint8_t kWithoutForm = 0xDF;

    explicit PrimitiveReader(std::span<const std::uint8_t> octets) : octets_(octets), size_(octets.size()) {}

    bool at_end() const { return position_ >= size_; }
    std::size_t left() const { return at_end() ? 0 : size_ - position_; }
    /// Whether contents go on: neither their length nor the octets are used up.
    bool more(const Contents& contents);
    int take_length(int& length);
    int take_header(std::uint32_t& word, int& length);
    int match_either_form(std::uint8_t identifier, int& length);
    /// The tag word at the position, 0 when there is none to read; moves nothing.
    std::uint32_t peek_word();

    int boolean(Tagging tagging, int length, Value& value);
    int number(const TypeDescription& type, Tagging tagging, int length, Value& value);
    int null(Tagging tagging);
    int identifier(Tagging tagging, int length, Value& value);
    int string(const TypeDescription& type, Tagging tagging, int length, Value& value);
    int bits(const TypeDescription& type, Tagging tagging, int length, Value& value);
    /// An element of any type, whole.
    int open(Value& value);

    std::span<const std::uint8_t> octets_;
    std::size_t size_;
    std::size_t position_ = 0;
    bool constructed_ = false;  // the form of the tag that was read last
    Encounters met_;

  private:
    int take_long_number(std::uint32_t& number);
    int match_primitive(std::uint8_t identifier);
    int number_header(const TypeDescription& type, int& length);
    int take_contents(int length, int when_short, Value& value);
    int segments(int length, std::size_t room, Value& value);
    int no_segments(int length, Value& value);
};

}  // namespace Quillmark::test
