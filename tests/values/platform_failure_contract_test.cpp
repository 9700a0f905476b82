// What the values make of calls that fail beneath them: the platform's conversions and the C library's. The
// functions here stand between the values and both, and fail on demand.

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include <dlfcn.h>
#include <unistd.h>

#include "platform/cryptoapi.h"
#include "tests/support/case_name.h"
#include "tests/support/result_code.h"
#include "values/blob.h"
#include "values/datetime.h"

namespace {

using Quillmark::CBlob;
using Quillmark::CDateTime;
using Quillmark::DateAddA;
using Quillmark::toXsdDateTimeString;

// The call that is to fail next, how many of its kind go through before it, and the last error that it
// leaves.
struct Refusal {
    std::string function;
    int skip = 0;
    DWORD last_error = 0;
} refusal;

// In force for the life of the object.
class Refuse {
  public:
    explicit Refuse(const std::string& function, DWORD last_error = 0, int skip = 0) {
        refusal = {function, skip, last_error};
    }
    ~Refuse() { refusal = {}; }
    Refuse(const Refuse&) = delete;
    Refuse& operator=(const Refuse&) = delete;
};

bool refused(const char* function) {
    if (refusal.function != function || refusal.skip-- > 0) {
        return false;
    }
    SetLastError(refusal.last_error);
    return true;
}

template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int WideCharToMultiByte(UINT page, DWORD flags, LPCWSTR wide, int wide_size, LPSTR narrow, int narrow_size,
                        LPCSTR default_char, BOOL* used_default) {
    // A path is measured and converted with its terminator, and with no flags.
    EXPECT_EQ(page, CP_ACP);
    EXPECT_EQ(flags, 0u);
    EXPECT_EQ(wide_size, -1);
    return refused("WideCharToMultiByte")
               ? 0
               : real<decltype(WideCharToMultiByte)>("WideCharToMultiByte")(
                     page, flags, wide, wide_size, narrow, narrow_size, default_char, used_default);
}

BOOL FileTimeToSystemTime(const FILETIME* file_time, LPSYSTEMTIME system_time) {
    return refused("FileTimeToSystemTime")
               ? 0
               : real<decltype(FileTimeToSystemTime)>("FileTimeToSystemTime")(file_time, system_time);
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* system_time, LPFILETIME file_time) {
    return refused("SystemTimeToFileTime")
               ? 0
               : real<decltype(SystemTimeToFileTime)>("SystemTimeToFileTime")(system_time, file_time);
}

std::size_t strftime(char* out, std::size_t room, const char* format, const std::tm* time) noexcept {
    return refused("strftime") ? 0 : real<decltype(strftime)>("strftime")(out, room, format, time);
}

std::size_t wcsftime(wchar_t* out, std::size_t room, const wchar_t* format, const std::tm* time) noexcept {
    return refused("wcsftime") ? 0 : real<decltype(wcsftime)>("wcsftime")(out, room, format, time);
}

std::size_t fread(void* out, std::size_t size, std::size_t count, std::FILE* file) {
    return refused("fread") ? 0 : real<decltype(fread)>("fread")(out, size, count, file);
}

int fseek(std::FILE* file, long offset, int origin) {
    return refused("fseek") ? -1 : real<decltype(fseek)>("fseek")(file, offset, origin);
}

long ftell(std::FILE* file) {
    return refused("ftell") ? -1 : real<decltype(ftell)>("ftell")(file);
}

}  // extern "C"

namespace {

CBlob two_bytes() {
    return CBlob(reinterpret_cast<const unsigned char*>("\x01\x02"), 2);
}

const CDateTime kTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u);

struct CodeCase {
    const char* name;
    DWORD last_error;
    HRESULT code;
};

// A positive last error becomes a result of facility 7 with its low half; any other stays.
const CodeCase kCodes[] = {
    {.name = "SmallNumber", .last_error = 122, .code = static_cast<HRESULT>(0x8007007A)},
    {.name = "NumberAboveSixteenBits", .last_error = 0x12345, .code = static_cast<HRESULT>(0x80072345)},
    {.name = "ResultCode", .last_error = 0x80091001, .code = CRYPT_E_MSG_ERROR},
};

class FailedConversion : public testing::TestWithParam<CodeCase> {};

TEST_P(FailedConversion, OfAPathThrowsItsLastError) {
    CBlob blob = two_bytes();
    for (const int skip : {0, 1}) {
        const Refuse measured_or_converted("WideCharToMultiByte", GetParam().last_error, skip);
        EXPECT_CODE(GetParam().code, blob.readFromFile(L"/nowhere"));
        EXPECT_EQ(blob, two_bytes()) << "the file was not reached";
    }
    const Refuse measured("WideCharToMultiByte", GetParam().last_error);
    EXPECT_CODE(GetParam().code, blob.writeToFile(L"/nowhere"));
}

