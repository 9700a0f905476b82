#include "platform/detail/object_id.h"

#include <charconv>
#include <cstring>
#include <limits>

namespace Quillmark::platform {

namespace {

constexpr std::size_t kMaxArcDigits = 20;  // of 2^64 - 1
constexpr std::uint64_t kMaxArc = std::numeric_limits<std::uint64_t>::max();

constexpr std::size_t kMaxSubidentifierOctets = 10;  // seven bits each, so the first of ten holds one bit

// One subidentifier of a well-formed identifier: seven bits an octet, bit 8 set in all but the last.
std::uint64_t take_subidentifier(const std::uint8_t*& position) noexcept {
    std::uint64_t value = 0;
    bool is_last = false;
    while (!is_last) {
        value = value << 7 | (*position & 0x7Fu);
        is_last = (*position++ & 0x80) == 0;
    }
    return value;
}

// The first subidentifier holds two arcs: X * 40 + Y, where X is 0 to 2 and Y below 40 unless X is 2
// (8.19.4).
std::uint64_t first_arc(std::uint64_t subidentifier) {
    return subidentifier < 80 ? subidentifier / 40 : 2;
}

template <typename Visit>
void for_each_arc(Octets content, Visit&& visit) {
    const std::uint8_t* position = content.data();
    const std::uint8_t* const end = position + content.size();
    const std::uint64_t first = take_subidentifier(position);
    visit(first_arc(first));
    visit(first - 40 * first_arc(first));
    while (position != end) {
        visit(take_subidentifier(position));
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
    if (content.empty() || (content.back() & 0x80) != 0) {
        return false;  // no arc, or the last one without its end
    }
    std::size_t octets = 0;  // of the subidentifier so far
    std::uint8_t first = 0;
    for (const std::uint8_t octet : content) {
        first = octets == 0 ? octet : first;
        ++octets;
        // X.690 8.19.2: no leading octet 80.
        if (first == 0x80 || octets > kMaxSubidentifierOctets ||
            (octets == kMaxSubidentifierOctets && first > 0x81)) {
            return false;
        }
        octets = (octet & 0x80) != 0 ? octets : 0;
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
    content.reserve(
        static_cast<std::size_t>(cursor.end - text));  // an arc never takes more octets than characters
    append_subidentifier(first * 40 + second, content);
    while (cursor.position != cursor.end) {
        append_subidentifier(cursor.take_arc(), content);
    }
    return content;
}

}  // namespace Quillmark::platform
