#include "tests/asn1data/described_record.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "runtime/list.h"
#include "runtime/object_id.h"
#include "runtime/value_types.h"

namespace Quillmark::test {
namespace {

template <typename Field>
Field& at(void* place, std::size_t offset = 0) {
    return *reinterpret_cast<Field*>(static_cast<std::uint8_t*>(place) + offset);
}

template <typename Field>
const Field& at(const void* place, std::size_t offset = 0) {
    return *reinterpret_cast<const Field*>(static_cast<const std::uint8_t*>(place) + offset);
}

// Filling

class Filler {
  public:
    explicit Filler(ASN1CTXT* ctxt) : ctxt_(ctxt) {}

    void fill(const Value& value, void* place);

  private:
    void* allocate(std::size_t size) {
        void* block = rtMemHeapAllocZ(&ctxt_->typeHeap, std::max<std::size_t>(size, 1));
        return block == nullptr ? throw std::bad_alloc() : block;
    }
    void* construct(const TypeDescription& type, void* place) {
        type.construct(place);
        return place;
    }
    void* make(const TypeDescription& type) {
        void* block = allocate(type.size);
        return type.size == 0 ? block : construct(type, block);
    }
    const std::uint8_t* copy(const Octets& octets, std::size_t spare = 0) {
        auto* block = static_cast<std::uint8_t*>(allocate(octets.size() + spare));
        std::ranges::copy(octets, block);
        return block;
    }
    const char* text(const Octets& octets) { return reinterpret_cast<const char*>(copy(octets, 1)); }

    void structure(const Value& value, void* record);
    void element(const ElementDescription& element, const Value& value, void* record);
    void absent(const ElementDescription& element, void* record);
    void choice(const Value& value, void* record);
    void list(const Value& value, void* record);
    void array(const Value& value, void* record);
    template <typename String>
    void wide_text(const Value& value, String& field);
    void sized(const Value& value, void* place);

