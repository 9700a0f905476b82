#pragma once

// The last public keys used, by their encoding.

#include <array>
#include <cstdint>
#include <mutex>

#include "platform/detail/crypto_pointer.h"
#include "platform/detail/der_walker.h"

namespace Quillmark::platform {

class PublicKeyCache {
  public:
    static constexpr std::size_t kCapacity = 64;

    /// The key with this SubjectPublicKeyInfo, or null.
    KeyPointer find(Octets info);
    /// Keeps a reference on the key. The least recently used one goes when there is no room.
    void insert(Octets info, EVP_PKEY* key);

  private:
    struct Entry {
        std::size_t hash = 0;
        std::uint64_t last_use = 0;  // 0 for an entry that is free
        Bytes info;
        KeyPointer key;
    };

    Entry* find_entry(std::size_t hash, Octets info);

    std::mutex mutex_;
    std::uint64_t clock_ = 0;
    std::array<Entry, kCapacity> entries_;
};

}  // namespace Quillmark::platform
