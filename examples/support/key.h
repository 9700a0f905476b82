#pragma once

// The authority's private key.

#include <optional>
#include <string>

#include "platform/cryptoapi.h"

namespace example {

/// A key container of the platform service, open as long as this object lives. Any number of threads may sign
/// with it.
class Key {
  public:
    /// `container` is a file or any other name that the service opens (`CryptAcquireContextA`).
    explicit Key(const std::string& container, const std::optional<std::string>& password = std::nullopt);
    ~Key();
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    HCRYPTPROV provider() const { return provider_; }

  private:
    HCRYPTPROV provider_ = 0;
};

}  // namespace example
