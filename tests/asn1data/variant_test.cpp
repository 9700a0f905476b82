// Types that relax a standard one in a point: raw, parsed and non-strict forms beside each other, identifiers
// whose digits nobody checks, and the types of no standard.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "asn1data/codecs.h"
#include "tests/asn1data/status_case.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

class Variant : public testing::TestWithParam<StatusCase> {};

TEST_P(Variant, GivesStatus) {
    EXPECT_EQ(GetParam().decode(GetParam().ber), GetParam().status);
}

Octets ia5(std::size_t length) {
    return text_element(0x16, std::string(length, 'a'));
}

// Strict and non-strict strings

const StatusCase kStrings[] = {
    {"EmptyDomainComponent", QUILLMARK_DECODE(CaseIgnoreIA5StringSyntaxNonStrict), ia5(0), RT_OK},
    {"EmptyStrictDomainComponent", QUILLMARK_DECODE(CaseIgnoreIA5StringSyntax), ia5(0), RT_E_CONSVIO},
    {"StrictDomainComponent", QUILLMARK_DECODE(CaseIgnoreIA5StringSyntax), ia5(1), RT_OK},
    {"LongestDomainComponent", QUILLMARK_DECODE(CaseIgnoreIA5StringSyntaxNonStrict), ia5(32768), RT_OK},
    {"DomainComponentTooLong", QUILLMARK_DECODE(CaseIgnoreIA5StringSyntaxNonStrict), ia5(32769),
     RT_E_CONSVIO},
    {"EmptyMail", QUILLMARK_DECODE(PHGStringNonStrict), ia5(0), RT_OK},
    {"EmptyStrictMail", QUILLMARK_DECODE(PHGString), ia5(0), RT_E_CONSVIO},
    {"LongestStrictMail", QUILLMARK_DECODE(PHGString), ia5(32768), RT_OK},
    {"MailTooLong", QUILLMARK_DECODE(PHGStringNonStrict), ia5(32769), RT_E_CONSVIO},
    {"EmptySystemVersion", QUILLMARK_DECODE(_msOsVersion_Type), ia5(0), RT_E_CONSVIO},
    {"SystemVersion", QUILLMARK_DECODE(_msOsVersion_Type), ia5(1), RT_OK},
    {"ProviderWithoutName", QUILLMARK_DECODE(EnrollmentCSPInfo), from_hex("30 08 02 01 01 1e 00 03 01 00"),
     RT_E_CONSVIO},
    {"Provider", QUILLMARK_DECODE(EnrollmentCSPInfo), from_hex("30 0a 02 01 01 1e 02 00 61 03 01 00"), RT_OK},
};
INSTANTIATE_TEST_SUITE_P(Strings, Variant, testing::ValuesIn(kStrings), case_name);

TEST(NonStrictString, IsBoundedWhenACallerFillsIt) {
    const std::string longest(32768, 'a');
    const std::string too_long(32769, 'a');
    const char* text = longest.c_str();
    EXPECT_GT(encode<ASN1C_PHGStringNonStrict>(text).result, 0);
    text = too_long.c_str();
    EXPECT_EQ(encode<ASN1C_PHGStringNonStrict>(text).result, RT_E_CONSVIO);
    text = "";
    EXPECT_EQ(to_hex(encode<ASN1C_CaseIgnoreIA5StringSyntaxNonStrict>(text).octets), "16 00");
    EXPECT_EQ(encode<ASN1C_CaseIgnoreIA5StringSyntax>(text).result, RT_E_CONSVIO);
}

TEST(AttributeTypeAndValue, TakesAnEmptyDomainComponentAndMail) {
    const Octets component = sequence({from_hex("06 0a 09 92 26 89 93 f2 2c 64 01 19"), from_hex("16 00")});
    const Octets mail = sequence({from_hex("06 09 2a 86 48 86 f7 0d 01 09 01"), from_hex("16 00")});
    EXPECT_EQ((status_of<ASN1T_AttributeTypeAndValue, ASN1C_AttributeTypeAndValue>(component)), RT_OK);
    EXPECT_EQ((status_of<ASN1T_AttributeTypeAndValue, ASN1C_AttributeTypeAndValue>(mail)), RT_OK);
}

// Identifiers of the qualified certificate. Intended: neither the number of digits nor that they are digits
// is checked.

