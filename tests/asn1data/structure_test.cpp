// How SEQUENCE, SET, CHOICE and lists are read and written, whatever the type (X.690 8.9 to 8.13).

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "runtime/ber_decode.h"
#include "tests/asn1data/status_case.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

class Decoding : public testing::TestWithParam<StatusCase> {};

TEST_P(Decoding, GivesStatus) {
    EXPECT_EQ(GetParam().decode(GetParam().ber), GetParam().status);
}

const Octets kEnd = from_hex("00 00");
const Octets kIssuer = from_hex("30 00");
const Octets kSerial = from_hex("02 01 07");
const Octets kSha256 = from_hex("30 0b 06 09 60 86 48 01 65 03 04 02 01");
const Octets kSigned = sequence({from_hex("30 00"), kSha256, from_hex("03 02 00 55")});

// SET (X.690 8.11)

const StatusCase kSets[] = {
    {"AnyOrder", QUILLMARK_DECODE(PersonalName), from_hex("31 06 81 01 67 80 01 73"), RT_OK},
    {"Repeated", QUILLMARK_DECODE(PersonalName), from_hex("31 06 80 01 73 80 01 74"), RT_E_SETDUP},
    {"Unknown", QUILLMARK_DECODE(PersonalName), from_hex("31 06 80 01 73 84 01 78"), RT_E_NOTINSET},
    {"RequiredMissing", QUILLMARK_DECODE(PersonalName), from_hex("31 03 81 01 67"), RT_E_SETMISSING},
    {"Empty", QUILLMARK_DECODE(PersonalName), from_hex("31 00"), RT_E_SETMISSING},
    {"ConstructedElement", QUILLMARK_DECODE(PersonalName), from_hex("31 03 a0 01 73"), RT_E_NOTINSET},
    {"LongestSurname", QUILLMARK_DECODE(PersonalName),
     element(0x31, text_element(0x80, std::string(40, 's'))), RT_OK},
    {"SurnameTooLong", QUILLMARK_DECODE(PersonalName),
     element(0x31, text_element(0x80, std::string(41, 's'))), RT_E_CONSVIO},
    {"EmptySurname", QUILLMARK_DECODE(PersonalName), from_hex("31 02 80 00"), RT_E_CONSVIO},
    {"NotASet", QUILLMARK_DECODE(PersonalName), from_hex("30 03 80 01 73"), RT_E_IDNOTFOUND},
    {"IndefiniteLength", QUILLMARK_DECODE(PersonalName), from_hex("31 80 80 01 73 00 00"), RT_OK},
};
INSTANTIATE_TEST_SUITE_P(Set, Decoding, testing::ValuesIn(kSets), case_name);

// CHOICE (X.690 8.13)

const StatusCase kChoices[] = {
    {"UnknownTag", QUILLMARK_DECODE(GeneralName), from_hex("89 01 78"), RT_E_INVOPT},
    {"ConstructedString", QUILLMARK_DECODE(GeneralName), from_hex("a2 03 16 01 78"), RT_E_INVOPT},
    {"PrimitiveRecord", QUILLMARK_DECODE(GeneralName), from_hex("80 04 06 02 2a 03"), RT_E_INVOPT},
    {"ApplicationTag", QUILLMARK_DECODE(CountryName), from_hex("61 04 13 02 52 55"), RT_OK},
    {"WrongApplicationTag", QUILLMARK_DECODE(CountryName), from_hex("62 04 13 02 52 55"), RT_E_IDNOTFOUND},
    {"WrongAlternative", QUILLMARK_DECODE(CountryName), from_hex("61 04 0c 02 52 55"), RT_E_INVOPT},
    {"CountryOfThreeLetters", QUILLMARK_DECODE(CountryName), from_hex("61 05 13 03 52 55 53"), RT_E_CONSVIO},
    {"EmptyDirectoryString", QUILLMARK_DECODE(EDIPartyName_partyName), from_hex("0c 00"), RT_E_CONSVIO},
    {"NoOctets", QUILLMARK_DECODE(Time), from_hex("17"), RT_E_ENDOFBUF},
};
INSTANTIATE_TEST_SUITE_P(Choice, Decoding, testing::ValuesIn(kChoices), case_name);

// End-of-contents octets (X.690 8.1.5). Intended: of the types below each takes the end of what it opened
// itself; all other structures leave theirs unread.

Octets indefinite(std::uint8_t tag, std::initializer_list<Octets> parts) {
    return join({{tag, 0x80}, join(parts)});
}

