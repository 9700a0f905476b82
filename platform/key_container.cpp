#include "platform/detail/key_container.h"

namespace Quillmark::platform {

namespace {

constexpr std::uint64_t kProviderHandle = 2;

}  // namespace

constinit HandleTable<KeyContainer> key_containers{kProviderHandle};

KeyContainer::KeyContainer(std::shared_ptr<const PrivateKey> key) : keys_{std::move(key)} {}

KeyContainer::KeyContainer(SecretText name, PasswordSource password)
    : name_(std::move(name)), password_(std::move(password)), is_waiting_(true) {
    try {
        load(password_);
    } catch (const Failure& failure) {
        if (failure.code != NTE_SILENT_CONTEXT) {
            throw;
        }
    }
}

void KeyContainer::load(const PasswordSource& password) {
    keys_ = load_private_keys(name_, password);
    is_waiting_ = false;
    name_ = {};
    password_ = nullptr;
}

std::shared_ptr<const PrivateKey> KeyContainer::key(DWORD key_spec) {
    const std::lock_guard lock(mutex_);
    if (is_waiting_) {
        load(password_);
    }
    const DWORD wanted = key_spec == 0 ? AT_KEYEXCHANGE : key_spec;
    if (keys_.empty() || wanted > AT_SIGNATURE) {
        throw Failure{NTE_NO_KEY};
    }
    return wanted == AT_SIGNATURE && keys_.size() > 1 ? keys_[1] : keys_[0];
}

void KeyContainer::set_password(const char* password) {
    const std::lock_guard lock(mutex_);
    if (!is_waiting_) {
        return;
    }
    const SecretText text(password);
    load(source_of(text));
}

}  // namespace Quillmark::platform
