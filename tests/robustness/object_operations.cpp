// The value classes of the object layer: each type read, written, copied and assigned, and what else
// allocates.

#include <functional>
#include <string>

#include "asn1/access_description.h"
#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/certificate.h"
#include "asn1/codec.h"
#include "asn1/content_info.h"
#include "asn1/distribution_point.h"
#include "asn1/distribution_point_name.h"
#include "asn1/extension.h"
#include "asn1/extension_value.h"
#include "asn1/general_name.h"
#include "asn1/info_type_and_value.h"
#include "asn1/name.h"
#include "asn1/other_hash.h"
#include "asn1/pki_status.h"
#include "asn1/policy_information.h"
#include "asn1/reason_flags.h"
#include "asn1/revocation_announcement.h"
#include "asn1/signer_info.h"
#include "asn1/signing_certificate.h"
#include "tests/robustness/object_rows.h"
#include "tests/robustness/operations.h"
#include "tests/robustness/time_stamps.h"
#include "tests/support/blob.h"

namespace Quillmark::test {

namespace {

using namespace ASN1;

constexpr char kName[] = "30 18 31 16 30 08 06 03 55 04 03 0c 01 41 30 0a 06 03 55 04 04 0c 03 42 42 42";
constexpr char kGeneralNames[] = "30 13 a4 0e 30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41 82 01 61";
constexpr char kPoint[] = "30 10 a0 05 a0 03 82 01 61 81 02 06 40 a2 03 82 01 62";
constexpr char kPeriod[] =
    "30 22 80 0f 32 30 32 34 30 31 30 31 31 32 33 30 34 35 5a "
    "81 0f 32 30 33 30 30 31 30 31 31 32 33 30 34 35 5a";
constexpr char kAnnouncement[] =
    "30 3d 02 01 04 30 07 82 01 61 02 02 00 ff 18 0f 32 30 32 36 30 37 30 38 30 39 31 30 31 31 5a "
    "18 0f 32 30 35 35 30 31 30 32 30 33 30 34 30 30 5a 30 0d 30 0b 06 02 2a 03 01 01 ff 04 02 05 00";
constexpr char kCertificate[] =
    "30 3e 30 33 02 01 05 30 03 06 01 2a 30 00 30 1a 17 0b 32 34 30 31 30 31 30 30 30 30 5a "
    "17 0b 32 34 30 31 30 31 30 30 30 30 5a 30 00 30 09 30 03 06 01 2a 03 02 00 aa 30 03 06 01 2a 03 02 00 "
    "bb";

/// A row for a type: `der` is read, written, copied and assigned. What a failure leaves can be read into, and
/// takes assignments.
template <class Value>
std::function<void(Trial&)> is_a_value(const char* der) {
    return [der = blob(der)](Trial& trial) {
        Value value;
        trial.call([&] { value.decode(der); });
        value.decode(der);
        EXPECT_EQ(value.encode(), der);
        trial.call([&] { (void)value.encode(); });
        trial.call([&] { (void)Value(value); });
        Value other;
        trial.call([&] { other = value; });
        other = value;
        EXPECT_EQ(other.encode(), der);
    };
}

/// A row for a list that is read, and whose assignment leaves what it has.
template <class List>
std::function<void(Trial&)> is_a_list(const char* der) {
    return [der = blob(der)](Trial& trial) {
        List list;
        trial.call([&] { list.decode(der); });
        list.decode(der);
        EXPECT_EQ(list.encode(), der);
        trial.call([&] { (void)list.encode(); });
        trial.call([&] { (void)List(list); });
    };
}

/// A row for a class that holds the octets of one value: it is made of `der`, and writes it anew.
template <class Value>
std::function<void(Trial&)> holds_octets(const char* der) {
    return [der = blob(der)](Trial& trial) {
        trial.call([&] { (void)Value(der); });
        Value value(der);
        trial.call([&] { value.encode(); });
        EXPECT_EQ(value.get_value(), der);
        trial.call([&] { value.decode(); });
        value.decode();
        value.encode();
        EXPECT_EQ(value.get_value(), der);
    };
}

/// A row for a change of `make()`: done, or the encoding is the old one; and it can be done then.
template <class Make, class Change>
std::function<void(Trial&)> changes(Make make, Change change) {
    return [=](Trial& trial) {
        auto subject = make();
        const CBlob before = subject.encode();
        const bool done = trial.call([&] { change(subject); });
        EXPECT_EQ(subject.encode() == before, !done);
        subject = make();
        change(subject);
        EXPECT_FALSE(subject.encode() == before);
    };
}

CGeneralNames some_names() {
    CGeneralNames names;
    names.decode(blob(kGeneralNames));
    return names;
}

CName some_name() {
    return CName(L"CN=A name that is no short text+SN=B,1.2.3=#0500");
}

CPKIFreeText some_text() {
    return CPKIFreeText(L"a text that is no short one", CLanguageTag("en-us"));
}

CESSCertIDv2 some_certificate_identifier() {
    CESSCertIDv2 identifier(blob("aa bb"));
    const CIssuerSerial issuer(some_names(), number("05"));
    identifier.put_issuerSerial(&issuer);
    return identifier;
}

/// A row for wide text that is written as a string of one kind and read again.
std::function<void(Trial&)> is_character_string(StringType type) {
    return [type](Trial& trial) {
        trial.call([&] { (void)encodeCharString(L"a text that is no short one", type); });
        const CBlob der = encodeCharString(L"a text that is no short one", type);
        trial.call([&] { (void)decodeCharString(der); });
    };
}

}  // namespace

Operations object_operations() {
    return {
        {"AlgorithmIdentifier",
         is_a_value<CAlgorithmIdentifier>(
             "30 1c 06 06 2a 85 03 02 02 13 30 12 06 07 2a 85 03 02 02 23 01 06 07 2a 85 03 02 02 1e 01")},
        {"Attribute", is_a_value<CAttribute>("30 0a 06 01 2a 31 05 02 01 05 05 00")},
        {"Attributes", is_a_list<CAttributes>("31 12 30 07 06 01 2a 31 02 05 00 30 07 06 01 2b 31 02 05 00")},
        {"ContentInfo", is_a_value<CContentInfo>("30 09 06 02 2a 03 a0 03 04 01 aa")},
        {"Extension", is_a_value<CExtension>("30 0b 06 02 2a 03 01 01 ff 04 02 05 00")},
        {"Extensions",
         is_a_list<CExtensions>("30 23 30 1a 06 03 55 1d 11 04 13 30 11 a4 0c 30 0a 31 08 30 06 06 01 2a 0c "
                                "01 41 82 01 61 30 05 06 01 2a 04 00")},
        {"GeneralName", is_a_value<CGeneralName>("a4 0e 30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41")},
        {"GeneralNames", is_a_list<CGeneralNames>(kGeneralNames)},
        {"Name", is_a_list<CName>(kName)},
        {"RelativeName", is_a_list<CRelativeDistinguishedName>("31 0a 30 08 06 03 55 04 03 0c 01 41")},
        {"TypeAndValue", is_a_value<CAttributeTypeAndValue>("30 08 06 03 55 04 03 0c 01 41")},
        {"TimeChoice", is_a_value<CTimeChoice>("17 0d 32 34 30 31 30 31 31 32 33 30 34 35 5a")},
        {"Number", is_a_value<CBigInteger>("02 02 00 ff")},
        {"StatusInfo", is_a_value<CPKIStatusInfo>("30 0f 02 01 02 30 06 0c 01 61 0c 01 62 03 02 05 20")},
        {"IssuerAndSerialNumber", is_a_value<CIssuerSerial>("30 0a 30 05 82 03 61 2e 62 02 01 05")},
        {"CertificateIdentifier",
         is_a_value<CESSCertID>("30 0f 04 01 aa 30 0a 30 05 82 03 61 2e 62 02 01 05")},
        {"CertificateIdentifierV2",
         is_a_value<CESSCertIDv2>(
             "30 17 30 06 06 02 2a 03 05 00 04 01 aa 30 0a 30 05 82 03 61 2e 62 02 01 05")},
        {"OtherCertificateIdentifier",
         is_a_value<COtherCertID>(
             "30 19 30 0b 30 06 06 02 2a 03 05 00 04 01 aa 30 0a 30 05 82 03 61 2e 62 02 01 05")},
        {"OtherHash", is_a_value<COtherHash>("30 0b 30 06 06 02 2a 03 05 00 04 01 aa")},
        {"OtherHashAndAlgorithm",
         is_a_value<COtherHashAlgAndValue>("30 0b 30 06 06 02 2a 03 05 00 04 01 aa")},
        {"DistributionPointName", is_a_value<CDistributionPointName>("a0 06 82 01 61 82 01 62")},
        {"DistributionPoint", is_a_value<CDistributionPoint>(kPoint)},
        {"DistributionPoints",
         is_a_list<CCRLDistPointsSyntax>("30 12 30 10 a0 05 a0 03 82 01 61 81 02 06 40 a2 03 82 01 62")},
        {"AccessDescription", is_a_value<CAccessDescription>("30 0d 06 08 2b 06 01 05 05 07 30 01 86 01 78")},
        {"AuthorityInfoAccess",
         is_a_list<CAuthorityInfoAccessSyntax>("30 0f 30 0d 06 08 2b 06 01 05 05 07 30 01 86 01 78")},
        {"PolicyInformation", is_a_value<CPolicyInformation>("30 04 06 02 2a 03")},
        {"PolicyInformationList",
         is_a_list<CPolicyInformationList>("30 0c 30 04 06 02 2a 04 30 04 06 02 2a 03")},
        {"ReasonFlags", is_a_value<CReasonFlags>("03 02 06 40")},
        {"InfoTypeAndValue",
         is_a_value<CInfoTypeAndValue>("30 10 06 08 2b 06 01 05 05 07 04 04 30 04 06 02 2a 03")},
        {"InfoTypeAndValueList",
         is_a_list<CInfoTypeAndValueList>(
             "30 18 30 10 06 08 2b 06 01 05 05 07 04 04 30 04 06 02 2a 03 30 04 06 02 2a 03")},
        {"RevocationAnnouncement", is_a_value<CRevAnnContent>(kAnnouncement)},
        {"CertificateValue", is_a_value<CCertificateValue>(kCertificate)},
        {"SignerInfo",
         [](Trial& trial) {
             const CBlob der = blob(
                 "30 1d 02 01 01 30 0b 30 06 31 04 30 02 06 00 02 01 05 30 03 06 01 2a 30 03 06 01 2a "
                 "04 01 ab");
             CSignerInfo signer;
             trial.call([&] { signer.decode(der); });
             signer.decode(der);
             trial.call([&] { (void)CSignerInfo(signer); });
             EXPECT_EQ(signer.get_signature(), blob("ab"));
         }},

        {"SigningCertificate", holds_octets<CAttrSigningCertificate>("30 07 30 05 30 03 04 01 aa")},
        {"SigningCertificateV2", holds_octets<CAttrSigningCertificateV2>("30 07 30 05 30 03 04 01 aa")},
        {"OtherSigningCertificate",
         holds_octets<CAttrOtherSigningCertificate>("30 0f 30 05 30 03 04 01 aa 30 06 30 04 06 02 2a 03")},
        {"ContentTypeAttribute", holds_octets<CAttrContentType>("06 02 2a 03")},
        {"MessageDigestAttribute", holds_octets<CAttrMessageDigest>("04 01 aa")},
        {"SigningTimeAttribute",
         holds_octets<CAttrSigningTime>("17 0d 32 34 30 31 30 31 31 32 33 30 34 35 5a")},
        {"ReasonOfRevocation", holds_octets<CExtCRLReason>("0a 01 0a")},
        {"HoldInstruction", holds_octets<CExtHoldInstructionCode>("06 02 2a 03")},
        {"InvalidityDate",
         holds_octets<CExtInvalidityDate>("18 0f 32 30 32 34 30 31 30 31 31 32 33 30 34 35 5a")},
        {"CertificateIssuer", holds_octets<CExtCertificateIssuer>("30 03 82 01 61")},
        {"PrivateKeyUsagePeriod", holds_octets<CExtPrivateKeyUsagePeriod>(kPeriod)},

        {"NameFromText", makes([] { (void)some_name(); })},
        {"NameAsText", uses(some_name, [](const CName& name) { (void)name.toString(); })},
        {"GeneralNameTakesText",
         changes([] { return authority_name(); },
                 [](CGeneralName& name) { name.put_rfc822Name(L"someone@tsa.example"); })},
        {"GeneralNameTakesAddress",
         changes([] { return authority_name(); },
                 [](CGeneralName& name) { name.put_iPAddress(blob("7f 00 00 01")); })},
        {"GeneralNameAsText",
         uses([] { return authority_name(); }, [](const CGeneralName& name) { (void)name.toString(); })},
        {"CertificateIdentifierTakesIssuer", changes(some_certificate_identifier,
                                                     [](CESSCertIDv2& identifier) {
                                                         const CIssuerSerial issuer(some_names(),
                                                                                    number("06"));
                                                         identifier.put_issuerSerial(&issuer);
                                                     })},
        {"AttributeTakesValue", changes([] { return some_attributes().front(); },
                                        [](CAttribute& attribute) { attribute.add(blob("05 00")); })},
        {"ExtensionsTakeOneMore",
         changes(some_extensions, [](CExtensions& list) { list.insert(other_extensions().back()); })},
        {"ExtensionsTakeAnotherValue",
         changes(some_extensions,
                 [](CExtensions& list) { list.insert(CExtension(CExtValue("1.2.5", blob("04 00")))); })},
        {"InformationTakesOneMore", changes([] { return CInfoTypeAndValueList{CInfoTypeAndValue("1.2.3")}; },
                                            [](CInfoTypeAndValueList& list) {
                                                list.insert(CInfoTypeAndValue("1.2.4", blob("05 00")));
                                            })},
        {"TextInALanguage", makes([] { (void)some_text(); })},
        {"TextTakesAnotherLanguage",
         [](Trial& trial) {
             CPKIFreeText text = some_text();
             const CPKIFreeTextString other(L"ein anderer Text, auch kein kurzer", CLanguageTag("de-de"));
             const bool done = trial.call([&] { text.insert(other); });
             EXPECT_EQ(text.size(), done ? 2u : 1u);
         }},
        {"StatusTakesText", changes(rejection,
                                    [](CPKIStatusInfo& status) {
                                        const CPKIFreeText text = some_text();
                                        status.put_statusString(text);
                                    })},
        {"LanguageTagFromWideText", makes([] { (void)CLanguageTag(L"sl-rozaj-biske-1994").tostring(); })},
        {"ObjectIdText", makes([] { (void)toOID(toASN1OBJID("1.3.6.1.4.1.99999.1.2.3.4.5.6.7.8.9")); })},
        {"OctetString",
         [](Trial& trial) {
             trial.call([] { (void)toOctetString(blob("01 02")); });
             trial.call([] { (void)fromOctetString(blob("04 02 01 02")); });
         }},
        {"NumberAddsNumber",
         [](Trial& trial) {
             CBigInteger sum = number("05");
             trial.call([&] { sum++; });
             EXPECT_TRUE(sum == number("05") || sum == number("06"));
         }},
        {"TextAsUtf8", is_character_string(StringTypeUTF8)},
        {"TextAsPrintable", is_character_string(StringTypePrintable)},
        {"TextAsTeletex", is_character_string(StringTypeTeletex)},
        {"TextAsBmp", is_character_string(StringTypeBMP)},
        {"TextAsIa5", is_character_string(StringTypeIA5)},
        {"TextAsUniversal", is_character_string(StringTypeUniversal)},
        {"TextNarrowedAndWidened",
         [](Trial& trial) {
             trial.call([] { (void)tostring(L"a text that is no short one"); });
             trial.call([] { (void)towstring("a text that is no short one"); });
         }},
    };
}

}  // namespace Quillmark::test
