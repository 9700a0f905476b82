#include "tests/asn1data/decoding_rules.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "runtime/status.h"

namespace Quillmark::test {
namespace {

class RuleReader : public PrimitiveReader {
  public:
    explicit RuleReader(std::span<const std::uint8_t> octets) : PrimitiveReader(octets) {}

    int read(const TypeDescription& type, Value& value) { return read(type, Tagging::kExplicit, 0, value); }
    int open_message();

  private:
    int read(const TypeDescription& type, Tagging tagging, int length, Value& value);
    int read_kind(const TypeDescription& type, Tagging tagging, int length, Value& value);
    int check(const TypeDescription& type, const Value& value);

    int sequence(const TypeDescription& type, Tagging tagging, int length, Value& value);
    int sequence_elements(const TypeDescription& type, const Contents& contents, Value& value);
    bool may_be_here(const ElementDescription& element);
    int sequence_element(const ElementDescription& element, Value& value);
    int tagged_element(const ElementDescription& element, int length, Value& value);
    int unknown_elements(const Contents& contents, Value& value);
    int set(const TypeDescription& type, Tagging tagging, int length, Value& value);
    int set_member(const ElementDescription& element, std::size_t start, int length, Value& value);
    int choice(const TypeDescription& type, Value& value);
    int alternative(const ElementDescription& element, std::size_t start, int length, Value& value);
    int list(const TypeDescription& type, Tagging tagging, int length, Value& value);
    int count_elements(const Contents& contents, std::size_t& count);
    int carried_values(const TypeDescription& type, Value& value);
    int carried_value(const ObjectDescription& object, Value& open);

