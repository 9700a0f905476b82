#include "key.h"

#include "failure.h"

namespace example {

namespace {

// The name of a key may hold a PIN, which is nobody's to read in a log.
std::string name_to_show(const std::string& container) {
    const std::size_t pin = container.find("pin-value=");
    return pin == std::string::npos ? container : container.substr(0, pin) + "...";
}

}  // namespace

Key::Key(const std::string& container, const std::optional<std::string>& password) {
    if (!CryptAcquireContextA(&provider_, container.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT)) {
        throw Failure("opening the key " + name_to_show(container), last_error());
    }
    if (password && !CryptSetProvParam(provider_, PP_SIGNATURE_PIN,
                                       reinterpret_cast<const BYTE*>(password->c_str()), 0)) {
        const HRESULT reason = last_error();
        CryptReleaseContext(provider_, 0);
        throw Failure("giving the key " + name_to_show(container) + " its password", reason);
    }
}

Key::~Key() {
    CryptReleaseContext(provider_, 0);
}

}  // namespace example
