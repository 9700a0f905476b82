#pragma once

// The small structures that certificates, messages and keys have in common (RFC 5280 4.1).

#include "platform/detail/der_walker.h"

namespace Quillmark::platform {

/// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY OPTIONAL }
struct AlgorithmIdentifier {
    Octets oid;         // content octets
    Octets parameters;  // the whole element, empty when absent
};

/// The octets of a BIT STRING behind the octet that counts the unused bits of the last one.
struct BitString {
    Octets octets;
    std::uint8_t unused_bits = 0;
};

/// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
struct PublicKeyInfo {
    AlgorithmIdentifier algorithm;
    BitString key;
};

AlgorithmIdentifier read_algorithm(DerWalker& walker);
BitString read_bit_string(const Element& element);
PublicKeyInfo read_public_key_info(DerWalker& walker);

}  // namespace Quillmark::platform
