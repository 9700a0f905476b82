#include "values/result.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/result_code.h"
#include "values/detail/last_error.h"

namespace {

static_assert(sizeof(CAtlException) == 4);
static_assert(!std::is_polymorphic_v<CAtlException>);
static_assert(std::is_same_v<CAtlException, ATL::CAtlException>);
static_assert(std::is_same_v<decltype(CAtlException::m_hr), HRESULT>);

struct CodeCase {
    const char* name;
    HRESULT code;
    uint32_t value;
};

// The numbers of the published headers.
const CodeCase kCodes[] = {
    {"S_OK", S_OK, 0},
    {"E_NOTIMPL", E_NOTIMPL, 0x80004001},
    {"E_FAIL", E_FAIL, 0x80004005},
    {"E_OUTOFMEMORY", E_OUTOFMEMORY, 0x8007000E},
    {"E_INVALIDARG", E_INVALIDARG, 0x80070057},
    {"NTE_BAD_SIGNATURE", NTE_BAD_SIGNATURE, 0x80090006},
    {"NTE_BAD_ALGID", NTE_BAD_ALGID, 0x80090008},
    {"NTE_BAD_FLAGS", NTE_BAD_FLAGS, 0x80090009},
    {"NTE_NO_KEY", NTE_NO_KEY, 0x8009000D},
    {"NTE_NO_MEMORY", NTE_NO_MEMORY, 0x8009000E},
    {"NTE_BAD_PUBLIC_KEY", NTE_BAD_PUBLIC_KEY, 0x80090015},
    {"NTE_BAD_KEYSET", NTE_BAD_KEYSET, 0x80090016},
    {"NTE_PROVIDER_DLL_FAIL", NTE_PROVIDER_DLL_FAIL, 0x8009001D},
    {"NTE_FAIL", NTE_FAIL, 0x80090020},
    {"NTE_SILENT_CONTEXT", NTE_SILENT_CONTEXT, 0x80090022},
    {"SCARD_W_WRONG_CHV", SCARD_W_WRONG_CHV, 0x8010006B},
    {"CRYPT_E_MSG_ERROR", CRYPT_E_MSG_ERROR, 0x80091001},
    {"CRYPT_E_UNKNOWN_ALGO", CRYPT_E_UNKNOWN_ALGO, 0x80091002},
    {"CRYPT_E_OID_FORMAT", CRYPT_E_OID_FORMAT, 0x80091003},
    {"CRYPT_E_INVALID_MSG_TYPE", CRYPT_E_INVALID_MSG_TYPE, 0x80091004},
    {"CRYPT_E_AUTH_ATTR_MISSING", CRYPT_E_AUTH_ATTR_MISSING, 0x80091006},
    {"CRYPT_E_HASH_VALUE", CRYPT_E_HASH_VALUE, 0x80091007},
    {"CRYPT_E_INVALID_INDEX", CRYPT_E_INVALID_INDEX, 0x80091008},
    {"CRYPT_E_CONTROL_TYPE", CRYPT_E_CONTROL_TYPE, 0x8009100C},
    {"CRYPT_E_SIGNER_NOT_FOUND", CRYPT_E_SIGNER_NOT_FOUND, 0x8009100E},
    {"CRYPT_E_ATTRIBUTES_MISSING", CRYPT_E_ATTRIBUTES_MISSING, 0x8009100F},
    {"CRYPT_E_BAD_MSG", CRYPT_E_BAD_MSG, 0x8009200D},
    {"CRYPT_E_ASN1_INTERNAL", CRYPT_E_ASN1_INTERNAL, 0x80093101},
    {"CRYPT_E_ASN1_EOD", CRYPT_E_ASN1_EOD, 0x80093102},
    {"CRYPT_E_ASN1_CORRUPT", CRYPT_E_ASN1_CORRUPT, 0x80093103},
    {"CRYPT_E_ASN1_LARGE", CRYPT_E_ASN1_LARGE, 0x80093104},
    {"CRYPT_E_ASN1_MEMORY", CRYPT_E_ASN1_MEMORY, 0x80093106},
    {"CRYPT_E_ASN1_BADTAG", CRYPT_E_ASN1_BADTAG, 0x8009310B},
    {"CRYPT_E_ASN1_UTF8", CRYPT_E_ASN1_UTF8, 0x8009310E},
    {"TRUST_E_TIME_STAMP", TRUST_E_TIME_STAMP, 0x80096005},
    {"ERROR_FILE_NOT_FOUND", HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), 0x80070002},
    {"ERROR_INVALID_HANDLE", HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE), 0x80070006},
    {"ERROR_INSUFFICIENT_BUFFER", HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER), 0x8007007A},
    {"ERROR_MORE_DATA", HRESULT_FROM_WIN32(ERROR_MORE_DATA), 0x800700EA},
    {"ERROR_INVALID_FLAGS", HRESULT_FROM_WIN32(ERROR_INVALID_FLAGS), 0x800703EC},
    {"ERROR_NO_UNICODE_TRANSLATION", HRESULT_FROM_WIN32(ERROR_NO_UNICODE_TRANSLATION), 0x80070459},
    {"ERROR_FILE_CORRUPT", HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT), 0x80070570},
    {"ERROR_INVALID_TIME", HRESULT_FROM_WIN32(ERROR_INVALID_TIME), 0x8007076D},
};

