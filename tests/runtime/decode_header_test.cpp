#include <gtest/gtest.h>

#include "runtime/ber_decode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct HeaderCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    ASN1TAG tag = 0;
    int length = 0;
    uint32_t position = 0;  ///< with `XM_ADVANCE`
};

// X.690 8.1.2 and 8.1.3.
constexpr HeaderCase kHeaders[] = {
    {.name = "ShortLength", .ber = "02 01 05", .tag = 2, .length = 1, .position = 2},
    {.name = "Constructed", .ber = "30 00", .tag = 0x20000010, .length = 0, .position = 2},
    {.name = "ContextConstructed", .ber = "a1 00", .tag = 0xA0000001, .length = 0, .position = 2},
    {.name = "LongTagOfTwoOctets", .ber = "9f 1f 00", .tag = 0x8000001F, .position = 3},
    {.name = "LongTagOfThreeOctets", .ber = "9f 81 00 00", .tag = 0x80000080, .position = 4},
    {.name = "LargestTag", .ber = "ff 81 ff ff ff 7f 00", .tag = 0xFFFFFFFF, .position = 7},
    {.name = "TagAboveTheLargest", .ber = "9f 82 80 80 80 00 00", .status = RT_E_BADTAG, .position = 6},
    {.name = "TagOfNineFurtherOctets",
     .ber = "9f 80 80 80 80 80 80 80 80 01 00",
     .tag = 0x80000001,
     .position = 11},
    {.name = "TagOfTenFurtherOctets",
     .ber = "9f 80 80 80 80 80 80 80 80 80 01 00",
     .status = RT_E_BADTAG,
     .position = 10},
    {.name = "LongLengthInTheBuffer", .ber = "04 81 01 aa", .tag = 4, .length = 1, .position = 3},
    {.name = "LongLengthNotMinimal", .ber = "04 84 00 00 00 01 aa", .tag = 4, .length = 1, .position = 6},
    {.name = "LongLengthBeyondTheBuffer", .ber = "04 81 02 aa", .status = RT_E_INVLEN, .position = 3},
    // Intended: a short length is left to the decoder of the value.
    {.name = "ShortLengthBeyondTheBuffer", .ber = "04 7f", .tag = 4, .length = 127, .position = 2},
    {.name = "LengthOf5Octets", .ber = "04 85 00 00 00 00 01 aa", .status = RT_E_INVLEN, .position = 2},
    {.name = "LengthOf127Octets", .ber = "04 ff aa", .status = RT_E_INVLEN, .position = 2},
    {.name = "LengthNegativeIn32Bits", .ber = "04 84 ff ff ff ff", .status = RT_E_INVLEN, .position = 6},
    {.name = "LengthOf2GiB", .ber = "04 84 80 00 00 00", .status = RT_E_INVLEN, .position = 6},
    {.name = "LengthJustBelow2GiB", .ber = "04 84 7f ff ff ff", .status = RT_E_INVLEN, .position = 6},
    {.name = "Indefinite", .ber = "30 80", .tag = 0x20000010, .length = RT_INDEFLEN, .position = 2},
    {.name = "IndefiniteOnPrimitive", .ber = "04 80", .status = RT_E_INVLEN, .position = 2},
    // Intended: these four octets assemble to the number that stands for the indefinite form.
    {.name = "LengthThatLooksIndefinite",
     .ber = "30 84 ff ff d8 f1",
     .tag = 0x20000010,
     .length = RT_INDEFLEN,
     .position = 6},
    {.name = "LengthThatLooksIndefiniteOnPrimitive",
     .ber = "04 84 ff ff d8 f1",
     .status = RT_E_INVLEN,
     .position = 6},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
    {.name = "TagAlone", .ber = "04", .status = RT_E_ENDOFBUF, .position = 1},
    {.name = "LongTagCutBeforeItsNumber", .ber = "9f", .status = RT_E_ENDOFBUF, .position = 1},
    {.name = "LongTagCutInItsNumber", .ber = "9f 81", .status = RT_E_ENDOFBUF, .position = 2},
    {.name = "LengthCut", .ber = "04 82 01", .status = RT_E_ENDOFBUF, .position = 3},
};

class XdTagLen : public testing::TestWithParam<HeaderCase> {};

