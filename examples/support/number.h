#pragma once

// Positive numbers beyond the machine's.

#include <cstddef>
#include <vector>

#include "asn1/big_integer.h"

namespace example {

/// The number whose octets are given, most significant first.
Quillmark::ASN1::CBigInteger positive_number(const std::vector<unsigned char>& octets);

/// From libcrypto's generator.
std::vector<unsigned char> random_octets(std::size_t count);

/// A number of `octets` octets from libcrypto's generator.
Quillmark::ASN1::CBigInteger random_number(unsigned int octets);

}  // namespace example
