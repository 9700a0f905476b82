#pragma once

// Rows that say which status a decoder gives for some octets.

#include <ostream>

#include "tests/asn1data/record_codec.h"
#include "tests/support/der.h"
#include "tests/support/hex.h"

namespace Quillmark::test {

struct StatusCase {
    const char* name;
    int (*decode)(const Octets& ber);
    Octets ber;
    int status;
};

inline void PrintTo(const StatusCase& row, std::ostream* out) {
    *out << row.name << ": " << to_hex(row.ber);
}

template <typename Record, typename Control>
int status_of(const Octets& ber) {
    return Decoded<Record, Control>(ber).status();
}

/// The decoder of a type, for a row.
#define QUILLMARK_DECODE(name) status_of<ASN1T_##name, ASN1C_##name>

}  // namespace Quillmark::test
