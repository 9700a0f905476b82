#include "tests/asn1data/described_samples.h"

#include <algorithm>
#include <stdexcept>

#include "runtime/status.h"

namespace Quillmark::test {
namespace {

constexpr int kFullLevels = 2;  // further down all is empty, so that encodings stay short
constexpr int kMostLevels = 40;

bool is_list(const TypeDescription& type) {
    return type.kind == Kind::kList || type.kind == Kind::kArray;
}

bool is_structure(const TypeDescription& type) {
    return type.kind == Kind::kSequence || type.kind == Kind::kSet;
}

bool is_number(const TypeDescription& type) {
    return type.kind == Kind::kInteger || type.kind == Kind::kUnsigned || type.kind == Kind::kUnsigned16 ||
           type.kind == Kind::kEnumerated;
}

bool is_text(const TypeDescription& type) {
    return type.kind == Kind::kText || type.kind == Kind::kText16 || type.kind == Kind::kText32;
}

/// Makes values; no two of a kind are alike as far as the type allows.
class Builder {
  public:
    Value empty(const TypeDescription& type) { return value(type, 0, 0); }
    Value full(const TypeDescription& type, int levels) { return value(type, levels, 0); }
    Value list(const TypeDescription& type, std::size_t count, int levels);
    Value sized(const TypeDescription& type, std::int64_t size);
    Value alternative(const TypeDescription& choice, std::size_t selected, Value chosen);
    Value element(const ElementDescription& element, int levels) { return value(*element.type, levels, 0); }
    /// Sets an open element and the identifier that tells its type: the one of `object`, with a value of its
    /// type, or one that is in no set.
    void set_open(Value& structure, std::size_t index, const ObjectDescription* object, int levels);

  private:
    Value value(const TypeDescription& type, int levels, int depth);
    Value structure(const TypeDescription& type, int levels, int depth);
    Value carrying(const TypeDescription& type, const Value* carried);
    Octets unknown_element(const TypeDescription& type);
    std::uint8_t next() { return static_cast<std::uint8_t>(1 + counter_++ % 100); }

