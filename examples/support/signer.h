#pragma once

// What goes into a signature beside the stamped data.

#include <string>

#include "asn1/attribute.h"
#include "hash.h"
#include "values/blob.h"

namespace example {

/// The object identifier of the one digest that a key signs with, null for a key that goes with any.
/// `key_algorithm` is that of the certificate.
const char* bound_digest(const std::string& key_algorithm);

/// The signed attribute that binds a signature to the certificate it is made with: signing-certificate-v2
/// (RFC 5816 2.2.1), or with SHA-1 the older signing-certificate (RFC 2634 5.4). `hash` is that of the DER
/// `certificate`.
Quillmark::ASN1::CAttributes signing_certificate(const Quillmark::CBlob& certificate,
                                                 const HashAlgorithm& hash);

}  // namespace example
