#include "values/string_proxy.h"

namespace Quillmark {

CStringProxy::CStringProxy(const char* text)
    : text_(std::make_unique<std::string>(text != nullptr ? text : "")) {}

CStringProxy::CStringProxy(const CStringProxy& other) : text_(std::make_unique<std::string>(*other.text_)) {}

CStringProxy& CStringProxy::operator=(const CStringProxy& other) {
    *text_ = *other.text_;
    return *this;
}

CStringProxy::~CStringProxy() = default;

const char* CStringProxy::c_str() const {
    return text_->c_str();
}

CWStringProxy::CWStringProxy(const wchar_t* text)
    : text_(std::make_unique<std::wstring>(text != nullptr ? text : L"")) {}

CWStringProxy::CWStringProxy(const CWStringProxy& other)
    : text_(std::make_unique<std::wstring>(*other.text_)) {}

CWStringProxy& CWStringProxy::operator=(const CWStringProxy& other) {
    *text_ = *other.text_;
    return *this;
}

CWStringProxy::~CWStringProxy() = default;

const wchar_t* CWStringProxy::c_str() const {
    return text_->c_str();
}

}  // namespace Quillmark
