#pragma once

// Files as they come: DER, or text with PEM blocks (RFC 7468) in it.

#include <string>
#include <vector>

#include "values/blob.h"

namespace inspect {

/// All octets of a file, a pipe, or with "-" of standard input. Throws `example::Failure` with the system's
/// reason.
Quillmark::CBlob read_input(const std::string& path);

/// Whether the octets are UTF-8 without control characters other than white space.
bool is_text(const Quillmark::CBlob& octets);

bool is_pem(const Quillmark::CBlob& octets);

struct PemBlock {
    std::string label;
    bool encrypted;  ///< in the way of RFC 1421, which leaves nothing to read
    Quillmark::CBlob contents;
};

/// The blocks in their order. Throws `Malformed` with the place of the block that cannot be read.
std::vector<PemBlock> read_pem(const Quillmark::CBlob& octets);

}  // namespace inspect