Octets utf8(std::size_t length) {
    return text_element(0x0C, std::string(length, '1'));
}

const StatusCase kIdentifiers[] = {
    {"OgrnOfTwentyDigits", QUILLMARK_DECODE(OGRN), text_element(0x12, "12345678901234567890"), RT_OK},
    {"OgrnOfLetters", QUILLMARK_DECODE(OGRN), text_element(0x12, "letters"), RT_OK},
    {"EmptyInn", QUILLMARK_DECODE(INN), from_hex("12 00"), RT_OK},
    {"Longest", QUILLMARK_DECODE(SNILS), utf8(32768), RT_OK},
    {"TooLong", QUILLMARK_DECODE(SNILS), utf8(32769), RT_E_CONSVIO},
    {"LongestNumeric", QUILLMARK_DECODE(INNLE), text_element(0x12, std::string(32768, '1')), RT_OK},
    {"NumericTooLong", QUILLMARK_DECODE(INNLE), text_element(0x12, std::string(32769, '1')), RT_E_CONSVIO},
    {"LongestBmp", QUILLMARK_DECODE(OGRNIP), element(0x1E, Octets(2 * 32768)), RT_OK},
    {"BmpTooLong", QUILLMARK_DECODE(OGRNIP), element(0x1E, Octets(2 * 32769)), RT_E_CONSVIO},
    {"UniversalTooLong", QUILLMARK_DECODE(OGRN), element(0x1C, Octets(4 * 32769)), RT_E_CONSVIO},
    {"VisibleString", QUILLMARK_DECODE(INN), text_element(0x1A, "1"), RT_E_INVOPT},
    {"OctetString", QUILLMARK_DECODE(INN), from_hex("04 01 31"), RT_E_INVOPT},
    {"ConstructedString", QUILLMARK_DECODE(INN), from_hex("2c 03 0c 01 31"), RT_E_INVOPT},
    {"ThreeSignTools", QUILLMARK_DECODE(IssuerSignTool), from_hex("30 06 0c 00 0c 00 0c 00"),
     RT_E_SETMISSING},
    {"FourSignTools", QUILLMARK_DECODE(IssuerSignTool), from_hex("30 08 0c 00 0c 00 0c 00 0c 00"), RT_OK},
    {"KindBeyondThePublished", QUILLMARK_DECODE(IdentificationKind), from_hex("02 01 63"), RT_OK},
};
INSTANTIATE_TEST_SUITE_P(Identifiers, Variant, testing::ValuesIn(kIdentifiers), case_name);

TEST(Identifier, CountsCharactersAndNotOctets) {
    Octets longest;
    for (int i = 0; i < 32768; ++i) {
        longest.insert(longest.end(), {0xD0, 0xB0});  // one letter in two octets
    }
    EXPECT_EQ((status_of<ASN1T_OGRN, ASN1C_OGRN>(element(0x0C, longest))), RT_OK);
    longest.push_back('1');
    EXPECT_EQ((status_of<ASN1T_OGRN, ASN1C_OGRN>(element(0x0C, longest))), RT_E_CONSVIO);
}

TEST(Identifier, HasSevenAlternatives) {
    const std::uint8_t tags[] = {0x0C, 0x12, 0x13, 0x14, 0x16, 0x1C, 0x1E};
    for (std::uint32_t t = 1; t <= 7; ++t) {
        Decoded<ASN1T_OGRNIP, ASN1C_OGRNIP> decoded(element(tags[t - 1], Octets{0x00, 0x00, 0x00, 0x31}));
        ASSERT_EQ(decoded.status(), RT_OK);
        EXPECT_EQ(decoded.record().t, t);
    }
}

TEST(Identifier, HasTheSameBoundInEveryAlternative) {
    const struct {
        std::uint8_t tag;
        std::size_t octets;  // of one character
    } kAlternatives[] = {{0x0C, 1}, {0x12, 1}, {0x13, 1}, {0x14, 1}, {0x16, 1}, {0x1C, 4}, {0x1E, 2}};
    for (const auto& one : kAlternatives) {
        const Octets longest(32768 * one.octets, 0x31);
        const Octets too_long(32769 * one.octets, 0x31);
        EXPECT_EQ((status_of<ASN1T_OGRN, ASN1C_OGRN>(element(one.tag, longest))), RT_OK) << int{one.tag};
        EXPECT_EQ((status_of<ASN1T_OGRN, ASN1C_OGRN>(element(one.tag, too_long))), RT_E_CONSVIO)
            << int{one.tag};
    }
}

