// Conversion between UTF-8 and wide text (RFC 3629; one wchar_t is one code point). Code page 0 is UTF-8
// like 65001: on the systems this runs on it is the encoding of text and file names, nothing is lost by it,
// and the result depends on no locale.

#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>

#include "platform/detail/error_code.h"

namespace Quillmark::platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool is_code_point(char32_t value) {
    return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

struct Decoded {
    char32_t value;
    std::size_t octets;  // taken from the input, at least one
    bool valid;
};

struct LeadOctet {
    unsigned octets;     // length of the sequence, 0 for an octet that begins none
    char32_t bits;       // value bits of the lead octet
    std::uint8_t first;  // range of the second octet: it keeps out overlong forms, surrogates and
    std::uint8_t last;   // values above 0x10FFFF (RFC 3629 section 4)
};

LeadOctet classify(std::uint8_t octet) {
    const char32_t value = octet;
    if (octet < 0x80) {
        return {1, value, 0, 0};
    }
    if (octet >= 0xC2 && octet <= 0xDF) {
        return {2, value & 0x1F, 0x80, 0xBF};
    }
    if (octet >= 0xE0 && octet <= 0xEF) {
        return {3, value & 0x0F, static_cast<std::uint8_t>(octet == 0xE0 ? 0xA0 : 0x80),
                static_cast<std::uint8_t>(octet == 0xED ? 0x9F : 0xBF)};
    }
    if (octet >= 0xF0 && octet <= 0xF4) {
        return {4, value & 0x07, static_cast<std::uint8_t>(octet == 0xF0 ? 0x90 : 0x80),
                static_cast<std::uint8_t>(octet == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0, 0, 0, 0};
}

// A bad sequence takes its lead octet and the continuation octets that would have been right behind it.
Decoded decode(const std::uint8_t* text, std::size_t left) {
    const LeadOctet lead = classify(text[0]);
    if (lead.octets == 0) {
        return {kReplacement, 1, false};
    }
    char32_t value = lead.bits;
    std::uint8_t first = lead.first;
    std::uint8_t last = lead.last;
    for (std::size_t i = 1; i < lead.octets; ++i) {
        if (i == left || text[i] < first || text[i] > last) {
            return {kReplacement, i, false};
        }
        value = value << 6 | (text[i] & 0x3Fu);
        first = 0x80;
        last = 0xBF;
    }
    return {value, lead.octets, true};
}

std::size_t encoded_size(char32_t value) {
    return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

void encode(char32_t value, char* out) {
    switch (encoded_size(value)) {
        case 1:
            out[0] = static_cast<char>(value);
            return;
        case 2:
            out[0] = static_cast<char>(0xC0 | value >> 6);
            out[1] = static_cast<char>(0x80 | (value & 0x3F));
            return;
        case 3:
            out[0] = static_cast<char>(0xE0 | value >> 12);
            out[1] = static_cast<char>(0x80 | (value >> 6 & 0x3F));
            out[2] = static_cast<char>(0x80 | (value & 0x3F));
            return;
        default:
            out[0] = static_cast<char>(0xF0 | value >> 18);
            out[1] = static_cast<char>(0x80 | (value >> 12 & 0x3F));
            out[2] = static_cast<char>(0x80 | (value >> 6 & 0x3F));
            out[3] = static_cast<char>(0x80 | (value & 0x3F));
    }
}

int refuse(ErrorCode code) {
    SetLastError(code);
    return 0;
}

bool is_known_code_page(UINT code_page) {
    return code_page == CP_ACP || code_page == CP_UTF8;
}

// What both directions ask of their input and output arguments.
bool are_good_arguments(UINT code_page, const void* input, int input_size, const void* output,
                        int output_size) {
    return is_known_code_page(code_page) && input != nullptr && (input_size > 0 || input_size == -1) &&
           output_size >= 0 && (output_size == 0 || output != nullptr) && input != output;
}

int answer_size(std::size_t written, int output_size) {
    if (written > INT_MAX) {
        return refuse(ERROR_INVALID_PARAMETER);
    }
    if (output_size != 0 && written > static_cast<std::size_t>(output_size)) {
        return refuse(ERROR_INSUFFICIENT_BUFFER);
    }
    return static_cast<int>(written);
}

}  // namespace

}  // namespace Quillmark::platform

using namespace Quillmark::platform;

int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte,
                        LPWSTR lpWideCharStr, int cchWideChar) {
    if (!are_good_arguments(CodePage, lpMultiByteStr, cbMultiByte, lpWideCharStr, cchWideChar)) {
        return refuse(ERROR_INVALID_PARAMETER);
    }
    if ((dwFlags & ~MB_ERR_INVALID_CHARS) != 0) {
        return refuse(ERROR_INVALID_FLAGS);
    }
    const std::size_t size =
        cbMultiByte == -1 ? std::strlen(lpMultiByteStr) + 1 : static_cast<std::size_t>(cbMultiByte);
    const auto* text = reinterpret_cast<const std::uint8_t*>(lpMultiByteStr);
    const auto room = static_cast<std::size_t>(cchWideChar);
    std::size_t written = 0;
    for (std::size_t position = 0; position < size; ++written) {
        const Decoded next = decode(text + position, size - position);
        if (!next.valid && (dwFlags & MB_ERR_INVALID_CHARS) != 0) {
            return refuse(ERROR_NO_UNICODE_TRANSLATION);
        }
        if (written < room) {
            lpWideCharStr[written] = static_cast<wchar_t>(next.value);
        }
        position += next.octets;
    }
    return answer_size(written, cchWideChar);
}

int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar,
                        LPSTR lpMultiByteStr, int cbMultiByte, LPCSTR lpDefaultChar,
                        BOOL* lpUsedDefaultChar) {
    if (!are_good_arguments(CodePage, lpWideCharStr, cchWideChar, lpMultiByteStr, cbMultiByte) ||
        lpDefaultChar != nullptr || lpUsedDefaultChar != nullptr) {
        return refuse(ERROR_INVALID_PARAMETER);
    }
    if ((dwFlags & ~WC_ERR_INVALID_CHARS) != 0) {
        return refuse(ERROR_INVALID_FLAGS);
    }
    const std::size_t size =
        cchWideChar == -1 ? std::wcslen(lpWideCharStr) + 1 : static_cast<std::size_t>(cchWideChar);
    const auto room = static_cast<std::size_t>(cbMultiByte);
    std::size_t written = 0;
    for (std::size_t position = 0; position < size; ++position) {
        auto value = static_cast<char32_t>(lpWideCharStr[position]);
        if (!is_code_point(value)) {
            if ((dwFlags & WC_ERR_INVALID_CHARS) != 0) {
                return refuse(ERROR_NO_UNICODE_TRANSLATION);
            }
            value = kReplacement;
        }
        const std::size_t octets = encoded_size(value);
        if (written <= room && octets <= room - written) {
            encode(value, lpMultiByteStr + written);
        }
        written += octets;
    }
    return answer_size(written, cbMultiByte);
}
