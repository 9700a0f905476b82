#pragma once

// Private keys out of files and other stores that libcrypto can open.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/detail/private_key.h"

namespace Quillmark::platform {

/// Text that is wiped when it goes.
class SecretText {
  public:
    SecretText() = default;
    explicit SecretText(const char* text) : text_(text) {}
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText();

    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

/// Writes a password into the buffer and gives its length, or -1 when there is none.
using PasswordSource = std::function<int(char* buffer, int size)>;

/// The private keys of a store in their order, at least one. `name` is a file path or a URI of a scheme that
/// a loaded provider knows. `NTE_BAD_KEYSET` when it cannot be opened or read, `NTE_NO_KEY` when no private
/// key is in it, `NTE_SILENT_CONTEXT` when a password is needed and the source has none, `SCARD_W_WRONG_CHV`
/// when it is wrong.
std::vector<std::shared_ptr<const PrivateKey>> load_private_keys(const std::string& name,
                                                                 const PasswordSource& password);

}  // namespace Quillmark::platform
