#include "asn1/distribution_point.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

// fullName of dNSName "a", flag keyCompromise, issuer dNSName "b". The name is a CHOICE, so [0] around it is
// explicit.
constexpr const char* kAll = "30 10 a0 05 a0 03 82 01 61 81 02 06 40 a2 03 82 01 62";

CGeneralNames names(const wchar_t* text) {
    CGeneralNames list;
    list.emplace_back().put_dNSName(text);
    return list;
}

CDistributionPoint point(const wchar_t* name, const wchar_t* issuer) {
    const CDistributionPointName full_name(names(name));
    const CReasonFlags reasons(CReasonFlags::keyCompromise);
    const CGeneralNames issuer_names = names(issuer);
    CDistributionPoint made;
    made.put_distributionPoint(&full_name);
    made.put_reasons(&reasons);
    made.put_cRLIssuer(&issuer_names);
    return made;
}

TEST(DistributionPoint, StartsEmpty) {
    const CDistributionPoint empty;
    EXPECT_EQ(empty.get_distributionPoint(), nullptr);
    EXPECT_EQ(empty.get_reasons(), nullptr);
    EXPECT_EQ(empty.get_cRLIssuer(), nullptr);
    EXPECT_EQ(hex(empty.encode()), "30 00");
}

TEST(DistributionPoint, IsWritten) {
    EXPECT_EQ(hex(point(L"a", L"b").encode()), kAll);
}

TEST(DistributionPoint, IsRead) {
    CDistributionPoint read;
    read.decode(blob(kAll));
    ASSERT_NE(read.get_distributionPoint(), nullptr);
    EXPECT_STREQ(read.get_distributionPoint()->get_fullName()->front().get_dNSName(), L"a");
    ASSERT_NE(read.get_reasons(), nullptr);
    EXPECT_EQ(read.get_reasons()->get_value(), 2u);
    ASSERT_NE(read.get_cRLIssuer(), nullptr);
    EXPECT_STREQ(read.get_cRLIssuer()->front().get_dNSName(), L"b");
}

TEST(DistributionPoint, LosesWhatIsAbsent) {
    CDistributionPoint read = point(L"a", L"b");
    read.decode(blob("30 04 81 02 06 40"));
    EXPECT_EQ(read.get_distributionPoint(), nullptr);
    EXPECT_NE(read.get_reasons(), nullptr);
    EXPECT_EQ(read.get_cRLIssuer(), nullptr);
    read.decode(blob("30 00"));
    EXPECT_EQ(read, CDistributionPoint());
}

TEST(DistributionPoint, ClearsWithNull) {
    CDistributionPoint made = point(L"a", L"b");
    made.put_distributionPoint(nullptr);
    EXPECT_EQ(hex(made.encode()), "30 09 81 02 06 40 a2 03 82 01 62");
    made.put_reasons(nullptr);
    EXPECT_EQ(hex(made.encode()), "30 05 a2 03 82 01 62");
    made.put_cRLIssuer(nullptr);
    EXPECT_EQ(hex(made.encode()), "30 00");
}

TEST(DistributionPoint, LeavesEmptyIssuerOut) {
    CDistributionPoint made;
    const CGeneralNames none;
    made.put_cRLIssuer(&none);
    ASSERT_NE(made.get_cRLIssuer(), nullptr);
    EXPECT_EQ(hex(made.encode()), "30 00");  // Intended: an empty list is absent on the wire
}

TEST(DistributionPoint, WritesReasonsWithoutAnyFlag) {
    CDistributionPoint made;
    const CReasonFlags none;
    made.put_reasons(&none);
    EXPECT_EQ(hex(made.encode()), "30 03 81 01 00");
}

TEST(DistributionPoint, ReadsRelativeNameAsNone) {
    // Intended: nameRelativeToCRLIssuer has no place in the value and gets lost without a failure.
    CDistributionPoint read = point(L"a", L"b");
    read.decode(blob("30 0e a0 0c a1 0a 30 08 06 03 55 04 03 0c 01 41"));
    ASSERT_NE(read.get_distributionPoint(), nullptr);
    EXPECT_EQ(read.get_distributionPoint()->get_type(), 0u);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, read.encode());
}

