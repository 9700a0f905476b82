// Laws that every type of the catalogue obeys, over values that are made from what the modules say about it.
//
// A value is a tree that knows its DER and its place in a record, both from the description alone. The codecs
// are held against it, and against a second reader that tells the status of octets that are cut or have a
// wrong tag. What a type accepts of those, or changes, by a rule of its own is in
// described_type_exceptions.txt.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>

#include "tests/asn1data/decoding_rules.h"
#include "tests/asn1data/described_codec.h"
#include "tests/asn1data/described_record.h"
#include "tests/asn1data/described_samples.h"
#include "tests/asn1data/type_exceptions.h"
#include "tests/support/codec_heap.h"
#include "tests/support/hex.h"

namespace Quillmark::test {
namespace {

/// The value in a record as text, so that a broken record shows as well.
std::string text_of(const TypeDescription& type, const void* record) {
    try {
        return to_text(read_record(type, record));
    } catch (const std::exception& broken) {
        return broken.what();
    }
}

/// Says what differs, for the first few cases of a type.
class Differences {
  public:
    explicit Differences(const TypeDescription& type) : type_(type) {}
    ~Differences() {
        if (count_ > kShown) {
            ADD_FAILURE() << type_.name << ": " << count_ << " differences";
        }
    }
    Differences(const Differences&) = delete;
    Differences& operator=(const Differences&) = delete;

    template <typename Got, typename Wanted>
    void expect(const Got& got, const Wanted& wanted, const std::string& where) {
        if (got == wanted) {
            return;
        }
        if (++count_ <= kShown) {
            EXPECT_EQ(got, wanted) << type_.name << " " << where;
        }
    }

  private:
    static constexpr int kShown = 3;

