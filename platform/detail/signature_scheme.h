#pragma once

// Which signature goes with a public key, a digest and an AlgorithmIdentifier: the rules of RFC 3279, RFC
// 4055, RFC 5754, RFC 8419, RFC 4490 and RFC 9215 in one place, for making and for checking signatures.

#include "platform/detail/der_fields.h"
#include "platform/detail/digest.h"

namespace Quillmark::platform {

enum class KeyKind { kRsa, kRsaPss, kEc, kEd25519, kGost };

/// The kind of key that a public key identifier names. `CRYPT_E_UNKNOWN_ALGO` for another one.
KeyKind key_kind(Octets public_key_oid);

/// GOST R 34.10: the identifier of a key settles all others.
struct GostRow {
    KnownObjectId key;
    KnownObjectId digest;
    KnownObjectId signature;  // that names the digest too
    std::size_t point_octets;
};

/// The row of a public key identifier, null for keys of other algorithms.
const GostRow* find_gost_row(Octets public_key_oid);

/// What libcrypto is told about a signature.
struct SignatureScheme {
    std::optional<Digest> digest;    // none where the key signs the message itself
    std::optional<Digest> pss_mask;  // digest of the mask generation function, with RSASSA-PSS alone
    int pss_salt_octets = 0;
    std::size_t signature_octets = 0;  // where all signatures have one size, else 0

    /// Whether a context that was prepared for `other` serves.
    bool is_same(const SignatureScheme& other) const;
    /// Prepare a context; false when libcrypto refuses the key or its combination with the digest.
    bool start_signing(EVP_MD_CTX* context, EVP_PKEY* key) const;
    bool start_verifying(EVP_MD_CTX* context, EVP_PKEY* key) const;
};

/// The signature of a key in whose certificate `key_algorithm` stands. `NTE_BAD_ALGID` when digest and key do
/// not go together.
SignatureScheme scheme_for_signing(const AlgorithmIdentifier& key_algorithm, const Digest& digest);

/// The AlgorithmIdentifier to write for that signature, DER. `digest_oid` are content octets.
Bytes signature_algorithm_for(const AlgorithmIdentifier& key_algorithm, const Digest& digest,
                              Octets digest_oid);

/// The signature that `signature_algorithm` names, to be checked with a key of `key_algorithm`.
/// `NTE_BAD_ALGID` when the three do not go together.
SignatureScheme scheme_for_verifying(const AlgorithmIdentifier& key_algorithm,
                                     const AlgorithmIdentifier& signature_algorithm, const Digest& digest);

}  // namespace Quillmark::platform
