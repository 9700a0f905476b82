#pragma once

// Decimal numbers in texts of fixed shape.

#include <algorithm>
#include <iterator>

namespace Quillmark::detail {

/// Writes `value` in at least `least_digits` digits, at most ten, as "%.*d" does. Returns the end.
inline char* put_decimal(char* out, int value, int least_digits) {
    auto rest = static_cast<unsigned>(value);
    if (value < 0) {
        *out++ = '-';
        rest = 0 - rest;
    }
    char digits[10];
    char* first = std::end(digits);
    for (; rest != 0 || least_digits > 0; rest /= 10, --least_digits) {
        *--first = static_cast<char>('0' + rest % 10);
    }
    return std::copy(first, std::end(digits), out);
}

}  // namespace Quillmark::detail
