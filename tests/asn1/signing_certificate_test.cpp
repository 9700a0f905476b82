#include "asn1/signing_certificate.h"

#include <gtest/gtest.h>

#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

constexpr const char* kSha256 = "2.16.840.1.101.3.4.2.1";

CAlgorithmIdentifier algorithm(const char* oid, const char* parameters) {
    CAlgorithmIdentifier made(oid);
    made.put_parameters(blob(parameters));
    return made;
}

CIssuerSerial issuer_serial(const wchar_t* dns, unsigned char serial) {
    CGeneralNames issuer;
    issuer.emplace_back().put_dNSName(dns);
    return CIssuerSerial(issuer, CBigInteger(&serial, 1));
}

CESSCertIDv2List one_cert() {
    return {CESSCertIDv2(blob("aa"))};
}

TEST(IssuerSerial, GoesBothWays) {
    const CIssuerSerial value = issuer_serial(L"a", 5);
    EXPECT_EQ(hex(value.encode()), "30 08 30 03 82 01 61 02 01 05");
    CIssuerSerial read = issuer_serial(L"z", 9);
    read.decode(value.encode());
    EXPECT_EQ(read, value);
    EXPECT_EQ(read.get_issuer().size(), 1u);
    EXPECT_EQ(hex(read.get_serialNumber()), "05");
}

TEST(IssuerSerial, ComparesNamesAndNumber) {
    EXPECT_NE(issuer_serial(L"a", 5), issuer_serial(L"b", 5));
    EXPECT_NE(issuer_serial(L"a", 5), issuer_serial(L"a", 6));
    EXPECT_EQ(issuer_serial(L"ax", 5), issuer_serial(L"ay", 5));  // Intended: by first characters
    CIssuerSerial value = issuer_serial(L"a", 5);
    value.put_issuer(CGeneralNames());
    value.put_serialNumber(CBigInteger());
    EXPECT_EQ(value, CIssuerSerial());
}

TEST(IssuerSerial, KeepsValueWhenDecodingFails) {
    CIssuerSerial value = issuer_serial(L"a", 5);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("30 05 30 03 82 01 61")));
    EXPECT_EQ(value, issuer_serial(L"a", 5));
}

TEST(ESSCertIDv2, LeavesDefaultAlgorithmOut) {
    EXPECT_EQ(hex(CESSCertIDv2(blob("aa")).encode()), "30 03 04 01 aa");
    // Intended: with parameters too.
    EXPECT_EQ(hex(CESSCertIDv2(blob("aa"), algorithm(kSha256, "05 00")).encode()), "30 03 04 01 aa");
}

TEST(ESSCertIDv2, WritesAnyOtherAlgorithm) {
    const CESSCertIDv2 value(blob("aa"), algorithm("1.2.3", "05 00"));
    EXPECT_EQ(hex(value.encode()), "30 0b 30 06 06 02 2a 03 05 00 04 01 aa");
    CESSCertIDv2 read;
    read.decode(value.encode());
    EXPECT_EQ(read, value);
}

TEST(ESSCertIDv2, ReadsDefaultAlgorithm) {
    CESSCertIDv2 read(blob("bb"), algorithm("1.2.3", "05 00"));
    read.decode(blob("30 03 04 01 aa"));
    EXPECT_EQ(read.get_hashAlgorithm(), CAlgorithmIdentifier(kSha256));
    EXPECT_EQ(hex(read.get_certHash()), "aa");
}

TEST(ESSCertIDv2, ReadsDefaultAlgorithmThatIsSpeltOut) {
    CESSCertIDv2 read;
    read.decode(blob("30 12 30 0d 06 09 60 86 48 01 65 03 04 02 01 05 00 04 01 aa"));
    EXPECT_EQ(read.get_hashAlgorithm(), algorithm(kSha256, "05 00"));
    EXPECT_EQ(hex(read.encode()), "30 03 04 01 aa");
}

TEST(ESSCertIDv2, HasAnOptionalIssuer) {
    CESSCertIDv2 value(blob("aa"));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    EXPECT_EQ(hex(value.encode()), "30 0d 04 01 aa 30 08 30 03 82 01 61 02 01 05");
    CESSCertIDv2 read;
    read.decode(value.encode());
    ASSERT_NE(read.get_issuerSerial(), nullptr);
    EXPECT_EQ(*read.get_issuerSerial(), issuer);
    read.put_issuerSerial(read.get_issuerSerial());
    EXPECT_EQ(read, value);
    value.put_issuerSerial(nullptr);
    EXPECT_EQ(hex(value.encode()), "30 03 04 01 aa");
    EXPECT_NE(read, value);
    read.decode(value.encode());
    EXPECT_EQ(read.get_issuerSerial(), nullptr);
}

TEST(ESSCertIDv2, ComparesAlgorithmWithParameters) {
    EXPECT_NE(CESSCertIDv2(blob("aa")), CESSCertIDv2(blob("aa"), algorithm(kSha256, "05 00")));
    EXPECT_NE(CESSCertIDv2(blob("aa")), CESSCertIDv2(blob("ab")));
}

