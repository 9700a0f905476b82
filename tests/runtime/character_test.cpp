#include "runtime/character.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

using Characters = std::vector<uint32_t>;

struct Utf8Case {
    const char* name;
    const char* octets;  // without terminator
    int count;           // of rtUTF8Len
    int result;          // of rtUTF8ToWCS
    Characters characters;
};

std::string text_of(const char* hex) {
    const std::vector<uint8_t> octets = from_hex(hex);
    return {octets.begin(), octets.end()};
}

class Utf8Text : public testing::TestWithParam<Utf8Case> {};

TEST_P(Utf8Text, IsCountedByItsLeadOctets) {
    EXPECT_EQ(GetParam().count, rtUTF8Len(text_of(GetParam().octets).c_str()));
}

TEST_P(Utf8Text, IsWidened) {
    CodecContext context;
    wchar_t wide[8];
    const std::string text = text_of(GetParam().octets);
    const int result = rtUTF8ToWCS(context, text.c_str(), wide, std::size(wide));
    ASSERT_EQ(GetParam().result, result);
    EXPECT_EQ(result, rtUTF8ToWCS(context, text.c_str(), nullptr, 0));
    if (result >= 0) {
        EXPECT_EQ(GetParam().characters, Characters(wide, wide + result));
    }
    EXPECT_EQ(RT_OK, context.recorded());
}

const Utf8Case kUtf8Cases[] = {
    {.name = "Empty", .octets = "", .count = 0, .result = 0, .characters = {}},
    {.name = "Ascii", .octets = "41 7f", .count = 2, .result = 2, .characters = {0x41, 0x7F}},
    {.name = "TwoOctets", .octets = "c2 80 df bf", .count = 2, .result = 2, .characters = {0x80, 0x7FF}},
    {.name = "ThreeOctets",
     .octets = "e0 a0 80 ef bf bf",
     .count = 2,
     .result = 2,
     .characters = {0x800, 0xFFFF}},
    {.name = "FourOctets", .octets = "f0 90 80 80", .count = 1, .result = 1, .characters = {0x10000}},
    {.name = "FiveOctets", .octets = "f8 88 80 80 80", .count = 1, .result = 1, .characters = {0x200000}},
    {.name = "SixOctets", .octets = "fd bf bf bf bf bf", .count = 1, .result = 1, .characters = {0x7FFFFFFF}},
    // Intended: overlong forms, surrogates and a character that is cut off pass.
    {.name = "Overlong", .octets = "c0 80", .count = 1, .result = 1, .characters = {0}},
    {.name = "Surrogate", .octets = "ed a0 80", .count = 1, .result = 1, .characters = {0xD800}},
    {.name = "CutOffAtLead", .octets = "c3", .count = 1, .result = 1, .characters = {3}},
    {.name = "CutOffInside", .octets = "41 e2 82", .count = 2, .result = 2, .characters = {0x41, 0x82}},
    {.name = "ContinuationFirst",
     .octets = "80",
     .count = RT_E_INVUTF8,
     .result = RT_E_INVUTF8,
     .characters = {}},
    {.name = "LeadFe", .octets = "fe", .count = RT_E_INVUTF8, .result = RT_E_INVUTF8, .characters = {}},
    {.name = "LeadFf", .octets = "41 ff", .count = RT_E_INVUTF8, .result = RT_E_INVUTF8, .characters = {}},
    // Intended: the count does not look at continuation octets.
    {.name = "NoContinuation", .octets = "c3 41", .count = 1, .result = RT_E_INVUTF8, .characters = {}},
    {.name = "LeadAsContinuation",
     .octets = "e2 c3 80",
     .count = 1,
     .result = RT_E_INVUTF8,
     .characters = {}},
};
INSTANTIATE_TEST_SUITE_P(Character, Utf8Text, testing::ValuesIn(kUtf8Cases), case_name);

