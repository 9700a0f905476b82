#include "asn1/certificate_identifier.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
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

TEST(IssuerSerial, RefusesARecordWithABadNumber) {
    ASN1BERDecodeBuffer buffer;
    asn1data::ASN1T_IssuerSerial record;
    ASN1T_IssuerSerial_traits::set(buffer.getCtxtPtr(), record, issuer_serial(L"a", 5));
    CIssuerSerial value = issuer_serial(L"b", 6);
    for (const char* bad : {"", "5", "0x"}) {
        record.serialNumber = bad;
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1T_IssuerSerial_traits::get(record, value)) << bad;
        EXPECT_EQ(value, issuer_serial(L"b", 6));
    }
}

TEST(IssuerSerial, WritesAnEmptyNumberAsZero) {
    CIssuerSerial value = issuer_serial(L"a", 5);
    value.put_serialNumber(CBigInteger());
    EXPECT_EQ(hex(value.encode()), "30 08 30 03 82 01 61 02 01 00");
}

TEST(IssuerSerial, KeepsValueWhenDecodingFails) {
    CIssuerSerial value = issuer_serial(L"a", 5);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("30 05 30 03 82 01 61")));
    EXPECT_EQ(value, issuer_serial(L"a", 5));
}

// What the three identifiers have in common: a hash, made from octets, and an optional issuer with serial
// number. The DER of an identifier by the hash alone is the same for all three.

template <class Identifier>
class CertificateIdentifier : public testing::Test {};

using Identifiers = testing::Types<CESSCertID, CESSCertIDv2, COtherCertID>;

class IdentifierNames {
  public:
    template <class Identifier>
    static std::string GetName(int) {
        if (std::is_same_v<Identifier, CESSCertID>) {
            return "ESSCertID";
        }
        return std::is_same_v<Identifier, CESSCertIDv2> ? "ESSCertIDv2" : "OtherCertID";
    }
};

TYPED_TEST_SUITE(CertificateIdentifier, Identifiers, IdentifierNames);

TYPED_TEST(CertificateIdentifier, IsAHash) {
    const TypeParam value(blob("aa"));
    EXPECT_EQ(value.get_issuerSerial(), nullptr);
    EXPECT_EQ(hex(value.encode()), "30 03 04 01 aa");
    TypeParam read(blob("bb"));
    read.decode(blob("30 03 04 01 aa"));
    EXPECT_EQ(read, value);
}

TYPED_TEST(CertificateIdentifier, HasAnOptionalIssuer) {
    TypeParam value(blob("aa"));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    EXPECT_NE(value.get_issuerSerial(), &issuer);
    EXPECT_EQ(hex(value.encode()), "30 0d 04 01 aa 30 08 30 03 82 01 61 02 01 05");
    TypeParam read;
    read.decode(value.encode());
    ASSERT_NE(read.get_issuerSerial(), nullptr);
    EXPECT_EQ(*read.get_issuerSerial(), issuer);
    EXPECT_EQ(read, value);
}

TYPED_TEST(CertificateIdentifier, LosesItsIssuerByNull) {
    TypeParam value(blob("aa"));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    value.put_issuerSerial(nullptr);
    EXPECT_EQ(value.get_issuerSerial(), nullptr);
    EXPECT_EQ(hex(value.encode()), "30 03 04 01 aa");
}

TYPED_TEST(CertificateIdentifier, LosesItsIssuerByDecoding) {
    TypeParam value(blob("aa"));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    value.decode(blob("30 03 04 01 aa"));
    EXPECT_EQ(value.get_issuerSerial(), nullptr);
}

TYPED_TEST(CertificateIdentifier, TakesAnIssuerOfItsOwn) {
    TypeParam value(blob("aa"));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    value.put_issuerSerial(value.get_issuerSerial());
    EXPECT_EQ(*value.get_issuerSerial(), issuer);
}

TYPED_TEST(CertificateIdentifier, ComparesHashAndIssuer) {
    const CIssuerSerial five = issuer_serial(L"a", 5);
    const CIssuerSerial six = issuer_serial(L"a", 6);
    TypeParam value(blob("aa"));
    TypeParam other(blob("aa"));
    EXPECT_EQ(value, other);
    EXPECT_NE(value, TypeParam(blob("ab")));
    value.put_issuerSerial(&five);
    EXPECT_NE(value, other);
    EXPECT_NE(other, value);
    other.put_issuerSerial(&six);
    EXPECT_NE(value, other);
    other.put_issuerSerial(&five);
    EXPECT_EQ(value, other);
}

TYPED_TEST(CertificateIdentifier, IsCopiedDeeply) {
    TypeParam value(blob("aa"));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    TypeParam copy(value);
    EXPECT_NE(copy.get_issuerSerial(), value.get_issuerSerial());
    value = TypeParam(blob("bb"));
    EXPECT_EQ(*copy.get_issuerSerial(), issuer);
    EXPECT_EQ(hex(copy.encode()), "30 0d 04 01 aa 30 08 30 03 82 01 61 02 01 05");
    copy = *&copy;
    EXPECT_EQ(*copy.get_issuerSerial(), issuer);
    copy = value;
    EXPECT_EQ(copy, value);
}

