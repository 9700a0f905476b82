#include "runtime/bit_string.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"
#include "tests/support/hex.h"

namespace Quillmark::test {
namespace {

// A string of its own, as an application would start one.
class BitString : public testing::Test {
  protected:
    BitString() : bits_(*context_) {}

    void set_all(std::initializer_list<uint32_t> indexes) {
        for (const uint32_t index : indexes) {
            ASSERT_EQ(RT_OK, bits_.set(index)) << index;
        }
    }
    static std::string octets(const ASN1CBitStr& bits) {
        return to_hex(bits.getBytes(), static_cast<size_t>(bits.size() + 7) / 8);
    }
    std::string octets() const { return octets(bits_); }
    int recorded() const { return context_->errInfo.status; }
    void forget_error() { rtErrReset(&context_->errInfo); }

    CodecHeap heap_;
    ASN1CtxtPtr context_{new ASN1Context};
    ASN1CBitStr bits_;
};

class ASN1CBitStrTest : public BitString {};

TEST_F(ASN1CBitStrTest, StartsEmpty) {
    EXPECT_EQ(0, bits_.size());
    EXPECT_EQ(0, bits_.length());
    EXPECT_EQ(0, bits_.cardinality());
    EXPECT_FALSE(bits_.get(0));
}

TEST_F(ASN1CBitStrTest, SetsTheFirstBit) {
    EXPECT_EQ(RT_OK, bits_.set(0));
    EXPECT_EQ("80", octets());
    EXPECT_EQ(1, bits_.length());
    EXPECT_EQ(1, bits_.size());
    EXPECT_TRUE(bits_.get(0));
}

TEST_F(ASN1CBitStrTest, RaisesTheCountToTheBitThatIsSet) {
    set_all({9});
    EXPECT_EQ("00 40", octets());
    EXPECT_EQ(10, bits_.size());
    EXPECT_EQ(6, bits_.unusedBitsInLastUnit());
    set_all({3});
    EXPECT_EQ("10 40", octets());
    EXPECT_EQ(10, bits_.size());
}

TEST_F(ASN1CBitStrTest, SetsRanges) {
    EXPECT_EQ(RT_OK, bits_.set(3, 17));
    EXPECT_EQ("1f ff c0", octets());
    EXPECT_EQ(18, bits_.size());
    EXPECT_EQ(15, bits_.cardinality());
}

TEST_F(ASN1CBitStrTest, ClearsAndShrinks) {
    set_all({0, 9, 20});
    EXPECT_EQ(RT_OK, bits_.clear(20));
    EXPECT_EQ(10, bits_.size());
    EXPECT_EQ("80 40", octets());
    EXPECT_EQ(RT_OK, bits_.clear(9));
    EXPECT_EQ(1, bits_.size());
    EXPECT_EQ(RT_OK, bits_.clear(0));
    EXPECT_EQ(0, bits_.size());
}

TEST_F(ASN1CBitStrTest, ClearsRanges) {
    ASSERT_EQ(RT_OK, bits_.set(0, 23));
    EXPECT_EQ(RT_OK, bits_.clear(4, 19));
    EXPECT_EQ("f0 00 0f", octets());
    EXPECT_EQ(RT_OK, bits_.clear(20, 100));
    EXPECT_EQ("f0", octets());
    EXPECT_EQ(4, bits_.size());
}

TEST_F(ASN1CBitStrTest, DoesNothingForAClearBehindTheLastBit) {
    set_all({2});
    EXPECT_EQ(RT_OK, bits_.clear(100));
    EXPECT_EQ(3, bits_.size());
    EXPECT_EQ("20", octets());
}

TEST_F(ASN1CBitStrTest, ClearsAll) {
    ASSERT_EQ(RT_OK, bits_.set(0, 23));
    bits_.clear();
    EXPECT_EQ(0, bits_.size());
    EXPECT_EQ(0, bits_.cardinality());
    set_all({1});
    EXPECT_EQ("40", octets());
}

TEST_F(ASN1CBitStrTest, Inverts) {
    set_all({1});
    EXPECT_EQ(RT_OK, bits_.invert(0));
    EXPECT_EQ("c0", octets());
    EXPECT_EQ(RT_OK, bits_.invert(1));
    EXPECT_EQ("80", octets());
    EXPECT_EQ(1, bits_.size());
    EXPECT_EQ(RT_OK, bits_.invert(0, 11));
    EXPECT_EQ("7f f0", octets());
}

TEST_F(ASN1CBitStrTest, RefusesAReversedRange) {
    const auto records_range = [this](int status) {
        const bool good = status == RT_E_RANGE && recorded() == RT_E_RANGE;
        forget_error();
        return good;
    };
    EXPECT_TRUE(records_range(bits_.set(5, 4)));
    EXPECT_TRUE(records_range(bits_.clear(5, 4)));
    EXPECT_TRUE(records_range(bits_.invert(5, 4)));
    uint8_t out[1];
    EXPECT_TRUE(records_range(bits_.get(5, 4, out, 1)));
    EXPECT_EQ(0, bits_.size());
}

struct CopyCase {
    const char* name;
    uint32_t first;
    uint32_t last;
    const char* octets;
};

class ASN1CBitStrCopy : public BitString, public testing::WithParamInterface<CopyCase> {};

TEST_P(ASN1CBitStrCopy, CopiesARangeToTheFirstBits) {
    // 1010 0101 1100 0011 1111 0000
    set_all({0, 2, 5, 7, 8, 9, 14, 15, 16, 17, 18, 19});
    const std::vector<uint8_t> want = from_hex(GetParam().octets);
    std::vector<uint8_t> out(want.size());
    EXPECT_EQ(RT_OK,
              bits_.get(GetParam().first, GetParam().last, out.data(), static_cast<uint32_t>(out.size())));
    EXPECT_EQ(want, out);
    EXPECT_EQ(RT_E_STROVFL, bits_.get(GetParam().first, GetParam().last, out.data(),
                                      static_cast<uint32_t>(out.size()) - 1));
}

const CopyCase kCopyCases[] = {
    {.name = "OneBit", .first = 2, .last = 2, .octets = "80"},
    {.name = "WholeOctets", .first = 0, .last = 15, .octets = "a5 c3"},
    {.name = "AcrossOctets", .first = 4, .last = 11, .octets = "5c"},
    {.name = "PartOfAnOctet", .first = 5, .last = 9, .octets = "b8"},
    {.name = "NineBits", .first = 1, .last = 9, .octets = "4b 80"},
};
INSTANTIATE_TEST_SUITE_P(BitString, ASN1CBitStrCopy, testing::ValuesIn(kCopyCases), case_name);

TEST_F(ASN1CBitStrTest, RefusesToCopyBitsPastTheEnd) {
    set_all({3});
    uint8_t out[4];
    EXPECT_EQ(RT_OK, bits_.get(0, 3, out, sizeof out));
    EXPECT_EQ(RT_E_RANGE, bits_.get(0, 4, out, sizeof out));
}

struct CombineCase {
    const char* name;
    const char* other;
    uint32_t bit_count;
    const char* conjunction;
    const char* disjunction;
    const char* difference;  // exclusive or
    const char* remainder;   // and not
};

class ASN1CBitStrCombination : public BitString, public testing::WithParamInterface<CombineCase> {
  protected:
    ASN1CBitStrCombination() : other_(from_hex(GetParam().other)) { set_all({0, 1, 2, 3, 8, 15}); }  // f0 81

