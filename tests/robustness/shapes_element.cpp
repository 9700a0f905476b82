#include "tests/robustness/shapes_element.h"

namespace Quillmark::test {
namespace {

struct Reader {
    const std::uint8_t* position;
    const std::uint8_t* end;
};

Octets read_identifier(Reader& in) {
    Octets identifier = {*in.position++};
    if ((identifier.front() & 0x1f) == 0x1f) {
        do {
            identifier.push_back(*in.position++);
        } while ((identifier.back() & 0x80) != 0);
    }
    return identifier;
}

std::size_t read_length(Reader& in) {
    const std::uint8_t first = *in.position++;
    if (first < 0x80) {
        return first;
    }
    std::size_t length = 0;
    for (int octets = first & 0x7f; octets != 0; --octets) {
        length = length << 8 | *in.position++;
    }
    return length;
}

Element read_element(Reader& in) {
    Element element{read_identifier(in), {}, {}};
    const std::size_t length = read_length(in);
    Reader contents{in.position, in.position + length};
    in.position = contents.end;
    if (!element.constructed()) {
        element.contents.assign(contents.position, contents.end);
        return element;
    }
    while (contents.position != contents.end) {
        element.children.push_back(read_element(contents));
    }
    return element;
}

}  // namespace

Element element_of(const Octets& der) {
    Reader in{der.data(), der.data() + der.size()};
    return read_element(in);
}

Octets encode(const Element& element) {
    Octets contents = element.contents;
    for (const Element& child : element.children) {
        const Octets octets = encode(child);
        contents.insert(contents.end(), octets.begin(), octets.end());
    }
    Octets octets = wrap(element.identifier.front(), std::move(contents));
    octets.insert(octets.begin() + 1, element.identifier.begin() + 1, element.identifier.end());
    return octets;
}

void for_each_element(Element& root, const std::function<void(Element&)>& visit) {
    for (Element& child : root.children) {
        for_each_element(child, visit);
    }
    const Element before = root;
    visit(root);
    root = before;
}

}  // namespace Quillmark::test
