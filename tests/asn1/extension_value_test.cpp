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

CTimeChoice day_choice(unsigned int year) {
    return CTimeChoice(day(year, 1, 1));
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

TEST(TimeChoice, ReadsShortTimes) {
    CTimeChoice time;
    time.decode(utc_time("2401011230Z"));
    EXPECT_EQ(*time.get_time(), CDateTime(2024, 1, 1, 12, 30, 0, 0, 0));
    time.decode(generalized_time("2024010112"));
    EXPECT_EQ(*time.get_time(), CDateTime(2024, 1, 1, 12, 0, 0, 0, 0));
}

TEST(TimeChoice, DropsOffsets) {
    // Intended: the fields are taken as they are written.
    CTimeChoice time;
    time.decode(utc_time("240101123045+0300"));
    EXPECT_EQ(*time.get_time(), day(2024, 1, 1));
    time.decode(generalized_time("20600101123045-0300"));
    EXPECT_EQ(*time.get_time(), day(2060, 1, 1));
    EXPECT_EQ(time.encode(), generalized_time("20600101123045Z"));
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

TEST(TimeChoice, IsCopiedAfterClear) {
    CTimeChoice time(day(2024, 1, 1));
    time.clear();
    CTimeChoice copy(time);
    copy = day_choice(2025);
    copy = time;
    copy = day_choice(2026);
    EXPECT_EQ(*copy.get_time(), day(2026, 1, 1));
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

TEST(ExtCRLReason, StartsWithoutOctets) {
    CExtCRLReason value;
    EXPECT_STREQ(value.get_oid(), "2.5.29.21");
    EXPECT_EQ(value.get_reason(), CrlReasonUnspecified);
    EXPECT_EQ(value.get_value().cbData(), 0u);
    value.encode();
    EXPECT_EQ(hex(value.get_value()), "0a 01 00");
}

TEST(ExtCRLReason, IsANumber) {
    CExtCRLReason value(CrlReasonKeyCompromise);
    EXPECT_EQ(hex(value.get_value()), "0a 01 01");
    value.put_reason(CrlReasonAACompromise);
    EXPECT_EQ(hex(value.get_value()), "0a 01 0a");
    EXPECT_EQ(CExtCRLReason(value.get_value()).get_reason(), CrlReasonAACompromise);
    EXPECT_EQ(CExtCRLReason(blob("0a 01 07")).get_reason(), CrlReason(7));
}

TEST(ExtCRLReason, ReadsWhatItsOctetsAreSetTo) {
    CExtCRLReason value(CrlReasonKeyCompromise);
    value.value() = blob("0a 01 06");
    EXPECT_EQ(value.get_reason(), CrlReasonKeyCompromise);
    value.decode();
    EXPECT_EQ(value.get_reason(), CrlReasonCertificateHold);
}

TEST(ExtCRLReason, HasANewReasonAndOldOctetsAfterAFailedPut) {
    CExtCRLReason value(CrlReasonKeyCompromise);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.put_reason(CrlReason(11)));
    EXPECT_EQ(value.get_reason(), CrlReason(11));
    EXPECT_EQ(hex(value.get_value()), "0a 01 01");
}

TEST(ExtCRLReason, ReportsBadInput) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtCRLReason(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtCRLReason(blob("0a 01 0b")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtCRLReason(blob("02 01 01")));
    CExtCRLReason value(CrlReasonKeyCompromise);
    value.value() = blob("0a 01 0b");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode());
    EXPECT_EQ(value.get_reason(), CrlReasonKeyCompromise);
}

TEST(ExtCRLReason, IsTheValueOfAnExtension) {
    const CExtension extension{CExtCRLReason(CrlReasonSuperseded)};
    EXPECT_EQ(hex(extension.encode()), "30 0a 06 03 55 1d 15 04 03 0a 01 04");
    const CExtension wrong(CExtValue("2.5.29.21", blob("02 01 04")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, wrong.encode());
}

TEST(CRLReasonRecord, IsTheNumber) {
    unsigned int record = 0;
    ASN1T_CRLReason_traits::set(nullptr, record, CrlReason(0xFFFFFFFF));
    EXPECT_EQ(record, 0xFFFFFFFF);
    unsigned int copy = 0;
    ASN1T_CRLReason_traits::copy(nullptr, record, copy);
    CrlReason reason = CrlReasonUnspecified;
    ASN1T_CRLReason_traits::get(copy, reason);
    EXPECT_EQ(reason, CrlReason(0xFFFFFFFF));
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

TEST(ExtHoldInstructionCode, HasANewCodeAndOldOctetsAfterAFailedPut) {
    CExtHoldInstructionCode value("1.2.3");
    EXPECT_CODE(E_INVALIDARG, value.put_code("x"));
    EXPECT_STREQ(value.get_code(), "x");
    EXPECT_EQ(hex(value.get_value()), "06 02 2a 03");
    value.put_code("1.2.4");
    value.put_code(value.get_code());
    EXPECT_EQ(hex(value.get_value()), "06 02 2a 04");
}

TEST(ExtHoldInstructionCode, KeepsItsCodeWhenDecodingFails) {
    CExtHoldInstructionCode value("1.2.3");
    value.value() = CBlob();
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode());
    EXPECT_STREQ(value.get_code(), "1.2.3");
}

TEST(ExtInvalidityDate, CutsFractions) {
    // Intended: half a second and more does not round up.
    const CExtInvalidityDate value(CDateTime(2024, 1, 1, 12, 30, 45, 999, 999));
    EXPECT_EQ(value.get_value(), generalized_time("20240101123045Z"));
}

TEST(ExtInvalidityDate, ReportsBadInput) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtInvalidityDate(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtInvalidityDate(utc_time("240101123045Z")));
    CExtInvalidityDate value(day(2024, 1, 1));
    value.value() = generalized_time("20241301123045Z");
    EXPECT_THROW(value.decode(), CAtlException);
    EXPECT_EQ(value.get_invalidityDate(), day(2024, 1, 1));
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

TEST(ExtCertificateIssuer, NeedsOneName) {
    CExtCertificateIssuer value;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.encode());
    CGeneralNames issuer;
    issuer.emplace_back().put_dNSName(L"a");
    value.put_issuer(issuer);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.put_issuer(CGeneralNames()));
    EXPECT_TRUE(value.get_issuer().empty());
    EXPECT_EQ(hex(value.get_value()), "30 03 82 01 61");
    value.decode();
    EXPECT_EQ(value.get_issuer(), issuer);
    value.put_issuer(value.get_issuer());
    EXPECT_EQ(value.get_issuer(), issuer);
}