TEST(DistributionPoint, IsCopiedDeeply) {
    CDistributionPoint made = point(L"a", L"b");
    const CDistributionPoint copy(made);
    EXPECT_NE(copy.get_distributionPoint(), made.get_distributionPoint());
    EXPECT_NE(copy.get_reasons(), made.get_reasons());
    EXPECT_NE(copy.get_cRLIssuer(), made.get_cRLIssuer());
    made.put_reasons(nullptr);
    EXPECT_EQ(hex(copy.encode()), kAll);
    made = copy;
    EXPECT_EQ(made, copy);
    made = *&made;
    EXPECT_EQ(made, copy);
}

TEST(DistributionPoint, TakesItsOwnFields) {
    CDistributionPoint made = point(L"a", L"b");
    made.put_distributionPoint(made.get_distributionPoint());
    made.put_reasons(made.get_reasons());
    made.put_cRLIssuer(made.get_cRLIssuer());
    EXPECT_EQ(hex(made.encode()), kAll);
}

TEST(DistributionPoint, ComparesEveryField) {
    const CDistributionPoint made = point(L"a", L"b");
    EXPECT_EQ(made, point(L"a", L"b"));
    EXPECT_NE(made, point(L"a", L"c"));
    EXPECT_NE(made, point(L"c", L"b"));
    CDistributionPoint other(made);
    const CReasonFlags reasons(CReasonFlags::unused);
    other.put_reasons(&reasons);
    EXPECT_NE(other, made);
}

TEST(DistributionPoint, DiffersWhereOneFieldIsAbsent) {
    const CDistributionPoint made = point(L"a", L"b");
    EXPECT_EQ(CDistributionPoint(), CDistributionPoint());
    CDistributionPoint other(made);
    other.put_cRLIssuer(nullptr);
    EXPECT_NE(other, made);
    EXPECT_NE(made, other);
    other = made;
    other.put_distributionPoint(nullptr);
    EXPECT_NE(other, made);
    other = made;
    other.put_reasons(nullptr);
    EXPECT_NE(other, made);
    // An empty list is there all the same.
    const CGeneralNames none;
    other = CDistributionPoint();
    other.put_cRLIssuer(&none);
    EXPECT_NE(other, CDistributionPoint());
}

TEST(DistributionPoint, KeepsValueWhenDecodingFails) {
    CDistributionPoint made = point(L"a", L"b");
    for (const char* bad : {"", "05 00", "30 02 a0 00", "30 04 a0 02 a0 00", "30 02 a2 00", "30 02 83 00",
                            "30 06 81 04 07 00 00 80"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, made.decode(blob(bad))) << bad;
    }
    // An otherName is read, but no value can hold it.
    EXPECT_CODE(E_INVALIDARG, made.decode(blob("30 0b a2 09 a0 07 06 01 2a a0 02 05 00")));
    EXPECT_EQ(hex(made.encode()), kAll);
}

TEST(CRLDistPoints, KeepTheOrder) {
    CDistributionPoint reasons_only;
    const CReasonFlags reasons(CReasonFlags::unused);
    reasons_only.put_reasons(&reasons);
    const CCRLDistPointsSyntax points{reasons_only, CDistributionPoint()};
    EXPECT_EQ(hex(points.encode()), "30 08 30 04 81 02 07 80 30 00");
    CCRLDistPointsSyntax read{CDistributionPoint()};
    read.decode(blob("30 08 30 04 81 02 07 80 30 00"));
    EXPECT_EQ(read, points);
}

TEST(CRLDistPoints, HaveAtLeastOne) {
    CCRLDistPointsSyntax points;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, points.encode());
    points.emplace_back();
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, points.decode(blob("30 00")));
    EXPECT_EQ(points.size(), 1u);
}

TEST(CRLDistPointsRecord, IsCopiedDeeply) {
    const CCRLDistPointsSyntax points{point(L"a", L"b")};
    ASN1BERDecodeBuffer target_buffer;
    ASN1TSeqOfList target{};
    {
        ASN1BERDecodeBuffer buffer;
        ASN1TSeqOfList source{};
        ASN1T_CRLDistPointsSyntax_traits::set(buffer.getCtxtPtr(), source, points);
        ASN1T_CRLDistPointsSyntax_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CCRLDistPointsSyntax read;
    ASN1T_CRLDistPointsSyntax_traits::get(target, read);
    EXPECT_EQ(read, points);
}

}  // namespace
}  // namespace Quillmark::ASN1
