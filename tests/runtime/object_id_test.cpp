#include "runtime/object_id.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <vector>

#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

using Arcs = std::vector<uint32_t>;

ASN1OBJID make_oid(const Arcs& arcs) {
    ASN1OBJID oid;
    oid.numids = static_cast<uint32_t>(arcs.size());
    std::copy(arcs.begin(), arcs.end(), oid.subid);
    return oid;
}

Arcs arcs_of(const ASN1OBJID& oid) {
    return {oid.subid, oid.subid + oid.numids};
}

Arcs counting_arcs(uint32_t count) {
    Arcs arcs(count);
    std::iota(arcs.begin(), arcs.end(), 0u);
    return arcs;
}

std::string dotted(uint32_t arcs) {
    std::string text = "1";
    for (uint32_t i = 1; i < arcs; ++i) {
        text += ".1";
    }
    return text;
}

struct ParseCase {
    const char* name;
    const char* text;
    int result;
    Arcs arcs;  // what stands in the record afterwards
};

class RtStrToOid : public testing::TestWithParam<ParseCase> {};

TEST_P(RtStrToOid, ReadsDottedText) {
    ASN1OBJID oid;
    EXPECT_EQ(GetParam().result, rtStrToOid(GetParam().text, &oid)) << GetParam().text;
    EXPECT_EQ(GetParam().arcs, arcs_of(oid)) << GetParam().text;
}

const ParseCase kParseCases[] = {
    {.name = "ThreeArcs", .text = "1.2.840", .result = 1, .arcs = {1, 2, 840}},
    {.name = "OneArc", .text = "7", .result = 1, .arcs = {7}},
    {.name = "LargestArc", .text = "2.4294967295", .result = 1, .arcs = {2, 0xFFFFFFFF}},
    {.name = "LeadingZeros", .text = "1.002", .result = 1, .arcs = {1, 2}},
    // Intended: whether the first arcs are possible is left to the encoder.
    {.name = "FirstArcAboveTwo", .text = "9.99", .result = 1, .arcs = {9, 99}},
    // Intended: arcs are read as strtoul does, with blanks and signs in front.
    {.name = "BlankBeforeArc", .text = "1. 2", .result = 1, .arcs = {1, 2}},
    {.name = "PlusBeforeArc", .text = "1.+2", .result = 1, .arcs = {1, 2}},
    {.name = "BlankBehindArc", .text = "1.2 ", .result = 0, .arcs = {1}},
    {.name = "DotAtEnd", .text = "1.2.", .result = 0, .arcs = {1, 2}},
    {.name = "TwoDots", .text = "1..2", .result = 0, .arcs = {1}},
    {.name = "DotInFront", .text = ".1", .result = 0, .arcs = {}},
    {.name = "Empty", .text = "", .result = 0, .arcs = {}},
    {.name = "Letter", .text = "1.2a.3", .result = 0, .arcs = {1}},
    {.name = "Null", .text = nullptr, .result = 0, .arcs = {}},
};
INSTANTIATE_TEST_SUITE_P(ObjectId, RtStrToOid, testing::ValuesIn(kParseCases), case_name);

TEST(RtStrToOidLimit, ReadsUpTo128Arcs) {
    ASN1OBJID oid;
    EXPECT_EQ(1, rtStrToOid(dotted(128).c_str(), &oid));
    EXPECT_EQ(128u, oid.numids);
}

TEST(RtStrToOidLimit, StopsAt128Arcs) {
    ASN1OBJID oid;
    EXPECT_EQ(0, rtStrToOid(dotted(129).c_str(), &oid));
    EXPECT_EQ(128u, oid.numids);
}

struct FormatCase {
    const char* name;
    Arcs arcs;
    size_t room;
    int result;
    const char* text;
};

class RtOidToStr : public testing::TestWithParam<FormatCase> {};