// [0] 20240101123045Z and [1] 20300101123045Z.
constexpr const char* kNotBefore = "80 0f 32 30 32 34 30 31 30 31 31 32 33 30 34 35 5a";
constexpr const char* kNotAfter = "81 0f 32 30 33 30 30 31 30 31 31 32 33 30 34 35 5a";

CBlob period(const std::string& dates) {
    return blob_of(test::element(0x30, dates));
}

TEST(ExtPrivateKeyUsagePeriod, MayBeWithoutDates) {
    const CExtPrivateKeyUsagePeriod value(nullptr, nullptr);
    EXPECT_STREQ(value.get_oid(), "2.5.29.16");
    EXPECT_EQ(hex(value.get_value()), "30 00");
    EXPECT_EQ(value.get_notBefore(), nullptr);
    EXPECT_EQ(value.get_notAfter(), nullptr);
    const CExtPrivateKeyUsagePeriod read(blob("30 00"));
    EXPECT_EQ(read.get_notBefore(), nullptr);
    EXPECT_EQ(read.get_notAfter(), nullptr);
}

TEST(ExtPrivateKeyUsagePeriod, GoesBothWays) {
    const CDateTime not_before = day(2024, 1, 1);
    const CDateTime not_after = day(2030, 1, 1);
    EXPECT_EQ(CExtPrivateKeyUsagePeriod(&not_before, nullptr).get_value(), period(kNotBefore));
    EXPECT_EQ(CExtPrivateKeyUsagePeriod(nullptr, &not_after).get_value(), period(kNotAfter));
    const CExtPrivateKeyUsagePeriod value(&not_before, &not_after);
    EXPECT_EQ(value.get_value(), period(std::string(kNotBefore) + kNotAfter));
    const CExtPrivateKeyUsagePeriod read(value.get_value());
    ASSERT_NE(read.get_notBefore(), nullptr);
    ASSERT_NE(read.get_notAfter(), nullptr);
    EXPECT_EQ(*read.get_notBefore(), not_before);
    EXPECT_EQ(*read.get_notAfter(), not_after);
}

TEST(ExtPrivateKeyUsagePeriod, EncodesWithEachPut) {
    const CDateTime not_before = day(2024, 1, 1);
    const CDateTime not_after = day(2030, 1, 1);
    CExtPrivateKeyUsagePeriod value(nullptr, nullptr);
    value.put_notBefore(&not_before);
    EXPECT_NE(value.get_notBefore(), &not_before);
    EXPECT_EQ(value.get_value(), period(kNotBefore));
    value.put_notAfter(&not_after);
    EXPECT_EQ(value.get_value(), period(std::string(kNotBefore) + kNotAfter));
    value.put_notBefore(value.get_notBefore());
    EXPECT_EQ(*value.get_notBefore(), not_before);
    value.put_notBefore(nullptr);
    EXPECT_EQ(value.get_notBefore(), nullptr);
    EXPECT_EQ(value.get_value(), period(kNotAfter));
    value.put_notAfter(nullptr);
    EXPECT_EQ(hex(value.get_value()), "30 00");
}

