#include "platform/detail/key_store.h"

#include <openssl/crypto.h>
#include <openssl/store.h>
#include <openssl/ui.h>

namespace Quillmark::platform {

namespace {

// Blocks that no decoder knows may stand before the key in a file; this many of them are stepped over.
constexpr int kMaxUnreadable = 64;

using StorePointer = std::unique_ptr<OSSL_STORE_CTX, FreedBy<OSSL_STORE_close>>;
using StoreInfoPointer = std::unique_ptr<OSSL_STORE_INFO, FreedBy<OSSL_STORE_INFO_free>>;
using UiMethodPointer = std::unique_ptr<UI_METHOD, FreedBy<UI_destroy_method>>;

// What the store asks for and what it gets. Nothing is ever asked on a terminal.
struct Questions {
    const PasswordSource& source;
    bool answered = false;
    bool unanswered = false;
};

int answer_password(char* buffer, int size, int, void* questions) {
    auto& asked = *static_cast<Questions*>(questions);
    const int length = asked.source(buffer, size);
    const bool has_answer = length >= 0 && length <= size;
    (has_answer ? asked.answered : asked.unanswered) = true;
    return has_answer ? length : -1;
}

struct Contents {
    std::vector<std::shared_ptr<const PrivateKey>> keys;
    bool has_others = false;  // certificates, public keys and the like
};

void take(StoreInfoPointer info, Contents& contents) {
    const int type = OSSL_STORE_INFO_get_type(info.get());
    if (type == OSSL_STORE_INFO_PKEY) {
        contents.keys.push_back(
            std::make_shared<PrivateKey>(KeyPointer(OSSL_STORE_INFO_get1_PKEY(info.get()))));
        return;
    }
    contents.has_others |= type != OSSL_STORE_INFO_NAME;  // the name of a file in a directory is no content
}

Contents read_store(OSSL_STORE_CTX* store) {
    Contents contents;
    for (int unreadable = 0; OSSL_STORE_eof(store) == 0 && unreadable < kMaxUnreadable;) {
        StoreInfoPointer info(OSSL_STORE_load(store));
        if (info != nullptr) {
            take(std::move(info), contents);
        } else {
            ++unreadable;
        }
    }
    return contents;
}

ErrorCode reason_for_no_key(const Questions& asked, const Contents& contents) {
    if (asked.unanswered) {
        return NTE_SILENT_CONTEXT;
    }
    if (asked.answered) {
        return SCARD_W_WRONG_CHV;
    }
    return contents.has_others ? NTE_NO_KEY : NTE_BAD_KEYSET;
}

}  // namespace

SecretText::~SecretText() {
    OPENSSL_cleanse(text_.data(), text_.size());
}

std::vector<std::shared_ptr<const PrivateKey>> load_private_keys(const std::string& name,
                                                                 const PasswordSource& password) {
    const LibcryptoScope scope;
    Questions asked{password};
    const UiMethodPointer ui(UI_UTIL_wrap_read_pem_callback(answer_password, 0));
    if (ui == nullptr) {
        throw std::bad_alloc();
    }
    const StorePointer store(OSSL_STORE_open(name.c_str(), ui.get(), &asked, nullptr, nullptr));
    if (store == nullptr) {
        throw Failure{NTE_BAD_KEYSET};
    }
    Contents contents = read_store(store.get());
    if (contents.keys.empty()) {
        throw Failure{reason_for_no_key(asked, contents)};
    }
    return std::move(contents.keys);
}

}  // namespace Quillmark::platform
