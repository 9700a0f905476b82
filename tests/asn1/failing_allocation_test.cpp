#include "tests/support/failing_allocation.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "asn1/access_description.h"
#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/certificate.h"
#include "asn1/content_info.h"
#include "asn1/distribution_point.h"
#include "asn1/distribution_point_name.h"
#include "asn1/extension.h"
#include "asn1/extension_value.h"
#include "asn1/general_name.h"
#include "asn1/info_type_and_value.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1/policy_information.h"
#include "asn1/reason_flags.h"
#include "asn1/revocation_announcement.h"
#include "asn1/signer_info.h"
#include "asn1/signing_certificate.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::for_each_failing_allocation;
using test::for_each_failing_new;
using test::hex;

// GeneralNames with a directoryName CN=A and a dNSName.
const CBlob kNames = blob("30 13 a4 0e 30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41 82 01 61");

struct MemoryCase {
    const char* name;
    std::function<void()> run;
};

void PrintTo(const MemoryCase& row, std::ostream* out) {
    *out << row.name;
}

/// Encodes what `der` decodes to.
template <class Value>
std::function<void()> encode(const char* der) {
    auto value = std::make_shared<Value>();
    value->decode(blob(der));
    return [value] { value->encode(); };
}

/// Reads `der` into a fresh value that holds its own octets, and writes them anew.
template <class Value>
std::function<void()> construct(const char* der) {
    return [der = blob(der)] { Value(der).encode(); };
}

/// Decodes `der` into a fresh value.
template <class Value>
std::function<void()> decode(const char* der) {
    return [der = blob(der)] { Value().decode(der); };
}

constexpr const char* kAlgorithm =
    "30 1c 06 06 2a 85 03 02 02 13 30 12 06 07 2a 85 03 02 02 23 01 06 07 2a 85 03 02 02 1e 01";
constexpr const char* kExtensions =
    "30 23 30 1a 06 03 55 1d 11 04 13 30 11 a4 0c 30 0a 31 08 30 06 06 01 2a 0c 01 41 82 01 61 "
    "30 05 06 01 2a 04 00";
constexpr const char* kStatus = "30 0f 02 01 02 30 06 0c 01 61 0c 01 62 03 02 05 20";
constexpr const char* kAttributes = "31 12 30 07 06 01 2a 31 02 05 00 30 07 06 01 2b 31 02 05 00";
constexpr const char* kContentInfo = "30 09 06 02 2a 03 a0 03 04 01 aa";
constexpr const char* kGeneralNames = "30 13 a4 0e 30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41 82 01 61";
constexpr const char* kName = "30 18 31 16 30 08 06 03 55 04 03 0c 01 41 30 0a 06 03 55 04 04 0c 03 42 42 42";
constexpr const char* kSigner =
    "30 1d 02 01 01 30 0b 30 06 31 04 30 02 06 00 02 01 05 30 03 06 01 2a 30 03 06 01 2a 04 01 ab";
constexpr const char* kCert = "30 17 30 06 06 02 2a 03 05 00 04 01 aa 30 0a 30 05 82 03 61 2e 62 02 01 05";
constexpr const char* kSha1Cert = "30 0f 04 01 aa 30 0a 30 05 82 03 61 2e 62 02 01 05";
constexpr const char* kOtherCert =
    "30 19 30 0b 30 06 06 02 2a 03 05 00 04 01 aa 30 0a 30 05 82 03 61 2e 62 02 01 05";
constexpr const char* kCertAndPolicy = "30 0f 30 05 30 03 04 01 aa 30 06 30 04 06 02 2a 03";
constexpr const char* kUsagePeriod =
    "30 22 80 0f 32 30 32 34 30 31 30 31 31 32 33 30 34 35 5a "
    "81 0f 32 30 33 30 30 31 30 31 31 32 33 30 34 35 5a";
constexpr const char* kPolicy = "30 15 06 02 2a 03 30 0f 30 0d 06 08 2b 06 01 05 05 07 02 01 16 01 61";
constexpr const char* kAccess =
    "30 18 30 0d 06 08 2b 06 01 05 05 07 30 01 86 01 78 30 07 06 02 2a 03 82 01 61";
constexpr const char* kPoints =
    "30 2a 30 10 a0 05 a0 03 82 01 61 81 02 06 40 a2 03 82 01 62 "
    "30 16 a0 05 a0 03 87 01 00 a2 0d a4 0b 30 09 31 07 30 05 06 01 2a 05 00";
constexpr const char* kInfo = "30 10 06 08 2b 06 01 05 05 07 04 04 30 04 06 02 2a 03";
constexpr const char* kInfos =
    "30 18 30 10 06 08 2b 06 01 05 05 07 04 04 30 04 06 02 2a 03 30 04 06 02 2a 03";
