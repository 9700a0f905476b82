#pragma once

// Steps over headers that the sources of the run-time share; not for generated code.

#include <cstdint>

#include "runtime/context.h"

namespace Quillmark::detail {

/// Reads the identifier octet of a primitive, form included, and the length behind it. Moves only when the
/// octet is `identifier`; `RT_E_IDNOTFOUND` otherwise. Records nothing.
int take_primitive_header(ASN1CTXT* ctxt, uint8_t identifier, int& length);

/// Octets of one whole element at `data`, at most `available`; or a negative status. Needs no heap.
int element_size(const uint8_t* data, uint32_t available);

}  // namespace Quillmark::detail
