#include "inspect/element.h"

#include <cstdint>

#include "asn1/codec.h"

namespace inspect {

namespace {

using namespace Quillmark;

constexpr unsigned char kConstructed = 0x20;
constexpr unsigned char kHighTagNumber = 0x1F;
constexpr std::size_t kMaxTagOctets = 6;  // identifier octets of a tag number of 32 bits
constexpr std::size_t kEndOfContents = 2;
// As deep as the library's decoders follow.
constexpr int kMaxDepth = 64;

struct Header {
    std::size_t octets = 0;  // of identifier and length
    std::size_t length = 0;  // of the content, in the definite form
    bool indefinite = false;
};

Octets part(const Octets& octets, std::size_t from, std::size_t size) {
    return {octets.data + from, size, octets.offset + from};
}

Octets behind(const Octets& octets, std::size_t count) {
    return part(octets, count, octets.size - count);
}

unsigned char octet_at(const Octets& octets, std::size_t position) {
    if (position >= octets.size) {
        throw Malformed(octets.offset, "the octets end within the header of this element");
    }
    return octets.data[position];
}

// X.690 8.1.2.4: octets behind the first, the last of which has bit 8 clear.
std::size_t identifier_octets(const Octets& from) {
    std::size_t count = 1;
    if ((from.data[0] & kHighTagNumber) != kHighTagNumber) {
        return count;
    }
    while ((octet_at(from, count++) & 0x80) != 0) {
        if (count > kMaxTagOctets) {
            throw Malformed(from.offset, "the tag number of this element is too large");
        }
    }
    return count;
}

// X.690 8.1.3: short, long and indefinite form.
Header read_header(const Octets& from) {
    Header header;
    if (octet_at(from, 0) == 0) {
        throw Malformed(from.offset, "no element begins with an octet 00");
    }
    header.octets = identifier_octets(from);
    const unsigned char first = octet_at(from, header.octets++);
    if (first < 0x80) {
        header.length = first;
        return header;
    }
    const std::size_t count = first & 0x7Fu;
    if (count > sizeof(std::uint32_t)) {
        throw Malformed(from.offset, "the length of this element has more than four octets");
    }
    for (std::size_t i = 0; i < count; ++i) {
        header.length = header.length << 8 | octet_at(from, header.octets++);
    }
    header.indefinite = count == 0;
    if (header.indefinite && (from.data[0] & kConstructed) == 0) {
        throw Malformed(from.offset, "this element is primitive and has no length");
    }
    return header;
}

void require_length(const Octets& from, const Header& header) {
    const std::size_t left = from.size - header.octets;
    if (header.length > left) {
        throw Malformed(from.offset, "the length of this element (" + tag_name(from.data[0]) + ") is " +
                                         std::to_string(header.length) + ", but " + std::to_string(left) +
                                         " octets are left");
    }
}

bool at_end_of_contents(const Octets& from) {
    return from.size >= kEndOfContents && from.data[0] == 0 && from.data[1] == 0;
}

// X.690 8.1.5: the end-of-contents octets of the elements within are counted off, definite lengths stepped
// over.
std::size_t indefinite_length(const Octets& element, const Octets& content) {
    std::size_t position = 0;
    for (int open = 1;;) {
        const Octets rest = behind(content, position);
        if (rest.size == 0) {
            throw Malformed(element.offset, "the end of this element is missing");
        }
        if (at_end_of_contents(rest)) {
            if (--open == 0) {
                return position;
            }
            position += kEndOfContents;
            continue;
        }
        const Header header = read_header(rest);
        require_length(rest, header);
        if (header.indefinite && ++open > kMaxDepth) {
            throw Malformed(rest.offset, "elements lie too deep within each other");
        }
        position += header.octets + header.length;
    }
}

Element read_element(const Octets& from) {
    const Header header = read_header(from);
    require_length(from, header);
    Element element;
    element.tag = from.data[0];
    element.indefinite = header.indefinite;
    std::size_t size = header.length;
    if (header.indefinite) {
        size = indefinite_length(from, behind(from, header.octets));
    }
    element.content = part(from, header.octets, size);
    element.whole = part(from, 0, header.octets + size + (header.indefinite ? kEndOfContents : 0));
    return element;
}

// The element as far as it goes.
Element read_clipped(const Octets& from) {
    const Header header = read_header(from);
    Element element;
    element.tag = from.data[0];
    element.indefinite = header.indefinite;
    element.whole = from;
    element.content = behind(from, header.octets);
    return element;
}

void check_nesting(const Octets& octets, int depth) {
    for (Elements elements(octets); !elements.at_end();) {
        const Element element = elements.next();
        if ((element.tag & kConstructed) == 0) {
            continue;
        }
        if (depth == kMaxDepth) {
            throw Malformed(element.whole.offset, "elements lie too deep within each other");
        }
        check_nesting(element.content, depth + 1);
    }
}

const char* universal_name(unsigned int number) {
    static const char* const kNames[] = {"end of contents",
                                         "BOOLEAN",
                                         "INTEGER",
                                         "BIT STRING",
                                         "OCTET STRING",
                                         "NULL",
                                         "OBJECT IDENTIFIER",
                                         "ObjectDescriptor",
                                         "EXTERNAL",
                                         "REAL",
                                         "ENUMERATED",
                                         "EMBEDDED PDV",
                                         "UTF8String",
                                         "RELATIVE-OID",
                                         "TIME",
                                         nullptr,
                                         "SEQUENCE",
                                         "SET",
                                         "NumericString",
                                         "PrintableString",
                                         "TeletexString",
                                         "VideotexString",
                                         "IA5String",
                                         "UTCTime",
                                         "GeneralizedTime",
                                         "GraphicString",
                                         "VisibleString",
                                         "GeneralString",
                                         "UniversalString",
                                         "CHARACTER STRING",
                                         "BMPString"};
    return number < sizeof kNames / sizeof *kNames ? kNames[number] : nullptr;
}

}  // namespace

Octets octets_of(const CBlob& blob) {
    return {blob.pbData(), blob.cbData(), 0};
}

CBlob to_blob(const Octets& octets) {
    return CBlob(octets.data, octets.size);
}

std::string tag_name(unsigned char tag) {
    static const char* const kClasses[] = {"UNIVERSAL ", "APPLICATION ", "", "PRIVATE "};
    const unsigned int number = tag & kHighTagNumber;
    const char* name = universal_name(number);
    if (tag < 0x40 && name != nullptr) {
        return name;
    }
    return std::string("[") + kClasses[tag >> 6] +
           (number == kHighTagNumber ? "31 or more" : std::to_string(number)) + "]";
}

Element Elements::next() {
    const Element element = read_element(left_);
    left_ = behind(left_, element.whole.size);
    return element;
}

std::vector<Element> outline(const Octets& octets, std::size_t limit) {
    std::vector<Element> found;
    Octets left = octets;
    try {
        while (left.size != 0 && found.size() < limit) {
            Elements elements(left);
            found.push_back(elements.next());
            left = behind(left, found.back().whole.size);
        }
    } catch (const Malformed&) {
        try {
            found.push_back(read_clipped(left));
        } catch (const Malformed&) {
            return found;  // not even a header
        }
    }
    return found;
}

void check_nesting(const Octets& octets) {
    check_nesting(octets, 0);
}

std::string object_id(const Element& element) {
    CStringProxy text("");
    try {
        ASN1::asn1Decode<ASN1::ASN1TObjId_traits>(to_blob(element.whole), text);
    } catch (const CAtlException&) {
        throw Malformed(element.whole.offset, "this is no object identifier");
    }
    return text.c_str();
}

}  // namespace inspect