    unsigned counter_ = 0;
};

Value Builder::value(const TypeDescription& type, int levels, int depth) {
    if (depth > kMostLevels) {
        throw std::logic_error("a type whose smallest value has no end");
    }
    Value made;
    made.type = &type;
    switch (type.kind) {
        case Kind::kSequence:
        case Kind::kSet:
            return structure(type, levels, depth);
        case Kind::kChoice: {
            const std::size_t chosen = levels == 0 ? 0 : next() % type.elements.size();
            return alternative(type, chosen + 1,
                               value(*type.elements[chosen].type, levels == 0 ? 0 : levels - 1, depth + 1));
        }
        case Kind::kList:
        case Kind::kArray: {
            const auto least = static_cast<std::size_t>(type.bounds ? type.bounds->low : 0);
            return list(type, levels == 0 ? least : std::max<std::size_t>(least, 1),
                        levels == 0 ? 0 : levels - 1);
        }
        case Kind::kBoolean:
            made.contents = {0xFF};
            return made;
        case Kind::kNull:
            return made;
        case Kind::kObjectIdentifier: {
            const std::uint32_t arcs[] = {1, 3, 9999, next()};
            made.contents = arcs_contents(arcs);
            return made;
        }
        case Kind::kBigInteger:
        case Kind::kBigMagnitude:
            made.contents = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, next()};
            return made;
        case Kind::kOpen:
        case Kind::kCarried:
            made.contents = unknown_element(type);
            return made;
        default: {
            const Bounds bounds = type.bounds.value_or(Bounds{0, kNoBound});
            const std::int64_t wanted = is_number(type) ? 20 + next() : 3;
            const std::int64_t room = type.room == 0                    ? kNoBound
                                      : type.kind == Kind::kSizedOctets ? type.room
                                                                        : std::int64_t{type.room} * 8;
            return sized(type, std::clamp(wanted, bounds.low, std::min(bounds.high, room)));
        }
    }
}

Octets Builder::unknown_element(const TypeDescription& type) {
    if (type.universal == 0) {
        return {0x04, 0x01, next()};
    }
    return {static_cast<std::uint8_t>(0x20 | type.universal), 0x03, 0x02, 0x01, next()};
}

/// A number, or a string of so many characters, octets or bits.
Value Builder::sized(const TypeDescription& type, std::int64_t size) {
    Value made;
    made.type = &type;
    if (is_number(type)) {
        made.contents = number_contents(size);
        return made;
    }
    const bool bits = type.kind == Kind::kBits || type.kind == Kind::kSizedBits;
    const std::size_t width = type.kind == Kind::kText16 ? 2 : type.kind == Kind::kText32 ? 4 : 1;
    const std::size_t count = static_cast<std::size_t>(bits ? (size + 7) / 8 : size) * width;
    made.contents.assign(count, 0);
    for (std::size_t i = width - 1; i < count; i += width) {
        made.contents[i] = static_cast<std::uint8_t>('0' + next() % 10);
    }
    if (bits) {
        const unsigned unused = static_cast<unsigned>((8 - size % 8) % 8);
        if (count != 0) {
            made.contents.back() = static_cast<std::uint8_t>(0x80 >> (7 - unused) & 0xFF);
        }
        made.contents.insert(made.contents.begin(), static_cast<std::uint8_t>(unused));
    }
    return made;
}

Value Builder::list(const TypeDescription& type, std::size_t count, int levels) {
    Value made;
    made.type = &type;
    for (std::size_t i = 0; i < count; ++i) {
        made.parts.push_back(value(*type.element, levels, 1));
    }
    return made;
}

Value Builder::alternative(const TypeDescription& choice, std::size_t selected, Value chosen) {
    Value made;
    made.type = &choice;
    made.selected = selected;
    made.parts.push_back(std::move(chosen));
    return made;
}

Value Builder::structure(const TypeDescription& type, int levels, int depth) {
    Value made;
    made.type = &type;
    for (const ElementDescription& element : type.elements) {
        const bool there = levels > 0 || !element.may_be_absent;
        made.parts.push_back(there ? value(*element.type, std::max(levels - 1, 0), depth + 1) : Value());
    }
    for (std::size_t i = 0; i < type.elements.size(); ++i) {
        const ElementDescription& element = type.elements[i];
        if (element.identifier < 0 || !made.parts[i].present()) {
            continue;
        }
        const auto typed = std::ranges::find_if(
            element.objects, [](const ObjectDescription& object) { return object.carried != nullptr; });
        const bool known = levels > 0 && typed != element.objects.end();
        set_open(made, i, known ? &*typed : nullptr, std::max(levels - 1, 0));
    }
    if (type.extensible && levels > 0) {
        made.beyond = {{0x04, 0x01, next()}, {0x02, 0x01, next()}};
    }
    return made;
}

/// A value of an open type, or of a string that holds one.
Value Builder::carrying(const TypeDescription& type, const Value* carried) {
    Value made;
    made.type = &type;
    made.contents = carried == nullptr ? unknown_element(type) : der_of(*carried).octets;
    if (type.kind == Kind::kOctets && carried == nullptr) {
        made.contents = {0x04, 0x01, next()};
    }
    if (carried != nullptr) {
        made.carried.push_back(*carried);
    }
    return made;
}

void Builder::set_open(Value& structure, std::size_t index, const ObjectDescription* object, int levels) {
    const ElementDescription& open = structure.type->elements[index];
    Value& identifier = structure.parts[static_cast<std::size_t>(open.identifier)];
    if (object != nullptr) {
        identifier.contents = arcs_contents(object->arcs);
    }
    const bool typed = object != nullptr && object->carried != nullptr;
    const auto one = [&] {
        const Value carried = typed ? value(*object->carried, levels, 1) : Value();
        return carrying(is_list(*open.type) ? *open.type->element : *open.type, typed ? &carried : nullptr);
    };
    Value& target = structure.parts[index];
    if (is_list(*open.type)) {
        target.type = open.type;
        target.parts = {one(), one(), one()};
        return;
    }
    target = one();
    if (open.type->kind == Kind::kOctets) {
        target.view = target.contents;
    }
}

/// Whether bounds of the type belong to the place where it stands, because it has no name of its own.
bool in_place(const TypeDescription& type) {
    return *type.name == '\0';
}

struct Edge {
    std::string name;
    std::int64_t size;
};

/// Sizes or numbers at the last good and the first bad side of each bound; what the room of the record
/// refuses is a bound as well.
std::vector<Edge> edges(const TypeDescription& type, bool good) {
    std::vector<Edge> found;
    if (type.bounds) {
        if (type.bounds->low > 0 || (good && type.bounds->low == 0)) {
            found.push_back({good ? "Least" : "BelowLeast", type.bounds->low - (good ? 0 : 1)});
        }
        if (type.bounds->high != kNoBound) {
            found.push_back({good ? "Most" : "AboveMost", type.bounds->high + (good ? 0 : 1)});
        }
    }
    if (type.room != 0 && (!type.bounds || type.bounds->high == kNoBound)) {
        const std::int64_t room = type.kind == Kind::kSizedBits ? std::int64_t{type.room} * 8 : type.room;
        found.push_back({good ? "FillsItsRoom" : "BeyondItsRoom", room + (good ? 0 : 1)});
    }
    return found;
}

Value at_edge(Builder& builder, const TypeDescription& type, std::int64_t size) {
    return is_list(type) ? builder.list(type, static_cast<std::size_t>(size), 0) : builder.sized(type, size);
}

/// Values of `type` at the edges of its own bounds, and of those of what is written in place in it.
std::vector<Sample> edge_samples(const TypeDescription& type, bool good) {
    Builder builder;
    std::vector<Sample> samples;
    for (const Edge& edge : edges(type, good)) {
        samples.push_back({edge.name, at_edge(builder, type, edge.size)});
    }
    if (is_list(type) && in_place(*type.element)) {
        for (const Edge& edge : edges(*type.element, good)) {
            Value list = builder.list(type, 1, 0);
            list.parts.front() = at_edge(builder, *type.element, edge.size);
            samples.push_back({"Element" + edge.name, std::move(list)});
        }
    }
    for (std::size_t i = 0; i < type.elements.size(); ++i) {
        const ElementDescription& element = type.elements[i];
        if (!in_place(*element.type)) {
            continue;
        }
        for (const Edge& edge : edges(*element.type, good)) {
            Value inner = at_edge(builder, *element.type, edge.size);
            Value outer;
            if (type.kind == Kind::kChoice) {
                outer = builder.alternative(type, i + 1, std::move(inner));
            } else {
                outer = builder.empty(type);
                outer.parts[i] = std::move(inner);
            }
            samples.push_back({std::string(element.name) + edge.name, std::move(outer)});
        }
    }
    return samples;
}

void add_choices(const TypeDescription& type, Builder& builder, std::vector<Sample>& samples) {
    for (std::size_t i = 0; i < type.elements.size(); ++i) {
        const std::string name = type.elements[i].name;
        const ElementDescription& chosen = type.elements[i];
        samples.push_back({name, builder.alternative(type, i + 1, builder.element(chosen, 0))});
        samples.push_back({name + "Full", builder.alternative(type, i + 1, builder.element(chosen, 1))});
    }
}

void add_structures(const TypeDescription& type, Builder& builder, std::vector<Sample>& samples) {
    samples.push_back({"Empty", builder.empty(type)});
    samples.push_back({"Full", builder.full(type, kFullLevels)});
    for (std::size_t i = 0; i < type.elements.size(); ++i) {
        const ElementDescription& element = type.elements[i];
        if (element.may_be_absent) {
            Value only = builder.empty(type);
            only.parts[i] = builder.element(element, 1);
            if (element.identifier >= 0) {
                builder.set_open(only, i, nullptr, 0);
            }
            samples.push_back({"Only_" + std::string(element.name), std::move(only)});
        }
        if (element.identifier < 0) {
            continue;
        }
        Value unknown = builder.empty(type);
        builder.set_open(unknown, i, nullptr, 0);
        samples.push_back({"UnknownIdentifier", std::move(unknown)});
        for (const ObjectDescription& object : element.objects) {
            Value known = builder.empty(type);
            builder.set_open(known, i, &object, 1);
            samples.push_back({object.name, std::move(known)});
        }
    }
}

void add_lists(const TypeDescription& type, Builder& builder, std::vector<Sample>& samples) {
    const Bounds bounds = type.bounds.value_or(Bounds{0, kNoBound});
    for (const std::int64_t count : {0, 1, 3}) {
        if (count >= bounds.low && count <= bounds.high) {
            samples.push_back({"Of" + std::to_string(count),
                               builder.list(type, static_cast<std::size_t>(count), count == 3 ? 0 : 1)});
        }
    }
}

/// Numbers on both sides of an octet's end and of the sign.
void add_numbers(const TypeDescription& type, Builder& builder, std::vector<Sample>& samples) {
    const Bounds bounds = type.bounds.value_or(Bounds{0, kNoBound});
    const std::int64_t most = type.kind == Kind::kUnsigned16 ? UINT16_MAX
                              : type.kind == Kind::kUnsigned ? UINT32_MAX
                                                             : INT32_MAX;
    for (const std::int64_t number : {std::int64_t{0}, std::int64_t{127}, std::int64_t{128},
                                      std::int64_t{255}, std::int64_t{256}, std::int64_t{32768}, most}) {
        if (number >= bounds.low && number <= std::min(bounds.high, most)) {
            samples.push_back({"Number" + std::to_string(number), builder.sized(type, number)});
        }
    }
    if (type.kind == Kind::kInteger && !type.bounds) {
        samples.push_back({"Negative", builder.sized(type, -1)});
        samples.push_back({"Lowest", builder.sized(type, INT32_MIN)});
    }
}

void add_big_numbers(const TypeDescription& type, Builder& builder, std::vector<Sample>& samples) {
    for (const Octets& contents : {Octets{0x00}, Octets{0x7F}, Octets{0x00, 0x80}, Octets{0x01, 0x00}}) {
        Value number = builder.empty(type);
        number.contents = contents;
        samples.push_back({"Big" + to_hex(contents), std::move(number)});
    }
    if (type.kind == Kind::kBigInteger) {
        Value negative = builder.empty(type);
        negative.contents = {0xFF, 0x00};
        samples.push_back({"BigNegative", std::move(negative)});
    }
}

}  // namespace