TEST(ESSCertIDv2, IsCopiedDeeply) {
    CESSCertIDv2 value(blob("aa"));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    CESSCertIDv2 copy(value);
    value.put_certHash(blob("bb"));
    value.put_hashAlgorithm(CAlgorithmIdentifier("1.2.3"));
    EXPECT_EQ(hex(copy.get_certHash()), "aa");
    EXPECT_NE(copy.get_issuerSerial(), value.get_issuerSerial());
    copy = value;
    EXPECT_EQ(copy, value);
    copy = *&copy;
    EXPECT_EQ(copy, value);
}

TEST(ESSCertIDv2, KeepsValueWhenDecodingFails) {
    CESSCertIDv2 value(blob("aa"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("30 00")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(CBlob()));
    EXPECT_EQ(value, CESSCertIDv2(blob("aa")));
}

TEST(AttrSigningCertificateV2, StartsEmpty) {
    const CAttrSigningCertificateV2 value;
    EXPECT_STREQ(value.get_oid(), "1.2.840.113549.1.9.16.2.47");
    EXPECT_EQ(value.get_value().cbData(), 0u);
    EXPECT_TRUE(value.get_certs().empty());
    EXPECT_EQ(value.get_policies(), nullptr);
}

TEST(AttrSigningCertificateV2, EncodesItsCertificates) {
    const CAttrSigningCertificateV2 value(one_cert());
    EXPECT_EQ(hex(value.get_value()), "30 07 30 05 30 03 04 01 aa");
}

TEST(AttrSigningCertificateV2, WritesPoliciesWithTheNextEncode) {
    CAttrSigningCertificateV2 value(one_cert());
    const CPolicyInformationList policies{CPolicyInformation("1.2.3")};
    value.put_policies(&policies);
    EXPECT_EQ(hex(value.get_value()),
              "30 07 30 05 30 03 04 01 aa");  // Intended: put_policies does not encode
    value.encode();
    EXPECT_EQ(hex(value.get_value()), "30 0f 30 05 30 03 04 01 aa 30 06 30 04 06 02 2a 03");
}

TEST(AttrSigningCertificateV2, LeavesEmptyPoliciesOut) {
    CAttrSigningCertificateV2 value(one_cert());
    const CPolicyInformationList none;
    value.put_policies(&none);
    value.encode();
    EXPECT_EQ(hex(value.get_value()), "30 07 30 05 30 03 04 01 aa");
    ASSERT_NE(value.get_policies(), nullptr);
    value.put_policies(nullptr);
    EXPECT_EQ(value.get_policies(), nullptr);
}

TEST(AttrSigningCertificateV2, RewritesItsOctetsWithoutReceivedPolicies) {
    // Intended: the octets are those of the certificates until the next encode.
    CAttrSigningCertificateV2 value(blob("30 0f 30 05 30 03 04 01 aa 30 06 30 04 06 02 2a 03"));
    EXPECT_EQ(value.get_certs(), one_cert());
    ASSERT_NE(value.get_policies(), nullptr);
    EXPECT_STREQ(value.get_policies()->front().get_policyIdentifier(), "1.2.3");
    EXPECT_EQ(hex(value.get_value()), "30 07 30 05 30 03 04 01 aa");
    value.encode();
    EXPECT_EQ(hex(value.get_value()), "30 0f 30 05 30 03 04 01 aa 30 06 30 04 06 02 2a 03");
}

TEST(AttrSigningCertificateV2, RewritesItsOctetsWithThePoliciesItHad) {
    CAttrSigningCertificateV2 value(one_cert());
    const CPolicyInformationList policies{CPolicyInformation("1.2.4")};
    value.put_policies(&policies);
    value.value() = blob("30 0f 30 05 30 03 04 01 bb 30 06 30 04 06 02 2a 03");
    value.decode();
    EXPECT_EQ(hex(value.get_value()), "30 0f 30 05 30 03 04 01 bb 30 06 30 04 06 02 2a 04");
    EXPECT_STREQ(value.get_policies()->front().get_policyIdentifier(), "1.2.3");
}

TEST(AttrSigningCertificateV2, IsCopiedDeeply) {
    CAttrSigningCertificateV2 value(one_cert());
    const CPolicyInformationList policies{CPolicyInformation("1.2.3")};
    value.put_policies(&policies);
    const CAttrSigningCertificateV2 copy(value);
    value.put_certs({CESSCertIDv2(blob("bb"))});
    value.put_policies(nullptr);
    EXPECT_EQ(copy.get_certs(), one_cert());
    ASSERT_NE(copy.get_policies(), nullptr);
    value = copy;
    EXPECT_EQ(value.get_certs(), one_cert());
    EXPECT_EQ(value, copy);
}

TEST(AttrSigningCertificateV2, RefusesBadInput) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttrSigningCertificateV2(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttrSigningCertificateV2(blob("05 00")));
    CAttrSigningCertificateV2 value(one_cert());
    value.value() = blob("30 00");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode());
    EXPECT_EQ(value.get_certs(), one_cert());
}

TEST(AttrSigningCertificateV2, IsAValueOfItsAttribute) {
    CAttribute attribute("1.2.840.113549.1.9.16.2.47");
    attribute.add(CAttrSigningCertificateV2(one_cert()));
    CAttribute read;
    read.decode(attribute.encode());
    EXPECT_EQ(read, attribute);
    CAttribute wrong("1.2.840.113549.1.9.16.2.47");
    wrong.add(blob("02 01 05"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, wrong.encode());
}

}  // namespace
}  // namespace Quillmark::ASN1