TEST(SubjectSignTool, IsWrittenUnderTheTagOfItsUser) {
    ASN1BEREncodeBuffer buffer;
    ASN1T_SubjectSignTool text = "Quill";
    EXPECT_EQ(asn1E_SubjectSignTool(buffer.getCtxtPtr(), &text, ASN1IMPL), 5);
    EXPECT_EQ(asn1E_SubjectSignTool(buffer.getCtxtPtr(), &text, ASN1EXPL), 7);
}

TEST(Identifier, RefusesASelectorOutOfRange) {
    ASN1T_INN record;
    for (const std::uint32_t t : {0u, 8u}) {
        record.t = t;
        EXPECT_EQ(encode<ASN1C_INN>(record).result, RT_E_INVOPT);
    }
}

TEST(Identifier, IsBoundedWhenACallerFillsIt) {
    const std::string too_long(32769, '1');
    for (const std::uint32_t t : {T_INN_utf8String, T_INN_numericString, T_INN_printableString,
                                  T_INN_teletexString, T_INN_ia5String}) {
        ASN1T_INN record;
        record.t = t;
        record.u.utf8String = too_long.c_str();  // the one place of all texts
        EXPECT_EQ(encode<ASN1C_INN>(record).result, RT_E_CONSVIO) << t;
    }
    std::vector<std::uint16_t> bmp(32769, '1');
    ASN1T_INN record;
    record.t = T_INN_bmpString;
    record.u.bmpString.nchars = 32769;
    record.u.bmpString.data = bmp.data();
    EXPECT_EQ(encode<ASN1C_INN>(record).result, RT_E_CONSVIO);
    record.u.bmpString.nchars = 32768;
    EXPECT_GT(encode<ASN1C_INN>(record).result, 0);
}

// The audit of the public-key infrastructure

using Audit = Decoded<ASN1T_PKIAudit, ASN1C_PKIAudit>;

const StatusCase kAudits[] = {
    {"LastKind", QUILLMARK_DECODE(PKIAuditType), from_hex("0a 01 1f"), RT_OK},
    {"NoSuchKind", QUILLMARK_DECODE(PKIAuditType), from_hex("0a 01 20"), RT_E_INVENUM},
    {"NegativeKind", QUILLMARK_DECODE(PKIAuditType), from_hex("0a 01 ff"), RT_E_INVENUM},
    {"AuditWithoutSecond", QUILLMARK_DECODE(PKIAudit), from_hex("30 06 0a 01 00 02 01 ff"), RT_E_SETMISSING},
    {"NameChangeWithoutReasonText", QUILLMARK_DECODE(ChangeNameReq), from_hex("30 06 30 00 30 00 a1 00"),
     RT_E_CONSVIO},
    {"NameChangeWithComment", QUILLMARK_DECODE(ChangeNameReq), from_hex("30 09 30 00 30 00 a2 03 0c 01 61"),
     RT_OK},
};
INSTANTIATE_TEST_SUITE_P(Audit, Variant, testing::ValuesIn(kAudits), case_name);

TEST(PKIAudit, WritesNoFlagThatIsTrue) {
    Audit decoded(from_hex("30 09 0a 01 03 02 01 ff 02 01 02"));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().flag, 1);
    EXPECT_EQ(decoded.record().first, -1);
    EXPECT_EQ(to_hex(encode<ASN1C_PKIAudit>(decoded.record()).octets), "30 09 0a 01 03 02 01 ff 02 01 02");
    EXPECT_EQ(ASN1T_PKIAudit().flag, 1);
}

TEST(PKIAudit, WritesTheFlagThatIsNotOne) {
    const Octets is_false = from_hex("30 0c 0a 01 03 02 01 01 02 01 02 01 01 00");
    Audit decoded(is_false);
    EXPECT_EQ(to_hex(encode<ASN1C_PKIAudit>(decoded.record()).octets), to_hex(is_false));
    // Intended: TRUE is kept as the octet that came, and FF is not the default 1.
    const Octets is_true = from_hex("30 0c 0a 01 03 02 01 01 02 01 02 01 01 ff");
    Audit explicit_flag(is_true);
    EXPECT_EQ(explicit_flag.record().flag, 0xFF);
    EXPECT_EQ(to_hex(encode<ASN1C_PKIAudit>(explicit_flag.record()).octets), to_hex(is_true));
}

