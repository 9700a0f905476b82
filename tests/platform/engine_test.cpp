// Keys of engines: `engine:<id>:<key id>`, with an engine of the test's own.

// OpenSSL 3.0 deprecates engines.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <openssl/ec.h>
#include <openssl/engine.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "tests/platform/containers.h"
#include "tests/platform/out_of_memory.h"

namespace Quillmark::test {
namespace {

// What the engine met while it loaded a key, signed with one or let one go.
std::atomic<int> calls_at_once = 0;
std::atomic<bool> has_met_another = false;
std::atomic<bool> refuses_to_sign = false;

/// A call of the engine, long enough to be met by another.
class SlowCall {
  public:
    SlowCall() {
        if (calls_at_once.fetch_add(1) != 0) {
            has_met_another = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ~SlowCall() { --calls_at_once; }
    SlowCall(const SlowCall&) = delete;
    SlowCall& operator=(const SlowCall&) = delete;
};

int sign_slowly(int type, const unsigned char* digest, unsigned int size, unsigned char* signature,
                unsigned int* signature_size, const RSA* key) {
    const SlowCall call;
    RSA* const plain = RSA_new();
    RSA_set0_key(plain, BN_dup(RSA_get0_n(key)), BN_dup(RSA_get0_e(key)), BN_dup(RSA_get0_d(key)));
    RSA_set_method(plain, RSA_PKCS1_OpenSSL());
    const int result = refuses_to_sign ? 0 : RSA_sign(type, digest, size, signature, signature_size, plain);
    RSA_free(plain);
    return result;
}

int finish_slowly(RSA* key) {
    const SlowCall call;
    return RSA_meth_get_finish(RSA_PKCS1_OpenSSL())(key);
}

// The key of the tests in the older form that engines have, with a method of its own.
EVP_PKEY* make_engine_key() {
    static RSA_METHOD* const method = [] {
        RSA_METHOD* const fresh = RSA_meth_dup(RSA_PKCS1_OpenSSL());
        RSA_meth_set_sign(fresh, sign_slowly);
        RSA_meth_set_finish(fresh, finish_slowly);
        return fresh;
    }();
    FILE* const file = fopen(pki_path("tsa_rsa2048.key").c_str(), "r");
    EVP_PKEY* const key = PEM_read_PrivateKey(file, nullptr, nullptr, nullptr);
    fclose(file);
    RSA* const rsa = EVP_PKEY_get1_RSA(key);
    EVP_PKEY_free(key);
    RSA_set_method(rsa, method);
    EVP_PKEY* const engine_key = EVP_PKEY_new();
    EVP_PKEY_assign_RSA(engine_key, rsa);
    return engine_key;
}

bool has_right_pin(UI_METHOD* method, void* data) {
    std::array<char, 16> pin{};
    UI* const ui = UI_new_method(nullptr);
    UI_set_method(ui, method);
    UI_add_user_data(ui, data);
    UI_add_info_string(ui, "The engine of the tests");
    UI_add_input_string(ui, "PIN:", 0, pin.data(), 0, static_cast<int>(pin.size() - 1));
    const bool is_right = UI_process(ui) == 0 && std::strcmp(pin.data(), "1234") == 0;
    UI_free(ui);
    return is_right;
}

EVP_PKEY* load(ENGINE*, const char* key_id, UI_METHOD* method, void* data) {
    const SlowCall call;
    ERR_clear_error();  // some engines do
    const bool is_open = std::strcmp(key_id, "open") == 0;
    const bool is_locked = std::strcmp(key_id, "locked:key") == 0;
    if (is_open || (is_locked && has_right_pin(method, data))) {
        return make_engine_key();
    }
    ERR_raise(ERR_LIB_USER, 1);
    return nullptr;
}

class EngineKey : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ENGINE* const engine = ENGINE_new();
        ENGINE_set_id(engine, "quillmark_test");
        ENGINE_set_name(engine, "engine of the tests");
        ENGINE_set_load_privkey_function(engine, load);
        ENGINE_add(engine);
        ENGINE_free(engine);
    }

    void SetUp() override {
        has_met_another = false;
        refuses_to_sign = false;
    }
};

TEST_F(EngineKey, Signs) {
    const Acquired provider("engine:quillmark_test:open");
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle, "tsa_rsa2048"));
}

TEST_F(EngineKey, IsComparedWithTheCertificate) {
    const Acquired provider("engine:quillmark_test:open");
    EXPECT_TRUE(fails_with(NTE_BAD_PUBLIC_KEY, open_with(provider.handle, "tsa_p256") != nullptr));
}

TEST_F(EngineKey, WaitsForItsPin) {
    const Acquired provider("engine:quillmark_test:locked:key");
    ASSERT_TRUE(provider.result);
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(provider.handle, "tsa_rsa2048") != nullptr));
    EXPECT_TRUE(fails_with(SCARD_W_WRONG_CHV, provider.set_pin("4321")));
    EXPECT_TRUE(provider.set_pin("1234"));
    EXPECT_TRUE(signs(provider.handle, "tsa_rsa2048"));
}

TEST_F(EngineKey, AsksTheCallbackForItsPin) {
    Password password{"1234"};
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(
        KeyContainerOpen(&handle, "engine:quillmark_test:locked:key", nullptr, 0, give_password, &password));
    EXPECT_EQ(password.calls, 1);
    EXPECT_TRUE(signs(handle, "tsa_rsa2048"));
    CryptReleaseContext(handle, 0);
}

TEST_F(EngineKey, ThatIsNotThereIsABadContainer) {
    EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired("engine:quillmark_test:other").result));
    for (const char* const name :
         {"engine:", "engine::", "engine:quillmark_test", "engine:quillmark_test:", "engine::open"}) {
        EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired(name).result)) << name;
    }
}

