#pragma once

// How a string crosses the library's boundary: one pointer to an owned standard string, so that the
// shape of the string class shows in no signature.

#include <memory>
#include <string>
#include <utility>

#include "values/export.h"

namespace Quillmark {

/// An owned narrow string.
class QUILLMARK_API CStringProxy {
  public:
    /// Null makes the empty string.
    CStringProxy(const char* text);
    CStringProxy(const CStringProxy& other);
    /// Takes the text of `other`, which is an empty string afterwards.
    CStringProxy(CStringProxy&& other) noexcept : text_(std::move(other.text_)) {}
    CStringProxy& operator=(const CStringProxy& other);
    /// Takes the text of `other`, which has the old one of this object afterwards.
    CStringProxy& operator=(CStringProxy&& other) noexcept {
        text_.swap(other.text_);
        return *this;
    }
    ~CStringProxy();

    /// Never null. Lent: valid until assignment or the end of this object.
    const char* c_str() const;

  private:
    std::unique_ptr<std::string> text_;  // null for the empty string
};

/// An owned wide string.
class QUILLMARK_API CWStringProxy {
  public:
    /// Null makes the empty string.
    CWStringProxy(const wchar_t* text);
    CWStringProxy(const CWStringProxy& other);
    /// Takes the text of `other`, which is an empty string afterwards.
    CWStringProxy(CWStringProxy&& other) noexcept : text_(std::move(other.text_)) {}
    CWStringProxy& operator=(const CWStringProxy& other);
    /// Takes the text of `other`, which has the old one of this object afterwards.
    CWStringProxy& operator=(CWStringProxy&& other) noexcept {
        text_.swap(other.text_);
        return *this;
    }
    ~CWStringProxy();

    /// Never null. Lent: valid until assignment or the end of this object.
    const wchar_t* c_str() const;

  private:
    std::unique_ptr<std::wstring> text_;  // null for the empty string
};

static_assert(sizeof(CStringProxy) == 8 && sizeof(CWStringProxy) == 8, "a proxy is one pointer");

}  // namespace Quillmark