constexpr const char* kPolicies = "30 0c 30 04 06 02 2a 04 30 04 06 02 2a 03";
constexpr const char* kAnnouncement =
    "30 3b 02 01 04 30 07 82 01 61 02 02 00 ff 18 0f 32 30 32 36 30 37 30 38 30 39 31 30 31 31 5a "
    "18 0d 32 30 35 35 30 31 30 32 30 33 30 34 5a 30 0d 30 0b 06 02 2a 03 01 01 ff 04 02 05 00";
constexpr const char* kCertificates =
    "30 40 30 3e 30 33 02 01 05 30 03 06 01 2a 30 00 30 1a 17 0b 32 34 30 31 30 31 30 30 30 30 5a "
    "17 0b 32 34 30 31 30 31 30 30 30 30 5a 30 00 30 09 30 03 06 01 2a 03 02 00 aa 30 03 06 01 2a 03 02 00 "
    "bb";

/// Puts two pieces of information on the context of a buffer and reads them back.
void pass_through_records() {
    const CInfoTypeAndValueList infos{CInfoTypeAndValue("1.3.6.1.5.5.7.4.4", blob("30 04 06 02 2a 03")),
                                      CInfoTypeAndValue("1.2.3")};
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList records{};
    ASN1TavList_Encode(infos, records, buffer);
    CInfoTypeAndValueList read;
    ASN1TavList_Parse(records, read);
}

