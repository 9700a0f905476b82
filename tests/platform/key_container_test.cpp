// Opening keys: files of every form, passwords, key choice, flags.

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include "tests/platform/containers.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

class KeyFile : public testing::TestWithParam<const char*> {};

TEST_P(KeyFile, SignsWithoutPassword) {
    const Acquired provider(pki_path(GetParam()));
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle));
}

INSTANTIATE_TEST_SUITE_P(Forms, KeyFile,
                         testing::Values("tsa_p256.key", "tsa_p256_traditional.key", "tsa_p256_pkcs8.der",
                                         "tsa_p256_empty.p12"));

class LockedKeyFile : public testing::TestWithParam<const char*> {};

TEST_P(LockedKeyFile, WaitsForThePassword) {
    const Acquired provider(pki_path(GetParam()));
    ASSERT_TRUE(provider.result);
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(provider.handle) != nullptr));
    EXPECT_TRUE(fails_with(SCARD_W_WRONG_CHV, CryptSetProvParam(provider.handle, PP_SIGNATURE_PIN,
                                                                reinterpret_cast<const BYTE*>("wrong"), 0)));
    EXPECT_TRUE(
        CryptSetProvParam(provider.handle, PP_SIGNATURE_PIN, reinterpret_cast<const BYTE*>("secret"), 0))
        << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle));
}

TEST_P(LockedKeyFile, RefusesAPasswordThatIsLongerThanLibcryptoTakes) {
    const Acquired provider(pki_path(GetParam()));
    ASSERT_TRUE(provider.result);
    const std::string password(2000, 'x');
    EXPECT_FALSE(CryptSetProvParam(provider.handle, PP_SIGNATURE_PIN,
                                   reinterpret_cast<const BYTE*>(password.c_str()), 0));
    EXPECT_TRUE(
        CryptSetProvParam(provider.handle, PP_SIGNATURE_PIN, reinterpret_cast<const BYTE*>("secret"), 0));
    EXPECT_TRUE(signs(provider.handle));
}

TEST_P(LockedKeyFile, AsksTheCallbackWhenItIsOpened) {
    Password password{"secret"};
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(KeyContainerOpen(&handle, pki_path(GetParam()).c_str(), nullptr, 0, give_password, &password))
        << std::hex << GetLastError();
    EXPECT_EQ(password.container, pki_path(GetParam()));
    EXPECT_TRUE(signs(handle));
    CryptReleaseContext(handle, 0);
}

TEST_P(LockedKeyFile, IsNotOpenedWithAWrongPassword) {
    Password password{"wrong"};
    HCRYPTPROV handle = 0;
    EXPECT_TRUE(fails_with(SCARD_W_WRONG_CHV, KeyContainerOpen(&handle, pki_path(GetParam()).c_str(), nullptr,
                                                               0, give_password, &password)));
    EXPECT_EQ(handle, 0u);
}

TEST_P(LockedKeyFile, AsksTheCallbackAgainAtTheFirstSignature) {
    Password password{nullptr};
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(
        KeyContainerOpen(&handle, pki_path(GetParam()).c_str(), nullptr, 0, give_password, &password));
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(handle) != nullptr));
    password.text = "secret";
    EXPECT_TRUE(signs(handle));
    const int calls = password.calls;
    EXPECT_TRUE(signs(handle));
    EXPECT_EQ(password.calls, calls) << "asked once more for a key that is loaded";
    CryptReleaseContext(handle, 0);
}

INSTANTIATE_TEST_SUITE_P(Forms, LockedKeyFile, testing::Values("tsa_p256.p12", "tsa_p256_encrypted.key"));

TEST(KeyContainer, RefusesAPasswordThatIsLongerThanTheCallbackWasAllowed) {
    const auto lie = [](char*, int size, LPCSTR, void*) { return size + 1; };
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(KeyContainerOpen(&handle, pki_path("tsa_p256.p12").c_str(), nullptr, 0, lie, nullptr));
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(handle) != nullptr));
    CryptReleaseContext(handle, 0);
}

TEST(KeyContainer, IsOpenedWithoutACallback) {
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(KeyContainerOpen(&handle, pki_path("tsa_p256.p12").c_str(), nullptr, 0, nullptr, nullptr));
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(handle) != nullptr));
    EXPECT_TRUE(CryptSetProvParam(handle, PP_SIGNATURE_PIN, reinterpret_cast<const BYTE*>("secret"), 0));
    EXPECT_TRUE(signs(handle));
    CryptReleaseContext(handle, 0);
    EXPECT_TRUE(
        fails_with(NTE_BAD_KEYSET, KeyContainerOpen(&handle, nullptr, nullptr, 0, give_password, nullptr)));
}

