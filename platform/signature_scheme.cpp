#include "platform/detail/signature_scheme.h"

#include <openssl/rsa.h>

#include <algorithm>
#include <array>

#include "platform/detail/der_writer.h"

namespace Quillmark::platform {

namespace {

constexpr KnownObjectId kRsaEncryption{"1.2.840.113549.1.1.1"};
constexpr KnownObjectId kMgf1{"1.2.840.113549.1.1.8"};
constexpr KnownObjectId kRsaPss{"1.2.840.113549.1.1.10"};
constexpr KnownObjectId kEcPublicKey{"1.2.840.10045.2.1"};
constexpr KnownObjectId kEd25519{"1.3.101.112"};
constexpr KnownObjectId kSha1{"1.3.14.3.2.26"};
constexpr KnownObjectId kSha512{"2.16.840.1.101.3.4.2.3"};
constexpr std::array<std::uint8_t, 2> kNullElement{kNull, 0};

// RFC 9215 4 (GOST R 34.10-2012), RFC 4491 2.3 (GOST R 34.10-2001)
constexpr GostRow kGostRows[] = {
    {.key = "1.2.643.7.1.1.1.1",
     .digest = "1.2.643.7.1.1.2.2",
     .signature = "1.2.643.7.1.1.3.2",
     .point_octets = 64},
    {.key = "1.2.643.7.1.1.1.2",
     .digest = "1.2.643.7.1.1.2.3",
     .signature = "1.2.643.7.1.1.3.3",
     .point_octets = 128},
    {.key = "1.2.643.2.2.19", .digest = "1.2.643.2.2.9", .signature = "1.2.643.2.2.3", .point_octets = 64},
};

[[noreturn]] void refuse() {
    throw Failure{NTE_BAD_ALGID};
}

// RSASSA-PSS-params ::= SEQUENCE {                              -- RFC 4055 3.1
//     hashAlgorithm      [0] HashAlgorithm      DEFAULT sha1Identifier,
//     maskGenAlgorithm   [1] MaskGenAlgorithm   DEFAULT mgf1SHA1Identifier,
//     saltLength         [2] INTEGER            DEFAULT 20,
//     trailerField       [3] INTEGER            DEFAULT 1 }
struct PssParameters {
    Octets hash = kSha1;
    Octets mask_hash = kSha1;
    int salt_octets = 20;
};

constexpr int kMaxSaltOctets = 0xFFFF;  // far above what fits into the longest key that libcrypto takes

int read_small_integer(const Element& tagged) {
    DerWalker fields(tagged);
    const Octets content = fields.next(kInteger).content;
    fields.expect_end();
    if (content.empty() || content[0] >= 0x80) {
        refuse();
    }
    int value = 0;
    for (const std::uint8_t octet : content) {
        value = value << 8 | octet;
        if (value > kMaxSaltOctets) {
            refuse();
        }
    }
    return value;
}

Octets read_mask_hash(const Element& tagged) {
    DerWalker outer(tagged);
    const AlgorithmIdentifier mask = read_algorithm(outer);
    if (!equal(mask.oid, kMgf1)) {
        refuse();
    }
    DerWalker parameters(mask.parameters);
    return read_algorithm(parameters).oid;
}

PssParameters read_pss_fields(DerWalker fields) {
    PssParameters parameters;
    if (const auto hash = fields.next_if(constructed_context(0))) {
        DerWalker inner(*hash);
        parameters.hash = read_algorithm(inner).oid;
    }
    if (const auto mask = fields.next_if(constructed_context(1))) {
        parameters.mask_hash = read_mask_hash(*mask);
    }
    if (const auto salt = fields.next_if(constructed_context(2))) {
        parameters.salt_octets = read_small_integer(*salt);
    }
    if (const auto trailer = fields.next_if(constructed_context(3));
        trailer && read_small_integer(*trailer) != 1) {
        refuse();
    }
    fields.expect_end();
    return parameters;
}

PssParameters read_pss_parameters(Octets encoded) {
    try {
        DerWalker outer(encoded);
        return read_pss_fields(DerWalker(outer.next(kSequence)));
    } catch (const Failure&) {
        refuse();
    }
}

// RFC 4055 3.1: parameters in the certificate bind the hash functions and give the least salt.
void check_pss_key(const AlgorithmIdentifier& key_algorithm, const PssParameters& wanted) {
    if (key_kind(key_algorithm.oid) != KeyKind::kRsaPss || key_algorithm.parameters.empty()) {
        return;
    }
    const PssParameters allowed = read_pss_parameters(key_algorithm.parameters);
    if (!equal(allowed.hash, wanted.hash) || !equal(allowed.mask_hash, wanted.mask_hash) ||
        allowed.salt_octets > wanted.salt_octets) {
        refuse();
    }
}

SignatureScheme plain_scheme(const Digest& digest) {
    return {.digest = digest, .pss_mask = {}};
}

// RFC 8419 2.3, 3.1: the digest of the message is SHA-512, and the key signs the attributes themselves.
SignatureScheme ed25519_scheme(const Digest& digest) {
    if (digest.row() == nullptr || !equal(digest.row()->oid, kSha512)) {
        refuse();
    }
    return {.digest = {}, .pss_mask = {}};
}

SignatureScheme ecdsa_scheme(const Digest& digest) {
    if (digest.row() == nullptr || Octets(digest.row()->ecdsa_signature).empty()) {
        refuse();
    }
    return plain_scheme(digest);
}

// A signature is two numbers of the size of a coordinate, whatever their values.
SignatureScheme gost_scheme(const GostRow& row, const Digest& digest) {
    if (digest.row() == nullptr || !equal(digest.row()->oid, row.digest)) {
        refuse();
    }
    return {.digest = digest, .pss_mask = {}, .signature_octets = row.point_octets};
}

Octets oid_of_row(const Digest& digest) {
    if (digest.row() == nullptr) {
        refuse();
    }
    return digest.row()->oid;
}

SignatureScheme pss_scheme_for_signing(const AlgorithmIdentifier& key_algorithm, const Digest& digest) {
    const Octets hash = oid_of_row(digest);
    const int salt_octets = static_cast<int>(digest.size());
    check_pss_key(key_algorithm, {.hash = hash, .mask_hash = hash, .salt_octets = salt_octets});
    return {.digest = digest, .pss_mask = digest, .pss_salt_octets = salt_octets};
}

SignatureScheme pss_scheme_for_verifying(const AlgorithmIdentifier& key_algorithm, Octets encoded,
                                         const Digest& digest) {
    const PssParameters parameters = read_pss_parameters(encoded);
    check_pss_key(key_algorithm, parameters);
    std::optional<Digest> mask = find_digest(parameters.mask_hash);
    if (!equal(parameters.hash, oid_of_row(digest)) || !mask) {
        refuse();
    }
    return {.digest = digest, .pss_mask = std::move(mask), .pss_salt_octets = parameters.salt_octets};
}

void require(bool condition) {
    if (!condition) {
        refuse();
    }
}

Bytes algorithm_identifier(Octets oid, Octets parameters) {
    DerWriter writer(64 + parameters.size());
    writer.octets(parameters);
    writer.element(kObjectId, oid);
    writer.wrap(kSequence, 0);
    return writer.copy();
}

void write_pss_field(DerWriter& writer, unsigned tag_number, Octets value) {
    writer.element(constructed_context(tag_number), value);
}

// DER leaves the default values out (X.690 11.5), which for SHA-1 are all of them.
Bytes pss_parameters(const Digest& digest, Octets digest_oid) {
    DerWriter writer(128);
    if (!equal(digest_oid, kSha1)) {
        const Bytes hash = algorithm_identifier(digest_oid, kNullElement);
        const std::array<std::uint8_t, 3> salt{kInteger, 1, static_cast<std::uint8_t>(digest.size())};
        write_pss_field(writer, 2, salt);
        write_pss_field(writer, 1, algorithm_identifier(kMgf1, hash));
        write_pss_field(writer, 0, hash);
    }
    writer.wrap(kSequence, 0);
    return writer.copy();
}

bool configure(const SignatureScheme& scheme, EVP_PKEY_CTX* key_context) {
    if (!scheme.pss_mask) {
        return true;
    }
    return EVP_PKEY_CTX_set_rsa_padding(key_context, RSA_PKCS1_PSS_PADDING) > 0 &&
           EVP_PKEY_CTX_set_rsa_mgf1_md(key_context, scheme.pss_mask->md()) > 0 &&
           EVP_PKEY_CTX_set_rsa_pss_saltlen(key_context, scheme.pss_salt_octets) > 0;
}

const EVP_MD* md_or_null(const std::optional<Digest>& digest) {
    return digest ? digest->md() : nullptr;
}

}  // namespace

KeyKind key_kind(Octets public_key_oid) {
    if (equal(public_key_oid, kRsaEncryption)) {
        return KeyKind::kRsa;
    }
    if (equal(public_key_oid, kEcPublicKey)) {
        return KeyKind::kEc;
    }
    if (equal(public_key_oid, kRsaPss)) {
        return KeyKind::kRsaPss;
    }
    if (equal(public_key_oid, kEd25519)) {
        return KeyKind::kEd25519;
    }
    if (find_gost_row(public_key_oid) != nullptr) {
        return KeyKind::kGost;
    }
    throw Failure{CRYPT_E_UNKNOWN_ALGO};
}

const GostRow* find_gost_row(Octets public_key_oid) {
    const auto* const row =
        std::ranges::find_if(kGostRows, [&](const GostRow& each) { return equal(each.key, public_key_oid); });
    return row != std::end(kGostRows) ? row : nullptr;
}

bool SignatureScheme::is_same(const SignatureScheme& other) const {
    return md_or_null(digest) == md_or_null(other.digest) &&
           md_or_null(pss_mask) == md_or_null(other.pss_mask) && pss_salt_octets == other.pss_salt_octets;
}

bool SignatureScheme::start_signing(EVP_MD_CTX* context, EVP_PKEY* key) const {
    EVP_PKEY_CTX* key_context = nullptr;
    return EVP_DigestSignInit(context, &key_context, md_or_null(digest), nullptr, key) == 1 &&
           configure(*this, key_context);
}

bool SignatureScheme::start_verifying(EVP_MD_CTX* context, EVP_PKEY* key) const {
    EVP_PKEY_CTX* key_context = nullptr;
    return EVP_DigestVerifyInit(context, &key_context, md_or_null(digest), nullptr, key) == 1 &&
           configure(*this, key_context);
}

SignatureScheme scheme_for_signing(const AlgorithmIdentifier& key_algorithm, const Digest& digest) {
    switch (key_kind(key_algorithm.oid)) {
        case KeyKind::kRsa:
            return plain_scheme(digest);
        case KeyKind::kRsaPss:
            return pss_scheme_for_signing(key_algorithm, digest);
        case KeyKind::kEc:
            return ecdsa_scheme(digest);
        case KeyKind::kEd25519:
            return ed25519_scheme(digest);
        case KeyKind::kGost:
            return gost_scheme(*find_gost_row(key_algorithm.oid), digest);
    }
    refuse();
}

Bytes signature_algorithm_for(const AlgorithmIdentifier& key_algorithm, const Digest& digest,
                              Octets digest_oid) {
    switch (key_kind(key_algorithm.oid)) {
        case KeyKind::kRsa:
            return algorithm_identifier(kRsaEncryption, kNullElement);
        case KeyKind::kRsaPss:
            return algorithm_identifier(kRsaPss, pss_parameters(digest, digest_oid));
        case KeyKind::kEc:
            return algorithm_identifier(digest.row()->ecdsa_signature, {});
        case KeyKind::kEd25519:
            return algorithm_identifier(kEd25519, {});
        case KeyKind::kGost:
            return algorithm_identifier(key_algorithm.oid, {});
    }
    refuse();
}

SignatureScheme scheme_for_verifying(const AlgorithmIdentifier& key_algorithm,
                                     const AlgorithmIdentifier& signature_algorithm, const Digest& digest) {
    const Octets oid = signature_algorithm.oid;
    const bool is_pss = equal(oid, kRsaPss);
    switch (key_kind(key_algorithm.oid)) {
        case KeyKind::kRsa:
            if (is_pss) {
                return pss_scheme_for_verifying(key_algorithm, signature_algorithm.parameters, digest);
            }
            require(equal(oid, kRsaEncryption) ||
                    (digest.row() != nullptr && equal(oid, digest.row()->rsa_signature)));
            return plain_scheme(digest);
        case KeyKind::kRsaPss:
            require(is_pss);
            return pss_scheme_for_verifying(key_algorithm, signature_algorithm.parameters, digest);
        case KeyKind::kEc:
            require(digest.row() != nullptr && equal(oid, digest.row()->ecdsa_signature));
            return plain_scheme(digest);
        case KeyKind::kEd25519:
            require(equal(oid, kEd25519));
            return ed25519_scheme(digest);
        case KeyKind::kGost: {
            const GostRow& row = *find_gost_row(key_algorithm.oid);
            require(equal(oid, row.key) || equal(oid, row.signature));
            return gost_scheme(row, digest);
        }
    }
    refuse();
}

}  // namespace Quillmark::platform
