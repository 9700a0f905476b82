#pragma once

// Hashes by libcrypto.

#include <string>
#include <vector>

#include "values/blob.h"

namespace example {

struct HashAlgorithm {
    const char* name;  // as libcrypto knows it
    const char* oid;
    unsigned long octets;
};

/// Null for a hash that these programs do not stamp unasked. SHA-1 and older are not among them.
const HashAlgorithm* find_hash(const std::string& name_or_oid);

/// All that `find_hash` finds.
std::vector<const HashAlgorithm*> all_hashes();

/// For those who ask for it by its name.
const HashAlgorithm& sha1();

const HashAlgorithm& sha256();

Quillmark::CBlob hash_of(const HashAlgorithm& algorithm, const Quillmark::CBlob& bytes);

/// Reads the file in pieces, so that it may be larger than the memory.
Quillmark::CBlob hash_of_file(const HashAlgorithm& algorithm, const std::string& path);

}  // namespace example
