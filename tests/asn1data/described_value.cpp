#include "tests/asn1data/described_value.h"

#include <algorithm>
#include <stdexcept>

namespace Quillmark::test {
namespace {

constexpr std::uint32_t kConstructed = 0x20000000;
constexpr std::uint32_t kApplication = 0x40000000;
constexpr std::uint32_t kContext = 0x80000000;

bool is_constructed(const TypeDescription& type) {
    switch (type.kind) {
        case Kind::kSequence:
        case Kind::kSet:
        case Kind::kList:
        case Kind::kArray:
            return true;
        default:
            return type.kind == Kind::kOpen && type.universal != 0;
    }
}

std::uint8_t identifier_octet(std::uint32_t word) {
    const std::uint32_t number = word & 0x1FFFFFFF;
    if (number > 30) {
        throw std::logic_error("tag numbers above 30 are not described");
    }
    return static_cast<std::uint8_t>(word >> 24 | number);
}

Encoding encoded(const Value& value, const std::string& path);

Encoding wrapped(std::uint32_t word, Encoding inner, const std::string& path) {
    Encoding outer;
    outer.octets = element(identifier_octet(word), inner.octets);
    const std::size_t header = outer.octets.size() - inner.octets.size();
    outer.marks.push_back({0, path});
    for (const Mark& mark : inner.marks) {
        outer.marks.push_back({mark.offset + header, mark.path});
    }
    return outer;
}

void append(Encoding& all, const Encoding& part) {
    for (const Mark& mark : part.marks) {
        all.marks.push_back({mark.offset + all.octets.size(), mark.path});
    }
    all.octets.insert(all.octets.end(), part.octets.begin(), part.octets.end());
}

Encoding element_encoding(const ElementDescription& element, const Value& value, const std::string& path) {
    if (!element.tag) {
        return encoded(value, path);
    }
    const std::uint32_t word = tag_words(element).front();
    if (element.explicit_tag) {
        return wrapped(word, encoded(value, path + ".inner"), path);
    }
    if (value.type->kind == Kind::kOpen) {
        // Kept with its own tag, which the implicit one replaces.
        Encoding kept{value.contents, {{0, path}}};
        kept.octets.front() = identifier_octet(word);
        return kept;
    }
    // The contents behind the header of the value
    const Encoding own = encoded(value, path);
    const std::size_t header = own.octets[1] < 0x80 ? 2 : 2 + (own.octets[1] & 0x7F);
    Encoding contents;
    contents.octets.assign(own.octets.begin() + static_cast<std::ptrdiff_t>(header), own.octets.end());
    for (std::size_t i = 1; i < own.marks.size(); ++i) {
        contents.marks.push_back({own.marks[i].offset - header, own.marks[i].path});
    }
    return wrapped(word, contents, path);
}

Encoding structure_contents(const Value& value, const std::string& path) {
    Encoding all;
    const auto elements = value.type->elements;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (value.parts[i].present()) {
            append(all, element_encoding(elements[i], value.parts[i], path + "." + elements[i].name));
        }
    }
    for (const Octets& unknown : value.beyond) {
        append(all, {unknown, {{0, path + ".unknown"}}});
    }
    return all;
}

Encoding list_contents(const Value& value, const std::string& path) {
    std::vector<Encoding> encodings;
    for (std::size_t i = 0; i < value.parts.size(); ++i) {
        encodings.push_back(encoded(value.parts[i], path + "[" + std::to_string(i) + "]"));
    }
    if (value.type->sorted) {
        std::ranges::stable_sort(encodings, {}, &Encoding::octets);
    }
    Encoding all;
    for (const Encoding& one : encodings) {
        append(all, one);
    }
    return all;
}

/// An element that holds another: marks within it only for a value that is decoded.
Encoding open_encoding(const Value& value, const std::string& path) {
    if (!value.carried.empty()) {
        return encoded(value.carried.front(), path);
    }
    return {value.contents, {{0, path}}};
}

Encoding string_contents(const Value& value, const std::string& path) {
    if (!value.carried.empty()) {
        return encoded(value.carried.front(), path + ".carried");
    }
    return {value.contents, {}};
}

Encoding encoded(const Value& value, const std::string& path) {
    const TypeDescription& type = *value.type;
    switch (type.kind) {
        case Kind::kSequence:
        case Kind::kSet:
            return wrapped(type.universal | kConstructed, structure_contents(value, path), path);
        case Kind::kList:
        case Kind::kArray:
            return wrapped(type.universal | kConstructed, list_contents(value, path), path);
        case Kind::kChoice: {
            const ElementDescription& chosen = type.elements[value.selected - 1];
            Encoding inner = element_encoding(chosen, value.parts.front(), path + "." + chosen.name);
            if (type.application < 0) {
                return inner;
            }
            return wrapped(tag_words(type).front(), std::move(inner), path);
        }
        case Kind::kOpen:
        case Kind::kCarried:
            return open_encoding(value, path);
        default:
            return wrapped(type.universal, string_contents(value, path), path);
    }
}

}  // namespace

