#include <atomic>
#include <mutex>

#include "platform/detail/crypto_pointer.h"

namespace Quillmark::platform {

namespace {

constinit std::atomic<bool> made{false};
constinit std::mutex making;

}  // namespace

void make_algorithm_names() {
    if (made.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard lock(making);
    if (!made.load(std::memory_order_relaxed)) {
        const MdPointer any(EVP_MD_fetch(nullptr, "SHA256", nullptr));
        made.store(any != nullptr, std::memory_order_release);
    }
}

}  // namespace Quillmark::platform