    const TypeDescription& type_;
    int count_ = 0;
};

/// The types of one module.
class DescribedType : public testing::TestWithParam<std::string> {
  protected:
    template <typename Law>
    void for_each_type(Law law) {
        for (const TypeDescription* type : described_types()) {
            if (type->module == GetParam()) {
                law(*type);
            }
        }
    }
    template <typename Law>
    void for_each_sample(Law law) {
        for_each_type([&](const TypeDescription& type) {
            Differences differences(type);
            for (const Sample& sample : good_samples(type)) {
                law(type, sample, differences);
            }
        });
    }
};

// Encoding and decoding

TEST_P(DescribedType, IsWrittenAsItsNotationSays) {
    for_each_sample([](const TypeDescription& type, const Sample& sample, Differences& differences) {
        ASN1BEREncodeBuffer heap;
        DescribedRecord record(type);
        fill_record(heap.getCtxtPtr(), sample.value, record.get());
        const Encoded encoded = encode(type, record.get());
        differences.expect(to_hex(encoded.octets), to_hex(der_of(sample.value).octets), sample.name);
    });
}

/// Whether an element that was absent shows as one that is not, because its decoder leaves the field alone.
bool shows_kept_field(const Value& value) {
    if (!value.present()) {
        return false;
    }
    for (std::size_t i = 0; i < value.type->elements.size() && i < value.parts.size(); ++i) {
        if (value.type->kind != Kind::kChoice && value.type->elements[i].kept && !value.parts[i].present()) {
            return true;
        }
    }
    return std::ranges::any_of(value.parts, shows_kept_field) ||
           std::ranges::any_of(value.carried, shows_kept_field);
}

TEST_P(DescribedType, ComesBackFieldByField) {
    for_each_type([](const TypeDescription& type) {
        Differences differences(type);
        Exceptions exceptions(type);
        for (const Sample& sample : good_samples(type)) {
            const Encoding der = der_of(sample.value);
            DescribedRecord record(type);
            Decoded decoded(type, der.octets, Buffer::kMessage, record.get());
            differences.expect(decoded.status(), int{RT_OK}, sample.name);
            const std::string got = text_of(type, record.get());
            const std::string wanted = to_text(in_order(sample.value));
            if (got != wanted && shows_kept_field(sample.value)) {
                exceptions.met("default left alone", sample.name);
            } else if (got != wanted && to_text(read_by_rule(type, der.octets).value) == got) {
                exceptions.met("read as an earlier element", sample.name);
            } else {
                differences.expect(got, wanted, sample.name);
            }
        }
        exceptions.expect("default left alone");
        exceptions.expect("read as an earlier element");
    });
}

TEST_P(DescribedType, IsWrittenAgainAsItCame) {
    for_each_sample([](const TypeDescription& type, const Sample& sample, Differences& differences) {
        const Octets der = der_of(sample.value).octets;
        DescribedRecord record(type);
        Decoded decoded(type, der, Buffer::kMessage, record.get());
        const Octets again = encode(type, record.get()).octets;
        if (!shows_kept_field(sample.value)) {
            differences.expect(to_hex(again), to_hex(der), sample.name);
        }
    });
}

TEST_P(DescribedType, HasNothingLeftOfTheValueBefore) {
    // A record that held a full value and is decoded into again
    for_each_type([](const TypeDescription& type) {
        Differences differences(type);
        const Value before = full_value(type);
        const Value value = empty_value(type);
        DescribedRecord record(type);
        Decoded first(type, der_of(before).octets, Buffer::kMessage, record.get());
        Decoded second(type, der_of(value).octets, Buffer::kMessage, record.get());
        differences.expect(second.status(), int{RT_OK}, "empty");
        if (!shows_kept_field(value)) {
            differences.expect(text_of(type, record.get()), to_text(in_order(value)), "empty behind full");
        }
    });
}

TEST_P(DescribedType, HasNoAlternativeWhenNoneFits) {
    // Whatever the record held: what frees it then looks for nothing.
    for_each_type([](const TypeDescription& type) {
        if (type.kind != Kind::kChoice) {
            return;
        }
        Differences differences(type);
        const Octets foreign = {0xDE, 0x00};
        const Octets wrong = type.application < 0
                                 ? foreign
                                 : element(static_cast<std::uint8_t>(0x60 | type.application), foreign);
        for (const Sample& sample : good_samples(type)) {
            DescribedRecord record(type);
            Decoded first(type, der_of(sample.value).octets, Buffer::kMessage, record.get());
            Decoded second(type, wrong, Buffer::kMessage, record.get());
            differences.expect(second.status(), int{RT_E_INVOPT}, sample.name);
            differences.expect(text_of(type, record.get()), std::string("a CHOICE without an alternative"),
                               sample.name);
        }
    });
}

TEST_P(DescribedType, DropsADefaultThatWasWritten) {
    // Intended: DER omits it (X.690 11.5), BER may write it.
    for_each_type([](const TypeDescription& type) {
        Differences differences(type);
        Exceptions exceptions(type);
        for (std::size_t i = 0; type.kind != Kind::kChoice && i < type.elements.size(); ++i) {
            const ElementDescription& element = type.elements[i];
            if (!element.default_number) {
                continue;
            }
            Value value = empty_value(type);
            value.parts[i].type = element.type;
            value.parts[i].contents = number_contents(*element.default_number);
            const Octets ber = der_of(value).octets;
            DescribedRecord record(type);
            Decoded decoded(type, ber, Buffer::kMessage, record.get());
            differences.expect(decoded.status(), int{RT_OK}, element.name);
            value.parts[i] = Value();
            for (std::size_t k = 0; k < type.elements.size(); ++k) {
                if (type.elements[k].kept && k != i) {
                    value.parts[k].type = type.elements[k].type;  // what a new record holds
                    value.parts[k].contents = {0};
                }
            }
            differences.expect(to_hex(encode(type, record.get()).octets), to_hex(der_of(value).octets),
                               element.name);
            exceptions.met("default omitted", element.name);
        }
        exceptions.expect("default omitted");
    });
}

// Copies and what a record holds

TEST_P(DescribedType, OutlivesWhatItWasCopiedFrom) {
    for_each_sample([](const TypeDescription& type, const Sample& sample, Differences& differences) {
        const Octets der = der_of(sample.value).octets;
        ASN1BEREncodeBuffer other;
        DescribedRecord copy(type);
        std::string before;
        Octets written;
        {
            DescribedRecord record(type);
            Decoded decoded(type, der, Buffer::kMessage, record.get());
            before = text_of(type, record.get());
            written = encode(type, record.get()).octets;
            type.functions.copy(other.getCtxtPtr(), record.get(), copy.get());
            decoded.free();
        }
        differences.expect(text_of(type, copy.get()), before, sample.name);
        differences.expect(to_hex(encode(type, copy.get()).octets), to_hex(written), sample.name);
        type.functions.free(other.getCtxtPtr(), copy.get());
    });
}

TEST_P(DescribedType, IsCopiedOverAnotherValue) {
    for_each_type([](const TypeDescription& type) {
        Differences differences(type);
        const Value value = empty_value(type);
        ASN1BEREncodeBuffer heap;
        DescribedRecord target(type);
        DescribedRecord source(type);
        fill_record(heap.getCtxtPtr(), full_value(type), target.get());
        fill_record(heap.getCtxtPtr(), value, source.get());
        type.functions.copy(heap.getCtxtPtr(), source.get(), target.get());
        differences.expect(text_of(type, target.get()), text_of(type, source.get()), "empty over full");
    });
}

/// What freeing leaves to the context: carried records, and elements that are not freed one by one.
bool leaves_to_context(const Value& value) {
    if (!value.present()) {
        return false;
    }
    for (std::size_t i = 0; i < value.type->elements.size() && i < value.parts.size(); ++i) {
        if (value.type->kind != Kind::kChoice && !value.type->elements[i].freed && value.parts[i].present()) {
            return true;
        }
    }
    return !value.carried.empty() || std::ranges::any_of(value.parts, leaves_to_context);
}

TEST_P(DescribedType, IsFreedWhole) {
    for_each_sample([](const TypeDescription& type, const Sample& sample, Differences& differences) {
        const Octets der = der_of(sample.value).octets;
        const CodecHeap heap;
        {
            ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
            buffer.init();
            const std::size_t before = heap.live_blocks();
            DescribedRecord record(type);
            type.functions.decode(buffer.getCtxtPtr(), record.get(), ASN1EXPL, 0);
            type.functions.free(buffer.getCtxtPtr(), record.get());
            if (!leaves_to_context(sample.value)) {
                differences.expect(heap.live_blocks(), before, sample.name);
            }
        }
        differences.expect(heap.live_blocks(), std::size_t{0}, sample.name + " and its context");
    });
}

// Bounds

TEST_P(DescribedType, RefusesWhatIsOutOfBounds) {
    for_each_type([](const TypeDescription& type) {
        Differences differences(type);
        for (const BadSample& sample : bad_samples(type)) {
            ASN1BEREncodeBuffer heap;
            DescribedRecord record(type);
            fill_record(heap.getCtxtPtr(), sample.value, record.get());
            differences.expect(encode(type, record.get()).result, sample.encoder_status,
                               sample.name + " written");
            const Octets der = der_of(sample.value).octets;
            const Reading reading = read_by_rule(type, der);
            DescribedRecord read(type);
            Decoded decoded(type, der, Buffer::kMessage, read.get());
            differences.expect(decoded.status(), reading.status, sample.name + " read");
            EXPECT_NE(reading.status, RT_OK) << type.name << " " << sample.name;
            decoded.free();
        }
    });
}

// Octets that are cut or have a wrong tag

/// Sizes to cut to: all of a short encoding, of a long one those around where its elements begin.
std::set<std::size_t> cuts(const Encoding& der) {
    constexpr std::size_t kShort = 700;
    std::set<std::size_t> sizes;
    for (std::size_t size = 0; size < std::min(der.octets.size(), kShort); ++size) {
        sizes.insert(size);
    }
    for (const Mark& mark : der.marks) {
        for (std::size_t size = mark.offset; size < mark.offset + 4 && size < der.octets.size(); ++size) {
            sizes.insert(size);
        }
    }
    sizes.insert(der.octets.size() - 1);
    return sizes;
}

/// Holds a decoder against the rules over octets that are not as they should be.
Reading expect_by_rule(const TypeDescription& type, std::span<const std::uint8_t> octets, Buffer how,
                       Differences& differences, const std::string& where) {
    const Reading reading =
        how == Buffer::kMessage ? read_message_by_rule(type, octets) : read_by_rule(type, octets);
    EXPECT_FALSE(reading.met.not_told) << type.name << " " << where << ": no rule for " << to_hex(octets);
    DescribedRecord record(type);
    Decoded decoded(type, octets, how, record.get());
    differences.expect(decoded.status(), reading.status, where);
    differences.expect(decoded.context()->errInfo.status, decoded.status(), where + " recorded");
    if (reading.status == RT_OK && decoded.status() == RT_OK && how == Buffer::kAsItIs &&
        !shows_kept_field(reading.value)) {
        differences.expect(text_of(type, record.get()), to_text(reading.value), where + " accepted");
    }
    decoded.free();
    return reading;
}

TEST_P(DescribedType, GivesTheStatusOfTheRuleWhereverItIsCut) {
    for_each_type([](const TypeDescription& type) {
        Differences differences(type);
        Exceptions exceptions(type);
        for (const Sample& sample : good_samples(type)) {
            const Encoding der = der_of(sample.value);
            for (const std::size_t size : cuts(der)) {
                const std::string where = sample.name + " cut to " + std::to_string(size);
                const Reading reading = expect_by_rule(type, std::span(der.octets).first(size),
                                                       Buffer::kAsItIs, differences, where);
                if (reading.status == RT_OK) {
                    EXPECT_TRUE(reading.met.open_at_end || reading.met.ended_early)
                        << type.name << " " << where;
                    exceptions.met(reading.met.open_at_end ? "any type at the end" : "ends with the octets",
                                   where);
                }
            }
        }
        exceptions.expect("any type at the end");
        exceptions.expect("ends with the octets");
    });
}

TEST_P(DescribedType, IsRefusedWhenItsMessageIsCut) {
    for_each_type([](const TypeDescription& type) {
        Differences differences(type);
        Exceptions exceptions(type);
        for (const Sample& sample : good_samples(type)) {
            const Encoding der = der_of(sample.value);
            for (const std::size_t size : cuts(der)) {
                const std::string where = sample.name + " cut to " + std::to_string(size);
                const Reading reading = expect_by_rule(type, std::span(der.octets).first(size),
                                                       Buffer::kMessage, differences, where);
                if (reading.status == RT_OK) {
                    exceptions.met("contents read as the whole", where);
                }
            }
        }
        exceptions.expect("contents read as the whole");
    });
}

TEST_P(DescribedType, GivesTheStatusOfTheRuleForAWrongTag) {
    constexpr std::uint8_t kOfNoType = 0xDE;  // [PRIVATE 30]
    for_each_type([](const TypeDescription& type) {
        Differences differences(type);
        Exceptions exceptions(type);
        for (const Sample& sample : good_samples(type)) {
            const Encoding der = der_of(sample.value);
            for (const Mark& mark : der.marks) {
                Octets wrong = der.octets;
                wrong[mark.offset] = kOfNoType;
                const std::string where = sample.name + " with a wrong tag at " + mark.path;
                const Reading reading = expect_by_rule(type, wrong, Buffer::kAsItIs, differences, where);
                if (reading.status == RT_OK) {
                    EXPECT_TRUE(reading.met.any_type) << where;
                    exceptions.met("element of any type", where);
                }
            }
        }
        exceptions.expect("element of any type");
    });
}

TEST_P(DescribedType, GivesTheStatusOfTheRuleForTheTagOfAnotherElement) {
    // A number, a string, a structure, and two that are numbered
    constexpr std::uint8_t kTags[] = {0x02, 0x0C, 0x30, 0x80, 0xA1};
    for_each_sample([&](const TypeDescription& type, const Sample& sample, Differences& differences) {
        const Encoding der = der_of(sample.value);
        for (const Mark& mark : der.marks) {
            for (const std::uint8_t tag : kTags) {
                Octets wrong = der.octets;
                wrong[mark.offset] = tag;
                expect_by_rule(type, wrong, Buffer::kAsItIs, differences,
                               sample.name + " with tag " + to_hex(Octets{tag}) + " at " + mark.path);
            }
        }
    });
}

TEST_P(DescribedType, GivesTheStatusOfTheRuleForTheOtherForm) {
    // X.690 8.1.2.5: primitive where it is constructed, constructed where it is primitive
    for_each_sample([](const TypeDescription& type, const Sample& sample, Differences& differences) {
        const Encoding der = der_of(sample.value);
        for (const Mark& mark : der.marks) {
            Octets wrong = der.octets;
            wrong[mark.offset] ^= 0x20;
            expect_by_rule(type, wrong, Buffer::kAsItIs, differences,
                           sample.name + " with the other form at " + mark.path);
        }
    });
}

// The samples themselves

/// What samples show of a type: elements that are there and that are not, alternatives, known identifiers.
class Shown {
  public:
    explicit Shown(const TypeDescription& type) : type_(type) {}

