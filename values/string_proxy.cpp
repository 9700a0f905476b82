#include "values/string_proxy.h"

namespace Quillmark {

namespace {

template <class Character>
std::unique_ptr<std::basic_string<Character>> make_string(const Character* text) {
    if (text == nullptr || *text == Character()) {
        return nullptr;
    }
    return std::make_unique<std::basic_string<Character>>(text);
}

template <class String>
std::unique_ptr<String> copy_of(const std::unique_ptr<String>& text) {
    return text == nullptr ? nullptr : std::make_unique<String>(*text);
}

// In place where there is a string already.
template <class String>
void assign(std::unique_ptr<String>& target, const std::unique_ptr<String>& source) {
    if (target != nullptr && source != nullptr) {
        *target = *source;
    } else {
        target = copy_of(source);
    }
}

}  // namespace

CStringProxy::CStringProxy(const char* text) : text_(make_string(text)) {}

CStringProxy::CStringProxy(const CStringProxy& other) : text_(copy_of(other.text_)) {}

CStringProxy& CStringProxy::operator=(const CStringProxy& other) {
    assign(text_, other.text_);
    return *this;
}

CStringProxy::~CStringProxy() = default;

const char* CStringProxy::c_str() const {
    return text_ != nullptr ? text_->c_str() : "";
}

CWStringProxy::CWStringProxy(const wchar_t* text) : text_(make_string(text)) {}

CWStringProxy::CWStringProxy(const CWStringProxy& other) : text_(copy_of(other.text_)) {}

CWStringProxy& CWStringProxy::operator=(const CWStringProxy& other) {
    assign(text_, other.text_);
    return *this;
}

CWStringProxy::~CWStringProxy() = default;

const wchar_t* CWStringProxy::c_str() const {
    return text_ != nullptr ? text_->c_str() : L"";
}

}  // namespace Quillmark
