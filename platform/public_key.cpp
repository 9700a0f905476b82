#include "platform/detail/public_key.h"

#include <openssl/decoder.h>
#include <openssl/x509.h>

#include <mutex>
#include <utility>

#include "platform/detail/der_writer.h"
#include "platform/detail/engine.h"
#include "platform/detail/public_key_cache.h"

namespace Quillmark::platform {

namespace {

[[noreturn]] void refuse() {
    throw Failure{NTE_BAD_PUBLIC_KEY};
}

void require(bool condition) {
    if (!condition) {
        refuse();
    }
}

Octets octets_of(const BYTE* data, DWORD size) {
    require(data != nullptr || size == 0);
    return {data, size};
}

bool is_point_form(std::uint8_t octet) {
    return octet == 2 || octet == 3 || octet == 4;
}

// RFC 3279 2.3.1: the parameters of rsaEncryption are NULL. RFC 5480 2.1.1: those of a certificate's EC key
// name the curve; 2.2: the point is compressed or not, hybrid forms are not used. RFC 9215 4.2, 4.3: the
// parameters of a GOST key name the curve in a SEQUENCE, and the point lies in an OCTET STRING.
void check_form(KeyKind kind, const Bytes& oid, Octets parameters, Octets key) {
    require(!key.empty() && (parameters.empty() || is_one_element(parameters)));
    if (kind == KeyKind::kRsa) {
        require(parameters.empty() || (parameters.size() == 2 && parameters[0] == kNull));
    }
    if (kind == KeyKind::kEc) {
        require(!parameters.empty() && parameters[0] == kObjectId && is_point_form(key[0]));
    }
    if (kind == KeyKind::kGost) {
        require(!parameters.empty() && parameters[0] == kSequence);
        Element point;
        require(read_element(key, CRYPT_E_ASN1_CORRUPT, point) == ERROR_SUCCESS &&
                point.tag == kOctetString && point.whole.size() == key.size() &&
                point.content.size() == find_gost_row(oid)->point_octets);
    }
}

Bytes encode_info(Octets oid, Octets parameters, Octets key) {
    const std::uint8_t no_unused_bits[] = {0};
    DerWriter writer(64 + oid.size() + parameters.size() + key.size());
    writer.octets(key);
    writer.octets(no_unused_bits);
    writer.wrap(kBitString, 0);
    const std::size_t algorithm = writer.size();
    writer.octets(parameters);
    writer.element(kObjectId, oid);
    writer.wrap(kSequence, algorithm);
    writer.wrap(kSequence, 0);
    return writer.copy();
}

// Building a decoder costs several times what it does, so each kind of key has one that is used again.
class KeyDecoder {
  public:
    explicit constexpr KeyDecoder(const char* key_type) noexcept : key_type_(key_type) {}

    KeyPointer decode(Octets info) {
        const std::lock_guard lock(mutex_);
        if (decoder_ == nullptr) {
            decoder_ = OSSL_DECODER_CTX_new_for_pkey(&decoded_, "DER", "SubjectPublicKeyInfo", key_type_,
                                                     EVP_PKEY_PUBLIC_KEY, nullptr, nullptr);
        }
        const std::uint8_t* position = info.data();
        std::size_t left = info.size();
        if (decoder_ == nullptr || OSSL_DECODER_from_data(decoder_, &position, &left) != 1) {
            decoded_ = nullptr;
            return nullptr;
        }
        return KeyPointer(std::exchange(decoded_, nullptr));
    }

  private:
    const char* key_type_;
    std::mutex mutex_;
    OSSL_DECODER_CTX* decoder_ = nullptr;  // kept to the end of the process
    EVP_PKEY* decoded_ = nullptr;
};

constinit KeyDecoder rsa_decoder{"RSA"};
constinit KeyDecoder rsa_pss_decoder{"RSA-PSS"};
constinit KeyDecoder ec_decoder{"EC"};
constinit KeyDecoder ed25519_decoder{"ED25519"};

// Keys of engines have no decoder.
KeyPointer decode_by_engine(Octets info) {
    if (!load_gost_engine()) {
        throw Failure{CRYPT_E_UNKNOWN_ALGO};
    }
    const std::uint8_t* position = info.data();
    return KeyPointer(d2i_PUBKEY(nullptr, &position, static_cast<long>(info.size())));
}

KeyPointer decode(KeyKind kind, Octets info) {
    switch (kind) {
        case KeyKind::kRsa:
            return rsa_decoder.decode(info);
        case KeyKind::kRsaPss:
            return rsa_pss_decoder.decode(info);
        case KeyKind::kEc:
            return ec_decoder.decode(info);
        case KeyKind::kEd25519:
            return ed25519_decoder.decode(info);
        case KeyKind::kGost:
            return decode_by_engine(info);
    }
    refuse();
}

// Never destroyed: static objects of the application may still ask for keys at the end of the process.
PublicKeyCache& cache() {
    static PublicKeyCache& the_cache = *new PublicKeyCache;
    return the_cache;
}

}  // namespace

KeyPointer find_public_key(const CERT_PUBLIC_KEY_INFO& info) {
    const Bytes oid = object_id_from_text(info.Algorithm.pszObjId);
    const KeyKind kind = key_kind(oid);
    const Octets parameters = octets_of(info.Algorithm.Parameters.pbData, info.Algorithm.Parameters.cbData);
    const Octets bits = octets_of(info.PublicKey.pbData, info.PublicKey.cbData);
    require(info.PublicKey.cUnusedBits == 0);
    check_form(kind, oid, parameters, bits);

    const Bytes encoded = encode_info(oid, parameters, bits);
    if (KeyPointer known = cache().find(encoded)) {
        return known;
    }
    KeyPointer key = decode(kind, encoded);
    require(key != nullptr);
    cache().insert(encoded, key.get());
    return key;
}

}  // namespace Quillmark::platform
