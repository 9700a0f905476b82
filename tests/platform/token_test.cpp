// Keys on PKCS #11 tokens, through the engine `pkcs11`. The tokens are SoftHSM's and are made by
// support/make_tokens.sh; where the programs are not installed the tests are skipped. A login holds for the
// whole process, so tests of PINs each have a token of their own, or a process.

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <thread>

#include "tests/platform/containers.h"
#include "tests/support/child_process.h"

namespace Quillmark::test {
namespace {

std::string text_of(const std::string& file) {
    const Octets text = read_file(pki_path(file));
    return std::string(text.begin(), text.end()).substr(0, text.size() - 1);  // without its newline
}

/// Tells SoftHSM to keep its tokens in `directory`.
void use_tokens_of(const TemporaryDirectory& directory) {
    const std::string conf = directory.path("softhsm2.conf");
    const std::string text = "directories.tokendir = " + directory.path("") + "\nlog.level = ERROR\n";
    write_file(conf, Octets(text.begin(), text.end()));
    setenv("SOFTHSM2_CONF", conf.c_str(), 1);
}

/// SoftHSM writes to its tokens even when it only reads their keys, and processes that share tokens find
/// them half-written: each process of these tests has a copy.
struct CopiedTokens : TemporaryDirectory {
    CopiedTokens() {
        std::filesystem::copy(pki_path("tokens/store"), path(""), std::filesystem::copy_options::recursive);
    }
};

class Token : public testing::Test {
  protected:
    void SetUp() override {
        if (std::filesystem::exists(pki_path("tokens/absent"))) {
            GTEST_SKIP() << text_of("tokens/absent");
        }
        static const CopiedTokens tokens;
        use_tokens_of(tokens);
    }

    /// The name of a key: attributes of its token and itself, and of the query behind the module.
    static std::string key(const std::string& attributes, const std::string& query = {}) {
        return "pkcs11:" + attributes + "?module-path=" + text_of("tokens/module") + query;
    }
};

TEST_F(Token, SignsWithItsKeys) {
    const Acquired rsa(key("token=signer;object=rsa;type=private", "&pin-value=1234"));
    ASSERT_TRUE(rsa.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(rsa.handle, "tsa_rsa2048"));
    EXPECT_TRUE(signs(rsa.handle, "tsa_rsa2048", AT_KEYEXCHANGE, kSha512Oid));
    const Acquired ec(key("token=signer;object=ec;type=private", "&pin-value=1234"));
    ASSERT_TRUE(ec.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(ec.handle, "tsa_p256"));
    EXPECT_TRUE(signs(ec.handle, "tsa_p256", AT_KEYEXCHANGE, kSha384Oid));
}

TEST_F(Token, SignsWithAKeyThatNeverLeftIt) {
    const Acquired provider(key("token=signer;id=%03", "&pin-value=1234"));
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle, "tokens/tsa_generated"));
}

TEST_F(Token, IsNamedThroughItsEngineToo) {
    const Acquired provider("engine:pkcs11:" + key("token=signer;object=ec", "&pin-value=1234"));
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle, "tsa_p256"));
}

TEST_F(Token, TakesThePinInThePathAndWithPercentSigns) {
    const Acquired provider(key("token=signer;object=ec;pin-value=%31%32%334"));
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle, "tsa_p256"));
    EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired(key("token=signer", "&pin-value=%3")).result));
}

TEST_F(Token, TakesWideNames) {
    const std::string name = key("token=signer;object=ec", "&pin-value=1234");
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(CryptAcquireContextW(&handle, std::wstring(name.begin(), name.end()).c_str(), nullptr,
                                     PROV_RSA_AES, CRYPT_SILENT))
        << std::hex << GetLastError();
    EXPECT_TRUE(signs(handle, "tsa_p256"));
    CryptReleaseContext(handle, 0);
}

TEST_F(Token, RefusesTheCertificateOfAnotherKey) {
    const Acquired provider(key("token=signer;object=ec", "&pin-value=1234"));
    ASSERT_TRUE(provider.result);
    EXPECT_TRUE(fails_with(NTE_BAD_PUBLIC_KEY, open_with(provider.handle, "other_tsa") != nullptr));
    EXPECT_TRUE(fails_with(NTE_BAD_PUBLIC_KEY, open_with(provider.handle, "tsa_rsa2048") != nullptr));
}

