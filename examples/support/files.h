#pragma once

// Messages and certificates from and to files.

#include <string>

#include "values/blob.h"

namespace example {

Quillmark::CBlob read_file(const std::string& path);

/// Reads back what it wrote, as a full disk would go unnoticed otherwise.
void write_file(const std::string& path, const Quillmark::CBlob& contents);

/// The DER of each certificate of a PEM file, in its order, at least one; or the contents of a file in DER.
Quillmark::CBlobList read_certificates(const std::string& path);

}  // namespace example
