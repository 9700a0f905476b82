// The walker on BER of every form, good and bad, and the writer's lengths and sets.

#include <functional>

#include "platform/detail/der_walker.h"
#include "platform/detail/der_writer.h"
#include "tests/platform/service.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct ElementCase {
    const char* name;
    const char* input;
    DWORD code;
    const char* content;
};

constexpr ElementCase kElements[] = {
    {"Primitive", "04 02 aa bb", ERROR_SUCCESS, "aa bb"},
    {"BehindIsLeft", "04 01 aa 05 00", ERROR_SUCCESS, "aa"},
    {"NonMinimalLength", "04 82 00 01 aa", ERROR_SUCCESS, "aa"},
    {"FourLengthOctets", "04 84 00 00 00 01 aa", ERROR_SUCCESS, "aa"},
    {"FiveLengthOctets", "04 85 00 00 00 00 01 aa", CRYPT_E_ASN1_LARGE, ""},
    {"ReservedLength", "04 ff 00", CRYPT_E_ASN1_LARGE, ""},
    {"HighTagNumber", "1f 81 00 01 aa", ERROR_SUCCESS, "aa"},
    {"EndlessTagNumber", "1f 81 81 81 81 81 81 00 00", CRYPT_E_ASN1_CORRUPT, ""},
    {"Indefinite", "30 80 05 00 00 00", ERROR_SUCCESS, "05 00"},
    {"IndefiniteAndEmpty", "30 80 00 00", ERROR_SUCCESS, ""},
    {"IndefiniteWithinIndefinite", "30 80 30 80 05 00 00 00 00 00", ERROR_SUCCESS, "30 80 05 00 00 00"},
    {"IndefiniteEndInDefiniteContent", "30 80 04 02 00 00 00 00", ERROR_SUCCESS, "04 02 00 00"},
    {"IndefiniteWithoutEnd", "30 80 05 00 00", CRYPT_E_ASN1_EOD, ""},
    {"IndefiniteOfPrimitive", "04 80 00 00", CRYPT_E_ASN1_CORRUPT, ""},
    {"Nothing", "", CRYPT_E_ASN1_EOD, ""},
    {"TagAlone", "04", CRYPT_E_ASN1_EOD, ""},
    {"TagNumberCut", "1f 81", CRYPT_E_ASN1_EOD, ""},
    {"LengthCut", "04 82 01", CRYPT_E_ASN1_EOD, ""},
    {"ContentCut", "04 02 aa", CRYPT_E_ASN1_EOD, ""},
    {"LengthOverflows", "04 84 ff ff ff ff aa", CRYPT_E_ASN1_EOD, ""},
    {"EndOfContentsAlone", "00 00", CRYPT_E_ASN1_CORRUPT, ""},
    {"TagZero", "00 01 aa", CRYPT_E_ASN1_CORRUPT, ""},
};

class ReadElement : public testing::TestWithParam<ElementCase> {};

TEST_P(ReadElement, GivesContentOrCode) {
    const Octets input = from_hex(GetParam().input);
    Element element;
    EXPECT_EQ(read_element(input, CRYPT_E_ASN1_EOD, element), GetParam().code);
    EXPECT_EQ(to_hex(element.content), GetParam().content);
}

INSTANTIATE_TEST_SUITE_P(X690, ReadElement, testing::ValuesIn(kElements), case_name);

Octets nested_indefinite(int depth) {
    Octets octets;
    for (int i = 0; i < depth; ++i) {
        octets = join({from_hex("30 80"), octets, from_hex("00 00")});
    }
    return octets;
}

TEST(ReadElementNesting, Takes32LevelsAndRefuses33) {
    EXPECT_TRUE(is_one_element(nested_indefinite(32)));
    EXPECT_FALSE(is_one_element(nested_indefinite(33)));
}

DWORD code_of(const std::function<void()>& step) {
    try {
        step();
    } catch (const Failure& failure) {
        return failure.code;
    }
    return ERROR_SUCCESS;
}

