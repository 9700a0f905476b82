#include <gtest/gtest.h>

#include "runtime/der_encode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct TagCase {
    const char* name;
    ASN1TAG tag;
    const char* octets;
};

// X.690 8.1.2.
constexpr TagCase kTags[] = {
    {.name = "Universal", .tag = 2, .octets = "02"},
    {.name = "UniversalConstructed", .tag = 0x20000010, .octets = "30"},
    {.name = "Application", .tag = 0x60000001, .octets = "61"},
    {.name = "Context", .tag = 0x80000000, .octets = "80"},
    {.name = "ContextConstructed", .tag = 0xA0000003, .octets = "a3"},
    {.name = "Private", .tag = 0xC0000005, .octets = "c5"},
    {.name = "LastOfOneOctet", .tag = 0x8000001E, .octets = "9e"},
    {.name = "FirstOfTwoOctets", .tag = 0x8000001F, .octets = "9f 1f"},
    {.name = "LastOfTwoOctets", .tag = 0x8000007F, .octets = "9f 7f"},
    {.name = "FirstOfThreeOctets", .tag = 0x80000080, .octets = "9f 81 00"},
    {.name = "Largest", .tag = 0xFFFFFFFF, .octets = "ff 81 ff ff ff 7f"},
};

class XeTag : public testing::TestWithParam<TagCase> {};

TEST_P(XeTag, WritesIdentifierOctets) {
    CodecContext ctxt;
    const int count = xe_tag(ctxt.encode(), GetParam().tag);
    EXPECT_EQ(ctxt.written(), GetParam().octets);
    EXPECT_EQ(count, static_cast<int>(from_hex(GetParam().octets).size()));
}

INSTANTIATE_TEST_SUITE_P(X690, XeTag, testing::ValuesIn(kTags), case_name);

struct LengthCase {
    const char* name;
    int length;
    const char* octets;
};

// X.690 8.1.3 in the shortest form (10.1).
constexpr LengthCase kLengths[] = {
    {.name = "Zero", .length = 0, .octets = "00"},
    {.name = "LastShort", .length = 127, .octets = "7f"},
    {.name = "FirstLong", .length = 128, .octets = "81 80"},
    {.name = "LastOfOneOctet", .length = 255, .octets = "81 ff"},
    {.name = "FirstOfTwoOctets", .length = 256, .octets = "82 01 00"},
    {.name = "LastOfTwoOctets", .length = 65535, .octets = "82 ff ff"},
    {.name = "FirstOfThreeOctets", .length = 65536, .octets = "83 01 00 00"},
    {.name = "Largest", .length = 0x7FFFFFFF, .octets = "84 7f ff ff ff"},
    {.name = "Indefinite", .length = RT_INDEFLEN, .octets = "80"},
    {.name = "NegativeWritesNothing", .length = -1, .octets = ""},
};

class XeLen : public testing::TestWithParam<LengthCase> {};

TEST_P(XeLen, WritesLengthOctets) {
    CodecContext ctxt;
    const int count = xe_len(ctxt.encode(), GetParam().length);
    EXPECT_EQ(ctxt.written(), GetParam().octets);
    EXPECT_EQ(count, static_cast<int>(from_hex(GetParam().octets).size()));
}

INSTANTIATE_TEST_SUITE_P(X690, XeLen, testing::ValuesIn(kLengths), case_name);

TEST(XeTagLen, CountsContentsAndHeader) {
    CodecContext ctxt;
    EXPECT_EQ(xe_tag_len(ctxt.encode(), 0x20000010, 5), 7);
    EXPECT_EQ(ctxt.written(), "30 05");
    EXPECT_EQ(xe_tag_len(ctxt.encode(), 0x20000010, 128), 131);
    EXPECT_EQ(ctxt.written(), "30 81 80");
    EXPECT_EQ(xe_tag_len(ctxt.encode(), 0x8000001F, 0), 3);
    EXPECT_EQ(ctxt.written(), "9f 1f 00");
}

TEST(XeTagLen, CountsNoContentsForTheIndefiniteForm) {
    CodecContext ctxt;
    EXPECT_EQ(xe_tag_len(ctxt.encode(), 0x20000010, RT_INDEFLEN), 2);
    EXPECT_EQ(ctxt.written(), "30 80");
}

TEST(XeTagLen, HandsAStatusBack) {
    CodecContext ctxt;
    EXPECT_EQ(xe_tag_len(ctxt.encode(), 0x20000010, RT_E_BADVALUE), RT_E_BADVALUE);
    EXPECT_EQ(ctxt.written(), "");
}

TEST(XeTagLen, ReportsAFullBuffer) {
    CodecContext ctxt;
    uint8_t octets[2];
    xe_setp(ctxt, octets, sizeof octets);
    EXPECT_EQ(xe_tag_len(ctxt, 0x20000010, 5), RT_E_BUFOVFL);
    xe_setp(ctxt, octets, sizeof octets);
    EXPECT_EQ(xe_tag_len(ctxt, 0x20000010, 300), RT_E_BUFOVFL);
}

TEST(XeTagLen, RefusesATotalAbove31Bits) {
    CodecContext ctxt;
    EXPECT_EQ(xe_tag_len(ctxt.encode(), 0x20000010, 0x7FFFFFFF), RT_E_NOMEM);
}

TEST(XeIdentifier, WritesBase128) {
    CodecContext ctxt;
    EXPECT_EQ(xe_identifier(ctxt.encode(), 0), 1);
    EXPECT_EQ(ctxt.written(), "00");
    EXPECT_EQ(xe_identifier(ctxt.encode(), 1079), 2);
    EXPECT_EQ(ctxt.written(), "88 37");
    EXPECT_EQ(xe_identifier(ctxt.encode(), 0xFFFFFFFF), 5);
    EXPECT_EQ(ctxt.written(), "8f ff ff ff 7f");
}

}  // namespace
}  // namespace Quillmark::test