const StatusCase kEnds[] = {
    {"SignerWithEnd", QUILLMARK_DECODE(SignerIdentifier), join({indefinite(0x30, {kIssuer, kSerial}), kEnd}),
     RT_OK},
    {"SignerWithoutEnd", QUILLMARK_DECODE(SignerIdentifier), indefinite(0x30, {kIssuer, kSerial}),
     RT_E_INVLEN},
    {"KeyIdentifierIsPrimitive", QUILLMARK_DECODE(SignerIdentifier), from_hex("a0 80 04 01 61 00 00"),
     RT_E_INVOPT},
    {"CertificateWithEnd", QUILLMARK_DECODE(CertificateChoicesRaw),
     join({indefinite(0x30, {kIssuer, kSha256, from_hex("03 02 00 55")}), kEnd}), RT_OK},
    {"CertificateWithoutEnd", QUILLMARK_DECODE(CertificateChoicesRaw),
     indefinite(0x30, {kIssuer, kSha256, from_hex("03 02 00 55")}), RT_E_INVLEN},
    {"RevocationWithEnd", QUILLMARK_DECODE(RevocationInfoChoice),
     join({indefinite(0xA1, {from_hex("06 02 2a 03 05 00")}), kEnd}), RT_OK},
    {"RevocationWithoutEnd", QUILLMARK_DECODE(RevocationInfoChoice),
     indefinite(0xA1, {from_hex("06 02 2a 03 05 00")}), RT_E_INVLEN},
    {"EncapsulatedWithEnds", QUILLMARK_DECODE(EncapsulatedContentInfo),
     join(
         {indefinite(0x30, {from_hex("06 02 2a 03"), indefinite(0xA0, {from_hex("04 01 61")}), kEnd}), kEnd}),
     RT_OK},
    {"EncapsulatedWithoutOuterEnd", QUILLMARK_DECODE(EncapsulatedContentInfo),
     indefinite(0x30, {from_hex("06 02 2a 03"), indefinite(0xA0, {from_hex("04 01 61")}), kEnd}),
     RT_E_INVLEN},
    {"EncapsulatedWithoutInnerEnd", QUILLMARK_DECODE(EncapsulatedContentInfo),
     element(0x30, join({from_hex("06 02 2a 03"), indefinite(0xA0, {from_hex("04 01 61")})})), RT_E_INVLEN},
    {"GeneralNameWithoutEnd", QUILLMARK_DECODE(GeneralName), indefinite(0xA4, {from_hex("30 00")}), RT_OK},
    {"PlainSequenceWithoutEnd", QUILLMARK_DECODE(Validity),
     indefinite(0x30, {text_element(0x17, "240102030405Z"), text_element(0x17, "240102030405Z")}), RT_OK},
};
INSTANTIATE_TEST_SUITE_P(EndOfContents, Decoding, testing::ValuesIn(kEnds), case_name);

TEST(EndOfContents, StaysUnreadBehindAStructure) {
    const Octets ber = indefinite(0x30, {kSerial, kEnd});
    ASN1BERDecodeBuffer buffer(ber.data(), static_cast<int>(ber.size()));
    ASN1T_Accuracy record;
    ASSERT_EQ(ASN1C_Accuracy(buffer, record).Decode(), RT_OK);
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.byteIndex, 5u);
}

TEST(EndOfContents, StaysUnreadWhenTheCallerReadTheHeader) {
    const Octets ber = join({from_hex("30 80"), from_hex("06 02 2a 03"), kEnd});
    ASN1BERDecodeBuffer buffer(ber.data(), static_cast<int>(ber.size()));
    buffer.init();
    ASN1CTXT* ctxt = buffer.getCtxtPtr();
    int length = 0;
    ASSERT_EQ(xd_match1(ctxt, 0x30, &length), RT_OK);
    ASN1T_EncapsulatedContentInfo record;
    EXPECT_EQ(asn1D_EncapsulatedContentInfo(ctxt, &record, ASN1IMPL, length), RT_OK);
    EXPECT_EQ(ctxt->buffer.byteIndex, 6u);
}

// Sizes and ranges (X.680 51)

Octets units(std::size_t count) {
    Octets names;
    for (std::size_t i = 0; i < count; ++i) {
        names = join({names, from_hex("13 01 75")});
    }
    return element(0x30, names);
}

