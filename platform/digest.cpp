#include "platform/detail/digest.h"

#include <openssl/objects.h>

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/detail/engine.h"

namespace Quillmark::platform {

namespace {

// Digests of FIPS 180-4 and FIPS 202; signature identifiers of RFC 8017, RFC 5758, RFC 3279 and the register
// of the hash functions' standards (2.16.840.1.101.3.4.3).
constexpr DigestRow kDigests[] = {
    {.oid = "2.16.840.1.101.3.4.2.1",
     .name = "SHA256",
     .rsa_signature = "1.2.840.113549.1.1.11",
     .ecdsa_signature = "1.2.840.10045.4.3.2"},
    {.oid = "2.16.840.1.101.3.4.2.2",
     .name = "SHA384",
     .rsa_signature = "1.2.840.113549.1.1.12",
     .ecdsa_signature = "1.2.840.10045.4.3.3"},
    {.oid = "2.16.840.1.101.3.4.2.3",
     .name = "SHA512",
     .rsa_signature = "1.2.840.113549.1.1.13",
     .ecdsa_signature = "1.2.840.10045.4.3.4"},
    {.oid = "1.3.14.3.2.26",
     .name = "SHA1",
     .rsa_signature = "1.2.840.113549.1.1.5",
     .ecdsa_signature = "1.2.840.10045.4.1"},
    {.oid = "2.16.840.1.101.3.4.2.4",
     .name = "SHA224",
     .rsa_signature = "1.2.840.113549.1.1.14",
     .ecdsa_signature = "1.2.840.10045.4.3.1"},
    {.oid = "2.16.840.1.101.3.4.2.5",
     .name = "SHA512-224",
     .rsa_signature = "1.2.840.113549.1.1.15",
     .ecdsa_signature = {}},
    {.oid = "2.16.840.1.101.3.4.2.6",
     .name = "SHA512-256",
     .rsa_signature = "1.2.840.113549.1.1.16",
     .ecdsa_signature = {}},
    {.oid = "2.16.840.1.101.3.4.2.7",
     .name = "SHA3-224",
     .rsa_signature = "2.16.840.1.101.3.4.3.13",
     .ecdsa_signature = "2.16.840.1.101.3.4.3.9"},
    {.oid = "2.16.840.1.101.3.4.2.8",
     .name = "SHA3-256",
     .rsa_signature = "2.16.840.1.101.3.4.3.14",
     .ecdsa_signature = "2.16.840.1.101.3.4.3.10"},
    {.oid = "2.16.840.1.101.3.4.2.9",
     .name = "SHA3-384",
     .rsa_signature = "2.16.840.1.101.3.4.3.15",
     .ecdsa_signature = "2.16.840.1.101.3.4.3.11"},
    {.oid = "2.16.840.1.101.3.4.2.10",
     .name = "SHA3-512",
     .rsa_signature = "2.16.840.1.101.3.4.3.16",
     .ecdsa_signature = "2.16.840.1.101.3.4.3.12"},
    {.oid = "1.2.840.113549.2.5",
     .name = "MD5",
     .rsa_signature = "1.2.840.113549.1.1.4",
     .ecdsa_signature = {},
     .is_for_signing = false},
};

// GOST R 34.11-2012 of both lengths and GOST R 34.11-94 (RFC 9215 5, RFC 4490 2). Other identifiers under
// this arc name keys, signatures, and message authentication codes, which libcrypto keeps among its digests.
constexpr KnownObjectId kGostArc{"1.2.643"};
constexpr DigestRow kGostDigests[] = {
    {.oid = "1.2.643.7.1.1.2.2", .name = "md_gost12_256", .rsa_signature = {}, .ecdsa_signature = {}},
    {.oid = "1.2.643.7.1.1.2.3", .name = "md_gost12_512", .rsa_signature = {}, .ecdsa_signature = {}},
    {.oid = "1.2.643.2.2.9", .name = "md_gost94", .rsa_signature = {}, .ecdsa_signature = {}},
};

// Fetched at first use and kept to the end of the process.
constinit std::array<std::atomic<EVP_MD*>, std::size(kDigests)> fetched{};

MdPointer fetch(const char* name) {
    const LibcryptoScope scope;
    return MdPointer(EVP_MD_fetch(nullptr, name, nullptr));
}

EVP_MD* fetch_once(std::size_t row) {
    EVP_MD* known = fetched[row].load(std::memory_order_acquire);
    if (known != nullptr) {
        return known;
    }
    MdPointer md = fetch(kDigests[row].name);
    if (md != nullptr && fetched[row].compare_exchange_strong(known, md.get(), std::memory_order_acq_rel)) {
        return md.release();
    }
    return known;  // another thread's, or null when there is none
}

std::optional<Digest> digest_of_row(std::size_t row) {
    EVP_MD* const md = fetch_once(row);
    if (md == nullptr) {
        return std::nullopt;
    }
    EVP_MD_up_ref(md);
    return Digest(MdPointer(md), &kDigests[row]);
}

bool is_under(Octets arc, Octets oid) {
    return oid.size() > arc.size() && equal(oid.first(arc.size()), arc);
}

const DigestRow* find_row(std::span<const DigestRow> rows, Octets oid) {
    const auto row = std::ranges::find_if(rows, [&](const DigestRow& each) { return equal(each.oid, oid); });
    return row != rows.end() ? &*row : nullptr;
}

// These come from an engine, so there is nothing to fetch, and the engine owns them.
std::optional<Digest> find_gost_digest(Octets oid) {
    const DigestRow* const row = find_row(kGostDigests, oid);
    if (row == nullptr || !load_gost_engine()) {
        return std::nullopt;
    }
    const EVP_MD* const md = EVP_get_digestbynid(OBJ_txt2nid(object_id_text(oid).c_str()));
    if (md == nullptr) {
        return std::nullopt;
    }
    return Digest(MdPointer(const_cast<EVP_MD*>(md)), row);  // freeing it does nothing
}

}  // namespace

Bytes Digest::of(Octets octets) const {
    Bytes value(size());
    if (EVP_Digest(octets.data(), octets.size(), value.data(), nullptr, md(), nullptr) != 1) {
        throw std::bad_alloc();
    }
    return value;
}

std::optional<Digest> find_digest(Octets oid) {
    if (const DigestRow* const row = find_row(kDigests, oid)) {
        return digest_of_row(static_cast<std::size_t>(row - kDigests));
    }
    if (is_under(kGostArc, oid)) {
        return find_gost_digest(oid);
    }
    MdPointer md = fetch(object_id_text(oid).c_str());
    if (md == nullptr || EVP_MD_get_size(md.get()) <= 0) {
        return std::nullopt;
    }
    return Digest(std::move(md), nullptr);
}

}  // namespace Quillmark::platform
