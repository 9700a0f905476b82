#pragma once

// Octets as pairs of hexadecimal digits.

namespace Quillmark::detail {

/// White space of the C locale, whatever locale is set.
inline bool is_hex_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The value of a digit in either case, -1 for what is none.
inline int hex_digit_value(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const int letter = c | 0x20;  // in lower case
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

/// Hands each octet of `text` to `take`. White space between pairs is skipped, and the first thing that is no
/// pair ends the octets.
template <class Take>
void for_each_hex_octet(const char* text, Take take) {
    for (;;) {
        const int high = hex_digit_value(*text);
        if (high >= 0) {
            const int low = hex_digit_value(text[1]);
            if (low < 0) {
                return;
            }
            take(static_cast<unsigned char>(high << 4 | low));
            text += 2;
        } else if (is_hex_space(*text)) {
            ++text;
        } else {
            return;
        }
    }
}

}  // namespace Quillmark::detail
