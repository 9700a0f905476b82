#include "asn1/attribute.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "asn1/name.h"
#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::blob_of;
using test::hex;
using test::text_element;

constexpr const char* kSigningTime = "1.2.840.113549.1.9.5";

CAttribute attribute(const char* oid, std::initializer_list<const char*> values) {
    CAttribute made(oid);
    for (const char* value : values) {
        made.add(blob(value));
    }
    return made;
}

TEST(AttrValue, ComparesOidAndOctets) {
    EXPECT_EQ(CAttrValue("1.2.3", blob("05 00")), CAttrValue("1.2.3", blob("05 00")));
    EXPECT_NE(CAttrValue("1.2.3", blob("05 00")), CAttrValue("1.2.4", blob("05 00")));
    EXPECT_NE(CAttrValue("1.2.3", blob("05 00")), CAttrValue("1.2.3"));
    EXPECT_STREQ(CAttrValue().get_oid(), "");
}

TEST(AttrValue, LendsItsValue) {
    CAttrValue value("1.2.3");
    value.value() = blob("05 00");
    EXPECT_EQ(hex(value.get_value()), "05 00");
}

TEST(Attribute, StartsEmpty) {
    const CAttribute empty;
    EXPECT_STREQ(empty.get_oid(), "");
    EXPECT_EQ(empty.size(), 0u);
    EXPECT_EQ(empty.begin(), empty.end());
}

TEST(Attribute, AddsValuesUnderItsOid) {
    const CAttribute made = attribute("1.2.3", {"05 00"});
    EXPECT_EQ(made.size(), 1u);
    EXPECT_STREQ(made.begin()->get_oid(), "1.2.3");
}

TEST(Attribute, KeepsForeignOidOfAValueToItself) {
    CAttribute made("1.2.3");
    made.add(CAttrValue("1.2.4", blob("05 00")));
    EXPECT_STREQ(made.begin()->get_oid(), "1.2.4");
    EXPECT_EQ(hex(made.encode()), "30 08 06 02 2a 03 31 02 05 00");  // Intended: the attribute's own
}

TEST(Attribute, LendsItsValues) {
    CAttribute attribute("1.2.3");
    attribute.add(blob("05 00"));
    attribute.add(blob("02 01 01"));
    for (CAttrValue& each : attribute) {
        each.value() = blob("02 01 07");
    }
    EXPECT_EQ(hex(attribute.encode()), "30 0c 06 02 2a 03 31 06 02 01 07 02 01 07");
}

TEST(Attribute, ErasesAValue) {
    CAttribute made = attribute("1.2.3", {"05 00", "01 01 ff"});
    made.erase(made.begin());
    EXPECT_EQ(made, attribute("1.2.3", {"01 01 ff"}));
}

TEST(Attribute, IsCopiedDeeply) {
    CAttribute made = attribute("1.2.3", {"05 00"});
    CAttribute copy(made);
    made.begin()->value() = blob("01 01 ff");
    EXPECT_EQ(copy, attribute("1.2.3", {"05 00"}));
    copy = made;
    EXPECT_EQ(copy, attribute("1.2.3", {"01 01 ff"}));
    copy = *&copy;
    EXPECT_EQ(copy, made);
}

TEST(Attribute, ComparesValuesInOrder) {
    EXPECT_EQ(attribute("1.2.3", {"05 00", "01 01 ff"}), attribute("1.2.3", {"05 00", "01 01 ff"}));
    EXPECT_NE(attribute("1.2.3", {"05 00", "01 01 ff"}), attribute("1.2.3", {"01 01 ff", "05 00"}));
    EXPECT_NE(attribute("1.2.3", {"05 00"}), attribute("1.2.3", {"05 00", "05 00"}));
    EXPECT_NE(attribute("1.2.3", {"05 00"}), attribute("1.2.4", {"05 00"}));
}

TEST(Attribute, WritesAnEmptySet) {
    EXPECT_EQ(hex(attribute("1.2.3", {}).encode()), "30 06 06 02 2a 03 31 00");
}

TEST(Attribute, SortsItsValues) {
    EXPECT_EQ(hex(attribute("1.2.3", {"05 00", "01 01 ff"}).encode()),
              "30 0b 06 02 2a 03 31 05 01 01 ff 05 00");
}