TYPED_TEST(CertificateIdentifier, KeepsValueWhenDecodingFails) {
    TypeParam value(blob("aa"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("30 00")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("30 06 04 01 bb 02 01 05")));
    EXPECT_EQ(value, TypeParam(blob("aa")));
}

TYPED_TEST(CertificateIdentifier, RefusesNamesThatAreNotRepresented) {
    // An issuer by an otherName.
    TypeParam value;
    EXPECT_CODE(E_INVALIDARG, value.decode(blob("30 14 04 01 aa 30 0f 30 0a a0 08 06 02 2a 03 a0 02 05 00 "
                                                "02 01 05")));
    const CIssuerSerial nobody;
    value = TypeParam(blob("aa"));
    value.put_issuerSerial(&nobody);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.encode());
}

TEST(ESSCertID, StartsWithoutHash) {
    const CESSCertID value;
    EXPECT_EQ(value.get_certHash().cbData(), 0u);
    EXPECT_EQ(hex(value.encode()), "30 02 04 00");
}

TEST(ESSCertID, TakesAHash) {
    CESSCertID value(blob("aa"));
    value.put_certHash(blob("bb cc"));
    EXPECT_EQ(hex(value.get_certHash()), "bb cc");
    value.put_certHash(value.get_certHash());
    EXPECT_EQ(hex(value.encode()), "30 04 04 02 bb cc");
}

TEST(ESSCertIDRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_ESSCertID target;
    CESSCertID value(blob("aa"));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_ESSCertID source;
        ASN1T_ESSCertID_traits::set(buffer.getCtxtPtr(), source, value);
        ASN1T_ESSCertID_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CESSCertID read;
    ASN1T_ESSCertID_traits::get(target, read);
    EXPECT_EQ(read, value);
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

TEST(ESSCertIDv2, FindsABadAlgorithmWhenEncoding) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CESSCertIDv2(blob("aa"), CAlgorithmIdentifier("x")).encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CESSCertIDv2(blob("aa"), CAlgorithmIdentifier()).encode());
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

TEST(OtherCertID, HasAHashOfTwoForms) {
    EXPECT_EQ(COtherCertID().get_otherCertHash().get_type(), 0u);
    EXPECT_EQ(COtherCertID(blob("aa")).get_otherCertHash(), COtherHash(blob("aa")));
    const COtherHash with_algorithm(COtherHashAlgAndValue(blob("aa"), algorithm("1.2.3", "05 00")));
    EXPECT_EQ(COtherCertID(blob("aa"), algorithm("1.2.3", "05 00")).get_otherCertHash(), with_algorithm);
    COtherCertID value;
    value.put_otherCertHash(with_algorithm);
    value.put_otherCertHash(value.get_otherCertHash());
    EXPECT_EQ(value.get_otherCertHash(), with_algorithm);
}

TEST(OtherCertID, WritesTheAlgorithmOfItsHash) {
    const COtherCertID value(blob("aa"), algorithm(kSha256, "05 00"));
    EXPECT_EQ(hex(value.encode()), "30 14 30 12 30 0d 06 09 60 86 48 01 65 03 04 02 01 05 00 04 01 aa");
    COtherCertID read(blob("bb"));
    read.decode(value.encode());
    EXPECT_EQ(read, value);
}

TEST(OtherCertID, OfNoHashIsRefusedByTheEncoder) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, COtherCertID().encode());
}

TEST(OtherCertID, IsComparedWithoutParametersOfTheHash) {
    COtherCertID value(blob("aa"), algorithm("1.2.3", "05 00"));
    COtherCertID other(blob("aa"), algorithm("1.2.3", ""));
    EXPECT_NE(value, other);
    EXPECT_TRUE(value.compare_noHashParam(other));
    EXPECT_FALSE(value.compare_noHashParam(COtherCertID(blob("ab"), algorithm("1.2.3", "05 00"))));
    EXPECT_FALSE(value.compare_noHashParam(COtherCertID(blob("aa"))));
    const CIssuerSerial issuer = issuer_serial(L"a", 5);
    value.put_issuerSerial(&issuer);
    EXPECT_FALSE(value.compare_noHashParam(other));
    EXPECT_FALSE(other.compare_noHashParam(value));
    other.put_issuerSerial(&issuer);
    EXPECT_TRUE(value.compare_noHashParam(other));
}

TEST(OtherCertIDRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_OtherCertID target;
    const COtherCertID value(blob("aa"), algorithm("1.2.3", "05 00"));
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_OtherCertID source;
        ASN1T_OtherCertID_traits::set(buffer.getCtxtPtr(), source, value);
        ASN1T_OtherCertID_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    COtherCertID read;
    ASN1T_OtherCertID_traits::get(target, read);
    EXPECT_EQ(read, value);
}

}  // namespace
}  // namespace Quillmark::ASN1