TEST(PKIAuditType, RefusesToEncodeAboveItsBound) {
    ASN1T_PKIAuditType value = 31;
    EXPECT_EQ(to_hex(encode<ASN1C_PKIAuditType>(value).octets), "0a 01 1f");
    value = 32;
    EXPECT_EQ(encode<ASN1C_PKIAuditType>(value).result, RT_E_INVENUM);
}

// Raw and parsed forms

const Octets kSha256 = from_hex("30 0b 06 09 60 86 48 01 65 03 04 02 01");
const Octets kSigningTime = sequence(
    {from_hex("06 09 2a 86 48 86 f7 0d 01 09 05"), element(0x31, text_element(0x17, "240102030405Z"))});
const Octets kSigner = sequence({from_hex("02 01 01"), sequence({from_hex("30 00 02 01 07")}), kSha256,
                                 element(0xA0, kSigningTime), kSha256, from_hex("04 01 aa")});
const Octets kSignedDataValue =
    sequence({from_hex("02 01 01 31 00"), from_hex("30 04 06 02 2a 03"), element(0x31, kSigner)});
const Octets kContent =
    sequence({from_hex("06 09 2a 86 48 86 f7 0d 01 07 02"), element(0xA0, kSignedDataValue)});

TEST(SignerInfo, KeepsAttributeValuesWhichTheLegacyFormParses) {
    Decoded<ASN1T_SignerInfo, ASN1C_SignerInfo> raw(kSigner);
    ASSERT_EQ(raw.status(), RT_OK);
    auto* attribute = static_cast<ASN1T_AttributeRaw*>(raw.record().signedAttrs.head->data);
    auto* octets = static_cast<ASN1TOpenType*>(attribute->valuesRaw.head->data);
    EXPECT_EQ(octets->numocts, 15u);

    Decoded<ASN1T_SignerInfoLegacy, ASN1C_SignerInfoLegacy> parsed(kSigner);
    ASSERT_EQ(parsed.status(), RT_OK);
    auto* parsed_attribute = static_cast<ASN1T_Attribute*>(parsed.record().signedAttrs.head->data);
    auto* value = static_cast<Asn1TObject*>(parsed_attribute->values.head->data);
    EXPECT_STREQ(static_cast<ASN1T_Time*>(value->decoded)->u.utcTime, "240102030405Z");
    EXPECT_EQ(to_hex(encode<ASN1C_SignerInfoLegacy>(parsed.record()).octets), to_hex(kSigner));
}

TEST(SignerInfo, KeepsAMalformedValueThatTheLegacyFormRefuses) {
    const Octets malformed =
        sequence({from_hex("06 09 2a 86 48 86 f7 0d 01 09 05"), from_hex("31 03 02 01 05")});
    const Octets signer = sequence({from_hex("02 01 01"), sequence({from_hex("30 00 02 01 07")}), kSha256,
                                    element(0xA0, malformed), kSha256, from_hex("04 01 aa")});
    EXPECT_EQ((status_of<ASN1T_SignerInfo, ASN1C_SignerInfo>(signer)), RT_OK);
    EXPECT_EQ((status_of<ASN1T_SignerInfoLegacy, ASN1C_SignerInfoLegacy>(signer)), RT_E_INVOPT);
}

TEST(ContentInfoLegacy, CarriesTheLegacyFormOfSignedData) {
    Decoded<ASN1T_ContentInfo, ASN1C_ContentInfo> current(kContent);
    Decoded<ASN1T_ContentInfoLegacy, ASN1C_ContentInfoLegacy> legacy(kContent);
    ASSERT_EQ(current.status(), RT_OK);
    ASSERT_EQ(legacy.status(), RT_OK);
    auto* data = static_cast<ASN1T_SignedData*>(current.record().content.decoded);
    EXPECT_NE(static_cast<ASN1T_SignerInfo*>(data->signerInfos.head->data)->signedAttrs.head, nullptr);
    auto* parsed = static_cast<ASN1T_SignedDataLegacy*>(legacy.record().content.decoded);
    auto* signer = static_cast<ASN1T_SignerInfoLegacy*>(parsed->signerInfos.head->data);
    auto* attribute = static_cast<ASN1T_Attribute*>(signer->signedAttrs.head->data);
    EXPECT_NE(static_cast<Asn1TObject*>(attribute->values.head->data)->decoded, nullptr);
    EXPECT_EQ(to_hex(encode<ASN1C_ContentInfoLegacy>(legacy.record()).octets), to_hex(kContent));
}

