#include "asn1/extension_value.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/der.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::blob_of;
using test::hex;
using test::text_element;

CBlob utc_time(std::string_view text) {
    return blob_of(text_element(0x17, text));
}

CBlob generalized_time(std::string_view text) {
    return blob_of(text_element(0x18, text));
}

CDateTime day(unsigned int year, unsigned int month, unsigned int number) {
    return CDateTime(year, month, number, 12, 30, 45, 0, 0);
}

TEST(TimeChoice, StartsAsUTCTime) {
    const CTimeChoice time;
    EXPECT_EQ(time.get_type(), 1u);
    EXPECT_EQ(*time.get_time(), CDateTime(0L, 0));
}

TEST(TimeChoice, ChangesItsTypeWithTheYear) {
    CTimeChoice time(day(2049, 12, 31));
    EXPECT_EQ(time.get_type(), 1u);
    EXPECT_EQ(time.encode(), utc_time("491231123045Z"));
    time.put_time(day(2050, 1, 1));
    EXPECT_EQ(time.get_type(), 2u);
    EXPECT_EQ(time.encode(), generalized_time("20500101123045Z"));
}

TEST(TimeChoice, HasNoLowerBound) {
    // Intended: 1949 is written as UTCTime and reads back as 2049.
    CTimeChoice time(day(1949, 1, 1));
    EXPECT_EQ(time.encode(), utc_time("490101123045Z"));
    time.decode(time.encode());
    EXPECT_EQ(*time.get_time(), day(2049, 1, 1));
}

TEST(TimeChoice, RewritesEarlyGeneralizedTime) {
    // Intended: the type follows from the year and not from the wire.
    CTimeChoice time;
    time.decode(generalized_time("20300101123045Z"));
    EXPECT_EQ(time.get_type(), 1u);
    EXPECT_EQ(time.encode(), utc_time("300101123045Z"));
}

TEST(TimeChoice, DropsFractions) {
    CTimeChoice time;
    time.decode(generalized_time("20600101123045.75Z"));
    EXPECT_EQ(*time.get_time(), day(2060, 1, 1));
    time.put_time(CDateTime(2024, 1, 1, 12, 30, 45, 999, 999));
    EXPECT_EQ(time.encode(), utc_time("240101123045Z"));
}

TEST(TimeChoice, RefusesTextThatIsNoTime) {
    CTimeChoice time(day(2024, 1, 1));
    EXPECT_CODE(E_INVALIDARG, time.decode(utc_time("241301123045Z")));
    EXPECT_CODE(E_INVALIDARG, time.decode(utc_time("")));
    EXPECT_EQ(*time.get_time(), day(2024, 1, 1));
}

TEST(TimeChoice, KeepsValueWhenTheDecoderFails) {
    CTimeChoice time(day(2024, 1, 1));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, time.decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, time.decode(blob("05 00")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, time.decode(blob("17 05 30")));
    EXPECT_EQ(*time.get_time(), day(2024, 1, 1));
}

TEST(TimeChoice, IsCopiedDeeply) {
    CTimeChoice time(day(2024, 1, 1));
    const CTimeChoice copy(time);
    time.put_time(day(2060, 1, 1));
    EXPECT_EQ(*copy.get_time(), day(2024, 1, 1));
    time = copy;
    EXPECT_EQ(time.get_type(), 1u);
    time.put_time(*time.get_time());
    EXPECT_EQ(*time.get_time(), day(2024, 1, 1));
}

TEST(TimeChoice, IsAssignedToAfterClear) {
    CTimeChoice time(day(2024, 1, 1));
    time.clear();
    time = CTimeChoice(day(2025, 1, 1));
    EXPECT_EQ(*time.get_time(), day(2025, 1, 1));
}

TEST(TimeRecord, RefusesOtherTypes) {
    asn1data::ASN1T_Time record;
    CTimeChoice time(day(2024, 1, 1));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1T_Time_traits::get(record, time));
}

TEST(TimeRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_Time target;
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_Time source;
        ASN1T_Time_traits::set(buffer.getCtxtPtr(), source, CTimeChoice(day(2024, 1, 1)));
        ASN1T_Time_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    EXPECT_STREQ(target.u.utcTime, "240101123045Z");
}

TEST(ExtHoldInstructionCode, IsAnObjectIdentifier) {
    CExtHoldInstructionCode value;
    EXPECT_STREQ(value.get_oid(), "2.5.29.23");
    EXPECT_EQ(value.get_value().cbData(), 0u);
    value.put_code("1.2.840.10040.2.1");
    EXPECT_EQ(hex(value.get_value()), "06 07 2a 86 48 ce 38 02 01");
    EXPECT_STREQ(CExtHoldInstructionCode(value.get_value()).get_code(), "1.2.840.10040.2.1");
    EXPECT_EQ(CExtHoldInstructionCode("1.2.840.10040.2.1").get_value(), value.get_value());
}

TEST(ExtHoldInstructionCode, ReportsBadInput) {
    EXPECT_CODE(E_INVALIDARG, CExtHoldInstructionCode("x"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtHoldInstructionCode(blob("05 00")));
}

TEST(ExtInvalidityDate, IsGeneralizedTime) {
    CExtInvalidityDate value;
    EXPECT_STREQ(value.get_oid(), "2.5.29.24");
    EXPECT_EQ(value.get_value().cbData(), 0u);
    EXPECT_EQ(value.get_invalidityDate(), CDateTime(0L, 0));
    value.put_invalidityDate(day(2024, 1, 1));
    EXPECT_EQ(value.get_value(), generalized_time("20240101123045Z"));
    EXPECT_EQ(CExtInvalidityDate(value.get_value()).get_invalidityDate(), day(2024, 1, 1));
    EXPECT_EQ(CExtInvalidityDate(day(2024, 1, 1)).get_value(), value.get_value());
}

TEST(ExtCertificateIssuer, IsGeneralNames) {
    CGeneralNames issuer;
    issuer.emplace_back().put_dNSName(L"a");
    CExtCertificateIssuer value;
    EXPECT_STREQ(value.get_oid(), "2.5.29.29");
    EXPECT_EQ(value.get_value().cbData(), 0u);
    value.put_issuer(issuer);
    EXPECT_EQ(hex(value.get_value()), "30 03 82 01 61");
    EXPECT_EQ(CExtCertificateIssuer(value.get_value()).get_issuer(), issuer);
    EXPECT_EQ(CExtCertificateIssuer(issuer).get_value(), value.get_value());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtCertificateIssuer(blob("05 00")));
}

}  // namespace
}  // namespace Quillmark::ASN1
