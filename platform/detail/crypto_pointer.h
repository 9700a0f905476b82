#pragma once

// Owners of libcrypto objects.

#include <openssl/err.h>
#include <openssl/evp.h>

#include <memory>
#include <new>

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

/// Drops the errors that libcrypto queues in its scope, so that the queue of the application stays as it was.
class ErrorQueueMark {
  public:
    ErrorQueueMark() { ERR_set_mark(); }
    ErrorQueueMark(const ErrorQueueMark&) = delete;
    ErrorQueueMark& operator=(const ErrorQueueMark&) = delete;
    ~ErrorQueueMark() { ERR_pop_to_mark(); }
};

}  // namespace Quillmark::platform
