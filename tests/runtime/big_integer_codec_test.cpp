#include <gtest/gtest.h>

#include <string>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

struct WriteCase {
    const char* name;
    const char* text;
    const char* der = "";  ///< empty: refused
};

// Two's complement (X.690 8.3); digits that fill whole octets and begin with a set bit are negative.
constexpr WriteCase kSigned[] = {
    {.name = "Zero", .text = "0", .der = "02 01 00"},
    {.name = "HexZero", .text = "0x0", .der = "02 01 00"},
    {.name = "HexZeros", .text = "0x0000", .der = "02 01 00"},
    {.name = "HexWithoutDigits", .text = "0x", .der = "02 01 00"},
    {.name = "BinaryWithoutDigits", .text = "0b", .der = "02 01 00"},
    {.name = "HexFF", .text = "0xFF", .der = "02 01 ff"},
    {.name = "HexWithZeroOctet", .text = "0x00FF", .der = "02 02 00 ff"},
    {.name = "HexOddDigits", .text = "0x0ff", .der = "02 02 00 ff"},
    {.name = "HexOneDigit", .text = "0x5", .der = "02 01 05"},
    {.name = "HexOneDigitWithTopBit", .text = "0xf", .der = "02 01 0f"},
    {.name = "HexThreeDigitsWithTopBit", .text = "0xf00", .der = "02 02 0f 00"},
    {.name = "HexPositive", .text = "0x7f", .der = "02 01 7f"},
    {.name = "HexNegative", .text = "0x80", .der = "02 01 80"},
    {.name = "HexNegativeRedundant", .text = "0xffff80", .der = "02 01 80"},
    {.name = "HexNegativeNeedsItsOctet", .text = "0xff7f", .der = "02 02 ff 7f"},
    {.name = "HexAllOnes", .text = "0xffffffff", .der = "02 01 ff"},
    {.name = "HexEitherCase", .text = "0xAbCdEf01234567", .der = "02 07 ab cd ef 01 23 45 67"},
    {.name = "HexLeadingZeroDigits", .text = "0x00000005", .der = "02 01 05"},
    {.name = "Binary", .text = "0b101", .der = "02 01 05"},
    {.name = "BinaryWholeOctetNegative", .text = "0b10000000", .der = "02 01 80"},
    {.name = "BinaryNineDigits", .text = "0b110000000", .der = "02 02 01 80"},
    {.name = "DecimalOne", .text = "1", .der = "02 01 01"},
    {.name = "Decimal127", .text = "127", .der = "02 01 7f"},
    {.name = "Decimal128", .text = "128", .der = "02 02 00 80"},
    {.name = "DecimalMinus128", .text = "-128", .der = "02 01 80"},
    {.name = "DecimalMinus129", .text = "-129", .der = "02 02 ff 7f"},
    {.name = "DecimalMinusOne", .text = "-1", .der = "02 01 ff"},
    {.name = "DecimalTwoTo64", .text = "18446744073709551616", .der = "02 09 01 00 00 00 00 00 00 00 00"},
    {.name = "DecimalZeros", .text = "000", .der = "02 01 00"},
    {.name = "DecimalPlus", .text = "+5"},
    {.name = "DecimalLoneMinus", .text = "-"},
    {.name = "DecimalLetters", .text = "12a"},
    {.name = "HexWrongDigit", .text = "0x5g"},
    {.name = "BinaryWrongDigit", .text = "0b12"},
    {.name = "UpperCasePrefix", .text = "0X5"},
    {.name = "Empty", .text = ""},
    {.name = "Null", .text = nullptr},
};

class XeBigint : public testing::TestWithParam<WriteCase> {};

TEST_P(XeBigint, WritesTheShortestForm) {
    CodecContext ctxt;
    const std::string der = GetParam().der;
    const int result = xe_bigint(ctxt.encode(), GetParam().text, ASN1EXPL);
    EXPECT_EQ(result, der.empty() ? RT_E_BADVALUE : static_cast<int>(from_hex(der).size()));
    EXPECT_EQ(ctxt.written(), der);
}

