#include "bench/authority_load/key.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Quillmark::bench {

namespace {

using Clock = std::chrono::steady_clock;
using Bio = std::unique_ptr<BIO, decltype(&BIO_free)>;
using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Digest = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

Bio open_file(const std::string& file) {
    Bio bio(BIO_new_file(file.c_str(), "r"), BIO_free);
    if (bio == nullptr) {
        throw std::runtime_error("cannot read " + file);
    }
    return bio;
}

// What is signed in a token: some signed attributes (RFC 5652 5.4).
constexpr unsigned char kMessage[160] = {};

bool sign_once(EVP_PKEY* key, std::vector<unsigned char>& signature) {
    const Digest digest(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    std::size_t size = signature.size();
    return digest != nullptr && EVP_DigestSignInit(digest.get(), nullptr, EVP_sha256(), nullptr, key) == 1 &&
           EVP_DigestSign(digest.get(), signature.data(), &size, kMessage, sizeof kMessage) == 1;
}

}  // namespace

CBlob read_certificate(const std::string& file) {
    const Bio bio = open_file(file);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr), X509_free);
    unsigned char* der = nullptr;
    const int size = certificate == nullptr ? -1 : i2d_X509(certificate.get(), &der);
    if (size <= 0) {
        throw std::runtime_error("no certificate in " + file);
    }
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(
        der, [](unsigned char* octets) { OPENSSL_free(octets); });
    return CBlob(der, static_cast<unsigned long>(size));
}

double raw_signature_rate(const std::string& key_file, unsigned int threads, std::chrono::milliseconds time) {
    const Bio bio = open_file(key_file);
    const Key key(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
    if (key == nullptr) {
        throw std::runtime_error("no private key in " + key_file);
    }
    std::atomic<std::uint64_t> made = 0;
    std::atomic<bool> failed = false;
    const Clock::time_point begun = Clock::now();
    const auto sign_often = [&] {
        std::vector<unsigned char> signature(static_cast<std::size_t>(EVP_PKEY_get_size(key.get())));
        std::uint64_t count = 0;
        while (!failed && Clock::now() - begun < time) {
            failed = failed || !sign_once(key.get(), signature);
            ++count;
        }
        made += count;
    };
    std::vector<std::jthread> signers;
    for (unsigned int number = 0; number < threads; ++number) {
        signers.emplace_back(sign_often);
    }
    signers.clear();  // joins them
    if (failed) {
        throw std::runtime_error("the key does not sign");
    }
    return static_cast<double>(made) / std::chrono::duration<double>(Clock::now() - begun).count();
}

}  // namespace Quillmark::bench