TEST(RtUtf8Len, StopsAtTheTerminatorInsideACharacter) {
    // An array without an octet behind the terminator: a sanitizer sees a step past it.
    const std::vector<char> text = {static_cast<char>(0xFC), '\0'};
    EXPECT_EQ(1, rtUTF8Len(text.data()));
}

TEST(RtUtf8Len, FindsNoCharactersInNull) {
    EXPECT_EQ(0, rtUTF8Len(nullptr));
    EXPECT_EQ(0u, rtUTF8LenBytes(nullptr));
}

TEST(RtUtf8LenBytes, CountsOctets) {
    EXPECT_EQ(3u, rtUTF8LenBytes("\xe2\x82\xac"));
    EXPECT_EQ(0u, rtUTF8LenBytes(""));
    EXPECT_EQ(0u, rtUTF8LenBytes(nullptr));
}

TEST(RtUtf8ToWcs, FillsTheRoomExactly) {
    CodecContext context;
    wchar_t wide[2];
    EXPECT_EQ(2, rtUTF8ToWCS(context, "ab", wide, 2));
    EXPECT_EQ(-1, rtUTF8ToWCS(context, "abc", wide, 2));
}

struct SizeCase {
    const char* name;
    uint32_t value;
    const char* octets;
};

class Utf8Character : public testing::TestWithParam<SizeCase> {};

TEST_P(Utf8Character, IsWrittenAndReadBack) {
    const std::vector<uint8_t> want = from_hex(GetParam().octets);
    EXPECT_EQ(static_cast<int>(want.size()), rtUTF8CharSize(GetParam().value));
    char out[6];
    ASSERT_EQ(static_cast<int>(want.size()), rtUTF8EncodeChar(GetParam().value, out, want.size()));
    EXPECT_EQ(want, std::vector<uint8_t>(out, out + want.size()));
    EXPECT_EQ(-1, rtUTF8EncodeChar(GetParam().value, out, want.size() - 1));

    CodecContext context;
    size_t size = sizeof out;
    EXPECT_EQ(static_cast<int>(GetParam().value), rtUTF8DecodeChar(context, out, &size));
    EXPECT_EQ(want.size(), size);
}

// RFC 2279 2, by the tables there.
const SizeCase kSizeCases[] = {
    {.name = "Largest1", .value = 0x7F, .octets = "7f"},
    {.name = "Smallest2", .value = 0x80, .octets = "c2 80"},
    {.name = "Largest2", .value = 0x7FF, .octets = "df bf"},
    {.name = "Smallest3", .value = 0x800, .octets = "e0 a0 80"},
    {.name = "Largest3", .value = 0xFFFF, .octets = "ef bf bf"},
    {.name = "Smallest4", .value = 0x10000, .octets = "f0 90 80 80"},
    {.name = "Largest4", .value = 0x1FFFFF, .octets = "f7 bf bf bf"},
    {.name = "Smallest5", .value = 0x200000, .octets = "f8 88 80 80 80"},
    {.name = "Largest5", .value = 0x3FFFFFF, .octets = "fb bf bf bf bf"},
    {.name = "Smallest6", .value = 0x4000000, .octets = "fc 84 80 80 80 80"},
    {.name = "Largest6", .value = 0x7FFFFFFF, .octets = "fd bf bf bf bf bf"},
};
INSTANTIATE_TEST_SUITE_P(Character, Utf8Character, testing::ValuesIn(kSizeCases), case_name);

TEST(RtUtf8EncodeChar, RefusesValuesAbove31Bits) {
    char out[6];
    EXPECT_EQ(RT_E_INVUTF8, rtUTF8EncodeChar(0x80000000, out, sizeof out));
    EXPECT_EQ(-1, rtUTF8EncodeChar(0x80000000, out, 5));
}

TEST(RtUtf8DecodeChar, ReadsNothingWithoutRoom) {
    CodecContext context;
    size_t size = 0;
    EXPECT_EQ(RT_E_INVUTF8, rtUTF8DecodeChar(context, "a", &size));
    EXPECT_EQ(0u, size);
}