    void note(const Value& value) {
        for (std::size_t i = 0; i < type_.elements.size(); ++i) {
            if (type_.kind == Kind::kChoice) {
                (value.selected == i + 1 ? there_ : absent_).insert(i);
                continue;
            }
            (value.parts[i].present() ? there_ : absent_).insert(i);
            note_identifier(value, i);
        }
        sizes_.insert(value.parts.size());
    }
    void expect() const {
        const bool others = type_.kind == Kind::kChoice && type_.elements.size() > 1;
        for (std::size_t i = 0; i < type_.elements.size(); ++i) {
            const ElementDescription& element = type_.elements[i];
            EXPECT_TRUE(there_.contains(i)) << type_.name << " never with " << element.name;
            EXPECT_EQ(absent_.contains(i), element.may_be_absent || others)
                << type_.name << " without " << element.name;
            for (const ObjectDescription& object : element.objects) {
                EXPECT_EQ(carried_.contains(object.name), object.carried != nullptr) << object.name;
            }
        }
        if (type_.element != nullptr) {
            const Bounds bounds = type_.bounds.value_or(Bounds{0, kNoBound});
            for (const std::size_t size : {0, 1, 3}) {
                EXPECT_EQ(sizes_.contains(size), static_cast<std::int64_t>(size) >= bounds.low)
                    << type_.name << " of " << size;
            }
        }
    }