const StatusCase kSizes[] = {
    {"FourUnits", QUILLMARK_DECODE(OrganizationalUnitNames), units(4), RT_OK},
    {"FiveUnits", QUILLMARK_DECODE(OrganizationalUnitNames), units(5), RT_E_CONSVIO},
    {"NoUnits", QUILLMARK_DECODE(OrganizationalUnitNames), units(0), RT_E_CONSVIO},
    {"NoGeneralName", QUILLMARK_DECODE(GeneralNames), from_hex("30 00"), RT_E_CONSVIO},
    {"NoAttributeInName", QUILLMARK_DECODE(RelativeDistinguishedName), from_hex("31 00"), RT_E_CONSVIO},
    {"NoRelativeName", QUILLMARK_DECODE(Name), from_hex("30 00"), RT_OK},
    {"NoRawValue", QUILLMARK_DECODE(AttributeRaw_valuesRaw), from_hex("31 00"), RT_E_CONSVIO},
    {"NoValue", QUILLMARK_DECODE(Attribute_values), from_hex("31 00"), RT_OK},
    {"LargestAddressAttribute", QUILLMARK_DECODE(ExtensionAttribute),
     from_hex("30 08 80 02 01 00 a1 02 05 00"), RT_OK},
    {"AddressAttributeAboveRange", QUILLMARK_DECODE(ExtensionAttribute),
     from_hex("30 08 80 02 01 01 a1 02 05 00"), RT_E_CONSVIO},
    {"LongestAddress", QUILLMARK_DECODE(X121Address), text_element(0x12, std::string(16, '1')), RT_OK},
    {"AddressTooLong", QUILLMARK_DECODE(X121Address), text_element(0x12, std::string(17, '1')), RT_E_CONSVIO},
};
INSTANTIATE_TEST_SUITE_P(Size, Decoding, testing::ValuesIn(kSizes), case_name);

// Optional and default elements

TEST(OptionalElement, IsTriedWhereItWouldStand) {
    // The second element begins like the first could: [APPLICATION 2] is not [APPLICATION 1].
    Decoded<ASN1T_BuiltInStandardAttributes, ASN1C_BuiltInStandardAttributes> decoded(
        from_hex("30 05 62 03 13 01 61"));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_FALSE(decoded.record().m.country_namePresent);
    EXPECT_TRUE(decoded.record().m.administration_domain_namePresent);
    EXPECT_EQ(decoded.first_status(), RT_OK);
}

TEST(OptionalElement, ThatFailsInsideIsTakenForAbsentAndReadAgain) {
    // Intended: hashAlgorithm begins, but its identifier has another tag, so the same octets are tried as
    // certHash and fail there.
    EXPECT_EQ((status_of<ASN1T_ESSCertIDv2, ASN1C_ESSCertIDv2>(from_hex("30 05 30 03 02 01 05"))),
              RT_E_IDNOTFOUND);
}

TEST(RequiredTaggedElement, IsMissingRatherThanWrong) {
    // A required element with a context tag is passed over when another tag is there.
    EXPECT_EQ((status_of<ASN1T_EDIPartyName, ASN1C_EDIPartyName>(from_hex("30 05 a0 03 0c 01 61"))),
              RT_E_SETMISSING);
    EXPECT_EQ((status_of<ASN1T_EDIPartyName, ASN1C_EDIPartyName>(from_hex("30 05 a2 03 0c 01 61"))),
              RT_E_SEQOVFL);
}

TEST(DefaultElement, WithANumberIsReadAndWrittenOnlyWhenItDiffers) {
    Decoded<ASN1T_AttributeCertificateInfo, ASN1C_AttributeCertificateInfo> decoded(
        sequence({from_hex("02 01 00"), element(0xA1, sequence({from_hex("82 01 61")})),
                  sequence({from_hex("82 01 61")}), kSha256, kSerial,
                  sequence({text_element(0x18, "20240101000000Z"), text_element(0x18, "20240101000000Z")}),
                  from_hex("30 00")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().version, 0);
    const Octets der = encode<ASN1C_AttributeCertificateInfo>(decoded.record()).octets;
    ASSERT_GT(der.size(), 3u);
    EXPECT_EQ(der[2], 0xA1);  // v1 is the default and not written
}

// SET OF (X.690 11.6)

TEST(SetOf, IsReadInAnyOrderAndWrittenInOrder) {
    Decoded<ASN1T_AttributeRaw_valuesRaw, ASN1C_AttributeRaw_valuesRaw> decoded(
        from_hex("31 0b 30 00 02 01 05 02 01 03 02 01 05"));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_AttributeRaw_valuesRaw>(decoded.record()).octets),
              "31 0b 02 01 03 02 01 05 02 01 05 30 00");
}

