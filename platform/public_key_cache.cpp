#include "platform/detail/public_key_cache.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace Quillmark::platform {

namespace {

std::size_t hash_of(Octets info) {
    const std::string_view text(reinterpret_cast<const char*>(info.data()), info.size());
    return std::hash<std::string_view>{}(text);
}

}  // namespace

PublicKeyCache::Entry* PublicKeyCache::find_entry(std::size_t hash, Octets info) {
    const auto entry = std::ranges::find_if(entries_, [&](const Entry& each) {
        return each.last_use != 0 && each.hash == hash && equal(each.info, info);
    });
    return entry == entries_.end() ? nullptr : &*entry;
}

KeyPointer PublicKeyCache::find(Octets info) {
    const std::size_t hash = hash_of(info);
    const std::lock_guard lock(mutex_);
    Entry* const entry = find_entry(hash, info);
    if (entry == nullptr) {
        return nullptr;
    }
    entry->last_use = ++clock_;
    return share(entry->key.get());
}

void PublicKeyCache::insert(Octets info, EVP_PKEY* key) {
    Entry fresh{.hash = hash_of(info), .last_use = 0, .info = {info.begin(), info.end()}, .key = share(key)};
    const std::lock_guard lock(mutex_);
    if (find_entry(fresh.hash, info) != nullptr) {
        return;  // another thread was first
    }
    fresh.last_use = ++clock_;
    // The old key goes with `fresh`, after the lock.
    std::swap(*std::ranges::min_element(entries_, {}, &Entry::last_use), fresh);
}

}  // namespace Quillmark::platform
