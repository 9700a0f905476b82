#pragma once

// A PKCS #11 module as a shared library (PKCS #11 2.40): whether it is one, and which tokens it has. Keys are
// left to the engine.

#include <optional>
#include <string>

namespace Quillmark::platform {

/// The fields by which a URI names a token (RFC 7512 2.3); those that are absent match any.
struct Pkcs11TokenName {
    std::optional<std::string> label;
    std::optional<std::string> serial;
    std::optional<std::string> manufacturer;
    std::optional<std::string> model;
};

class Pkcs11Module {
  public:
    /// Loads the library, which stays loaded to the end of the process.
    explicit Pkcs11Module(const std::string& path);

    /// False when there is no such library or it is no PKCS #11 module.
    bool is_loaded() const { return functions_ != nullptr; }
    /// Whether another part of the process had loaded it before.
    bool was_loaded() const { return was_loaded_; }
    bool is_same(const Pkcs11Module& other) const { return functions_ == other.functions_; }

    /// Whether such a token is there; nothing when the module does not say, as before it is initialised.
    std::optional<bool> has_token(const Pkcs11TokenName& name) const;

    struct Functions;

  private:
    bool was_loaded_ = false;
    const Functions* functions_ = nullptr;
};

}  // namespace Quillmark::platform
