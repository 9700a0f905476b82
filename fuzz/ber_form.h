#pragma once

// The outer form of BER (X.690 8.1), apart from the library's own reading of it.

#include "fuzz/law.h"

namespace Quillmark::fuzz {

/// Whether the octets begin with one element whose length is definite and that is filled by such elements if
/// it is constructed, or looks as if it held elements; what stands behind it is not looked at. The
/// arcs of an OBJECT IDENTIFIER end, and are below 2^32 - 1. The codec reads more than that: an element may
/// reach beyond the one that holds it, and a value that is kept unread may end in its middle. What was read
/// of such input need not be readable when it is written.
bool is_whole(Octets octets);

}  // namespace Quillmark::fuzz