  private:
    void note_identifier(const Value& value, std::size_t index) {
        const ElementDescription& open = type_.elements[index];
        if (open.identifier < 0 || !value.parts[index].present()) {
            return;
        }
        const Value& part = value.parts[index];
        const auto& carried = part.parts.empty() ? part.carried : part.parts.front().carried;
        const ObjectDescription* object =
            object_for(open, value.parts[static_cast<std::size_t>(open.identifier)]);
        if (object != nullptr && !carried.empty()) {
            carried_.insert(object->name);
        }
    }

    const TypeDescription& type_;
    std::set<std::size_t> there_;
    std::set<std::size_t> absent_;
    std::set<std::size_t> sizes_;
    std::set<std::string> carried_;
};

TEST_P(DescribedType, HasSamplesOfAllThatItsNotationAllows) {
    for_each_type([](const TypeDescription& type) {
        Shown shown(type);
        for (const Sample& sample : good_samples(type)) {
            shown.note(sample.value);
        }
        shown.expect();
    });
}

std::vector<std::string> modules() {
    std::vector<std::string> names;
    for (const TypeDescription* type : described_types()) {
        if (names.empty() || names.back() != type->module) {
            names.push_back(type->module);
        }
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(Modules, DescribedType, testing::ValuesIn(modules()),
                         [](const auto& row) { return row.param; });

TEST(TypeExceptions, NameKnownTypesAndRulesAlone) {
    std::set<std::string> known;
    for (const TypeDescription* type : described_types()) {
        known.insert(type->name);
    }
    const std::set<std::string> rules = {
        "any type at the end", "contents read as the whole", "default left alone",        "default omitted",
        "element of any type", "ends with the octets",       "read as an earlier element"};
    for (const auto& [rule, names] : type_exceptions()) {
        EXPECT_TRUE(rules.contains(rule)) << rule;
        for (const std::string& name : names) {
            EXPECT_TRUE(known.contains(name)) << name;
        }
    }
}

}  // namespace
}  // namespace Quillmark::test
