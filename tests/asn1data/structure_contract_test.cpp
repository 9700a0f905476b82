// Bounds, tags and end-of-contents octets of the types that stand in names, certificates and signed data
// (RFC 5280 appendix A, RFC 5652 12.1).

#include <gtest/gtest.h>

#include <string>

#include "asn1data/codecs.h"
#include "runtime/ber_decode.h"
#include "tests/asn1data/status_case.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

class StructureContract : public testing::TestWithParam<StatusCase> {};

TEST_P(StructureContract, GivesStatus) {
    EXPECT_EQ(GetParam().decode(GetParam().ber), GetParam().status);
}

Octets text(std::uint8_t tag, std::size_t length) {
    return text_element(tag, std::string(length, '1'));
}

Octets repeated(std::size_t count, const Octets& part) {
    Octets all;
    for (std::size_t i = 0; i < count; ++i) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// PersonalName with a surname and one more element.
Octets person(std::uint8_t tag, std::size_t length) {
    return element(0x31, {text(0x80, 1), text(tag, length)});
}

// Upper bounds of RFC 5280 appendix A.1, the last accepted and the first refused.

const Octets kDefined = sequence({text(0x13, 1), text(0x13, 1)});
const Octets kAddressAttribute = from_hex("30 07 80 01 01 a1 02 05 00");

const StatusCase kBounds[] = {
    {"NumericCountryOfThree", QUILLMARK_DECODE(CountryName), element(0x61, text(0x12, 3)), RT_OK},
    {"NumericCountryOfTwo", QUILLMARK_DECODE(CountryName), element(0x61, text(0x12, 2)), RT_E_CONSVIO},
    {"NumericCountryOfFour", QUILLMARK_DECODE(CountryName), element(0x61, text(0x12, 4)), RT_E_CONSVIO},
    {"CountryOfOneLetter", QUILLMARK_DECODE(CountryName), element(0x61, text(0x13, 1)), RT_E_CONSVIO},
    {"EmptyAdministrationDomain", QUILLMARK_DECODE(AdministrationDomainName), element(0x62, text(0x13, 0)),
     RT_OK},
    {"LongestAdministrationDomain", QUILLMARK_DECODE(AdministrationDomainName), element(0x62, text(0x13, 16)),
     RT_OK},
    {"AdministrationDomainTooLong", QUILLMARK_DECODE(AdministrationDomainName), element(0x62, text(0x13, 17)),
     RT_E_CONSVIO},
    {"NumericAdministrationDomainTooLong", QUILLMARK_DECODE(AdministrationDomainName),
     element(0x62, text(0x12, 17)), RT_E_CONSVIO},
    {"LongestPrivateDomain", QUILLMARK_DECODE(PrivateDomainName), text(0x13, 16), RT_OK},
    {"PrivateDomainTooLong", QUILLMARK_DECODE(PrivateDomainName), text(0x13, 17), RT_E_CONSVIO},
    {"EmptyPrivateDomain", QUILLMARK_DECODE(PrivateDomainName), text(0x13, 0), RT_E_CONSVIO},
    {"EmptyNumericPrivateDomain", QUILLMARK_DECODE(PrivateDomainName), text(0x12, 0), RT_E_CONSVIO},
    {"EmptyNetworkAddress", QUILLMARK_DECODE(NetworkAddress), text(0x12, 0), RT_E_CONSVIO},
    {"NetworkAddressTooLong", QUILLMARK_DECODE(NetworkAddress), text(0x12, 17), RT_E_CONSVIO},
    {"LongestTerminal", QUILLMARK_DECODE(TerminalIdentifier), text(0x13, 24), RT_OK},
    {"TerminalTooLong", QUILLMARK_DECODE(TerminalIdentifier), text(0x13, 25), RT_E_CONSVIO},
    {"EmptyTerminal", QUILLMARK_DECODE(TerminalIdentifier), text(0x13, 0), RT_E_CONSVIO},
    {"LongestOrganization", QUILLMARK_DECODE(OrganizationName), text(0x13, 64), RT_OK},
    {"OrganizationTooLong", QUILLMARK_DECODE(OrganizationName), text(0x13, 65), RT_E_CONSVIO},
    {"EmptyOrganization", QUILLMARK_DECODE(OrganizationName), text(0x13, 0), RT_E_CONSVIO},
    {"LongestUserNumber", QUILLMARK_DECODE(NumericUserIdentifier), text(0x12, 32), RT_OK},
    {"UserNumberTooLong", QUILLMARK_DECODE(NumericUserIdentifier), text(0x12, 33), RT_E_CONSVIO},
    {"EmptyUserNumber", QUILLMARK_DECODE(NumericUserIdentifier), text(0x12, 0), RT_E_CONSVIO},
    {"LongestUnit", QUILLMARK_DECODE(OrganizationalUnitName), text(0x13, 32), RT_OK},
    {"UnitTooLong", QUILLMARK_DECODE(OrganizationalUnitName), text(0x13, 33), RT_E_CONSVIO},
    {"EmptyUnit", QUILLMARK_DECODE(OrganizationalUnitName), text(0x13, 0), RT_E_CONSVIO},
    {"LongestGivenName", QUILLMARK_DECODE(PersonalName), person(0x81, 16), RT_OK},
    {"GivenNameTooLong", QUILLMARK_DECODE(PersonalName), person(0x81, 17), RT_E_CONSVIO},
    {"EmptyGivenName", QUILLMARK_DECODE(PersonalName), person(0x81, 0), RT_E_CONSVIO},
    {"LongestInitials", QUILLMARK_DECODE(PersonalName), person(0x82, 5), RT_OK},
    {"InitialsTooLong", QUILLMARK_DECODE(PersonalName), person(0x82, 6), RT_E_CONSVIO},
    {"LongestGeneration", QUILLMARK_DECODE(PersonalName), person(0x83, 3), RT_OK},
    {"GenerationTooLong", QUILLMARK_DECODE(PersonalName), person(0x83, 4), RT_E_CONSVIO},
    {"LongestDefinedType", QUILLMARK_DECODE(BuiltInDomainDefinedAttribute),
     sequence({text(0x13, 8), text(0x13, 128)}), RT_OK},
    {"DefinedTypeTooLong", QUILLMARK_DECODE(BuiltInDomainDefinedAttribute),
     sequence({text(0x13, 9), text(0x13, 1)}), RT_E_CONSVIO},
    {"DefinedValueTooLong", QUILLMARK_DECODE(BuiltInDomainDefinedAttribute),
     sequence({text(0x13, 1), text(0x13, 129)}), RT_E_CONSVIO},
    {"EmptyDefinedValue", QUILLMARK_DECODE(BuiltInDomainDefinedAttribute),
     sequence({text(0x13, 1), text(0x13, 0)}), RT_E_CONSVIO},
    {"FourDefinedAttributes", QUILLMARK_DECODE(BuiltInDomainDefinedAttributes),
     element(0x30, repeated(4, kDefined)), RT_OK},
    {"FiveDefinedAttributes", QUILLMARK_DECODE(BuiltInDomainDefinedAttributes),
     element(0x30, repeated(5, kDefined)), RT_E_CONSVIO},
    {"NoDefinedAttribute", QUILLMARK_DECODE(BuiltInDomainDefinedAttributes), from_hex("30 00"), RT_E_CONSVIO},
    {"MostAddressAttributes", QUILLMARK_DECODE(ExtensionAttributes),
     element(0x31, repeated(256, kAddressAttribute)), RT_OK},
    {"TooManyAddressAttributes", QUILLMARK_DECODE(ExtensionAttributes),
     element(0x31, repeated(257, kAddressAttribute)), RT_E_CONSVIO},
    {"NoAddressAttribute", QUILLMARK_DECODE(ExtensionAttributes), from_hex("31 00"), RT_E_CONSVIO},
    {"NoExtension", QUILLMARK_DECODE(Extensions), from_hex("30 00"), RT_E_CONSVIO},
    {"NoUnauthAttribute", QUILLMARK_DECODE(UnauthAttributes), from_hex("31 00"), RT_E_CONSVIO},
    {"NoQualifier", QUILLMARK_DECODE(PolicyInformation_policyQualifiers), from_hex("30 00"), RT_E_CONSVIO},
    // Lists that the standards do not bound
    {"NoRawAttribute", QUILLMARK_DECODE(AttributesRaw), from_hex("31 00"), RT_OK},
    {"NoDigestAlgorithm", QUILLMARK_DECODE(DigestAlgorithmIdentifiers), from_hex("31 00"), RT_OK},
    {"NoCertificate", QUILLMARK_DECODE(CertificateSetRaw), from_hex("31 00"), RT_OK},
    {"NoRevocation", QUILLMARK_DECODE(RevocationInfoChoices), from_hex("31 00"), RT_OK},
    {"NoSigner", QUILLMARK_DECODE(SignerInfos), from_hex("31 00"), RT_OK},
    {"NoSigningCertificate", QUILLMARK_DECODE(SigningCertificateV2), from_hex("30 02 30 00"), RT_OK},
    {"NoPurpose", QUILLMARK_DECODE(_extKeyUsage_ExtnType), from_hex("30 00"), RT_E_CONSVIO},
    {"NoDistributionPoint", QUILLMARK_DECODE(CRLDistPointsSyntax), from_hex("30 00"), RT_E_CONSVIO},
    {"NoRecipient", QUILLMARK_DECODE(RecipientInfos), from_hex("31 00"), RT_E_CONSVIO},
    // Named bits fill whole octets; how many of them come is not checked.
    {"KeyUsageOfTwoOctets", QUILLMARK_DECODE(KeyUsage), from_hex("03 03 00 ff ff"), RT_OK},
    {"KeyUsageOfThreeOctets", QUILLMARK_DECODE(KeyUsage), from_hex("03 04 00 ff ff ff"), RT_E_STROVFL},
    {"ReasonsOfTwoOctets", QUILLMARK_DECODE(ReasonFlags), from_hex("03 03 00 ff ff"), RT_OK},
    {"ReasonsOfThreeOctets", QUILLMARK_DECODE(ReasonFlags), from_hex("03 04 00 ff ff ff"), RT_E_STROVFL},
    {"ReasonBelowBound", QUILLMARK_DECODE(CRLReason), from_hex("0a 01 0a"), RT_OK},
    {"ReasonAboveBound", QUILLMARK_DECODE(CRLReason), from_hex("0a 01 0b"), RT_E_INVENUM},
    // Intended: the number of a CRL is held in 32 bits, though RFC 5280 5.2.3 has up to 20 octets.
    {"CrlNumberOfFourOctets", QUILLMARK_DECODE(CRLNumber), from_hex("02 04 ff ff ff ff"), RT_OK},
    {"CrlNumberOfFiveOctets", QUILLMARK_DECODE(CRLNumber), from_hex("02 05 01 00 00 00 00"), RT_E_TOOBIG},
    {"PathLength", QUILLMARK_DECODE(BasicConstraintsSyntax), from_hex("30 03 02 01 00"), RT_OK},
    {"NoticeWithTextOnly", QUILLMARK_DECODE(QTUserNotice), from_hex("30 03 0c 01 61"), RT_OK},
    {"NoticeWithTextOfNoKind", QUILLMARK_DECODE(QTUserNotice), from_hex("30 03 13 01 61"), RT_E_SEQOVFL},
    {"NoticeTextTooLong", QUILLMARK_DECODE(QTUserNotice), element(0x30, text(0x16, 201)), RT_E_CONSVIO},
};
INSTANTIATE_TEST_SUITE_P(Bounds, StructureContract, testing::ValuesIn(kBounds), case_name);

// The same bounds when a caller fills the record.

template <typename Control>
int result_of(const char* value) {
    return encode<Control>(value).result;
}

TEST(Bounds, HoldForTextsThatCallersFill) {
    const std::string at16(16, '1');
    const std::string at17(17, '1');
    const std::string at24(24, '1');
    const std::string at25(25, '1');
    const std::string at32(32, '1');
    const std::string at33(33, '1');
    const std::string at64(64, '1');
    const std::string at65(65, '1');
    EXPECT_GT(result_of<ASN1C_X121Address>(at16.c_str()), 0);
    EXPECT_EQ(result_of<ASN1C_X121Address>(at17.c_str()), RT_E_CONSVIO);
    EXPECT_EQ(result_of<ASN1C_X121Address>(""), RT_E_CONSVIO);
    EXPECT_EQ(result_of<ASN1C_X121Address>(nullptr), RT_E_CONSVIO);
    EXPECT_GT(result_of<ASN1C_TerminalIdentifier>(at24.c_str()), 0);
    EXPECT_EQ(result_of<ASN1C_TerminalIdentifier>(at25.c_str()), RT_E_CONSVIO);
    EXPECT_GT(result_of<ASN1C_OrganizationName>(at64.c_str()), 0);
    EXPECT_EQ(result_of<ASN1C_OrganizationName>(at65.c_str()), RT_E_CONSVIO);
    EXPECT_GT(result_of<ASN1C_NumericUserIdentifier>(at32.c_str()), 0);
    EXPECT_EQ(result_of<ASN1C_NumericUserIdentifier>(at33.c_str()), RT_E_CONSVIO);
    EXPECT_GT(result_of<ASN1C_OrganizationalUnitName>(at32.c_str()), 0);
    EXPECT_EQ(result_of<ASN1C_OrganizationalUnitName>(at33.c_str()), RT_E_CONSVIO);
}

TEST(Bounds, HoldForPersonalNamesThatCallersFill) {
    ASN1T_PersonalName name;
    EXPECT_EQ(encode<ASN1C_PersonalName>(name).result, RT_E_CONSVIO);  // no surname
    name.surname = "s";
    EXPECT_EQ(to_hex(encode<ASN1C_PersonalName>(name).octets), "31 03 80 01 73");
    name.m.initialsPresent = 1;
    name.initials = "abcdef";
    EXPECT_EQ(encode<ASN1C_PersonalName>(name).result, RT_E_CONSVIO);
    name.initials = "abcde";
    name.m.generation_qualifierPresent = 1;
    name.generation_qualifier = "";
    EXPECT_EQ(encode<ASN1C_PersonalName>(name).result, RT_E_CONSVIO);
    name.generation_qualifier = "III";
    EXPECT_GT(encode<ASN1C_PersonalName>(name).result, 0);
}

TEST(Bounds, HoldForNumbersThatCallersFill) {
    const Octets null = from_hex("05 00");
    ASN1T_ExtensionAttribute attribute;
    attribute.extension_attribute_value.numocts = 2;
    attribute.extension_attribute_value.data = null.data();
    attribute.extension_attribute_type = 256;
    EXPECT_EQ(to_hex(encode<ASN1C_ExtensionAttribute>(attribute).octets), "30 08 80 02 01 00 a1 02 05 00");
    attribute.extension_attribute_type = 257;
    EXPECT_EQ(encode<ASN1C_ExtensionAttribute>(attribute).result, RT_E_CONSVIO);
    for (const std::uint16_t millis : std::initializer_list<std::uint16_t>{0, 1000, 65535}) {
        ASN1T_Accuracy accuracy;
        accuracy.m.millisPresent = 1;
        accuracy.millis = millis;
        EXPECT_EQ(encode<ASN1C_Accuracy>(accuracy).result, RT_E_CONSVIO) << millis;
    }
}

TEST(Bounds, HoldForListsThatCallersFill) {
    ASN1T_GeneralNames names;
    EXPECT_EQ(encode<ASN1C_GeneralNames>(names).result, RT_E_CONSVIO);
    ASN1T_Extensions extensions;
    EXPECT_EQ(encode<ASN1C_Extensions>(extensions).result, RT_E_CONSVIO);
    ASN1T_RelativeDistinguishedName members;
    EXPECT_EQ(encode<ASN1C_RelativeDistinguishedName>(members).result, RT_E_CONSVIO);
    ASN1T_AttributeRaw_valuesRaw values;
    EXPECT_EQ(encode<ASN1C_AttributeRaw_valuesRaw>(values).result, RT_E_CONSVIO);
    ASN1T_UnauthAttributes attributes;
    EXPECT_EQ(encode<ASN1C_UnauthAttributes>(attributes).result, RT_E_CONSVIO);
    ASN1T_OrganizationalUnitNames units;
    EXPECT_EQ(encode<ASN1C_OrganizationalUnitNames>(units).result, RT_E_CONSVIO);
    ASN1T_AttributesRaw raw;
    EXPECT_EQ(to_hex(encode<ASN1C_AttributesRaw>(raw).octets), "31 00");
}

TEST(Bounds, OfStatusTextsHoldWithTheListAround) {
    EXPECT_EQ((status_of<ASN1T_PKIStatusInfo, ASN1C_PKIStatusInfo>(from_hex("30 05 02 01 00 30 00"))),
              RT_E_CONSVIO);
    ASN1T_PKIStatusInfo record;
    record.m.statusStringPresent = 1;
    EXPECT_EQ(encode<ASN1C_PKIStatusInfo>(record).result, RT_E_CONSVIO);
}

// Tags

const Octets kSha256 = from_hex("30 0b 06 09 60 86 48 01 65 03 04 02 01");
const Octets kBits = from_hex("03 02 00 55");
const Octets kSigned = sequence({from_hex("30 00"), kSha256, kBits});
const Octets kSignedDataHead = join({from_hex("02 01 03 31 00"), from_hex("30 04 06 02 2a 03")});
const Octets kNoSigners = from_hex("31 00");

/// SignedData with one certificate.
Octets signed_data(const Octets& certificate) {
    return element(0x30, join({kSignedDataHead, element(0xA0, certificate), kNoSigners}));
}

const StatusCase kTags[] = {
    // Intended: an application tag is matched whatever its form.
    {"PrimitiveApplicationTag", QUILLMARK_DECODE(CountryName), from_hex("41 04 13 02 52 55"), RT_OK},
    {"NoApplicationTag", QUILLMARK_DECODE(CountryName), from_hex("13 02 52 55"), RT_E_IDNOTFOUND},
    {"PrimitiveVersionTag", QUILLMARK_DECODE(EDIPartyName), from_hex("30 05 81 03 0c 01 61"), RT_OK},
    {"CertificateByItsOctets", QUILLMARK_DECODE(SignedData), signed_data(kSigned), RT_OK},
    // Of the certificate choices there are three: no version 2 attribute certificate and no other format.
    {"AttributeCertificateOfVersion2", QUILLMARK_DECODE(SignedData), signed_data(from_hex("a2 02 30 00")),
     RT_E_INVOPT},
    {"OtherCertificateFormat", QUILLMARK_DECODE(SignedData), signed_data(from_hex("a3 02 30 00")),
     RT_E_INVOPT},
    {"RevocationOfNoKind", QUILLMARK_DECODE(RevocationInfoChoice), from_hex("a0 02 30 00"), RT_E_INVOPT},
    {"SignerOfNoKind", QUILLMARK_DECODE(SignerIdentifier), from_hex("81 01 61"), RT_E_INVOPT},
    {"TimeOfNoKind", QUILLMARK_DECODE(Time), from_hex("16 01 61"), RT_E_INVOPT},
    {"NameOfNoKind", QUILLMARK_DECODE(Name), from_hex("31 00"), RT_E_INVOPT},
    {"ThirdElementOfIssuerSerial", QUILLMARK_DECODE(IssuerSerial),
     from_hex("30 0b 30 03 82 01 61 02 01 01 03 01 00"), RT_E_SEQOVFL},
    // Of revocation values and references there are CRLs and OCSP responses, and no other ones.
    {"OtherRevocationValues", QUILLMARK_DECODE(RevocationValues), from_hex("30 04 a2 02 30 00"),
     RT_E_SEQOVFL},
    {"OtherRevocationReference", QUILLMARK_DECODE(CrlOcspRef), from_hex("30 04 a2 02 30 00"), RT_E_SEQOVFL},
    {"AddressParameterTwice", QUILLMARK_DECODE(PDSParameter), from_hex("31 06 13 01 61 13 01 62"),
     RT_E_SETDUP},
    {"UnknownAddressParameter", QUILLMARK_DECODE(PDSParameter), from_hex("31 03 0c 01 61"), RT_E_NOTINSET},
    {"UnformattedAddressInAnyOrder", QUILLMARK_DECODE(UnformattedPostalAddress),
     from_hex("31 08 14 01 61 30 03 13 01 62"), RT_OK},
    {"EmptyRequiredSequence", QUILLMARK_DECODE(SignedData), from_hex("30 00"), RT_E_SETMISSING},
    {"CertificatesOfIndefiniteLength", QUILLMARK_DECODE(SignedData),
     join({from_hex("30 80"), kSignedDataHead, from_hex("a0 80"), kSigned, from_hex("00 00"), kNoSigners,
           from_hex("00 00")}),
     RT_E_SETMISSING},  // Intended: the end of the certificates ends the SignedData
};
INSTANTIATE_TEST_SUITE_P(Tags, StructureContract, testing::ValuesIn(kTags), case_name);

// End-of-contents octets

Octets indefinite(std::uint8_t tag, std::initializer_list<Octets> parts) {
    return join({{tag, 0x80}, join(parts)});
}

const Octets kEnd = from_hex("00 00");
const Octets kNames = from_hex("30 03 82 01 61");
const Octets kAttributeCertificate =
    join({sequence({element(0xA1, kNames), kNames, kSha256, from_hex("02 01 07"),
                    sequence({text_element(0x18, "20240101000000Z"), text_element(0x18, "20250101000000Z")}),
                    from_hex("30 00")}),
          kSha256, kBits});

const StatusCase kEnds[] = {
    {"AttributeCertificateWithEnd", QUILLMARK_DECODE(CertificateChoicesRaw),
     join({indefinite(0xA1, {kAttributeCertificate}), kEnd}), RT_OK},
    {"AttributeCertificateWithoutEnd", QUILLMARK_DECODE(CertificateChoicesRaw),
     indefinite(0xA1, {kAttributeCertificate}), RT_E_INVLEN},
    {"RevocationListWithEnd", QUILLMARK_DECODE(RevocationInfoChoice),
     join({indefinite(0x30, {from_hex("30 00"), kSha256, kBits}), kEnd}), RT_OK},
    {"RevocationListWithoutEnd", QUILLMARK_DECODE(RevocationInfoChoice),
     indefinite(0x30, {from_hex("30 00"), kSha256, kBits}), RT_E_INVLEN},
    {"EndOfOneOctet", QUILLMARK_DECODE(ContentInfo), from_hex("30 80 06 02 2a 03 a0 02 05 00 00"),
     RT_E_INVLEN},
    {"SubjectOfAttributeCertificateWithoutEnd", QUILLMARK_DECODE(AttributeCertificateInfo_subject),
     indefinite(0xA1, {kNames}), RT_OK},
    {"AlgorithmWithoutEnd", QUILLMARK_DECODE(AlgorithmIdentifier), from_hex("30 80 06 02 2a 03 05 00"),
     RT_OK},
    {"ExtensionWithoutEnd", QUILLMARK_DECODE(Extension), from_hex("30 80 06 02 2a 03 04 00"), RT_OK},
};
INSTANTIATE_TEST_SUITE_P(Ends, StructureContract, testing::ValuesIn(kEnds), case_name);

TEST(EndOfContents, OfAConstructedContentIsTakenByItsString) {
    // [0] of definite length around an OCTET STRING of indefinite length in two segments
    const Octets content = from_hex("24 80 04 01 61 04 01 62 00 00");
    Decoded<ASN1T_EncapsulatedContentInfo, ASN1C_EncapsulatedContentInfo> decoded(
        sequence({from_hex("06 02 2a 03"), element(0xA0, content)}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(decoded.record().eContent.data, decoded.record().eContent.numocts), "61 62");
    EXPECT_EQ(to_hex(encode<ASN1C_EncapsulatedContentInfo>(decoded.record()).octets),
              "30 0a 06 02 2a 03 a0 04 04 02 61 62");
}

// Order

TEST(SetOf, IsReadInAnyOrderUnderAnImplicitTag) {
    // Intended: decoders look at no order; what is written again is sorted.
    const Octets a = sequence({from_hex("06 02 2a 03 31 02 05 00")});
    const Octets b = sequence({from_hex("06 02 2a 04 31 02 05 00")});
    const auto signer = [](const Octets& attributes) {
        return sequence({from_hex("02 01 01"), sequence({from_hex("30 00 02 01 07")}), kSha256,
                         element(0xA0, attributes), kSha256, from_hex("04 01 aa")});
    };
    Decoded<ASN1T_SignerInfo, ASN1C_SignerInfo> decoded(signer(join({b, a})));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_SignerInfo>(decoded.record()).octets), to_hex(signer(join({a, b}))));
}

TEST(SetOf, IsSortedInABufferThatGrows) {
    // 400 values of 100 octets, far more than an encode buffer begins with, in falling order.
    const auto value = [](int number) {
        Octets octets(100, 0x55);
        octets[0] = static_cast<std::uint8_t>(number >> 8);
        octets[1] = static_cast<std::uint8_t>(number);
        return element(0x04, octets);
    };
    Octets falling;
    Octets rising;
    for (int number = 0; number < 400; ++number) {
        falling = join({value(number), falling});
        rising = join({rising, value(number)});
    }
    Decoded<ASN1T_AttributeRaw_valuesRaw, ASN1C_AttributeRaw_valuesRaw> decoded(element(0x31, falling));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_TRUE(encode<ASN1C_AttributeRaw_valuesRaw>(decoded.record()).octets == element(0x31, rising));
}

TEST(SequenceOf, KeepsItsOrder) {
    const Octets der = from_hex("30 06 82 01 62 82 01 61");
    Decoded<ASN1T_GeneralNames, ASN1C_GeneralNames> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_GeneralNames>(decoded.record()).octets), to_hex(der));
}

}  // namespace
}  // namespace Quillmark::test
