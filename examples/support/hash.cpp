#include "hash.h"

#include <fstream>
#include <memory>

#include <openssl/evp.h>

#include "failure.h"

namespace example {

namespace {

const HashAlgorithm kHashes[] = {
    {"SHA256", "2.16.840.1.101.3.4.2.1", 32},   {"SHA384", "2.16.840.1.101.3.4.2.2", 48},
    {"SHA512", "2.16.840.1.101.3.4.2.3", 64},   {"SHA3-256", "2.16.840.1.101.3.4.2.8", 32},
    {"SHA3-384", "2.16.840.1.101.3.4.2.9", 48}, {"SHA3-512", "2.16.840.1.101.3.4.2.10", 64},
};

class Hash {
  public:
    explicit Hash(const HashAlgorithm& algorithm)
        : algorithm_(algorithm), context_(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
        const std::unique_ptr<EVP_MD, void (*)(EVP_MD*)> method(
            EVP_MD_fetch(nullptr, algorithm.name, nullptr), EVP_MD_free);
        check(method && context_ && EVP_DigestInit_ex2(context_.get(), method.get(), nullptr) == 1);
    }

    void add(const void* data, std::size_t size) { check(EVP_DigestUpdate(context_.get(), data, size) == 1); }

    Quillmark::CBlob finish() {
        Quillmark::CBlob value(algorithm_.octets);
        check(EVP_DigestFinal_ex(context_.get(), value.pbData(), nullptr) == 1);
        return value;
    }

  private:
    void check(bool succeeded) const {
        if (!succeeded) {
            throw Failure(std::string("libcrypto cannot compute ") + algorithm_.name);
        }
    }

    const HashAlgorithm& algorithm_;
    std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context_;
};

}  // namespace

const HashAlgorithm* find_hash(const std::string& name_or_oid) {
    for (const HashAlgorithm& algorithm : kHashes) {
        if (name_or_oid == algorithm.name || name_or_oid == algorithm.oid) {
            return &algorithm;
        }
    }
    return nullptr;
}

std::vector<const HashAlgorithm*> all_hashes() {
    std::vector<const HashAlgorithm*> hashes;
    for (const HashAlgorithm& algorithm : kHashes) {
        hashes.push_back(&algorithm);
    }
    return hashes;
}

const HashAlgorithm& sha1() {
    static const HashAlgorithm kSha1 = {"SHA1", "1.3.14.3.2.26", 20};
    return kSha1;
}

const HashAlgorithm& sha256() {
    return kHashes[0];
}

Quillmark::CBlob hash_of(const HashAlgorithm& algorithm, const Quillmark::CBlob& bytes) {
    Hash hash(algorithm);
    hash.add(bytes.pbData(), bytes.cbData());
    return hash.finish();
}

Quillmark::CBlob hash_of_file(const HashAlgorithm& algorithm, const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw Failure("reading " + path, HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    }
    Hash hash(algorithm);
    std::vector<char> piece(1 << 16);
    do {
        file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        hash.add(piece.data(), static_cast<std::size_t>(file.gcount()));
    } while (file);
    if (!file.eof()) {
        throw Failure("reading " + path, HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT));
    }
    return hash.finish();
}

}  // namespace example