TEST(Attribute, ReadsInTheOrderOfTheWire) {
    CAttribute made = attribute("1.2.9", {"05 00"});
    made.decode(blob("30 0b 06 02 2a 03 31 05 05 00 01 01 ff"));
    EXPECT_EQ(made, attribute("1.2.3", {"05 00", "01 01 ff"}));
}

TEST(Attribute, RefusesKnownOidWithWrongValue) {
    // Intended: found when encoding, not by the receiver.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, attribute(kSigningTime, {"02 01 05"}).encode());
    EXPECT_NO_THROW(attribute("1.2.3", {"02 01 05"}).encode());
    const CBlob time = blob_of(text_element(0x17, "240229120001Z"));
    CAttribute known(kSigningTime);
    known.add(time);
    CAttribute read;
    read.decode(known.encode());
    EXPECT_EQ(read, known);
}

TEST(Attribute, ReportsBadOid) {
    EXPECT_CODE(E_INVALIDARG, attribute("1.2.", {"05 00"}).encode());
}

TEST(Attribute, KeepsValueWhenDecodingFails) {
    CAttribute made = attribute("1.2.3", {"05 00"});
    for (const char* bad : {"", "30 00", "30 04 06 02 2a 03", "30 06 06 02 2a 03 30 00", "31 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, made.decode(blob(bad)));
    }
    EXPECT_EQ(made, attribute("1.2.3", {"05 00"}));
}

TEST(Attributes, FindAndEraseTheFirst) {
    CAttributes list{attribute("1.2.3", {"05 00"}), attribute("1.2.4", {"05 00"}),
                     attribute("1.2.3", {"01 01 ff"})};
    const CAttributes& lent = list;
    EXPECT_EQ(list.find("1.2.4"), std::next(list.begin()));
    EXPECT_EQ(lent.find("1.2.4"), std::next(lent.begin()));
    EXPECT_EQ(list.find("1.2.5"), list.end());
    list.erase("1.2.3");
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list.back(), attribute("1.2.3", {"01 01 ff"}));
}

TEST(Attributes, EraseNothingForAnUnknownOid) {
    CAttributes list{attribute("1.2.3", {"05 00"})};
    list.erase("1.2.4");
    EXPECT_EQ(list.size(), 1u);
}

TEST(Attributes, AreASortedSet) {
    const CAttributes list{attribute("1.2.4", {"05 00"}), attribute("1.2.3", {"05 00"})};
    EXPECT_EQ(hex(list.encode()), "31 14 30 08 06 02 2a 03 31 02 05 00 30 08 06 02 2a 04 31 02 05 00");
}

TEST(Attributes, ReadInTheOrderOfTheWire) {
    CAttributes list{attribute("1.2.9", {})};
    list.decode(blob("31 14 30 08 06 02 2a 04 31 02 05 00 30 08 06 02 2a 03 31 02 05 00"));
    EXPECT_EQ(list, (CAttributes{attribute("1.2.4", {"05 00"}), attribute("1.2.3", {"05 00"})}));
}

TEST(Attributes, KeepAttributesOfTheSameOid) {
    const CAttributes list{attribute("1.2.3", {"05 00"}), attribute("1.2.3", {"05 00"})};
    CAttributes read;
    read.decode(list.encode());
    EXPECT_EQ(read, list);
}

TEST(Attributes, RefuseKnownOidWithWrongValue) {
    // Intended: found when encoding, not by the receiver.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, (CAttributes{attribute(kSigningTime, {"02 01 05"})}.encode()));
}

TEST(Attributes, MayBeEmpty) {
    CAttributes list;
    EXPECT_EQ(hex(list.encode()), "31 00");
    // Intended: fewer than two octets end a set in the indefinite form too.
    for (const char* empty : {"31 00", "31 80 00 00", "31 80", "31 80 00"}) {
        list.push_back(attribute("1.2.3", {}));
        list.decode(blob(empty));
        EXPECT_TRUE(list.empty());
    }
}

TEST(Attributes, KeepValueWhenDecodingFails) {
    CAttributes list{attribute("1.2.3", {"05 00"})};
    for (const char* bad : {"", "30 00", "31 02 05 00", "31 80 05 00", "31 05 30"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, list.decode(blob(bad)));
    }
    EXPECT_EQ(list.size(), 1u);
}