TEST(KeyContainer, IgnoresAPasswordThatNoOneNeeds) {
    const Acquired provider(pki_path("tsa_p256.key"));
    EXPECT_TRUE(
        CryptSetProvParam(provider.handle, PP_KEYEXCHANGE_PIN, reinterpret_cast<const BYTE*>("any"), 0));
    EXPECT_TRUE(signs(provider.handle));
}

TEST(CryptSetProvParam, RefusesOtherParametersAndFlags) {
    const Acquired provider(pki_path("tsa_p256.p12"));
    const auto* pin = reinterpret_cast<const BYTE*>("secret");
    EXPECT_TRUE(fails_with(E_INVALIDARG, CryptSetProvParam(provider.handle, 1, pin, 0)));
    EXPECT_TRUE(fails_with(E_INVALIDARG, CryptSetProvParam(provider.handle, PP_SIGNATURE_PIN, nullptr, 0)));
    EXPECT_TRUE(fails_with(NTE_BAD_FLAGS, CryptSetProvParam(provider.handle, PP_SIGNATURE_PIN, pin, 1)));
}

TEST(CryptAcquireContext, RefusesWhatIsNoContainer) {
    const TemporaryDirectory directory;
    write_file(directory.path("garbage"), from_hex("30 82 ff ff 00 01 02"));
    write_file(directory.path("empty"), {});
    for (const std::string& path :
         {directory.path("missing"), directory.path("garbage"), directory.path("empty"), directory.path(""),
          std::string("nosuchscheme:key")}) {
        EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired(path).result)) << path;
    }
    HCRYPTPROV handle = 0;
    EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, CryptAcquireContextA(&handle, nullptr, nullptr, PROV_RSA_AES, 0)));
}

TEST(CryptAcquireContext, TellsContainersWithoutPrivateKey) {
    EXPECT_TRUE(fails_with(NTE_NO_KEY, Acquired(pki_path("tsa_p256.pem")).result));
    EXPECT_TRUE(fails_with(NTE_NO_KEY, Acquired(pki_path("tsa_p256_public.pem")).result));
}

TEST(CryptAcquireContext, RefusesFlagsThatMakeOrDeleteKeys) {
    const std::string path = pki_path("tsa_p256.key");
    for (const DWORD flag : {8u, 0x10u, 1u, 0x80000000u | 8u}) {
        EXPECT_TRUE(fails_with(NTE_BAD_FLAGS, Acquired(path, nullptr, flag).result)) << std::hex << flag;
    }
    EXPECT_TRUE(fails_with(NTE_BAD_FLAGS, Acquired(path, nullptr, CRYPT_VERIFYCONTEXT).result));
    EXPECT_TRUE(Acquired(path, nullptr, CRYPT_MACHINE_KEYSET).result);
}

TEST(CryptAcquireContext, RefusesNullOutput) {
    EXPECT_TRUE(fails_with(E_INVALIDARG, CryptAcquireContextA(nullptr, pki_path("tsa_p256.key").c_str(),
                                                              nullptr, PROV_RSA_AES, 0)));
}

TEST(CryptAcquireContext, LoadsTheModuleThatIsNamed) {
    EXPECT_TRUE(Acquired(pki_path("tsa_p256.key"), "default").result);
    EXPECT_TRUE(
        fails_with(NTE_PROVIDER_DLL_FAIL, Acquired(pki_path("tsa_p256.key"), "no_such_module").result));
}

TEST(CryptAcquireContext, OpensWithoutKeysForVerification) {
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(CryptAcquireContextA(&handle, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT));
    EXPECT_TRUE(fails_with(NTE_NO_KEY, open_with(handle) != nullptr));
    CryptReleaseContext(handle, 0);
}

