#pragma once

// INTEGER values of any size: conversion between number text and octets (X.690 8.3).
//
//     ASN1BigInt number;
//     rtBigIntInit(&number);
//     if (rtBigIntSetStr(ctxt, &number, "-129", 0) == RT_OK) {
//         uint8_t octets[2];
//         rtBigIntGetData(ctxt, &number, octets, sizeof octets);  // ff 7f
//     }
//     rtBigIntFree(ctxt, &number);

#include <cstdint>

#include "runtime/context.h"

/// Sign and magnitude. Zero has no magnitude octets.
struct ASN1BigInt {
    int32_t numocts;    ///< magnitude octets in use
    uint8_t* mag;       ///< magnitude, highest octet first, without leading zero octets
    int32_t sign;       ///< -1, 0 or 1
    int32_t allocated;  ///< room at `mag`
    uint8_t dynamic;    ///< `mag` came from a context's `typeHeap`
};

extern "C" {

/// Makes the record zero, without room.
QUILLMARK_API void rtBigIntInit(ASN1BigInt* number);

/// Frees a magnitude that lies on the heap and makes the record zero; a caller's own array is left alone.
QUILLMARK_API void rtBigIntFree(ASN1CTXT* ctxt, ASN1BigInt* number);

/// Reads number text in base 2, 8, 10 or 16. A `radix` of 0 means base 10 unless the text begins with
/// "0b", "0o" or "0x". Leading blanks are skipped; only bases 8 and 10 take a "-". Magnitudes that do not
/// fit in `allocated` octets move to the heap of `ctxt`.
/// Returns 0, `RT_E_INVPARAM` for another radix, `RT_E_BADVALUE` for no digits or a wrong one,
/// `RT_E_NOMEM`. After a failure the record is zero.
QUILLMARK_API int rtBigIntSetStr(ASN1CTXT* ctxt, ASN1BigInt* number, const char* text, int radix);

/// Octets of the shortest two's complement form (X.690 8.3.2), at least 1.
QUILLMARK_API int rtBigIntGetDataLen(const ASN1BigInt* number);

/// Writes that form to `octets`. Returns the octets written, or `RT_E_STROVFL` when `room` is less.
QUILLMARK_API int rtBigIntGetData(ASN1CTXT* ctxt, const ASN1BigInt* number, uint8_t* octets, int room);

/// (`numocts` * 8 + 1) bits over the bits of a digit, rounded down; a `radix` of 0 is base 10. In base 10 a
/// value near the top of its octets has one digit more. Returns `RT_E_INVPARAM` for another radix.
QUILLMARK_API int rtBigIntDigitsNum(const ASN1BigInt* number, int radix);

/// Writes number text without a prefix, in lower case, terminated; a `radix` of 0 is base 10.
/// Returns 0, `RT_E_INVPARAM` for another radix, `RT_E_STROVFL` when text and terminator need more than
/// `room`, `RT_E_NOMEM`.
QUILLMARK_API int rtBigIntToString(ASN1CTXT* ctxt, const ASN1BigInt* number, int radix, char* text, int room);

/// Compares two number texts (radix 0): below, equal to or above 0. Text that is no number is compared
/// octet by octet, and so are numbers of more than 256 octets when memory fails.
QUILLMARK_API int rtBigIntStrCompare(ASN1CTXT* ctxt, const char* a, const char* b);

}  // extern "C"
