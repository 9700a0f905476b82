#include "asn1/general_name.h"

#include <gtest/gtest.h>

#include "asn1/name.h"
#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

// CN=A with the value as UTF8String.
constexpr const char* kName = "30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41";

CGeneralName dns(const wchar_t* text) {
    CGeneralName name;
    name.put_dNSName(text);
    return name;
}

CGeneralName directory(const char* der) {
    CGeneralName name;
    name.put_directoryName(blob(der));
    return name;
}

TEST(GeneralName, StartsWithoutAForm) {
    const CGeneralName name;
    EXPECT_EQ(name.get_type(), 0u);
    EXPECT_EQ(name.get_rfc822Name(), nullptr);
    EXPECT_EQ(name.get_dNSName(), nullptr);
    EXPECT_EQ(name.get_directoryName(), nullptr);
    EXPECT_EQ(name.get_uniformResourceIdentifier(), nullptr);
    EXPECT_EQ(name.get_iPAddress(), nullptr);
    EXPECT_EQ(name.get_registeredID(), nullptr);
    EXPECT_EQ(name.toString(), L"");
}

TEST(GeneralName, ChangesItsForm) {
    CGeneralName name;
    name.put_rfc822Name(L"a@b");
    EXPECT_EQ(name.get_type(), 2u);
    EXPECT_STREQ(name.get_rfc822Name(), L"a@b");
    name.put_dNSName(L"a.example");
    EXPECT_EQ(name.get_type(), 3u);
    EXPECT_EQ(name.get_rfc822Name(), nullptr);
    EXPECT_STREQ(name.get_dNSName(), L"a.example");
}

TEST(GeneralName, TakesTextOfItsOwn) {
    CGeneralName name = dns(L"a.example");
    name.put_rfc822Name(name.get_dNSName());
    EXPECT_STREQ(name.get_rfc822Name(), L"a.example");
    name.put_iPAddress(blob("7f 00 00 01"));
    name.put_iPAddress(*name.get_iPAddress());
    EXPECT_EQ(hex(*name.get_iPAddress()), "7f 00 00 01");
}

TEST(GeneralName, RefusesNullText) {
    CGeneralName name = dns(L"a.example");
    EXPECT_CODE(E_INVALIDARG, name.put_rfc822Name(nullptr));
    EXPECT_STREQ(name.get_dNSName(), L"a.example");
}

TEST(GeneralName, IsCopiedDeeply) {
    CGeneralName name = dns(L"a.example");
    const CGeneralName copy(name);
    name.put_dNSName(L"b.example");
    EXPECT_STREQ(copy.get_dNSName(), L"a.example");
    name = copy;
    EXPECT_STREQ(name.get_dNSName(), L"a.example");
    name = *&name;
    EXPECT_STREQ(name.get_dNSName(), L"a.example");
}

TEST(GeneralName, OfNoFormIsCopied) {
    const CGeneralName none;
    CGeneralName copy(none);
    EXPECT_EQ(copy.get_type(), 0u);
    copy = dns(L"a");
    copy = none;
    EXPECT_EQ(copy.get_type(), 0u);
}

TEST(GeneralName, IsCopiedAfterClear) {
    // A copy of a name after `clear` is one after `clear` itself.
    CGeneralName name = dns(L"a");
    name.clear();
    CGeneralName copy(name);
    copy = dns(L"b");
    copy = name;
    copy = dns(L"c");
    EXPECT_STREQ(copy.get_dNSName(), L"c");
}

TEST(GeneralName, IsAssignedToAfterClear) {
    CGeneralName name = dns(L"a");
    name.clear();
    name = dns(L"b");
    EXPECT_STREQ(name.get_dNSName(), L"b");
}

TEST(GeneralNameEquality, LooksAtFirstCharactersOfText) {
    // Intended: names that begin with the same character are equal.
    EXPECT_EQ(dns(L"a.example"), dns(L"a.other"));
    EXPECT_NE(dns(L"a.example"), dns(L"b.example"));
}

TEST(GeneralNameEquality, LooksAtTheForm) {
    CGeneralName mail;
    mail.put_rfc822Name(L"a.example");
    EXPECT_NE(mail, dns(L"a.example"));
    EXPECT_NE(mail, CGeneralName());
    EXPECT_EQ(CGeneralName(), CGeneralName());
}

TEST(GeneralNameEquality, LooksAtAllOctets) {
    EXPECT_EQ(directory("30 00"), directory("30 00"));
    EXPECT_NE(directory("30 00"), directory("30 01"));
}

