#include <cwchar>
#include <sstream>

#include "asn1/codec.h"
#include "asn1/detail/bridge.h"
#include "asn1/detail/check.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/text.h"
#include "platform/cryptoapi.h"
#include "runtime/ber_decode.h"
#include "runtime/character.h"
#include "runtime/copy.h"
#include "runtime/der_encode.h"
#include "values/detail/last_error.h"

namespace Quillmark {
namespace {

// Universal tag numbers (X.680 8.4).
enum : ASN1TAG {
    kUTF8String = 12,
    kNumericString = 18,
    kPrintableString = 19,
    kTeletexString = 20,
    kIA5String = 22,
    kUniversalString = 28,
    kBMPString = 30
};

}  // namespace

namespace detail {

std::optional<std::string> narrow(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return std::nullopt;
    }
    std::string narrowed(static_cast<std::size_t>(size), '\0');
    if (WideCharToMultiByte(CP_ACP, 0, text, -1, narrowed.data(), size, nullptr, nullptr) <= 0) {
        return std::nullopt;
    }
    narrowed.resize(std::char_traits<char>::length(narrowed.c_str()));
    return narrowed;
}

std::optional<std::wstring> widen(const char* text) {
    const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    if (size <= 0) {
        return std::nullopt;
    }
    std::wstring widened(static_cast<std::size_t>(size), L'\0');
    if (MultiByteToWideChar(CP_ACP, 0, text, -1, widened.data(), size) <= 0) {
        return std::nullopt;
    }
    widened.resize(std::char_traits<wchar_t>::length(widened.c_str()));
    return widened;
}

const char* to_utf8(ASN1CTXT* ctxt, const std::wstring& text, HRESULT failure) {
    std::size_t room = 1;
    for (const wchar_t character : text) {
        room += static_cast<std::size_t>(rtUTF8CharSize(static_cast<std::uint32_t>(character)));
    }
    char* converted = static_cast<char*>(allocate(ctxt, room));
    if (rtWCSToUTF8(ctxt, text.c_str(), text.size() + 1, converted, room) < 0) {
        throw CAtlException(failure);
    }
    return converted;
}

std::wstring from_utf8(const char* text, HRESULT failure) {
    const int length = rtUTF8Len(text);
    if (length < 0) {
        throw CAtlException(failure);
    }
    std::wstring converted(static_cast<std::size_t>(length), L'\0');
    // No context: the conversion reports by its result alone.
    if (rtUTF8ToWCS(nullptr, text, converted.data(), converted.size()) < 0) {
        throw CAtlException(failure);
    }
    return converted;
}

}  // namespace detail