    std::size_t element_start_ = 0;
};

// Bounds

std::int64_t size_of(const TypeDescription& type, const Value& value) {
    const auto octets = static_cast<std::int64_t>(value.contents.size());
    switch (type.kind) {
        case Kind::kUnsigned:
        case Kind::kUnsigned16: {
            Octets magnitude = value.contents;
            magnitude.insert(magnitude.begin(), 0);
            return number_of(magnitude);
        }
        case Kind::kInteger:
        case Kind::kEnumerated:
            return number_of(value.contents);
        case Kind::kText16:
            return octets / 2;
        case Kind::kText32:
            return octets / 4;
        case Kind::kBits:
        case Kind::kSizedBits:
            return (octets - 1) * 8 - value.contents.front();
        case Kind::kList:
        case Kind::kArray:
            return static_cast<std::int64_t>(value.parts.size());
        default:
            return octets;
    }
}

bool is_untagged_choice(const TypeDescription& type) {
    return type.kind == Kind::kChoice && type.application < 0;
}

bool begins_with(const ElementDescription& element, std::uint32_t word) {
    const auto words = tag_words(element);
    return std::ranges::find(words, word) != words.end();
}

/// Whether what came is the DEFAULT: for a flag the very octet.
bool is_default(const ElementDescription& element, const Value& part) {
    if (!element.default_number) {
        return false;
    }
    return element.type->kind == Kind::kBoolean ? part.contents.front() == *element.default_number
                                                : number_of(part.contents) == *element.default_number;
}

/// What a record can hold of a value: a text ends at its first NUL, a number has no redundant octets.
void as_held(const TypeDescription& type, Value& value) {
    if (type.kind == Kind::kText) {
        value.contents.erase(std::ranges::find(value.contents, 0), value.contents.end());
    } else if (type.kind == Kind::kInteger || type.kind == Kind::kUnsigned ||
               type.kind == Kind::kUnsigned16 || type.kind == Kind::kEnumerated) {
        value.contents = number_contents(size_of(type, value));
    }
}

int RuleReader::check(const TypeDescription& type, const Value& value) {
    if (!type.bounds) {
        return RT_OK;
    }
    const std::int64_t size = size_of(type, value);
    if (size >= type.bounds->low && size <= type.bounds->high) {
        return RT_OK;
    }
    return type.kind == Kind::kEnumerated ? RT_E_INVENUM : RT_E_CONSVIO;
}

// Types

int RuleReader::read(const TypeDescription& type, Tagging tagging, int length, Value& value) {
    value = Value();
    value.type = &type;
    const int status = read_kind(type, tagging, length, value);
    if (status != RT_OK) {
        return status;
    }
    as_held(type, value);
    return check(type, value);
}

int RuleReader::read_kind(const TypeDescription& type, Tagging tagging, int length, Value& value) {
    switch (type.kind) {
        case Kind::kBoolean:
            return boolean(tagging, length, value);
        case Kind::kInteger:
        case Kind::kUnsigned:
        case Kind::kUnsigned16:
        case Kind::kBigInteger:
        case Kind::kBigMagnitude:
        case Kind::kEnumerated:
            return number(type, tagging, length, value);
        case Kind::kNull:
            return null(tagging);
        case Kind::kObjectIdentifier:
            return identifier(tagging, length, value);
        case Kind::kText:
        case Kind::kText16:
        case Kind::kText32:
        case Kind::kOctets:
        case Kind::kSizedOctets:
            return string(type, tagging, length, value);
        case Kind::kBits:
        case Kind::kSizedBits:
            return bits(type, tagging, length, value);
        case Kind::kOpen:
        case Kind::kCarried:
            return open(value);
        case Kind::kSequence:
            return sequence(type, tagging, length, value);
        case Kind::kSet:
            return set(type, tagging, length, value);
        case Kind::kChoice:
            return choice(type, value);
        case Kind::kList:
        case Kind::kArray:
            return list(type, tagging, length, value);
    }
    return RT_E_NOTSUPP;
}

/// The value of an element behind its own tag, whose header has been read.
int RuleReader::tagged_element(const ElementDescription& element, int length, Value& value) {
    if (element.explicit_tag) {
        return read(*element.type, Tagging::kExplicit, 0, value);
    }
    if (element.type->kind != Kind::kOpen) {
        return read(*element.type, Tagging::kImplicit, length, value);
    }
    // Kept with its own tag in the place of the implicit one.
    position_ = element_start_;
    const int status = read(*element.type, Tagging::kExplicit, 0, value);
    if (status == RT_OK && !value.contents.empty()) {
        value.contents.front() = static_cast<std::uint8_t>(0x20 | element.type->universal);
    }
    return status;
}

int RuleReader::sequence(const TypeDescription& type, Tagging tagging, int length, Value& value) {
    if (tagging == Tagging::kExplicit) {
        const int status = match_either_form(0x30, length);
        if (status != RT_OK) {
            return status;
        }
    }
    const int status = sequence_elements(type, {position_, length}, value);
    return status == RT_OK ? carried_values(type, value) : status;
}

/// Whether the element that is due is the next one; when only trying tells, it is.
bool RuleReader::may_be_here(const ElementDescription& element) {
    if (element.tag) {
        return (octets_[position_] & kWithoutForm) == (0x80 | *element.tag);
    }
    const TypeDescription& type = *element.type;
    if (element.may_be_absent && is_untagged_choice(type)) {
        const auto words = tag_words(type);
        return std::ranges::find(words, peek_word()) != words.end();
    }
    return true;
}

int RuleReader::sequence_element(const ElementDescription& element, Value& value) {
    element_start_ = position_;
    if (!element.tag) {
        return read(*element.type, Tagging::kExplicit, 0, value);
    }
    int length = 0;
    constructed_ = (octets_[position_++] & 0x20) != 0;
    const int status = take_length(length);
    return status == RT_OK ? tagged_element(element, length, value) : status;
}

int RuleReader::sequence_elements(const TypeDescription& type, const Contents& contents, Value& value) {
    value.parts.assign(type.elements.size(), Value());
    std::size_t missing = 0;
    for (std::size_t i = 0; i < type.elements.size(); ++i) {
        const ElementDescription& element = type.elements[i];
        missing += element.may_be_absent ? 0 : 1;
        if (!more(contents) || !may_be_here(element)) {
            continue;
        }
        const std::size_t start = position_;
        Value part;
        const int status = sequence_element(element, part);
        if (status == RT_E_IDNOTFOUND && element.may_be_absent && !element.tag &&
            !is_untagged_choice(*element.type)) {
            position_ = start;
            continue;
        }
        if (status != RT_OK) {
            return status;
        }
        missing -= element.may_be_absent ? 0 : 1;
        value.parts[i] = is_default(element, part) ? Value() : std::move(part);
    }
    const int status = type.extensible ? unknown_elements(contents, value) : RT_OK;
    if (status != RT_OK) {
        return status;
    }
    if (more(contents)) {
        return RT_E_SEQOVFL;
    }
    return missing == 0 ? RT_OK : RT_E_SETMISSING;
}

int RuleReader::unknown_elements(const Contents& contents, Value& value) {
    while (more(contents)) {
        Value unknown;
        const int status = open(unknown);
        if (status != RT_OK) {
            return status;
        }
        value.beyond.push_back(unknown.contents);
    }
    return RT_OK;
}

int RuleReader::set(const TypeDescription& type, Tagging tagging, int length, Value& value) {
    if (tagging == Tagging::kExplicit) {
        const int status = match_either_form(0x31, length);
        if (status != RT_OK) {
            return status;
        }
    }
    value.parts.assign(type.elements.size(), Value());
    const Contents contents{position_, length};
    while (more(contents)) {
        const std::size_t start = position_;
        std::uint32_t word = 0;
        int element_length = 0;
        int status = take_header(word, element_length);
        if (status != RT_OK) {
            return status;
        }
        const auto found = std::ranges::find_if(
            type.elements, [&](const ElementDescription& element) { return begins_with(element, word); });
        if (found == type.elements.end()) {
            return RT_E_NOTINSET;
        }
        Value& part = value.parts[static_cast<std::size_t>(found - type.elements.begin())];
        if (part.present()) {
            return RT_E_SETDUP;
        }
        status = set_member(*found, start, element_length, part);
        if (status != RT_OK) {
            return status;
        }
    }
    for (std::size_t i = 0; i < type.elements.size(); ++i) {
        if (!type.elements[i].may_be_absent && !value.parts[i].present()) {
            return RT_E_SETMISSING;
        }
    }
    return RT_OK;
}

int RuleReader::set_member(const ElementDescription& element, std::size_t start, int length, Value& value) {
    element_start_ = start;
    if (element.tag) {
        return tagged_element(element, length, value);
    }
    position_ = start;
    return read(*element.type, Tagging::kExplicit, 0, value);
}

int RuleReader::choice(const TypeDescription& type, Value& value) {
    std::uint32_t word = 0;
    int length = 0;
    if (type.application >= 0) {
        const int status = match_either_form(static_cast<std::uint8_t>(0x60 | type.application), length);
        if (status != RT_OK) {
            return status;
        }
    }
    const std::size_t start = position_;
    int status = take_header(word, length);
    if (status != RT_OK) {
        return status;
    }
    const auto found = std::ranges::find_if(
        type.elements, [&](const ElementDescription& one) { return begins_with(one, word); });
    if (found == type.elements.end()) {
        return RT_E_INVOPT;
    }
    value.selected = static_cast<std::size_t>(found - type.elements.begin()) + 1;
    value.parts.resize(1);
    return alternative(*found, start, length, value.parts.front());
}

int RuleReader::alternative(const ElementDescription& element, std::size_t start, int length, Value& value) {
    element_start_ = start;
    if (element.tag) {
        return tagged_element(element, length, value);
    }
    if (element.type->kind != Kind::kChoice && element.type->kind != Kind::kOpen) {
        return read(*element.type, Tagging::kImplicit, length, value);
    }
    position_ = start;
    return read(*element.type, Tagging::kExplicit, 0, value);
}

int RuleReader::list(const TypeDescription& type, Tagging tagging, int length, Value& value) {
    if (tagging == Tagging::kExplicit) {
        const int status = match_either_form(static_cast<std::uint8_t>(0x20 | type.universal), length);
        if (status != RT_OK) {
            return status;
        }
    }
    const Contents contents{position_, length};
    std::size_t most = std::numeric_limits<std::size_t>::max();
    if (type.kind == Kind::kArray) {
        const int status = count_elements(contents, most);
        if (status != RT_OK) {
            return status;
        }
    }
    while (value.parts.size() < most && more(contents)) {
        Value element;
        const int status = read(*type.element, Tagging::kExplicit, 0, element);
        if (status != RT_OK) {
            return status;
        }
        value.parts.push_back(std::move(element));
    }
    return more(contents) ? RT_E_SEQOVFL : RT_OK;
}

/// An array counts its elements before it reads them.
int RuleReader::count_elements(const Contents& contents, std::size_t& count) {
    for (count = 0; more(contents); ++count) {
        std::uint32_t word = 0;
        int length = 0;
        const int status = take_header(word, length);
        if (status != RT_OK) {
            return status;
        }
        position_ += static_cast<std::size_t>(std::max(length, 0));
    }
    position_ = contents.start;
    return RT_OK;
}

// Open types

int RuleReader::carried_values(const TypeDescription& type, Value& value) {
    for (std::size_t i = 0; i < type.elements.size(); ++i) {
        const ElementDescription& open = type.elements[i];
        Value& part = value.parts[i];
        if (open.identifier < 0 || !part.present()) {
            continue;
        }
        if (open.type->kind == Kind::kOctets) {
            part.view = part.contents;
        }
        const ObjectDescription* object =
            object_for(open, value.parts[static_cast<std::size_t>(open.identifier)]);
        if (object == nullptr) {
            continue;
        }
        const bool is_list = open.type->kind == Kind::kList;
        for (std::size_t k = 0; k < (is_list ? part.parts.size() : 1); ++k) {
            const int status = carried_value(*object, is_list ? part.parts[k] : part);
            if (status != RT_OK) {
                return status;
            }
        }
    }
    return RT_OK;
}

int RuleReader::carried_value(const ObjectDescription& object, Value& open) {
    if (open.contents.empty()) {
        return RT_OK;
    }
    // The header is looked at also for an object that carries no type.
    RuleReader inner(open.contents);
    int status = inner.open_message();
    if (status != RT_OK || object.carried == nullptr) {
        return status;
    }
    Value carried;
    status = inner.read(*object.carried, carried);
    met_.ended_early = met_.ended_early || inner.met().ended_early;
    met_.open_at_end = met_.open_at_end || inner.met().open_at_end;
    met_.any_type = met_.any_type || inner.met().any_type;
    met_.not_told = met_.not_told || inner.met().not_told;
    open.carried.push_back(std::move(carried));
    return status;
}

/// Holds the outermost length against the octets and goes back to the start when it fits.
int RuleReader::open_message() {
    std::uint32_t word = 0;
    int length = 0;
    const int status = take_header(word, length);
    if (status != RT_OK) {
        position_ = status == RT_E_INVLEN ? 0 : position_;
        return status;
    }
    if (static_cast<std::size_t>(length) > left()) {
        return RT_E_INVLEN;
    }
    size_ = position_ + static_cast<std::size_t>(length);
    position_ = 0;
    return RT_OK;
}

Reading reading_of(RuleReader& reader, const TypeDescription& type) {
    Reading reading{};
    reading.status = reader.read(type, reading.value);
    reading.met = reader.met();
    return reading;
}

}  // namespace

Reading read_by_rule(const TypeDescription& type, std::span<const std::uint8_t> octets) {
    RuleReader reader(octets);
    return reading_of(reader, type);
}

Reading read_message_by_rule(const TypeDescription& type, std::span<const std::uint8_t> octets) {
    RuleReader reader(octets);
    if (!octets.empty()) {
        reader.open_message();
    }
    return reading_of(reader, type);
}

}  // namespace Quillmark::test
