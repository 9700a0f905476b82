#pragma once

// Key containers in tests: opened by their names, and used to sign.

#include <string>

#include "tests/platform/service.h"

namespace Quillmark::test {

/// What is signed where it does not matter.
inline const Octets kContent = from_hex("30 03 02 01 05");

/// A container, if it could be opened.
struct Acquired {
    HCRYPTPROV handle = 0;
    BOOL result;

    explicit Acquired(const std::string& name, const char* module = nullptr, DWORD flags = CRYPT_SILENT) {
        result = CryptAcquireContextA(&handle, name.c_str(), module, PROV_RSA_AES, flags);
    }
    ~Acquired() {
        if (handle != 0) {
            CryptReleaseContext(handle, 0);
        }
    }
    Acquired(const Acquired&) = delete;
    Acquired& operator=(const Acquired&) = delete;

    BOOL set_pin(const char* pin) const {
        return CryptSetProvParam(handle, PP_SIGNATURE_PIN, reinterpret_cast<const BYTE*>(pin), 0);
    }
};

/// Opens a message to be signed with this provider and the certificate of `signer`.
HCRYPTMSG open_with(HCRYPTPROV provider, const std::string& signer = "tsa_p256",
                    DWORD key_spec = AT_SIGNATURE, const std::string& digest = kSha256Oid);

/// Signs with this provider and verifies with the certificate of `signer`.
testing::AssertionResult signs(HCRYPTPROV provider, const std::string& signer = "tsa_p256",
                               DWORD key_spec = AT_SIGNATURE, const std::string& digest = kSha256Oid);

/// The argument of `give_password`, and what that was called with.
struct Password {
    const char* text;  // null for none
    int calls = 0;
    std::string container = {};
};

/// A callback for `KeyContainerOpen` that gives the text of a `Password`.
int give_password(char* buffer, int size, LPCSTR container, void* argument);

}  // namespace Quillmark::test
