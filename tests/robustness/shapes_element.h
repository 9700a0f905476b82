#pragma once

// An encoding taken apart, so that one of its elements can be given another shape and the lengths around it
// follow.

#include <functional>
#include <vector>

#include "tests/robustness/shapes_octets.h"

namespace Quillmark::test {

struct Element {
    Octets identifier;
    Octets contents;                // of a primitive one
    std::vector<Element> children;  // of a constructed one

    bool constructed() const { return (identifier.front() & 0x20) != 0; }
};

/// The element that `der` begins with. Only for encodings of the tests' own: nothing is checked.
Element element_of(const Octets& der);

Octets encode(const Element& element);

/// Calls `visit` with the element and with all that are in it; the element may be changed there, and is as
/// before when `visit` comes to the next.
void for_each_element(Element& root, const std::function<void(Element&)>& visit);

}  // namespace Quillmark::test
