#include <gtest/gtest.h>

#include "runtime/ber_decode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct IntegerCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    int64_t value = 0;
};

constexpr IntegerCase kIntegers[] = {
    {.name = "OneOctet", .ber = "02 01 7f", .value = 127},
    {.name = "MinusOne", .ber = "02 01 ff", .value = -1},
    {.name = "Minus129", .ber = "02 02 ff 7f", .value = -129},
    {.name = "FourOctets", .ber = "02 04 7f ff ff ff", .value = 2147483647},
    {.name = "SmallestValue", .ber = "02 04 80 00 00 00", .value = -2147483648LL},
    // Intended: X.690 8.3.2 forbids the octet.
    {.name = "RedundantOctet", .ber = "02 02 00 7f", .value = 127},
    {.name = "RedundantOctetsOfANegative", .ber = "02 04 ff ff ff ff", .value = -1},
    {.name = "LongLength", .ber = "02 84 00 00 00 01 05", .value = 5},
    {.name = "FiveOctets", .ber = "02 05 00 00 00 00 01", .status = RT_E_TOOBIG},
    {.name = "NoOctets", .ber = "02 00", .status = RT_E_INVLEN},
    {.name = "OtherTag", .ber = "04 01 05", .status = RT_E_IDNOTFOUND},
    {.name = "Constructed", .ber = "22 01 05", .status = RT_E_IDNOTFOUND},
    {.name = "Indefinite", .ber = "02 80 00 00", .status = RT_E_INVLEN},
    {.name = "ShortLengthBeyondTheBuffer", .ber = "02 02 05", .status = RT_E_ENDOFBUF},
    {.name = "LongLengthBeyondTheBuffer", .ber = "02 81 02 05", .status = RT_E_INVLEN},
    {.name = "TagAlone", .ber = "02", .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
};

class XdInteger : public testing::TestWithParam<IntegerCase> {};

TEST_P(XdInteger, ReadsExplicitAndRecordsFailures) {
    CodecContext ctxt;
    int32_t value = 0;
    EXPECT_EQ(xd_integer(ctxt.read(GetParam().ber), &value, ASN1EXPL, 0), GetParam().status);
    EXPECT_EQ(ctxt.recorded(), GetParam().status);
    EXPECT_EQ(value, GetParam().value);
}

TEST_P(XdInteger, KeepsToTheBufferInTheIndefiniteFormToo) {
    CodecContext ctxt;
    int32_t value = 0;
    rtCtxtSetFlag(ctxt.read(GetParam().ber), RT_F_INDEFLEN);
    EXPECT_EQ(xd_integer(ctxt, &value, ASN1EXPL, 0), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(X690, XdInteger, testing::ValuesIn(kIntegers), case_name);

constexpr IntegerCase kUnsigned[] = {
    {.name = "OneOctet", .ber = "02 01 7f", .value = 127},
    // Intended: the sign bit is part of the magnitude.
    {.name = "SignBit", .ber = "02 01 ff", .value = 255},
    {.name = "FourOctetsWithSignBit", .ber = "02 04 ff ff ff ff", .value = 4294967295LL},
    {.name = "FiveOctetsWithZeroFirst", .ber = "02 05 00 ff ff ff ff", .value = 4294967295LL},
    {.name = "FiveOctets", .ber = "02 05 01 00 00 00 00", .status = RT_E_TOOBIG},
    {.name = "SixOctets", .ber = "02 06 00 00 00 00 00 01", .status = RT_E_TOOBIG},
    {.name = "NoOctets", .ber = "02 00", .value = 0},  // Intended.
    {.name = "OtherTag", .ber = "04 01 05", .status = RT_E_IDNOTFOUND},
    {.name = "Indefinite", .ber = "02 80 00 00", .status = RT_E_INVLEN},
    {.name = "LengthBeyondTheBuffer", .ber = "02 02 05", .status = RT_E_ENDOFBUF},
    {.name = "FiveOctetsBeyondTheBuffer", .ber = "02 05 00 ff", .status = RT_E_ENDOFBUF},
    {.name = "TagAlone", .ber = "02", .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
};

class XdUnsigned : public testing::TestWithParam<IntegerCase> {};

TEST_P(XdUnsigned, ReadsAMagnitude) {
    CodecContext ctxt;
    uint32_t value = 0;
    EXPECT_EQ(xd_unsigned(ctxt.read(GetParam().ber), &value, ASN1EXPL, 0), GetParam().status);
    EXPECT_EQ(value, GetParam().value);
    // The end of the buffer is left to the caller to record.
    EXPECT_EQ(ctxt.recorded(), GetParam().status == RT_E_ENDOFBUF ? RT_OK : GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(X690, XdUnsigned, testing::ValuesIn(kUnsigned), case_name);

constexpr IntegerCase kSixteenBits[] = {
    {.name = "OneOctet", .ber = "02 01 7f", .value = 127},
    {.name = "TwoOctets", .ber = "02 02 ff ff", .value = 65535},
    {.name = "ThreeOctetsWithZeroFirst", .ber = "02 03 00 ff ff", .value = 65535},
    {.name = "ThreeOctets", .ber = "02 03 01 00 00", .status = RT_E_TOOBIG},
    {.name = "FourOctets", .ber = "02 04 00 00 00 01", .status = RT_E_TOOBIG},
    {.name = "NoOctetsTakeOne", .ber = "02 00 05", .value = 5},  // Intended.
    {.name = "NoOctetsAtTheEnd", .ber = "02 00", .status = RT_E_ENDOFBUF},
    {.name = "LongLength", .ber = "02 81 01 05", .status = RT_E_TOOBIG},
    {.name = "OtherTag", .ber = "04 01 05", .status = RT_E_IDNOTFOUND},
    {.name = "TwoOctetsBeyondTheBuffer", .ber = "02 02 05", .status = RT_E_ENDOFBUF},
    {.name = "ThreeOctetsBeyondTheBuffer", .ber = "02 03 00 05", .status = RT_E_ENDOFBUF},
    {.name = "TagAlone", .ber = "02", .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
};

class XdUint16 : public testing::TestWithParam<IntegerCase> {};

TEST_P(XdUint16, ReadsAMagnitude) {
    CodecContext ctxt;
    uint16_t value = 0;
    EXPECT_EQ(xd_uint16(ctxt.read(GetParam().ber), &value, ASN1EXPL, 0), GetParam().status);
    EXPECT_EQ(value, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(X690, XdUint16, testing::ValuesIn(kSixteenBits), case_name);

constexpr IntegerCase kEnumerated[] = {
    {.name = "OneOctet", .ber = "0a 01 05", .value = 5},
    {.name = "Negative", .ber = "0a 01 ff", .value = -1},
    {.name = "LongLength", .ber = "0a 81 01 05", .value = 5},
    {.name = "IntegerTag", .ber = "02 01 05", .status = RT_E_IDNOTFOUND},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
    {.name = "TagAlone", .ber = "0a", .status = RT_E_ENDOFBUF},
};

class XdEnum : public testing::TestWithParam<IntegerCase> {};

TEST_P(XdEnum, ReadsAnIntegerUnderTag10WithoutRecording) {
    CodecContext ctxt;
    int32_t value = 0;
    EXPECT_EQ(xd_enum(ctxt.read(GetParam().ber), &value, ASN1EXPL, 0), GetParam().status);
    EXPECT_EQ(value, GetParam().value);
    EXPECT_EQ(ctxt.recorded(), RT_OK);
}

INSTANTIATE_TEST_SUITE_P(X690, XdEnum, testing::ValuesIn(kEnumerated), case_name);

TEST(XdEnumContents, FailAsAnInteger) {
    CodecContext ctxt;
    int32_t value = 0;
    EXPECT_EQ(xd_enum(ctxt.read("0a 00"), &value, ASN1EXPL, 0), RT_E_INVLEN);
    EXPECT_EQ(xd_enum(ctxt.read("0a 05 00 00 00 00 01"), &value, ASN1EXPL, 0), RT_E_TOOBIG);
}

TEST(XdImplicit, TakesTheLengthOfTheCaller) {
    CodecContext ctxt;
    int32_t number = 0;
    uint32_t magnitude = 0;
    uint16_t small = 0;
    EXPECT_EQ(xd_integer(ctxt.read("ff 7f 05"), &number, ASN1IMPL, 2), RT_OK);
    EXPECT_EQ(number, -129);
    EXPECT_EQ(ctxt.position(), 2u);
    EXPECT_EQ(xd_unsigned(ctxt.read("ff 7f 05"), &magnitude, ASN1IMPL, 2), RT_OK);
    EXPECT_EQ(magnitude, 0xFF7Fu);
    EXPECT_EQ(xd_uint16(ctxt.read("ff 7f 05"), &small, ASN1IMPL, 2), RT_OK);
    EXPECT_EQ(small, 0xFF7F);
    EXPECT_EQ(xd_enum(ctxt.read("05"), &number, ASN1IMPL, 1), RT_OK);
    EXPECT_EQ(number, 5);
}

TEST(XdImplicit, RefusesTheIndefiniteFormOfNumbers) {
    CodecContext ctxt;
    int32_t number = 0;
    uint32_t magnitude = 0;
    uint16_t small = 0;
    uint8_t truth = 0;
    ctxt.read("01 02 00 00");
    EXPECT_EQ(xd_integer(ctxt, &number, ASN1IMPL, RT_INDEFLEN), RT_E_INVLEN);
    EXPECT_EQ(xd_unsigned(ctxt, &magnitude, ASN1IMPL, RT_INDEFLEN), RT_E_INVLEN);
    EXPECT_EQ(xd_uint16(ctxt, &small, ASN1IMPL, RT_INDEFLEN), RT_E_INVLEN);
    EXPECT_EQ(xd_enum(ctxt, &number, ASN1IMPL, RT_INDEFLEN), RT_E_INVLEN);
    EXPECT_EQ(xd_boolean(ctxt, &truth, ASN1IMPL, RT_INDEFLEN), RT_E_INVLEN);
}

TEST(XdImplicit, FindsNothingBehindTheEnd) {
    CodecContext ctxt;
    int32_t number = 0;
    uint32_t magnitude = 0;
    uint16_t small = 0;
    uint8_t truth = 0;
    ctxt.read("01 02")->buffer.byteIndex = 127;
    EXPECT_EQ(xd_integer(ctxt, &number, ASN1IMPL, 1), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_unsigned(ctxt, &magnitude, ASN1IMPL, 1), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_uint16(ctxt, &small, ASN1IMPL, 0), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_boolean(ctxt, &truth, ASN1IMPL, 1), RT_E_ENDOFBUF);
}

struct BooleanCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    uint8_t value = 0;
};

constexpr BooleanCase kBooleans[] = {
    {.name = "True", .ber = "01 01 ff", .value = 0xFF},
    {.name = "False", .ber = "01 01 00", .value = 0},
    {.name = "StoredAsRead", .ber = "01 01 01", .value = 1},
    {.name = "NoOctets", .ber = "01 00", .status = RT_E_INVLEN},
    {.name = "TwoOctets", .ber = "01 02 ff ff", .status = RT_E_INVLEN},
    {.name = "LongLength", .ber = "01 81 01 ff", .status = RT_E_INVLEN},
    {.name = "OtherTag", .ber = "02 01 ff", .status = RT_E_IDNOTFOUND},
    {.name = "TagAlone", .ber = "01", .status = RT_E_ENDOFBUF},
    {.name = "ContentsMissing", .ber = "01 01", .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
};

class XdBoolean : public testing::TestWithParam<BooleanCase> {};

TEST_P(XdBoolean, ReadsOneOctet) {
    CodecContext ctxt;
    uint8_t value = 0;
    EXPECT_EQ(xd_boolean(ctxt.read(GetParam().ber), &value, ASN1EXPL, 0), GetParam().status);
    EXPECT_EQ(ctxt.recorded(), GetParam().status);
    EXPECT_EQ(value, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(X690, XdBoolean, testing::ValuesIn(kBooleans), case_name);

TEST(XdBooleanImplicit, NeedsOneOctetToo) {
    CodecContext ctxt;
    uint8_t value = 0;
    EXPECT_EQ(xd_boolean(ctxt.read("05"), &value, ASN1IMPL, 1), RT_OK);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(xd_boolean(ctxt.read("05 05"), &value, ASN1IMPL, 2), RT_E_INVLEN);
    EXPECT_EQ(xd_boolean(ctxt.read("05"), &value, ASN1IMPL, 0), RT_E_INVLEN);
}

TEST(XdNull, HasNoContents) {
    CodecContext ctxt;
    EXPECT_EQ(xd_null(ctxt.read("05 00"), ASN1EXPL), RT_OK);
    EXPECT_EQ(ctxt.position(), 2u);
    EXPECT_EQ(xd_null(ctxt.read("05 01 00"), ASN1EXPL), RT_E_INVLEN);
    EXPECT_EQ(xd_null(ctxt.read("04 00"), ASN1EXPL), RT_E_IDNOTFOUND);
    EXPECT_EQ(xd_null(ctxt.read("05"), ASN1EXPL), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_null(ctxt.read(""), ASN1EXPL), RT_E_ENDOFBUF);
    EXPECT_EQ(xd_null(ctxt.read("aa"), ASN1IMPL), RT_OK);
    EXPECT_EQ(ctxt.position(), 0u);
}

TEST(XdPrimitives, ClearTheConstructedFlag) {
    CodecContext ctxt;
    int32_t number = 0;
    rtCtxtSetFlag(ctxt.read("02 01 05"), RT_F_CONSTAG);
    EXPECT_EQ(xd_integer(ctxt, &number, ASN1EXPL, 0), RT_OK);
    EXPECT_EQ(ctxt->flags & RT_F_CONSTAG, 0);
}

}  // namespace
}  // namespace Quillmark::test
