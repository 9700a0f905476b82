// Texts at random: names of keys, OBJECT IDENTIFIERs, and octets that are UTF-8 or nearly so. Input and room
// end where their allocations do, so that a sanitizer sees the first octet too many.

#include <algorithm>
#include <memory>
#include <random>

#include "platform/detail/object_id.h"
#include "platform/detail/pkcs11_uri.h"
#include "tests/platform/service.h"

namespace Quillmark::test {
namespace {

using namespace Quillmark::platform;

/// Pieces of a text, drawn at random.
template <class Text, std::size_t Count>
Text drawn(std::mt19937& random, const Text (&pieces)[Count], std::size_t most) {
    Text text;
    for (std::size_t left = random() % (most + 1); left != 0; --left) {
        text += pieces[random() % Count];
    }
    return text;
}

/// The octets or characters of a text in a block of their own, without a terminator.
template <class Character>
std::unique_ptr<Character[]> block_of(const std::basic_string<Character>& text) {
    auto block = std::make_unique<Character[]>(text.size());
    std::copy(text.begin(), text.end(), block.get());
    return block;
}

std::wstring widened(const std::string& text) {
    const auto octets = block_of(text);
    const auto size = static_cast<int>(text.size());
    const int told = MultiByteToWideChar(CP_UTF8, 0, octets.get(), size, nullptr, 0);
    EXPECT_TRUE(told > 0 && told <= size);
    const auto room = std::make_unique<wchar_t[]>(static_cast<std::size_t>(told));
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, octets.get(), size, room.get(), told), told);
    if (told > 1) {
        const auto less = std::make_unique<wchar_t[]>(static_cast<std::size_t>(told) - 1);
        EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, octets.get(), size, less.get(), told - 1), 0);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    }
    return std::wstring(room.get(), static_cast<std::size_t>(told));
}

std::string narrowed(const std::wstring& text) {
    const auto characters = block_of(text);
    const auto size = static_cast<int>(text.size());
    const int told = WideCharToMultiByte(CP_UTF8, 0, characters.get(), size, nullptr, 0, nullptr, nullptr);
    EXPECT_TRUE(told >= size && told <= 4 * size);
    const auto room = std::make_unique<char[]>(static_cast<std::size_t>(told));
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, characters.get(), size, room.get(), told, nullptr, nullptr),
              told);
    if (told > 1) {
        const auto less = std::make_unique<char[]>(static_cast<std::size_t>(told) - 1);
        EXPECT_EQ(
            WideCharToMultiByte(CP_UTF8, 0, characters.get(), size, less.get(), told - 1, nullptr, nullptr),
            0);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    }
    return std::string(room.get(), static_cast<std::size_t>(told));
}

// What was replaced is text, so it goes both ways from then on.

TEST(HostileText, OfOctetsNeedsTheRoomThatIsTold) {
    const std::string pieces[] = {
        "a",        std::string(1, '\0'), "\x80", "\xbf", "\xc2",         "\xe0", "\xed\xa0\x80",
        "\xc3\xa4", "\xe2\x82\xac",       "\xf0", "\xf4", "\xf0\x9f\x98", "\xff", "\xf4\x90\x80\x80"};
    std::mt19937 random;
    for (int round = 0; round < 3000; ++round) {
        const std::wstring wide = widened("x" + drawn(random, pieces, 12));
        EXPECT_EQ(widened(narrowed(wide)), wide);
    }
}

TEST(HostileText, OfWideCharactersNeedsTheRoomThatIsTold) {
    const std::wstring pieces[] = {L"a",
                                   L"\u00e4",
                                   L"\u20ac",
                                   L"\U0001f600",
                                   std::wstring(1, static_cast<wchar_t>(0xD800)),
                                   std::wstring(1, static_cast<wchar_t>(0xDFFF)),
                                   std::wstring(1, static_cast<wchar_t>(0x110000)),
                                   std::wstring(1, static_cast<wchar_t>(-1)),
                                   std::wstring(1, L'\0')};
    std::mt19937 random;
    for (int round = 0; round < 3000; ++round) {
        const std::string octets = narrowed(L"x" + drawn(random, pieces, 12));
        EXPECT_EQ(narrowed(widened(octets)), octets);
    }
}

TEST(HostileKeyName, IsTakenApartOrRefused) {
    const std::string pieces[] = {
        ";",     "?",  "&",         "=",      "%",           "%4",           "%41", "%00",  "%zz", "object",
        "token", "id", "pin-value", "serial", "module-path", "manufacturer", "x",   "\xff", " "};
    std::mt19937 random;
    int taken = 0;
    for (int round = 0; round < 5000; ++round) {
        const std::string uri = "pkcs11:" + drawn(random, pieces, 10);
        const auto octets = block_of(uri);
        try {
            const Pkcs11Uri parsed = parse_pkcs11_uri({octets.get(), uri.size()});
            EXPECT_TRUE(parsed.key.starts_with("pkcs11:")) << uri;
            ++taken;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, NTE_BAD_KEYSET) << uri;
        }
    }
    EXPECT_GT(taken, 0);
}

TEST(HostileObjectIdText, IsReadAsItIsWrittenOrRefused) {
    const std::string pieces[] = {"0",
                                  "1",
                                  "2",
                                  "39",
                                  "40",
                                  "127",
                                  "128",
                                  "18446744073709551535",
                                  "18446744073709551615",
                                  "18446744073709551616",
                                  ".",
                                  ".",
                                  ".",
                                  ".",
                                  "+",
                                  "-",
                                  " "};
    std::mt19937 random;
    int taken = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string text = drawn(random, pieces, 9);
        try {
            const Bytes octets = object_id_from_text(text.c_str());
            ASSERT_TRUE(is_object_id(octets)) << text;
            std::string written = object_id_text(octets);
            EXPECT_EQ(object_id_from_text(written.c_str()), octets) << text;
            ++taken;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, CRYPT_E_OID_FORMAT) << text;
        }
    }
    EXPECT_GT(taken, 0);
}

}  // namespace
}  // namespace Quillmark::test
