#include "platform/detail/private_key.h"

#include <openssl/x509.h>

#include <algorithm>

namespace Quillmark::platform {

namespace {

// A key meets few schemes in its life; one that is tried with many digests prepares the later ones afresh.
constexpr std::size_t kMaxPrepared = 16;

struct FreeDer {
    void operator()(std::uint8_t* der) const { OPENSSL_free(der); }
};

Bytes public_bits_of(EVP_PKEY* key) {
    std::uint8_t* der = nullptr;
    const int size = i2d_PUBKEY(key, &der);
    if (size <= 0) {
        return {};
    }
    const std::unique_ptr<std::uint8_t, FreeDer> owner(der);
    try {
        DerWalker walker(Octets(der, static_cast<std::size_t>(size)));
        const Octets bits = read_public_key_info(walker).key.octets;
        return {bits.begin(), bits.end()};
    } catch (const Failure&) {
        return {};
    }
}

}  // namespace

PrivateKey::PrivateKey(KeyPointer key) : key_(std::move(key)), public_bits_(public_bits_of(key_.get())) {}

bool PrivateKey::has_public_bits(Octets bits) const {
    return public_bits_.empty() || equal(public_bits_, bits);
}

bool PrivateKey::is_pair_of(const EVP_PKEY* public_key) const {
    return EVP_PKEY_eq(key_.get(), public_key) == 1;
}

EVP_MD_CTX* PrivateKey::prepared_context(const SignatureScheme& scheme) const {
    const std::lock_guard lock(mutex_);
    const auto known =
        std::ranges::find_if(prepared_, [&](const Prepared& each) { return each.scheme.is_same(scheme); });
    if (known != prepared_.end()) {
        return known->context.get();
    }
    if (prepared_.size() == kMaxPrepared) {
        return nullptr;
    }
    MdContextPointer context = make_md_context();
    if (!scheme.start_signing(context.get(), key_.get())) {
        throw Failure{NTE_BAD_ALGID};
    }
    prepared_.push_back({scheme, std::move(context)});
    return prepared_.back().context.get();
}

void PrivateKey::prepare(const SignatureScheme& scheme) const {
    prepared_context(scheme);
}

MdContextPointer PrivateKey::context_for(const SignatureScheme& scheme) const {
    MdContextPointer context = make_md_context();
    EVP_MD_CTX* const prepared = prepared_context(scheme);
    if (prepared != nullptr && EVP_MD_CTX_copy_ex(context.get(), prepared) == 1) {
        return context;
    }
    context = make_md_context();  // not every key can be copied
    if (!scheme.start_signing(context.get(), key_.get())) {
        throw Failure{NTE_BAD_ALGID};
    }
    return context;
}

Bytes PrivateKey::sign(const SignatureScheme& scheme, Octets octets) const {
    const MdContextPointer context = context_for(scheme);
    Bytes signature(static_cast<std::size_t>(std::max(EVP_PKEY_get_size(key_.get()), 0)));
    std::size_t size = signature.size();
    // The context signs once, so it may be used up instead of being copied once more.
    EVP_MD_CTX_set_flags(context.get(), EVP_MD_CTX_FLAG_FINALISE);
    if (EVP_DigestSign(context.get(), signature.data(), &size, octets.data(), octets.size()) != 1) {
        throw Failure{NTE_FAIL};
    }
    signature.resize(size);
    return signature;
}

}  // namespace Quillmark::platform