Encoding der_of(const Value& value) {
    return encoded(value, *value.type->name == '\0' ? "value" : value.type->name);
}

Value in_order(Value value) {
    for (Value& part : value.parts) {
        part = part.present() ? in_order(part) : part;
    }
    for (Value& carried : value.carried) {
        carried = in_order(carried);
    }
    if (value.present() && value.type->sorted) {
        std::ranges::stable_sort(value.parts, {}, [](const Value& part) { return der_of(part).octets; });
    }
    return value;
}

std::vector<std::uint32_t> tag_words(const TypeDescription& type) {
    if (type.application >= 0) {
        return {kApplication | kConstructed | static_cast<std::uint32_t>(type.application)};
    }
    if (type.kind == Kind::kChoice) {
        std::vector<std::uint32_t> words;
        for (const ElementDescription& alternative : type.elements) {
            std::ranges::copy(tag_words(alternative), std::back_inserter(words));
        }
        return words;
    }
    if (type.universal == 0) {
        return {};
    }
    return {type.universal | (is_constructed(type) ? kConstructed : 0)};
}

std::vector<std::uint32_t> tag_words(const ElementDescription& element) {
    if (!element.tag) {
        return tag_words(*element.type);
    }
    const bool constructed = element.explicit_tag || is_constructed(*element.type);
    return {kContext | *element.tag | (constructed ? kConstructed : 0)};
}

Octets number_contents(std::int64_t number) {
    Octets contents;
    do {
        contents.insert(contents.begin(), static_cast<std::uint8_t>(number & 0xFF));
        number >>= 8;
    } while (!(number == 0 && contents.front() < 0x80) && !(number == -1 && contents.front() >= 0x80));
    return contents;
}

std::int64_t number_of(const Octets& contents) {
    std::int64_t number = contents.empty() || contents.front() < 0x80 ? 0 : -1;
    for (const std::uint8_t octet : contents) {
        number = static_cast<std::int64_t>(static_cast<std::uint64_t>(number) << 8 | octet);
    }
    return number;
}

Octets arcs_contents(std::span<const std::uint32_t> arcs) {
    Octets contents;
    for (std::size_t i = 1; i < arcs.size(); ++i) {
        std::uint64_t rest = i == 1 ? std::uint64_t{arcs[0]} * 40 + arcs[1] : arcs[i];
        Octets group = {static_cast<std::uint8_t>(rest & 0x7F)};
        for (rest >>= 7; rest != 0; rest >>= 7) {
            group.insert(group.begin(), static_cast<std::uint8_t>(0x80 | (rest & 0x7F)));
        }
        contents.insert(contents.end(), group.begin(), group.end());
    }
    return contents;
}

std::vector<std::uint32_t> arcs_of(const Octets& contents) {
    std::vector<std::uint32_t> arcs;
    std::uint32_t arc = 0;
    for (const std::uint8_t octet : contents) {
        arc = arc << 7 | (octet & 0x7F);
        if (octet >= 0x80) {
            continue;
        }
        if (arcs.empty()) {
            arcs.push_back(std::min<std::uint32_t>(arc / 40, 2));
            arc -= arcs.front() * 40;
        }
        arcs.push_back(arc);
        arc = 0;
    }
    return arcs;
}

const ObjectDescription* object_for(const ElementDescription& open, const Value& identifier) {
    for (const ObjectDescription& object : open.objects) {
        if (arcs_contents(object.arcs) == identifier.contents) {
            return &object;
        }
    }
    return nullptr;
}

std::string to_text(const Value& value) {
    if (!value.present()) {
        return "-";
    }
    std::string text = value.selected == 0 ? "" : std::to_string(value.selected) + ":";
    text += to_hex(value.contents);
    if (!value.parts.empty()) {
        text += "{";
        for (const Value& part : value.parts) {
            text += " " + to_text(part);
        }
        text += " }";
    }
    for (const Octets& unknown : value.beyond) {
        text += " +" + to_hex(unknown);
    }
    for (const Value& carried : value.carried) {
        text += "=" + to_text(carried);
    }
    return value.view.empty() ? text : text + "/" + to_hex(value.view);
}

}  // namespace Quillmark::test