namespace ASN1 {
namespace {

CWStringProxy read_8bit(ASN1CTXT* ctxt, ASN1TAG tag, int length) {
    char* text = nullptr;
    detail::check_codec(xd_charstr(ctxt, &text, ASN1IMPL, tag, length));
    if (tag == kUTF8String) {
        return CWStringProxy(detail::from_utf8(text, CRYPT_E_ASN1_INTERNAL).c_str());
    }
    return CWStringProxy(towstring(text).c_str());
}

CWStringProxy read_bmp(ASN1CTXT* ctxt, int length) {
    ASN1_16BITCHARSTRING units{};
    detail::check_codec(xd_16BitCharStr(ctxt, &units, ASN1IMPL, kBMPString, length));
    // Intended: a surrogate pair stays two characters.
    return CWStringProxy(std::wstring(units.data, units.data + units.nchars).c_str());
}

CWStringProxy read_universal(ASN1CTXT* ctxt, int length) {
    ASN1_32BITCHARSTRING characters{};
    detail::check_codec(xd_32BitCharStr(ctxt, &characters, ASN1IMPL, kUniversalString, length));
    std::wstring text(std::size_t{characters.nchars} + 1, L'\0');
    rtUCSToWCSString(&characters, text.data(), text.size());
    return CWStringProxy(text.c_str());
}

int write_bmp(ASN1CTXT* ctxt, const std::wstring& text) {
    ASN1_16BITCHARSTRING units{};
    units.nchars = static_cast<std::uint32_t>(text.size());
    units.data = static_cast<std::uint16_t*>(detail::allocate(ctxt, text.size() * sizeof(std::uint16_t)));
    for (std::size_t i = 0; i < text.size(); ++i) {
        units.data[i] = static_cast<std::uint16_t>(text[i]);
    }
    return xe_16BitCharStr(ctxt, &units, ASN1EXPL, kBMPString);
}

int write_universal(ASN1CTXT* ctxt, const std::wstring& text) {
    ASN1_32BITCHARSTRING characters{};
    if (rtWCSToUCSString(ctxt, text.c_str(), &characters, nullptr) == nullptr) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    return xe_32BitCharStr(ctxt, &characters, ASN1EXPL, kUniversalString);
}

int write_string(ASN1CTXT* ctxt, const std::wstring& text, StringType type) {
    // Intended: text in the code page is not tested against the alphabet of its kind.
    const auto write_narrow = [&](ASN1TAG tag) {
        return xe_charstr(ctxt, tostring(text.c_str()).c_str(), ASN1EXPL, tag);
    };
    switch (type) {
        case StringTypeUTF8:
            return xe_charstr(ctxt, detail::to_utf8(ctxt, text, CRYPT_E_ASN1_INTERNAL), ASN1EXPL,
                              kUTF8String);
        case StringTypePrintable:
            return write_narrow(kPrintableString);
        case StringTypeTeletex:
            return write_narrow(kTeletexString);
        case StringTypeBMP:
            return write_bmp(ctxt, text);
        case StringTypeIA5:
            return write_narrow(kIA5String);
        case StringTypeUniversal:
            return write_universal(ctxt, text);
        case StringTypeDefault:
            break;
    }
    throw CAtlException(CRYPT_E_ASN1_INTERNAL);
}

}  // namespace

std::string tostring(const wchar_t* text) {
    std::optional<std::string> narrowed = detail::narrow(text);
    if (!narrowed) {
        detail::throw_last_error();
    }
    return *std::move(narrowed);
}

std::string tostring(const unsigned short* text) {
    return tostring(reinterpret_cast<const wchar_t*>(text));
}

std::string tostring(int number) {
    return std::to_string(number);
}

std::wstring towstring(const char* text) {
    std::optional<std::wstring> widened = detail::widen(text);
    if (!widened) {
        detail::throw_last_error();
    }
    return *std::move(widened);
}

std::wstring towstring(int number) {
    return std::to_wstring(number);
}

CWStringProxy decodeCharString(const CBlob& der) {
    ctxt_handle handle;
    if (!handle.init()) {
        throw CAtlException(CRYPT_E_ASN1_MEMORY);
    }
    if (der.cbData() == 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    ASN1CTXT* ctxt = handle.get();
    ASN1TAG tag = 0;
    int length = 0;
    detail::check_codec(xd_setp(ctxt, der.pbData(), detail::message_size(der), nullptr, nullptr));
    detail::check_codec(xd_tag_len(ctxt, &tag, &length, XM_ADVANCE));
    switch (tag) {
        case kUTF8String:
        case kNumericString:
        case kPrintableString:
        case kTeletexString:
        case kIA5String:
            return read_8bit(ctxt, tag, length);
        case kUniversalString:
            return read_universal(ctxt, length);
        case kBMPString:
            return read_bmp(ctxt, length);
        default:
            throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
}

CBlob encodeCharString(const wchar_t* text, StringType type) {
    const std::wstring copy(detail::or_empty(text));
    ctxt_handle handle;
    if (!handle.init()) {
        throw CAtlException(CRYPT_E_ASN1_MEMORY);
    }
    ASN1CTXT* ctxt = handle.get();
    detail::check_codec(xe_setp(ctxt, nullptr, 0));
    const int length = detail::check_codec(write_string(ctxt, copy, type));
    return CBlob(xe_getp(ctxt), static_cast<unsigned long>(length));
}

void ASN1UTF8String_traits::set(ASN1CTXT* ctxt, const char*& record, const wchar_t* value) {
    record = detail::to_utf8(ctxt, detail::or_empty(value), E_INVALIDARG);
}

void ASN1UTF8String_traits::get(const char* const& record, CWStringProxy& value) {
    value = CWStringProxy(detail::from_utf8(record, CRYPT_E_ASN1_INTERNAL).c_str());
}

void ASN1UTF8String_traits::copy(ASN1CTXT* ctxt, const char* const& source, const char*& target) {
    detail::check_copied(rtCopyCharStr(ctxt, source, &target));
}

}  // namespace ASN1
}  // namespace Quillmark
