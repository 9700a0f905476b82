#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "asn1/codec.h"
#include "platform/cryptoapi.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

struct KindCase {
    const char* name;
    StringType type;
    const wchar_t* text;
    const char* der;
};

void PrintTo(const KindCase& row, std::ostream* out) {
    *out << row.name;
}

class CharStringKind : public testing::TestWithParam<KindCase> {};

TEST_P(CharStringKind, IsWrittenWithItsTag) {
    EXPECT_EQ(encodeCharString(GetParam().text, GetParam().type), blob(GetParam().der));
}

TEST_P(CharStringKind, IsReadBack) {
    EXPECT_STREQ(decodeCharString(blob(GetParam().der)).c_str(), GetParam().text);
}

constexpr KindCase kKinds[] = {
    {.name = "UTF8",
     .type = StringTypeUTF8,
     .text = L"a\u0416\U0001F600",
     .der = "0c 07 61 d0 96 f0 9f 98 80"},
    {.name = "UTF8Empty", .type = StringTypeUTF8, .text = L"", .der = "0c 00"},
    {.name = "Printable", .type = StringTypePrintable, .text = L"AB", .der = "13 02 41 42"},
    // Intended: characters are not tested against the alphabet of PrintableString.
    {.name = "PrintableWithAt", .type = StringTypePrintable, .text = L"@", .der = "13 01 40"},
    {.name = "Teletex", .type = StringTypeTeletex, .text = L"AB", .der = "14 02 41 42"},
    {.name = "BMP", .type = StringTypeBMP, .text = L"A\u0416", .der = "1e 04 00 41 04 16"},
    {.name = "BMPEmpty", .type = StringTypeBMP, .text = L"", .der = "1e 00"},
    {.name = "IA5", .type = StringTypeIA5, .text = L"a@b", .der = "16 03 61 40 62"},
    {.name = "Universal",
     .type = StringTypeUniversal,
     .text = L"A\u0416",
     .der = "1c 08 00 00 00 41 00 00 04 16"},
    {.name = "UniversalEmpty", .type = StringTypeUniversal, .text = L"", .der = "1c 00"},
};

INSTANTIATE_TEST_SUITE_P(X680, CharStringKind, testing::ValuesIn(kKinds), test::case_name);

TEST(EncodeCharString, RefusesKindsThatAreNone) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, encodeCharString(L"A", StringTypeDefault));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, encodeCharString(L"A", static_cast<StringType>(7)));
}

TEST(EncodeCharString, DropsHighHalfInBMP) {
    // Intended: no surrogates.
    EXPECT_EQ(hex(encodeCharString(L"\U0001F600", StringTypeBMP)), "1e 02 f6 00");
}

TEST(EncodeCharString, Keeps16BitsInUniversal) {
    EXPECT_EQ(hex(encodeCharString(L"\U0001F600", StringTypeUniversal)), "1c 04 00 00 f6 00");
}

TEST(EncodeCharString, RefusesNegativeCharacterInUTF8) {
    const wchar_t text[] = {static_cast<wchar_t>(0x80000041), 0};
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, encodeCharString(text, StringTypeUTF8));
}

TEST(DecodeCharString, ReadsNumericString) {
    EXPECT_STREQ(decodeCharString(blob("12 02 31 32")).c_str(), L"12");
}

TEST(DecodeCharString, RefusesWhatIsNoCharacterString) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("02 01 05")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("1a 01 41")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("8c 01 41")));
}

TEST(DecodeCharString, RefusesConstructedString) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("2c 03 0c 01 41")));
}

TEST(DecodeCharString, RefusesTruncatedString) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("0c")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("0c 02 41")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("1e 04 00 41")));
}

TEST(DecodeCharString, RefusesBadUTF8) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("0c 01 80")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decodeCharString(blob("0c 02 c3 28")));
}

TEST(DecodeCharString, SurvivesLeadOctetAtTheEnd) {
    // Intended: a character that is cut off counts with the bits that are there.
    EXPECT_STREQ(decodeCharString(blob("0c 01 c3")).c_str(), L"\x03");
    EXPECT_NO_THROW(decodeCharString(blob("0c 01 fc")));
}

TEST(DecodeCharString, IgnoresOctetsBehindTheString) {
    EXPECT_STREQ(decodeCharString(blob("13 01 41 ff ff")).c_str(), L"A");
}

TEST(DecodeCharString, EndsTextAtEmbeddedZero) {
    for (const char* const der : {"13 03 41 00 42", "0c 03 41 00 42", "1e 06 00 41 00 00 00 42",
                                  "1c 0c 00 00 00 41 00 00 00 00 00 00 00 42"}) {
        EXPECT_STREQ(decodeCharString(blob(der)).c_str(), L"A") << der;
    }
}

TEST(CodePageText, GoesBothWays) {
    EXPECT_EQ(tostring(L"abc"), "abc");
    EXPECT_EQ(towstring("abc"), L"abc");
    EXPECT_EQ(tostring(L""), "");
    EXPECT_EQ(towstring(""), L"");
}

TEST(CodePageText, TakesUnsignedShortForWideText) {
    EXPECT_EQ(tostring(reinterpret_cast<const unsigned short*>(L"abc")), "abc");
}

TEST(CodePageText, ThrowsTheLastError) {
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), towstring(nullptr));
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), tostring(static_cast<const wchar_t*>(nullptr)));
}

TEST(NumberText, IsDecimal) {
    EXPECT_EQ(tostring(-42), "-42");
    EXPECT_EQ(towstring(42), L"42");
}

TEST(UTF8StringTraits, GoBothWays) {
    ASN1BERDecodeBuffer buffer;
    const char* record = nullptr;
    ASN1UTF8String_traits::set(buffer.getCtxtPtr(), record, L"a\u0416");
    EXPECT_STREQ(record, "a\xd0\x96");
    CWStringProxy value(L"");
    ASN1UTF8String_traits::get(record, value);
    EXPECT_STREQ(value.c_str(), L"a\u0416");
    const char* copy = nullptr;
    ASN1UTF8String_traits::copy(buffer.getCtxtPtr(), record, copy);
    EXPECT_STREQ(copy, record);
    EXPECT_NE(copy, record);
}

TEST(UTF8StringTraits, TellBadTextApart) {
    ASN1BERDecodeBuffer buffer;
    const char* record = nullptr;
    const wchar_t negative[] = {static_cast<wchar_t>(0x80000041), 0};
    // Intended: another code than encodeCharString has for the same text.
    EXPECT_CODE(E_INVALIDARG, ASN1UTF8String_traits::set(buffer.getCtxtPtr(), record, negative));
    CWStringProxy value(L"old");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1UTF8String_traits::get("\x80", value));
    EXPECT_STREQ(value.c_str(), L"old");
}

}  // namespace
}  // namespace Quillmark::ASN1
