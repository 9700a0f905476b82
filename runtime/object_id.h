#pragma once

// OBJECT IDENTIFIER values (X.690 8.19) and their dotted text.
//
//     ASN1OBJID oid;
//     if (rtStrToOid("1.2.840.113549", &oid) == 1) { ... }

#include <cstddef>
#include <cstdint>

#include "values/export.h"

/// Most arcs that an identifier can have here.
inline constexpr uint32_t ASN1_K_MAXSUBIDS = 128;

/// An identifier: the number of its arcs and the arcs.
struct ASN1OBJID {
    uint32_t numids;
    uint32_t subid[ASN1_K_MAXSUBIDS];
};

/// The same with 64-bit arcs.
struct ASN1OID64 {
    uint32_t numids;
    int64_t subid[ASN1_K_MAXSUBIDS];
};

/// An identifier that copies no more arcs than it has, and no more than there is room for. The default
/// constructor leaves no arcs.
struct QUILLMARK_API ASN1TObjId : ASN1OBJID {
    ASN1TObjId() { numids = 0; }
    ASN1TObjId(unsigned char count, const unsigned int* arcs);
    ASN1TObjId(const ASN1OBJID& other);
    ASN1TObjId(const ASN1TObjId& other);
    ASN1TObjId& operator=(const ASN1OBJID& other);
    ASN1TObjId& operator=(const ASN1TObjId& other);
};

/// As `ASN1TObjId`, with 64-bit arcs.
struct QUILLMARK_API ASN1TObjId64 : ASN1OID64 {
    ASN1TObjId64() { numids = 0; }
    ASN1TObjId64(unsigned char count, const long long* arcs);
    ASN1TObjId64(const ASN1OID64& other);
    ASN1TObjId64(const ASN1TObjId64& other);
    ASN1TObjId64& operator=(const ASN1OID64& other);
    ASN1TObjId64& operator=(const ASN1TObjId64& other);
};

/// The same arcs in the same number.
QUILLMARK_API bool operator==(const ASN1OBJID& left, const ASN1OBJID& right);

extern "C" {

/// Reads dotted text. Intended: arcs are read as `strtoul` does, so that blanks and a sign may stand before
/// the digits, and whether the first arcs are possible is left to the encoder. Returns 1 when the whole text
/// was read, else 0 with the arcs before the wrong one in `oid`: for an arc without digits, for any other
/// character behind them, and for more than 128 arcs.
QUILLMARK_API int rtStrToOid(const char* text, ASN1OBJID* oid);

/// Writes dotted text of at most `room` characters and a terminator, for which the caller has one octet more.
/// Returns 1, or 0 when an arc does not fit; the text then ends before it.
QUILLMARK_API int rtOidToStr(const ASN1OBJID* oid, char* text, size_t room);

/// Characters of the dotted text.
QUILLMARK_API int rtOidToStrLen(const ASN1OBJID* oid);

/// Returns 1 for equal identifiers and leaves `*result`; else 0 with `*result` 0. `name` is not used.
QUILLMARK_API int rtCmpOID(const char* name, const ASN1OBJID* a, const ASN1OBJID* b, int* result);
QUILLMARK_API int rtCmpOIDValue(const char* name, const ASN1OBJID* a, const ASN1OBJID* b, int* result);

/// Copies the count and as many arcs, at most 128.
QUILLMARK_API void rtSetOID(ASN1OBJID* dst, const ASN1OBJID* src);

}  // extern "C"
