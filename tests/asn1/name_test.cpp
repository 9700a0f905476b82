#include "asn1/name.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

struct RowCase {
    const CATAVRegister& row;
    const char* oid;
    const wchar_t* name;
    StringType type;
};

TEST(NameRegister, HasItsRowsInOrder) {
    const RowCase rows[] = {
        {commonNameAttribute, "2.5.4.3", L"CN", StringTypeUTF8},
        {countryNameAttribute, "2.5.4.6", L"C", StringTypePrintable},
        {localityNameAttribute, "2.5.4.7", L"L", StringTypeUTF8},
        {stateOrProvinceNameAttribute, "2.5.4.8", L"ST", StringTypeUTF8},
        {emailAddressAttribute, "1.2.840.113549.1.9.1", L"E", StringTypeIA5},
        {organizationNameAttribute, "2.5.4.10", L"O", StringTypeUTF8},
        {organizationUnitNameAttribute, "2.5.4.11", L"OU", StringTypeUTF8},
        {titleAttribute, "2.5.4.12", L"T", StringTypeUTF8},
        {givenNameAttribute, "2.5.4.42", L"GN", StringTypeUTF8},
        {initialsAttribute, "2.5.4.43", L"I", StringTypeUTF8},
        {surnameAttribute, "2.5.4.4", L"SN", StringTypeUTF8},
        {pseudonymAttribute, "2.5.4.65", L"PS", StringTypeUTF8},
        {ogrnAttribute, "1.2.643.100.1", L"OGRN", StringTypeUTF8},
        {ogrnipAttribute, "1.2.643.100.5", L"OGRNIP", StringTypeUTF8},
        {snilsAttribute, "1.2.643.100.3", L"SNILS", StringTypeUTF8},
        {innleAttribute, "1.2.643.100.4", L"INNLE", StringTypeUTF8},
        {innAttribute, "1.2.643.3.131.1.1", L"INN", StringTypeUTF8},
        {streetAddressAttribute, "2.5.4.9", L"STREET", StringTypeUTF8},
        {domainComponentAttribute, "0.9.2342.19200300.100.1.25", L"DC", StringTypeIA5},
        {unstructuredNameAttribute, "1.2.840.113549.1.9.2", L"UnstructuredName", StringTypeUTF8},
        {PostalCodeAttribute, "2.5.4.17", L"PostalCode", StringTypeUTF8},
        {serialNumberAttribute, "2.5.4.5", L"SERIALNUMBER", StringTypePrintable},
    };
    CATAVRegister::const_iterator registered = CATAVRegister::registered().begin();
    for (const RowCase& want : rows) {
        EXPECT_EQ(&want.row, &*registered);
        EXPECT_STREQ(registered->get_oid(), want.oid);
        EXPECT_STREQ(registered->get_name(), want.name);
        EXPECT_EQ(registered->get_type(), want.type);
        EXPECT_EQ(registered->get_maxLength(), 32768u);
        ++registered;
    }
}

TEST(NameRegister, FindsExactly) {
    EXPECT_STREQ(CATAVRegister::find(L"CN")->get_oid(), "2.5.4.3");
    EXPECT_EQ(CATAVRegister::find(L"cn"), CATAVRegister::registered().end());
    EXPECT_STREQ(CATAVRegister::find("2.5.4.3")->get_name(), L"CN");
    EXPECT_EQ(CATAVRegister::find("2.5.4"), CATAVRegister::registered().end());
}

TEST(NameRegister, TakesFurtherRows) {
    const CATAVRegister row("1.2.3.4.5.6.7", L"TESTROW", StringTypeBMP, 3);
    const CATAVRegister::const_iterator registered = CATAVRegister::find(L"TESTROW");
    ASSERT_NE(registered, CATAVRegister::registered().end());
    EXPECT_NE(&*registered, &row);
    EXPECT_EQ(hex(CATAVRegister::valueFromStr("1.2.3.4.5.6.7", L"AB", StringTypeDefault)),
              "1e 04 00 41 00 42");
    EXPECT_CODE(E_INVALIDARG, CATAVRegister::valueFromStr("1.2.3.4.5.6.7", L"ABCD", StringTypeDefault));
}

