#pragma once

// A throwaway authority, made when the benchmark starts: a CA, a time-stamping certificate under it, and
// the key, in the forms that the two sides want.

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/cryptoapi.h"

namespace Quillmark::bench {

struct PkeyDeleter {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct X509Deleter {
    void operator()(X509* certificate) const { X509_free(certificate); }
};
using PkeyPtr = std::unique_ptr<EVP_PKEY, PkeyDeleter>;
using X509Ptr = std::unique_ptr<X509, X509Deleter>;

enum class KeyKind { P256, Rsa2048 };

/// One authority for the life of the process.
struct Authority {
    PkeyPtr key;
    X509Ptr certificate;
    X509Ptr ca;
    std::vector<std::uint8_t> certificate_der;
    std::vector<std::uint8_t> ca_der;
    HCRYPTPROV provider = 0;
};

/// The authority with a key of `kind`; made on first use. Throws `std::runtime_error` when libcrypto refuses.
const Authority& authority(KeyKind kind);

}  // namespace Quillmark::bench
