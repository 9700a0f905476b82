#include "runtime/character.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace {

// Octets of the character that `lead` begins, 0 for an octet that begins none.
size_t octets_after_lead(uint8_t lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC0 || lead > 0xFD) {
        return 0;
    }
    size_t octets = 2;
    for (uint8_t bit = 0x20; (lead & bit) != 0; bit >>= 1) {
        ++octets;
    }
    return octets;
}

uint32_t value_bits(uint8_t lead, size_t octets) {
    return octets == 1 ? lead : lead & (0x7Fu >> octets);
}

// Lead octets of characters of 2 to 6 octets.
constexpr uint8_t encoding_byte[] = {0xC0, 0xE0, 0xF0, 0xF8, 0xFC};

bool lets_through(const ASN1CharFilter* filter, uint32_t character) {
    if (filter == nullptr) {
        return true;
    }
    if (character < filter->lowest || character > filter->highest) {
        return false;
    }
    return filter->nchars == 0 || filter->chars == nullptr ||
           std::find(filter->chars, filter->chars + filter->nchars, character) !=
               filter->chars + filter->nchars;
}

// One character for each of `count` units, which `widen` turns into its value.
template <typename Unit, typename Widen>
ASN1_32BITCHARSTRING* widen_all(ASN1CTXT* ctxt, const Unit* text, size_t count, ASN1_32BITCHARSTRING* ucs,
                                const ASN1CharFilter* filter, Widen widen) {
    ucs->nchars = 0;
    ucs->data = nullptr;
    if (count > UINT32_MAX) {
        return nullptr;
    }
    ucs->data = static_cast<uint32_t*>(rtMemHeapAlloc(&ctxt->typeHeap, count * sizeof(uint32_t)));
    if (ucs->data == nullptr) {
        return nullptr;
    }
    for (size_t i = 0; i < count; ++i) {
        const uint32_t character = widen(text[i]);
        if (lets_through(filter, character)) {
            ucs->data[ucs->nchars++] = character;
        }
    }
    return ucs;
}

}  // namespace

