#include "runtime/big_integer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

// A number on the heap of a context of its own.
class Number {
  public:
    explicit Number(const char* text = nullptr, int radix = 0) {
        rtBigIntInit(&number_);
        if (text != nullptr) {
            EXPECT_EQ(RT_OK, set(text, radix)) << text;
        }
    }
    ~Number() { rtBigIntFree(context_, &number_); }

    int set(const char* text, int radix) { return rtBigIntSetStr(context_, &number_, text, radix); }
    std::string magnitude() const { return to_hex(number_.mag, static_cast<size_t>(number_.numocts)); }
    ASN1CTXT* context() { return context_; }
    ASN1BigInt* operator->() { return &number_; }
    operator ASN1BigInt*() { return &number_; }

  private:
    CodecContext context_;
    ASN1BigInt number_;
};

TEST(RtBigIntInit, MakesAnEmptyRecord) {
    ASN1BigInt number;
    std::memset(&number, 0xAB, sizeof number);
    rtBigIntInit(&number);
    EXPECT_EQ(0, number.numocts);
    EXPECT_EQ(nullptr, number.mag);
    EXPECT_EQ(0, number.sign);
    EXPECT_EQ(0, number.allocated);
    EXPECT_EQ(0, number.dynamic);
}

struct SetCase {
    const char* name;
    const char* text;
    int radix;
    int status;
    int sign = 0;
    const char* magnitude = "";
};

class RtBigIntSetStr : public testing::TestWithParam<SetCase> {};

TEST_P(RtBigIntSetStr, ReadsNumberText) {
    Number number;
    EXPECT_EQ(GetParam().status, number.set(GetParam().text, GetParam().radix));
    EXPECT_EQ(GetParam().sign, number->sign);
    EXPECT_EQ(GetParam().magnitude, number.magnitude());
}

const SetCase kSetCases[] = {
    {.name = "Decimal", .text = "256", .radix = 10, .status = RT_OK, .sign = 1, .magnitude = "01 00"},
    {.name = "DecimalByDefault", .text = "255", .radix = 0, .status = RT_OK, .sign = 1, .magnitude = "ff"},
    {.name = "NegativeDecimal", .text = "-129", .radix = 0, .status = RT_OK, .sign = -1, .magnitude = "81"},
    {.name = "OddDigitCount", .text = "12345", .radix = 10, .status = RT_OK, .sign = 1, .magnitude = "30 39"},
    // 2^64 + 1
    {.name = "LongDecimal",
     .text = "18446744073709551617",
     .radix = 10,
     .status = RT_OK,
     .sign = 1,
     .magnitude = "01 00 00 00 00 00 00 00 01"},
    {.name = "LeadingZeros", .text = "000255", .radix = 10, .status = RT_OK, .sign = 1, .magnitude = "ff"},
    {.name = "LeadingBlanks", .text = " \t\n255", .radix = 10, .status = RT_OK, .sign = 1, .magnitude = "ff"},
    {.name = "Zero", .text = "0", .radix = 10, .status = RT_OK},
    {.name = "ManyZeros", .text = "0000", .radix = 10, .status = RT_OK},
    {.name = "NegativeZeroHasNoSign", .text = "-0", .radix = 0, .status = RT_OK},
    {.name = "Octal", .text = "777", .radix = 8, .status = RT_OK, .sign = 1, .magnitude = "01 ff"},
    {.name = "OctalPrefix", .text = "0o17", .radix = 0, .status = RT_OK, .sign = 1, .magnitude = "0f"},
    {.name = "NegativeOctal", .text = "-10", .radix = 8, .status = RT_OK, .sign = -1, .magnitude = "08"},
    {.name = "Hexadecimal", .text = "0x1", .radix = 0, .status = RT_OK, .sign = 1, .magnitude = "01"},
    {.name = "HexadecimalBothCases",
     .text = "aBcD",
     .radix = 16,
     .status = RT_OK,
     .sign = 1,
     .magnitude = "ab cd"},
    // The first octet takes the digits that are over.
    {.name = "OddHexadecimal", .text = "123", .radix = 16, .status = RT_OK, .sign = 1, .magnitude = "01 23"},
    {.name = "HexadecimalIsNeverNegative",
     .text = "0xFF",
     .radix = 0,
     .status = RT_OK,
     .sign = 1,
     .magnitude = "ff"},
    {.name = "HexadecimalZeroHasNoSign", .text = "0x0000", .radix = 0, .status = RT_OK},
    {.name = "HexadecimalLeadingZeros",
     .text = "0x000012",
     .radix = 0,
     .status = RT_OK,
     .sign = 1,
     .magnitude = "12"},
    {.name = "Binary", .text = "0b100000001", .radix = 0, .status = RT_OK, .sign = 1, .magnitude = "01 01"},
    {.name = "BinaryByRadix", .text = "1010", .radix = 2, .status = RT_OK, .sign = 1, .magnitude = "0a"},

    {.name = "PrefixBelongsToRadixZero", .text = "0x1", .radix = 16, .status = RT_E_BADVALUE},
    {.name = "Empty", .text = "", .radix = 10, .status = RT_E_BADVALUE},
    {.name = "Null", .text = nullptr, .radix = 10, .status = RT_E_BADVALUE},
    {.name = "BlanksOnly", .text = "  ", .radix = 0, .status = RT_E_BADVALUE},
    {.name = "PrefixOnly", .text = "0x", .radix = 0, .status = RT_E_BADVALUE},
    {.name = "LoneMinus", .text = "-", .radix = 10, .status = RT_E_BADVALUE},
    {.name = "PlusIsNoSign", .text = "+1", .radix = 10, .status = RT_E_BADVALUE},
    {.name = "MinusOnHexadecimal", .text = "-1", .radix = 16, .status = RT_E_BADVALUE},
    {.name = "DigitAboveBinary", .text = "102", .radix = 2, .status = RT_E_BADVALUE},
    {.name = "DigitAboveOctal", .text = "18", .radix = 8, .status = RT_E_BADVALUE},
    {.name = "LetterInDecimal", .text = "12a4", .radix = 10, .status = RT_E_BADVALUE},
    {.name = "BlankInside", .text = "1 2", .radix = 10, .status = RT_E_BADVALUE},
    {.name = "UnknownRadix", .text = "1", .radix = 3, .status = RT_E_INVPARAM},
    {.name = "NegativeRadix", .text = "1", .radix = -10, .status = RT_E_INVPARAM},
};
INSTANTIATE_TEST_SUITE_P(BigInteger, RtBigIntSetStr, testing::ValuesIn(kSetCases), case_name);

