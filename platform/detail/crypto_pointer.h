#pragma once

// Owners of libcrypto objects, and the scope that they are used in.

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>

#include <memory>
#include <new>

#include "platform/detail/error_code.h"

namespace Quillmark::platform {

template <auto Free>
struct FreedBy {
    template <typename Object>
    void operator()(Object* object) const {
        Free(object);
    }
};

using MdPointer = std::unique_ptr<EVP_MD, FreedBy<EVP_MD_free>>;
using MdContextPointer = std::unique_ptr<EVP_MD_CTX, FreedBy<EVP_MD_CTX_free>>;
using KeyPointer = std::unique_ptr<EVP_PKEY, FreedBy<EVP_PKEY_free>>;

inline MdContextPointer make_md_context() {
    MdContextPointer context(EVP_MD_CTX_new());
    if (context == nullptr) {
        throw std::bad_alloc();
    }
    return context;
}

inline KeyPointer share(EVP_PKEY* key) {
    EVP_PKEY_up_ref(key);
    return KeyPointer(key);
}

/// Whether libcrypto has cleaned up behind itself, which it does at the end of the process and before static
/// objects that are older than its first use. It would follow pointers to what is gone.
inline bool has_libcrypto_ended() {
    return OPENSSL_init_crypto(0, nullptr) == 0;
}

/// Has libcrypto make its table of the names of algorithms, once. It does so at the first question for one,
/// and threads that ask meanwhile find the table half made: what has two names, such as EC and
/// id-ecPublicKey, becomes two things for the rest of the process, one of them without methods (OpenSSL 3.0).
void make_algorithm_names();

/// A scope that uses libcrypto. The errors that libcrypto queues in it are dropped at its end, so that the
/// queue of the application stays as it was. Throws `E_FAIL` when libcrypto has ended: static objects may
/// still sign, verify or open keys then. Freeing its objects stays safe, but for those of engines.
class LibcryptoScope {
  public:
    LibcryptoScope() {
        if (has_libcrypto_ended()) {
            throw Failure{E_FAIL};
        }
        ERR_set_mark();
        ++depth_;
        make_algorithm_names();
    }
    LibcryptoScope(const LibcryptoScope&) = delete;
    LibcryptoScope& operator=(const LibcryptoScope&) = delete;
    ~LibcryptoScope() {
        --depth_;
        ERR_pop_to_mark();
    }

    /// How many scopes of this thread lie in each other, each with a mark in the queue.
    static int depth() { return depth_; }

  private:
    static inline thread_local int depth_ = 0;
};

}  // namespace Quillmark::platform