TEST(NameRegister, NamesTypes) {
    EXPECT_EQ(CATAVRegister::typeToStr("2.5.4.10"), L"O");
    EXPECT_EQ(CATAVRegister::typeToStr("1.2.3"), L"1.2.3");
    EXPECT_EQ(CATAVRegister::typeFromStr(L"O"), "2.5.4.10");
    EXPECT_EQ(CATAVRegister::typeFromStr(L"1.2.3"), "1.2.3");
    EXPECT_EQ(CATAVRegister::typeFromStr(L"o"), "o");  // Intended: taken as an OID, untested
}

TEST(NameRegister, ReadsValues) {
    EXPECT_EQ(CATAVRegister::valueToStr("2.5.4.3", blob("1e 02 00 41")), L"A");
    EXPECT_EQ(CATAVRegister::valueToStr("1.2.3", blob("0c 01 4a")), L"#0C014A");
    EXPECT_EQ(CATAVRegister::valueToStr("1.2.3", CBlob()), L"#");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CATAVRegister::valueToStr("2.5.4.3", blob("02 01 05")));
}

TEST(NameRegister, WritesValuesInTheRegisteredKind) {
    EXPECT_EQ(hex(CATAVRegister::valueFromStr("2.5.4.6", L"RU", StringTypeDefault)), "13 02 52 55");
    EXPECT_EQ(hex(CATAVRegister::valueFromStr("2.5.4.6", L"RU", StringTypeUTF8)), "0c 02 52 55");
}

TEST(NameRegister, HasALongestText) {
    const std::wstring longest(32768, L'a');
    EXPECT_NO_THROW(CATAVRegister::valueFromStr("2.5.4.3", longest.c_str(), StringTypeDefault));
    const std::wstring longer(32769, L'a');
    EXPECT_CODE(E_INVALIDARG, CATAVRegister::valueFromStr("2.5.4.3", longer.c_str(), StringTypeDefault));
}

TEST(NameRegister, DropsFirstCharacterUnderUnregisteredOid) {
    EXPECT_EQ(hex(CATAVRegister::valueFromStr("1.2.3", L"#0C0141", StringTypeDefault)), "0c 01 41");
    EXPECT_EQ(hex(CATAVRegister::valueFromStr("1.2.3", L"00C0141", StringTypeDefault)),
              "0c 01 41");  // Intended
    EXPECT_EQ(hex(CATAVRegister::valueFromStr("1.2.3", L"#", StringTypeDefault)), "");
    EXPECT_THROW(CATAVRegister::valueFromStr("1.2.3", L"", StringTypeDefault), std::out_of_range);
}

TEST(AttributeTypeAndValue, SplitsAtTheFirstEqualsSign) {
    const CAttributeTypeAndValue member(L"CN= a=b ", StringTypeDefault);
    EXPECT_STREQ(member.get_type(), "2.5.4.3");
    EXPECT_EQ(member.get_value_str(), L" a=b ");
    EXPECT_EQ(member.get_type_str(), L"CN");
    EXPECT_EQ(member.toString(), L"CN= a=b ");
}

TEST(AttributeTypeAndValue, NeedsAnEqualsSign) {
    EXPECT_CODE(E_INVALIDARG, CAttributeTypeAndValue(L"CN", StringTypeDefault));
    EXPECT_CODE(E_INVALIDARG, CAttributeTypeAndValue(L"", StringTypeDefault));
}

TEST(AttributeTypeAndValue, TakesTheKindInItsConstructors) {
    EXPECT_EQ(hex(CAttributeTypeAndValue(L"CN=A", StringTypeBMP).get_value()), "1e 02 00 41");
    EXPECT_EQ(hex(CAttributeTypeAndValue(L"CN", L"A", StringTypeTeletex).get_value()), "14 01 41");
}

TEST(AttributeTypeAndValue, IgnoresTheKindInFromString) {
    // Intended: the registered kind wins.
    CAttributeTypeAndValue member;
    member.fromString(L"CN=A", StringTypeBMP);
    EXPECT_EQ(hex(member.get_value()), "0c 01 41");
}

