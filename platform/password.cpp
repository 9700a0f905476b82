#include "platform/detail/password.h"

#include <openssl/crypto.h>

#include <cstring>
#include <new>

namespace Quillmark::platform {

namespace {

constexpr int kMaxOctets = 1024;

}  // namespace

PasswordSource source_of(const SecretText& text) {
    return [&text](char* buffer, int size) {
        const std::string_view password = text.view();
        if (password.size() > static_cast<std::size_t>(size)) {
            return -1;
        }
        std::memcpy(buffer, password.data(), password.size());
        return static_cast<int>(password.size());
    };
}

std::optional<SecretText> ask(const PasswordSource& source) {
    std::array<char, kMaxOctets> buffer;
    const int size = source(buffer.data(), kMaxOctets);
    std::optional<SecretText> answer;
    if (size >= 0 && size <= kMaxOctets) {
        answer.emplace(std::string_view(buffer.data(), static_cast<std::size_t>(size)));
    }
    OPENSSL_cleanse(buffer.data(), buffer.size());
    return answer;
}

PasswordDialog::~PasswordDialog() {
    OPENSSL_cleanse(text_.data(), text_.size());
}

UI_METHOD* PasswordDialog::method() {
    // One for all dialogs, to the end of the process.
    static UI_METHOD* const the_method = [] {
        UI_METHOD* const fresh = UI_create_method("password of a key container");
        if (fresh == nullptr) {
            throw std::bad_alloc();
        }
        UI_method_set_reader(fresh, read_answer);
        return fresh;
    }();
    return the_method;
}

int PasswordDialog::read_answer(UI* ui, UI_STRING* question) {
    const UI_string_types type = UI_get_string_type(question);
    if (type != UIT_PROMPT && type != UIT_VERIFY) {
        return 1;  // text for people
    }
    return static_cast<PasswordDialog*>(UI_get0_user_data(ui))->answer(ui, question) ? 1 : -1;
}

bool PasswordDialog::answer(UI* ui, UI_STRING* question) {
    const int room = std::min(UI_get_result_maxsize(question), static_cast<int>(text_.size()));
    if (!is_repeated_) {
        size_ = source_(text_.data(), room);
    }
    const bool has_answer =
        size_ >= 0 && size_ <= room && UI_set_result_ex(ui, question, text_.data(), size_) >= 0;
    (has_answer ? was_answered_ : was_asked_in_vain_) = true;
    return has_answer;
}

}  // namespace Quillmark::platform
