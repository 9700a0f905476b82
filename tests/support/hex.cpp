#include "tests/support/hex.h"

#include <stdexcept>

namespace Quillmark::test {

namespace {

int digit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    throw std::invalid_argument(std::string("not a hexadecimal digit: ") + c);
}

}  // namespace

std::vector<std::uint8_t> from_hex(std::string_view text) {
    std::vector<std::uint8_t> octets;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == ' ' || text[i] == '\n') {
            ++i;
            continue;
        }
        if (i + 1 == text.size()) {
            throw std::invalid_argument("half an octet at the end");
        }
        octets.push_back(static_cast<std::uint8_t>(digit(text[i]) << 4 | digit(text[i + 1])));
        i += 2;
    }
    return octets;
}

std::string to_hex(const std::uint8_t* data, std::size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        if (i != 0) {
            text += ' ';
        }
        text += kDigits[data[i] >> 4];
        text += kDigits[data[i] & 0x0F];
    }
    return text;
}

}  // namespace Quillmark::test
