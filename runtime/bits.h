#pragma once

// Single bits of a BIT STRING (X.690 8.6): bit 0 is the top bit of the first octet.

#include <cstdint>

#include "values/export.h"

extern "C" {

/// Sets a bit of `numbits`. Returns its mask if it was set before, 0 if not, `RT_E_OUTOFBND` for an
/// `index` at or past `numbits`.
QUILLMARK_API int rtSetBit(uint8_t* bits, uint32_t numbits, uint32_t index);

/// Clears a bit; returns as `rtSetBit` does.
QUILLMARK_API int rtClearBit(uint8_t* bits, uint32_t numbits, uint32_t index);

/// The mask of a bit that is set, 0 for one that is not or lies at or past `numbits`.
QUILLMARK_API int rtTestBit(const uint8_t* bits, uint32_t numbits, uint32_t index);

/// Bits from the top down to the lowest one set: 1 for 0x80, 8 for 0x01, 0 for 0.
QUILLMARK_API int rtOctetBitLen(uint8_t octet);

}  // extern "C"