TEST(DerWalker, TellsTruncatedInputFromLengthThatPassesItsContainer) {
    const Octets input = from_hex("30 03 04 02 aa");
    DerWalker outer(input);
    DerWalker inner(outer.next(kSequence));
    EXPECT_EQ(code_of([&] { inner.next(); }), CRYPT_E_ASN1_CORRUPT);
    const Octets truncated = from_hex("30 04 04 02 aa");
    EXPECT_EQ(code_of([&] { DerWalker(truncated).next(); }), CRYPT_E_ASN1_EOD);
}

TEST(DerWalker, RefusesWrongTagAndWhatIsLeft) {
    const Octets input = from_hex("05 00 05 00");
    DerWalker walker(input);
    EXPECT_EQ(code_of([&] { walker.next(kInteger); }), CRYPT_E_ASN1_BADTAG);
    EXPECT_FALSE(walker.next_if(kInteger).has_value());
    EXPECT_TRUE(walker.next_if(kNull).has_value());
    EXPECT_EQ(code_of([&] { walker.expect_end(); }), CRYPT_E_ASN1_CORRUPT);
    walker.next(kNull);
    walker.expect_end();
    EXPECT_TRUE(walker.at_end());
}

Octets joined(const Octets& string) {
    Element element;
    EXPECT_EQ(read_element(string, CRYPT_E_ASN1_EOD, element), ERROR_SUCCESS);
    Bytes out;
    append_octet_string(element, out);
    return out;
}

TEST(AppendOctetString, JoinsSegmentsOfAllForms) {
    EXPECT_EQ(to_hex(joined(from_hex("04 02 aa bb"))), "aa bb");
    EXPECT_EQ(to_hex(joined(from_hex("24 06 04 01 aa 04 01 bb"))), "aa bb");
    EXPECT_EQ(to_hex(joined(from_hex("24 80 04 01 aa 24 80 04 01 bb 00 00 24 03 04 01 cc 00 00"))),
              "aa bb cc");
    EXPECT_EQ(to_hex(joined(from_hex("24 00"))), "");
}

TEST(AppendOctetString, RefusesOtherSegments) {
    EXPECT_EQ(code_of([] { joined(from_hex("24 02 05 00")); }), CRYPT_E_ASN1_BADTAG);
}

Octets nested_string(int depth) {
    Octets octets = from_hex("04 01 aa");
    for (int i = 0; i < depth; ++i) {
        octets = element(0x24, octets);
    }
    return octets;
}

TEST(AppendOctetString, Joins32LevelsAndRefuses33) {
    EXPECT_EQ(to_hex(joined(nested_string(32))), "aa");
    EXPECT_EQ(code_of([] { joined(nested_string(33)); }), CRYPT_E_ASN1_CORRUPT);
}

struct LengthCase {
    const char* name;
    std::size_t size;
    const char* header;
};

constexpr LengthCase kLengths[] = {
    {"Zero", 0, "04 00"},
    {"LastShort", 127, "04 7f"},
    {"FirstLong", 128, "04 81 80"},
    {"LastOneOctet", 255, "04 81 ff"},
    {"FirstTwoOctets", 256, "04 82 01 00"},
    {"LastTwoOctets", 65535, "04 82 ff ff"},
    {"FirstThreeOctets", 65536, "04 83 01 00 00"},
};

class DerWriterLength : public testing::TestWithParam<LengthCase> {};

TEST_P(DerWriterLength, IsShortest) {
    const Octets content(GetParam().size, 0xAA);
    DerWriter writer(1);
    writer.element(kOctetString, content);
    EXPECT_EQ(writer.copy(), join({from_hex(GetParam().header), content}));
}

INSTANTIATE_TEST_SUITE_P(X690, DerWriterLength, testing::ValuesIn(kLengths), case_name);

TEST(DerWriter, SortsSetByEncodings) {
    const Octets a = from_hex("02 01 05");
    const Octets b = from_hex("02 01 04");
    const Octets c = from_hex("02 02 00 80");
    const Octets d = from_hex("01 01 ff");
    DerWriter writer(8);
    writer.set_of(kSet, {a, b, c, d});
    EXPECT_EQ(writer.copy(), element(0x31, {d, b, a, c}));
}

}  // namespace
}  // namespace Quillmark::test
