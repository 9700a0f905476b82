#pragma once

// Message digests by their object identifiers.

#include <optional>

#include "platform/detail/crypto_pointer.h"
#include "platform/detail/der_walker.h"
#include "platform/detail/object_id.h"

namespace Quillmark::platform {

/// What is known of a digest and the signature algorithms that name it.
struct DigestRow {
    KnownObjectId oid;
    const char* name;               // by which libcrypto knows it
    KnownObjectId rsa_signature;    // PKCS #1 v1.5 with this digest
    KnownObjectId ecdsa_signature;  // ECDSA with this digest, none where no identifier exists
    bool is_for_signing = true;
};

/// A digest that libcrypto implements; copies share it.
class Digest {
  public:
    Digest(MdPointer md, const DigestRow* row) : md_(std::move(md)), row_(row) {}

    const EVP_MD* md() const { return md_.get(); }
    std::size_t size() const { return static_cast<std::size_t>(EVP_MD_get_size(md())); }
    /// The row of the table, null for a digest that the table does not have.
    const DigestRow* row() const { return row_; }
    /// The digest of `octets`.
    Bytes of(Octets octets) const;

  private:
    std::shared_ptr<EVP_MD> md_;
    const DigestRow* row_;
};

/// The digest with this identifier (content octets), or nothing when no one implements it.
std::optional<Digest> find_digest(Octets oid);

}  // namespace Quillmark::platform