extern "C" {

const uint8_t rtCtypeTable[256] = {
    0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0xa8, 0x28, 0x28, 0x28, 0x28, 0x20, 0x20,  // 00
    0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20,  // 10
    0x88, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,  // 20
    0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,  // 30
    0x10, 0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01,  // 40
    0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x10, 0x10, 0x10, 0x10, 0x10,  // 50
    0x10, 0x42, 0x42, 0x42, 0x42, 0x42, 0x42, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02,  // 60
    0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x10, 0x10, 0x10, 0x10, 0x20,  // 70
};

int rtUTF8Len(const char* text) {
    if (text == nullptr) {
        return 0;
    }
    size_t characters = 0;
    while (*text != '\0') {
        const size_t octets = octets_after_lead(static_cast<uint8_t>(*text));
        if (octets == 0) {
            return RT_E_INVUTF8;
        }
        text += strnlen(text, octets);
        ++characters;
    }
    return static_cast<int>(std::min<size_t>(characters, INT32_MAX));
}

size_t rtUTF8LenBytes(const char* text) {
    return text == nullptr ? 0 : std::strlen(text);
}

int rtUTF8CharSize(uint32_t value) {
    if (value < 0x80) {
        return 1;
    }
    int octets = 2;
    for (uint32_t limit = 0x800; octets < 6 && value >= limit; limit <<= 5) {
        ++octets;
    }
    return octets;
}

int rtUTF8EncodeChar(uint32_t value, char* out, size_t room) {
    const size_t octets = static_cast<size_t>(rtUTF8CharSize(value));
    if (octets > room) {
        return -1;
    }
    if (value > INT32_MAX) {
        return RT_E_INVUTF8;
    }
    if (octets == 1) {
        *out = static_cast<char>(value);
        return 1;
    }
    for (size_t i = octets; i-- > 1;) {
        out[i] = static_cast<char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    out[0] = static_cast<char>(encoding_byte[octets - 2] | value);
    return static_cast<int>(octets);
}

int rtUTF8DecodeChar(ASN1CTXT* /*ctxt*/, const char* in, size_t* size) {
    const size_t room = *size;
    *size = 0;
    if (room == 0) {
        return RT_E_INVUTF8;
    }
    const auto lead = static_cast<uint8_t>(in[0]);
    const size_t octets = octets_after_lead(lead);
    if (octets == 0) {
        return RT_E_INVUTF8;
    }
    // Intended: a character that is cut off counts with the bits that are there, and neither overlong
    // forms nor surrogates are refused.
    const size_t present = std::min(octets, room);
    uint32_t value = value_bits(lead, octets);
    for (size_t i = 1; i < present; ++i) {
        const auto octet = static_cast<uint8_t>(in[i]);
        if ((octet & 0xC0) != 0x80) {
            return RT_E_INVUTF8;
        }
        value = value << 6 | (octet & 0x3F);
    }
    *size = present;
    return static_cast<int>(value);  // at most 31 bits
}

int rtUTF8ToWCS(ASN1CTXT* ctxt, const char* text, wchar_t* out, size_t room) {
    size_t left = rtUTF8LenBytes(text);
    size_t characters = 0;
    while (left != 0) {
        if (out != nullptr && characters == room) {
            return -1;
        }
        size_t octets = left;
        const int value = rtUTF8DecodeChar(ctxt, text, &octets);
        if (value < 0) {
            return value;
        }
        if (out != nullptr) {
            out[characters] = static_cast<wchar_t>(value);
        }
        ++characters;
        text += octets;
        left -= octets;
    }
    return static_cast<int>(std::min<size_t>(characters, INT32_MAX));
}

int rtWCSToUTF8(ASN1CTXT* /*ctxt*/, const wchar_t* wide, size_t count, char* out, size_t room) {
    size_t written = 0;
    room = std::min<size_t>(room, INT32_MAX);  // what the result can say
    for (size_t i = 0; i < count; ++i) {
        const auto value = static_cast<uint32_t>(wide[i]);
        if (value > INT32_MAX) {
            return RT_E_INVUTF8;
        }
        // Intended: only ASCII may take the last octet of the room.
        const size_t left = room - written;
        const int octets =
            rtUTF8EncodeChar(value, out + written, value < 0x80 || left == 0 ? left : left - 1);
        if (octets < 0) {
            return octets;
        }
        written += static_cast<size_t>(octets);
    }
    return static_cast<int>(written);
}

char* rtUTF8Strdup(ASN1CTXT* ctxt, const char* text) {
    const size_t octets = rtUTF8LenBytes(text);
    auto* copy = static_cast<char*>(rtMemHeapAlloc(&ctxt->typeHeap, octets + 1));
    if (copy == nullptr) {
        return nullptr;
    }
    if (octets != 0) {
        std::memcpy(copy, text, octets);
    }
    copy[octets] = '\0';
    return copy;
}

ASN1_32BITCHARSTRING* rtCToUCSString(ASN1CTXT* ctxt, const char* text, ASN1_32BITCHARSTRING* ucs,
                                     const ASN1CharFilter* filter) {
    return widen_all(ctxt, text, rtUTF8LenBytes(text), ucs, filter,
                     [](char c) { return uint32_t{static_cast<uint8_t>(c)}; });
}

ASN1_32BITCHARSTRING* rtWCSToUCSString(ASN1CTXT* ctxt, const wchar_t* wide, ASN1_32BITCHARSTRING* ucs,
                                       const ASN1CharFilter* filter) {
    // Intended: characters narrow to 16 bits.
    return widen_all(ctxt, wide, wide == nullptr ? 0 : std::wcslen(wide), ucs, filter,
                     [](wchar_t c) { return static_cast<uint32_t>(c) & 0xFFFF; });
}

wchar_t* rtUCSToWCSString(const ASN1_32BITCHARSTRING* ucs, wchar_t* wide, size_t room) {
    size_t stored = 0;
    for (uint32_t i = 0; i < ucs->nchars && stored < room; ++i) {
        if (ucs->data[i] < 0x10000) {
            wide[stored++] = static_cast<wchar_t>(ucs->data[i]);
        }
    }
    if (stored < room) {
        wide[stored] = L'\0';
    }
    return wide;
}

}  // extern "C"