INSTANTIATE_TEST_SUITE_P(X690, XeBigint, testing::ValuesIn(kSigned), case_name);

// Intended: no octet 00 in front of a set top bit unless the text has leading zeros.
constexpr WriteCase kMagnitudes[] = {
    {.name = "Zero", .text = "0", .der = "02 01 00"},
    {.name = "HexZero", .text = "0x0", .der = "02 01 00"},
    {.name = "HexWithoutDigits", .text = "0x", .der = "02 01 00"},
    {.name = "HexFF", .text = "0xFF", .der = "02 01 ff"},
    {.name = "HexWithZeroOctet", .text = "0x00FF", .der = "02 02 00 ff"},
    {.name = "HexWithLeadingZeros", .text = "0x0010", .der = "02 02 00 10"},
    {.name = "HexOddDigits", .text = "0x0ff", .der = "02 02 00 ff"},
    {.name = "HexIncompleteOctet", .text = "0x123", .der = "02 02 01 23"},
    {.name = "HexIncompleteOctetWithLeadingZeros", .text = "0x00123", .der = "02 02 01 23"},
    {.name = "Binary", .text = "0b11111111", .der = "02 01 ff"},
    {.name = "Decimal", .text = "5"},
    {.name = "HexWrongDigit", .text = "0x5g"},
    {.name = "Empty", .text = ""},
    {.name = "Null", .text = nullptr},
};

class XeBiguint : public testing::TestWithParam<WriteCase> {};

TEST_P(XeBiguint, WritesAMagnitude) {
    CodecContext ctxt;
    const std::string der = GetParam().der;
    const int result = xe_biguint(ctxt.encode(), GetParam().text, ASN1EXPL);
    EXPECT_EQ(result, der.empty() ? RT_E_BADVALUE : static_cast<int>(from_hex(der).size()));
    EXPECT_EQ(ctxt.written(), der);
}

INSTANTIATE_TEST_SUITE_P(X690, XeBiguint, testing::ValuesIn(kMagnitudes), case_name);

TEST(XeBigintImplicit, WritesContentsAlone) {
    CodecContext ctxt;
    EXPECT_EQ(xe_bigint(ctxt.encode(), "0x00FF", ASN1IMPL), 2);
    EXPECT_EQ(ctxt.written(), "00 ff");
}

