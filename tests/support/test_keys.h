#pragma once

// The keys and certificates that the `pki` fixture makes (make_pki.sh).

#include <stdexcept>
#include <string>

#include "platform/cryptoapi.h"
#include "values/blob.h"

namespace Quillmark::test {

inline std::string pki_path(const std::string& file) {
    return std::string(QUILLMARK_TEST_PKI "/") + file;
}

/// The DER of the certificate `name`, such as "tsa_p256".
inline CBlob certificate(const std::string& name) {
    CBlob der;
    der.readFromFile(pki_path(name + ".der").c_str());
    return der;
}

/// The private key `name`, open for the life of the object.
class TestKey {
  public:
    explicit TestKey(const std::string& name) {
        const std::string path = pki_path(name + ".key");
        if (!CryptAcquireContextA(&provider_, path.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT)) {
            throw std::runtime_error("cannot open " + path);
        }
    }
    ~TestKey() { CryptReleaseContext(provider_, 0); }
    TestKey(const TestKey&) = delete;
    TestKey& operator=(const TestKey&) = delete;

    HCRYPTPROV provider() const { return provider_; }

  private:
    HCRYPTPROV provider_ = 0;
};

}  // namespace Quillmark::test
