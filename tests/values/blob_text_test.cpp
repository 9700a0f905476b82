// Blobs from and to hexadecimal text.

#include <gtest/gtest.h>

#include "tests/support/failing_new.h"
#include "values/blob.h"

namespace {

using Quillmark::CBlob;

struct ReadCase {
    const char* name;
    const char* text;
    const char* digits;  // of what was read
};

class CBlobReadFromHexString : public testing::TestWithParam<ReadCase> {};

TEST_P(CBlobReadFromHexString, TakesPairsUntilTheFirstThingThatIsNone) {
    CBlob blob;
    blob.readFromHexString(GetParam().text);
    EXPECT_STREQ(blob.writeToHexString(0).c_str(), GetParam().digits);
}

TEST_P(CBlobReadFromHexString, ReplacesWhatWasThere) {
    const unsigned char old[] = {9, 9, 9, 9, 9, 9, 9, 9};
    CBlob blob(old, sizeof old);
    blob.readFromHexString(GetParam().text);
    EXPECT_STREQ(blob.writeToHexString(0).c_str(), GetParam().digits);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CBlobReadFromHexString,
    testing::Values(
        ReadCase{"Null", nullptr, ""}, ReadCase{"Empty", "", ""},
        ReadCase{"BlankBetweenPairs", "ab cd", "ABCD"}, ReadCase{"BlankInsideAPairEndsIt", "a bcd", ""},
        ReadCase{"OddDigitIsDropped", "abc", "AB"}, ReadCase{"OtherCharacterEndsIt", "abxy", "AB"},
        ReadCase{"OtherSecondCharacterEndsIt", "ab1y", "AB"}, ReadCase{"EitherCase", "aBAb0f", "ABAB0F"},
        ReadCase{"AllWhiteSpaceOfTheCLocale", " \t\n\v\f\r01 \t\n\v\f\r02 ", "0102"},
        ReadCase{"BlanksOnly", "   ", ""},
        ReadCase{"NoBreakSpaceEndsIt",
                 "01\xA0"
                 "02",
                 "01"},
        ReadCase{"CharactersBesideTheDigitsEndIt", "0/", ""}, ReadCase{"ColonIsNoDigit", "0:", ""},
        ReadCase{"AtSignIsNoDigit", "0@", ""}, ReadCase{"LetterGIsNoDigit", "0G", ""},
        ReadCase{"GraveIsNoDigit", "0`", ""}, ReadCase{"SmallLetterGIsNoDigit", "0g", ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CBlobReadFromHexStringMemory, KeepsTheBlobWhenMemoryRunsOut) {
    CBlob blob;
    blob.readFromHexString("01");
    const std::size_t failures =
        Quillmark::test::for_each_failing_new([&] { blob.readFromHexString("0203040506070809"); },
                                              [&] { EXPECT_STREQ(blob.writeToHexString(0).c_str(), "01"); });
    EXPECT_EQ(failures, 1u);
}

struct WriteCase {
    const char* name;
    const char* bytes;
    unsigned long group;
    const char* text;
};

class CBlobWriteToHexString : public testing::TestWithParam<WriteCase> {};

TEST_P(CBlobWriteToHexString, GroupsUpperCaseDigits) {
    CBlob blob;
    blob.readFromHexString(GetParam().bytes);
    EXPECT_STREQ(blob.writeToHexString(GetParam().group).c_str(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Groups, CBlobWriteToHexString,
                         testing::Values(WriteCase{"Empty", "", 1, ""},
                                         WriteCase{"NoGroups", "0102030405", 0, "0102030405"},
                                         WriteCase{"PairsOfBytes", "0102030405", 2, "0102 0304 05"},
                                         WriteCase{"SingleBytes", "abcdef", 1, "AB CD EF"},
                                         WriteCase{"NoBlankAtTheEnd", "01020304", 4, "01020304"},
                                         WriteCase{"GroupBeyondTheEnd", "0102", 100, "0102"}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