TEST_F(Token, OneKeyServesForBothAndNoOther) {
    const Acquired provider(key("token=signer;object=ec", "&pin-value=1234"));
    EXPECT_TRUE(signs(provider.handle, "tsa_p256", 0));
    EXPECT_TRUE(fails_with(NTE_NO_KEY, open_with(provider.handle, "tsa_p256", 3) != nullptr));
}

// PINs

TEST_F(Token, WaitsForItsPin) {
    const Acquired provider(key("token=locked;object=ec"));
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(provider.handle) != nullptr));
    EXPECT_TRUE(fails_with(SCARD_W_WRONG_CHV, provider.set_pin("9999")));
    EXPECT_TRUE(fails_with(SCARD_W_WRONG_CHV, provider.set_pin(""))) << "empty";
    EXPECT_TRUE(provider.set_pin("1111")) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle, "tsa_p256"));
}

TEST_F(Token, IsNeverTriedWithThePinOfAnother) {
    const Acquired other(key("token=other;object=ec", "&pin-value=5678"));
    ASSERT_TRUE(other.result);
    const Acquired silent(key("token=silent;object=ec"));
    ASSERT_TRUE(silent.result) << "the engine would have sent the PIN that it keeps";
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(silent.handle) != nullptr));
    EXPECT_TRUE(signs(other.handle, "tsa_p256"));
}

TEST_F(Token, IsNotOpenedWithAWrongPinInItsName) {
    EXPECT_TRUE(
        fails_with(SCARD_W_WRONG_CHV, Acquired(key("token=inline;object=ec", "&pin-value=1")).result));
    const Acquired provider(key("token=inline;object=ec", "&pin-value=3333"));
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle, "tsa_p256"));
}

TEST_F(Token, AsksTheCallbackForItsPin) {
    Password password{"wrong"};
    HCRYPTPROV handle = 0;
    const std::string name = key("token=called;object=ec");
    EXPECT_TRUE(fails_with(SCARD_W_WRONG_CHV,
                           KeyContainerOpen(&handle, name.c_str(), nullptr, 0, give_password, &password)));
    EXPECT_EQ(password.calls, 1);
    EXPECT_EQ(password.container, name);
    password.text = nullptr;
    ASSERT_TRUE(KeyContainerOpen(&handle, name.c_str(), nullptr, 0, give_password, &password));
    password.text = "4444";
    EXPECT_TRUE(signs(handle, "tsa_p256")) << "asked again at the first signature";
    const int calls = password.calls;
    EXPECT_TRUE(signs(handle, "tsa_p256"));
    EXPECT_EQ(password.calls, calls);
    CryptReleaseContext(handle, 0);
}

// The engine would ask on the terminal for the PIN that such a key wants each time.
TEST_F(Token, WithAPinForEachSignatureIsNotServed) {
    const Acquired provider(key("token=each;object=always", "&pin-value=7777"));
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    const Message message(open_with(provider.handle, "tokens/tsa_always"));
    ASSERT_NE(message.handle(), nullptr) << std::hex << GetLastError();
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, message.update(kContent)));
}

// What is missing

TEST_F(Token, OrKeyOrModuleThatIsMissingIsTold) {
    EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired(key("token=missing;object=ec")).result));
    EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired(key("token=missing;object=ec", "&pin-value=1")).result));
    EXPECT_TRUE(
        fails_with(NTE_NO_KEY, Acquired(key("token=signer;object=missing", "&pin-value=1234")).result));
    EXPECT_TRUE(
        fails_with(NTE_NO_KEY, Acquired(key("token=signer;object=missing", "&pin-value=1234")).result))
        << "with the login done";
    EXPECT_TRUE(fails_with(NTE_NO_KEY, Acquired(key("token=empty;object=ec", "&pin-value=6666")).result));
    for (const char* const path : {"/nonexistent.so", "libcrypto.so.3", ""}) {
        EXPECT_TRUE(
            fails_with(NTE_PROVIDER_DLL_FAIL,
                       Acquired("pkcs11:token=signer;object=ec?module-path=" + std::string(path)).result))
            << path;
    }
    const Acquired provider(key("token=signer;object=ec", "&pin-value=1234"));
    EXPECT_TRUE(signs(provider.handle, "tsa_p256")) << "the failures have changed nothing";
}

