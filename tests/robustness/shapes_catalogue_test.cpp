// Every type of the catalogue, each of its elements in turn of a hostile shape.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <utility>

#include "tests/asn1data/catalogue_type.h"
#include "tests/asn1data/type_vectors.h"
#include "tests/robustness/growth_law.h"
#include "tests/robustness/shapes_element.h"

namespace Quillmark::test {
namespace {

const CatalogueType& type_named(const std::string& name) {
    static const auto by_name = [] {
        std::map<std::string, const CatalogueType*> made;
        for (const CatalogueType& type : catalogue_types()) {
            made.emplace(type.name, &type);
        }
        return made;
    }();
    return *by_name.at(name);
}

/// Values of every type, and of every type that an open type can have.
const std::vector<TypeVector>& vectors() {
    static const std::vector<TypeVector> rows =
        load_type_vectors(QUILLMARK_TEST_DATA "/asn1data/types_by_pyasn1.txt");
    return rows;
}

int decode(const CatalogueType& type, const Octets& octets) {
    ASN1BERDecodeBuffer buffer(octets.data(), static_cast<int>(octets.size()));
    const AnyRecord record(type);
    return control_of(type, buffer, record.get())->Decode();
}

/// Records hold others by value, and the shortest element that has one is two octets long: a CertificatePair
/// without certificates has room for both.
constexpr double kMostMemory = 2000;
constexpr std::size_t kFreeMemory = 16 << 10;

/// The types of one module.
class EveryTypeShape : public testing::TestWithParam<std::string> {
  protected:
    /// Runs `law` on values of each type, on a stack that is watched.
    template <typename Law>
    void for_each_value(Law law) {
        const Cost cost = measure([&] {
            for (const TypeVector& row : vectors()) {
                const CatalogueType& type = type_named(row.type);
                if (type.module == GetParam()) {
                    SCOPED_TRACE(row.type + " " + row.name);
                    decode(type, row.der);  // sets of identifiers are made at their first use, and stay
                    Element root = element_of(row.der);
                    law(type, root);
                }
            }
        });
        EXPECT_LE(cost.stack, kStackBound);
        std::printf("%-32s peak/in %7.1f (%s), stack %zu\n", GetParam().c_str(), worst_, worst_type_.c_str(),
                    cost.stack);
    }

    Cost count_decoding(const CatalogueType& type, const Octets& input) {
        int status = RT_OK;
        const Cost cost = count([&] { status = decode(type, input); });
        const std::size_t counted = cost.peak - std::min(cost.peak, kFreeMemory);
        const double memory = static_cast<double>(counted) / static_cast<double>(input.size());
        EXPECT_LE(memory, kMostMemory);
        EXPECT_EQ(cost.kept, 0u);
        if (memory > worst_) {
            worst_ = memory;
            worst_type_ = type.name;
        }
        return cost;
    }

  private:
    double worst_ = 0;
    std::string worst_type_;
};

/// The root with the last child of `element`, which is in it, `count` times more.
Octets widened(const Element& root, Element& element, std::size_t count) {
    const std::size_t before = element.children.size();
    element.children.resize(before + count, Element(element.children.back()));
    Octets octets = encode(root);
    element.children.resize(before);
    return octets;
}

TEST_P(EveryTypeShape, GrowsInProportionWithTheElementsOfEachList) {
    constexpr std::size_t kFew = 60;
    constexpr std::size_t kMany = 8 * kFew;
    for_each_value([&](const CatalogueType& type, Element& root) {
        for_each_element(root, [&](Element& element) {
            if (element.children.empty() || decode(type, widened(root, element, 2)) != RT_OK) {
                return;
            }
            const Octets many = widened(root, element, kMany);
            if (decode(type, many) != RT_OK) {
                return;  // a size constraint
            }
            const Cost less = count_decoding(type, widened(root, element, kFew));
            const Cost more = count_decoding(type, many);
            EXPECT_LE(more.allocations, 9 * less.allocations);
            EXPECT_LE(more.octets, 9 * less.octets + 4 * kFreeMemory);
            EXPECT_LE(more.time, 24 * less.time + std::chrono::milliseconds(100));
        });
    });
}

TEST_P(EveryTypeShape, GrowsInProportionWithTheOctetsOfEachElement) {
    constexpr std::size_t kOctets = 1 << 17;
    for_each_value([&](const CatalogueType& type, Element& root) {
        for_each_element(root, [&](Element& element) {
            if (!element.constructed()) {
                element.contents.resize(element.contents.size() + kOctets, '1');
                count_decoding(type, encode(root));
            }
        });
    });
}

/// Made once, as there are hundreds of places to put them. Innermost is a string of one octet.
const Octets& kept_nested(std::uint8_t tag, std::size_t levels) {
    static std::map<std::pair<std::uint8_t, std::size_t>, Octets> kept;
    Octets& octets = kept[{tag, levels}];
    if (octets.empty()) {
        octets = nested(tag, levels, filled(tag == 0x23 ? 0x03 : 0x04, 1));
    }
    return octets;
}

bool is_string(const Element& element) {
    return !element.constructed() && element.identifier.size() == 1;
}

TEST_P(EveryTypeShape, KeepsToTheStackWithEachElementInItself) {
    constexpr std::size_t kDeepest = 63;
    constexpr std::size_t kTooDeep = 2'000;
    for_each_value([&](const CatalogueType& type, Element& root) {
        const auto decode_with = [&](Element& element, Octets contents) {
            element.children.clear();
            element.contents = std::move(contents);
            decode(type, encode(root));
        };
        for_each_element(root, [&](Element& element) {
            const std::uint8_t tag = element.identifier.front();
            if (is_string(element)) {
                const std::uint8_t segment = tag == 0x03 ? 0x23 : 0x24;
                element.identifier.front() = tag | 0x20;
                decode_with(element, kept_nested(segment, kDeepest));
                decode_with(element, kept_nested(segment, kTooDeep));
            } else if (element.identifier.size() == 1) {
                decode_with(element, kept_nested(tag, kTooDeep));
                decode_with(element, nested_headers(tag, kTooDeep));
            }
        });
    });
}

TEST_P(EveryTypeShape, IsDecodedSafelyWithEachElementEmpty) {
    for_each_value([&](const CatalogueType& type, Element& root) {
        for_each_element(root, [&](Element& element) {
            element.children.clear();
            element.contents.clear();
            count_decoding(type, encode(root));
        });
    });
}

std::vector<std::string> modules() {
    std::vector<std::string> names;
    for (const CatalogueType& type : catalogue_types()) {
        if (names.empty() || names.back() != type.module) {
            names.push_back(type.module);
        }
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(Modules, EveryTypeShape, testing::ValuesIn(modules()),
                         [](const auto& row) { return row.param; });

}  // namespace
}  // namespace Quillmark::test
