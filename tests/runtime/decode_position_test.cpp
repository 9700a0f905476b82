#include <gtest/gtest.h>

#include "runtime/ber_decode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

std::vector<uint8_t> repeated(std::string_view hex, size_t count) {
    const std::vector<uint8_t> unit = from_hex(hex);
    std::vector<uint8_t> octets;
    for (size_t i = 0; i < count; ++i) {
        octets.insert(octets.end(), unit.begin(), unit.end());
    }
    return octets;
}

TEST(XdMemcpy, CopiesUpToTheEnd) {
    CodecContext ctxt;
    uint8_t out[3] = {};
    EXPECT_EQ(xd_memcpy(ctxt.read("01 02 03"), out, 3), RT_OK);
    EXPECT_EQ(to_hex(out, 3), "01 02 03");
    EXPECT_EQ(ctxt.position(), 3u);
    EXPECT_EQ(xd_memcpy(ctxt, out, 0), RT_OK);
    EXPECT_EQ(xd_memcpy(ctxt, out, 1), RT_E_ENDOFBUF);
    EXPECT_EQ(ctxt.recorded(), RT_OK);
}

TEST(XdMemcpy, KeepsToTheBufferInTheIndefiniteFormToo) {
    CodecContext ctxt;
    uint8_t out[4];
    rtCtxtSetFlag(ctxt.read("01 02 03"), RT_F_INDEFLEN);
    EXPECT_EQ(xd_memcpy(ctxt, out, 4), RT_E_ENDOFBUF);
    EXPECT_EQ(ctxt.position(), 0u);
}

TEST(XdMemcpy, FindsNothingBehindTheEnd) {
    CodecContext ctxt;
    uint8_t out[1];
    ctxt.read("01 02 03")->buffer.byteIndex = 100;  // where a short length can leave it
    EXPECT_EQ(xd_memcpy(ctxt, out, 1), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_memcpy(ctxt, out, static_cast<size_t>(-50)), RT_E_ENDOFBUF);
}

struct CountCase {
    const char* name;
    const char* ber;
    int length;
    int status = RT_OK;
    int count = -1;
};

constexpr CountCase kCounts[] = {
    {.name = "Definite", .ber = "02 01 05 05 00", .length = 5, .count = 2},
    {.name = "DefiniteBeforeTheEnd", .ber = "02 01 05 05 00 04 00", .length = 5, .count = 2},
    {.name = "EndOfBufferFirst", .ber = "02 01 05 05 00", .length = 50, .count = 2},
    {.name = "Indefinite", .ber = "02 01 05 05 00 00 00 04 00", .length = RT_INDEFLEN, .count = 2},
    {.name = "IndefiniteWithOneOctetLeft", .ber = "02 01 05 05 00 00", .length = RT_INDEFLEN, .count = 2},
    {.name = "NestedIndefinite", .ber = "30 80 02 01 05 00 00 05 00", .length = 9, .count = 2},
    {.name = "Empty", .ber = "02 01 05", .length = 0, .count = 0},
    {.name = "NegativeLength", .ber = "02 01 05", .length = -1, .count = 0},
    {.name = "MalformedElement", .ber = "05 00 02 85", .length = 4, .status = RT_E_INVLEN},
    {.name = "IndefiniteWithoutEnd", .ber = "30 80 02 01 05", .length = 5, .status = RT_E_ENDOFBUF},
};

class XdCount : public testing::TestWithParam<CountCase> {};

TEST_P(XdCount, CountsElementsAndComesBack) {
    const CountCase& row = GetParam();
    CodecContext ctxt;
    int count = -1;
    EXPECT_EQ(xd_count(ctxt.read(row.ber), row.length, &count), row.status);
    EXPECT_EQ(count, row.count);
    if (row.status == RT_OK) {
        EXPECT_EQ(ctxt.position(), 0u);
    } else {
        EXPECT_NE(ctxt.position(), 0u);  // Intended: only success comes back.
    }
}

INSTANTIATE_TEST_SUITE_P(X690, XdCount, testing::ValuesIn(kCounts), case_name);

TEST(XdNextElement, StepsOverOneElement) {
    CodecContext ctxt;
    EXPECT_EQ(xd_NextElement(ctxt.read("30 03 02 01 05 05 00")), RT_OK);
    EXPECT_EQ(ctxt.position(), 5u);
    EXPECT_EQ(xd_NextElement(ctxt), RT_OK);
    EXPECT_EQ(ctxt.position(), 7u);
    EXPECT_EQ(xd_NextElement(ctxt), RT_E_ENDOFBUF);
}

TEST(XdNextElement, StepsOverTheIndefiniteForm) {
    CodecContext ctxt;
    EXPECT_EQ(xd_NextElement(ctxt.read("30 80 30 80 02 01 05 00 00 00 00 05 00")), RT_OK);
    EXPECT_EQ(ctxt.position(), 11u);
}