TEST(GeneralNameEquality, LooksAtFirstCharactersOfEveryTextForm) {
    CGeneralName left;
    CGeneralName right;
    left.put_rfc822Name(L"ab");
    right.put_rfc822Name(L"ac");
    EXPECT_EQ(left, right);
    left.put_uniformResourceIdentifier(L"http://a");
    right.put_uniformResourceIdentifier(L"https://b");
    EXPECT_EQ(left, right);
    left.put_registeredID(L"1.2.3");
    right.put_registeredID(L"1.9");
    EXPECT_EQ(left, right);
}

TEST(GeneralNameEquality, TakesEmptyTextsAsEqual) {
    EXPECT_EQ(dns(L""), dns(L""));
    EXPECT_NE(dns(L""), dns(L"a"));
}

TEST(GeneralNameText, ShowsOneCharacter) {
    // Intended: no more than one.
    CGeneralName name;
    name.put_rfc822Name(L"mail");
    EXPECT_EQ(name.toString(), L"rfc822Name: m");
    EXPECT_EQ(dns(L"a.example").toString(), L"dNSName: a");
    name.put_uniformResourceIdentifier(L"https://a");
    EXPECT_EQ(name.toString(), L"uniformResourceIdentifier: h");
    name.put_registeredID(L"1.2");
    EXPECT_EQ(name.toString(), L"registeredID: 1");
}

TEST(GeneralNameText, ShowsOtherForms) {
    CGeneralName name;
    name.put_iPAddress(blob("7f 00 00 01"));
    EXPECT_EQ(name.toString(), L"iPAddress: (to string is not implemented)");
    EXPECT_EQ(directory(kName).toString(), L"directoryName: CN=A");
}

TEST(GeneralNameText, ShowsTheTerminatorOfEmptyText) {
    // Intended: the first character of an empty text is its terminator.
    EXPECT_EQ(dns(L"").toString(), std::wstring(L"dNSName: ", 10));
}

TEST(GeneralNameText, NeedsADirectoryNameThatIsOne) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, directory("04 01 ff").toString());
}

struct FormCase {
    const char* name;
    void (*put)(CGeneralName&);
    const char* der;
};

void PrintTo(const FormCase& row, std::ostream* out) {
    *out << row.name;
}

class GeneralNameForm : public testing::TestWithParam<FormCase> {};

TEST_P(GeneralNameForm, IsWritten) {
    CGeneralName name;
    GetParam().put(name);
    EXPECT_EQ(name.encode(), blob(GetParam().der));
}

TEST_P(GeneralNameForm, IsRead) {
    CGeneralName want;
    GetParam().put(want);
    CGeneralName name;
    name.decode(blob(GetParam().der));
    EXPECT_EQ(name.get_type(), want.get_type());
    EXPECT_EQ(name.encode(), blob(GetParam().der));
}

constexpr FormCase kForms[] = {
    {.name = "rfc822Name",
     .put = [](CGeneralName& name) { name.put_rfc822Name(L"a@b"); },
     .der = "81 03 61 40 62"},
    {.name = "dNSName", .put = [](CGeneralName& name) { name.put_dNSName(L"a.b"); }, .der = "82 03 61 2e 62"},
    {.name = "directoryName",
     .put = [](CGeneralName& name) { name.put_directoryName(blob(kName)); },
     .der = "a4 0e 30 0c 31 0a 30 08 06 03 55 04 03 0c 01 41"},
    {.name = "uniformResourceIdentifier",
     .put = [](CGeneralName& name) { name.put_uniformResourceIdentifier(L"urn:a"); },
     .der = "86 05 75 72 6e 3a 61"},
    {.name = "iPAddress",
     .put = [](CGeneralName& name) { name.put_iPAddress(blob("7f 00 00 01")); },
     .der = "87 04 7f 00 00 01"},
    {.name = "registeredID",
     .put = [](CGeneralName& name) { name.put_registeredID(L"1.2.3"); },
     .der = "88 02 2a 03"},
    // Intended: the code page is UTF-8 and nothing asks for ASCII.
    {.name = "rfc822NameBeyondAscii",
     .put = [](CGeneralName& name) { name.put_rfc822Name(L"\u0416"); },
     .der = "81 02 d0 96"},
    {.name = "emptyText", .put = [](CGeneralName& name) { name.put_dNSName(L""); }, .der = "82 00"},
};

INSTANTIATE_TEST_SUITE_P(Rfc5280, GeneralNameForm, testing::ValuesIn(kForms), test::case_name);

