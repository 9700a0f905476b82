#pragma once

// A key container: what a provider handle stands for.

#include <mutex>
#include <optional>

#include "platform/detail/handle_table.h"
#include "platform/detail/key_store.h"

namespace Quillmark::platform {

class KeyContainer {
  public:
    /// No keys at all.
    KeyContainer() = default;
    /// One key that is there already.
    explicit KeyContainer(std::shared_ptr<const PrivateKey> key);
    /// The keys of a store. They are loaded now, unless a password is needed and `password` has none yet:
    /// then loading waits for `set_password` or the first use of a key.
    KeyContainer(SecretText name, PasswordSource password);

    /// The key for `AT_KEYEXCHANGE` or `AT_SIGNATURE`, 0 meaning the first. One key serves for both; of
    /// several the first is for key exchange and the second for signatures. `NTE_NO_KEY` when there is none,
    /// and what loading fails with.
    std::shared_ptr<const PrivateKey> key(DWORD key_spec);

    /// Loads the keys with this password if they wait for one, so that a wrong one is found here.
    void set_password(const char* password);

  private:
    void load(const PasswordSource& password);

    std::mutex mutex_;
    SecretText name_;  // may hold a PIN; both go when the keys are loaded
    PasswordSource password_;
    bool is_waiting_ = false;
    std::vector<std::shared_ptr<const PrivateKey>> keys_;
};

/// The provider handles.
extern HandleTable<KeyContainer> key_containers;

}  // namespace Quillmark::platform
