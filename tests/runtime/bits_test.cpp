#include "runtime/bits.h"

#include <gtest/gtest.h>

#include <bit>

#include "runtime/status.h"

namespace Quillmark::test {
namespace {

TEST(RtSetBit, SetsFromTheTopBitAndReturnsWhatWas) {
    uint8_t bits[2] = {0x00, 0x01};
    EXPECT_EQ(0, rtSetBit(bits, 16, 0));
    EXPECT_EQ(0x80, bits[0]);
    EXPECT_EQ(0x80, rtSetBit(bits, 16, 0));
    EXPECT_EQ(0x01, rtSetBit(bits, 16, 15));
    EXPECT_EQ(0, rtSetBit(bits, 16, 8));
    EXPECT_EQ(0x81, bits[1]);
}

TEST(RtSetBit, RefusesAnIndexAtTheCount) {
    uint8_t bits[2] = {0, 0};
    EXPECT_EQ(0, rtSetBit(bits, 10, 9));
    EXPECT_EQ(RT_E_OUTOFBND, rtSetBit(bits, 10, 10));
    EXPECT_EQ(RT_E_OUTOFBND, rtSetBit(bits, 0, 0));
    EXPECT_EQ(0x40, bits[1]);
}

TEST(RtClearBit, ClearsAndReturnsWhatWas) {
    uint8_t bits[1] = {0xC0};
    EXPECT_EQ(0x40, rtClearBit(bits, 8, 1));
    EXPECT_EQ(0x80, bits[0]);
    EXPECT_EQ(0, rtClearBit(bits, 8, 1));
    EXPECT_EQ(0x80, bits[0]);
    EXPECT_EQ(RT_E_OUTOFBND, rtClearBit(bits, 8, 8));
}

TEST(RtTestBit, AnswersTheMask) {
    const uint8_t bits[2] = {0x20, 0x01};
    EXPECT_EQ(0x20, rtTestBit(bits, 16, 2));
    EXPECT_EQ(0, rtTestBit(bits, 16, 3));
    EXPECT_EQ(0x01, rtTestBit(bits, 16, 15));
    EXPECT_EQ(0, rtTestBit(bits, 15, 15));  // at the count
}

TEST(RtOctetBitLen, CountsDownToTheLowestSetBit) {
    EXPECT_EQ(0, rtOctetBitLen(0x00));
    EXPECT_EQ(1, rtOctetBitLen(0x80));
    EXPECT_EQ(7, rtOctetBitLen(0x02));
    EXPECT_EQ(8, rtOctetBitLen(0x01));
    EXPECT_EQ(3, rtOctetBitLen(0xA0));
    EXPECT_EQ(8, rtOctetBitLen(0xFF));
}

}  // namespace
}  // namespace Quillmark::test
