#pragma once

// The authority's key and certificate as the load generator needs them: what the key alone can do, and the
// certificate to verify with.

#include <chrono>
#include <string>

#include "values/blob.h"

namespace Quillmark::bench {

/// The DER of the first certificate in a PEM file. Throws `std::runtime_error`, as the other does.
CBlob read_certificate(const std::string& file);

/// Signatures a second over SHA-256 that `threads` threads make at once, for `time`, with the private key in
/// a PEM file: what no authority with that key can exceed on this machine.
double raw_signature_rate(const std::string& key_file, unsigned int threads, std::chrono::milliseconds time);

}  // namespace Quillmark::bench