TEST_F(EngineKey, OfNoEngineCannotBeLoaded) {
    EXPECT_TRUE(fails_with(NTE_PROVIDER_DLL_FAIL, Acquired("engine:no_such_engine:key").result));
}

TEST_F(EngineKey, MayBeOpenedWithItsEngineAsTheModule) {
    const Acquired provider("engine:quillmark_test:open", "quillmark_test");
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle, "tsa_rsa2048"));
    EXPECT_TRUE(Acquired(pki_path("tsa_p256.key"), "quillmark_test").result) << "loaded before";
}

TEST_F(EngineKey, TellsWhenTheEngineRefusesToSign) {
    const Acquired provider("engine:quillmark_test:open");
    const Message message(open_with(provider.handle, "tsa_rsa2048"));
    refuses_to_sign = true;
    EXPECT_TRUE(fails_with(NTE_FAIL, message.update(kContent)));
}

// As libcrypto does for ECDSA when the memory for the encoded signature is missing.
int announce_too_much(int, const unsigned char*, int, unsigned char*, unsigned int* size, const BIGNUM*,
                      const BIGNUM*, EC_KEY*) {
    *size = 0xFFFFFFFF;
    return 1;
}

TEST(KeyOfTheApplication, FailsToSignWhenItAnnouncesMoreThanThereIsRoomFor) {
    EC_KEY_METHOD* const method = EC_KEY_METHOD_new(EC_KEY_OpenSSL());
    EC_KEY_METHOD_set_sign(method, announce_too_much, nullptr, nullptr);
    FILE* const file = fopen(pki_path("tsa_p256.key").c_str(), "r");
    EVP_PKEY* const plain = PEM_read_PrivateKey(file, nullptr, nullptr, nullptr);
    fclose(file);
    EC_KEY* const ec_key = EVP_PKEY_get1_EC_KEY(plain);
    EVP_PKEY_free(plain);
    EC_KEY_set_method(ec_key, method);
    EVP_PKEY* const key = EVP_PKEY_new();
    EVP_PKEY_assign_EC_KEY(key, ec_key);
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(KeyContainerFromKey(&handle, key));
    {
        const Message message(open_with(handle));
        EXPECT_TRUE(fails_with(NTE_FAIL, message.update(kContent)));
    }
    CryptReleaseContext(handle, 0);
    EVP_PKEY_free(key);
    EC_KEY_METHOD_free(method);
}

void sign_in_four_threads(HCRYPTPROV provider) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([=] {
            for (int round = 0; round < 5; ++round) {
                EXPECT_TRUE(signs(provider, "tsa_rsa2048"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(EngineKey, SignsForOneThreadAtATime) {
    const Acquired provider("engine:quillmark_test:open");
    sign_in_four_threads(provider.handle);
    EXPECT_FALSE(has_met_another);
}

TEST_F(EngineKey, OfTheApplicationSignsForOneThreadAtATimeToo) {
    EVP_PKEY* const key = make_engine_key();
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(KeyContainerFromKey(&handle, key));
    EVP_PKEY_free(key);
    sign_in_four_threads(handle);
    EXPECT_FALSE(has_met_another);
    CryptReleaseContext(handle, 0);
}

TEST_F(EngineKey, IsLoadedAndReleasedWhileNoOtherIsUsed) {
    const Acquired provider("engine:quillmark_test:open");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 5; ++round) {
                const Acquired other("engine:quillmark_test:open");
                EXPECT_TRUE(signs(i % 2 == 0 ? other.handle : provider.handle, "tsa_rsa2048"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(has_met_another);
}

TEST_F(EngineKey, LeavesTheErrorQueueOfTheApplicationAlone) {
    ERR_clear_error();
    ERR_raise(ERR_LIB_USER, 42);
    const Acquired provider("engine:quillmark_test:open");
    EXPECT_TRUE(signs(provider.handle, "tsa_rsa2048"));
    const Acquired missing("engine:quillmark_test:other");
    const Acquired locked("engine:quillmark_test:locked:key");
    EXPECT_TRUE(fails_with(NTE_SILENT_CONTEXT, open_with(locked.handle, "tsa_rsa2048") != nullptr));
    EXPECT_EQ(ERR_GET_REASON(ERR_get_error()), 42);
    EXPECT_EQ(ERR_get_error(), 0u);
    Acquired("engine:quillmark_test:other");
    EXPECT_EQ(ERR_get_error(), 0u) << "an empty queue stays empty";
}

TEST_F(EngineKey, IsOpenedAndUsedOrFailsWhenMemoryIsShort) {
    const SignRequest request{.signers = {{.name = "tsa_rsa2048"}}};
    EncodeRecords records(request);
    expect_out_of_memory_at_each_allocation([&] {
        HCRYPTPROV handle = 0;
        if (!CryptAcquireContextA(&handle, "engine:quillmark_test:locked:key", nullptr, PROV_RSA_AES, 0)) {
            return false;
        }
        records.signers[0].hCryptProv = handle;
        const HCRYPTMSG message =
            CryptSetProvParam(handle, PP_SIGNATURE_PIN, reinterpret_cast<const BYTE*>("1234"), 0) != 0
                ? records.open(request)
                : nullptr;
        const bool succeeded =
            message != nullptr &&
            CryptMsgUpdate(message, kContent.data(), static_cast<DWORD>(kContent.size()), 1) != 0;
        const DWORD code = GetLastError();
        CryptMsgClose(message);
        CryptReleaseContext(handle, 0);
        SetLastError(code);
        return succeeded;
    });
}

}  // namespace
}  // namespace Quillmark::test