TEST(AttrContentType, IsAnObjectIdentifier) {
    const CAttrContentType value("1.2.840.113549.1.7.1");
    EXPECT_STREQ(value.get_oid(), "1.2.840.113549.1.9.3");
    EXPECT_EQ(hex(value.get_value()), "06 09 2a 86 48 86 f7 0d 01 07 01");
    EXPECT_STREQ(CAttrContentType(value.get_value()).get_contentType(), "1.2.840.113549.1.7.1");
}

TEST(AttrContentType, LeavesMemberAndOctetsApartWhenPutFails) {
    CAttrContentType value("1.2.3");
    EXPECT_CODE(E_INVALIDARG, value.put_contentType("1."));
    EXPECT_STREQ(value.get_contentType(), "1.");  // Intended: the member is new, the octets old
    EXPECT_EQ(hex(value.get_value()), "06 02 2a 03");
    value.put_contentType("1.2.4");
    EXPECT_EQ(hex(value.get_value()), "06 02 2a 04");
}

TEST(AttrContentType, RefusesBadInput) {
    EXPECT_CODE(E_INVALIDARG, CAttrContentType("x"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttrContentType(blob("02 01 05")));
}

TEST(AttrMessageDigest, IsAnOctetString) {
    CAttrMessageDigest value;
    EXPECT_STREQ(value.get_oid(), "1.2.840.113549.1.9.4");
    EXPECT_EQ(value.get_value().cbData(), 0u);
    value.put_messageDigest(blob("01 02"));
    EXPECT_EQ(hex(value.get_value()), "04 02 01 02");
}

TEST(AttrMessageDigest, TakesTheDerAndGivesTheDigest) {
    const CBlob digest(32UL);
    const CAttrMessageDigest value(toOctetString(digest));
    EXPECT_EQ(value.get_messageDigest(), digest);
    EXPECT_EQ(value.get_messageDigest().cbData(), 32u);
    EXPECT_EQ(value.get_value().cbData(), 34u);
}

TEST(AttrMessageDigest, RefusesBadInput) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttrMessageDigest(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttrMessageDigest(blob("02 01 05")));
}

TEST(AttrSigningTime, IsUTCTimeThrough2049) {
    const CAttrSigningTime value(CDateTime(2049, 12, 31, 23, 59, 59, 0, 0));
    EXPECT_STREQ(value.get_oid(), kSigningTime);
    EXPECT_EQ(value.get_value(), blob_of(text_element(0x17, "491231235959Z")));
    EXPECT_EQ(CAttrSigningTime(value.get_value()).get_time(), value.get_time());
}

TEST(AttrSigningTime, IsGeneralizedTimeFrom2050) {
    CAttrSigningTime value(CDateTime(2024, 1, 1, 0, 0, 0, 0, 0));
    value.put_time(CDateTime(2050, 1, 1, 0, 0, 0, 0, 0));
    EXPECT_EQ(value.get_value(), blob_of(text_element(0x18, "20500101000000Z")));
}

TEST(AttrSigningTime, IsCopiedDeeply) {
    CAttrSigningTime value(CDateTime(2024, 1, 1, 0, 0, 0, 0, 0));
    const CAttrSigningTime copy(value);
    value.put_time(CDateTime(2025, 1, 1, 0, 0, 0, 0, 0));
    EXPECT_EQ(copy.get_time(), CDateTime(2024, 1, 1, 0, 0, 0, 0, 0));
    value = copy;
    EXPECT_EQ(value.get_time(), copy.get_time());
    EXPECT_EQ(value, copy);
}

TEST(AttrSigningTime, RefusesBadInput) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttrSigningTime(blob("02 01 05")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttrSigningTime(CBlob()));
}

struct NameAttributeCase {
    const char* name;
    CAttrStringValue (*make)(const char*);
    const char* oid;
    std::uint8_t tag;
};

void PrintTo(const NameAttributeCase& row, std::ostream* out) {
    *out << row.name;
}

template <class Value>
CAttrStringValue make(const char* text) {
    return Value(text);
}

class NameAttribute : public testing::TestWithParam<NameAttributeCase> {};

TEST_P(NameAttribute, IsWrittenInItsKind) {
    const CAttrStringValue value = GetParam().make("Ab");
    EXPECT_STREQ(value.get_oid(), GetParam().oid);
    EXPECT_EQ(value.get_value(), blob_of(text_element(GetParam().tag, "Ab")));
}