TEST(ExtPrivateKeyUsagePeriod, LosesDatesThatAreAbsent) {
    const CDateTime date = day(2024, 1, 1);
    CExtPrivateKeyUsagePeriod value(&date, &date);
    value.value() = period(kNotAfter);
    value.decode();
    EXPECT_EQ(value.get_notBefore(), nullptr);
    EXPECT_EQ(*value.get_notAfter(), day(2030, 1, 1));
    EXPECT_EQ(value.get_value(), period(kNotAfter));
}

TEST(ExtPrivateKeyUsagePeriod, RewritesItsOctets) {
    // notBefore with a fraction: the octets after reading are this library's own.
    const CExtPrivateKeyUsagePeriod value(period("80 11 32 30 32 34 30 31 30 31 31 32 33 30 34 35 2e 35 5a"));
    EXPECT_EQ(value.get_value(), period(kNotBefore));
}

TEST(ExtPrivateKeyUsagePeriod, RewritesItsOctetsTwice) {
    // Intended: each date that is read is stored with `put_`. Reading stops at a bad notAfter when the octets
    // were written once, with the notAfter of before.
    const CDateTime old = day(2030, 1, 1);
    CExtPrivateKeyUsagePeriod value(nullptr, &old);
    value.value() = period(std::string(kNotBefore) + "81 01 78");
    EXPECT_THROW(value.decode(), CAtlException);
    EXPECT_EQ(*value.get_notBefore(), day(2024, 1, 1));
    EXPECT_EQ(*value.get_notAfter(), old);
    EXPECT_EQ(value.get_value(), period(std::string(kNotBefore) + kNotAfter));
}

TEST(ExtPrivateKeyUsagePeriod, KeepsItsDatesWhenTheDecoderFails) {
    const CDateTime date = day(2024, 1, 1);
    CExtPrivateKeyUsagePeriod value(&date, nullptr);
    for (const char* bad : {"", "05 00", "30 02 80 0f", "30 03 82 01 78"}) {
        value.value() = blob(bad);
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode()) << bad;
        EXPECT_EQ(*value.get_notBefore(), date);
        EXPECT_EQ(hex(value.get_value()), bad);
    }
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CExtPrivateKeyUsagePeriod(CBlob()));
}

TEST(ExtPrivateKeyUsagePeriod, IsCopiedDeeply) {
    const CDateTime not_before = day(2024, 1, 1);
    const CDateTime not_after = day(2030, 1, 1);
    CExtPrivateKeyUsagePeriod value(&not_before, &not_after);
    CExtPrivateKeyUsagePeriod copy(value);
    EXPECT_NE(copy.get_notBefore(), value.get_notBefore());
    value.put_notBefore(nullptr);
    EXPECT_EQ(*copy.get_notBefore(), not_before);
    copy = value;
    EXPECT_EQ(copy.get_notBefore(), nullptr);
    EXPECT_EQ(*copy.get_notAfter(), not_after);
    EXPECT_EQ(copy.get_value(), value.get_value());
    copy = *&copy;
    EXPECT_EQ(*copy.get_notAfter(), not_after);
}

TEST(ExtPrivateKeyUsagePeriod, IsTheValueOfAnExtension) {
    const CDateTime date = day(2024, 1, 1);
    CExtensions extensions;
    extensions.insert(CExtension(CExtPrivateKeyUsagePeriod(&date, nullptr)));
    CExtensions read;
    read.decode(extensions.encode());
    EXPECT_EQ(read.find("2.5.29.16")->get_extnValue(), period(kNotBefore));
}

TEST(PrivateKeyUsagePeriodRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_PrivateKeyUsagePeriod target;
    const CDateTime date = day(2024, 1, 1);
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_PrivateKeyUsagePeriod source;
        ASN1T_PrivateKeyUsagePeriod_traits::set(buffer.getCtxtPtr(), source,
                                                CExtPrivateKeyUsagePeriod(nullptr, &date));
        ASN1T_PrivateKeyUsagePeriod_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    EXPECT_FALSE(target.m.notBeforePresent);
    ASSERT_TRUE(target.m.notAfterPresent);
    EXPECT_STREQ(target.notAfter, "20240101123045Z");
}

}  // namespace
}  // namespace Quillmark::ASN1
