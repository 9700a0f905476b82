#include "tests/support/failing_allocation.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/content_info.h"
#include "asn1/extension.h"
#include "asn1/extension_value.h"
#include "asn1/general_name.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1/signer_info.h"
#include "asn1/signing_certificate.h"
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
    {"SigningCertificate", [] { CAttrSigningCertificateV2(blob("30 07 30 05 30 03 04 01 aa")); }},
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

TEST(FailingAllocationState, KeepsAttributeWhenAssignmentFails) {
    CAttribute attribute("1.2.3");
    attribute.add(blob("05 00"));
    CAttribute other("1.2.4");
    for_each_failing_new([&] { attribute = other; }, [&] { EXPECT_STREQ(attribute.get_oid(), "1.2.3"); });
}

}  // namespace
}  // namespace Quillmark::ASN1
