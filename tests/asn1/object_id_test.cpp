#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "asn1/codec.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

struct OidTextCase {
    const char* name;
    std::string text;
    std::vector<std::uint32_t> arcs;  // empty: refused
};

void PrintTo(const OidTextCase& row, std::ostream* out) {
    *out << '"' << row.text << '"';
}

std::string arcs_text(std::size_t count) {
    std::string text = "1";
    for (std::size_t i = 1; i < count; ++i) {
        text += ".1";
    }
    return text;
}

class OidText : public testing::TestWithParam<OidTextCase> {};

TEST_P(OidText, IsReadArcByArc) {
    const OidTextCase& row = GetParam();
    ASN1OBJID oid;
    EXPECT_EQ(str2oid(row.text.c_str(), &oid), row.arcs.empty() ? 1 : 0);
    if (!row.arcs.empty()) {
        EXPECT_EQ(std::vector<std::uint32_t>(oid.subid, oid.subid + oid.numids), row.arcs);
    }
}

const OidTextCase kCases[] = {
    {.name = "ThreeArcs", .text = "1.2.840", .arcs = {1, 2, 840}},
    {.name = "OneArc", .text = "7", .arcs = {7}},
    {.name = "BlankAfterFullStop", .text = "1. 2", .arcs = {1, 2}},  // Intended: as strtoul reads
    {.name = "BlankBeforeFullStop", .text = "1 .2", .arcs = {1, 2}},
    {.name = "BlanksAround", .text = " 1.2\t", .arcs = {1, 2}},
    {.name = "PlusSign", .text = "+1.+2", .arcs = {1, 2}},                // Intended: a sign passes
    {.name = "MinusSign", .text = "1.-2.3", .arcs = {1, 0xFFFFFFFE, 3}},  // Intended: wraps
    {.name = "FirstArcsUntested", .text = "9.99.1", .arcs = {9, 99, 1}},  // Intended: no range test
    {.name = "NineDigits", .text = "1.999999999.2", .arcs = {1, 999999999, 2}},
    {.name = "TenDigits", .text = "1.1000000000.2", .arcs = {1, 1000000000, 2}},
    {.name = "LeadingZeros", .text = "1.00000000000000000007.2", .arcs = {1, 7, 2}},
    {.name = "LargestLastArc", .text = "1.4294967294", .arcs = {1, 4294967294u}},
    {.name = "AllOnesInnerArc", .text = "1.4294967295.2", .arcs = {1, 4294967295u, 2}},  // Intended
    {.name = "InnerArcCutTo32Bits", .text = "1.4294967296.2", .arcs = {1, 0, 2}},
    {.name = "Arcs128", .text = arcs_text(128), .arcs = std::vector<std::uint32_t>(128, 1)},

    {.name = "Empty", .text = "", .arcs = {}},
    {.name = "OnlyBlank", .text = " ", .arcs = {}},
    {.name = "OnlyFullStop", .text = ".", .arcs = {}},
    {.name = "EndsInFullStop", .text = "1.2.", .arcs = {}},
    {.name = "BeginsWithFullStop", .text = ".1.2", .arcs = {}},
    {.name = "TwoFullStops", .text = "1..2", .arcs = {}},
    {.name = "Letter", .text = "1.a", .arcs = {}},
    {.name = "LetterBehindNumber", .text = "1.2a", .arcs = {}},
    {.name = "LetterBehindInnerNumber", .text = "1a.2", .arcs = {}},
    {.name = "TwoNumbersInOneArc", .text = "1 2.3", .arcs = {}},
    {.name = "AllOnesLastArc", .text = "1.4294967295", .arcs = {}},
    {.name = "OverlongLastArc", .text = "1.99999999999999999999999", .arcs = {}},
    {.name = "OctetAbove7F", .text = "1\x80.2", .arcs = {}},
    {.name = "Arcs129", .text = arcs_text(129), .arcs = {}},
};

INSTANTIATE_TEST_SUITE_P(Str2Oid, OidText, testing::ValuesIn(kCases), test::case_name);

TEST(OidTextNull, IsRefused) {
    ASN1OBJID oid;
    EXPECT_EQ(str2oid(nullptr, &oid), 1);
}

TEST(Oid2Str, WritesDigitsAndTerminator) {
    const ASN1OBJID oid = toASN1OBJID("1.0.4294967294");
    CBlob text;
    EXPECT_EQ(oid2str(text, &oid), 1);
    EXPECT_EQ(text, CBlob(reinterpret_cast<const unsigned char*>("1.0.4294967294"), 15));
}

TEST(Oid2Str, GivesTerminatorAloneForNoArcs) {
    const ASN1TObjId none;
    CBlob text;
    EXPECT_EQ(oid2str(text, &none), 1);
    EXPECT_EQ(hex(text), "00");
}

TEST(Oid2Str, WritesLargestOid) {
    ASN1OBJID oid;
    oid.numids = ASN1_K_MAXSUBIDS;
    std::string want;
    for (std::uint32_t& arc : oid.subid) {
        arc = 0xFFFFFFFF;
        want += want.empty() ? "4294967295" : ".4294967295";
    }
    EXPECT_EQ(toOID(oid).c_str(), want);
}

TEST(OidConversion, ReportsBadText) {
    ASN1OBJID oid;
    EXPECT_CODE(E_INVALIDARG, toASN1OBJID("1."));
    EXPECT_CODE(E_INVALIDARG, ASN1TObjId_traits::set(nullptr, oid, "1."));
}

TEST(OidConversion, GoesBothWays) {
    EXPECT_STREQ(toOID(toASN1OBJID("2.16.840.1.101.3.4.2.1")).c_str(), "2.16.840.1.101.3.4.2.1");
}

TEST(OidTraits, CopyArcs) {
    const ASN1OBJID source = toASN1OBJID("1.2.3");
    ASN1OBJID target;
    ASN1TObjId_traits::copy(nullptr, source, target);
    EXPECT_STREQ(toOID(target).c_str(), "1.2.3");
}

TEST(OidCodec, WritesUniversalTag) {
    EXPECT_EQ(hex((asn1Encode<ASN1TObjId_traits, const char*>("1.2.840.113549"))), "06 06 2a 86 48 86 f7 0d");
}

TEST(OidCodec, Reads) {
    CStringProxy oid("");
    asn1Decode<ASN1TObjId_traits>(blob("06 06 2A 86 48 86 F7 0D"), oid);
    EXPECT_STREQ(oid.c_str(), "1.2.840.113549");
}

TEST(OidCodec, RefusesArcsThatHaveNoEncoding) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, (asn1Encode<ASN1TObjId_traits, const char*>("3.1")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, (asn1Encode<ASN1TObjId_traits, const char*>("1.40")));
}

TEST(OidCodec, KeepsValueWhenDecodingFails) {
    CStringProxy oid("1.2.3");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, asn1Decode<ASN1TObjId_traits>(blob("02 01 05"), oid));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, asn1Decode<ASN1TObjId_traits>(CBlob(), oid));
    EXPECT_STREQ(oid.c_str(), "1.2.3");
}

}  // namespace
}  // namespace Quillmark::ASN1