TEST(AttributeTypeAndValue, PutsTypeAndValue) {
    CAttributeTypeAndValue member(CAttrValue("1.2.3", blob("05 00")));
    member.put_type_str(L"O");
    EXPECT_STREQ(member.get_type(), "2.5.4.10");
    member.put_value_str(L"A", StringTypeBMP);
    EXPECT_EQ(hex(member.get_value()), "1e 02 00 41");
    member.put_value_str(L"A", StringTypeDefault);
    EXPECT_EQ(hex(member.get_value()), "0c 01 41");
    member.put_type("1.2.3");
    member.put_value(blob("05 00"));
    EXPECT_EQ(member, CAttributeTypeAndValue("1.2.3", blob("05 00")));
    EXPECT_NE(member, CAttributeTypeAndValue("1.2.3", blob("05")));
    EXPECT_NE(member, CAttributeTypeAndValue("1.2.4", blob("05 00")));
}

TEST(AttributeTypeAndValue, GoesBothWays) {
    const CAttributeTypeAndValue member(L"CN=A", StringTypeDefault);
    EXPECT_EQ(hex(member.encode()), "30 08 06 03 55 04 03 0c 01 41");
    CAttributeTypeAndValue read;
    read.decode(member.encode());
    EXPECT_EQ(read, member);
}

TEST(AttributeTypeAndValue, IsRefusedInAnotherKindThanItsTypeHas) {
    // Intended: found when encoding. A country may be written in any kind, an address in IA5 alone.
    EXPECT_EQ(hex(CAttributeTypeAndValue(L"C=RU", StringTypeUTF8).encode()),
              "30 09 06 03 55 04 06 0c 02 52 55");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttributeTypeAndValue(L"E=a@b", StringTypeUTF8).encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttributeTypeAndValue(L"DC=a", StringTypePrintable).encode());
    EXPECT_NO_THROW(CAttributeTypeAndValue(L"DC=a", StringTypeDefault).encode());
}

