#pragma once

// Public keys of certificates. Making a libcrypto key from its encoding costs as much as a good part of a
// verification, so the last ones used are kept.

#include "platform/detail/crypto_pointer.h"
#include "platform/detail/signature_scheme.h"

namespace Quillmark::platform {

/// The key of a certificate. Its OID must be one of `key_kind`, else `CRYPT_E_UNKNOWN_ALGO`; a key that is
/// malformed or of an unknown curve is `NTE_BAD_PUBLIC_KEY`.
KeyPointer find_public_key(const CERT_PUBLIC_KEY_INFO& info);

}  // namespace Quillmark::platform