TEST_P(FailedConversion, OfATimeThrowsItsLastErrorInEveryGetter) {
    const Refuse refuse("FileTimeToSystemTime", GetParam().last_error);
    EXPECT_CODE(GetParam().code, kTime.year());
    EXPECT_CODE(GetParam().code, kTime.month());
    EXPECT_CODE(GetParam().code, kTime.day());
    EXPECT_CODE(GetParam().code, kTime.hour());
    EXPECT_CODE(GetParam().code, kTime.minute());
    EXPECT_CODE(GetParam().code, kTime.second());
    EXPECT_CODE(GetParam().code, kTime.getSystemTime());
    EXPECT_CODE(GetParam().code, DateAddA("m", 1, kTime));
}

TEST_P(FailedConversion, OfFieldsThrowsItsLastError) {
    const Refuse refuse("SystemTimeToFileTime", GetParam().last_error);
    EXPECT_CODE(GetParam().code, CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u));
    EXPECT_CODE(GetParam().code, CDateTime(SYSTEMTIME{2024, 1, 0, 2, 3, 4, 5, 0}));
    EXPECT_CODE(GetParam().code, DateAddA("m", 1, kTime));
    EXPECT_CODE(GetParam().code, DateAddA("y", 1, kTime));
}

// The text is at fault, whatever the platform says.
TEST_P(FailedConversion, OfATextIsAnUnspecifiedFailure) {
    const Refuse refuse("SystemTimeToFileTime", GetParam().last_error);
    EXPECT_CODE(E_FAIL, CDateTime("20240102030405Z"));
    EXPECT_CODE(E_FAIL, Quillmark::fromXsdDateTimeString("2024-01-02T03:04:05Z"));
}

INSTANTIATE_TEST_SUITE_P(LastErrors, FailedConversion, testing::ValuesIn(kCodes), Quillmark::test::case_name);

TEST(FailedPathConversion, WithoutALastErrorIsAFileThatCannotBeRead) {
    CBlob blob = two_bytes();
    const Refuse refuse("WideCharToMultiByte", 0);
    EXPECT_CODE(static_cast<HRESULT>(0x80070570), blob.readFromFile(L"/nowhere"));
    EXPECT_CODE(static_cast<HRESULT>(0x80070570), blob.writeToFile(L"/nowhere"));
}

// Intended: elsewhere a last error of 0 is thrown as it stands.
TEST(FailedDateConversion, WithoutALastErrorIsCodeZero) {
    const Refuse refuse("FileTimeToSystemTime", 0);
    EXPECT_CODE(S_OK, kTime.year());
}

TEST(FailedRead, LeavesSizeZeroAndTheOldStorage) {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("failed_read." + std::to_string(getpid()));
    std::ofstream(path) << "contents";
    // The second seek goes back to the start.
    for (const auto& [function, skip] :
         {std::pair{"fread", 0}, std::pair{"fseek", 0}, std::pair{"fseek", 1}, std::pair{"ftell", 0}}) {
        SCOPED_TRACE(function);
        CBlob blob = two_bytes();
        const unsigned char* storage = blob.pbData();
        const Refuse refuse(function, 0, skip);
        EXPECT_CODE(static_cast<HRESULT>(0x80070570), blob.readFromFile(path.c_str()));
        EXPECT_EQ(blob.cbData(), 0u);
        EXPECT_EQ(blob.pbData(), storage);
    }
    std::filesystem::remove(path);
}

TEST(FormatterThatWritesNothing, IsAFailureOfTheDisplayForms) {
    const Refuse refuse("strftime");
    EXPECT_CODE(E_FAIL, kTime.tostring());
    EXPECT_CODE(E_FAIL, kTime.getGeneralizedTimeTrimMicroseconds());
    EXPECT_STREQ(kTime.getGeneralizedTime().c_str(), "20240102030405Z") << "made without it";
}

TEST(FormatterThatWritesNothing, IsAFailureOfTheWideDisplayForm) {
    const Refuse refuse("wcsftime");
    EXPECT_CODE(E_FAIL, kTime.towstring());
    EXPECT_STREQ(kTime.tostring().c_str(), "02.01.2024 03:04:05");
}

// Intended: unlike the display forms, this one gives an empty text.
TEST(FormatterThatWritesNothing, MakesAnEmptyXsdText) {
    const Refuse refuse("strftime");
    EXPECT_STREQ(toXsdDateTimeString(kTime).c_str(), "");
    const CDateTime with_fraction(2024u, 1u, 2u, 3u, 4u, 5u, 500u, 0u);
    EXPECT_STREQ(toXsdDateTimeString(with_fraction).c_str(), "");
}

}  // namespace
