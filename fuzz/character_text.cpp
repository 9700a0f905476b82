// Conversions between UTF-8, wide text and the ASN.1 string types. The size that is told is the size that is
// written; text that converts without replacements converts back to itself; the string types give back what
// they can hold.

#include <algorithm>

#include "asn1/codec.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "platform/cryptoapi.h"
#include "runtime/character.h"

namespace Quillmark::fuzz {

namespace {

void check_service(Octets octets) {
    const std::string text(octets.begin(), octets.end());
    const int size = static_cast<int>(text.size());
    if (size == 0) {
        return;
    }
    for (const DWORD flags : {0u, MB_ERR_INVALID_CHARS}) {
        const int wide_size = MultiByteToWideChar(CP_UTF8, flags, text.data(), size, nullptr, 0);
        if (wide_size == 0) {
            require(flags != 0 && GetLastError() == ERROR_NO_UNICODE_TRANSLATION, "a bad sequence is told");
            continue;
        }
        std::vector<wchar_t> wide(static_cast<std::size_t>(wide_size));
        require(MultiByteToWideChar(CP_UTF8, flags, text.data(), size, wide.data(), wide_size) == wide_size,
                "a conversion has the size that was told");
        const int back_size = WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(), wide_size,
                                                  nullptr, 0, nullptr, nullptr);
        require(back_size > 0, "wide text that was made of UTF-8 converts back");
        std::string back(static_cast<std::size_t>(back_size), 'x');
        require(WideCharToMultiByte(CP_UTF8, 0, wide.data(), wide_size, back.data(), back_size, nullptr,
                                    nullptr) == back_size,
                "a conversion has the size that was told");
        require(flags == 0 || back == text, "text without bad sequences comes back");
    }
}

void check_runtime(const std::string& text) {
    ASN1::ctxt_handle context;
    require(context.init(), "a context is made");
    ASN1CTXT* const ctxt = context.get();
    const int count = rtUTF8ToWCS(ctxt, text.c_str(), nullptr, 0);
    if (count < 0) {
        require(count == RT_E_INVUTF8, "text that is no UTF-8 is told");
        return;
    }
    std::vector<wchar_t> wide(static_cast<std::size_t>(count));
    require(rtUTF8ToWCS(ctxt, text.c_str(), wide.data(), wide.size()) == count,
            "a conversion has the size that was told");
    std::string narrow(wide.size() * 6 + 1, 'x');
    const int size = rtWCSToUTF8(ctxt, wide.data(), wide.size(), narrow.data(), narrow.size());
    require(size >= 0, "wide text that was made of UTF-8 converts back");
    narrow.resize(static_cast<std::size_t>(size));
    std::vector<wchar_t> again(wide.size());
    require(narrow.find('\0') != std::string::npos ||
                (rtUTF8ToWCS(ctxt, narrow.c_str(), again.data(), again.size()) == count && again == wide),
            "wide text comes back");
}

void check_string_types(const std::string& text) {
    const std::wstring wide = ASN1::towstring(text.c_str());
    require(ASN1::towstring(ASN1::tostring(wide.c_str()).c_str()) == wide, "wide text comes back");
    const bool is_ascii = std::all_of(wide.begin(), wide.end(), [](wchar_t c) { return c < 0x80; });
    const bool is_basic = std::all_of(wide.begin(), wide.end(), [](wchar_t c) { return c < 0x10000; });
    using enum ASN1::StringType;
    for (const auto type : {StringTypeUTF8, StringTypePrintable, StringTypeTeletex, StringTypeBMP,
                            StringTypeIA5, StringTypeUniversal}) {
        const bool holds_all = type == StringTypeUTF8 || is_ascii ||
                               (is_basic && (type == StringTypeBMP || type == StringTypeUniversal));
        attempt("encodeCharString", {CRYPT_E_ASN1_INTERNAL}, [&] {
            const CBlob der = ASN1::encodeCharString(wide.c_str(), type);
            const CWStringProxy back = ASN1::decodeCharString(der);
            require(!holds_all || wide == back.c_str(), "text comes back");
        });
    }
}

}  // namespace

void check_character_text(Octets octets) {
    Input input(octets);
    const unsigned form = input.octet();
    switch (form % 3) {
        case 0:
            return check_service(input.rest());
        case 1:
            return check_runtime(input.rest_as_text());
        default:
            return must("conversions", [&] { check_string_types(input.rest_as_text()); });
    }
}

}  // namespace Quillmark::fuzz
