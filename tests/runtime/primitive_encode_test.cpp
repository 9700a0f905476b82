#include <gtest/gtest.h>

#include "runtime/der_encode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct IntegerCase {
    const char* name;
    int64_t value;
    const char* der;  ///< with tag and length
};

// X.690 8.3: two's complement in the fewest octets.
constexpr IntegerCase kIntegers[] = {
    {.name = "Zero", .value = 0, .der = "02 01 00"},
    {.name = "Largest7Bits", .value = 127, .der = "02 01 7f"},
    {.name = "Smallest8Bits", .value = 128, .der = "02 02 00 80"},
    {.name = "Largest8Bits", .value = 255, .der = "02 02 00 ff"},
    {.name = "Smallest9Bits", .value = 256, .der = "02 02 01 00"},
    {.name = "Largest15Bits", .value = 32767, .der = "02 02 7f ff"},
    {.name = "Smallest16Bits", .value = 32768, .der = "02 03 00 80 00"},
    {.name = "Largest31Bits", .value = 2147483647, .der = "02 04 7f ff ff ff"},
    {.name = "MinusOne", .value = -1, .der = "02 01 ff"},
    {.name = "Minus128", .value = -128, .der = "02 01 80"},
    {.name = "Minus129", .value = -129, .der = "02 02 ff 7f"},
    {.name = "Minus32768", .value = -32768, .der = "02 02 80 00"},
    {.name = "Minus32769", .value = -32769, .der = "02 03 ff 7f ff"},
    {.name = "Smallest32Bits", .value = -2147483648LL, .der = "02 04 80 00 00 00"},
};

class XeInteger : public testing::TestWithParam<IntegerCase> {};

TEST_P(XeInteger, WritesTheShortestForm) {
    const auto value = static_cast<int32_t>(GetParam().value);
    const int size = static_cast<int>(from_hex(GetParam().der).size());
    CodecContext ctxt;
    EXPECT_EQ(xe_integer(ctxt.encode(), &value, ASN1EXPL), size);
    EXPECT_EQ(ctxt.written(), GetParam().der);
    EXPECT_EQ(xe_integer(ctxt.encode(), &value, ASN1IMPL), size - 2);
    EXPECT_EQ(ctxt.written(), std::string(GetParam().der).substr(6));
}

TEST_P(XeInteger, WritesAnEnumeratedAlikeUnderTag10) {
    const auto value = static_cast<int32_t>(GetParam().value);
    CodecContext ctxt;
    EXPECT_GT(xe_enum(ctxt.encode(), &value, ASN1EXPL), 0);
    EXPECT_EQ(ctxt.written(), "0a" + std::string(GetParam().der).substr(2));
}

INSTANTIATE_TEST_SUITE_P(X690, XeInteger, testing::ValuesIn(kIntegers), case_name);

constexpr IntegerCase kUnsigned[] = {
    {.name = "Zero", .value = 0, .der = "02 01 00"},
    {.name = "Largest7Bits", .value = 127, .der = "02 01 7f"},
    {.name = "Smallest8Bits", .value = 128, .der = "02 02 00 80"},
    {.name = "Largest16Bits", .value = 65535, .der = "02 03 00 ff ff"},
    {.name = "Largest31Bits", .value = 2147483647, .der = "02 04 7f ff ff ff"},
    {.name = "Smallest32Bits", .value = 2147483648LL, .der = "02 05 00 80 00 00 00"},
    {.name = "Largest32Bits", .value = 4294967295LL, .der = "02 05 00 ff ff ff ff"},
};

class XeUnsigned : public testing::TestWithParam<IntegerCase> {};

TEST_P(XeUnsigned, WritesTheShortestForm) {
    const auto value = static_cast<uint32_t>(GetParam().value);
    CodecContext ctxt;
    EXPECT_EQ(xe_unsigned(ctxt.encode(), &value, ASN1EXPL),
              static_cast<int>(from_hex(GetParam().der).size()));
    EXPECT_EQ(ctxt.written(), GetParam().der);
}

INSTANTIATE_TEST_SUITE_P(X690, XeUnsigned, testing::ValuesIn(kUnsigned), case_name);

constexpr IntegerCase kSixteenBits[] = {
    {.name = "Zero", .value = 0, .der = "02 01 00"},
    {.name = "Largest7Bits", .value = 127, .der = "02 01 7f"},
    {.name = "Smallest8Bits", .value = 128, .der = "02 02 00 80"},
    {.name = "Largest15Bits", .value = 32767, .der = "02 02 7f ff"},
    {.name = "Smallest16Bits", .value = 32768, .der = "02 03 00 80 00"},
    {.name = "Largest16Bits", .value = 65535, .der = "02 03 00 ff ff"},
};