    ASN1CTXT* ctxt_;
};

void Filler::fill(const Value& value, void* place) {
    const TypeDescription& type = *value.type;
    const Octets& contents = value.contents;
    switch (type.kind) {
        case Kind::kBoolean:
            at<std::uint8_t>(place) = contents.front();
            break;
        case Kind::kInteger:
            at<std::int32_t>(place) = static_cast<std::int32_t>(number_of(contents));
            break;
        case Kind::kUnsigned:
        case Kind::kEnumerated:
            at<std::uint32_t>(place) = static_cast<std::uint32_t>(number_of(contents));
            break;
        case Kind::kUnsigned16:
            at<std::uint16_t>(place) = static_cast<std::uint16_t>(number_of(contents));
            break;
        case Kind::kBigInteger:
        case Kind::kBigMagnitude: {
            const std::string digits = to_hex(contents);
            std::string joined = "0x";
            std::ranges::copy_if(digits, std::back_inserter(joined), [](char c) { return c != ' '; });
            at<const char*>(place) = text(Octets(joined.begin(), joined.end()));
            break;
        }
        case Kind::kNull:
            break;
        case Kind::kObjectIdentifier: {
            const std::vector<std::uint32_t> arcs = arcs_of(contents);
            at<ASN1TObjId>(place) = ASN1TObjId(static_cast<unsigned char>(arcs.size()), arcs.data());
            break;
        }
        case Kind::kText:
            at<const char*>(place) = text(contents);
            break;
        case Kind::kText16:
            wide_text(value, at<ASN1_16BITCHARSTRING>(place));
            break;
        case Kind::kText32:
            wide_text(value, at<ASN1_32BITCHARSTRING>(place));
            break;
        case Kind::kOctets:
            at<ASN1TDynOctStr>(place) = {static_cast<std::uint32_t>(contents.size()), copy(contents)};
            break;
        case Kind::kBits:
            at<ASN1TDynBitStr>(place) = {
                static_cast<std::uint32_t>(contents.size() - 1) * 8 - contents.front(),
                copy(Octets(contents.begin() + 1, contents.end()))};
            break;
        case Kind::kSizedOctets:
        case Kind::kSizedBits:
            sized(value, place);
            break;
        case Kind::kOpen:
            at<ASN1OpenType>(place) = {static_cast<std::uint32_t>(contents.size()), copy(contents)};
            break;
        case Kind::kCarried:
            if (value.carried.empty()) {
                at<ASN1OpenType>(place) = {static_cast<std::uint32_t>(contents.size()), copy(contents)};
            } else {
                void* record = make(*value.carried.front().type);
                fill(value.carried.front(), record);
                at<Asn1TObject>(place).decoded = record;
            }
            break;
        case Kind::kSequence:
        case Kind::kSet:
            structure(value, place);
            break;
        case Kind::kChoice:
            choice(value, place);
            break;
        case Kind::kList:
            list(value, place);
            break;
        case Kind::kArray:
            array(value, place);
            break;
    }
}

void Filler::structure(const Value& value, void* record) {
    const TypeDescription& type = *value.type;
    for (std::size_t i = 0; i < type.elements.size(); ++i) {
        if (value.parts[i].present()) {
            element(type.elements[i], value.parts[i], record);
        } else {
            absent(type.elements[i], record);
        }
        const int bit = type.elements[i].presence_bit;
        if (bit >= 0 && value.parts[i].present()) {
            at<std::uint32_t>(record, type.head) |= std::uint32_t{1} << bit;
        }
    }
    for (const Octets& unknown : value.beyond) {
        auto* one = static_cast<ASN1OpenType*>(allocate(sizeof(ASN1OpenType)));
        *one = {static_cast<std::uint32_t>(unknown.size()), copy(unknown)};
        rtDListAppend(ctxt_, &at<ASN1TSeqOfList>(record, type.body), one);
    }
}

void Filler::element(const ElementDescription& element, const Value& value, void* record) {
    if (element.type->kind == Kind::kOctets && !value.carried.empty()) {
        void* carried = make(*value.carried.front().type);
        fill(value.carried.front(), carried);
        at<Asn1TObject>(record, element.carried_offset).decoded = carried;
        return;
    }
    if (element.type->kind != Kind::kNull) {
        fill(value, &at<std::uint8_t>(record, element.offset));
    }
}

void Filler::absent(const ElementDescription& element, void* record) {
    if (!element.default_number) {
        return;
    }
    if (element.type->kind == Kind::kBigInteger) {
        const std::string number = std::to_string(*element.default_number);
        at<const char*>(record, element.offset) = text(Octets(number.begin(), number.end()));
        return;
    }
    Value standard;
    standard.type = element.type;
    standard.contents = number_contents(*element.default_number);
    fill(standard, &at<std::uint8_t>(record, element.offset));
}

void Filler::choice(const Value& value, void* record) {
    const ElementDescription& chosen = value.type->elements[value.selected - 1];
    const Value& alternative = value.parts.front();
    at<std::uint32_t>(record, value.type->head) = static_cast<std::uint32_t>(value.selected);
    if (chosen.type->kind == Kind::kNull) {
        return;
    }
    if (!chosen.indirect) {
        fill(alternative, &at<std::uint8_t>(record, chosen.offset));
        return;
    }
    void* place = make(*chosen.type);
    at<void*>(record, chosen.offset) = place;
    fill(alternative, place);
}

void Filler::list(const Value& value, void* record) {
    auto& list = static_cast<ASN1TSeqOfList&>(at<ASN1TPDUSeqOfList>(record));
    std::vector<Value> parts = value.parts;
    if (value.type->sorted) {
        std::ranges::reverse(parts);
    }
    for (const Value& part : parts) {
        void* one = make(*part.type);
        fill(part, one);
        rtDListAppend(ctxt_, &list, one);
    }
}

void Filler::array(const Value& value, void* record) {
    const TypeDescription& of = *value.type->element;
    at<std::uint32_t>(record, value.type->head) = static_cast<std::uint32_t>(value.parts.size());
    void* elements = allocate(of.size * value.parts.size());
    at<void*>(record, value.type->body) = elements;
    for (std::size_t i = 0; i < value.parts.size(); ++i) {
        const std::size_t from = value.type->sorted ? value.parts.size() - 1 - i : i;
        fill(value.parts[from], construct(of, &at<std::uint8_t>(elements, i * of.size)));
    }
}

template <typename String>
void Filler::wide_text(const Value& value, String& field) {
    using Character = std::remove_pointer_t<decltype(field.data)>;
    const std::size_t count = value.contents.size() / sizeof(Character);
    field.nchars = static_cast<std::uint32_t>(count);
    field.data = static_cast<Character*>(allocate(value.contents.size()));
    for (std::size_t i = 0; i < value.contents.size(); ++i) {
        Character& character = field.data[i / sizeof(Character)];
        character = static_cast<Character>(character << 8 | value.contents[i]);
    }
}

/// A count beyond the room is kept, the octets are not.
void Filler::sized(const Value& value, void* place) {
    const TypeDescription& type = *value.type;
    const bool bits = type.kind == Kind::kSizedBits;
    const Octets octets(value.contents.begin() + (bits ? 1 : 0), value.contents.end());
    const std::size_t count = bits ? octets.size() * 8 - value.contents.front() : octets.size();
    at<std::uint32_t>(place, type.head) = static_cast<std::uint32_t>(count);
    std::copy_n(octets.begin(), std::min<std::size_t>(octets.size(), type.room),
                &at<std::uint8_t>(place, type.body));
}

// Reading

Octets octets_at(const std::uint8_t* data, std::size_t count) {
    return count == 0 ? Octets() : Octets(data, data + count);
}

Octets bits_at(const std::uint8_t* data, std::uint32_t numbits) {
    Octets contents = octets_at(data, (numbits + 7) / 8);
    contents.insert(contents.begin(), static_cast<std::uint8_t>((8 - numbits % 8) % 8));
    return contents;
}

/// Contents of an INTEGER from its text: decimal, or the octets in hexadecimal with one further 0 in front
/// where the sign asks for it.
Octets big_contents(const std::string& text) {
    if (!text.starts_with("0x")) {
        return number_contents(std::stoll(text));
    }
    const std::string digits = text.substr(2);
    return from_hex(digits.size() % 2 == 0 ? digits : "0" + digits);
}

std::string text_at(const void* place) {
    const char* text = at<const char*>(place);
    return text == nullptr ? throw std::runtime_error("a text that is not there") : std::string(text);
}

template <typename String>
Octets wide_contents(const String& field) {
    Octets contents;
    for (std::uint32_t i = 0; i < field.nchars; ++i) {
        for (std::size_t shift = sizeof(*field.data); shift-- > 0;) {
            contents.push_back(static_cast<std::uint8_t>(field.data[i] >> (8 * shift)));
        }
    }
    return contents;
}

class Reader {
  public:
    Value read(const TypeDescription& type, const void* place, const ObjectDescription* object = nullptr);