constexpr NameAttributeCase kNameAttributes[] = {
    {.name = "CommonName", .make = make<CAttrCommonName>, .oid = "2.5.4.3", .tag = 0x0C},
    {.name = "Surname", .make = make<CAttrSurname>, .oid = "2.5.4.4", .tag = 0x0C},
    {.name = "SerialNumber", .make = make<CAttrSerialNumber>, .oid = "2.5.4.5", .tag = 0x13},
    {.name = "Country", .make = make<CAttrCountry>, .oid = "2.5.4.6", .tag = 0x13},
    {.name = "Locality", .make = make<CAttrLocality>, .oid = "2.5.4.7", .tag = 0x0C},
    {.name = "StateOrProvinceName", .make = make<CAttrStateOrProvinceName>, .oid = "2.5.4.8", .tag = 0x0C},
    {.name = "OrganizationName", .make = make<CAttrOrganizationName>, .oid = "2.5.4.10", .tag = 0x0C},
    {.name = "OrganizationalUnitName",
     .make = make<CAttrOrganizationalUnitName>,
     .oid = "2.5.4.11",
     .tag = 0x0C},
    {.name = "Title", .make = make<CAttrTitle>, .oid = "2.5.4.12", .tag = 0x0C},
    {.name = "GivenName", .make = make<CAttrGivenName>, .oid = "2.5.4.42", .tag = 0x0C},
    {.name = "Initials", .make = make<CAttrInitials>, .oid = "2.5.4.43", .tag = 0x0C},
    {.name = "Pseudonym", .make = make<CAttrPseudonym>, .oid = "2.5.4.65", .tag = 0x0C},
    {.name = "EmailAddress", .make = make<CAttrEmailAddress>, .oid = "1.2.840.113549.1.9.1", .tag = 0x16},
};

INSTANTIATE_TEST_SUITE_P(Rfc5280, NameAttribute, testing::ValuesIn(kNameAttributes), test::case_name);

TEST(AttrStringValue, TakesWideText) {
    EXPECT_EQ(hex(CAttrStringValue("2.5.4.3", L"\u0416").get_value()), "0c 02 d0 96");
}

TEST(AttrStringValue, HasALongestText) {
    EXPECT_NO_THROW(CAttrCommonName(std::string(32768, 'a').c_str()));
    EXPECT_CODE(E_INVALIDARG, CAttrCommonName(std::string(32769, 'a').c_str()));
}

TEST(AttrStringValue, ReadsHexadecimalDigitsUnderUnregisteredOid) {
    EXPECT_EQ(hex(CAttrStringValue("1.2.3", "#0C0141").get_value()), "0c 01 41");
    EXPECT_THROW(CAttrStringValue("1.2.3", ""), std::out_of_range);
}

TEST(AttrStringValue, TakesNullForTheEmptyText) {
    EXPECT_EQ(hex(CAttrStringValue("2.5.4.3", static_cast<const char*>(nullptr)).get_value()), "0c 00");
    EXPECT_EQ(hex(CAttrStringValue("2.5.4.3", static_cast<const wchar_t*>(nullptr)).get_value()), "0c 00");
}

TEST(AttributeRecord, IsCopiedDeeply) {
    const CAttribute made = attribute("1.2.3", {"05 00", "01 01 ff"});
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_Attribute target;
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_Attribute source;
        ASN1T_Attribute_traits::set(buffer.getCtxtPtr(), source, made);
        ASN1T_Attribute_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CAttribute read;
    ASN1T_Attribute_traits::get(target, read);
    EXPECT_EQ(read, made);
}

TEST(AttributesRecord, IsCopiedDeeply) {
    const CAttributes made{attribute("1.2.4", {"05 00"}), attribute("1.2.3", {})};
    ASN1BERDecodeBuffer target_buffer;
    ASN1TSeqOfList target{};
    {
        ASN1BERDecodeBuffer buffer;
        ASN1TSeqOfList source{};
        ASN1T_Attributes_traits::set(buffer.getCtxtPtr(), source, made);
        ASN1T_Attributes_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CAttributes read;
    ASN1T_Attributes_traits::get(target, read);
    EXPECT_EQ(read, made);  // in the order given: it is the encoder that sorts
}

}  // namespace
}  // namespace Quillmark::ASN1