TEST_F(Token, NameThatIsNoneIsRefused) {
    for (const char* const name : {"pkcs11:nonsense", "engine:pkcs11:pkcs11:nonsense", "pkcs11:token=%",
                                   "pkcs11:token=a%0gb", "pkcs11:pin-value=%00"}) {
        EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired(name).result)) << name;
    }
}

TEST_F(Token, LeavesTheErrorQueueOfTheApplicationAlone) {
    ERR_clear_error();
    ERR_raise_data(ERR_LIB_USER, 41, "with %s", "text");
    ERR_raise(ERR_LIB_USER, 42);
    const Acquired provider(key("token=signer;object=ec", "&pin-value=1234"));
    EXPECT_TRUE(signs(provider.handle, "tsa_p256"));
    const Acquired missing(key("token=missing;object=ec"));
    const Acquired waiting(key("token=silent;object=ec"));
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(waiting.handle) != nullptr)) << "scope in scope";
    const char* data = nullptr;
    int flags = 0;
    EXPECT_EQ(ERR_GET_REASON(ERR_get_error_all(nullptr, nullptr, nullptr, &data, &flags)), 41);
    EXPECT_STREQ(data, "with text");
    EXPECT_EQ(ERR_GET_REASON(ERR_get_error()), 42);
    EXPECT_EQ(ERR_get_error(), 0u);
}

