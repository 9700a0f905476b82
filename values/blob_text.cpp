// Blobs from and to hexadecimal text.

#include "values/blob.h"

#include <cstring>
#include <optional>
#include <string>

namespace Quillmark {

namespace {

// White space of the C locale, whatever locale is set.
bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

const char* skip_space(const char* text) {
    while (is_space(*text)) {
        ++text;
    }
    return text;
}

std::optional<unsigned> digit_value(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return std::nullopt;
}

}  // namespace

void CBlob::readFromHexString(const char* text) {
    if (text == nullptr) {
        text = "";
    }
    const unsigned long most = std::strlen(text) / 2;
    if (cbData_ <= most) {
        resize_to(most + 1);
    }
    cbData_ = 0;
    for (text = skip_space(text); *text != '\0'; text = skip_space(text + 2)) {
        const std::optional<unsigned> high = digit_value(text[0]);
        const std::optional<unsigned> low = digit_value(text[1]);
        if (!high || !low) {
            return;
        }
        pbData_[cbData_++] = static_cast<unsigned char>(*high << 4 | *low);
    }
}

CStringProxy CBlob::writeToHexString(unsigned long group) const {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned long i = 0; i < cbData_; ++i) {
        if (group != 0 && i != 0 && i % group == 0) {
            text += ' ';
        }
        text += kDigits[pbData_[i] >> 4];
        text += kDigits[pbData_[i] & 0x0F];
    }
    return CStringProxy(text.c_str());
}

}  // namespace Quillmark
