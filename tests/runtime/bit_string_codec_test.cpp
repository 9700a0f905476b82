#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"
#include "tests/support/der.h"

namespace Quillmark::test {
namespace {

TEST(XeBitstr, CountsTheUnusedBits) {
    CodecContext ctxt;
    const uint8_t bits[] = {0xAA, 0x80};
    EXPECT_EQ(xe_bitstr(ctxt.encode(), bits, 9, ASN1EXPL), 5);
    EXPECT_EQ(ctxt.written(), "03 03 07 aa 80");
    EXPECT_EQ(xe_bitstr(ctxt.encode(), bits, 16, ASN1EXPL), 5);
    EXPECT_EQ(ctxt.written(), "03 03 00 aa 80");
    EXPECT_EQ(xe_bitstr(ctxt.encode(), bits, 8, ASN1EXPL), 4);
    EXPECT_EQ(ctxt.written(), "03 02 00 aa");
    EXPECT_EQ(xe_bitstr(ctxt.encode(), bits, 1, ASN1IMPL), 2);
    EXPECT_EQ(ctxt.written(), "07 aa");  // Intended: the caller holds unused bits at 0.
}

TEST(XeBitstr, WritesTheEmptyString) {
    CodecContext ctxt;
    EXPECT_EQ(xe_bitstr(ctxt.encode(), nullptr, 0, ASN1EXPL), 3);
    EXPECT_EQ(ctxt.written(), "03 01 00");
}

TEST(XeBitstr, WritesNothingForBitsThatAreNotThere) {
    CodecContext ctxt;
    EXPECT_EQ(xe_bitstr(ctxt.encode(), nullptr, 8, ASN1EXPL), 0);
    EXPECT_EQ(ctxt.written(), "");
}

TEST(XeBitstr, CountsTheOctetsOfTheLongestString) {
    CodecContext ctxt;
    uint8_t room[16];
    const uint8_t bits[] = {0xAA};
    ASSERT_EQ(xe_setp(ctxt, room, sizeof room), RT_OK);
    EXPECT_EQ(xe_bitstr(ctxt, bits, UINT32_MAX, ASN1EXPL), RT_E_BUFOVFL);
    EXPECT_EQ(xe_bitstr(ctxt, bits, UINT32_MAX - 7, ASN1EXPL), RT_E_BUFOVFL);
}

TEST(XeBitstr, ReportsAFullBuffer) {
    CodecContext ctxt;
    uint8_t room[3];
    const uint8_t bits[] = {0xAA, 0x80};
    xe_setp(ctxt, room, sizeof room);
    EXPECT_EQ(xe_bitstr(ctxt, bits, 9, ASN1EXPL), RT_E_BUFOVFL);
}

struct BitCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    uint32_t numbits = 0;
    const char* octets = "";
    uint32_t position = 0;
};

// X.690 8.6.
constexpr BitCase kBits[] = {
    {.name = "WholeOctets", .ber = "03 02 00 aa", .numbits = 8, .octets = "aa", .position = 4},
    {.name = "NineBits", .ber = "03 03 07 aa 80", .numbits = 9, .octets = "aa 80", .position = 5},
    {.name = "UnusedBitsStay", .ber = "03 02 04 bf", .numbits = 4, .octets = "bf", .position = 4},
    {.name = "Empty", .ber = "03 01 00", .position = 3},
    {.name = "EmptyWithUnusedBits", .ber = "03 01 01", .status = RT_E_INVLEN},
    {.name = "NoContents", .ber = "03 00", .position = 2},
    {.name = "SevenUnusedBits", .ber = "03 02 07 80", .numbits = 1, .octets = "80", .position = 4},
    {.name = "EightUnusedBits", .ber = "03 02 08 80", .status = RT_E_BADVALUE},
    {.name = "OneSegment", .ber = "23 04 03 02 04 b0", .numbits = 4, .octets = "b0", .position = 6},
    // Intended: the unused-bits octet of every segment but the last becomes data.
    {.name = "TwoSegments",
     .ber = "23 08 03 02 00 aa 03 02 04 b0",
     .numbits = 20,
     .octets = "00 aa b0",
     .position = 10},
    {.name = "NestedSegments", .ber = "23 06 23 04 03 02 04 b0", .numbits = 4, .octets = "b0", .position = 8},
    {.name = "IndefiniteOneSegment",
     .ber = "23 80 03 02 04 b0 00 00",
     .numbits = 4,
     .octets = "b0",
     .position = 8},
    {.name = "IndefiniteTwoSegments",
     .ber = "23 80 03 02 00 aa 03 02 04 b0 00 00",
     .numbits = 20,
     .octets = "00 aa b0",
     .position = 12},
    {.name = "IndefiniteWithoutSegments", .ber = "23 80 00 00", .position = 4},
    {.name = "IndefiniteEmptySegment", .ber = "23 80 03 01 00 00 00", .position = 7},
    {.name = "IndefiniteEmptySegmentWithUnusedBits", .ber = "23 80 03 01 01 00 00", .status = RT_E_INVLEN},
    {.name = "LastSegmentWithoutItsOctet", .ber = "23 06 03 02 00 aa 03 00", .status = RT_E_INVLEN},
    {.name = "IndefiniteLastSegmentWithoutItsOctet",
     .ber = "23 80 03 02 00 aa 03 00 00 00",
     .status = RT_E_INVLEN},
    {.name = "EightUnusedBitsInASegment", .ber = "23 80 03 02 08 b0 00 00", .status = RT_E_BADVALUE},
    {.name = "IndefiniteWithConstructedSegment",
     .ber = "23 80 23 04 03 02 04 b0 00 00",
     .status = RT_E_BADTAG},
    {.name = "SegmentOfAnotherType", .ber = "23 04 04 02 04 b0", .status = RT_E_IDNOTFOUND},
    {.name = "SegmentLongerThanTheString", .ber = "23 03 03 02 04 b0", .status = RT_E_INVLEN},
    {.name = "IndefiniteWithoutEnd", .ber = "23 80 03 02 04 b0", .status = RT_E_ENDOFBUF},
    {.name = "IndefiniteOnPrimitive", .ber = "03 80 00 00", .status = RT_E_INVLEN},
    {.name = "ContentsCut", .ber = "03 03 00 aa", .status = RT_E_ENDOFBUF},
    {.name = "UnusedOctetCut", .ber = "03 01", .status = RT_E_ENDOFBUF},
    {.name = "LengthOf2GiB", .ber = "03 84 7f ff ff ff 00", .status = RT_E_INVLEN},
    {.name = "OtherTag", .ber = "04 01 00", .status = RT_E_IDNOTFOUND},
    {.name = "TagAlone", .ber = "03", .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
};

class XdBitstr : public testing::TestWithParam<BitCase> {
  protected:
    void expect_bits(uint16_t flags) {
        const BitCase& row = GetParam();
        CodecContext ctxt;
        const uint8_t* data = nullptr;
        uint32_t numbits = 0;
        rtCtxtSetFlag(ctxt.read(row.ber), flags);
        EXPECT_EQ(xd_bitstr(ctxt, &data, &numbits, ASN1EXPL, 0), row.status);
        EXPECT_EQ(ctxt.recorded(), row.status);
        if (row.status == RT_OK) {
            EXPECT_EQ(numbits, row.numbits);
            EXPECT_EQ(to_hex(data, (numbits + 7) / 8), row.octets);
            EXPECT_EQ(ctxt.position(), row.position);
        }
    }
};

TEST_P(XdBitstr, GivesTheBitsOfAllSegments) {
    expect_bits(0);
}

TEST_P(XdBitstr, KeepsToTheBufferInTheIndefiniteFormToo) {
    expect_bits(RT_F_INDEFLEN);
}

TEST_P(XdBitstr, GivesTheSameWithoutCopying) {
    expect_bits(RT_F_FASTCOPY);
}

INSTANTIATE_TEST_SUITE_P(X690, XdBitstr, testing::ValuesIn(kBits), case_name);

TEST(XdBitstrFastCopy, PointsBehindTheUnusedOctet) {
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t numbits = 0;
    rtCtxtSetFlag(ctxt.read("03 02 00 aa"), RT_F_FASTCOPY);
    ASSERT_EQ(xd_bitstr(ctxt, &data, &numbits, ASN1EXPL, 0), RT_OK);
    EXPECT_EQ(data, ctxt->buffer.data + 3);
}

/// Octets that are all 0 and take no memory until they are written.
class ZeroOctets {
  public:
    explicit ZeroOctets(size_t size)
        : size_(size),
          data_(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1,
                     0)) {}
    ~ZeroOctets() { munmap(data_, size_); }
    ZeroOctets(const ZeroOctets&) = delete;
    ZeroOctets& operator=(const ZeroOctets&) = delete;

    uint8_t* data() const { return data_ == MAP_FAILED ? nullptr : static_cast<uint8_t*>(data_); }

  private:
    size_t size_;
    void* data_;
};

// Bits are counted in 32 bits, which is what 2^29 - 1 octets have.
TEST(XdBitstrFastCopy, TakesNoMoreOctetsThanThereAreBitsToCount) {
    constexpr uint32_t kMostOctets = 0x1FFFFFFF;
    const ZeroOctets message(size_t{kMostOctets} + 16);
    ASSERT_NE(message.data(), nullptr);
    for (const uint32_t octets : {kMostOctets, kMostOctets + 1}) {
        SCOPED_TRACE(octets);
        const uint32_t length = octets + 1;  // with the one that counts unused bits
        const uint8_t header[] = {0x03,
                                  0x84,
                                  static_cast<uint8_t>(length >> 24),
                                  static_cast<uint8_t>(length >> 16),
                                  static_cast<uint8_t>(length >> 8),
                                  static_cast<uint8_t>(length)};
        std::copy_n(header, sizeof header, message.data());
        CodecContext ctxt;
        rtInitContextBuffer(ctxt, message.data(), static_cast<uint32_t>(sizeof header + length));
        rtCtxtSetFlag(ctxt, RT_F_FASTCOPY);
        const uint8_t* data = nullptr;
        uint32_t numbits = 0;
        const bool fits = octets == kMostOctets;
        EXPECT_EQ(xd_bitstr(ctxt, &data, &numbits, ASN1EXPL, 0), fits ? RT_OK : RT_E_INVLEN);
        EXPECT_EQ(numbits, fits ? 0xFFFFFFF8u : 0u);
        EXPECT_EQ(data, fits ? message.data() + sizeof header + 1 : nullptr);
    }
}

struct ArrayCase {
    const char* name;
    const char* ber;
    uint32_t room_bits;
    int status = RT_OK;
    uint32_t numbits = 0;
    const char* octets = "";
};

constexpr ArrayCase kArrays[] = {
    {.name = "ExactFit", .ber = "03 03 00 aa bb", .room_bits = 16, .numbits = 16, .octets = "aa bb"},
    {.name = "OneOctetTooMany", .ber = "03 04 00 aa bb cc", .room_bits = 16, .status = RT_E_STROVFL},
    // The room counts whole octets: 26 bits of room take 32.
    {.name = "BitsUpToTheLastOctet",
     .ber = "03 05 00 aa bb cc dd",
     .room_bits = 26,
     .numbits = 32,
     .octets = "aa bb cc dd"},
    {.name = "FiveOctetsIn26Bits", .ber = "03 06 00 aa bb cc dd ee", .room_bits = 26, .status = RT_E_STROVFL},
    {.name = "NoRoomForNoBits", .ber = "03 01 00", .room_bits = 0},
    {.name = "NoRoom", .ber = "03 02 07 80", .room_bits = 0, .status = RT_E_STROVFL},
    {.name = "NoContents", .ber = "03 00", .room_bits = 8},
    {.name = "SegmentFillsTheRoom", .ber = "23 04 03 02 04 b0", .room_bits = 8, .numbits = 4, .octets = "b0"},
    {.name = "SegmentBeyondTheRoom", .ber = "23 05 03 03 00 aa bb", .room_bits = 8, .status = RT_E_STROVFL},
    {.name = "SecondSegmentBeyondTheRoom",
     .ber = "23 09 03 02 00 aa 03 03 00 bb cc",
     .room_bits = 8,
     .status = RT_E_STROVFL},
    {.name = "UnusedAboveSeven", .ber = "03 02 09 aa", .room_bits = 8, .status = RT_E_BADVALUE},
    {.name = "LengthBeyondTheBuffer", .ber = "03 04 00 aa", .room_bits = 32, .status = RT_E_ENDOFBUF},
};

class XdBitstrS : public testing::TestWithParam<ArrayCase> {};

TEST_P(XdBitstrS, FillsACallersArray) {
    const ArrayCase& row = GetParam();
    CodecContext ctxt;
    std::vector<uint8_t> array((row.room_bits + 7) / 8);
    uint32_t numbits = row.room_bits;
    EXPECT_EQ(xd_bitstr_s(ctxt.read(row.ber), array.data(), &numbits, ASN1EXPL, 0), row.status);
    EXPECT_EQ(ctxt.recorded(), row.status);
    if (row.status == RT_OK) {
        EXPECT_EQ(numbits, row.numbits);
        EXPECT_EQ(to_hex(array.data(), (numbits + 7) / 8), row.octets);
    }
}

INSTANTIATE_TEST_SUITE_P(X690, XdBitstrS, testing::ValuesIn(kArrays), case_name);

TEST(XdBitstrSRoom, MayBeAllThatCanBeCounted) {
    CodecContext ctxt;
    uint8_t bits[2] = {};
    uint32_t numbits = UINT32_MAX;
    EXPECT_EQ(xd_bitstr_s(ctxt.read("03 03 04 aa b0"), bits, &numbits, ASN1EXPL, 0), RT_OK);
    EXPECT_EQ(numbits, 12u);
}

TEST(XdBitstrSImplicit, RefusesANegativeLengthOfAPrimitive) {
    CodecContext ctxt;
    uint8_t array[2];
    uint32_t numbits = 16;
    EXPECT_EQ(xd_bitstr_s(ctxt.read("00 aa"), array, &numbits, ASN1IMPL, -1), RT_E_INVLEN);
    numbits = 16;
    EXPECT_EQ(xd_bitstr_s(ctxt.read("00 aa"), array, &numbits, ASN1IMPL, 2), RT_OK);
    EXPECT_EQ(numbits, 8u);
}

TEST(XdBitstrNesting, EndsAt64Levels) {
    std::vector<uint8_t> string = from_hex("03 02 00 aa");
    for (int level = 0; level < 64; ++level) {
        string = element(0x23, string);
    }
    const uint8_t* data = nullptr;
    uint32_t numbits = 0;
    CodecContext ctxt;
    EXPECT_EQ(xd_bitstr(ctxt.read(string), &data, &numbits, ASN1EXPL, 0), RT_OK);
    EXPECT_EQ(numbits, 8u);
    EXPECT_EQ(xd_bitstr(ctxt.read(element(0x23, string)), &data, &numbits, ASN1EXPL, 0), RT_E_NOTSUPP);
    EXPECT_EQ(ctxt->nestingDepth, 0u);
}

TEST(XdBitstrMemory, ReportsExhaustedMemoryAndKeepsNothing) {
    CodecHeap heap;
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t numbits = 0;
    const std::size_t before = heap.live_blocks();
    heap.fail_after(0);
    EXPECT_EQ(xd_bitstr(ctxt.read("03 02 00 aa"), &data, &numbits, ASN1EXPL, 0), RT_E_NOMEM);
    EXPECT_EQ(xd_bitstr(ctxt.read("03 02 08 aa"), &data, &numbits, ASN1EXPL, 0), RT_E_BADVALUE);
    EXPECT_EQ(heap.live_blocks(), before);
}

}  // namespace
}  // namespace Quillmark::test
