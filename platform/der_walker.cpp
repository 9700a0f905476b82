#include "platform/detail/der_walker.h"

#include <algorithm>
#include <cstring>

namespace Quillmark::platform {

namespace {

constexpr std::uint8_t kConstructedBit = 0x20;
constexpr std::uint8_t kHighTagNumber = 0x1F;
constexpr std::size_t kMaxTagOctets = 6;  // identifier octets of a tag number of 32 bits
constexpr std::size_t kEndOfContents = 2;

struct Header {
    std::uint8_t tag;
    std::size_t octets;  // of identifier and length
    std::size_t length;  // of the content, in the definite form
    bool indefinite;
};

// X.690 8.1.2.4: identifier octets behind the first, the last of which has bit 8 clear.
ErrorCode read_high_tag(Octets from, ErrorCode overrun, std::size_t& position) {
    for (;;) {
        if (position == from.size()) {
            return overrun;
        }
        if (position == kMaxTagOctets) {
            return CRYPT_E_ASN1_CORRUPT;
        }
        if ((from[position++] & 0x80) == 0) {
            return ERROR_SUCCESS;
        }
    }
}

// X.690 8.1.3: short, long and indefinite form.
ErrorCode read_length(Octets from, ErrorCode overrun, std::size_t& position, Header& header) {
    if (position == from.size()) {
        return overrun;
    }
    const std::uint8_t first = from[position++];
    if (first < 0x80) {
        header.length = first;
        return ERROR_SUCCESS;
    }
    const std::size_t octet_count = first & 0x7Fu;
    header.indefinite = octet_count == 0;
    if (octet_count > sizeof(std::uint32_t)) {
        return CRYPT_E_ASN1_LARGE;
    }
    if (octet_count > from.size() - position) {
        return overrun;
    }
    for (const std::uint8_t octet : from.subspan(position, octet_count)) {
        header.length = header.length << 8 | octet;  // at most four octets, so no bit is lost
    }
    position += octet_count;
    return ERROR_SUCCESS;
}

ErrorCode read_header(Octets from, ErrorCode overrun, Header& header) {
    if (from.empty()) {
        return overrun;
    }
    header = {.tag = from[0], .octets = 0, .length = 0, .indefinite = false};
    std::size_t position = 1;
    if ((header.tag & kHighTagNumber) == kHighTagNumber) {
        if (const ErrorCode code = read_high_tag(from, overrun, position); code != ERROR_SUCCESS) {
            return code;
        }
    }
    if (const ErrorCode code = read_length(from, overrun, position, header); code != ERROR_SUCCESS) {
        return code;
    }
    header.octets = position;
    if (header.length > from.size() - position) {
        return overrun;
    }
    const bool constructed = (header.tag & kConstructedBit) != 0;
    return header.indefinite && !constructed ? CRYPT_E_ASN1_CORRUPT : ERROR_SUCCESS;
}

bool is_end_of_contents(Octets from) {
    return from.size() >= 2 && from[0] == 0 && from[1] == 0;
}

// The content of an element of indefinite length ends at its end-of-contents octets (X.690 8.1.5); those of
// the elements within are counted off, while definite lengths are stepped over.
ErrorCode measure_indefinite(Octets content, ErrorCode overrun, std::size_t& size) {
    std::size_t position = 0;
    for (int open = 1;;) {
        const Octets rest = content.subspan(position);
        if (is_end_of_contents(rest)) {
            if (--open == 0) {
                size = position;
                return ERROR_SUCCESS;
            }
            position += kEndOfContents;
            continue;
        }
        Header header{};
        if (const ErrorCode code = read_header(rest, overrun, header); code != ERROR_SUCCESS) {
            return code;
        }
        if (header.tag == 0 || (header.indefinite && ++open > kMaxNesting)) {
            return CRYPT_E_ASN1_CORRUPT;
        }
        position += header.octets + header.length;
    }
}

void append_segments(const Element& string, int depth, Bytes& joined) {
    if (string.tag == kOctetString) {
        joined.insert(joined.end(), string.content.begin(), string.content.end());
        return;
    }
    if (string.tag != kConstructedOctetString) {
        throw Failure{CRYPT_E_ASN1_BADTAG};
    }
    if (depth == kMaxNesting) {
        throw Failure{CRYPT_E_ASN1_CORRUPT};
    }
    for (DerWalker segments(string); !segments.at_end();) {
        append_segments(segments.next(), depth + 1, joined);
    }
}

}  // namespace

bool equal(Octets left, Octets right) {
    return left.size() == right.size() &&
           (left.empty() || std::memcmp(left.data(), right.data(), left.size()) == 0);
}

ErrorCode read_element(Octets from, ErrorCode overrun, Element& element) noexcept {
    Header header{};
    if (const ErrorCode code = read_header(from, overrun, header); code != ERROR_SUCCESS) {
        return code;
    }
    if (header.tag == 0) {
        return CRYPT_E_ASN1_CORRUPT;  // reserved for end-of-contents octets (X.690 8.1.5), and none end here
    }
    std::size_t size = header.length;
    std::size_t end_octets = 0;
    if (header.indefinite) {
        const ErrorCode code = measure_indefinite(from.subspan(header.octets), overrun, size);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        end_octets = kEndOfContents;
    }
    element = {.tag = header.tag,
               .whole = from.first(header.octets + size + end_octets),
               .content = from.subspan(header.octets, size)};
    return ERROR_SUCCESS;
}

bool is_one_element(Octets octets) noexcept {
    Element element;
    return read_element(octets, CRYPT_E_ASN1_EOD, element) == ERROR_SUCCESS &&
           element.whole.size() == octets.size();
}

Element DerWalker::next() {
    Element element;
    if (const ErrorCode code = read_element(left_, overrun_, element); code != ERROR_SUCCESS) {
        throw Failure{code};
    }
    left_ = left_.subspan(element.whole.size());
    return element;
}

Element DerWalker::next(std::uint8_t tag) {
    if (!left_.empty() && left_.front() != tag) {
        throw Failure{CRYPT_E_ASN1_BADTAG};
    }
    return next();
}

std::optional<Element> DerWalker::next_if(std::uint8_t tag) {
    if (!next_is(tag)) {
        return std::nullopt;
    }
    return next();
}

void DerWalker::expect_end() const {
    if (!at_end()) {
        throw Failure{CRYPT_E_ASN1_CORRUPT};
    }
}

void append_octet_string(const Element& string, Bytes& joined) {
    append_segments(string, 0, joined);
}

}  // namespace Quillmark::platform
