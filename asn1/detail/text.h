#pragma once

// Conversions of text that the sources of this folder share.

#include <optional>
#include <string>

#include "runtime/context.h"
#include "values/result.h"

namespace Quillmark::detail {

/// A null text stands for the empty one.
inline const char* or_empty(const char* text) {
    return text == nullptr ? "" : text;
}
inline const wchar_t* or_empty(const wchar_t* text) {
    return text == nullptr ? L"" : text;
}

/// To the system's ANSI code page; nothing when the platform cannot, which then has a last error.
std::optional<std::string> narrow(const wchar_t* text);
/// From the system's ANSI code page.
std::optional<std::wstring> widen(const char* text);

/// The UTF-8 of a text on the heap of `ctxt`. Throws `CRYPT_E_ASN1_MEMORY`, or `failure` for a character with
/// bit 31 set.
const char* to_utf8(ASN1CTXT* ctxt, const std::wstring& text, HRESULT failure);
/// The characters of a text, which may have zeros among them. Throws `failure` for malformed UTF-8.
std::wstring from_utf8(const char* text, HRESULT failure);

}  // namespace Quillmark::detail