TEST(AttributesRaw, IsSortedAndItsSequenceIsNot) {
    const Octets first = sequence({from_hex("06 02 2a 03 31 02 05 00")});
    const Octets second = sequence({from_hex("06 02 2a 04 31 02 05 00")});
    Decoded<ASN1T_AttributesRaw, ASN1C_AttributesRaw> set(element(0x31, {second, first}));
    EXPECT_EQ(to_hex(encode<ASN1C_AttributesRaw>(set.record()).octets),
              to_hex(element(0x31, {first, second})));
    const Octets der = element(0x30, {second, first});
    Decoded<ASN1T_AttributesRawSequence, ASN1C_AttributesRawSequence> list(der);
    ASSERT_EQ(list.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_AttributesRawSequence>(list.record()).octets), to_hex(der));
    EXPECT_EQ((status_of<ASN1T_AttributesRawSequence, ASN1C_AttributesRawSequence>(from_hex("30 00"))),
              RT_E_CONSVIO);
}

// Lists that have a SET OF's order and a SEQUENCE's tag. Intended: their users read and write them under a
// context tag, where the difference does not show (RFC 2986 4.1).

struct InnerList {
    const char* name;
    int (*decode)(const Octets& ber);
    Encoded (*written_again)(const Octets& ber);
    Octets first;
    Octets second;
};

void PrintTo(const InnerList& row, std::ostream* out) {
    *out << row.name;
}

template <typename Record, typename Control>
Encoded written_again(const Octets& ber) {
    Decoded<Record, Control> decoded(ber);
    return encode<Control>(decoded.record());
}

#define QUILLMARK_INNER_LIST(type) \
    QUILLMARK_DECODE(type), written_again<ASN1T_##type, ASN1C_##type>  // both ways of one type

class SortedSequence : public testing::TestWithParam<InnerList> {};

TEST_P(SortedSequence, IsSortedUnderTheTagOfSequence) {
    const InnerList& row = GetParam();
    const Octets sorted = element(0x30, {row.first, row.second});
    EXPECT_EQ(to_hex(row.written_again(element(0x30, {row.second, row.first})).octets), to_hex(sorted));
    EXPECT_EQ(to_hex(row.written_again(sorted).octets), to_hex(sorted));
}

TEST_P(SortedSequence, IsNotReadUnderTheTagOfSet) {
    const InnerList& row = GetParam();
    EXPECT_EQ(row.decode(element(0x31, {row.first, row.second})), RT_E_IDNOTFOUND);
}

const Octets kFirstAttribute = sequence({from_hex("06 02 2a 03 31 02 05 00")});
const Octets kSecondAttribute = sequence({from_hex("06 02 2a 04 31 02 05 00")});

const InnerList kInnerLists[] = {
    {"AttributeTypes", QUILLMARK_INNER_LIST(_SetOfAttributeType), from_hex("06 02 2a 03"),
     from_hex("06 02 2a 04")},
    {"Attributes", QUILLMARK_INNER_LIST(_SetOfAttribute), kFirstAttribute, kSecondAttribute},
    {"AttributesOfAModule", QUILLMARK_INNER_LIST(_SetOfPCI_Attribute), kFirstAttribute, kSecondAttribute},
};
INSTANTIATE_TEST_SUITE_P(Inner, SortedSequence, testing::ValuesIn(kInnerLists), case_name);

TEST(CertificateChoicesRaw, HasThreeAlternatives) {
    using Choices = Decoded<ASN1T_CertificateChoicesRaw, ASN1C_CertificateChoicesRaw>;
    const Octets signed_octets = sequence({from_hex("30 00"), kSha256, from_hex("03 02 00 55")});
    Choices certificate(signed_octets);
    ASSERT_EQ(certificate.status(), RT_OK);
    EXPECT_EQ(certificate.record().t, 1u);
    // The two others are parsed, so that what is in them must be right; others are not known.
    EXPECT_EQ(Choices(from_hex("a0 00")).status(), RT_E_SETMISSING);
    EXPECT_EQ(Choices(from_hex("a1 00")).status(), RT_E_SETMISSING);
    EXPECT_EQ(Choices(from_hex("a2 00")).status(), RT_E_INVOPT);
    EXPECT_EQ(Choices(from_hex("a3 00")).status(), RT_E_INVOPT);
}