TEST_F(Token, SignsInManyThreads) {
    const Acquired rsa(key("token=signer;object=rsa", "&pin-value=1234"));
    const Acquired ec(key("token=other;object=ec", "&pin-value=5678"));
    ASSERT_TRUE(rsa.result && ec.result);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 10; ++round) {
                EXPECT_TRUE(i % 2 == 0 ? signs(rsa.handle, "tsa_rsa2048") : signs(ec.handle, "tsa_p256"));
                const Acquired opened(key("token=signer;object=generated", "&pin-value=1234"));
                EXPECT_TRUE(signs(opened.handle, "tokens/tsa_generated"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Processes of their own

class TokenDeathTest : public Token {
  protected:
    void SetUp() override {
        Token::SetUp();
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }

    static void exit_with(const std::function<bool()>& check) { end_child(check() ? 0 : 1); }
};

TEST_F(TokenDeathTest, NothingIsAskedOnTheTerminal) {
    EXPECT_EXIT(exit_with([] {
                    const Acquired provider(key("token=silent;object=ec"), nullptr, 0);
                    return provider.result &&
                           fails_with(NTE_SILENT_CONTEXT, open_with(provider.handle) != nullptr);
                }),
                testing::ExitedWithCode(0), "^$");  // not a word on standard error either
}

// The engine's own way to name a key.
TEST_F(TokenDeathTest, SlotAndKeyAreNamedByNumbersToo) {
    EXPECT_EXIT(exit_with([] {
                    setenv("PKCS11_MODULE_PATH", text_of("tokens/module").c_str(), 1);
                    return fails_with(NTE_BAD_KEYSET, Acquired("engine:pkcs11:nonsense").result) &&
                           fails_with(NTE_NO_KEY, Acquired("engine:pkcs11:slot_99-id_01").result);
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(TokenDeathTest, ModuleMayComeFromTheEnvironment) {
    EXPECT_EXIT(exit_with([] {
                    setenv("PKCS11_MODULE_PATH", text_of("tokens/module").c_str(), 1);
                    const Acquired provider("pkcs11:token=signer;object=ec?pin-value=1234");
                    const Acquired again(key("token=signer;object=rsa", "&pin-value=1234"));
                    return provider.result && signs(provider.handle, "tsa_p256") && again.result &&
                           signs(again.handle, "tsa_rsa2048");
                }),
                testing::ExitedWithCode(0), "");
}

// The engine does not tell which of the two is missing, and which module it has is not known here.
TEST_F(TokenDeathTest, KeyOrTokenThatIsMissingIsToldWithAModuleOfTheEnvironment) {
    EXPECT_EXIT(exit_with([] {
                    setenv("PKCS11_MODULE_PATH", text_of("tokens/module").c_str(), 1);
                    return fails_with(NTE_BAD_KEYSET,
                                      Acquired("pkcs11:token=missing;object=ec?pin-value=1234").result) &&
                           fails_with(NTE_NO_KEY,
                                      Acquired("pkcs11:token=signer;object=missing?pin-value=1234").result) &&
                           Acquired("pkcs11:token=signer;object=ec?pin-value=1234").result;
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(TokenDeathTest, ModuleOfTheEnvironmentMayBeMissing) {
    EXPECT_EXIT(exit_with([] {
                    setenv("PKCS11_MODULE_PATH", "/nonexistent.so", 1);
                    return fails_with(NTE_PROVIDER_DLL_FAIL,
                                      Acquired("pkcs11:token=signer;object=ec").result) &&
                           Acquired(key("token=signer;object=ec", "&pin-value=1234")).result;
                }),
                testing::ExitedWithCode(0), "");
}

// Intended: the engine has one module, and keys of the one in use would be lost.
TEST_F(TokenDeathTest, AnotherModuleIsRefusedOnceAKeyIsInUse) {
    EXPECT_EXIT(exit_with([] {
                    const TemporaryDirectory directory;
                    const std::string copy = directory.path("module.so");
                    std::filesystem::copy_file(text_of("tokens/module"), copy);
                    const Acquired provider(key("token=signer;object=ec", "&pin-value=1234"));
                    const bool is_refused = fails_with(
                        NTE_PROVIDER_DLL_FAIL,
                        Acquired("pkcs11:token=signer;object=ec?pin-value=1234&module-path=" + copy).result);
                    return is_refused && signs(provider.handle, "tsa_p256");
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(TokenDeathTest, AnotherModuleIsTakenWhileNoKeyIsInUse) {
    EXPECT_EXIT(
        exit_with([] {
            const TemporaryDirectory directory;
            const std::string copy = directory.path("module.so");
            std::filesystem::copy_file(text_of("tokens/module"), copy);
            return fails_with(NTE_BAD_KEYSET, Acquired(key("token=missing;object=ec")).result) &&
                   Acquired("pkcs11:token=signer;object=ec?pin-value=1234&module-path=" + copy).result;
        }),
        testing::ExitedWithCode(0), "");
}

TEST_F(TokenDeathTest, TokenThatIsPutInLaterIsFound) {
    EXPECT_EXIT(exit_with([] {
                    const TemporaryDirectory directory;
                    use_tokens_of(directory);
                    if (!fails_with(NTE_BAD_KEYSET, Acquired(key("token=late;object=ec")).result)) {
                        return false;
                    }
                    const std::string util = "softhsm2-util --module " + text_of("tokens/module");
                    return directory.run(util +
                                         " --init-token --free --label late --pin 1234 --so-pin 0000 && " +
                                         util + " --import " + pki_path("tsa_p256.key") +
                                         " --token late --pin 1234 --label ec --id 02") &&
                           Acquired(key("token=late;object=ec", "&pin-value=1234")).result;
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(TokenDeathTest, WithoutTheEngineNoTokenIsOpened) {
    EXPECT_EXIT(exit_with([] {
                    setenv("OPENSSL_ENGINES", "/nonexistent", 1);
                    return fails_with(NTE_PROVIDER_DLL_FAIL, Acquired(key("token=signer;object=ec")).result);
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(TokenDeathTest, HandlesOfKeysAreReleasedAfterTheEndOfLibcrypto) {
    EXPECT_EXIT(
        exit_with([] {
            HCRYPTPROV handle = 0;
            if (!CryptAcquireContextA(&handle, key("token=signer;object=ec", "&pin-value=1234").c_str(),
                                      nullptr, PROV_RSA_AES, 0) ||
                !signs(handle, "tsa_p256")) {
                return false;
            }
            OPENSSL_cleanup();
            return fails_with(E_FAIL, Acquired(key("token=other;object=ec")).result) &&
                   CryptReleaseContext(handle, 0);
        }),
        testing::ExitedWithCode(0), "");
}

// Objects of the application that are older than all that the modules bring along.
struct LateUser {
    HCRYPTPROV handle = 0;
    HCRYPTMSG open = nullptr;
    ~LateUser() {
        CryptMsgUpdate(open, kContent.data(), static_cast<DWORD>(kContent.size()), 1);
        CryptMsgClose(open);
        CryptReleaseContext(handle, 0);
    }
} late_user;

TEST_F(TokenDeathTest, KeyMayBeInUseAtTheEndOfTheProcess) {
    EXPECT_EXIT(
        {
            const std::string name = key("token=signer;object=ec", "&pin-value=1234");
            CryptAcquireContextA(&late_user.handle, name.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT);
            late_user.open = open_with(late_user.handle);
            exit(late_user.open != nullptr && signs(late_user.handle) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Quillmark::test