TEST(AttributeTypeAndValue, ReportsBadInput) {
    EXPECT_CODE(E_INVALIDARG, CAttributeTypeAndValue("x", blob("0c 01 41")).encode());
    CAttributeTypeAndValue member("1.2.3", blob("05 00"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, member.decode(blob("30 05 06 03 55 04 03")));
    EXPECT_EQ(member, CAttributeTypeAndValue("1.2.3", blob("05 00")));
}

TEST(AttributeTypeAndValueSet, ComparesInOrder) {
    const CAttributeTypeAndValue a(L"CN=A", StringTypeDefault);
    const CAttributeTypeAndValue b(L"SN=B", StringTypeDefault);
    EXPECT_EQ((CAttributeTypeAndValueSet{a, b}), (CAttributeTypeAndValueSet{a, b}));
    EXPECT_NE((CAttributeTypeAndValueSet{a, b}), (CAttributeTypeAndValueSet{b, a}));
    EXPECT_TRUE(CRelativeDistinguishedName(L"CN=A+SN=B") == CRelativeDistinguishedName(L"CN=A+SN=B"));
    EXPECT_FALSE(CRelativeDistinguishedName(L"CN=A+SN=B") == CRelativeDistinguishedName(L"SN=B+CN=A"));
}

TEST(RelativeDistinguishedName, SplitsAtPlusSigns) {
    const CRelativeDistinguishedName element(L"CN=A+SN=B");
    EXPECT_EQ(element.size(), 2u);
    EXPECT_EQ(element.toString(), L"CN=A+SN=B");
    EXPECT_EQ(CRelativeDistinguishedName().toString(), L"");
}

TEST(RelativeDistinguishedName, IsSortedWhenEncoded) {
    EXPECT_EQ(hex(CRelativeDistinguishedName(L"SN=B+CN=A").encode()),
              "31 14 30 08 06 03 55 04 03 0c 01 41 30 08 06 03 55 04 04 0c 01 42");
}

TEST(RelativeDistinguishedName, ReadsInTheOrderOfTheWire) {
    CRelativeDistinguishedName element(L"O=Old");
    element.decode(blob("31 14 30 08 06 03 55 04 04 0c 01 42 30 08 06 03 55 04 03 0c 01 41"));
    EXPECT_EQ(element.toString(), L"SN=B+CN=A");
}

TEST(RelativeDistinguishedName, AppendsText) {
    CRelativeDistinguishedName element(L"CN=A");
    fromString(element, reinterpret_cast<const unsigned short*>(L"SN=B"));
    EXPECT_EQ(element.toString(), L"CN=A+SN=B");
    EXPECT_CODE(E_INVALIDARG, element.fromString(L""));
}

TEST(Name, GoesThroughText) {
    const CName name(L"CN=Alpha,O=Org");
    EXPECT_EQ(name.size(), 2u);
    EXPECT_EQ(name.toString(), L"CN=Alpha,O=Org");
    EXPECT_EQ(CName().toString(), L"");
}

TEST(Name, HoldsElementsOfSeveralMembers) {
    const CName name(L"CN=A+SN=B");
    ASSERT_EQ(name.size(), 1u);
    EXPECT_EQ(name.front().size(), 2u);
}

TEST(Name, KeepsDerOfUnregisteredTypes) {
    const CName name(L"1.2.3.4=#0C0141");
    EXPECT_EQ(hex(name.front().front().get_value()), "0c 01 41");
    EXPECT_EQ(name.toString(), L"1.2.3.4=#0C0141");
}

TEST(Name, HasNoQuoting) {
    // Intended: a comma always splits.
    EXPECT_CODE(E_INVALIDARG, CName(L"CN=a,b"));
    EXPECT_EQ(CName(L"CN=\"a,O=b\"").size(), 2u);
    EXPECT_CODE(E_INVALIDARG, CName(L""));
    EXPECT_CODE(E_INVALIDARG, CName(L"CN=a,"));
}

TEST(Name, KeepsBlanks) {
    EXPECT_EQ(CName(L"CN= a ,O=b").toString(), L"CN= a ,O=b");
    EXPECT_CODE(E_INVALIDARG, CName(L"CN=a, O=b").encode());  // Intended: " O" is taken as an OID
}

TEST(Name, AppendsText) {
    CName name(L"CN=A,O=B");
    name.fromString(L"CN=A,O=B");
    EXPECT_EQ(name.toString(), L"CN=A,O=B,CN=A,O=B");
    fromString(name, reinterpret_cast<const unsigned short*>(L"C=RU"));
    EXPECT_EQ(name.size(), 5u);
}

TEST(Name, WritesEachTypeInItsKind) {
    EXPECT_EQ(hex(CName(L"C=RU,E=a@b,CN=A").encode()),
              "30 2d "
              "31 0b 30 09 06 03 55 04 06 13 02 52 55 "
              "31 12 30 10 06 09 2a 86 48 86 f7 0d 01 09 01 16 03 61 40 62 "
              "31 0a 30 08 06 03 55 04 03 0c 01 41");
}

TEST(Name, ReplacesItsElementsWhenDecoding) {
    CName name(L"O=Old,C=RU");
    name.decode(blob("30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41"));
    EXPECT_EQ(name.toString(), L"CN=A");
    name.decode(blob("30 00"));
    EXPECT_TRUE(name.empty());
    EXPECT_EQ(hex(name.encode()), "30 00");
}

TEST(Name, KeepsValueWhenDecodingFails) {
    CName name(L"CN=A");
    for (const char* bad : {"", "31 00", "30 02 31 00", "30 02 05 00", "30 05 31"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.decode(blob(bad)));
    }
    EXPECT_EQ(name.toString(), L"CN=A");
}

TEST(Name, RefusesNonStringAtToString) {
    CName name;
    name.decode(blob("30 0c 31 0a 30 08 06 03 55 04 0d 02 01 05"));
    EXPECT_EQ(name.toString(), L"2.5.4.13=#020105");
    CAttributeTypeAndValue member("2.5.4.3", blob("02 01 05"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, member.toString());
}

TEST(NameRecord, TakesAndGivesDer) {
    const CBlob der = blob("30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41");
    CBlob read;
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_Name record;
        ASN1T_Name_traits::set(buffer.getCtxtPtr(), record, der);
        ASN1T_Name_traits::get(record, read);
    }
    EXPECT_EQ(read, der);
}

TEST(NameRecord, LeavesTheMessageOfItsContextAlone) {
    ASN1BEREncodeBuffer buffer;
    const ASN1BUFFER before = buffer.getCtxtPtr()->buffer;
    asn1data::ASN1T_Name record;
    ASN1T_Name_traits::set(buffer.getCtxtPtr(), record, blob("30 00"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1T_Name_traits::set(buffer.getCtxtPtr(), record, blob("05 00")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1T_Name_traits::set(buffer.getCtxtPtr(), record, CBlob()));
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.data, before.data);
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.byteIndex, before.byteIndex);
}

}  // namespace
}  // namespace Quillmark::ASN1
