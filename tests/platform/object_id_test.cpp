// OBJECT IDENTIFIER contents (X.690 8.19) and dotted text.

#include "platform/detail/object_id.h"

#include <string>

#include "tests/platform/service.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct OidCase {
    const char* name;
    const char* text;
    const char* contents;
};

constexpr OidCase kOids[] = {
    {"TwoArcs", "1.2", "2a"},
    {"Zero", "0.0", "00"},
    {"LastOfSecondArc", "1.39", "4f"},
    {"JointIsoItu", "2.5.29.14", "55 1d 0e"},
    {"ExampleOfTheStandard", "2.999.3", "88 37 03"},  // X.690 8.19.5
    {"LargestArcOfOneOctet", "1.2.127", "2a 7f"},
    {"SmallestArcOfTwoOctets", "1.2.128", "2a 81 00"},
    {"DataContent", "1.2.840.113549.1.7.1", "2a 86 48 86 f7 0d 01 07 01"},
    {"LargestArc", "1.2.18446744073709551615", "2a 81 ff ff ff ff ff ff ff ff 7f"},
    {"LargestSecondArc", "2.18446744073709551535", "81 ff ff ff ff ff ff ff ff 7f"},
};

class ObjectId : public testing::TestWithParam<OidCase> {};

TEST_P(ObjectId, BecomesText) {
    const Octets contents = from_hex(GetParam().contents);
    ASSERT_TRUE(is_object_id(contents));
    EXPECT_EQ(object_id_text(contents), GetParam().text);
    EXPECT_EQ(object_id_text_size(contents), std::string(GetParam().text).size());
}

TEST_P(ObjectId, ComesFromText) {
    EXPECT_EQ(to_hex(object_id_from_text(GetParam().text)), GetParam().contents);
}

INSTANTIATE_TEST_SUITE_P(X690, ObjectId, testing::ValuesIn(kOids), case_name);

TEST(KnownObjectId, IsMadeByTheRulesOfText) {
    const platform::Octets contents = kMessageDigest;
    EXPECT_EQ(to_hex(contents), "2a 86 48 86 f7 0d 01 09 04");
}

class NoObjectIdText : public testing::TestWithParam<const char*> {};

TEST_P(NoObjectIdText, IsRefused) {
    try {
        object_id_from_text(GetParam());
        FAIL() << "accepted " << GetParam();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, CRYPT_E_OID_FORMAT);
    }
}

INSTANTIATE_TEST_SUITE_P(Text, NoObjectIdText,
                         testing::Values("", "1", "1.", ".1", "1..2", "1.2.", "3.1", "1.40", "0.40", "a.b",
                                         "1.2 ", " 1.2", "1.-2", "+1.2", "1,2", "1.2.18446744073709551616",
                                         "2.18446744073709551536", "1.2.99999999999999999999999"));

class NoObjectIdContents : public testing::TestWithParam<const char*> {};

TEST_P(NoObjectIdContents, IsRefused) {
    EXPECT_FALSE(is_object_id(from_hex(GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Contents, NoObjectIdContents,
                         testing::Values("",                                  // no arc
                                         "2a 86",                             // last arc without its end
                                         "2a 80 01",                          // leading octet 80 (8.19.2)
                                         "2a 82 80 80 80 80 80 80 80 80 00",  // 2^64
                                         "2a 81 80 80 80 80 80 80 80 80 80 00"));  // 2^70

}  // namespace
}  // namespace Quillmark::test
