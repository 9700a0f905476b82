#include "asn1/big_integer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

CBigInteger number(std::string_view octets) {
    const CBlob bytes = blob(octets);
    return CBigInteger(bytes.pbData(), bytes.cbData());
}

CBigInteger from_text(const char* text) {
    CBigInteger value;
    StringToBigInteger(text, value);
    return value;
}

TEST(BigInteger, StartsWithoutOctets) {
    EXPECT_EQ(CBigInteger().cbData(), 0u);
}

TEST(BigInteger, StartsWithZerosOfAGivenLength) {
    EXPECT_EQ(hex(CBigInteger(3UL)), "00 00 00");
}

TEST(BigIntegerText, KeepsPairsOfDigits) {
    EXPECT_EQ(hex(from_text("0x0123")), "01 23");
    EXPECT_EQ(hex(from_text("0xaBcD")), "ab cd");
}

TEST(BigIntegerText, PadsOddDigitsThatBeginWithZero) {
    EXPECT_EQ(hex(from_text("0x012")), "00 12");
    EXPECT_EQ(hex(from_text("0x0")), "00");
}

TEST(BigIntegerText, LosesLastOfOddDigitsThatBeginOtherwise) {
    // Intended: only a leading zero is padded.
    EXPECT_EQ(hex(from_text("0x123")), "12");
    EXPECT_EQ(hex(from_text("0x1")), "");
}

TEST(BigIntegerText, NeedsPrefixAndADigit) {
    CBigInteger value;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, StringToBigInteger("0x", value));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, StringToBigInteger("12345", value));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, StringToBigInteger("0X12", value));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, StringToBigInteger("", value));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, StringToBigInteger(nullptr, value));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1StringToBigInteger("12", value));
}

TEST(BigIntegerText, IsWrittenInUpperCasePairs) {
    CBlob text;
    BigIntegerToString(number("00 ab 0c"), text);
    EXPECT_EQ(text, CBlob(reinterpret_cast<const unsigned char*>("0x00AB0C"), 9));
}

TEST(BigIntegerText, IsPrefixAloneForNoOctets) {
    CBlob text;
    BigIntegerToString(CBigInteger(), text);
    EXPECT_EQ(text, CBlob(reinterpret_cast<const unsigned char*>("0x"), 3));
}

TEST(BigIntegerText, LiesOnTheContext) {
    ASN1BERDecodeBuffer buffer;
    EXPECT_STREQ(BigIntegerToASN1String(buffer.getCtxtPtr(), number("7f 01")), "0x7F01");
}

TEST(BigIntegerDword, IsEightDigits) {
    ASN1BERDecodeBuffer buffer;
    EXPECT_STREQ(DWORDToASN1BigInteger(buffer.getCtxtPtr(), 1), "0x00000001");
    EXPECT_STREQ(DWORDToASN1BigInteger(buffer.getCtxtPtr(), 0xFFFFFFFF), "0xFFFFFFFF");
}

TEST(BigIntegerDword, FoldsOctetsByEleven) {
    // Intended: the factor is 11.
    EXPECT_EQ(ASN1BigIntegerToDWORD("0x01"), 1u);
    EXPECT_EQ(ASN1BigIntegerToDWORD("0xff"), 255u);
    EXPECT_EQ(ASN1BigIntegerToDWORD("0x0100"), 11u);
    EXPECT_EQ(ASN1BigIntegerToDWORD("0x01020304"), ((1u * 11 + 2) * 11 + 3) * 11 + 4);
}

TEST(BigIntegerDword, TakesFourOctets) {
    EXPECT_EQ(ASN1BigIntegerToDWORD("0x00000001"), 1u);
    EXPECT_CODE(E_INVALIDARG, ASN1BigIntegerToDWORD("0x0000000001"));
    EXPECT_CODE(E_INVALIDARG, ASN1BigIntegerToDWORD("0x0080000000"));
}

TEST(BigIntegerDword, NeedsPrefix) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1BigIntegerToDWORD("0100"));
}

TEST(BigIntegerIncrement, Carries) {
    CBigInteger value = number("00 ff ff");
    EXPECT_EQ(hex(++value), "01 00 00");
}

TEST(BigIntegerIncrement, WrapsWithoutGrowth) {
    CBigInteger value = number("ff ff");
    EXPECT_EQ(hex(++value), "00 00");
}

TEST(BigIntegerIncrement, StopsAtTheLimit) {
    CBigInteger value = number("01 ff ff");
    value.increment(2);
    EXPECT_EQ(hex(value), "01 00 00");
}

TEST(BigIntegerIncrement, ToleratesNoOctetsAndLimitsBelowOne) {
    CBigInteger empty;
    EXPECT_EQ(hex(++empty), "");
    CBigInteger value = number("ff");
    value.increment(0);
    EXPECT_EQ(hex(value), "00");
    value.increment(-7);
    EXPECT_EQ(hex(value), "01");
}

TEST(BigIntegerIncrement, PostfixGivesTheOldValue) {
    CBigInteger value = number("00 ff");
    EXPECT_EQ(hex(value++), "00 ff");
    EXPECT_EQ(hex(value), "01 00");
}