const MemoryCase kCases[] = {
    {"EncodeAlgorithm", encode<CAlgorithmIdentifier>(kAlgorithm)},
    {"DecodeAlgorithm", decode<CAlgorithmIdentifier>(kAlgorithm)},
    {"EncodeExtensions", encode<CExtensions>(kExtensions)},
    {"DecodeExtensions", decode<CExtensions>(kExtensions)},
    {"EncodeStatus", encode<CPKIStatusInfo>(kStatus)},
    {"DecodeStatus", decode<CPKIStatusInfo>(kStatus)},
    {"EncodeAttributes", encode<CAttributes>(kAttributes)},
    {"DecodeAttributes", decode<CAttributes>(kAttributes)},
    {"EncodeContentInfo", encode<CContentInfo>(kContentInfo)},
    {"DecodeContentInfo", decode<CContentInfo>(kContentInfo)},
    {"EncodeGeneralNames", encode<CGeneralNames>(kGeneralNames)},
    {"DecodeGeneralNames", decode<CGeneralNames>(kGeneralNames)},
    {"EncodeName", encode<CName>(kName)},
    {"DecodeName", decode<CName>(kName)},
    {"EncodeTime", [] { CTimeChoice(CDateTime(0L, 0)).encode(); }},
    {"DecodeTime", decode<CTimeChoice>("17 0d 32 34 30 31 30 31 31 32 33 30 34 35 5a")},
    {"EncodeBigInteger", encode<CBigInteger>("02 02 00 ff")},
    {"DecodeBigInteger", decode<CBigInteger>("02 02 00 ff")},
    {"DecodeSigner", decode<CSignerInfo>(kSigner)},
    {"EncodeCertificateIdentifier", encode<CESSCertIDv2>(kCert)},
    {"DecodeCertificateIdentifier", decode<CESSCertIDv2>(kCert)},
    {"EncodeCertificateIdentifierOfSha1", encode<CESSCertID>(kSha1Cert)},
    {"DecodeCertificateIdentifierOfSha1", decode<CESSCertID>(kSha1Cert)},
    {"EncodeCertificateIdentifierOfOtherHash", encode<COtherCertID>(kOtherCert)},
    {"DecodeCertificateIdentifierOfOtherHash", decode<COtherCertID>(kOtherCert)},
    {"EncodeHash", encode<COtherHash>("04 01 aa")},
    {"DecodeHash", decode<COtherHash>("04 01 aa")},
    {"EncodeHashWithAlgorithm", encode<COtherHash>("30 0b 30 06 06 02 2a 03 05 00 04 01 aa")},
    {"DecodeHashWithAlgorithm", decode<COtherHash>("30 0b 30 06 06 02 2a 03 05 00 04 01 aa")},
    {"EncodeDistributionPointName", encode<CDistributionPointName>("a0 06 82 01 61 82 01 62")},
    {"DecodeDistributionPointName", decode<CDistributionPointName>("a0 06 82 01 61 82 01 62")},
    {"SigningCertificate", construct<CAttrSigningCertificate>(kCertAndPolicy)},
    {"SigningCertificateV2", construct<CAttrSigningCertificateV2>(kCertAndPolicy)},
    {"OtherSigningCertificate", construct<CAttrOtherSigningCertificate>(kCertAndPolicy)},
    {"CRLReason", construct<CExtCRLReason>("0a 01 0a")},
    {"HoldInstructionCode", construct<CExtHoldInstructionCode>("06 02 2a 03")},
    {"InvalidityDate", construct<CExtInvalidityDate>("18 0f 32 30 32 34 30 31 30 31 31 32 33 30 34 35 5a")},
    {"CertificateIssuer", construct<CExtCertificateIssuer>("30 03 82 01 61")},
    {"PrivateKeyUsagePeriod", construct<CExtPrivateKeyUsagePeriod>(kUsagePeriod)},
    {"ContentType", [] { CAttrContentType("1.2.3"); }},
    {"SigningTime", [] { CAttrSigningTime(CDateTime(0L, 0)); }},
    {"MessageDigest", [] { CAttrMessageDigest(blob("04 01 aa")); }},
    {"WrapOctets", [] { toOctetString(blob("01 02")); }},
    {"UTF8String", [] { encodeCharString(L"text", StringTypeUTF8); }},
    {"BMPString", [] { encodeCharString(L"text", StringTypeBMP); }},
    {"UniversalString", [] { encodeCharString(L"text", StringTypeUniversal); }},
    {"PrintableString", [] { encodeCharString(L"text", StringTypePrintable); }},
    {"ReadUTF8String", [] { decodeCharString(blob("0c 02 d0 96")); }},
    {"ReadBMPString", [] { decodeCharString(blob("1e 02 00 41")); }},
    {"ReadUniversalString", [] { decodeCharString(blob("1c 04 00 00 00 41")); }},
    {"NameText", [] { CName(L"CN=A+SN=B,1.2.3=#0500").toString(); }},
    {"EncodePolicy", encode<CPolicyInformation>(kPolicy)},
    {"DecodePolicy", decode<CPolicyInformation>(kPolicy)},
    {"EncodeReasonFlags", encode<CReasonFlags>("03 02 06 40")},
    {"DecodeReasonFlags", decode<CReasonFlags>("03 02 06 40")},
    {"EncodeAuthorityInfoAccess", encode<CAuthorityInfoAccessSyntax>(kAccess)},
    {"DecodeAuthorityInfoAccess", decode<CAuthorityInfoAccessSyntax>(kAccess)},
    {"EncodeDistributionPoints", encode<CCRLDistPointsSyntax>(kPoints)},
    {"DecodeDistributionPoints", decode<CCRLDistPointsSyntax>(kPoints)},
    {"EncodeInfoTypeAndValue", encode<CInfoTypeAndValue>(kInfo)},
    {"DecodeInfoTypeAndValue", decode<CInfoTypeAndValue>(kInfo)},
    {"InfoTypeAndValueRecords", pass_through_records},
    {"EncodeInfoTypeAndValueList", encode<CInfoTypeAndValueList>(kInfos)},
    {"DecodeInfoTypeAndValueList", decode<CInfoTypeAndValueList>(kInfos)},
    {"EncodePolicies", encode<CPolicyInformationList>(kPolicies)},
    {"DecodePolicies", decode<CPolicyInformationList>(kPolicies)},
    {"EncodeRevocationAnnouncement", encode<CRevAnnContent>(kAnnouncement)},
    {"DecodeRevocationAnnouncement", decode<CRevAnnContent>(kAnnouncement)},
    {"EncodeCertificateValues", encode<CCertificateValues>(kCertificates)},
    {"DecodeCertificateValues", decode<CCertificateValues>(kCertificates)},
};

class FailingAllocation : public testing::TestWithParam<MemoryCase> {};

TEST_P(FailingAllocation, IsReportedAndLeavesNothing) {
    GetParam().run();
    for_each_failing_allocation(GetParam().run);
}

INSTANTIATE_TEST_SUITE_P(ObjectLayer, FailingAllocation, testing::ValuesIn(kCases), test::case_name);

TEST(FailingAllocationState, LeavesDecodedValueUsable) {
    CGeneralNames names;
    for_each_failing_allocation([&] { names.decode(kNames); },
                                [&] {
                                    for (const CGeneralName& name : names) {
                                        EXPECT_NE(name.get_type(), 0u);
                                    }
                                });
    EXPECT_EQ(names.size(), 2u);
}

TEST(FailingAllocationState, KeepsChoiceWhenAssignmentFails) {
    CGeneralName name;
    name.put_dNSName(L"old name");
    CGeneralName other;
    other.put_iPAddress(blob("7f 00 00 01"));
    for_each_failing_new([&] { name = other; }, [&] { EXPECT_STREQ(name.get_dNSName(), L"old name"); });
    EXPECT_EQ(name, other);
}

