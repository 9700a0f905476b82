#include "platform/detail/private_key.h"

#include <openssl/x509.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

#include "platform/detail/engine.h"

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

PrivateKey::PrivateKey(KeyPointer key, std::shared_ptr<std::mutex> turn)
    : turn_(std::move(turn)), key_(std::move(key)), public_bits_(public_bits_of(key_.get())) {}

PrivateKey::~PrivateKey() {
    if (turn_ == nullptr) {
        return;
    }
    const std::unique_lock lock = take_turn();
    if (has_libcrypto_ended()) {
        leave_to_the_process();
        return;
    }
    prepared_.clear();
    key_.reset();
}

// The engine has ended with libcrypto, and freeing what is the engine's would follow pointers to what is
// gone. All that is left over at that late hour stays in one list.
void PrivateKey::leave_to_the_process() {
    struct Remains {
        std::vector<Prepared> prepared;
        KeyPointer key;
        Remains* next;
    };
    static constinit std::atomic<Remains*> all{nullptr};
    auto* const remains = new (std::nothrow)
        Remains{std::move(prepared_), std::move(key_), all.load(std::memory_order_relaxed)};
    if (remains == nullptr) {
        static_cast<void>(key_.release());
        for (Prepared& each : prepared_) {
            static_cast<void>(each.context.release());
        }
        return;
    }
    while (!all.compare_exchange_weak(remains->next, remains)) {
    }
}

std::unique_lock<std::mutex> PrivateKey::take_turn() const {
    return turn_ != nullptr ? std::unique_lock(*turn_) : std::unique_lock<std::mutex>();
}

bool PrivateKey::has_public_bits(Octets bits) const {
    return public_bits_.empty() || equal(public_bits_, bits);
}

bool PrivateKey::is_pair_of(const EVP_PKEY* public_key) const {
    const std::unique_lock lock = take_turn();
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
    const std::unique_lock lock = take_turn();
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
    const std::unique_lock lock = take_turn();
    const MdContextPointer context = context_for(scheme);
    Bytes signature(static_cast<std::size_t>(std::max(EVP_PKEY_get_size(key_.get()), 0)));
    std::size_t size = signature.size();
    // The context signs once, so it may be used up instead of being copied once more.
    EVP_MD_CTX_set_flags(context.get(), EVP_MD_CTX_FLAG_FINALISE);
    if (EVP_DigestSign(context.get(), signature.data(), &size, octets.data(), octets.size()) != 1) {
        throw Failure{take_refused_question() ? NTE_SILENT_CONTEXT : NTE_FAIL};
    }
    if (size > signature.size()) {
        throw Failure{NTE_FAIL};  // libcrypto takes the -1 of a signature that it could not encode for a size
    }
    signature.resize(size);
    return signature;
}

}  // namespace Quillmark::platform
