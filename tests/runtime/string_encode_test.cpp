#include <gtest/gtest.h>

#include "runtime/der_encode.h"
#include "tests/runtime/codec_context.h"

namespace Quillmark::test {
namespace {

TEST(XeCharstr, WritesTheOctetsUnderAnyTag) {
    CodecContext ctxt;
    EXPECT_EQ(xe_charstr(ctxt.encode(), "abc", ASN1EXPL, 12), 5);
    EXPECT_EQ(ctxt.written(), "0c 03 61 62 63");
    EXPECT_EQ(xe_charstr(ctxt.encode(), "abc", ASN1EXPL, 0x80000001), 5);
    EXPECT_EQ(ctxt.written(), "81 03 61 62 63");
    EXPECT_EQ(xe_charstr(ctxt.encode(), "abc", ASN1EXPL, 0x4000001F), 6);
    EXPECT_EQ(ctxt.written(), "5f 1f 03 61 62 63");
    EXPECT_EQ(xe_charstr(ctxt.encode(), "abc", ASN1IMPL, 12), 3);
    EXPECT_EQ(ctxt.written(), "61 62 63");
}

TEST(XeCharstr, WritesAnEmptyString) {
    CodecContext ctxt;
    EXPECT_EQ(xe_charstr(ctxt.encode(), "", ASN1EXPL, 22), 2);
    EXPECT_EQ(ctxt.written(), "16 00");
}

TEST(XeCharstr, RefusesNull) {
    CodecContext ctxt;
    EXPECT_EQ(xe_charstr(ctxt.encode(), nullptr, ASN1EXPL, 12), RT_E_BADVALUE);
}

TEST(Xe16BitCharStr, WritesHighOctetsFirst) {
    CodecContext ctxt;
    uint16_t characters[] = {0x0041, 0x20AC};
    const ASN1_16BITCHARSTRING text = {.nchars = 2, .data = characters};
    EXPECT_EQ(xe_16BitCharStr(ctxt.encode(), &text, ASN1EXPL, 30), 6);
    EXPECT_EQ(ctxt.written(), "1e 04 00 41 20 ac");
    EXPECT_EQ(xe_16BitCharStr(ctxt.encode(), &text, ASN1IMPL, 30), 4);
}

TEST(Xe16BitCharStr, WritesAnEmptyString) {
    CodecContext ctxt;
    const ASN1_16BITCHARSTRING empty = {.nchars = 0, .data = nullptr};
    EXPECT_EQ(xe_16BitCharStr(ctxt.encode(), &empty, ASN1EXPL, 30), 2);
    EXPECT_EQ(ctxt.written(), "1e 00");
    EXPECT_EQ(xe_16BitCharStr(ctxt.encode(), &empty, ASN1IMPL, 30), 0);
    EXPECT_EQ(xe_16BitCharStr(ctxt, nullptr, ASN1EXPL, 30), RT_E_BADVALUE);
}

TEST(Xe32BitCharStr, WritesHighOctetsFirst) {
    CodecContext ctxt;
    uint32_t characters[] = {0x00000041, 0x0001F600};
    const ASN1_32BITCHARSTRING text = {.nchars = 2, .data = characters};
    EXPECT_EQ(xe_32BitCharStr(ctxt.encode(), &text, ASN1EXPL, 28), 10);
    EXPECT_EQ(ctxt.written(), "1c 08 00 00 00 41 00 01 f6 00");
    const ASN1_32BITCHARSTRING empty = {.nchars = 0, .data = nullptr};
    EXPECT_EQ(xe_32BitCharStr(ctxt.encode(), &empty, ASN1EXPL, 28), 2);
    EXPECT_EQ(xe_32BitCharStr(ctxt, nullptr, ASN1EXPL, 28), RT_E_BADVALUE);
}

TEST(XeWideStrings, ReportAFullBuffer) {
    CodecContext ctxt;
    uint8_t octets[4];
    uint16_t characters[] = {0x0041, 0x20AC};
    const ASN1_16BITCHARSTRING text = {.nchars = 2, .data = characters};
    xe_setp(ctxt, octets, sizeof octets);
    EXPECT_EQ(xe_16BitCharStr(ctxt, &text, ASN1EXPL, 30), RT_E_BUFOVFL);
    EXPECT_EQ(xe_charstr(ctxt, "abcd", ASN1EXPL, 12), RT_E_BUFOVFL);
}

}  // namespace
}  // namespace Quillmark::test
