#include "asn1/reason_flags.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

TEST(ReasonFlags, StartEmpty) {
    EXPECT_EQ(CReasonFlags().get_value(), 0u);
    EXPECT_EQ(CReasonFlags(5).get_value(), 5u);
}

TEST(ReasonFlags, HaveBitsByNumber) {
    CReasonFlags reasons;
    reasons.put_bit(3, true);
    EXPECT_EQ(reasons.get_value(), 8u);
    EXPECT_TRUE(reasons.get_bit(3));
    EXPECT_FALSE(reasons.get_bit(2));
    reasons.put_bit(3, false);
    EXPECT_EQ(reasons.get_value(), 0u);
    reasons.put_value(0x80000000);
    EXPECT_TRUE(reasons.get_bit(31));
}

TEST(ReasonFlags, TakeBitNumbersModulo32) {
    // Intended: no bit number is refused, unlike those of the failure bits of a status.
    CReasonFlags reasons;
    reasons.put_bit(33, true);
    EXPECT_EQ(reasons.get_value(), 2u);
    EXPECT_TRUE(reasons.get_bit(65));
    reasons.put_bit(0xFFFFFFFF, true);
    EXPECT_EQ(reasons.get_value(), 0x80000002u);
    reasons.put_bit(32 + 31, false);
    EXPECT_EQ(reasons.get_value(), 2u);
}

TEST(ReasonFlags, AreAddedAndRemovedByMask) {
    CReasonFlags reasons;
    reasons.add_flag(CReasonFlags::keyCompromise);
    reasons.add_flag(CReasonFlags::superseded);
    EXPECT_EQ(reasons.get_value(), 0x12u);
    EXPECT_TRUE(reasons.get_flag(CReasonFlags::superseded));
    EXPECT_FALSE(reasons.get_flag(CReasonFlags::cACompromise));
    reasons.remove_flag(CReasonFlags::superseded);
    EXPECT_EQ(reasons.get_value(), 2u);
    reasons.remove_flag(CReasonFlags::superseded);
    EXPECT_EQ(reasons.get_value(), 2u);
}

TEST(ReasonFlags, HaveAFlagWhenAnyBitOfTheMaskIsSet) {
    const auto either =
        static_cast<CReasonFlags::Flag>(CReasonFlags::keyCompromise | CReasonFlags::cACompromise);
    EXPECT_TRUE(CReasonFlags(CReasonFlags::cACompromise).get_flag(either));
    EXPECT_FALSE(CReasonFlags(CReasonFlags::unused).get_flag(either));
}

TEST(ReasonFlags, CompareTheWholeWord) {
    EXPECT_EQ(CReasonFlags(1), CReasonFlags(1));
    EXPECT_NE(CReasonFlags(1), CReasonFlags(1 | 1u << 20));
}

struct FlagCase {
    const char* name;
    CReasonFlags::Flag flag;
    const char* der;
};

void PrintTo(const FlagCase& row, std::ostream* out) {
    *out << row.name;
}

// RFC 5280 4.2.1.13, cut after the last bit that is set (X.690 11.2.2).
constexpr FlagCase kFlags[] = {
    {"Unused", CReasonFlags::unused, "03 02 07 80"},
    {"KeyCompromise", CReasonFlags::keyCompromise, "03 02 06 40"},
    {"CACompromise", CReasonFlags::cACompromise, "03 02 05 20"},
    {"AffiliationChanged", CReasonFlags::affiliationChanged, "03 02 04 10"},
    {"Superseded", CReasonFlags::superseded, "03 02 03 08"},
    {"CessationOfOperation", CReasonFlags::cessationOfOperation, "03 02 02 04"},
    {"CertificateHold", CReasonFlags::certificateHold, "03 02 01 02"},
    {"PrivilegeWithdrawn", CReasonFlags::privilegeWithdrawn, "03 02 00 01"},
    {"AACompromise", CReasonFlags::aACompromise, "03 03 07 00 80"},
};

class ReasonFlag : public testing::TestWithParam<FlagCase> {};

TEST_P(ReasonFlag, IsANamedBit) {
    CReasonFlags reasons;
    reasons.add_flag(GetParam().flag);
    EXPECT_EQ(hex(reasons.encode()), GetParam().der);
    CReasonFlags read;
    read.decode(blob(GetParam().der));
    EXPECT_EQ(read, reasons);
}

INSTANTIATE_TEST_SUITE_P(Rfc5280, ReasonFlag, testing::ValuesIn(kFlags), test::case_name);

TEST(ReasonFlags, WriteBits0To15) {
    EXPECT_EQ(hex(CReasonFlags(0).encode()), "03 01 00");
    EXPECT_EQ(hex(CReasonFlags(1u << 15).encode()), "03 03 00 00 01");
    EXPECT_EQ(hex(CReasonFlags(0xFFFF).encode()), "03 03 00 ff ff");
}

TEST(ReasonFlags, NeverWriteTheUpperHalf) {
    // Intended: the bits are left out without a failure.
    EXPECT_EQ(hex(CReasonFlags(1u << 20).encode()), "03 01 00");
    EXPECT_EQ(hex(CReasonFlags(2 | 1u << 20).encode()), "03 02 06 40");
    EXPECT_EQ(hex(CReasonFlags(1u << 16).encode()), "03 01 00");
}

TEST(ReasonFlags, AreReplacedByDecoding) {
    CReasonFlags reasons(1u << 20 | 1);
    reasons.decode(blob("03 02 06 40"));
    EXPECT_EQ(reasons.get_value(), 2u);
    reasons.decode(blob("03 01 00"));
    EXPECT_EQ(reasons.get_value(), 0u);
    reasons.decode(blob("03 03 00 ff ff"));
    EXPECT_EQ(reasons.get_value(), 0xFFFFu);
}

TEST(ReasonFlags, RefuseMoreThan16Bits) {
    CReasonFlags reasons(1);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, reasons.decode(blob("03 04 07 00 00 80")));
    EXPECT_EQ(reasons.get_value(), 1u);
}

TEST(ReasonFlags, KeepValueWhenDecodingFails) {
    CReasonFlags reasons(1);
    for (const char* bad : {"", "03", "03 01 01", "03 02 06", "03 02 08 40", "04 02 06 40"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, reasons.decode(blob(bad))) << bad;
    }
    EXPECT_EQ(reasons.get_value(), 1u);
}

TEST(ReasonFlagsRecord, IsReadWithinItsArray) {
    asn1data::ASN1T_ReasonFlags record;
    record.numbits = 32;
    record.data[0] = 0x40;
    record.data[1] = 0x01;
    CReasonFlags reasons;
    ASN1T_ReasonFlags_traits::get(record, reasons);
    EXPECT_EQ(reasons.get_value(), 0x8002u);
}

TEST(ReasonFlagsRecord, IsCopied) {
    ASN1BERDecodeBuffer buffer;
    asn1data::ASN1T_ReasonFlags source;
    asn1data::ASN1T_ReasonFlags target;
    ASN1T_ReasonFlags_traits::set(buffer.getCtxtPtr(), source, CReasonFlags(0x8002));
    ASN1T_ReasonFlags_traits::copy(buffer.getCtxtPtr(), source, target);
    CReasonFlags reasons;
    ASN1T_ReasonFlags_traits::get(target, reasons);
    EXPECT_EQ(reasons.get_value(), 0x8002u);
}

}  // namespace
}  // namespace Quillmark::ASN1
