#pragma once

// Elements of BER (X.690 8.1) and where they stand in their file. For looking at bytes before they are known
// to be anything: the classes of the library read whole messages and say nothing of places.
//
//     for (Elements members(message); !members.at_end();) {
//         const Element member = members.next();
//     }

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "values/blob.h"

namespace inspect {

/// The place where reading stopped, and why.
class Malformed : public std::runtime_error {
  public:
    Malformed(std::size_t offset, const std::string& reason) : std::runtime_error(reason), offset_(offset) {}
    /// Of the element's first octet.
    std::size_t offset() const { return offset_; }

  private:
    std::size_t offset_;
};

/// Octets that someone else owns.
struct Octets {
    const unsigned char* data = nullptr;
    std::size_t size = 0;
    std::size_t offset = 0;  ///< of the first one in the file
};

Octets octets_of(const Quillmark::CBlob& blob);
Quillmark::CBlob to_blob(const Octets& octets);

/// Identifier octets as the structures here use them.
enum Tag : unsigned char {
    kBoolean = 0x01,
    kInteger = 0x02,
    kBitString = 0x03,
    kOctetString = 0x04,
    kObjectId = 0x06,
    kEnumerated = 0x0A,
    kUtf8String = 0x0C,
    kUtcTime = 0x17,
    kGeneralizedTime = 0x18,
    kSequence = 0x30,
    kSet = 0x31,
    kContext0 = 0xA0,
    kContext1 = 0xA1,
    kContext2 = 0xA2
};

struct Element {
    unsigned char tag = 0;  ///< the first identifier octet
    bool indefinite = false;
    Octets whole;    ///< from the identifier to the end-of-contents octets, if it has some
    Octets content;  ///< without either
};

/// "SEQUENCE", "[0]" and so on.
std::string tag_name(unsigned char tag);

/// The elements of a run of octets in their order.
class Elements {
  public:
    explicit Elements(const Octets& octets) : left_(octets) {}
    explicit Elements(const Element& parent) : left_(parent.content) {}

    bool at_end() const { return left_.size == 0; }
    bool next_is(unsigned char tag) const { return left_.size != 0 && left_.data[0] == tag; }
    /// Throws `Malformed` when the octets that are left do not begin with an element.
    Element next();

  private:
    Octets left_;
};

/// The first elements, at most `limit`. Stops without failure at octets that are none; an element whose end
/// is missing is taken as far as it goes. So much can be seen of a damaged message.
std::vector<Element> outline(const Octets& octets, std::size_t limit);

/// Walks through all elements within each other. Throws `Malformed` for the first that does not fit.
void check_nesting(const Octets& octets);

/// The dotted text of an OBJECT IDENTIFIER. Throws `Malformed`.
std::string object_id(const Element& element);

}  // namespace inspect
