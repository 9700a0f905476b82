#include "fuzz/ber_form.h"

#include <optional>

namespace Quillmark::fuzz {

namespace {

constexpr int kDeepest = 200;

/// Takes octets from the front; empty-handed at the end.
class Reader {
  public:
    explicit Reader(Octets octets) : rest_(octets) {}

    bool at_end() const { return rest_.empty(); }
    std::optional<std::uint8_t> octet() {
        if (rest_.empty()) {
            return std::nullopt;
        }
        const std::uint8_t first = rest_[0];
        rest_ = rest_.subspan(1);
        return first;
    }
    std::optional<Octets> octets(std::size_t count) {
        if (count > rest_.size()) {
            return std::nullopt;
        }
        const Octets taken = rest_.first(count);
        rest_ = rest_.subspan(count);
        return taken;
    }

  private:
    Octets rest_;
};

constexpr std::uint8_t kBitString = 0x03;
constexpr std::uint8_t kOctetString = 0x04;
constexpr std::uint8_t kObjectId = 0x06;
constexpr std::uint8_t kRegisteredId = 0x88;  // of a GeneralName (RFC 5280 4.2.1.6)

constexpr std::uint8_t kPrimitiveSequence =
    0x10;  // these must be constructed (8.9.1, 8.11.1); the codec takes them
constexpr std::uint8_t kPrimitiveSet = 0x11;
constexpr std::uint8_t kPrimitiveExplicit = 0x80;  // behind an identifier (8.14.3)

constexpr std::uint8_t kEndOfContents = 0x00;

// Behind a longer tag the codec goes on as if it were not there.
constexpr std::uint32_t kLargestTagNumber = 0x1FFFFFFF;

/// The first octet of a tag (8.1.2).
std::optional<std::uint8_t> read_tag(Reader& in) {
    const auto first = in.octet();
    if (!first || *first == kEndOfContents) {
        return std::nullopt;
    }
    if ((*first & 0x1F) != 0x1F) {
        return first;
    }
    std::uint32_t number = 0;
    for (auto more = in.octet(); more && number <= kLargestTagNumber >> 7; more = in.octet()) {
        number = number << 7 | (*more & 0x7F);
        if ((*more & 0x80) == 0) {
            return first;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> read_length(Reader& in) {
    const auto first = in.octet();
    if (!first || *first == 0x80) {
        return std::nullopt;
    }
    if (*first < 0x80) {
        return *first;
    }
    const auto octets = in.octets(*first & 0x7F);
    if (!octets || octets->size() > 4) {
        return std::nullopt;
    }
    std::size_t length = 0;
    for (const std::uint8_t octet : *octets) {
        length = length << 8 | octet;
    }
    return length;
}

/// Whether the arcs (8.19) end with the contents and are such as the texts of OBJECT IDENTIFIERs have.
bool has_whole_arcs(Octets contents) {
    std::uint64_t arc = 0;
    for (const std::uint8_t octet : contents) {
        arc = arc << 7 | (octet & 0x7F);
        if (arc >= 0xFFFFFFFF) {
            return false;
        }
        if ((octet & 0x80) == 0) {
            arc = 0;
        }
    }
    return contents.empty() || (contents.back() & 0x80) == 0;
}

/// Whether a primitive element seems to hold others, which begin with a SEQUENCE, a SET or a tag of their
/// own. Strings do in certificates and their extensions (RFC 5280 4.1, 4.2), and the codec takes a tag that
/// should be constructed.
bool holds_elements(std::uint8_t tag, Octets contents) {
    const bool may = tag == kBitString || tag == kOctetString || (tag & 0xE0) == 0x80;
    return may && !contents.empty() &&
           (contents[0] == 0x30 || contents[0] == 0x31 || (contents[0] & 0xF0) == 0xA0);
}

std::optional<std::uint8_t> read_element(Reader& in, int depth);

bool read_elements(Octets contents, int depth) {
    Reader in(contents);
    bool after_object_id = false;
    while (!in.at_end()) {
        const auto tag = read_element(in, depth);
        if (!tag || (after_object_id && *tag == kPrimitiveExplicit)) {
            return false;
        }
        after_object_id = *tag == kObjectId;
    }
    return true;
}

/// Takes an element and returns the first octet of its tag; nothing when it is not whole.
std::optional<std::uint8_t> read_element(Reader& in, int depth) {
    const auto tag = depth <= kDeepest ? read_tag(in) : std::nullopt;
    if (!tag) {
        return std::nullopt;
    }
    const auto length = read_length(in);
    const auto contents = length ? in.octets(*length) : std::nullopt;
    if (!contents || *tag == kPrimitiveSequence || *tag == kPrimitiveSet) {
        return std::nullopt;
    }
    bool whole = true;
    if (*tag == kObjectId || *tag == kRegisteredId) {
        whole = has_whole_arcs(*contents);
    } else if ((*tag & 0x20) != 0) {
        whole = read_elements(*contents, depth + 1);
    } else {
        const Octets held = *tag == kBitString && !contents->empty() ? contents->subspan(1) : *contents;
        whole = !holds_elements(*tag, held) || read_elements(held, depth + 1);
    }
    return whole ? tag : std::nullopt;
}

}  // namespace

bool is_whole(Octets octets) {
    Reader in(octets);
    return read_element(in, 0).has_value();
}

}  // namespace Quillmark::fuzz