TEST(RtBigIntRoom, StaysInTheCallersArrayWhileItFits) {
    CodecContext context;
    uint8_t room[2];
    ASN1BigInt number;
    rtBigIntInit(&number);
    number.mag = room;
    number.allocated = sizeof room;
    ASSERT_EQ(RT_OK, rtBigIntSetStr(context, &number, "0xABCD", 0));
    EXPECT_EQ(room, number.mag);
    EXPECT_EQ(0, number.dynamic);
    rtBigIntFree(context, &number);
}

TEST(RtBigIntRoom, MovesToTheHeapWhenTheCallersArrayIsTooSmall) {
    CodecContext context;
    uint8_t room[2];
    ASN1BigInt number;
    rtBigIntInit(&number);
    number.mag = room;
    number.allocated = sizeof room;
    ASSERT_EQ(RT_OK, rtBigIntSetStr(context, &number, "0xABCDEF", 0));
    EXPECT_NE(room, number.mag);
    EXPECT_EQ(1, number.dynamic);
    EXPECT_EQ("ab cd ef", to_hex(number.mag, 3));
    rtBigIntFree(context, &number);
}

TEST(RtBigIntRoom, GrowsWithALongerNumber) {
    Number number("1", 10);
    ASSERT_EQ(RT_OK, number.set("0x0102030405060708090a0b0c", 0));
    EXPECT_EQ("01 02 03 04 05 06 07 08 09 0a 0b 0c", number.magnitude());
    ASSERT_EQ(RT_OK, number.set("7", 10));
    EXPECT_EQ("07", number.magnitude());
}

TEST(RtBigIntRoom, ReportsExhaustedMemory) {
    CodecHeap heap;
    CodecContext context;
    ASN1BigInt number;
    rtBigIntInit(&number);
    heap.fail_after(0);
    EXPECT_EQ(RT_E_NOMEM, rtBigIntSetStr(context, &number, "1", 10));
    heap.fail_after(0);
    EXPECT_EQ(RT_E_NOMEM, rtBigIntSetStr(context, &number, "0x1", 0));
    EXPECT_EQ(0, number.sign);
    EXPECT_EQ(0, number.numocts);
    rtBigIntFree(context, &number);
}

TEST(RtBigIntFree, GivesTheHeapBlockBack) {
    CodecHeap heap;
    CodecContext context;
    const size_t before = heap.live_blocks();
    ASN1BigInt number;
    rtBigIntInit(&number);
    ASSERT_EQ(RT_OK, rtBigIntSetStr(context, &number, "123456789", 10));
    EXPECT_EQ(before + 1, heap.live_blocks());
    rtBigIntFree(context, &number);
    EXPECT_EQ(before, heap.live_blocks());
    rtBigIntFree(context, &number);
    EXPECT_EQ(before, heap.live_blocks());
}

