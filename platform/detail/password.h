#pragma once

// Where passwords and PINs come from. libcrypto and its engines put their questions through a `UI_METHOD` and
// would ask on the terminal if they were given none; a `PasswordDialog` answers them from a source of the
// application, or says that there is no answer.

#include <openssl/ui.h>

#include <array>
#include <functional>
#include <optional>

#include "platform/detail/secret_text.h"

namespace Quillmark::platform {

/// Writes a password into the buffer and gives its length, or -1 when there is none.
using PasswordSource = std::function<int(char* buffer, int size)>;

/// A source that never has one.
inline int no_password(char*, int) {
    return -1;
}

/// A source of this one. `text` must outlive it.
PasswordSource source_of(const SecretText& text);

/// What `source` gives now, or nothing.
std::optional<SecretText> ask(const PasswordSource& source);

class PasswordDialog {
  public:
    /// `source` must outlive it.
    explicit PasswordDialog(const PasswordSource& source) : source_(source) {}
    PasswordDialog(const PasswordDialog&) = delete;
    PasswordDialog& operator=(const PasswordDialog&) = delete;
    ~PasswordDialog();

    /// The two arguments that libcrypto is given.
    static UI_METHOD* method();
    void* data() { return this; }

    bool was_answered() const { return was_answered_; }
    bool was_asked_in_vain() const { return was_asked_in_vain_; }

    /// What follows is a second attempt: its questions get the answer that is known, so that nobody is asked
    /// twice for one container.
    void begin_again() { is_repeated_ = was_answered_; }

  private:
    static int read_answer(UI* ui, UI_STRING* question);
    bool answer(UI* ui, UI_STRING* question);

    const PasswordSource& source_;
    std::array<char, 1024> text_{};
    int size_ = -1;
    bool was_answered_ = false;
    bool was_asked_in_vain_ = false;
    bool is_repeated_ = false;
};

}  // namespace Quillmark::platform
