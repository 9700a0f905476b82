#pragma once

// Text that is wiped when it goes: passwords, PINs, and names of containers that hold one.

#include <openssl/crypto.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace Quillmark::platform {

class SecretText {
  public:
    SecretText() = default;
    explicit SecretText(std::string_view text)
        : text_(std::make_unique<char[]>(text.size() + 1)), size_(text.size()) {
        std::ranges::copy(text, text_.get());
    }
    SecretText(SecretText&& other) noexcept
        : text_(std::move(other.text_)), size_(std::exchange(other.size_, 0)) {}
    SecretText& operator=(SecretText&& other) noexcept {
        std::swap(text_, other.text_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~SecretText() {
        if (text_ != nullptr) {
            OPENSSL_cleanse(text_.get(), size_);
        }
    }

    std::string_view view() const { return {c_str(), size_}; }
    const char* c_str() const { return text_ != nullptr ? text_.get() : ""; }

  private:
    std::unique_ptr<char[]> text_;  // with a terminator
    std::size_t size_ = 0;
};

}  // namespace Quillmark::platform
