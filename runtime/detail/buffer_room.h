#pragma once

// Whose the octets of a context's buffer are.

#include <cstdint>

namespace Quillmark::detail {

/// What `ASN1BUFFER::dynamic` can be.
enum BufferRoom : uint8_t {
    kFixedRoom = 0,  ///< a caller's, and all there is
    kHeapRoom = 1,   ///< of the heap: it grows, and is freed
    kFirstRoom = 2   ///< lent for a start: it grows onto the heap, and is not freed
};

}  // namespace Quillmark::detail
