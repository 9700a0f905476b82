#include "authority/text.h"

#include <algorithm>
#include <cstring>

namespace authority {

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";
constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kOctetsOfLine = 48;

// The value of a digit, -1 for other characters.
int value_of(char digit, const char* digits) {
    const char* found = digit != '\0' ? std::strchr(digits, digit) : nullptr;
    return found != nullptr ? static_cast<int>(found - digits) : -1;
}

bool is_space(char character) {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

// One to three octets as four characters.
void add_group(std::string& text, const unsigned char* octets, std::size_t size) {
    unsigned int bits = 0;
    for (std::size_t index = 0; index < 3; ++index) {
        bits = bits << 8 | (index < size ? octets[index] : 0U);
    }
    for (std::size_t index = 0; index < 4; ++index) {
        text += index <= size ? kBase64Digits[bits >> (18 - 6 * index) & 0x3F] : '=';
    }
}

}  // namespace

std::string to_hex(const unsigned char* octets, std::size_t size) {
    std::string text;
    for (std::size_t index = 0; index < size; ++index) {
        text += kHexDigits[octets[index] >> 4];
        text += kHexDigits[octets[index] & 0x0F];
    }
    return text;
}

std::optional<std::vector<unsigned char>> from_hex(const std::string& text) {
    std::vector<unsigned char> octets;
    for (std::size_t index = 0; index + 1 < text.size(); index += 2) {
        const int high = value_of(text[index], kHexDigits);
        const int low = value_of(text[index + 1], kHexDigits);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        octets.push_back(static_cast<unsigned char>(high << 4 | low));
    }
    return text.size() % 2 == 0 ? std::make_optional(octets) : std::nullopt;
}

std::string to_base64(const unsigned char* octets, std::size_t size) {
    std::string text;
    for (std::size_t index = 0; index < size; index += 3) {
        add_group(text, octets + index, std::min<std::size_t>(size - index, 3));
        if ((index + 3) % kOctetsOfLine == 0 || index + 3 >= size) {
            text += '\n';
        }
    }
    return text;
}

std::optional<std::vector<unsigned char>> from_base64(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(), is_space), text.end());
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    const std::size_t padding = text.size() - (text.find_last_not_of('=') + 1);
    if (padding > 2) {
        return std::nullopt;
    }
    text.resize(text.size() - padding);
    std::vector<unsigned char> octets;
    unsigned int bits = 0;
    unsigned int bit_count = 0;
    for (const char digit : text) {
        const int value = value_of(digit, kBase64Digits);
        if (value < 0) {
            return std::nullopt;
        }
        bits = (bits << 6 | static_cast<unsigned int>(value)) & 0xFFFF;
        bit_count += 6;
        if (bit_count >= 8) {
            bit_count -= 8;
            octets.push_back(static_cast<unsigned char>(bits >> bit_count));
        }
    }
    return octets;
}

}  // namespace authority
