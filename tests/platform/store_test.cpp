// Keys of providers: names with a scheme that a loaded provider knows, with a provider of the test's own.

#include <openssl/core_dispatch.h>
#include <openssl/core_names.h>
#include <openssl/core_object.h>
#include <openssl/provider.h>
#include <openssl/store.h>

#include <functional>

#include "tests/platform/containers.h"
#include "tests/support/child_process.h"

namespace Quillmark::test {
namespace {

// A store of one key: every name of its scheme opens it.
struct Store {
    bool is_read = false;
};

void* open_store(void*, const char*) {
    return new Store;
}

int set_parameters(void*, const OSSL_PARAM[]) {
    return 1;
}

int load_object(void* store, OSSL_CALLBACK* give, void* give_argument, OSSL_PASSPHRASE_CALLBACK*, void*) {
    static_cast<Store*>(store)->is_read = true;
    Octets der = read_pki("tsa_p256_pkcs8.der");
    int type = OSSL_OBJECT_PKEY;
    char structure[] = "PrivateKeyInfo";
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_int(OSSL_OBJECT_PARAM_TYPE, &type),
        OSSL_PARAM_construct_octet_string(OSSL_OBJECT_PARAM_DATA, der.data(), der.size()),
        OSSL_PARAM_construct_utf8_string(OSSL_OBJECT_PARAM_DATA_STRUCTURE, structure, 0),
        OSSL_PARAM_construct_end(),
    };
    return give(parameters, give_argument);
}

int is_at_end(void* store) {
    return static_cast<Store*>(store)->is_read ? 1 : 0;
}

int close_store(void* store) {
    delete static_cast<Store*>(store);
    return 1;
}

using Function = void (*)();

const OSSL_DISPATCH kStoreFunctions[] = {
    {OSSL_FUNC_STORE_OPEN, reinterpret_cast<Function>(open_store)},
    {OSSL_FUNC_STORE_SET_CTX_PARAMS, reinterpret_cast<Function>(set_parameters)},
    {OSSL_FUNC_STORE_LOAD, reinterpret_cast<Function>(load_object)},
    {OSSL_FUNC_STORE_EOF, reinterpret_cast<Function>(is_at_end)},
    {OSSL_FUNC_STORE_CLOSE, reinterpret_cast<Function>(close_store)},
    {0, nullptr},
};

template <int operation>
const OSSL_ALGORITHM* stores_for(const char* scheme) {
    static OSSL_ALGORITHM stores[] = {{scheme, "provider=quillmark_test", kStoreFunctions, "a store"},
                                      {nullptr, nullptr, nullptr, nullptr}};
    return stores;
}

const OSSL_ALGORITHM* query_own(void*, int operation, int* no_cache) {
    *no_cache = 0;
    return operation == OSSL_OP_STORE ? stores_for<1>("quillmarktest") : nullptr;
}

const OSSL_ALGORITHM* query_pkcs11(void*, int operation, int* no_cache) {
    *no_cache = 0;
    return operation == OSSL_OP_STORE ? stores_for<2>("pkcs11") : nullptr;
}

template <auto query>
int start_provider(const OSSL_CORE_HANDLE*, const OSSL_DISPATCH*, const OSSL_DISPATCH** out, void** context) {
    static const OSSL_DISPATCH functions[] = {
        {OSSL_FUNC_PROVIDER_QUERY_OPERATION, reinterpret_cast<Function>(query)}, {0, nullptr}};
    static int anything;
    *out = functions;
    *context = &anything;
    return 1;
}

TEST(StoreOfAProvider, IsOpenedByItsScheme) {
    ASSERT_EQ(OSSL_PROVIDER_add_builtin(nullptr, "quillmark_test", start_provider<query_own>), 1);
    EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired("quillmarktest:key").result)) << "not loaded yet";
    const Acquired provider("quillmarktest:key", "quillmark_test");
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle));
}

TEST(StoreOfAProvider, MayHaveTheSchemeOfAFile) {
    const Acquired provider("file:" + pki_path("tsa_p256.key"));
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle));
}

// The engine is what is taken when no provider knows the scheme.
TEST(StoreOfAProviderDeathTest, ComesBeforeTheEngineForTokens) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            OSSL_PROVIDER_add_builtin(nullptr, "quillmark_test", start_provider<query_pkcs11>);
            const Acquired provider("pkcs11:token=T;object=K", "quillmark_test");
            end_child(provider.result && signs(provider.handle) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Quillmark::test