  private:
    void structure(Value& value, const void* record);
    Value element(const Value& structure, const ElementDescription& element, const void* record);
    bool is_absent(const TypeDescription& type, const ElementDescription& element, const void* record);
    void choice(Value& value, const void* record);
    void list(Value& value, const void* record, const ObjectDescription* object);
    void array(Value& value, const void* record);
    void carried(Value& value, const Asn1TObject& field, const ObjectDescription* object);
};

Value Reader::read(const TypeDescription& type, const void* place, const ObjectDescription* object) {
    Value value;
    value.type = &type;
    switch (type.kind) {
        case Kind::kBoolean:
            value.contents = {at<std::uint8_t>(place)};
            break;
        case Kind::kInteger:
            value.contents = number_contents(at<std::int32_t>(place));
            break;
        case Kind::kUnsigned:
        case Kind::kEnumerated:
            value.contents = number_contents(at<std::uint32_t>(place));
            break;
        case Kind::kUnsigned16:
            value.contents = number_contents(at<std::uint16_t>(place));
            break;
        case Kind::kBigInteger:
        case Kind::kBigMagnitude:
            value.contents = big_contents(text_at(place));
            break;
        case Kind::kNull:
            break;
        case Kind::kObjectIdentifier: {
            const auto& oid = at<ASN1TObjId>(place);
            value.contents = arcs_contents({oid.subid, oid.numids});
            break;
        }
        case Kind::kText: {
            const std::string text = text_at(place);
            value.contents = Octets(text.begin(), text.end());
            break;
        }
        case Kind::kText16:
            value.contents = wide_contents(at<ASN1_16BITCHARSTRING>(place));
            break;
        case Kind::kText32:
            value.contents = wide_contents(at<ASN1_32BITCHARSTRING>(place));
            break;
        case Kind::kOctets:
        case Kind::kOpen: {
            const auto& field = at<ASN1TDynOctStr>(place);  // the two look alike
            value.contents = octets_at(field.data, field.numocts);
            break;
        }
        case Kind::kBits:
            value.contents = bits_at(at<ASN1TDynBitStr>(place).data, at<ASN1TDynBitStr>(place).numbits);
            break;
        case Kind::kSizedOctets:
            value.contents =
                octets_at(&at<std::uint8_t>(place, type.body), at<std::uint32_t>(place, type.head));
            break;
        case Kind::kSizedBits:
            value.contents =
                bits_at(&at<std::uint8_t>(place, type.body), at<std::uint32_t>(place, type.head));
            break;
        case Kind::kCarried:
            value.contents = octets_at(at<Asn1TObject>(place).data, at<Asn1TObject>(place).numocts);
            carried(value, at<Asn1TObject>(place), object);
            break;
        case Kind::kSequence:
        case Kind::kSet:
            structure(value, place);
            break;
        case Kind::kChoice:
            choice(value, place);
            break;
        case Kind::kList:
            list(value, place, object);
            break;
        case Kind::kArray:
            array(value, place);
            break;
    }
    return value;
}

void Reader::carried(Value& value, const Asn1TObject& field, const ObjectDescription* object) {
    if (field.decoded == nullptr) {
        return;
    }
    if (object == nullptr || object->carried == nullptr) {
        throw std::runtime_error("a carried record under an identifier that tells no type");
    }
    value.carried.push_back(read(*object->carried, field.decoded));
}

void Reader::structure(Value& value, const void* record) {
    const TypeDescription& type = *value.type;
    for (const ElementDescription& one : type.elements) {
        value.parts.push_back(is_absent(type, one, record) ? Value() : element(value, one, record));
    }
    if (!type.extensible) {
        return;
    }
    for (const auto* node = at<ASN1TSeqOfList>(record, type.body).head; node != nullptr; node = node->next) {
        const auto* unknown = static_cast<const ASN1OpenType*>(node->data);
        value.beyond.push_back(octets_at(unknown->data, unknown->numocts));
    }
}

Value Reader::element(const Value& structure, const ElementDescription& element, const void* record) {
    if (element.type->kind == Kind::kNull) {
        return read(*element.type, nullptr);
    }
    const ObjectDescription* object =
        element.identifier < 0
            ? nullptr
            : object_for(element, structure.parts.at(static_cast<std::size_t>(element.identifier)));
    Value value = read(*element.type, &at<std::uint8_t>(record, element.offset), object);
    if (element.identifier >= 0 && element.type->kind == Kind::kOctets) {
        const auto& beside = at<Asn1TObject>(record, element.carried_offset);
        value.view = octets_at(beside.data, beside.numocts);
        carried(value, beside, object);
    }
    return value;
}

bool Reader::is_absent(const TypeDescription& type, const ElementDescription& element, const void* record) {
    if (element.presence_bit >= 0) {
        return (at<std::uint32_t>(record, type.head) >> element.presence_bit & 1) == 0;
    }
    if (!element.default_number) {
        return false;
    }
    const Value field = read(*element.type, &at<std::uint8_t>(record, element.offset));
    return field.contents == number_contents(*element.default_number);
}

void Reader::choice(Value& value, const void* record) {
    value.selected = at<std::uint32_t>(record, value.type->head);
    if (value.selected == 0 || value.selected > value.type->elements.size()) {
        throw std::runtime_error("a CHOICE without an alternative");
    }
    const ElementDescription& chosen = value.type->elements[value.selected - 1];
    if (chosen.type->kind == Kind::kNull) {
        value.parts.push_back(read(*chosen.type, nullptr));
        return;
    }
    const void* place = &at<std::uint8_t>(record, chosen.offset);
    value.parts.push_back(read(*chosen.type, chosen.indirect ? at<const void*>(place) : place));
}

void Reader::list(Value& value, const void* record, const ObjectDescription* object) {
    const auto& list = static_cast<const ASN1TSeqOfList&>(at<ASN1TPDUSeqOfList>(record));
    for (const auto* node = list.head; node != nullptr; node = node->next) {
        value.parts.push_back(read(*value.type->element, node->data, object));
    }
    if (list.count != value.parts.size()) {
        throw std::runtime_error("a list that counts other than it has");
    }
}

void Reader::array(Value& value, const void* record) {
    const TypeDescription& of = *value.type->element;
    const auto* elements = at<const std::uint8_t*>(record, value.type->body);
    for (std::uint32_t i = 0; i < at<std::uint32_t>(record, value.type->head); ++i) {
        value.parts.push_back(read(of, elements + i * of.size));
    }
}

}  // namespace

void fill_record(ASN1CTXT* ctxt, const Value& value, void* place) {
    if (value.type->kind != Kind::kNull) {
        Filler(ctxt).fill(value, place);
    }
}

Value read_record(const TypeDescription& type, const void* place) {
    return Reader().read(type, place);
}

DescribedRecord::DescribedRecord(const TypeDescription& type)
    : type_(type), cells_(type.size / sizeof(std::max_align_t) + 1) {
    if (type.size != 0) {
        type.construct(cells_.data());
    }
}

}  // namespace Quillmark::test