class XeUint16 : public testing::TestWithParam<IntegerCase> {};

TEST_P(XeUint16, WritesTheShortestForm) {
    const auto value = static_cast<uint16_t>(GetParam().value);
    CodecContext ctxt;
    EXPECT_EQ(xe_uint16(ctxt.encode(), &value, ASN1EXPL), static_cast<int>(from_hex(GetParam().der).size()));
    EXPECT_EQ(ctxt.written(), GetParam().der);
}

INSTANTIATE_TEST_SUITE_P(X690, XeUint16, testing::ValuesIn(kSixteenBits), case_name);

TEST(XeBoolean, WritesFFForAnyOctetButZero) {
    CodecContext ctxt;
    for (const uint8_t value : from_hex("01 80 ff")) {
        EXPECT_EQ(xe_boolean(ctxt.encode(), &value, ASN1EXPL), 3);
        EXPECT_EQ(ctxt.written(), "01 01 ff");
    }
    const uint8_t no = 0;
    EXPECT_EQ(xe_boolean(ctxt.encode(), &no, ASN1EXPL), 3);
    EXPECT_EQ(ctxt.written(), "01 01 00");
    EXPECT_EQ(xe_boolean(ctxt.encode(), &no, ASN1IMPL), 1);
    EXPECT_EQ(ctxt.written(), "00");
}

TEST(XeNull, WritesNoContents) {
    CodecContext ctxt;
    EXPECT_EQ(xe_null(ctxt.encode(), ASN1EXPL), 2);
    EXPECT_EQ(ctxt.written(), "05 00");
    EXPECT_EQ(xe_null(ctxt.encode(), ASN1IMPL), 0);
    EXPECT_EQ(ctxt.written(), "");
}

TEST(XeOctstr, WritesOctets) {
    CodecContext ctxt;
    const uint8_t octets[] = {1, 2, 3};
    EXPECT_EQ(xe_octstr(ctxt.encode(), octets, 3, ASN1EXPL), 5);
    EXPECT_EQ(ctxt.written(), "04 03 01 02 03");
    EXPECT_EQ(xe_octstr(ctxt.encode(), octets, 0, ASN1EXPL), 2);
    EXPECT_EQ(ctxt.written(), "04 00");
    EXPECT_EQ(xe_octstr(ctxt.encode(), octets, 3, ASN1IMPL), 3);
    EXPECT_EQ(ctxt.written(), "01 02 03");
}

TEST(XeOctstr, TakesNullForNoOctets) {
    CodecContext ctxt;
    EXPECT_EQ(xe_octstr(ctxt.encode(), nullptr, 3, ASN1EXPL), 2);  // Intended: the count does not matter.
    EXPECT_EQ(ctxt.written(), "04 00");
    EXPECT_EQ(xe_octstr(ctxt.encode(), nullptr, 3, ASN1IMPL), 0);
}

TEST(XePrimitives, RefuseNull) {
    CodecContext ctxt;
    ctxt.encode();
    for (const ASN1TagType tagging : {ASN1IMPL, ASN1EXPL}) {
        EXPECT_EQ(xe_boolean(ctxt, nullptr, tagging), RT_E_BADVALUE);
        EXPECT_EQ(xe_integer(ctxt, nullptr, tagging), RT_E_BADVALUE);
        EXPECT_EQ(xe_unsigned(ctxt, nullptr, tagging), RT_E_BADVALUE);
        EXPECT_EQ(xe_uint16(ctxt, nullptr, tagging), RT_E_BADVALUE);
        EXPECT_EQ(xe_enum(ctxt, nullptr, tagging), RT_E_BADVALUE);
    }
    EXPECT_EQ(ctxt.written(), "");
    EXPECT_EQ(ctxt.recorded(), RT_OK);
}

TEST(XePrimitives, ReportAFullBuffer) {
    CodecContext ctxt;
    uint8_t octets[3];
    const int32_t number = 5;
    const uint8_t truth = 1;
    xe_setp(ctxt, octets, sizeof octets);
    EXPECT_EQ(xe_integer(ctxt, &number, ASN1EXPL), RT_E_BUFOVFL);
    xe_setp(ctxt, octets, sizeof octets);
    EXPECT_EQ(xe_boolean(ctxt, &truth, ASN1EXPL), RT_E_BUFOVFL);
    xe_setp(ctxt, octets, sizeof octets);
    EXPECT_EQ(xe_null(ctxt, ASN1EXPL), 2);
    EXPECT_EQ(xe_null(ctxt, ASN1EXPL), RT_E_BUFOVFL);
}

}  // namespace
}  // namespace Quillmark::test
