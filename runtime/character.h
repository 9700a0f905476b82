#pragma once

// Characters: UTF-8 in the wide sense of up to six octets and 31 bits, 32-bit wide characters, and the
// class table of the C locale. Malformed text is reported by status, never recorded in the context.

#include <cstddef>
#include <cstdint>

#include "runtime/context.h"
#include "runtime/value_types.h"

/// Bit of `rtCtypeTable` that marks the digits 0 to 9.
inline constexpr uint8_t RT_CT_DIGIT = 0x04;

/// Which characters a conversion lets through: those in the range and, where there is a list, in it.
struct ASN1CharFilter {
    uint32_t nchars;        ///< characters of the list, 0 when there is none
    const uint32_t* chars;  ///< the list
    uint32_t lowest;
    uint32_t highest;
};

extern "C" {

/// Character classes of the C locale by octet: 0x01 upper case, 0x02 lower case, 0x04 digit, 0x08 white
/// space, 0x10 punctuation, 0x20 control, 0x40 hexadecimal letter, 0x80 blank.
extern QUILLMARK_API const uint8_t rtCtypeTable[256];

/// Counts characters by their lead octets; the octets behind a lead are stepped over unread, but never
/// past the terminator. Returns `RT_E_INVUTF8` for an octet that leads nothing.
QUILLMARK_API int rtUTF8Len(const char* text);

/// Octets up to the terminator, 0 for null.
QUILLMARK_API size_t rtUTF8LenBytes(const char* text);

/// Octets that `value` takes, 1 to 6.
QUILLMARK_API int rtUTF8CharSize(uint32_t value);

/// Writes one character, without a terminator. Returns its octets, or -1 when they exceed `room`.
QUILLMARK_API int rtUTF8EncodeChar(uint32_t value, char* out, size_t room);

/// Reads one character. `*size` holds the octets that may be read and receives those that were. A
/// character that is cut off by the end of the room yields the bits that are there.
/// Returns the value, or `RT_E_INVUTF8`.
QUILLMARK_API int rtUTF8DecodeChar(ASN1CTXT* ctxt, const char* in, size_t* size);

/// Widens the text into at most `room` characters, without a terminator; with a null `out` it only counts.
/// Returns the characters, -1 when they exceed `room`, or `RT_E_INVUTF8`. A last character that is cut
/// off counts with the bits that are there.
QUILLMARK_API int rtUTF8ToWCS(ASN1CTXT* ctxt, const char* text, wchar_t* out, size_t room);

/// Narrows `count` wide characters to UTF-8, without adding a terminator. A character of several octets
/// must end before the last octet of `room`, an ASCII one may be that last octet, so that room for the
/// terminator is needed whether it is among the `count` or not.
/// Returns the octets, -1 when they do not fit, or `RT_E_INVUTF8` for a character with bit 31 set.
QUILLMARK_API int rtWCSToUTF8(ASN1CTXT* ctxt, const wchar_t* wide, size_t count, char* out, size_t room);

/// A copy on the `typeHeap` of `ctxt`; for null an empty text. Null when memory fails.
QUILLMARK_API char* rtUTF8Strdup(ASN1CTXT* ctxt, const char* text);

/// Widens each octet of `text` to one character on the `typeHeap`; what `filter` (may be null) does not
/// let through is dropped. Returns `ucs`, null when memory fails.
QUILLMARK_API ASN1_32BITCHARSTRING* rtCToUCSString(ASN1CTXT* ctxt, const char* text,
                                                   ASN1_32BITCHARSTRING* ucs, const ASN1CharFilter* filter);

/// The same for terminated wide text; of each character the low 16 bits count.
QUILLMARK_API ASN1_32BITCHARSTRING* rtWCSToUCSString(ASN1CTXT* ctxt, const wchar_t* wide,
                                                     ASN1_32BITCHARSTRING* ucs, const ASN1CharFilter* filter);

/// Copies the characters below 65536 to `wide` and skips the others. Adds a terminator only when fewer
/// than `room` characters were stored. Returns `wide`.
QUILLMARK_API wchar_t* rtUCSToWCSString(const ASN1_32BITCHARSTRING* ucs, wchar_t* wide, size_t room);

}  // extern "C"