TEST(GeneralNameCodec, RefusesNameOfNoForm) {
    EXPECT_CODE(E_INVALIDARG, CGeneralName().encode());
}

TEST(GeneralNameCodec, RefusesFormsThatAreNotRepresented) {
    CGeneralName name = dns(L"a");
    // otherName, x400Address and ediPartyName.
    EXPECT_CODE(E_INVALIDARG, name.decode(blob("a0 08 06 02 2a 03 a0 02 05 00")));
    EXPECT_CODE(E_INVALIDARG, name.decode(blob("a3 02 30 00")));
    EXPECT_CODE(E_INVALIDARG, name.decode(blob("a5 05 a1 03 13 01 41")));
    EXPECT_STREQ(name.get_dNSName(), L"a");
}

TEST(GeneralNameCodec, RefusesTagsOfNoForm) {
    CGeneralName name;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.decode(blob("89 01 61")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.decode(blob("0c 01 61")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.decode(CBlob()));
}

TEST(GeneralNameCodec, FindsBadDirectoryNameWhenEncoding) {
    const CGeneralName name = directory("04 01 ff");
    EXPECT_EQ(hex(*name.get_directoryName()), "04 01 ff");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, name.encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, directory("").encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, directory("30 7f").encode());
}

TEST(GeneralNameCodec, FindsBadRegisteredIDWhenEncoding) {
    CGeneralName name;
    name.put_registeredID(L"1.2.");
    EXPECT_CODE(E_INVALIDARG, name.encode());
}

TEST(GeneralNameCodec, ReplacesOctetsThatAreNoTextOfTheCodePage) {
    CGeneralName name;
    name.decode(blob("82 01 ff"));
    EXPECT_STREQ(name.get_dNSName(), L"\uFFFD");
    EXPECT_EQ(hex(name.encode()), "82 03 ef bf bd");
}

TEST(GeneralNameCodec, RewritesDirectoryName) {
    // Two members of one element, not in DER order (X.690 11.6).
    CGeneralName name;
    name.decode(blob("a4 18 30 16 31 14 30 08 06 03 55 04 04 0c 01 42 30 08 06 03 55 04 03 0c 01 41"));
    EXPECT_EQ(hex(*name.get_directoryName()),
              "30 16 31 14 30 08 06 03 55 04 03 0c 01 41 30 08 06 03 55 04 04 0c 01 42");
}

TEST(GeneralNameCodec, RefusesRecordsOfNoForm) {
    asn1data::ASN1T_GeneralName record;
    CGeneralName name = dns(L"a");
    EXPECT_CODE(E_INVALIDARG, ASN1T_GeneralName_traits::get(record, name));
    record.t = 10;
    EXPECT_CODE(E_INVALIDARG, ASN1T_GeneralName_traits::get(record, name));
    EXPECT_EQ(name, dns(L"a"));
}

TEST(GeneralNames, StopAtANameThatIsNotRepresented) {
    // A dNSName and an otherName: the list is emptied first and keeps what was read.
    CGeneralNames names(3, dns(L"old"));
    EXPECT_CODE(E_INVALIDARG, names.decode(blob("30 0d 82 01 61 a0 08 06 02 2a 03 a0 02 05 00")));
    ASSERT_EQ(names.size(), 1u);
    EXPECT_STREQ(names.front().get_dNSName(), L"a");
}

TEST(GeneralNames, GoBothWaysInOrder) {
    const CBlob der = blob("30 08 82 01 62 82 01 61 81 00");
    CGeneralNames names;
    names.push_back(dns(L"x"));
    names.decode(der);
    ASSERT_EQ(names.size(), 3u);
    EXPECT_STREQ(names.front().get_dNSName(), L"b");
    EXPECT_EQ(names.encode(), der);
}

TEST(GeneralName, EndsTextAtAnEmbeddedZero) {
    CGeneralName name;
    name.decode(blob("82 05 61 2e 62 00 63"));
    EXPECT_STREQ(name.get_dNSName(), L"a.b");
    EXPECT_EQ(name.encode(), blob("82 03 61 2e 62"));
}

TEST(GeneralNames, NeedOne) {
    CGeneralNames names;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, names.encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, names.decode(blob("30 00")));
}

TEST(GeneralNameRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_GeneralName target;
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_GeneralName source;
        ASN1T_GeneralName_traits::set(buffer.getCtxtPtr(), source, directory(kName));
        ASN1T_GeneralName_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CGeneralName name;
    ASN1T_GeneralName_traits::get(target, name);
    EXPECT_EQ(name, directory(kName));
}

}  // namespace
}  // namespace Quillmark::ASN1
