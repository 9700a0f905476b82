#include <gtest/gtest.h>

#include <string>

#include "runtime/ber_decode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"
#include "tests/support/der.h"

namespace Quillmark::test {
namespace {

struct StringCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    const char* octets = "";
    uint32_t position = 0;  ///< behind a value that was read
};

// X.690 8.7: primitive, or segments of OCTET STRING type.
constexpr StringCase kOctetStrings[] = {
    {.name = "Primitive", .ber = "04 03 01 02 03", .octets = "01 02 03", .position = 5},
    {.name = "Empty", .ber = "04 00", .octets = "", .position = 2},
    {.name = "LongLength", .ber = "04 82 00 01 aa", .octets = "aa", .position = 5},
    {.name = "TwoSegments", .ber = "24 06 04 01 01 04 01 02", .octets = "01 02", .position = 8},
    {.name = "NestedSegments", .ber = "24 05 24 03 04 01 01", .octets = "01", .position = 7},
    {.name = "NoSegments", .ber = "24 00", .octets = "", .position = 2},
    {.name = "IndefiniteTwoSegments",
     .ber = "24 80 04 01 01 04 01 02 00 00",
     .octets = "01 02",
     .position = 10},
    {.name = "IndefiniteEmptySegment", .ber = "24 80 04 00 00 00", .octets = "", .position = 6},
    {.name = "IndefiniteWithoutSegments", .ber = "24 80 00 00", .octets = "", .position = 4},
    {.name = "OctetsBehind", .ber = "24 80 04 01 01 00 00 ff", .octets = "01", .position = 7},
    // Intended: segments of the indefinite form are primitive.
    {.name = "IndefiniteWithConstructedSegment", .ber = "24 80 24 03 04 01 01 00 00", .status = RT_E_BADTAG},
    {.name = "IndefiniteInIndefinite", .ber = "24 80 24 80 04 01 01 00 00 00 00", .status = RT_E_BADTAG},
    {.name = "IndefiniteWithOtherSegment", .ber = "24 80 02 01 01 00 00", .status = RT_E_BADTAG},
    {.name = "DefiniteWithOtherSegment", .ber = "24 03 02 01 01", .status = RT_E_IDNOTFOUND},
    {.name = "DefiniteWithIndefiniteSegment", .ber = "24 05 24 80 00 00 00", .status = RT_E_INVLEN},
    {.name = "SegmentLongerThanTheString", .ber = "24 03 04 02 01 02", .status = RT_E_INVLEN},
    {.name = "SegmentCutByTheBuffer", .ber = "24 03 04 02 01", .status = RT_E_ENDOFBUF},
    {.name = "StringLongerThanItsSegments", .ber = "24 7f 04 01 01", .status = RT_E_INVLEN},
    {.name = "IndefiniteWithoutEnd", .ber = "24 80 04 01 01", .status = RT_E_ENDOFBUF},
    {.name = "IndefiniteWithHalfAnEnd", .ber = "24 80 04 01 01 00", .status = RT_E_ENDOFBUF},
    {.name = "IndefiniteOnPrimitive", .ber = "04 80 00 00", .status = RT_E_INVLEN},
    {.name = "OtherTag", .ber = "03 01 00", .status = RT_E_IDNOTFOUND},
    {.name = "ShortLengthBeyondTheBuffer", .ber = "04 05 01 02", .status = RT_E_ENDOFBUF},
    {.name = "LengthOf2GiB", .ber = "04 84 7f ff ff ff 00", .status = RT_E_INVLEN},
    {.name = "TagAlone", .ber = "04", .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
};

class XdOctstr : public testing::TestWithParam<StringCase> {};

TEST_P(XdOctstr, GivesTheOctetsOfAllSegments) {
    const StringCase& row = GetParam();
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(xd_octstr(ctxt.read(row.ber), &data, &count, ASN1EXPL, 0), row.status);
    EXPECT_EQ(ctxt.recorded(), row.status);
    if (row.status == RT_OK) {
        EXPECT_EQ(to_hex(data, count), row.octets);
        EXPECT_EQ(ctxt.position(), row.position);
    }
}

TEST_P(XdOctstr, KeepsToTheBufferInTheIndefiniteFormToo) {
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    rtCtxtSetFlag(ctxt.read(GetParam().ber), RT_F_INDEFLEN);
    EXPECT_EQ(xd_octstr(ctxt, &data, &count, ASN1EXPL, 0), GetParam().status);
}

TEST_P(XdOctstr, GivesTheSameWithoutCopying) {
    const StringCase& row = GetParam();
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    rtCtxtSetFlag(ctxt.read(row.ber), RT_F_FASTCOPY);
    EXPECT_EQ(xd_octstr(ctxt, &data, &count, ASN1EXPL, 0), row.status);
    if (row.status == RT_OK) {
        EXPECT_EQ(to_hex(data, count), row.octets);
        EXPECT_EQ(ctxt.position(), row.position);
    }
}

INSTANTIATE_TEST_SUITE_P(X690, XdOctstr, testing::ValuesIn(kOctetStrings), case_name);

TEST(XdOctstrFastCopy, PointsIntoTheMessage) {
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    rtCtxtSetFlag(ctxt.read("04 02 01 02"), RT_F_FASTCOPY);
    ASSERT_EQ(xd_octstr(ctxt, &data, &count, ASN1EXPL, 0), RT_OK);
    EXPECT_EQ(data, ctxt->buffer.data + 2);
}

TEST(XdOctstrImplicit, TakesLengthAndFormOfTheCaller) {
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    int length;
    ASSERT_EQ(xd_match1(ctxt.read("81 02 aa bb"), 0x81, &length), RT_OK);
    EXPECT_EQ(xd_octstr(ctxt, &data, &count, ASN1IMPL, length), RT_OK);
    EXPECT_EQ(to_hex(data, count), "aa bb");
    ASSERT_EQ(xd_match1(ctxt.read("a1 80 04 01 aa 04 01 bb 00 00"), 0x81, &length), RT_OK);
    EXPECT_EQ(xd_octstr(ctxt, &data, &count, ASN1IMPL, length), RT_OK);
    EXPECT_EQ(to_hex(data, count), "aa bb");
    EXPECT_EQ(ctxt.position(), 10u);
}

TEST(XdOctstrImplicit, GivesNothingForANegativeLength) {
    CodecContext ctxt;
    uint8_t octet = 0;
    const uint8_t* data = &octet;
    uint32_t count = 5;
    EXPECT_EQ(xd_octstr(ctxt.read("aa"), &data, &count, ASN1IMPL, -1), RT_OK);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(count, 0u);
}

TEST(XdOctstrIndefinite, IsRefusedOnAPrimitiveByItsForm) {
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    ctxt.read("04 01 aa 00 00");  // no constructed tag was read
    EXPECT_EQ(xd_octstr(ctxt, &data, &count, ASN1IMPL, RT_INDEFLEN), RT_E_INVLEN);
}

struct ArrayCase {
    const char* name;
    const char* ber;
    uint32_t room;
    int status = RT_OK;
    const char* octets = "";
};

constexpr ArrayCase kArrays[] = {
    {.name = "ExactFit", .ber = "04 03 01 02 03", .room = 3, .octets = "01 02 03"},
    {.name = "OneTooMany", .ber = "04 03 01 02 03", .room = 2, .status = RT_E_STROVFL},
    // The length of a constructed string counts the headers of its segments as well.
    {.name = "SegmentsWithHeadersInTheRoom", .ber = "24 06 04 01 01 04 01 02", .room = 6, .octets = "01 02"},
    {.name = "SegmentsBeyondTheRoom", .ber = "24 06 04 01 01 04 01 02", .room = 1, .status = RT_E_STROVFL},
    {.name = "Indefinite", .ber = "24 80 04 01 01 00 00", .room = 8, .status = RT_E_INVLEN},  // Intended.
    {.name = "OtherTag", .ber = "03 01 00", .room = 8, .status = RT_E_IDNOTFOUND},
    {.name = "LengthBeyondTheBuffer", .ber = "04 05 01", .room = 8, .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .room = 8, .status = RT_E_ENDOFBUF},
};

class XdOctstrS : public testing::TestWithParam<ArrayCase> {};

TEST_P(XdOctstrS, FillsACallersArray) {
    const ArrayCase& row = GetParam();
    CodecContext ctxt;
    std::vector<uint8_t> array(row.room);
    uint32_t count = row.room;
    EXPECT_EQ(xd_octstr_s(ctxt.read(row.ber), array.data(), &count, ASN1EXPL, 0), row.status);
    if (row.status == RT_OK) {
        EXPECT_EQ(to_hex(array.data(), count), row.octets);
    }
}

INSTANTIATE_TEST_SUITE_P(X690, XdOctstrS, testing::ValuesIn(kArrays), case_name);

TEST(XdOctstrSImplicit, LeavesTheEndOfContentsOctets) {
    CodecContext ctxt;
    int length;
    ASSERT_EQ(xd_match1(ctxt.read("a0 80 04 01 aa 00 00"), 0x80, &length), RT_OK);
    uint8_t array[4];
    uint32_t count = sizeof array;
    EXPECT_EQ(xd_octstr_s(ctxt, array, &count, ASN1IMPL, length), RT_OK);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(ctxt.position(), 5u);
}

// `levels` constructed strings around a primitive one.
std::vector<uint8_t> nested(uint8_t tag, int levels, std::vector<uint8_t> innermost) {
    for (int i = 0; i < levels; ++i) {
        innermost = element(tag, innermost);
    }
    return innermost;
}

TEST(XdOctstrNesting, EndsAt64Levels) {
    const std::vector<uint8_t> primitive = from_hex("04 01 aa");
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    {
        CodecContext ctxt;
        EXPECT_EQ(xd_octstr(ctxt.read(nested(0x24, 64, primitive)), &data, &count, ASN1EXPL, 0), RT_OK);
        EXPECT_EQ(to_hex(data, count), "aa");
        EXPECT_EQ(ctxt->nestingDepth, 0u);
    }
    CodecContext ctxt;
    EXPECT_EQ(xd_octstr(ctxt.read(nested(0x24, 65, primitive)), &data, &count, ASN1EXPL, 0), RT_E_NOTSUPP);
    EXPECT_EQ(ctxt->nestingDepth, 0u);
    EXPECT_EQ(xd_octstr(ctxt.read(nested(0x24, 2'000, primitive)), &data, &count, ASN1EXPL, 0), RT_E_NOTSUPP);
}

struct TextCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    const char* text = "";
};

constexpr TextCase kTexts[] = {
    {.name = "Primitive", .ber = "0c 03 61 62 63", .text = "abc"},
    {.name = "Empty", .ber = "0c 00", .text = ""},
    {.name = "Segments", .ber = "2c 06 04 01 61 04 01 62", .text = "ab"},
    {.name = "Indefinite", .ber = "2c 80 04 01 61 04 02 62 63 00 00", .text = "abc"},
    {.name = "IndefiniteWithoutSegments", .ber = "2c 80 00 00", .text = ""},
    {.name = "SegmentOfTheStringsOwnTag", .ber = "2c 03 0c 01 61", .status = RT_E_IDNOTFOUND},
    {.name = "IndefiniteWithoutEnd", .ber = "2c 80 04 01 61", .status = RT_E_ENDOFBUF},
    {.name = "OtherTag", .ber = "16 01 61", .status = RT_E_IDNOTFOUND},
    {.name = "LengthBeyondTheBuffer", .ber = "0c 7f 61", .status = RT_E_ENDOFBUF},
    {.name = "OneContinuationOctet", .ber = "0c 01 fc", .text = "\xFC"},
    {.name = "TagAlone", .ber = "0c", .status = RT_E_ENDOFBUF},
};

class XdCharstr : public testing::TestWithParam<TextCase> {};

TEST_P(XdCharstr, GivesTerminatedText) {
    const TextCase& row = GetParam();
    CodecContext ctxt;
    char* text = nullptr;
    EXPECT_EQ(xd_charstr(ctxt.read(row.ber), &text, ASN1EXPL, 12, 0), row.status);
    EXPECT_EQ(ctxt.recorded(), row.status);
    if (row.status == RT_OK) {
        EXPECT_STREQ(text, row.text);
        EXPECT_EQ(ctxt.position(), from_hex(row.ber).size());
    }
}

INSTANTIATE_TEST_SUITE_P(X690, XdCharstr, testing::ValuesIn(kTexts), case_name);

TEST(XdCharstrImplicit, TakesLengthAndFormOfTheCaller) {
    CodecContext ctxt;
    char* text = nullptr;
    int length;
    ASSERT_EQ(xd_match1(ctxt.read("80 02 61 62"), 0x80, &length), RT_OK);
    EXPECT_EQ(xd_charstr(ctxt, &text, ASN1IMPL, 12, length), RT_OK);
    EXPECT_STREQ(text, "ab");
    EXPECT_EQ(xd_charstr(ctxt.read("61 62"), &text, ASN1IMPL, 12, -1), RT_OK);
    EXPECT_STREQ(text, "");
}

TEST(Xd16BitCharStr, GivesCharactersInHostOrder) {
    CodecContext ctxt;
    ASN1_16BITCHARSTRING text{};
    ASSERT_EQ(xd_16BitCharStr(ctxt.read("1e 04 00 41 20 ac"), &text, ASN1EXPL, 30, 0), RT_OK);
    ASSERT_EQ(text.nchars, 2u);
    EXPECT_EQ(text.data[0], 0x0041);
    EXPECT_EQ(text.data[1], 0x20AC);
}

TEST(Xd16BitCharStr, DropsAnOddOctet) {
    CodecContext ctxt;
    ASN1_16BITCHARSTRING text{};
    ASSERT_EQ(xd_16BitCharStr(ctxt.read("1e 03 00 41 20"), &text, ASN1EXPL, 30, 0), RT_OK);  // Intended.
    EXPECT_EQ(text.nchars, 1u);
    EXPECT_EQ(ctxt.position(), 5u);
}

TEST(Xd16BitCharStr, JoinsSegmentsThatCutACharacter) {
    CodecContext ctxt;
    ASN1_16BITCHARSTRING text{};
    ASSERT_EQ(xd_16BitCharStr(ctxt.read("3e 80 04 01 20 04 01 ac 00 00"), &text, ASN1EXPL, 30, 0), RT_OK);
    ASSERT_EQ(text.nchars, 1u);
    EXPECT_EQ(text.data[0], 0x20AC);
}

TEST(Xd16BitCharStr, GivesANullRecordForNoCharacters) {
    CodecContext ctxt;
    uint16_t character = 0;
    ASN1_16BITCHARSTRING text = {.nchars = 1, .data = &character};
    ASSERT_EQ(xd_16BitCharStr(ctxt.read("1e 00"), &text, ASN1EXPL, 30, 0), RT_OK);
    EXPECT_EQ(text.nchars, 0u);
    EXPECT_EQ(text.data, nullptr);
}

TEST(XdWideStringsImplicit, GiveNothingForANegativeLength) {
    CodecContext ctxt;
    ASN1_16BITCHARSTRING narrow{};
    EXPECT_EQ(xd_16BitCharStr(ctxt.read("00 41"), &narrow, ASN1IMPL, 30, -1), RT_OK);
    EXPECT_EQ(narrow.nchars, 0u);
    ASN1_32BITCHARSTRING wide{};
    EXPECT_EQ(xd_32BitCharStr(ctxt.read("00 00 00 41"), &wide, ASN1IMPL, 28, -1), RT_OK);
    EXPECT_EQ(wide.nchars, 0u);
    EXPECT_EQ(ctxt.position(), 0u);
}

TEST(Xd32BitCharStr, GivesCharactersInHostOrder) {
    CodecContext ctxt;
    ASN1_32BITCHARSTRING text{};
    ASSERT_EQ(xd_32BitCharStr(ctxt.read("1c 08 00 00 00 41 00 01 f6 00"), &text, ASN1EXPL, 28, 0), RT_OK);
    ASSERT_EQ(text.nchars, 2u);
    EXPECT_EQ(text.data[0], 0x41u);
    EXPECT_EQ(text.data[1], 0x1F600u);
    ASSERT_EQ(xd_32BitCharStr(ctxt.read("1c 03 00 00 00"), &text, ASN1EXPL, 28, 0), RT_OK);
    EXPECT_EQ(text.nchars, 0u);
}

TEST(XdWideStrings, RefuseLyingLengths) {
    CodecContext ctxt;
    ASN1_16BITCHARSTRING narrow{};
    ASN1_32BITCHARSTRING wide{};
    EXPECT_EQ(xd_16BitCharStr(ctxt.read("1e 7f 00 41"), &narrow, ASN1EXPL, 30, 0), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_32BitCharStr(ctxt.read("1c 84 7f ff ff ff 00"), &wide, ASN1EXPL, 28, 0), RT_E_INVLEN);
}

struct MeasureCase {
    const char* name;
    const char* ber;
    ASN1TAG tag;
    int status = RT_OK;
    uint32_t count = 0;
    uint32_t total = 0;
};

constexpr MeasureCase kMeasures[] = {
    {.name = "TwoSegments", .ber = "04 01 aa 04 02 bb cc 00 00", .tag = 4, .count = 3, .total = 7},
    {.name = "NoSegments", .ber = "00 00", .tag = 4, .count = 0, .total = 0},
    {.name = "EmptySegment", .ber = "04 00 00 00", .tag = 4, .count = 0, .total = 2},
    {.name = "BitStringsCountTheUnusedOctet", .ber = "03 02 00 aa 00 00", .tag = 3, .count = 2, .total = 4},
    {.name = "ConstructedSegment", .ber = "24 03 04 01 aa 00 00", .tag = 4, .status = RT_E_BADTAG},
    {.name = "OtherSegment", .ber = "03 02 00 aa 00 00", .tag = 4, .status = RT_E_BADTAG},
    {.name = "WithoutEnd", .ber = "04 01 aa", .tag = 4, .status = RT_E_ENDOFBUF},
    {.name = "SegmentBeyondTheBuffer", .ber = "04 7f aa 00 00", .tag = 4, .status = RT_E_ENDOFBUF},
};

class XdConsStr : public testing::TestWithParam<MeasureCase> {};

TEST_P(XdConsStr, MeasuresWithoutMoving) {
    const MeasureCase& row = GetParam();
    CodecContext ctxt;
    uint32_t count = 0;
    uint32_t total = 0;
    rtCtxtSetFlag(ctxt.read(row.ber), RT_F_CONSTAG);
    EXPECT_EQ(xd_consStrIndefLenAndSize(ctxt, row.tag, &count, &total), row.status);
    EXPECT_EQ(ctxt.position(), 0u);
    EXPECT_NE(ctxt->flags & RT_F_CONSTAG, 0);
    if (row.status == RT_OK) {
        EXPECT_EQ(count, row.count);
        EXPECT_EQ(total, row.total);
    }
}

INSTANTIATE_TEST_SUITE_P(X690, XdConsStr, testing::ValuesIn(kMeasures), case_name);

TEST(StringDecoders, ReportExhaustedMemoryAndKeepNothing) {
    CodecHeap heap;
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    char* text = nullptr;
    ASN1_16BITCHARSTRING narrow{};
    ASN1_32BITCHARSTRING wide{};
    const std::size_t before = heap.live_blocks();
    heap.fail_after(0);
    EXPECT_EQ(xd_octstr(ctxt.read("04 01 aa"), &data, &count, ASN1EXPL, 0), RT_E_NOMEM);
    heap.fail_after(0);
    EXPECT_EQ(xd_charstr(ctxt.read("0c 01 61"), &text, ASN1EXPL, 12, 0), RT_E_NOMEM);
    heap.fail_after(0);
    EXPECT_EQ(xd_16BitCharStr(ctxt.read("1e 02 00 41"), &narrow, ASN1EXPL, 30, 0), RT_E_NOMEM);
    heap.fail_after(0);
    EXPECT_EQ(xd_32BitCharStr(ctxt.read("1c 04 00 00 00 41"), &wide, ASN1EXPL, 28, 0), RT_E_NOMEM);
    EXPECT_EQ(heap.live_blocks(), before);
}

TEST(StringDecoders, TakeNoMemoryForALyingLength) {
    CodecHeap heap;
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    const std::size_t before = heap.allocations();
    EXPECT_EQ(xd_octstr(ctxt.read("04 7f aa"), &data, &count, ASN1EXPL, 0), RT_E_ENDOFBUF);
    EXPECT_EQ(heap.allocations(), before);
}

}  // namespace
}  // namespace Quillmark::test