TEST(BigIntegerAdd, ReturnsTheCarry) {
    CBigInteger value = number("80 ff");
    EXPECT_EQ(value.add(number("80 01")), 1);
    EXPECT_EQ(hex(value), "01 00");
    EXPECT_EQ(value.add(number("00 05")), 0);
    EXPECT_EQ(hex(value), "01 05");
}

TEST(BigIntegerAdd, DoublesItself) {
    CBigInteger value = number("40 81");
    EXPECT_EQ(value.add(value), 0);
    EXPECT_EQ(hex(value), "81 02");
}

TEST(BigIntegerAdd, NeedsEqualSizes) {
    CBigInteger value = number("01 02");
    EXPECT_CODE(E_INVALIDARG, value.add(number("01")));
    EXPECT_EQ(hex(value), "01 02");
}

struct OrderCase {
    const char* name;
    const char* left;
    const char* right;
    int sign;
};

void PrintTo(const OrderCase& row, std::ostream* out) {
    *out << row.left << " against " << row.right;
}

class BigIntegerOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(BigIntegerOrder, HoldsBothWays) {
    const OrderCase& row = GetParam();
    const CBigInteger left = number(row.left);
    const CBigInteger right = number(row.right);
    const auto sign = [](int order) { return (order > 0) - (order < 0); };
    EXPECT_EQ(sign(left.compare(right)), row.sign);
    EXPECT_EQ(sign(right.compare(left)), -row.sign);
    EXPECT_EQ(left == right, row.sign == 0);
    EXPECT_EQ(left != right, row.sign != 0);
    EXPECT_EQ(left < right, row.sign < 0);
    EXPECT_EQ(left > right, row.sign > 0);
    EXPECT_EQ(left <= right, row.sign <= 0);
    EXPECT_EQ(left >= right, row.sign >= 0);
}

constexpr OrderCase kOrderCases[] = {
    {.name = "BothEmpty", .left = "", .right = "", .sign = 0},
    {.name = "PositiveAgainstEmpty", .left = "00", .right = "", .sign = 1},
    {.name = "NegativeAgainstEmpty", .left = "80", .right = "", .sign = -1},
    {.name = "NegativeAgainstPositive", .left = "ff", .right = "00", .sign = -1},
    {.name = "SameLength", .left = "01 02", .right = "01 03", .sign = -1},
    {.name = "SameLengthUnstripped", .left = "00 01", .right = "00 01", .sign = 0},
    {.name = "RedundantZero", .left = "00 7f", .right = "7f", .sign = 0},
    {.name = "NeededZeroStays", .left = "00 80", .right = "7f", .sign = 1},
    {.name = "RedundantOnes", .left = "ff 80", .right = "80", .sign = 0},
    {.name = "ManyRedundantOnes", .left = "ff ff ff", .right = "ff", .sign = 0},
    {.name = "LongerNegativeIsGreater", .left = "fe 00", .right = "80", .sign = 1},  // Intended
    {.name = "LongerPositiveIsGreater", .left = "01 00", .right = "7f", .sign = 1},
    {.name = "AfterStripping", .left = "00 00 05", .right = "06", .sign = -1},
};

INSTANTIATE_TEST_SUITE_P(Compare, BigIntegerOrder, testing::ValuesIn(kOrderCases), test::case_name);

TEST(BigIntegerAbs, ClearsTheSignBit) {
    // Intended: it is no negation.
    EXPECT_EQ(hex(number("80").abs()), "00");
    EXPECT_EQ(hex(number("ff 01").abs()), "7f 01");
    EXPECT_EQ(hex(number("7f").abs()), "7f");
    EXPECT_EQ(hex(CBigInteger().abs()), "");
}

TEST(BigIntegerCodec, WritesMinimalInteger) {
    EXPECT_EQ(hex(number("7f").encode()), "02 01 7f");
    EXPECT_EQ(hex(number("00 00 80").encode()), "02 02 00 80");
    EXPECT_EQ(hex(number("80").encode()), "02 01 80");
}

TEST(BigIntegerCodec, WritesZeroForNoOctets) {
    EXPECT_EQ(hex(CBigInteger().encode()), "02 01 00");
}

TEST(BigIntegerCodec, Reads) {
    CBigInteger value;
    value.decode(blob("02 02 00 ff"));
    EXPECT_EQ(hex(value), "00 ff");
    value.decode(blob("02 01 80"));
    EXPECT_EQ(hex(value), "80");
    value.decode(blob("02 01 00"));
    EXPECT_EQ(hex(value), "00");
}

TEST(BigIntegerCodec, ReadsItsOwnOctets) {
    CBigInteger value;
    value.decode(static_cast<const CBlob&>(number("02 01 05")));
    EXPECT_EQ(hex(value), "05");
    CBigInteger itself = number("02 01 05");
    itself.decode(itself);
    EXPECT_EQ(hex(itself), "05");
}

TEST(BigIntegerCodec, KeepsValueWhenDecodingFails) {
    CBigInteger value = number("2a");
    for (const char* bad : {"", "04 01 05", "02", "02 05 01"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob(bad)));
    }
    EXPECT_EQ(hex(value), "2a");
}

}  // namespace
}  // namespace Quillmark::ASN1