std::vector<Sample> good_samples(const TypeDescription& type) {
    Builder builder;
    std::vector<Sample> samples;
    if (is_structure(type)) {
        add_structures(type, builder, samples);
    } else if (type.kind == Kind::kChoice) {
        add_choices(type, builder, samples);
    } else if (is_list(type)) {
        add_lists(type, builder, samples);
    } else {
        samples.push_back({"Plain", builder.empty(type)});
        if (is_number(type)) {
            add_numbers(type, builder, samples);
        } else if (type.kind == Kind::kBigInteger || type.kind == Kind::kBigMagnitude) {
            add_big_numbers(type, builder, samples);
        } else if (type.kind == Kind::kBoolean) {
            samples.push_back({"False", samples.front().value});
            samples.back().value.contents = {0x00};
        } else if (is_text(type) || type.kind == Kind::kOctets || type.kind == Kind::kBits) {
            if (!type.bounds || type.bounds->low == 0) {
                samples.push_back({"NoCharacters", builder.sized(type, 0)});
            }
        }
    }
    const std::vector<Sample> at_edges = edge_samples(type, true);
    samples.insert(samples.end(), at_edges.begin(), at_edges.end());
    return samples;
}

std::vector<BadSample> bad_samples(const TypeDescription& type) {
    std::vector<BadSample> samples;
    for (const Sample& sample : edge_samples(type, false)) {
        // An enumeration is no constraint: its numbers have a status of their own.
        const auto enumerated = [&](const Value& part) {
            return part.present() && part.type->kind == Kind::kEnumerated && in_place(*part.type);
        };
        const bool is_enumeration =
            type.kind == Kind::kEnumerated || std::ranges::any_of(sample.value.parts, enumerated);
        samples.push_back({sample.name, sample.value, is_enumeration ? RT_E_INVENUM : RT_E_CONSVIO});
    }
    return samples;
}

Value empty_value(const TypeDescription& type) {
    return Builder().empty(type);
}

Value full_value(const TypeDescription& type) {
    return Builder().full(type, kFullLevels);
}

}  // namespace Quillmark::test
