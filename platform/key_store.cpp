#include "platform/detail/key_store.h"

#include <openssl/crypto.h>
#include <openssl/store.h>

#include "platform/detail/engine.h"
#include "platform/detail/pkcs11_uri.h"

namespace Quillmark::platform {

namespace {

// Blocks that no decoder knows may stand before the key in a file; this many of them are stepped over.
constexpr int kMaxUnreadable = 64;

using Keys = std::vector<std::shared_ptr<const PrivateKey>>;
using StorePointer = std::unique_ptr<OSSL_STORE_CTX, FreedBy<OSSL_STORE_close>>;
using StoreInfoPointer = std::unique_ptr<OSSL_STORE_INFO, FreedBy<OSSL_STORE_INFO_free>>;

struct Contents {
    std::vector<KeyPointer> keys;
    bool has_others = false;  // certificates, public keys and the like
};

void take(StoreInfoPointer info, Contents& contents) {
    const int type = OSSL_STORE_INFO_get_type(info.get());
    if (type == OSSL_STORE_INFO_PKEY) {
        contents.keys.push_back(KeyPointer(OSSL_STORE_INFO_get1_PKEY(info.get())));
        return;
    }
    contents.has_others |= type != OSSL_STORE_INFO_NAME;  // the name of a file in a directory is no content
}

Contents read_store(const SecretText& name, PasswordDialog& dialog) {
    const StorePointer store(
        OSSL_STORE_open(name.c_str(), PasswordDialog::method(), dialog.data(), nullptr, nullptr));
    if (store == nullptr) {
        throw Failure{NTE_BAD_KEYSET};
    }
    Contents contents;
    for (int unreadable = 0; OSSL_STORE_eof(store.get()) == 0 && unreadable < kMaxUnreadable;) {
        StoreInfoPointer info(OSSL_STORE_load(store.get()));
        if (info != nullptr) {
            take(std::move(info), contents);
        } else {
            ++unreadable;
        }
    }
    return contents;
}

ErrorCode reason_for_no_key(const PasswordDialog& dialog, const Contents& contents) {
    if (dialog.was_asked_in_vain()) {
        return NTE_SILENT_CONTEXT;
    }
    if (dialog.was_answered()) {
        return SCARD_W_WRONG_CHV;
    }
    return contents.has_others ? NTE_NO_KEY : NTE_BAD_KEYSET;
}

// What could not be read may be a key of the GOST engine, which nothing else reads.
Contents read_with_gost(const SecretText& name, PasswordDialog& dialog) {
    const bool was_gost_known = is_gost_engine_loaded();
    Contents contents = read_store(name, dialog);
    if (!contents.keys.empty() || was_gost_known || dialog.was_asked_in_vain() || !load_gost_engine()) {
        return contents;
    }
    dialog.begin_again();
    return read_store(name, dialog);
}

// Keys that are not of a provider are libcrypto's older kind, which may belong to an engine.
bool is_of_provider(const EVP_PKEY* key) {
    return EVP_PKEY_get0_provider(key) != nullptr;
}

// The keys of one container share their turn.
Keys make_private_keys(std::vector<KeyPointer> keys) {
    const auto turn = std::make_shared<std::mutex>();
    Keys made;
    for (KeyPointer& key : keys) {
        const bool is_concurrent = is_of_provider(key.get());
        made.push_back(std::make_shared<PrivateKey>(std::move(key), is_concurrent ? nullptr : turn));
    }
    return made;
}

Keys load_from_store(const SecretText& name, const PasswordSource& password) {
    const LibcryptoScope scope;
    PasswordDialog dialog(password);
    Contents contents = read_with_gost(name, dialog);
    if (contents.keys.empty()) {
        throw Failure{reason_for_no_key(dialog, contents)};
    }
    return make_private_keys(std::move(contents.keys));
}

Keys load_from_engine(std::string_view name, const PasswordSource& password) {
    const std::size_t colon = name.find(':');
    if (colon == 0 || colon == std::string_view::npos || colon + 1 == name.size()) {
        throw Failure{NTE_BAD_KEYSET};
    }
    return {load_engine_key(std::string(name.substr(0, colon)), name.substr(colon + 1), password)};
}

bool has_store_for(const char* scheme) {
    const LibcryptoScope scope;
    const std::unique_ptr<OSSL_STORE_LOADER, FreedBy<OSSL_STORE_LOADER_free>> loader(
        OSSL_STORE_LOADER_fetch(nullptr, scheme, nullptr));
    return loader != nullptr;
}

}  // namespace

Keys load_private_keys(const SecretText& name, const PasswordSource& password) {
    constexpr std::string_view kEngine = "engine:";
    const std::string_view text = name.view();
    if (text.starts_with(kEngine)) {
        return load_from_engine(text.substr(kEngine.size()), password);
    }
    if (is_pkcs11_uri(text) && !has_store_for("pkcs11")) {
        return {load_engine_key("pkcs11", text, password)};
    }
    return load_from_store(name, password);
}

std::shared_ptr<const PrivateKey> make_private_key(KeyPointer key) {
    std::vector<KeyPointer> keys;
    keys.push_back(std::move(key));
    return make_private_keys(std::move(keys)).front();
}

}  // namespace Quillmark::platform
