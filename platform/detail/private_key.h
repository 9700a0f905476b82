#pragma once

// A private key and what is prepared once to sign with it many times.

#include <memory>
#include <mutex>
#include <vector>

#include "platform/detail/signature_scheme.h"

namespace Quillmark::platform {

class PrivateKey {
  public:
    /// With `turn` the key is used only while that mutex is held, as keys of engines are. It is not taken
    /// here.
    explicit PrivateKey(KeyPointer key, std::shared_ptr<std::mutex> turn = nullptr);
    PrivateKey(const PrivateKey&) = delete;
    PrivateKey& operator=(const PrivateKey&) = delete;
    ~PrivateKey();

    /// Whether `bits`, the bit string of a SubjectPublicKeyInfo, are those of the public half. A key that
    /// does not know its public half is let through.
    bool has_public_bits(Octets bits) const;
    bool is_pair_of(const EVP_PKEY* public_key) const;

    /// Prepares for `sign`. `NTE_BAD_ALGID` when the key cannot make such signatures.
    void prepare(const SignatureScheme& scheme) const;

    /// The signature over `octets`. `NTE_BAD_ALGID` as above, `NTE_FAIL` when the key refuses to sign,
    /// `NTE_SILENT_CONTEXT` when it wants a PIN for each signature.
    Bytes sign(const SignatureScheme& scheme, Octets octets) const;

  private:
    struct Prepared {
        SignatureScheme scheme;
        MdContextPointer context;  // only ever the source of a copy, so threads can share it
    };

    std::unique_lock<std::mutex> take_turn() const;
    void leave_to_the_process();
    EVP_MD_CTX* prepared_context(const SignatureScheme& scheme) const;
    MdContextPointer context_for(const SignatureScheme& scheme) const;

    std::shared_ptr<std::mutex> turn_;  // null when the key serves threads at once
    KeyPointer key_;
    Bytes public_bits_;  // empty when the key does not know its public half
    mutable std::mutex mutex_;
    mutable std::vector<Prepared> prepared_;
};

}  // namespace Quillmark::platform
