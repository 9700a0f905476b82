#pragma once

// How far the time of a stamp may be off (RFC 3161 2.4.2, Accuracy):
//
//     Accuracy ::= SEQUENCE {
//         seconds        INTEGER              OPTIONAL,
//         millis     [0] INTEGER  (1..999)    OPTIONAL,
//         micros     [1] INTEGER  (1..999)    OPTIONAL  }
//
//     Quillmark::PKI::TSP::CAccuracy accuracy{0, 500, 0};
//     token.put_accuracy(&accuracy);

#include <cstdint>

#include "values/export.h"

struct ASN1CTXT;

namespace asn1data {
struct ASN1T_Accuracy;
}

namespace Quillmark::PKI::TSP {

/// The accuracy of a stamp. A field of 0 is not there. Nothing here checks that `millis` and `micros` are at
/// most 999: a value that the wire type cannot hold makes `CToken::sign` fail with `CRYPT_E_ASN1_INTERNAL`.
struct CAccuracy {
    std::uint32_t seconds = 0;
    std::uint32_t millis = 0;
    std::uint32_t micros = 0;
};

static_assert(sizeof(CAccuracy) == 12, "three 32-bit values cross the boundary");

QUILLMARK_API bool operator==(const CAccuracy& left, const CAccuracy& right);
QUILLMARK_API bool operator!=(const CAccuracy& left, const CAccuracy& right);

/// Fills `record` anew. `millis` and `micros` are cut to 16 bits, and each element is present when its uncut
/// value is not 0. Takes no memory of `ctxt`.
QUILLMARK_API void TSP_AccuracyToASN1T_Accuracy(ASN1CTXT* ctxt, asn1data::ASN1T_Accuracy& record,
                                                const CAccuracy& accuracy);

/// Fills `accuracy` anew: an element that is absent from `record` becomes 0.
QUILLMARK_API void ASN1T_AccuracyToTSP_Accuracy(CAccuracy& accuracy, const asn1data::ASN1T_Accuracy& record);

}  // namespace Quillmark::PKI::TSP