TEST(SetOf, OfStructuresIsSortedByTheirEncoding) {
    const Octets first = sequence({from_hex("06 02 2a 03"), from_hex("31 02 05 00")});
    const Octets second = sequence({from_hex("06 02 2a 04"), from_hex("31 02 05 00")});
    Decoded<ASN1T_AttributesRaw, ASN1C_AttributesRaw> decoded(element(0x31, join({second, first})));
    EXPECT_EQ(to_hex(encode<ASN1C_AttributesRaw>(decoded.record()).octets),
              to_hex(element(0x31, join({first, second}))));
}

TEST(SignedData, KeepsCertificatesAndAttributesAndSortsSets) {
    const Octets other = sequence({from_hex("30 03 02 01 01"), kSha256, from_hex("03 02 00 55")});
    const Octets head = join({from_hex("02 01 03"), element(0x31, kSha256), from_hex("30 04 06 02 2a 03")});
    const Octets signers = from_hex("31 00");
    Decoded<ASN1T_SignedData, ASN1C_SignedData> decoded(
        element(0x30, join({head, element(0xA0, join({other, kSigned})), signers})));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_SignedData>(decoded.record()).octets),
              to_hex(element(0x30, join({head, element(0xA0, join({kSigned, other})), signers}))));
}

// Records that callers fill

TEST(Choice, RefusesASelectorOutOfRange) {
    ASN1T_GeneralName record;
    EXPECT_EQ(encode<ASN1C_GeneralName>(record).result, RT_E_INVOPT);
    record.t = 10;
    EXPECT_EQ(encode<ASN1C_GeneralName>(record).result, RT_E_INVOPT);
}

TEST(Choice, RefusesAnAlternativeWithoutValue) {
    ASN1T_GeneralName record;
    for (std::uint32_t t = T_GeneralName_otherName; t <= T_GeneralName_registeredID; ++t) {
        record.t = t;
        EXPECT_EQ(encode<ASN1C_GeneralName>(record).result, RT_E_BADVALUE) << t;
        ASN1T_GeneralName copy;
        ASN1BEREncodeBuffer buffer;
        asn1Copy_GeneralName(buffer.getCtxtPtr(), &record, &copy);
        asn1Free_GeneralName(buffer.getCtxtPtr(), &copy);
    }
}

TEST(List, RefusesANodeWithoutValue) {
    ASN1BEREncodeBuffer buffer;
    ASN1CTXT* ctxt = buffer.getCtxtPtr();
    ASN1T_GeneralNames record;
    rtDListAppend(ctxt, &record, nullptr);
    EXPECT_EQ(asn1E_GeneralNames(ctxt, &record, ASN1EXPL), RT_E_BADVALUE);
    ASN1T_GeneralNames copy;
    asn1Copy_GeneralNames(ctxt, &record, &copy);
    EXPECT_EQ(copy.count, 1u);
    asn1Free_GeneralNames(ctxt, &copy);
    asn1Free_GeneralNames(ctxt, &record);
    EXPECT_EQ(record.count, 0u);
}

TEST(Free, LeavesWhatPointsIntoTheMessage) {
    const Octets der = sequence({kSha256, from_hex("04 02 ab cd")});
    ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
    rtCtxtSetFlag(buffer.getCtxtPtr(), RT_F_FASTCOPY);
    ASN1T_MessageImprint record;
    ASSERT_EQ(ASN1C_MessageImprint(buffer, record).Decode(), RT_OK);
    EXPECT_EQ(record.hashedMessage.data, der.data() + der.size() - 2);
    asn1Free_MessageImprint(buffer.getCtxtPtr(), &record);
    EXPECT_EQ(record.hashedMessage.data, nullptr);
}

TEST(Assignment, TakesTheContextOfTheOther) {
    const Octets der = sequence({from_hex("06 02 2a 03"), from_hex("02 01 05")});
    ASN1T_AlgorithmIdentifier target;
    Decoded<ASN1T_AlgorithmIdentifier, ASN1C_AlgorithmIdentifier> decoded(der);
    target = decoded.record();
    EXPECT_TRUE(target.mpContext.isNull());
    EXPECT_EQ(target.parameters.data, decoded.record().parameters.data);
}

TEST(Forward, IsTheTypeThatItStandsFor) {
    const Octets der = sequence({from_hex("06 02 2a 03"), from_hex("a0 02 05 00")});
    Decoded<ASN1T_TimeStampToken, ASN1C_TimeStampToken> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    ASN1C_TimeStampToken control(decoded.record());
    ASN1C_ContentInfo& base = control;
    ASN1BEREncodeBuffer buffer;
    const int length = base.EncodeTo(buffer);
    EXPECT_EQ(to_hex(buffer.getMsgPtr(), static_cast<std::size_t>(length)), to_hex(der));
}

}  // namespace
}  // namespace Quillmark::test