TEST_P(RtOidToStr, WritesWholeArcsOnly) {
    std::array<char, 64> text;
    text.fill('#');
    const ASN1OBJID oid = make_oid(GetParam().arcs);
    EXPECT_EQ(GetParam().result, rtOidToStr(&oid, text.data(), GetParam().room));
    EXPECT_STREQ(GetParam().text, text.data());
    // The room is that of the text; the terminator stands behind it.
    EXPECT_EQ('#', text[GetParam().room + 1]);
}

const FormatCase kFormatCases[] = {
    {.name = "Plain", .arcs = {1, 2, 840}, .room = 20, .result = 1, .text = "1.2.840"},
    {.name = "ExactRoom", .arcs = {1, 2, 840}, .room = 7, .result = 1, .text = "1.2.840"},
    {.name = "OneShort", .arcs = {1, 2, 840}, .room = 6, .result = 0, .text = "1.2"},
    {.name = "RoomForDotOnly", .arcs = {1, 2, 840}, .room = 4, .result = 0, .text = "1.2"},
    {.name = "NoRoom", .arcs = {1, 2}, .room = 0, .result = 0, .text = ""},
    {.name = "Empty", .arcs = {}, .room = 0, .result = 1, .text = ""},
    {.name = "LargestArc",
     .arcs = {0xFFFFFFFF, 0xFFFFFFFF},
     .room = 21,
     .result = 1,
     .text = "4294967295.4294967295"},
};
INSTANTIATE_TEST_SUITE_P(ObjectId, RtOidToStr, testing::ValuesIn(kFormatCases), case_name);

struct LengthCase {
    const char* name;
    Arcs arcs;
    int length;
};

class RtOidToStrLen : public testing::TestWithParam<LengthCase> {};

TEST_P(RtOidToStrLen, CountsTheTextWithoutTerminator) {
    const ASN1OBJID oid = make_oid(GetParam().arcs);
    EXPECT_EQ(GetParam().length, rtOidToStrLen(&oid));
}

const LengthCase kLengthCases[] = {
    {.name = "Empty", .arcs = {}, .length = 0},
    {.name = "TwoArcs", .arcs = {1, 2}, .length = 3},
    {.name = "Zero", .arcs = {0}, .length = 1},
    {.name = "NineAndTen", .arcs = {9, 10}, .length = 4},
    {.name = "LargestArcs", .arcs = Arcs(128, 0xFFFFFFFF), .length = 128 * 11 - 1},
};
INSTANTIATE_TEST_SUITE_P(ObjectId, RtOidToStrLen, testing::ValuesIn(kLengthCases), case_name);

TEST(RtOidToStrLenLimit, ReadsNoMoreArcsThanThereAre) {
    ASN1OBJID oid = make_oid(Arcs(128, 1));
    oid.numids = 5000;
    EXPECT_EQ(255, rtOidToStrLen(&oid));
}

struct CompareCase {
    const char* name;
    Arcs a;
    Arcs b;
    bool equal;
};

class OidComparison : public testing::TestWithParam<CompareCase> {};

TEST_P(OidComparison, LeavesTheResultOnEqualityAndClearsItOtherwise) {
    const ASN1OBJID a = make_oid(GetParam().a);
    const ASN1OBJID b = make_oid(GetParam().b);
    // Intended: 1 leaves `*result` as it was.
    const int left_in_result = GetParam().equal ? 77 : 0;
    int result = 77;
    EXPECT_EQ(GetParam().equal ? 1 : 0, rtCmpOID("name", &a, &b, &result));
    EXPECT_EQ(left_in_result, result);
    result = 77;
    EXPECT_EQ(GetParam().equal ? 1 : 0, rtCmpOIDValue(nullptr, &a, &b, &result));
    EXPECT_EQ(left_in_result, result);
    EXPECT_EQ(GetParam().equal, a == b);
    EXPECT_EQ(GetParam().equal, b == a);
}