TEST(RtUtf8DecodeChar, ReadsNoFurtherThanItsRoom) {
    CodecContext context;
    size_t size = 2;
    EXPECT_EQ(0x2 << 6 | 0x02, rtUTF8DecodeChar(context, "\xe2\x82\xac", &size));
    EXPECT_EQ(2u, size);
}

TEST(RtUtf8DecodeChar, RefusesABadContinuation) {
    CodecContext context;
    size_t size = 2;
    EXPECT_EQ(RT_E_INVUTF8, rtUTF8DecodeChar(context, "\xc3\x41", &size));
}

struct NarrowCase {
    const char* name;
    std::vector<wchar_t> wide;
    size_t room;
    int result;
    const char* octets = "";
};

class RtWcsToUtf8 : public testing::TestWithParam<NarrowCase> {};

TEST_P(RtWcsToUtf8, NarrowsWithinItsRoom) {
    CodecContext context;
    std::vector<char> out(GetParam().room);
    const int result =
        rtWCSToUTF8(context, GetParam().wide.data(), GetParam().wide.size(), out.data(), out.size());
    ASSERT_EQ(GetParam().result, result);
    if (result >= 0) {
        EXPECT_EQ(from_hex(GetParam().octets), std::vector<uint8_t>(out.begin(), out.begin() + result));
    }
}

const NarrowCase kNarrowCases[] = {
    {.name = "Empty", .wide = {}, .room = 0, .result = 0},
    {.name = "FourOctets", .wide = {0x10FFFF}, .room = 8, .result = 4, .octets = "f4 8f bf bf"},
    {.name = "SixOctets", .wide = {0x7FFFFFFF}, .room = 8, .result = 6, .octets = "fd bf bf bf bf bf"},
    {.name = "Mixed", .wide = {L'a', 0x20AC, L'b'}, .room = 8, .result = 5, .octets = "61 e2 82 ac 62"},
    {.name = "TerminatorIsACharacter", .wide = {L'a', 0}, .room = 2, .result = 2, .octets = "61 00"},
    {.name = "AsciiFillsTheRoom", .wide = {L'a', L'b'}, .room = 2, .result = 2, .octets = "61 62"},
    {.name = "AsciiBeyondTheRoom", .wide = {L'a', L'b'}, .room = 1, .result = -1},
    // Intended: a character of several octets must end before the last octet of the room.
    {.name = "LongCharacterFillsTheRoom", .wide = {0xE9}, .room = 2, .result = -1},
    {.name = "LongCharacterWithOneToSpare", .wide = {0xE9}, .room = 3, .result = 2, .octets = "c3 a9"},
    {.name = "NegativeCharacter",
     .wide = {static_cast<wchar_t>(0x80000000u)},
     .room = 8,
     .result = RT_E_INVUTF8},
};
INSTANTIATE_TEST_SUITE_P(Character, RtWcsToUtf8, testing::ValuesIn(kNarrowCases), case_name);

TEST(RtUtf8Strdup, CopiesToTheHeap) {
    CodecContext context;
    const char text[] = "\xe2\x82\xac";
    const char* copy = rtUTF8Strdup(context, text);
    EXPECT_STREQ(text, copy);
    EXPECT_NE(text, copy);
}

TEST(RtUtf8Strdup, MakesAnEmptyTextOfNull) {
    CodecContext context;
    EXPECT_STREQ("", rtUTF8Strdup(context, nullptr));
}

TEST(RtUtf8Strdup, GivesNullWithoutMemory) {
    CodecHeap heap;
    CodecContext context;
    heap.fail_after(0);
    EXPECT_EQ(nullptr, rtUTF8Strdup(context, "a"));
}

Characters characters_of(const ASN1_32BITCHARSTRING& text) {
    return {text.data, text.data + text.nchars};
}

constexpr uint32_t kVowels[] = {'a', 'e', 'i', 'o', 'u'};