TEST(CryptAcquireContextW, TakesWideNames) {
    const TemporaryDirectory directory;
    const std::string name = "schl\xC3\xBCssel.key";
    write_file(directory.path(name), read_pki("tsa_p256.key"));
    const std::string path = directory.path("");
    const std::wstring wide = std::wstring(path.begin(), path.end()) + L"schl\xFCssel.key";
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(CryptAcquireContextW(&handle, wide.c_str(), L"default", PROV_RSA_AES, CRYPT_SILENT))
        << std::hex << GetLastError();
    EXPECT_TRUE(signs(handle));
    CryptReleaseContext(handle, 0);
}

TEST(CryptAcquireContextW, RefusesTextThatIsNoUnicode) {
    HCRYPTPROV handle = 0;
    const wchar_t surrogate[] = {static_cast<wchar_t>(0xD800), 0};
    EXPECT_TRUE(fails_with(E_INVALIDARG, CryptAcquireContextW(&handle, surrogate, nullptr, PROV_RSA_AES, 0)));
    EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, CryptAcquireContextW(&handle, nullptr, nullptr, PROV_RSA_AES, 0)));
}

TEST(KeyChoice, OneKeyServesForBoth) {
    const Acquired provider(pki_path("tsa_p256.key"));
    EXPECT_TRUE(signs(provider.handle, "tsa_p256", 0));
    EXPECT_TRUE(signs(provider.handle, "tsa_p256", AT_KEYEXCHANGE));
    EXPECT_TRUE(signs(provider.handle, "tsa_p256", AT_SIGNATURE));
}

TEST(KeyChoice, OfTwoKeysTheFirstIsForKeyExchange) {
    const Acquired provider(pki_path("two_keys.pem"));
    ASSERT_TRUE(provider.result);
    EXPECT_TRUE(signs(provider.handle, "tsa_rsa2048", AT_KEYEXCHANGE));
    EXPECT_TRUE(signs(provider.handle, "tsa_rsa2048", 0));
    EXPECT_TRUE(signs(provider.handle, "tsa_p256", AT_SIGNATURE));
    EXPECT_TRUE(
        fails_with(NTE_BAD_PUBLIC_KEY, open_with(provider.handle, "tsa_p256", AT_KEYEXCHANGE) != nullptr));
}

TEST(KeyChoice, RefusesOtherNumbers) {
    const Acquired provider(pki_path("tsa_p256.key"));
    EXPECT_TRUE(fails_with(NTE_NO_KEY, open_with(provider.handle, "tsa_p256", 3) != nullptr));
}

TEST(KeyContainerFromKey, TakesAReferenceOfItsOwn) {
    FILE* const file = fopen(pki_path("tsa_p256.key").c_str(), "r");
    EVP_PKEY* const key = PEM_read_PrivateKey(file, nullptr, nullptr, nullptr);
    fclose(file);
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(KeyContainerFromKey(&handle, key));
    EVP_PKEY_free(key);
    EXPECT_TRUE(signs(handle));
    CryptReleaseContext(handle, 0);
    EXPECT_TRUE(fails_with(E_INVALIDARG, KeyContainerFromKey(&handle, nullptr)));
}

// A key on a token may not know its public half, and then there is nothing to compare the certificate's with.
// A key for message authentication codes, which has none, stands in for it.
TEST(KeyContainerFromKey, TakesAKeyThatDoesNotKnowItsPublicHalfForThatOfTheCertificate) {
    const Octets secret(32, 1);
    EVP_PKEY* const key = EVP_PKEY_new_raw_private_key(EVP_PKEY_HMAC, nullptr, secret.data(), secret.size());
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(KeyContainerFromKey(&handle, key)) << std::hex << GetLastError();
    EVP_PKEY_free(key);
    const Message message(open_with(handle));
    EXPECT_NE(message.handle(), nullptr) << std::hex << GetLastError();
    CryptReleaseContext(handle, 0);
}

TEST(KeyContainer, LeavesTheErrorQueueOfTheApplicationAlone) {
    ERR_clear_error();
    ERR_raise(ERR_LIB_USER, 42);
    Acquired(pki_path("missing"));
    Acquired(pki_path("tsa_p256.p12"));
    Acquired(pki_path("tsa_p256.key"), "no_such_module");
    const Acquired provider(pki_path("tsa_p256.key"));
    EXPECT_TRUE(signs(provider.handle));
    EXPECT_FALSE(signs(provider.handle, "tsa_rsa2048"));
    EXPECT_EQ(ERR_GET_REASON(ERR_get_error()), 42);
    EXPECT_EQ(ERR_get_error(), 0u);
}

}  // namespace
}  // namespace Quillmark::test