const CompareCase kCompareCases[] = {
    {.name = "Same", .a = {1, 2, 840}, .b = {1, 2, 840}, .equal = true},
    {.name = "BothEmpty", .a = {}, .b = {}, .equal = true},
    {.name = "LastArcDiffers", .a = {1, 2, 840}, .b = {1, 2, 841}, .equal = false},
    {.name = "FirstArcDiffers", .a = {1, 2, 840}, .b = {2, 2, 840}, .equal = false},
    {.name = "OneIsPrefix", .a = {1, 2}, .b = {1, 2, 840}, .equal = false},
    {.name = "OneIsEmpty", .a = {}, .b = {1}, .equal = false},
    {.name = "AllArcs", .a = counting_arcs(128), .b = counting_arcs(128), .equal = true},
};
INSTANTIATE_TEST_SUITE_P(ObjectId, OidComparison, testing::ValuesIn(kCompareCases), case_name);

TEST(RtSetOid, CopiesCountAndArcs) {
    const ASN1OBJID source = make_oid({1, 2, 840});
    ASN1OBJID copy = make_oid(counting_arcs(10));
    rtSetOID(&copy, &source);
    EXPECT_EQ(Arcs({1, 2, 840}), arcs_of(copy));
    EXPECT_EQ(3u, copy.subid[3]);  // arcs behind the count are not touched
}

TEST(RtSetOid, CopiesAtMost128Arcs) {
    ASN1OBJID source = make_oid(counting_arcs(128));
    source.numids = 129;
    ASN1OBJID copy;
    rtSetOID(&copy, &source);
    EXPECT_EQ(counting_arcs(128), arcs_of(copy));
}

TEST(ASN1TObjId, StartsEmpty) {
    EXPECT_EQ(0u, ASN1TObjId().numids);
}

TEST(ASN1TObjId, IsMadeOfArcs) {
    const unsigned int arcs[] = {1, 2, 840};
    EXPECT_EQ(Arcs({1, 2, 840}), arcs_of(ASN1TObjId(3, arcs)));
}

TEST(ASN1TObjId, TakesNoMoreThan128Arcs) {
    const Arcs arcs = counting_arcs(255);
    EXPECT_EQ(counting_arcs(128), arcs_of(ASN1TObjId(255, arcs.data())));
}

TEST(ASN1TObjId, CopiesFromBothForms) {
    const ASN1OBJID plain = make_oid({2, 5, 29});
    const ASN1TObjId from_plain(plain);
    const ASN1TObjId copy(from_plain);
    EXPECT_EQ(Arcs({2, 5, 29}), arcs_of(copy));

    ASN1TObjId assigned;
    assigned = plain;
    EXPECT_EQ(Arcs({2, 5, 29}), arcs_of(assigned));
    ASN1TObjId again;
    again = assigned;
    EXPECT_EQ(Arcs({2, 5, 29}), arcs_of(again));
    again = *&again;
    EXPECT_EQ(Arcs({2, 5, 29}), arcs_of(again));
}

TEST(ASN1TObjId64, HoldsArcsAbove32Bits) {
    const long long arcs[] = {2, 25, 0x123456789ABCDEF};
    const ASN1TObjId64 oid(3, arcs);
    const ASN1TObjId64 copy(oid);
    ASN1TObjId64 assigned;
    EXPECT_EQ(0u, assigned.numids);
    assigned = copy;
    ASSERT_EQ(3u, assigned.numids);
    EXPECT_EQ(2, assigned.subid[0]);
    EXPECT_EQ(0x123456789ABCDEF, assigned.subid[2]);
}

TEST(ASN1TObjId64, IsAssignedFromTheRecord) {
    ASN1OID64 record{};
    record.numids = 2;
    record.subid[0] = 2;
    record.subid[1] = 0x123456789ABCDEF;
    ASN1TObjId64 oid;
    oid = record;
    ASSERT_EQ(2u, oid.numids);
    EXPECT_EQ(0x123456789ABCDEF, oid.subid[1]);
}

TEST(ASN1TObjId64, TakesNoMoreThan128Arcs) {
    const std::vector<long long> arcs(255, 1);
    EXPECT_EQ(128u, ASN1TObjId64(255, arcs.data()).numids);
}

}  // namespace
}  // namespace Quillmark::test
