#include "tests/robustness/shapes_octets.h"

namespace Quillmark::test {
namespace {

Octets header(std::uint8_t tag, std::size_t length) {
    if (length < 0x80) {
        return {tag, static_cast<std::uint8_t>(length)};
    }
    Octets octets;
    for (; length != 0; length >>= 8) {
        octets.insert(octets.begin(), static_cast<std::uint8_t>(length));
    }
    octets.insert(octets.begin(), static_cast<std::uint8_t>(0x80 | octets.size()));
    octets.insert(octets.begin(), tag);
    return octets;
}

}  // namespace

Octets wrap(std::uint8_t tag, Octets contents) {
    const Octets front = header(tag, contents.size());
    contents.insert(contents.begin(), front.begin(), front.end());
    return contents;
}

Octets wrap_indefinite(std::uint8_t tag, Octets contents) {
    contents.insert(contents.begin(), {tag, 0x80});
    contents.insert(contents.end(), {0x00, 0x00});
    return contents;
}

Octets repeated(const Octets& piece, std::size_t count) {
    Octets all;
    all.reserve(piece.size() * count);
    for (; count != 0; --count) {
        all.insert(all.end(), piece.begin(), piece.end());
    }
    return all;
}

Octets repeated(std::string_view hex, std::size_t count) {
    return repeated(from_hex(hex), count);
}

Octets filled(std::uint8_t tag, std::size_t count) {
    return wrap(tag, Octets(count, 0x55));
}

Octets nested(std::uint8_t tag, std::size_t levels, const Octets& inner) {
    // Written from the inside to the outside, backwards.
    Octets backwards(inner.rbegin(), inner.rend());
    for (; levels != 0; --levels) {
        const Octets front = header(tag, backwards.size());
        backwards.insert(backwards.end(), front.rbegin(), front.rend());
    }
    return Octets(backwards.rbegin(), backwards.rend());
}

Octets nested_headers(std::uint8_t tag, std::size_t levels) {
    return repeated(Octets{tag, 0x80}, levels);
}

Octets long_object_id(std::size_t arcs, std::size_t octets) {
    Octets contents = {0x2a};  // 1.2
    Octets arc(octets, 0xff);
    arc.front() = octets == 5 ? 0x8f : arc.front();  // 2^32 - 1 is the largest of the run-time
    arc.back() = 0x7f;
    for (std::size_t i = 2; i < arcs; ++i) {
        contents.insert(contents.end(), arc.begin(), arc.end());
    }
    return wrap(0x06, contents);
}

}  // namespace Quillmark::test
