#include "runtime/bits.h"

#include <bit>

#include "runtime/status.h"

namespace {

uint8_t mask_of(uint32_t index) {
    return static_cast<uint8_t>(0x80 >> (index & 7));
}

}  // namespace

extern "C" {

int rtSetBit(uint8_t* bits, uint32_t numbits, uint32_t index) {
    if (index >= numbits) {
        return RT_E_OUTOFBND;
    }
    uint8_t& octet = bits[index >> 3];
    const int previous = octet & mask_of(index);
    octet |= mask_of(index);
    return previous;
}

int rtClearBit(uint8_t* bits, uint32_t numbits, uint32_t index) {
    if (index >= numbits) {
        return RT_E_OUTOFBND;
    }
    uint8_t& octet = bits[index >> 3];
    const int previous = octet & mask_of(index);
    octet &= static_cast<uint8_t>(~mask_of(index));
    return previous;
}

int rtTestBit(const uint8_t* bits, uint32_t numbits, uint32_t index) {
    if (index >= numbits) {
        return 0;
    }
    return bits[index >> 3] & mask_of(index);
}

int rtOctetBitLen(uint8_t octet) {
    return octet == 0 ? 0 : 8 - std::countr_zero(octet);
}

}  // extern "C"
