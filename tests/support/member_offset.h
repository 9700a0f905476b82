#pragma once

// Where a member lies in its object. `offsetof` knows only types of standard layout.

#include <cstddef>

namespace Quillmark::test {

template <class Object, class Member>
std::size_t offset_of(const Object& object, const Member& member) {
    return static_cast<std::size_t>(reinterpret_cast<const unsigned char*>(&member) -
                                    reinterpret_cast<const unsigned char*>(&object));
}

}  // namespace Quillmark::test
