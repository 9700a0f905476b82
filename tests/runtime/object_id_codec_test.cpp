#include <gtest/gtest.h>

#include <initializer_list>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

ASN1OBJID oid_of(std::initializer_list<uint32_t> arcs) {
    ASN1OBJID oid{};
    for (const uint32_t arc : arcs) {
        oid.subid[oid.numids++] = arc;
    }
    return oid;
}

struct OidCase {
    const char* name;
    const char* der;
    const char* text;
};

// X.690 8.19.
constexpr OidCase kIdentifiers[] = {
    {.name = "SmallestOfAll", .der = "06 01 00", .text = "0.0"},
    {.name = "LargestUnder0", .der = "06 01 27", .text = "0.39"},
    {.name = "SmallestUnder1", .der = "06 01 28", .text = "1.0"},
    {.name = "LargestUnder1", .der = "06 01 4f", .text = "1.39"},
    {.name = "SmallestUnder2", .der = "06 01 50", .text = "2.0"},
    {.name = "ExampleOfTheStandard", .der = "06 03 88 37 03", .text = "2.999.3"},
    {.name = "SignedData", .der = "06 09 2a 86 48 86 f7 0d 01 07 02", .text = "1.2.840.113549.1.7.2"},
    {.name = "LargestArcs", .der = "06 0a 8f ff ff ff 7f 8f ff ff ff 7f", .text = "2.4294967215.4294967295"},
};

class ObjectId : public testing::TestWithParam<OidCase> {};

TEST_P(ObjectId, IsWritten) {
    ASN1OBJID oid;
    ASSERT_EQ(rtStrToOid(GetParam().text, &oid), 1);
    CodecContext ctxt;
    const int size = static_cast<int>(from_hex(GetParam().der).size());
    EXPECT_EQ(xe_objid(ctxt.encode(), &oid, ASN1EXPL), size);
    EXPECT_EQ(ctxt.written(), GetParam().der);
    EXPECT_EQ(xe_objid(ctxt.encode(), &oid, ASN1IMPL), size - 2);
}

TEST_P(ObjectId, IsRead) {
    CodecContext ctxt;
    ASN1OBJID oid;
    ASSERT_EQ(xd_objid(ctxt.read(GetParam().der), &oid, ASN1EXPL, 0), RT_OK);
    char text[64] = {};
    rtOidToStr(&oid, text, sizeof text - 1);
    EXPECT_STREQ(text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(X690, ObjectId, testing::ValuesIn(kIdentifiers), case_name);

TEST(XeObjid, RefusesWhatHasNoEncoding) {
    CodecContext ctxt;
    ctxt.encode();
    const ASN1OBJID wrong[] = {
        oid_of({}),      oid_of({1}),     oid_of({3, 1}),
        oid_of({0, 40}), oid_of({1, 40}), oid_of({2, 4294967216u}),  // 80 + arc has 33 bits
    };
    for (const ASN1OBJID& oid : wrong) {
        EXPECT_EQ(xe_objid(ctxt, &oid, ASN1EXPL), RT_E_INVOBJID);
    }
    EXPECT_EQ(xe_objid(ctxt, nullptr, ASN1EXPL), RT_E_INVOBJID);
    EXPECT_EQ(ctxt.written(), "");
}

TEST(XeObjid, WritesUpTo128Arcs) {
    CodecContext ctxt;
    ASN1OBJID oid = oid_of({1, 2});
    oid.numids = 128;
    EXPECT_EQ(xe_objid(ctxt.encode(), &oid, ASN1EXPL), 2 + 127);
    oid.numids = 129;
    EXPECT_EQ(xe_objid(ctxt, &oid, ASN1EXPL), RT_E_INVOBJID);
}

TEST(XdObjid, ReadsUpTo128Arcs) {
    CodecContext ctxt;
    ASN1OBJID oid;
    std::vector<uint8_t> octets(127, 1);
    EXPECT_EQ(xd_objid(ctxt.read(octets), &oid, ASN1IMPL, 127), RT_OK);
    EXPECT_EQ(oid.numids, 128u);
    octets.push_back(1);
    EXPECT_EQ(xd_objid(ctxt.read(octets), &oid, ASN1IMPL, 128), RT_E_INVOBJID);
    EXPECT_EQ(oid.numids, 128u);
    EXPECT_EQ(ctxt.recorded(), RT_E_INVOBJID);
}

struct BadCase {
    const char* name;
    const char* ber;
    int status;
};

constexpr BadCase kBad[] = {
    {.name = "NoOctets", .ber = "06 00", .status = RT_E_INVLEN},
    {.name = "OtherTag", .ber = "04 01 2a", .status = RT_E_IDNOTFOUND},
    {.name = "Indefinite", .ber = "06 80 2a 00 00", .status = RT_E_INVLEN},
    {.name = "LengthBeyondTheBuffer", .ber = "06 7f 2a 03", .status = RT_E_ENDOFBUF},
    {.name = "LongLengthBeyondTheBuffer", .ber = "06 82 ff ff 2a 03", .status = RT_E_INVLEN},
    {.name = "TagAlone", .ber = "06", .status = RT_E_ENDOFBUF},
    {.name = "Nothing", .ber = "", .status = RT_E_ENDOFBUF},
};

class XdObjidFailure : public testing::TestWithParam<BadCase> {};

TEST_P(XdObjidFailure, IsRecorded) {
    CodecContext ctxt;
    ASN1OBJID oid;
    EXPECT_EQ(xd_objid(ctxt.read(GetParam().ber), &oid, ASN1EXPL, 0), GetParam().status);
    EXPECT_EQ(ctxt.recorded(), GetParam().status);
}

TEST_P(XdObjidFailure, IsTheSameInTheIndefiniteForm) {
    CodecContext ctxt;
    ASN1OBJID oid;
    rtCtxtSetFlag(ctxt.read(GetParam().ber), RT_F_INDEFLEN);
    EXPECT_EQ(xd_objid(ctxt, &oid, ASN1EXPL, 0), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(X690, XdObjidFailure, testing::ValuesIn(kBad), case_name);

TEST(XdObjid, RefusesANegativeLengthOfTheCaller) {
    CodecContext ctxt;
    ASN1OBJID oid;
    EXPECT_EQ(xd_objid(ctxt.read("2a 00 00"), &oid, ASN1IMPL, RT_INDEFLEN), RT_E_INVLEN);
}

TEST(XdObjid, EndsASubidentifierThatIsCutOff) {
    CodecContext ctxt;
    ASN1OBJID oid;
    EXPECT_EQ(xd_objid(ctxt.read("06 02 2a 86"), &oid, ASN1EXPL, 0), RT_OK);  // Intended.
    EXPECT_TRUE(oid == oid_of({1, 2, 6}));
}

TEST(XdObjid, WrapsArcsAbove32Bits) {
    CodecContext ctxt;
    ASN1OBJID oid;
    EXPECT_EQ(xd_objid(ctxt.read("06 06 2a 90 80 80 80 05"), &oid, ASN1EXPL, 0), RT_OK);  // Intended.
    EXPECT_TRUE(oid == oid_of({1, 2, 5}));
}

}  // namespace
}  // namespace Quillmark::test