TEST(RtCToUcsString, WidensEveryOctet) {
    CodecContext context;
    ASN1_32BITCHARSTRING ucs;
    ASSERT_NE(nullptr, rtCToUCSString(context, "a\xff", &ucs, nullptr));
    EXPECT_EQ(Characters({'a', 0xFF}), characters_of(ucs));
}

TEST(RtCToUcsString, GivesNullWithoutMemory) {
    CodecHeap heap;
    CodecContext context;
    heap.fail_after(0);
    ASN1_32BITCHARSTRING ucs = {.nchars = 7, .data = nullptr};
    EXPECT_EQ(nullptr, rtCToUCSString(context, "abc", &ucs, nullptr));
    EXPECT_EQ(0u, ucs.nchars);
}

TEST(RtCToUcsString, DropsWhatTheRangeExcludes) {
    CodecContext context;
    ASN1_32BITCHARSTRING ucs;
    const ASN1CharFilter filter = {.nchars = 0, .chars = nullptr, .lowest = 'b', .highest = 'd'};
    ASSERT_NE(nullptr, rtCToUCSString(context, "abcde", &ucs, &filter));
    EXPECT_EQ(Characters({'b', 'c', 'd'}), characters_of(ucs));
}

TEST(RtCToUcsString, DropsWhatTheListDoesNotName) {
    CodecContext context;
    ASN1_32BITCHARSTRING ucs;
    const ASN1CharFilter filter = {.nchars = 5, .chars = kVowels, .lowest = 'b', .highest = 0xFF};
    ASSERT_NE(nullptr, rtCToUCSString(context, "audio", &ucs, &filter));
    EXPECT_EQ(Characters({'u', 'i', 'o'}), characters_of(ucs));
}

TEST(RtWcsToUcsString, KeepsTheLow16Bits) {
    CodecContext context;
    ASN1_32BITCHARSTRING ucs;
    const wchar_t wide[] = {L'a', 0x20AC, 0x1F600, 0};
    ASSERT_NE(nullptr, rtWCSToUCSString(context, wide, &ucs, nullptr));
    EXPECT_EQ(Characters({'a', 0x20AC, 0xF600}), characters_of(ucs));  // Intended: narrowed
}

TEST(RtWcsToUcsString, FiltersWhatIsLeft) {
    CodecContext context;
    ASN1_32BITCHARSTRING ucs;
    const ASN1CharFilter filter = {.nchars = 0, .chars = nullptr, .lowest = 0x100, .highest = 0xFFFF};
    const wchar_t wide[] = {L'a', 0x20AC, 0};
    ASSERT_NE(nullptr, rtWCSToUCSString(context, wide, &ucs, &filter));
    EXPECT_EQ(Characters({0x20AC}), characters_of(ucs));
}

TEST(RtUcsToWcsString, DropsCharactersAbove16Bits) {
    uint32_t characters[] = {'a', 0x10000, 0xFFFF};
    const ASN1_32BITCHARSTRING ucs = {.nchars = 3, .data = characters};
    wchar_t wide[8];
    rtUCSToWCSString(&ucs, wide, std::size(wide));
    EXPECT_EQ(std::wstring({L'a', 0xFFFF}), wide);
}

TEST(RtUcsToWcsString, LeavesAFullRoomUnterminated) {
    uint32_t characters[] = {'a', 'b', 'c'};
    const ASN1_32BITCHARSTRING ucs = {.nchars = 3, .data = characters};
    wchar_t wide[3] = {L'x', L'x', L'x'};
    rtUCSToWCSString(&ucs, wide, 2);
    EXPECT_EQ(std::wstring(L"abx"), std::wstring(wide, 3));
}

TEST(RtCtypeTable, KnowsTheDigits) {
    for (int c = 0; c < 256; ++c) {
        EXPECT_EQ(c >= '0' && c <= '9', (rtCtypeTable[c] & RT_CT_DIGIT) != 0) << c;
    }
}

}  // namespace
}  // namespace Quillmark::test
