// UTF-8 (RFC 3629) to wide text and back. Code page 0 is UTF-8 too.

#include <climits>
#include <cwchar>

#include "tests/platform/service.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

struct Wide {
    int result;
    std::wstring text;
};

Wide widen(const std::string& text, DWORD flags = 0, UINT code_page = CP_UTF8) {
    std::wstring out(64, L'#');
    const int result =
        MultiByteToWideChar(code_page, flags, text.data(), static_cast<int>(text.size()), out.data(), 64);
    out.resize(static_cast<std::size_t>(result));
    return {result, out};
}

std::string narrow(const std::wstring& text, DWORD flags = 0) {
    std::string out(64, '#');
    const int result = WideCharToMultiByte(CP_UTF8, flags, text.data(), static_cast<int>(text.size()),
                                           out.data(), 64, nullptr, nullptr);
    out.resize(static_cast<std::size_t>(result));
    return out;
}

struct GoodCase {
    const char* name;
    const char* octets;
    std::wstring text;
};

void PrintTo(const GoodCase& row, std::ostream* out) {
    *out << row.octets;
}

const GoodCase kGood[] = {
    {"Ascii", "AZ~", L"AZ~"},
    {"LastOfOneOctet", "\x7F", L"\x7F"},
    {"FirstOfTwoOctets", "\xC2\x80", L"\x80"},
    {"LastOfTwoOctets", "\xDF\xBF", L"\x7FF"},
    {"FirstOfThreeOctets", "\xE0\xA0\x80", L"\x800"},
    {"LastBeforeSurrogates", "\xED\x9F\xBF", L"\xD7FF"},
    {"FirstBehindSurrogates", "\xEE\x80\x80", L"\xE000"},
    {"LastOfThreeOctets", "\xEF\xBF\xBF", L"\xFFFF"},
    {"FirstOfFourOctets", "\xF0\x90\x80\x80", L"\x10000"},
    {"LastCodePoint", "\xF4\x8F\xBF\xBF", L"\x10FFFF"},
    {"Mixed", "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z", L"a\xE4\x20AC\x1F600z"},
};

class Utf8 : public testing::TestWithParam<GoodCase> {};

TEST_P(Utf8, BecomesWideText) {
    EXPECT_EQ(widen(GetParam().octets, MB_ERR_INVALID_CHARS).text, GetParam().text);
}

TEST_P(Utf8, IsTheSameInCodePageZero) {
    EXPECT_EQ(widen(GetParam().octets, MB_ERR_INVALID_CHARS, CP_ACP).text, GetParam().text);
}

TEST_P(Utf8, ComesFromWideText) {
    EXPECT_EQ(narrow(GetParam().text, WC_ERR_INVALID_CHARS), GetParam().octets);
}

INSTANTIATE_TEST_SUITE_P(Rfc3629, Utf8, testing::ValuesIn(kGood), case_name);

struct BadCase {
    const char* name;
    std::string octets;
    std::wstring replaced;  // one U+FFFD for a bad lead octet with the good continuation octets behind it
};

void PrintTo(const BadCase& row, std::ostream* out) {
    *out << row.name;
}

const BadCase kBad[] = {
    {"LoneContinuation", "a\x80z", L"a\xFFFDz"},
    {"OverlongTwo", "\xC0\x80", L"\xFFFD\xFFFD"},
    {"OverlongThree", "\xE0\x9F\xBF", L"\xFFFD\xFFFD\xFFFD"},
    {"OverlongFour", "\xF0\x8F\xBF\xBF", L"\xFFFD\xFFFD\xFFFD\xFFFD"},
    {"FirstSurrogate", "\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD"},
    {"LastSurrogate", "\xED\xBF\xBF", L"\xFFFD\xFFFD\xFFFD"},
    {"AboveLastCodePoint", "\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"},
    {"FiveOctets", "\xF8\x88\x80\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD"},
    {"NoLead", "\xFF", L"\xFFFD"},
    {"TruncatedTwo", "\xC3", L"\xFFFD"},
    {"TruncatedThree", "\xE2\x82", L"\xFFFD"},
    {"TruncatedFour", "\xF0\x9F\x98", L"\xFFFD"},
    {"TruncatedByAscii", "\xE2\x82z", L"\xFFFDz"},
    {"TruncatedByLead", "\xE2\xC3\xA4", L"\xFFFD\xE4"},
};

class BadUtf8 : public testing::TestWithParam<BadCase> {};

TEST_P(BadUtf8, IsReplaced) {
    EXPECT_EQ(widen(GetParam().octets).text, GetParam().replaced);
}

TEST_P(BadUtf8, IsRefusedOnDemand) {
    wchar_t out[16];
    const int size = static_cast<int>(GetParam().octets.size());
    EXPECT_TRUE(fails_with(
        ERROR_NO_UNICODE_TRANSLATION,
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, GetParam().octets.data(), size, out, 16) != 0));
}

INSTANTIATE_TEST_SUITE_P(Rfc3629, BadUtf8, testing::ValuesIn(kBad), case_name);

class BadWide : public testing::TestWithParam<wchar_t> {};

TEST_P(BadWide, IsReplaced) {
    EXPECT_EQ(narrow({L'a', GetParam(), L'z'}), "a\xEF\xBF\xBDz");
}