    std::vector<uint8_t> other_;
};

TEST_P(ASN1CBitStrCombination, And) {
    EXPECT_EQ(RT_OK, bits_.doAnd(other_.data(), GetParam().bit_count));
    EXPECT_EQ(GetParam().conjunction, octets());
}

TEST_P(ASN1CBitStrCombination, Or) {
    EXPECT_EQ(RT_OK, bits_.doOr(other_.data(), GetParam().bit_count));
    EXPECT_EQ(GetParam().disjunction, octets());
}

TEST_P(ASN1CBitStrCombination, Xor) {
    EXPECT_EQ(RT_OK, bits_.doXor(other_.data(), GetParam().bit_count));
    EXPECT_EQ(GetParam().difference, octets());
}

TEST_P(ASN1CBitStrCombination, AndNot) {
    EXPECT_EQ(RT_OK, bits_.doAndNot(other_.data(), GetParam().bit_count));
    EXPECT_EQ(GetParam().remainder, octets());
}

const CombineCase kCombineCases[] = {
    {.name = "SameLength",
     .other = "3c 01",
     .bit_count = 16,
     .conjunction = "30 01",
     .disjunction = "fc 81",
     .difference = "cc 80",
     .remainder = "c0 80"},
    {.name = "Shorter",
     .other = "3c",
     .bit_count = 8,
     .conjunction = "30",
     .disjunction = "fc 81",
     .difference = "cc 81",
     .remainder = "c0 81"},
    {.name = "Longer",
     .other = "00 00 80",
     .bit_count = 24,
     .conjunction = "",
     .disjunction = "f0 81 80",
     .difference = "f0 81 80",
     .remainder = "f0 81"},
    // Bits behind the count are no part of the other string.
    {.name = "BitsBehindTheCount",
     .other = "ff ff",
     .bit_count = 4,
     .conjunction = "f0",
     .disjunction = "f0 81",
     .difference = "00 81",
     .remainder = "00 81"},
    {.name = "Empty",
     .other = "",
     .bit_count = 0,
     .conjunction = "",
     .disjunction = "f0 81",
     .difference = "f0 81",
     .remainder = "f0 81"},
};
INSTANTIATE_TEST_SUITE_P(BitString, ASN1CBitStrCombination, testing::ValuesIn(kCombineCases), case_name);

struct ShiftCase {
    const char* name;
    uint32_t distance;
    const char* left;
    const char* right;
};

class ASN1CBitStrShift : public BitString, public testing::WithParamInterface<ShiftCase> {
  protected:
    ASN1CBitStrShift() { set_all({1, 7, 8, 22}); }  // 41 80 02
};

TEST_P(ASN1CBitStrShift, Left) {
    EXPECT_EQ(RT_OK, bits_.shiftLeft(GetParam().distance));
    EXPECT_EQ(GetParam().left, octets());
}

TEST_P(ASN1CBitStrShift, Right) {
    EXPECT_EQ(RT_OK, bits_.shiftRight(GetParam().distance));
    EXPECT_EQ(GetParam().right, octets());
}

const ShiftCase kShiftCases[] = {
    {.name = "Nothing", .distance = 0, .left = "41 80 02", .right = "41 80 02"},
    {.name = "OneBit", .distance = 1, .left = "83 00 04", .right = "20 c0 01"},
    {.name = "IntoTheNextOctet", .distance = 2, .left = "06 00 08", .right = "10 60 00 80"},
    {.name = "OneOctet", .distance = 8, .left = "80 02", .right = "00 41 80 02"},
    {.name = "OctetAndBits", .distance = 11, .left = "00 10", .right = "00 08 30 00 40"},
    {.name = "AllBitsOut", .distance = 23, .left = "", .right = "00 00 00 83 00 04"},
    {.name = "AllOctetsOut", .distance = 24, .left = "", .right = "00 00 00 41 80 02"},
};
INSTANTIATE_TEST_SUITE_P(BitString, ASN1CBitStrShift, testing::ValuesIn(kShiftCases), case_name);

TEST_F(ASN1CBitStrTest, ConvertsToARecord) {
    set_all({0, 9});
    const ASN1TDynBitStr record = bits_;
    EXPECT_EQ(10u, record.numbits);
    EXPECT_EQ("80 40", to_hex(record.data, 2));
    const ASN1TDynBitStr* on_heap = bits_;
    ASSERT_NE(nullptr, on_heap);
    EXPECT_EQ(10u, on_heap->numbits);
    EXPECT_EQ("80 40", to_hex(on_heap->data, 2));
}

TEST_F(ASN1CBitStrTest, GrowsInTheBackgroundWithoutLosingBits) {
    set_all({0});
    set_all({100000});
    EXPECT_TRUE(bits_.get(0));
    EXPECT_TRUE(bits_.get(100000));
    EXPECT_EQ(2, bits_.cardinality());
    EXPECT_EQ(100001, bits_.length());
}

TEST_F(ASN1CBitStrTest, StaysAsItWasWithoutMemory) {
    set_all({3});
    heap_.fail_after(0);
    EXPECT_EQ(RT_E_NOMEM, bits_.set(100000));
    EXPECT_EQ(4, bits_.size());
    EXPECT_EQ("10", octets());
}

TEST_F(ASN1CBitStrTest, FreesItsStorage) {
    const size_t before = heap_.live_blocks();
    {
        ASN1CBitStr other(*context_, 100);
        ASSERT_EQ(RT_OK, other.set(50000));
    }
    EXPECT_EQ(before, heap_.live_blocks());
}

TEST_F(ASN1CBitStrTest, WorksInTheContextOfABuffer) {
    ASN1BEREncodeBuffer buffer;
    ASN1CBitStr own(buffer, 20);
    EXPECT_EQ(buffer.getCtxtPtr(), own.getCtxtPtr());
    EXPECT_EQ(RT_OK, own.set(19));
    EXPECT_EQ("00 00 10", octets(own));

    uint8_t array[] = {0xA0, 0xFF};
    uint32_t count = 4;
    ASN1CBitStr over_array(buffer, array, count, 16);
    EXPECT_EQ(RT_OK, over_array.set(9));
    EXPECT_EQ("a0 40", to_hex(array, 2));
    EXPECT_EQ(10u, count);

    ASN1TDynBitStr record = {10, array};
    const ASN1CBitStr over_record(buffer, record);
    EXPECT_TRUE(over_record.get(9));
}

TEST_F(ASN1CBitStrTest, FindsNoBitsInARecordWithoutOctets) {
    ASN1TDynBitStr record = {10, nullptr};
    ASN1CBitStr bits(*context_, record);
    EXPECT_EQ(0u, record.numbits);
    EXPECT_FALSE(bits.get(9));
    EXPECT_EQ(RT_OK, bits.set(3));
    EXPECT_EQ(4u, record.numbits);
}

// What changes a record that it does not own is made on its own storage.
TEST_F(ASN1CBitStrTest, LeavesARecordAsItWasWithoutMemory) {
    const uint8_t array[] = {0xA0, 0x40};
    ASN1TDynBitStr record = {10, array};
    ASN1CBitStr bits(*context_, record);
    const auto without_memory = [&](auto&& change) {
        heap_.fail_after(0);
        return change();
    };
    EXPECT_EQ(RT_E_NOMEM, without_memory([&] { return bits.clear(0, 5); }));
    EXPECT_EQ(RT_E_NOMEM, without_memory([&] { return bits.invert(0, 5); }));
    EXPECT_EQ(RT_E_NOMEM, without_memory([&] { return bits.shiftLeft(1); }));
    EXPECT_EQ(RT_E_NOMEM, without_memory([&] { return bits.shiftRight(1); }));
    EXPECT_EQ(RT_E_NOMEM, without_memory([&] { return bits.doAnd(array, 4); }));
    EXPECT_EQ(nullptr, without_memory([&] { return static_cast<ASN1TDynBitStr*>(bits); }));
    EXPECT_EQ(10u, record.numbits);
    EXPECT_EQ(array, record.data);
}

// Over the array of a record.
class ASN1CBitStrOverArray : public BitString {
  protected:
    uint8_t array_[4] = {0xFF, 0xFF, 0xEE, 0xEE};
    uint32_t count_ = 10;
};

TEST_F(ASN1CBitStrOverArray, ClearsWhatLiesPastTheCount) {
    const ASN1CBitStr bits(*context_, array_, count_, 16);
    EXPECT_EQ("ff c0 ee ee", to_hex(array_, 4));
    EXPECT_EQ(10, bits.length());
    EXPECT_EQ(10u, count_);
}

TEST_F(ASN1CBitStrOverArray, WritesIntoTheRecord) {
    ASN1CBitStr bits(*context_, array_, count_, 16);
    bits.clear();
    EXPECT_EQ(0u, count_);
    EXPECT_EQ(RT_OK, bits.set(15));
    EXPECT_EQ("00 01 ee ee", to_hex(array_, 4));
    EXPECT_EQ(16u, count_);
}

TEST_F(ASN1CBitStrOverArray, RefusesAnIndexAboveTheLimit) {
    ASN1CBitStr bits(*context_, array_, count_, 16);
    EXPECT_EQ(RT_E_OUTOFBND, bits.set(17));
    EXPECT_EQ(RT_E_OUTOFBND, recorded());
    forget_error();
    EXPECT_EQ(RT_E_OUTOFBND, bits.clear(17));
    EXPECT_EQ(RT_E_OUTOFBND, recorded());
    forget_error();
    EXPECT_EQ(RT_E_OUTOFBND, bits.invert(17));
    EXPECT_EQ(RT_E_OUTOFBND, bits.shiftRight(8));
    EXPECT_EQ(RT_E_OUTOFBND, bits.shiftRight(0xFFFFFFFF));
    const uint8_t longer[] = {0, 0, 0x20};  // bit 18
    EXPECT_EQ(RT_E_OUTOFBND, bits.doOr(longer, 24));
    EXPECT_EQ(RT_E_OUTOFBND, recorded());
    EXPECT_EQ("ff c0 ee ee", to_hex(array_, 4));
    EXPECT_EQ(10u, count_);
}

TEST_F(ASN1CBitStrOverArray, HasNoRoomAtTheLimitItself) {
    ASN1CBitStr bits(*context_, array_, count_, 16);
    EXPECT_EQ(RT_E_INVLEN, bits.set(16));  // passes the limit's test, but there is no octet for it
    EXPECT_EQ(RT_E_INVLEN, bits.set(0, 16));
    EXPECT_EQ("ff c0 ee ee", to_hex(array_, 4));
    EXPECT_EQ(10u, count_);
}

TEST_F(ASN1CBitStrOverArray, CombinesWithinTheArray) {
    ASN1CBitStr bits(*context_, array_, count_, 16);
    const uint8_t longer[3] = {0x00, 0x00, 0x80};
    EXPECT_NE(RT_OK, bits.doOr(longer, 24));
    EXPECT_NE(RT_OK, bits.shiftRight(7));
    EXPECT_EQ("ff c0 ee ee", to_hex(array_, 4));
    EXPECT_EQ(RT_OK, bits.shiftRight(6));
    EXPECT_EQ("03 ff ee ee", to_hex(array_, 4));
}

TEST_F(ASN1CBitStrOverArray, MovesToItsOwnStorageWithoutALimit) {
    ASN1CBitStr bits(*context_, array_, count_, -1);
    EXPECT_EQ(RT_OK, bits.set(40));
    EXPECT_NE(array_, bits.getBytes());
    EXPECT_EQ("ff c0 00 00 00 80", octets(bits));
    EXPECT_EQ("ff c0 ee ee", to_hex(array_, 4));
}

TEST_F(ASN1CBitStrOverArray, ReplacesTheOctetsOfADynamicRecord) {
    const uint8_t constant[2] = {0x80, 0x40};
    ASN1TDynBitStr record = {.numbits = 10, .data = constant};
    {
        ASN1CBitStr bits(*context_, record);
        EXPECT_TRUE(bits.get(9));
        EXPECT_EQ(RT_OK, bits.set(1));
    }
    EXPECT_EQ(0x80, constant[0]);
    EXPECT_EQ(10u, record.numbits);
    EXPECT_EQ("c0 40", to_hex(record.data, 2));
}

}  // namespace
}  // namespace Quillmark::test