TEST(XdNextElement, MayLeaveTheBufferByAShortLengthButNotReadThere) {
    CodecContext ctxt;
    EXPECT_EQ(xd_NextElement(ctxt.read("04 7f 00")), RT_OK);
    EXPECT_EQ(ctxt.position(), 129u);
    EXPECT_EQ(xd_NextElement(ctxt), RT_E_ENDOFBUF);
    int length;
    EXPECT_EQ(xd_match1(ctxt, 4, &length), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_len(ctxt, &length), RT_E_ENDOFBUF);
    int count;
    EXPECT_EQ(xd_count(ctxt, RT_INDEFLEN, &count), RT_OK);
    EXPECT_EQ(count, 0);
}

TEST(XdMovePastEOC, EndsWithTheOutermostElement) {
    CodecContext ctxt;
    EXPECT_EQ(xd_MovePastEOC(ctxt.read("30 80 02 01 05 00 00 04 00 00 00 aa")), RT_OK);
    EXPECT_EQ(ctxt.position(), 11u);
}

TEST(XdMovePastEOC, ReportsAMissingEnd) {
    CodecContext ctxt;
    EXPECT_EQ(xd_MovePastEOC(ctxt.read("30 80 02 01 05 00 00 04 00")), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_MovePastEOC(ctxt.read("00")), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_MovePastEOC(ctxt.read("04 7f 00 00")), RT_E_ENDOFBUF);
}

TEST(XdMovePastEOC, HasNoNestingLimit) {
    CodecContext ctxt;
    std::vector<uint8_t> octets = repeated("30 80", 100'000);
    EXPECT_EQ(xd_MovePastEOC(ctxt.read(octets)), RT_E_ENDOFBUF);
    const std::vector<uint8_t> ends = repeated("00 00", 100'001);
    octets.insert(octets.end(), ends.begin(), ends.end());
    EXPECT_EQ(xd_MovePastEOC(ctxt.read(octets)), RT_OK);
    EXPECT_EQ(ctxt.position(), octets.size());
}

TEST(XdMovePastEOC, DoesNotWrapAroundOnUncheckedLengths) {
    CodecContext ctxt;
    ctxt.read("04 84 7f ff ff ff 04 84 7f ff ff ff 04 84 7f ff ff ff");
    rtCtxtSetFlag(ctxt, RT_F_NOLENCHECK);
    EXPECT_EQ(xd_MovePastEOC(ctxt), RT_E_ENDOFBUF);
    ctxt->buffer.byteIndex = 0xFFFFFFF0;
    EXPECT_EQ(xd_NextElement(ctxt), RT_E_ENDOFBUF);
}

struct IndefiniteCase {
    const char* name;
    const char* ber;
    int result;
};

constexpr IndefiniteCase kIndefinite[] = {
    {.name = "Whole", .ber = "30 80 02 01 05 00 00", .result = 7},
    {.name = "OctetsBehindTheMessage", .ber = "30 80 02 01 05 00 00 aa bb", .result = 7},
    {.name = "Nested", .ber = "30 80 30 80 00 00 00 00", .result = 8},
    {.name = "FourOctets", .ber = "30 80 00 00", .result = 0},
    {.name = "FiveOctets", .ber = "30 80 00 00 00", .result = 4},
    {.name = "DefiniteOuterLength", .ber = "30 03 02 01 05", .result = RT_E_INVLEN},
    {.name = "WithoutEnd", .ber = "30 80 02 01 05", .result = RT_E_ENDOFBUF},
    {.name = "HalfAnEnd", .ber = "30 80 02 01 05 00", .result = RT_E_ENDOFBUF},
    {.name = "InnerElementBeyondTheBuffer", .ber = "30 80 04 7f 00 00 00", .result = RT_E_ENDOFBUF},
    {.name = "BadOuterLength", .ber = "30 85 00 00 00 00 00", .result = RT_E_INVLEN},
    {.name = "BadInnerLength", .ber = "30 80 04 85 00 00 00", .result = RT_E_INVLEN},
};

class XdIndeflen : public testing::TestWithParam<IndefiniteCase> {};

TEST_P(XdIndeflen, MeasuresAMessage) {
    const std::vector<uint8_t> message = from_hex(GetParam().ber);
    EXPECT_EQ(xd_indeflen_ex(message.data(), static_cast<int>(message.size())), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(X690, XdIndeflen, testing::ValuesIn(kIndefinite), case_name);

TEST(XdIndeflenArguments, MustBeAMessage) {
    EXPECT_EQ(xd_indeflen_ex(nullptr, 5), RT_E_INVPARAM);
}

}  // namespace
}  // namespace Quillmark::test