TEST_P(BadWide, IsRefusedOnDemand) {
    const wchar_t text[] = {GetParam()};
    char out[8];
    EXPECT_TRUE(fails_with(ERROR_NO_UNICODE_TRANSLATION,
                           WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, 1, out, sizeof(out),
                                               nullptr, nullptr) != 0));
}

INSTANTIATE_TEST_SUITE_P(Values, BadWide,
                         testing::Values(static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0xDFFF),
                                         static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)));

TEST(MultiByteToWideChar, CountsTerminatorForLengthMinusOne) {
    wchar_t out[8];
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, out, 8), 4);
    EXPECT_STREQ(out, L"abc");
}

TEST(WideCharToMultiByte, CountsTerminatorForLengthMinusOne) {
    char out[8];
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"\xE4z", -1, out, 8, nullptr, nullptr), 4);
    EXPECT_STREQ(out, "\xC3\xA4z");
}

TEST(MultiByteToWideChar, AddsNoTerminatorForExplicitLength) {
    wchar_t out[] = L"####";
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 2, out, 4), 2);
    EXPECT_STREQ(out, L"ab##");
}

TEST(MultiByteToWideChar, GivesSizeNeededAndWritesNothing) {
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "a\xC3\xA4", -1, nullptr, 0), 3);
}

TEST(WideCharToMultiByte, GivesSizeNeededAndWritesNothing) {
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"a\x20AC", -1, nullptr, 0, nullptr, nullptr), 5);
}

TEST(MultiByteToWideChar, FillsBufferThatJustSuffices) {
    wchar_t out[2];
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "ab", 2, out, 2), 2);
    EXPECT_TRUE(fails_with(ERROR_INSUFFICIENT_BUFFER, MultiByteToWideChar(CP_ACP, 0, "abc", 3, out, 2) != 0));
}

TEST(WideCharToMultiByte, WritesNoPartOfACharacterThatDoesNotFit) {
    char out[] = "###";
    EXPECT_TRUE(fails_with(ERROR_INSUFFICIENT_BUFFER,
                           WideCharToMultiByte(CP_ACP, 0, L"a\x20AC", 2, out, 3, nullptr, nullptr) != 0));
    EXPECT_STREQ(out, "a##");
}

TEST(MultiByteToWideChar, RefusesBadArguments) {
    wchar_t out[4];
    const auto refused = [](bool succeeded) { return fails_with(ERROR_INVALID_PARAMETER, succeeded); };
    EXPECT_TRUE(refused(MultiByteToWideChar(1252, 0, "a", 1, out, 4) != 0)) << "code page";
    EXPECT_TRUE(refused(MultiByteToWideChar(CP_ACP, 0, "a", 0, out, 4) != 0)) << "length 0";
    EXPECT_TRUE(refused(MultiByteToWideChar(CP_ACP, 0, "a", -2, out, 4) != 0)) << "length below -1";
    EXPECT_TRUE(refused(MultiByteToWideChar(CP_ACP, 0, nullptr, 1, out, 4) != 0)) << "null input";
    EXPECT_TRUE(refused(MultiByteToWideChar(CP_ACP, 0, "a", 1, nullptr, 4) != 0)) << "null output";
    EXPECT_TRUE(refused(MultiByteToWideChar(CP_ACP, 0, "a", 1, out, -1) != 0)) << "negative output";
    EXPECT_TRUE(refused(MultiByteToWideChar(CP_ACP, 0, reinterpret_cast<char*>(out), 1, out, 4) != 0))
        << "in place";
    EXPECT_TRUE(fails_with(ERROR_INVALID_FLAGS, MultiByteToWideChar(CP_ACP, 1, "a", 1, out, 4) != 0));
}

TEST(WideCharToMultiByte, RefusesBadArguments) {
    char out[4];
    BOOL used = 0;
    const auto refused = [](bool succeeded) { return fails_with(ERROR_INVALID_PARAMETER, succeeded); };
    const auto convert = [](UINT code_page, const wchar_t* text, int length, char* to, int size) {
        return WideCharToMultiByte(code_page, 0, text, length, to, size, nullptr, nullptr) != 0;
    };
    EXPECT_TRUE(refused(convert(1252, L"a", 1, out, 4))) << "code page";
    EXPECT_TRUE(refused(convert(CP_ACP, L"a", 0, out, 4))) << "length 0";
    EXPECT_TRUE(refused(convert(CP_ACP, L"a", -2, out, 4))) << "length below -1";
    EXPECT_TRUE(refused(convert(CP_ACP, nullptr, 1, out, 4))) << "null input";
    EXPECT_TRUE(refused(convert(CP_ACP, L"a", 1, nullptr, 4))) << "null output";
    EXPECT_TRUE(refused(convert(CP_ACP, L"a", 1, out, -1))) << "negative output";
    EXPECT_TRUE(refused(convert(CP_ACP, reinterpret_cast<wchar_t*>(out), 1, out, 4))) << "in place";
    EXPECT_TRUE(refused(WideCharToMultiByte(CP_ACP, 0, L"a", 1, out, 4, "?", nullptr) != 0));
    EXPECT_TRUE(refused(WideCharToMultiByte(CP_ACP, 0, L"a", 1, out, 4, nullptr, &used) != 0));
    EXPECT_TRUE(fails_with(ERROR_INVALID_FLAGS,
                           WideCharToMultiByte(CP_ACP, 1, L"a", 1, out, 4, nullptr, nullptr) != 0));
}

}  // namespace
}  // namespace Quillmark::test