TEST(XeBigintBuffer, GrowsAndFills) {
    CodecContext ctxt;
    const std::string digits = "0x01" + std::string(40'000, '0');
    EXPECT_EQ(xe_bigint(ctxt.encode(), digits.c_str(), ASN1IMPL), 20'001);
    EXPECT_EQ(xe_getp(ctxt)[0], 1);
    uint8_t room[4];
    xe_setp(ctxt, room, sizeof room);
    EXPECT_EQ(xe_bigint(ctxt, "0x01020304", ASN1IMPL), RT_E_BUFOVFL);
    xe_setp(ctxt, room, sizeof room);
    EXPECT_EQ(xe_bigint(ctxt, "16909060", ASN1IMPL), RT_E_BUFOVFL);
    xe_setp(ctxt, room, sizeof room);
    EXPECT_EQ(xe_biguint(ctxt, "0x010203", ASN1IMPL), 3);
}

TEST(XeBigintMemory, IsReportedAndGivenBack) {
    CodecHeap heap;
    CodecContext ctxt;
    ctxt.encode();
    const std::size_t before = heap.live_blocks();
    heap.fail_after(0);
    EXPECT_EQ(xe_bigint(ctxt, "12345678901234567890", ASN1EXPL), RT_E_NOMEM);
    EXPECT_EQ(xe_bigint(ctxt, "12345678901234567890", ASN1EXPL), 11);
    EXPECT_EQ(heap.live_blocks(), before);
}

struct ReadCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    const char* text = "";
};

constexpr ReadCase kReads[] = {
    {.name = "Zero", .ber = "02 01 00", .text = "0x0"},
    {.name = "ZerosOnly", .ber = "02 03 00 00 00", .text = "0x0"},
    {.name = "OneOctet", .ber = "02 01 05", .text = "0x05"},
    {.name = "TopBitBehindAZeroOctet", .ber = "02 02 00 ff", .text = "0x0ff"},
    {.name = "RedundantZeroOctet", .ber = "02 02 00 7f", .text = "0x7f"},
    {.name = "SeveralZeroOctets", .ber = "02 04 00 00 00 80", .text = "0x080"},
    {.name = "Negative", .ber = "02 01 ff", .text = "0xff"},
    {.name = "NegativeOfTwoOctets", .ber = "02 02 ff 7f", .text = "0xff7f"},
    {.name = "LowerCaseDigits", .ber = "02 03 0a bc de", .text = "0x0abcde"},
    {.name = "NoOctets", .ber = "02 00", .text = "0x0"},
    {.name = "TwentyOctets",
     .ber = "02 14 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14",
     .text = "0x0102030405060708090a0b0c0d0e0f1011121314"},
    {.name = "OtherTag", .ber = "04 01 05", .status = RT_E_IDNOTFOUND},
    {.name = "Indefinite", .ber = "02 80 00 00", .status = RT_E_INVLEN},
    {.name = "LengthBeyondTheBuffer", .ber = "02 02 05", .status = RT_E_ENDOFBUF},
    {.name = "LengthOf2GiB", .ber = "02 84 7f ff ff ff 05", .status = RT_E_INVLEN},
    {.name = "TagAlone", .ber = "02", .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
};

class XdBigint : public testing::TestWithParam<ReadCase> {};

TEST_P(XdBigint, GivesHexadecimalText) {
    const ReadCase& row = GetParam();
    CodecContext ctxt;
    char* text = nullptr;
    EXPECT_EQ(xd_bigint(ctxt.read(row.ber), &text, ASN1EXPL, 0), row.status);
    EXPECT_EQ(ctxt.recorded(), row.status);
    if (row.status == RT_OK) {
        EXPECT_STREQ(text, row.text);
        EXPECT_EQ(ctxt.position(), from_hex(row.ber).size());
    }
}

TEST_P(XdBigint, KeepsToTheBufferInTheIndefiniteFormToo) {
    CodecContext ctxt;
    char* text = nullptr;
    rtCtxtSetFlag(ctxt.read(GetParam().ber), RT_F_INDEFLEN);
    EXPECT_EQ(xd_bigint(ctxt, &text, ASN1EXPL, 0), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(X690, XdBigint, testing::ValuesIn(kReads), case_name);

TEST(XdBigintImplicit, TakesTheLengthOfTheCaller) {
    CodecContext ctxt;
    char* text = nullptr;
    EXPECT_EQ(xd_bigint(ctxt.read("01 02 03"), &text, ASN1IMPL, 2), RT_OK);
    EXPECT_STREQ(text, "0x0102");
    EXPECT_EQ(xd_bigint(ctxt, &text, ASN1IMPL, RT_INDEFLEN), RT_E_INVLEN);
    EXPECT_EQ(xd_bigint(ctxt, &text, ASN1IMPL, 2), RT_E_ENDOFBUF);
}

TEST(XdBigintMemory, IsReported) {
    CodecHeap heap;
    CodecContext ctxt;
    char* text = nullptr;
    heap.fail_after(0);
    EXPECT_EQ(xd_bigint(ctxt.read("02 01 05"), &text, ASN1EXPL, 0), RT_E_NOMEM);
}

// Whatever canonical number is read comes out again.
TEST(BigintRoundTrip, KeepsCanonicalNumbers) {
    for (const char* der : {"02 01 00", "02 01 7f", "02 02 00 80", "02 01 80", "02 02 ff 7f", "02 01 ff",
                            "02 03 00 ff ff", "02 09 00 ff ff ff ff ff ff ff ff"}) {
        CodecContext ctxt;
        char* text = nullptr;
        ASSERT_EQ(xd_bigint(ctxt.read(der), &text, ASN1EXPL, 0), RT_OK);
        CodecContext out;
        EXPECT_GT(xe_bigint(out.encode(), text, ASN1EXPL), 0);
        EXPECT_EQ(out.written(), der);
    }
}

}  // namespace
}  // namespace Quillmark::test