struct DataCase {
    const char* name;
    const char* text;
    const char* octets;  // by X.690 8.3.2 and 8.3.3
};

class RtBigIntGetData : public testing::TestWithParam<DataCase> {};

TEST_P(RtBigIntGetData, WritesTheShortestTwosComplement) {
    Number number(GetParam().text);
    const std::vector<uint8_t> want = from_hex(GetParam().octets);
    const int length = static_cast<int>(want.size());
    EXPECT_EQ(length, rtBigIntGetDataLen(number));
    std::vector<uint8_t> octets(want.size());
    EXPECT_EQ(length, rtBigIntGetData(number.context(), number, octets.data(), length));
    EXPECT_EQ(want, octets);
    EXPECT_EQ(RT_E_STROVFL, rtBigIntGetData(number.context(), number, octets.data(), length - 1));
}

const DataCase kDataCases[] = {
    {.name = "Zero", .text = "0", .octets = "00"},
    {.name = "One", .text = "1", .octets = "01"},
    {.name = "LargestOfOneOctet", .text = "127", .octets = "7f"},
    {.name = "SignOctetInFront", .text = "128", .octets = "00 80"},
    {.name = "AllOnes", .text = "0xFF", .octets = "00 ff"},
    {.name = "MinusOne", .text = "-1", .octets = "ff"},
    {.name = "SmallestOfOneOctet", .text = "-128", .octets = "80"},
    {.name = "NegativeSignOctetInFront", .text = "-129", .octets = "ff 7f"},
    {.name = "NegativePowerOfTwo", .text = "-256", .octets = "ff 00"},
    {.name = "NegativeLowZeros", .text = "-32768", .octets = "80 00"},
    {.name = "NegativeBehindLowZeros", .text = "-32769", .octets = "ff 7f ff"},
    {.name = "Long", .text = "-18446744073709551616", .octets = "ff 00 00 00 00 00 00 00 00"},
};
INSTANTIATE_TEST_SUITE_P(BigInteger, RtBigIntGetData, testing::ValuesIn(kDataCases), case_name);

struct DigitsCase {
    const char* name;
    const char* text;
    int radix;
    int result;  // (octets * 8 + 1) * 1024 / bits of a digit
};

class RtBigIntDigitsNum : public testing::TestWithParam<DigitsCase> {};

TEST_P(RtBigIntDigitsNum, BoundsTheDigits) {
    Number number(GetParam().text);
    EXPECT_EQ(GetParam().result, rtBigIntDigitsNum(number, GetParam().radix));
}

const DigitsCase kDigitsCases[] = {
    {.name = "Binary", .text = "0xFFFF", .radix = 2, .result = 17},
    {.name = "Octal", .text = "0xFFFF", .radix = 8, .result = 5},
    {.name = "Decimal", .text = "0xFFFF", .radix = 10, .result = 5},
    {.name = "Hexadecimal", .text = "0xFFFF", .radix = 16, .result = 4},
    {.name = "Zero", .text = "0", .radix = 2, .result = 1},
};
INSTANTIATE_TEST_SUITE_P(BigInteger, RtBigIntDigitsNum, testing::ValuesIn(kDigitsCases), case_name);

struct TextCase {
    const char* name;
    const char* number;
    int radix;
    const char* text;
};

class RtBigIntToString : public testing::TestWithParam<TextCase> {};

TEST_P(RtBigIntToString, WritesNumberText) {
    Number number(GetParam().number);
    char text[128];
    EXPECT_EQ(RT_OK, rtBigIntToString(number.context(), number, GetParam().radix, text, sizeof text));
    EXPECT_STREQ(GetParam().text, text);
}

TEST_P(RtBigIntToString, FitsExactlyOrNotAtAll) {
    Number number(GetParam().number);
    const int exact = static_cast<int>(std::string(GetParam().text).size()) + 1;
    std::vector<char> text(static_cast<size_t>(exact));
    EXPECT_EQ(RT_OK, rtBigIntToString(number.context(), number, GetParam().radix, text.data(), exact));
    EXPECT_STREQ(GetParam().text, text.data());
    EXPECT_EQ(RT_E_STROVFL,
              rtBigIntToString(number.context(), number, GetParam().radix, text.data(), exact - 1));
}

