#pragma once

// GeneralizedTime and UTCTime texts (X.680 46 and 47) and their parts. Malformed text or parts give
// `RT_E_INVFORMAT`, recorded in the context.

#include <cstddef>
#include <cstdint>

#include "runtime/context.h"

/// The parts of a time text. What the text leaves out is 0.
struct ASN1TimeRecord {
    int16_t year;
    int16_t mon;  ///< 1 to 12
    int16_t day;
    int16_t hour;
    int16_t min;
    int16_t sec;
    int16_t diffHour;  ///< offset from UTC; hours and minutes both carry its sign
    int16_t diffMin;
    char fraction[21];  ///< digits behind the point without their leading zeros
    uint8_t utc;        ///< the text ended in "Z"
};

extern "C" {

/// Days of January to December, outside leap years.
extern QUILLMARK_API const int8_t OS_daysInMonth[12];

/// Reads "YYYYMMDDhh[mm[ss[.f...]]]" with "Z", an offset "+hh[mm]" or nothing behind it. Intended: leading
/// zeros of the fraction get lost, no more than 20 digits of it are read, and any other character in the
/// place of the "Z" ends a local time. After a failure `record` is unchanged.
QUILLMARK_API int rtParseGeneralizedTime(ASN1CTXT* ctxt, const char* text, ASN1TimeRecord* record);

/// Writes the text with all its parts to seconds. With a `size` of 0 it goes to a new block on the
/// `typeHeap`, whose address `*text` receives; else to the `size` octets at `*text`, terminated.
/// Returns 0, `RT_E_INVFORMAT`, `RT_E_STROVFL` when `size` is not above the length, `RT_E_NOMEM`.
QUILLMARK_API int rtMakeGeneralizedTime(ASN1CTXT* ctxt, const ASN1TimeRecord* record, char** text,
                                        size_t size);

/// Reads "YYMMDDhhmm[ss]" with "Z" or an offset "+hhmm". Years below 50 are those of 2000. After a
/// failure `record` is unchanged.
QUILLMARK_API int rtParseUTCTime(ASN1CTXT* ctxt, const char* text, ASN1TimeRecord* record);

}  // extern "C"
