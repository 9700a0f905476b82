#include "platform/detail/object_id.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <optional>

namespace Quillmark::platform {

namespace {

constexpr std::size_t kMaxArcDigits = 20;  // of 2^64 - 1
constexpr std::uint64_t kMaxArc = std::numeric_limits<std::uint64_t>::max();

// One subidentifier: seven bits an octet, bit 8 set in all but the last, no leading octet 80 (X.690 8.19.2).
std::optional<std::uint64_t> take_subidentifier(Octets& content) noexcept {
    if (content.empty() || content[0] == 0x80) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < content.size(); ++i) {
        if (value > kMaxArc >> 7) {
            return std::nullopt;
        }
        value = value << 7 | (content[i] & 0x7Fu);
        if ((content[i] & 0x80) == 0) {
            content = content.subspan(i + 1);
            return value;
        }
    }
    return std::nullopt;
}

// The first subidentifier holds two arcs: X * 40 + Y, where X is 0 to 2 and Y below 40 unless X is 2
// (8.19.4).
std::uint64_t first_arc(std::uint64_t subidentifier) {
    return subidentifier < 80 ? subidentifier / 40 : 2;
}

template <typename Visit>
void for_each_arc(Octets content, Visit&& visit) {
    const std::uint64_t first = *take_subidentifier(content);
    visit(first_arc(first));
    visit(first - 40 * first_arc(first));
    while (!content.empty()) {
        visit(*take_subidentifier(content));
    }
}

std::size_t digit_count(std::uint64_t value) {
    std::size_t count = 1;
    for (; value >= 10; value /= 10) {
        ++count;
    }
    return count;
}

void append_subidentifier(std::uint64_t value, Bytes& out) {
    int shift = 0;
    while (shift < 63 && value >> shift >= 0x80) {
        shift += 7;
    }
    for (; shift > 0; shift -= 7) {
        out.push_back(static_cast<std::uint8_t>(0x80 | (value >> shift & 0x7F)));
    }
    out.push_back(static_cast<std::uint8_t>(value & 0x7F));
}

struct TextCursor {
    const char* position;
    const char* end;

    // Decimal digits and, unless the text ends, the point behind them with a digit to follow.
    std::uint64_t take_arc() {
        std::uint64_t value = 0;
        const auto [stop, error] = std::from_chars(position, end, value);
        if (error != std::errc{} || stop == position) {
            throw Failure{CRYPT_E_OID_FORMAT};
        }
        position = stop;
        if (position != end && (*position++ != '.' || position == end)) {
            throw Failure{CRYPT_E_OID_FORMAT};
        }
        return value;
    }
};

}  // namespace

bool is_object_id(Octets content) noexcept {
    if (content.empty()) {
        return false;
    }
    while (!content.empty()) {
        if (!take_subidentifier(content)) {
            return false;
        }
    }
    return true;
}

Octets next_object_id(DerWalker& walker) {
    const Element element = walker.next(kObjectId);
    if (!is_object_id(element.content)) {
        throw Failure{CRYPT_E_ASN1_CORRUPT};
    }
    return element.content;
}

std::size_t object_id_text_size(Octets content) noexcept {
    std::size_t size = 0;
    for_each_arc(content, [&](std::uint64_t arc) { size += digit_count(arc) + 1; });
    return size - 1;  // a point between two arcs, none behind the last
}

char* write_object_id_text(Octets content, char* out) noexcept {
    for_each_arc(content, [&](std::uint64_t arc) {
        out = std::to_chars(out, out + kMaxArcDigits, arc).ptr;
        *out++ = '.';
    });
    out[-1] = '\0';
    return out;
}

std::string object_id_text(Octets content) {
    std::string text(object_id_text_size(content), '\0');
    write_object_id_text(content, text.data());
    return text;
}

Bytes object_id_from_text(const char* text) {
    if (text == nullptr) {
        throw Failure{E_INVALIDARG};
    }
    TextCursor cursor{text, text + std::strlen(text)};
    const std::uint64_t first = cursor.take_arc();
    if (first > 2 || cursor.position == cursor.end) {
        throw Failure{CRYPT_E_OID_FORMAT};
    }
    const std::uint64_t second = cursor.take_arc();
    if ((first < 2 && second >= 40) || second > kMaxArc - 80) {
        throw Failure{CRYPT_E_OID_FORMAT};
    }
    Bytes content;
    append_subidentifier(first * 40 + second, content);
    while (cursor.position != cursor.end) {
        append_subidentifier(cursor.take_arc(), content);
    }
    return content;
}

}  // namespace Quillmark::platform