const TextCase kTextCases[] = {
    {.name = "Zero", .number = "0", .radix = 10, .text = "0"},
    {.name = "DefaultIsDecimal", .number = "0xFF", .radix = 0, .text = "255"},
    {.name = "Negative", .number = "-1000", .radix = 10, .text = "-1000"},
    {.name = "InnerZeroGroups", .number = "1000000007", .radix = 10, .text = "1000000007"},
    {.name = "Long",
     .number = "340282366920938463463374607431768211456",
     .radix = 10,
     .text = "340282366920938463463374607431768211456"},
    {.name = "LowerCaseHexadecimal", .number = "0xABCDEF", .radix = 16, .text = "abcdef"},
    {.name = "HexadecimalWithoutLeadingZero", .number = "0x0A0B", .radix = 16, .text = "a0b"},
    {.name = "NegativeHexadecimal", .number = "-255", .radix = 16, .text = "-ff"},
    {.name = "Binary", .number = "10", .radix = 2, .text = "1010"},
    {.name = "Octal", .number = "511", .radix = 8, .text = "777"},
    {.name = "OctalAcrossOctets", .number = "4096", .radix = 8, .text = "10000"},
};
INSTANTIATE_TEST_SUITE_P(BigInteger, RtBigIntToString, testing::ValuesIn(kTextCases), case_name);

TEST(RtBigIntToStringRadix, RefusesOtherBases) {
    Number number("1");
    char text[16];
    EXPECT_EQ(RT_E_INVPARAM, rtBigIntToString(number.context(), number, 7, text, sizeof text));
    EXPECT_EQ(RT_E_INVPARAM, rtBigIntDigitsNum(number, 7));
}

struct OrderCase {
    const char* name;
    const char* a;
    const char* b;
    int order;
};

class RtBigIntStrCompare : public testing::TestWithParam<OrderCase> {};

int sign_of(int value) {
    return (value > 0) - (value < 0);
}

TEST_P(RtBigIntStrCompare, ComparesValues) {
    CodecContext context;
    const auto& [name, a, b, order] = GetParam();
    EXPECT_EQ(order, sign_of(rtBigIntStrCompare(context, a, b)));
    EXPECT_EQ(-order, sign_of(rtBigIntStrCompare(context, b, a)));
}

const OrderCase kOrderCases[] = {
    {.name = "SameText", .a = "1", .b = "1", .order = 0},
    {.name = "SameValueInOtherBase", .a = "0x01", .b = "1", .order = 0},
    {.name = "LeadingZeros", .a = "0x0001", .b = "1", .order = 0},
    {.name = "Zeros", .a = "0x00", .b = "-0", .order = 0},
    {.name = "BySize", .a = "255", .b = "256", .order = -1},
    {.name = "ByOctets", .a = "0x0101", .b = "0x0100", .order = 1},
    {.name = "BySign", .a = "-5", .b = "3", .order = -1},
    {.name = "ZeroAgainstNegative", .a = "0", .b = "-1", .order = 1},
    {.name = "NegativeBySize", .a = "-256", .b = "-255", .order = -1},
};
INSTANTIATE_TEST_SUITE_P(BigInteger, RtBigIntStrCompare, testing::ValuesIn(kOrderCases), case_name);

// What is no number has no value to compare.
TEST(RtBigIntStrCompareText, GoesByTheTextsWhereOneIsNoNumber) {
    CodecContext context;
    EXPECT_EQ(0, rtBigIntStrCompare(context, "x", "x"));
    EXPECT_EQ(-1, sign_of(rtBigIntStrCompare(context, "12", "x")));
    EXPECT_EQ(1, sign_of(rtBigIntStrCompare(context, "x", "12")));
    EXPECT_EQ(-1, sign_of(rtBigIntStrCompare(context, nullptr, "x")));
    EXPECT_EQ(1, sign_of(rtBigIntStrCompare(context, "x", nullptr)));
}

TEST(RtBigIntStrCompareLimit, TakesNumbersLongerThanItsOwnRoom) {
    CodecHeap heap;
    CodecContext context;
    const size_t before = heap.live_blocks();
    const std::string longer = "0x" + std::string(600, 'F');
    const std::string other = "0x" + std::string(599, 'F') + "E";
    EXPECT_EQ(1, sign_of(rtBigIntStrCompare(context, longer.c_str(), other.c_str())));
    EXPECT_EQ(0, rtBigIntStrCompare(context, longer.c_str(), longer.c_str()));
    EXPECT_EQ(1, sign_of(rtBigIntStrCompare(context, longer.c_str(), "1")));
    EXPECT_EQ(before, heap.live_blocks());
}

}  // namespace
}  // namespace Quillmark::test