class ResultCodes : public testing::TestWithParam<CodeCase> {};

TEST_P(ResultCodes, HasItsPublishedNumberAndName) {
    EXPECT_EQ(static_cast<uint32_t>(GetParam().code), GetParam().value);
    EXPECT_STREQ(result_name(GetParam().code), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Published, ResultCodes, testing::ValuesIn(kCodes),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ResultName, SaysSoOfAnUnknownCode) {
    EXPECT_STREQ(result_name(1), "unknown result code");
    EXPECT_STREQ(result_name(static_cast<HRESULT>(0x8007FFFF)), "unknown result code");
    EXPECT_STREQ(result_name(static_cast<HRESULT>(0x80040002)), "unknown result code");
}

TEST(ResultName, GivesArgumentAndMemoryFailuresTheirOwnNames) {
    EXPECT_STREQ(result_name(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER)), "E_INVALIDARG");
    EXPECT_STREQ(result_name(HRESULT_FROM_WIN32(14)), "E_OUTOFMEMORY");
}

TEST(LastError, PositiveBecomesFacilitySevenWithItsLowHalf) {
    EXPECT_EQ(static_cast<uint32_t>(HRESULT_FROM_WIN32(1)), 0x80070001u);
    EXPECT_EQ(static_cast<uint32_t>(HRESULT_FROM_WIN32(0x12345678)), 0x80075678u);
    EXPECT_EQ(static_cast<uint32_t>(HRESULT_FROM_WIN32(0x7FFFFFFF)), 0x8007FFFFu);
}

TEST(LastError, OtherValuesStay) {
    EXPECT_EQ(HRESULT_FROM_WIN32(0), 0);
    EXPECT_EQ(static_cast<uint32_t>(HRESULT_FROM_WIN32(0x80000000)), 0x80000000u);
    EXPECT_EQ(HRESULT_FROM_WIN32(static_cast<uint32_t>(NTE_BAD_KEYSET)), NTE_BAD_KEYSET);
}

TEST(LastError, OfAFailedCallIsThrown) {
    SetLastError(ERROR_MORE_DATA);
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_MORE_DATA), Quillmark::detail::check_call(0));
}

TEST(LastError, OfNoneIsThrownAsCodeZero) {
    SetLastError(0);
    EXPECT_CODE(S_OK, Quillmark::detail::throw_last_error());
}

TEST(LastError, IsNotAskedAfterACallThatSucceeded) {
    SetLastError(ERROR_MORE_DATA);
    EXPECT_NO_THROW(Quillmark::detail::check_call(1));
}

TEST(CAtlException, IsUnspecifiedFailureByDefault) {
    EXPECT_EQ(CAtlException().m_hr, E_FAIL);
}

TEST(CAtlException, ConvertsToItsCode) {
    const HRESULT code = CAtlException(CRYPT_E_BAD_MSG);
    EXPECT_EQ(code, CRYPT_E_BAD_MSG);
}

}  // namespace