TEST_P(XdTagLen, ReadsAHeader) {
    const HeaderCase& row = GetParam();
    CodecContext ctxt;
    ASN1TAG tag = 0;
    int length = 0;
    EXPECT_EQ(xd_tag_len(ctxt.read(row.ber), &tag, &length, XM_ADVANCE), row.status);
    EXPECT_EQ(ctxt.position(), row.position);
    EXPECT_EQ(ctxt.recorded(), RT_OK);  // left to the caller
    if (row.status == RT_OK) {
        EXPECT_EQ(tag, row.tag);
        EXPECT_EQ(length, row.length);
        EXPECT_EQ((ctxt->flags & RT_F_CONSTAG) != 0, (row.tag & 0x20000000) != 0);
    }
}

TEST_P(XdTagLen, PeeksWithoutMoving) {
    CodecContext ctxt;
    ctxt.read(GetParam().ber);
    ctxt->flags = RT_F_FASTCOPY;
    ASN1TAG tag = 0;
    int length = 0;
    EXPECT_EQ(xd_tag_len(ctxt, &tag, &length, 0), GetParam().status);
    EXPECT_EQ(ctxt.position(), 0u);
    EXPECT_EQ(ctxt->flags, RT_F_FASTCOPY);
}

TEST_P(XdTagLen, KeepsToTheBufferInTheIndefiniteFormToo) {
    CodecContext ctxt;
    ctxt.read(GetParam().ber);
    ctxt->flags = RT_F_INDEFLEN;
    ASN1TAG tag = 0;
    int length = 0;
    EXPECT_EQ(xd_tag_len(ctxt, &tag, &length, XM_ADVANCE), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(X690, XdTagLen, testing::ValuesIn(kHeaders), case_name);

TEST(XdTagLenState, IsSavedBeforeTheHeader) {
    CodecContext ctxt;
    ctxt.read("02 01 05 30 00");
    ASN1TAG tag;
    int length;
    ASSERT_EQ(xd_tag_len(ctxt, &tag, &length, XM_ADVANCE), RT_OK);
    ctxt->buffer.byteIndex = 3;
    ASSERT_EQ(xd_tag_len(ctxt, &tag, &length, XM_ADVANCE), RT_OK);
    xu_RestoreBufferState(ctxt, nullptr);
    EXPECT_EQ(ctxt.position(), 3u);
    EXPECT_EQ(ctxt->flags & RT_F_CONSTAG, 0);
}

TEST(XdTagLenState, EndIsAnnouncedByBothFlags) {
    CodecContext ctxt;
    ctxt.read("02 01 05");
    ASN1TAG tag;
    int length;
    rtCtxtSetFlag(ctxt, RT_F_INDEFLEN | RT_F_LASTEOC);
    EXPECT_EQ(xd_tag_len(ctxt, &tag, &length, XM_ADVANCE), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_Tag1AndLen(ctxt, &length), RT_E_ENDOFBUF);
    EXPECT_EQ(ctxt.position(), 0u);
}

TEST(XdLen, IsNotComparedWithTheBufferWhenThatIsSwitchedOff) {
    CodecContext ctxt;
    int length = -1;
    rtCtxtSetFlag(ctxt, RT_F_NOLENCHECK);
    EXPECT_EQ(xd_len(ctxt.read("81 ff"), &length), RT_OK);
    EXPECT_EQ(length, 255);
}

TEST(XdLen, StartsFromZero) {
    CodecContext ctxt;
    int length = -1;
    EXPECT_EQ(xd_len(ctxt.read("85 00 00 00 00 01"), &length), RT_E_INVLEN);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(xd_len(ctxt.read(""), &length), RT_E_ENDOFBUF);
}

TEST(XdTag, StaysInTheBuffer) {
    CodecContext ctxt;
    ASN1TAG tag;
    EXPECT_EQ(xd_tag(ctxt.read(""), &tag), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_tag(ctxt.read("bf 81 01"), &tag), RT_OK);
    EXPECT_EQ(tag, 0xA0000081u);
    EXPECT_NE(ctxt->flags & RT_F_CONSTAG, 0);
}

TEST(XdTag1AndLen, SkipsTheComparedOctet) {
    CodecContext ctxt;
    int length = 0;
    EXPECT_EQ(xd_Tag1AndLen(ctxt.read("30 7f"), &length), RT_OK);
    EXPECT_EQ(length, 127);
    EXPECT_NE(ctxt->flags & RT_F_CONSTAG, 0);
    EXPECT_EQ(xd_Tag1AndLen(ctxt.read("04 81 02 aa"), &length), RT_E_INVLEN);
    EXPECT_EQ(xd_Tag1AndLen(ctxt.read("04"), &length), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_Tag1AndLen(ctxt.read(""), &length), RT_E_ENDOFBUF);
}

struct Match1Case {
    const char* name;
    const char* ber;
    uint8_t tag;
    int status = RT_OK;
    int length = 0;
    uint32_t position = 0;
};

constexpr Match1Case kMatch1[] = {
    {.name = "Primitive", .ber = "02 01 05", .tag = 0x02, .length = 1, .position = 2},
    {.name = "Constructed", .ber = "30 03 02 01 05", .tag = 0x30, .length = 3, .position = 2},
    // Intended: the form bit is ignored.
    {.name = "PrimitiveForConstructed", .ber = "10 00", .tag = 0x30, .position = 2},
    {.name = "ConstructedForPrimitive", .ber = "a0 00", .tag = 0x80, .position = 2},
    {.name = "OtherNumber", .ber = "04 01 05", .tag = 0x02, .status = RT_E_IDNOTFOUND},
    {.name = "OtherClass", .ber = "82 01 05", .tag = 0x02, .status = RT_E_IDNOTFOUND},
    {.name = "Nothing", .ber = "", .tag = 0x02, .status = RT_E_ENDOFBUF},
    {.name = "TagAlone", .ber = "02", .tag = 0x02, .status = RT_E_ENDOFBUF, .position = 1},
    {.name = "Indefinite", .ber = "30 80", .tag = 0x30, .length = RT_INDEFLEN, .position = 2},
    {.name = "IndefiniteOnPrimitive", .ber = "10 80", .tag = 0x30, .status = RT_E_INVLEN, .position = 2},
    {.name = "LongLengthBeyondTheBuffer",
     .ber = "30 81 05 00",
     .tag = 0x30,
     .status = RT_E_INVLEN,
     .position = 3},
};

class XdMatch1 : public testing::TestWithParam<Match1Case> {};

TEST_P(XdMatch1, ReadsTheHeaderOfItsTagAndRecordsFailures) {
    const Match1Case& row = GetParam();
    CodecContext ctxt;
    int length = 0;
    EXPECT_EQ(xd_match1(ctxt.read(row.ber), row.tag, &length), row.status);
    EXPECT_EQ(ctxt.recorded(), row.status);
    EXPECT_EQ(ctxt.position(), row.position);
    EXPECT_EQ(length, row.length);
}

INSTANTIATE_TEST_SUITE_P(X690, XdMatch1, testing::ValuesIn(kMatch1), case_name);

TEST(XdMatch1Length, IsNotJudgedWhenNobodyWantsIt) {
    CodecContext ctxt;
    EXPECT_EQ(xd_match1(ctxt.read("10 80"), 0x30, nullptr), RT_OK);
}

// SEQUENCE { INTEGER 5, OCTET STRING AA, [1] { NULL } }
constexpr const char* kSearched = "30 0a 02 01 05 04 01 aa a1 02 05 00";

struct MatchCase {
    const char* name;
    uint32_t start;
    ASN1TAG tag;
    int mode;
    int status = RT_OK;
    int length = 0;
    uint32_t position = 0;
};

constexpr MatchCase kMatches[] = {
    {.name = "Peek", .start = 0, .tag = 0x20000010, .mode = 0, .length = 10, .position = 0},
    {.name = "PeekIgnoresTheForm", .start = 0, .tag = 0x10, .mode = 0, .length = 10, .position = 0},
    {.name = "Advance", .start = 0, .tag = 0x20000010, .mode = XM_ADVANCE, .length = 10, .position = 2},
    {.name = "Mismatch", .start = 2, .tag = 4, .mode = XM_ADVANCE, .status = RT_E_IDNOTFOUND, .position = 2},
    {.name = "SeekEntersConstructed",
     .start = 0,
     .tag = 4,
     .mode = XM_SEEK | XM_ADVANCE,
     .length = 1,
     .position = 7},
    {.name = "SeekStopsAtTheTag", .start = 0, .tag = 4, .mode = XM_SEEK, .length = 1, .position = 5},
    {.name = "SeekDepthFirst", .start = 0, .tag = 5, .mode = XM_SEEK, .length = 0, .position = 10},
    {.name = "SeekInVain",
     .start = 0,
     .tag = 6,
     .mode = XM_SEEK | XM_ADVANCE,
     .status = RT_E_IDNOTFOUND,
     .position = 0},
    {.name = "SkipPrimitive", .start = 2, .tag = 4, .mode = XM_SKIP, .length = 1, .position = 5},
    {.name = "SkipEntersConstructed", .start = 8, .tag = 5, .mode = XM_SKIP, .length = 0, .position = 10},
    {.name = "SkipAtTheEnd",
     .start = 12,
     .tag = 5,
     .mode = XM_SKIP,
     .status = RT_E_IDNOTFOUND,
     .position = 12},
    {.name = "EndOfBufferIsNotFound",
     .start = 12,
     .tag = 5,
     .mode = XM_ADVANCE,
     .status = RT_E_IDNOTFOUND,
     .position = 12},
};

class XdMatch : public testing::TestWithParam<MatchCase> {};

TEST_P(XdMatch, LooksForATag) {
    const MatchCase& row = GetParam();
    CodecContext ctxt;
    ctxt.read(kSearched)->buffer.byteIndex = row.start;
    int length = 0;
    EXPECT_EQ(xd_match(ctxt, row.tag, &length, row.mode), row.status);
    EXPECT_EQ(ctxt.position(), row.position);
    EXPECT_EQ(length, row.length);
}

INSTANTIATE_TEST_SUITE_P(X690, XdMatch, testing::ValuesIn(kMatches), case_name);

TEST(XdMatchFailure, GoesBackForAMalformedHeader) {
    CodecContext ctxt;
    int length;
    EXPECT_EQ(xd_match(ctxt.read("04 81 05 00"), 4, &length, XM_ADVANCE), RT_E_INVLEN);
    EXPECT_EQ(ctxt.position(), 0u);
    EXPECT_EQ(xd_match(ctxt.read("02 01 05 04 85"), 4, &length, XM_SEEK), RT_E_INVLEN);
    EXPECT_EQ(ctxt.position(), 0u);
    EXPECT_EQ(xd_match(ctxt.read("9f"), 4, &length, XM_ADVANCE), RT_E_IDNOTFOUND);
    EXPECT_EQ(xd_match(ctxt.read("04 85"), 4, &length, XM_SKIP), RT_E_INVLEN);
    EXPECT_EQ(ctxt.position(), 0u);
}

TEST(XdMatchFailure, EndsTheSearchBehindAnOverlongElement) {
    CodecContext ctxt;
    int length;
    EXPECT_EQ(xd_match(ctxt.read("02 7f 05"), 4, &length, XM_SEEK), RT_E_IDNOTFOUND);
    EXPECT_EQ(ctxt.position(), 0u);
}

struct SetpCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    int total = 0;
    uint32_t size = 0;
    uint32_t position = 0;
};

constexpr SetpCase kMessages[] = {
    {.name = "Whole", .ber = "30 03 02 01 05", .total = 5, .size = 5},
    {.name = "OctetsBehindTheMessage", .ber = "30 03 02 01 05 aa bb", .total = 5, .size = 5},
    {.name = "LongLength", .ber = "30 82 00 03 02 01 05", .total = 7, .size = 7},
    {.name = "Indefinite", .ber = "30 80 02 01 05 00 00", .total = RT_INDEFLEN, .size = 7},
    // The position stays behind the header, the size within the message.
    {.name = "ShortLengthBeyondTheMessage",
     .ber = "30 7f 02 01 05",
     .status = RT_E_INVLEN,
     .size = 5,
     .position = 2},
    {.name = "ShortLengthOneBeyondTheMessage",
     .ber = "30 04 02 01 05",
     .status = RT_E_INVLEN,
     .size = 5,
     .position = 2},
    {.name = "LongLengthBeyondTheMessage", .ber = "30 82 01 00 02 01 05", .status = RT_E_INVLEN, .size = 7},
    {.name = "LengthOf4GiB", .ber = "30 84 ff ff ff ff", .status = RT_E_INVLEN, .size = 6},
    {.name = "IndefiniteOnPrimitive", .ber = "04 80 00 00", .status = RT_E_INVLEN, .size = 4},
    {.name = "OneOctet", .ber = "30", .status = RT_E_ENDOFBUF, .size = 1, .position = 1},
    {.name = "BadTag", .ber = "9f 8f ff ff ff 7f", .status = RT_E_BADTAG, .size = 6, .position = 6},
};

class XdSetp : public testing::TestWithParam<SetpCase> {};

TEST_P(XdSetp, BoundsTheBufferByTheMessage) {
    const SetpCase& row = GetParam();
    CodecContext ctxt;
    const std::vector<uint8_t> message = from_hex(row.ber);
    rtCtxtSetFlag(ctxt, RT_F_INDEFLEN | RT_F_LASTEOC);
    ASN1TAG tag = 0;
    int total = 0;
    EXPECT_EQ(xd_setp(ctxt, message.data(), static_cast<int>(message.size()), &tag, &total), row.status);
    EXPECT_EQ(total, row.total);
    EXPECT_EQ(ctxt->buffer.size, row.size);
    EXPECT_EQ(ctxt.position(), row.position);
    EXPECT_EQ((ctxt->flags & RT_F_INDEFLEN) != 0, row.total == RT_INDEFLEN);
    EXPECT_EQ(ctxt->flags & RT_F_LASTEOC, 0);
    EXPECT_EQ(tag, row.status == RT_OK ? 0x20000010u : 0u);
}

INSTANTIATE_TEST_SUITE_P(X690, XdSetp, testing::ValuesIn(kMessages), case_name);

TEST(XdSetpUnbounded, TrustsTheFirstLength) {
    CodecContext ctxt;
    const uint8_t message[] = {0x30, 0x03, 0x02, 0x01, 0x05};
    int total = 0;
    EXPECT_EQ(xd_setp(ctxt, message, 0, nullptr, &total), RT_OK);
    EXPECT_EQ(total, 5);
    EXPECT_EQ(ctxt->buffer.size, 5u);
    const uint8_t indefinite[] = {0x30, 0x80, 0x00, 0x00};
    EXPECT_EQ(xd_setp(ctxt, indefinite, -1, nullptr, &total), RT_OK);
    EXPECT_EQ(ctxt->buffer.size, 0x7FFFFFFFu);
}

TEST(XdSetpUnchecked, DoesNotRaiseTheSize) {
    CodecContext ctxt;
    rtCtxtSetFlag(ctxt, RT_F_NOLENCHECK);
    const uint8_t message[] = {0x30, 0x7F, 0x02, 0x01, 0x05};
    int total = 0;
    EXPECT_EQ(xd_setp(ctxt, message, sizeof message, nullptr, &total), RT_OK);
    EXPECT_EQ(total, 129);
    EXPECT_EQ(ctxt->buffer.size, sizeof message);
    EXPECT_EQ(ctxt.position(), 0u);
}

// Header and length together pass 2^31 and 2^32.
TEST(XdSetpUnchecked, KeepsTheSizeForLengthsThatFitNoCount) {
    for (const char* const length : {"7f ff ff f9", "7f ff ff fa", "7f ff ff ff", "80 00 00 00",
                                     "ff ff ff f9", "ff ff ff fa", "ff ff ff ff"}) {
        SCOPED_TRACE(length);
        CodecContext ctxt;
        rtCtxtSetFlag(ctxt, RT_F_NOLENCHECK);
        const std::vector<uint8_t> message = from_hex(std::string("30 84 ") + length + " 02 01 05");
        int total = 0;
        EXPECT_EQ(xd_setp(ctxt, message.data(), static_cast<int>(message.size()), nullptr, &total), RT_OK);
        EXPECT_EQ(total, INT32_MAX);
        EXPECT_EQ(ctxt->buffer.size, message.size());
    }
}

TEST(XdSetpContext, MustBeAlive) {
    ASN1CTXT ctxt{};
    const uint8_t message[] = {0x30, 0x00};
    EXPECT_EQ(xd_setp(&ctxt, message, sizeof message, nullptr, nullptr), RT_E_NOTINIT);
}

TEST(XdSetpNull, ReadsAClearedBlock) {
    CodecContext ctxt;
    ASN1TAG tag = 1;
    EXPECT_EQ(xd_setp(ctxt, nullptr, 16, &tag, nullptr), RT_OK);
    EXPECT_EQ(tag, 0u);
}

TEST(BufferState, GoesIntoACallersRecord) {
    CodecContext ctxt;
    ctxt.read("02 01 05");
    ctxt->buffer.byteIndex = 2;
    ctxt->flags = RT_F_FASTCOPY | RT_F_LASTEOC;
    ASN1BUFSAVE state;
    xu_SaveBufferState(ctxt, &state);
    ctxt->buffer.byteIndex = 0;
    ctxt->flags = 0;
    xu_RestoreBufferState(ctxt, &state);
    EXPECT_EQ(ctxt.position(), 2u);
    EXPECT_EQ(ctxt->flags, RT_F_FASTCOPY);  // without RT_F_LASTEOC
}

TEST(BufferState, GoesIntoTheContextWithoutOne) {
    CodecContext ctxt;
    ctxt.read("02 01 05");
    ctxt->buffer.byteIndex = 1;
    xu_SaveBufferState(ctxt, nullptr);
    EXPECT_EQ(ctxt->savedState.byteIndex, 1u);
    ctxt->buffer.byteIndex = 3;
    xu_RestoreBufferState(ctxt, nullptr);
    EXPECT_EQ(ctxt.position(), 1u);
}

}  // namespace
}  // namespace Quillmark::test
