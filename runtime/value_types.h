#pragma once

// What generated records hold for the ASN.1 types that are not plain numbers. All pointers lie on a
// context's `typeHeap` (or, with `RT_F_FASTCOPY`, in the message itself).

#include <cstdint>

#include "runtime/object_id.h"

/// OCTET STRING without a size: `numocts` octets at `data`.
struct ASN1TDynOctStr {
    uint32_t numocts;
    const uint8_t* data;
};

/// BIT STRING without a size: bits counted from the top bit of the first octet.
struct ASN1TDynBitStr {
    uint32_t numbits;
    const uint8_t* data;
};

/// BMPString: characters in host order.
struct ASN1_16BITCHARSTRING {
    uint32_t nchars;
    uint16_t* data;
};

/// UniversalString: characters in host order.
struct ASN1_32BITCHARSTRING {
    uint32_t nchars;
    uint32_t* data;
};

/// An open type: one complete encoded element, header included.
struct ASN1OpenType {
    uint32_t numocts;
    const uint8_t* data;
};

/// An open type that starts empty.
struct ASN1TOpenType : ASN1OpenType {
    ASN1TOpenType() : ASN1OpenType{} {}
};

/// An open type whose type follows from an identifier beside it; `decoded` is the carried record, null
/// when the identifier is not known.
struct Asn1Object : ASN1OpenType {
    void* decoded;
};

/// An `Asn1Object` that starts empty.
struct Asn1TObject : Asn1Object {
    Asn1TObject() : Asn1Object{} {}
};
