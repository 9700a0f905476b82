#pragma once

// Values of described types, without records: what an element is, and its DER by the notation alone (X.690).

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/asn1data/type_description.h"
#include "tests/support/der.h"

namespace Quillmark::test {

/// A value of a type. One without a type is an element that is absent.
struct Value {
    const TypeDescription* type = nullptr;
    Octets contents;             // of a primitive; of an open type the whole element
    std::size_t selected = 0;    // alternative of a CHOICE, from 1
    std::vector<Value> parts;    // elements in the order of the type, alternative, or elements of a list
    std::vector<Octets> beyond;  // elements behind an extension marker
    std::vector<Value> carried;  // what an open type was decoded into, or none
    Octets view;                 // the second view that a record has of a string with a carried value

    bool present() const { return type != nullptr; }
    bool operator==(const Value&) const = default;
};

/// Where an element begins in an encoding.
struct Mark {
    std::size_t offset;
    std::string path;
};

struct Encoding {
    Octets octets;
    std::vector<Mark> marks;
};

/// The DER of a value, and where its elements are.
Encoding der_of(const Value& value);

/// The same value with the elements of each SET OF in the order of their encodings (X.690 11.6).
Value in_order(Value value);

/// Which identifiers a type or element begins with, in the form that the tag words of the codecs have: class
/// and form in the top three bits, number below. None for any type.
std::vector<std::uint32_t> tag_words(const TypeDescription& type);
std::vector<std::uint32_t> tag_words(const ElementDescription& element);

/// Contents of INTEGER (X.690 8.3) and OBJECT IDENTIFIER (X.690 8.19).
Octets number_contents(std::int64_t number);
std::int64_t number_of(const Octets& contents);
Octets arcs_contents(std::span<const std::uint32_t> arcs);
std::vector<std::uint32_t> arcs_of(const Octets& contents);

/// What an identifier says about an open element, null when it is not in the set.
const ObjectDescription* object_for(const ElementDescription& open, const Value& identifier);

/// One line for messages.
std::string to_text(const Value& value);

}  // namespace Quillmark::test