TEST(FailingAllocationState, KeepsChoiceWhenPutFails) {
    CGeneralName name;
    name.put_dNSName(L"old name");
    for_each_failing_new([&] { name.put_rfc822Name(L"another name that is long"); },
                         [&] { EXPECT_STREQ(name.get_dNSName(), L"old name"); });
}

TEST(FailingAllocationState, KeepsOptionalMemberWhenPutFails) {
    CESSCertIDv2 cert(blob("aa"));
    const CIssuerSerial old(CGeneralNames(), CBigInteger(1UL));
    const CIssuerSerial fresh(CGeneralNames(), CBigInteger(2UL));
    cert.put_issuerSerial(&old);
    for_each_failing_new([&] { cert.put_issuerSerial(&fresh); },
                         [&] { EXPECT_EQ(*cert.get_issuerSerial(), old); });
}

TEST(FailingAllocationState, KeepsHashWhenPutFails) {
    COtherHash hash(blob("aa"));
    const COtherHashAlgAndValue other(blob("bb"), CAlgorithmIdentifier("1.2.3"));
    for_each_failing_new([&] { hash.put_otherHash(other); },
                         [&] { EXPECT_EQ(hash, COtherHash(blob("aa"))); });
    EXPECT_EQ(hash, COtherHash(other));
}

TEST(FailingAllocationState, KeepsNameOfDistributionPointWhenDecodingFails) {
    const CBlob der = blob("a0 06 82 01 61 82 01 62");
    CDistributionPointName name;
    for_each_failing_new([&] { name.decode(der); }, [&] { EXPECT_EQ(name.get_type(), 0u); });
    EXPECT_EQ(name.get_fullName()->size(), 2u);
}

TEST(FailingAllocationState, KeepsOctetsOfUsagePeriodWhenPutFails) {
    const CDateTime old(2024, 1, 1, 0, 0, 0, 0, 0);
    const CDateTime fresh(2025, 1, 1, 0, 0, 0, 0, 0);
    CExtPrivateKeyUsagePeriod period(&old, nullptr);
    const CBlob octets = period.get_value();
    // The member is stored before the octets are written.
    for_each_failing_new([&] { period.put_notBefore(&fresh); },
                         [&] {
                             EXPECT_TRUE(*period.get_notBefore() == old || *period.get_notBefore() == fresh);
                             EXPECT_EQ(period.get_value(), octets);
                         });
    EXPECT_EQ(*period.get_notBefore(), fresh);
    EXPECT_NE(period.get_value(), octets);
}

TEST(FailingAllocationState, KeepsOctetsOfSigningCertificateWhenPutFails) {
    CAttrSigningCertificate attribute(CESSCertIDList{CESSCertID(blob("aa"))});
    const CESSCertIDList fresh{CESSCertID(blob("bb")), CESSCertID(blob("cc"))};
    for_each_failing_new([&] { attribute.put_certs(fresh); },
                         [&] { EXPECT_EQ(hex(attribute.get_value()), "30 07 30 05 30 03 04 01 aa"); });
    EXPECT_EQ(attribute.get_certs(), fresh);
}

TEST(FailingAllocationState, KeepsAttributeWhenAssignmentFails) {
    CAttribute attribute("1.2.3");
    attribute.add(blob("05 00"));
    CAttribute other("1.2.4");
    for_each_failing_new([&] { attribute = other; }, [&] { EXPECT_STREQ(attribute.get_oid(), "1.2.3"); });
}

TEST(FailingAllocationState, KeepsDistributionPointWhenDecodingFails) {
    const CBlob point = blob("30 10 a0 05 a0 03 82 01 61 81 02 06 40 a2 03 82 01 62");
    CDistributionPoint value;
    for_each_failing_new([&] { value.decode(point); }, [&] { EXPECT_EQ(value, CDistributionPoint()); });
    EXPECT_EQ(value.encode(), point);
}

TEST(FailingAllocationState, KeepsDistributionPointWhenAssignmentFails) {
    CDistributionPoint value;
    CDistributionPoint other;
    other.decode(blob("30 10 a0 05 a0 03 82 01 61 81 02 06 40 a2 03 82 01 62"));
    for_each_failing_new([&] { value = other; }, [&] { EXPECT_EQ(value, CDistributionPoint()); });
    EXPECT_EQ(value, other);
}

TEST(FailingAllocationState, KeepsRevocationAnnouncementWhenAssignmentFails) {
    CRevAnnContent value;
    CRevAnnContent other;
    other.decode(blob(kAnnouncement));
    for_each_failing_new([&] { value = other; }, [&] { EXPECT_EQ(value.get_crlDetails(), nullptr); });
    EXPECT_EQ(value.encode(), other.encode());
}

}  // namespace
}  // namespace Quillmark::ASN1