TEST(CertificateChoices, ParsesTheCertificateThatTheRawFormKeeps) {
    const Octets not_a_certificate = sequence({from_hex("30 00"), kSha256, from_hex("03 02 00 55")});
    EXPECT_EQ((status_of<ASN1T_CertificateChoicesRaw, ASN1C_CertificateChoicesRaw>(not_a_certificate)),
              RT_OK);
    EXPECT_EQ((status_of<ASN1T_CertificateChoices, ASN1C_CertificateChoices>(not_a_certificate)),
              RT_E_SETMISSING);
}

TEST(CertificateList, IsParsedInItsLegacyFormOnly) {
    const Octets not_a_list = sequence({from_hex("30 00"), kSha256, from_hex("03 02 00 55")});
    EXPECT_EQ((status_of<ASN1T_CertificateList, ASN1C_CertificateList>(not_a_list)), RT_OK);
    EXPECT_EQ((status_of<ASN1T_CertificateListLegacy, ASN1C_CertificateListLegacy>(not_a_list)),
              RT_E_SETMISSING);
}

// Parameters of the PKCS line

TEST(RSASSA_PSS_params, LeavesNumbersThatAreAbsentAsTheyWere) {
    // Intended: the defaults of RFC 4055 3.1 are left out when written, and not filled in when read.
    const Octets der = from_hex("30 00");
    ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
    ASN1T_RSASSA_PSS_params record;
    record.saltLength = 32;
    record.trailerField = 1;
    ASSERT_EQ(ASN1C_RSASSA_PSS_params(buffer, record).Decode(), RT_OK);
    EXPECT_EQ(record.saltLength, 32);
    EXPECT_EQ(to_hex(encode<ASN1C_RSASSA_PSS_params>(record).octets), "30 05 a2 03 02 01 20");
    record.saltLength = 20;
    EXPECT_EQ(to_hex(encode<ASN1C_RSASSA_PSS_params>(record).octets), "30 00");
}

TEST(RSASSA_PSS_params, OfANewRecordHasNoTrailerFieldOfItsOwn) {
    // Intended: whoever reads parameters sets the defaults first, as a new record has zeros.
    const Octets der = from_hex("30 05 a2 03 02 01 20");
    Decoded<ASN1T_RSASSA_PSS_params, ASN1C_RSASSA_PSS_params> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().saltLength, 32);
    EXPECT_EQ(decoded.record().trailerField, 0);
    EXPECT_EQ(to_hex(encode<ASN1C_RSASSA_PSS_params>(decoded.record()).octets),
              "30 0a a2 03 02 01 20 a3 03 02 01 00");
    decoded.record().trailerField = 1;
    EXPECT_EQ(to_hex(encode<ASN1C_RSASSA_PSS_params>(decoded.record()).octets), to_hex(der));
}

const Octets kSalt = from_hex("04 01 aa");

const StatusCase kPasswords[] = {
    {"OneIteration", QUILLMARK_DECODE(PBKDF2_params), sequence({kSalt, from_hex("02 01 01")}), RT_OK},
    {"NoIteration", QUILLMARK_DECODE(PBKDF2_params), sequence({kSalt, from_hex("02 01 00")}), RT_E_CONSVIO},
    {"KeyOfOneOctet", QUILLMARK_DECODE(PBKDF2_params), sequence({kSalt, from_hex("02 01 01 02 01 01")}),
     RT_OK},
    {"KeyOfNoOctet", QUILLMARK_DECODE(PBKDF2_params), sequence({kSalt, from_hex("02 01 01 02 01 00")}),
     RT_E_CONSVIO},
    {"SaltOfNoKind", QUILLMARK_DECODE(PBKDF2_params), sequence({from_hex("05 00 02 01 01")}), RT_E_INVOPT},
};
INSTANTIATE_TEST_SUITE_P(Passwords, Variant, testing::ValuesIn(kPasswords), case_name);

}  // namespace
}  // namespace Quillmark::test
