// The functions of the interface on provider handles: opening, sharing and releasing key containers.

#include <openssl/provider.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "platform/detail/border.h"
#include "platform/detail/engine.h"
#include "platform/detail/key_container.h"
#include "platform/key_container.h"

namespace Quillmark::platform {

namespace {

constexpr DWORD kKnownFlags = CRYPT_VERIFYCONTEXT | CRYPT_SILENT | CRYPT_MACHINE_KEYSET;

/// The modules that containers asked for, each held once for the life of the process: keys that came from one
/// may be in use for as long. Never destroyed, as libcrypto ends before static objects of the application do.
/// A module is a provider or, in the older form, an engine.
class LoadedModules {
  public:
    /// Keys of a module are found by the stores once it is loaded; the default provider stays in use beside
    /// it.
    void load(const char* name) {
        const std::lock_guard lock(mutex_);
        if (held_.contains(name)) {
            return;
        }
        const LibcryptoScope scope;
        const auto place = held_.emplace(name, nullptr).first;
        place->second = OSSL_PROVIDER_try_load(nullptr, name, 1);
        if (place->second == nullptr && !load_engine(name)) {
            held_.erase(place);
            throw Failure{NTE_PROVIDER_DLL_FAIL};
        }
    }

  private:
    std::mutex mutex_;
    std::map<std::string, OSSL_PROVIDER*, std::less<>> held_;  // null for an engine, which stays loaded
};

LoadedModules& loaded_modules() {
    static LoadedModules& modules = *new LoadedModules;
    return modules;
}

std::shared_ptr<KeyContainer> open_container(const char* container, const char* module, DWORD flags,
                                             PasswordSource password) {
    const DWORD verification = flags & CRYPT_VERIFYCONTEXT;  // one flag of four bits
    const bool is_without_keys = verification == CRYPT_VERIFYCONTEXT;
    if ((flags & ~kKnownFlags) != 0 || (verification != 0 && !is_without_keys) ||
        (is_without_keys && container != nullptr)) {
        throw Failure{NTE_BAD_FLAGS};
    }
    if (module != nullptr) {
        loaded_modules().load(module);
    }
    if (is_without_keys) {
        return std::make_shared<KeyContainer>();
    }
    if (container == nullptr) {
        throw Failure{NTE_BAD_KEYSET};
    }
    return std::make_shared<KeyContainer>(SecretText(container), std::move(password));
}

template <typename Open>
BOOL answer_handle(HCRYPTPROV* handle, Open&& open) noexcept {
    return answer([&] {
        if (handle == nullptr) {
            return E_INVALIDARG;
        }
        *handle = key_containers.add(open());
        return ERROR_SUCCESS;
    });
}

// UTF-8 of `text`, the form of file names; nothing for null.
std::optional<SecretText> narrow(const wchar_t* text) {
    if (text == nullptr) {
        return std::nullopt;
    }
    const int size =
        WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, -1, nullptr, 0, nullptr, nullptr);
    if (size == 0) {
        throw Failure{E_INVALIDARG};
    }
    std::string narrow_text(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow_text.data(), size, nullptr, nullptr);
    std::optional<SecretText> secret(narrow_text.c_str());
    OPENSSL_cleanse(narrow_text.data(), narrow_text.size());
    return secret;
}

const char* text_or_null(const std::optional<SecretText>& text) {
    return text ? text->c_str() : nullptr;
}

}  // namespace

}  // namespace Quillmark::platform

using namespace Quillmark::platform;

BOOL CryptAcquireContextA(HCRYPTPROV* phProv, LPCSTR szContainer, LPCSTR szProvider, DWORD, DWORD dwFlags) {
    return answer_handle(phProv,
                         [&] { return open_container(szContainer, szProvider, dwFlags, no_password); });
}

BOOL CryptAcquireContextW(HCRYPTPROV* phProv, LPCWSTR szContainer, LPCWSTR szProvider, DWORD, DWORD dwFlags) {
    return answer_handle(phProv, [&] {
        return open_container(text_or_null(narrow(szContainer)), text_or_null(narrow(szProvider)), dwFlags,
                              no_password);
    });
}

BOOL KeyContainerOpen(HCRYPTPROV* phProv, LPCSTR container, LPCSTR module, DWORD flags,
                      KEY_CONTAINER_PASSWORD password, void* arg) {
    return answer_handle(phProv, [&] {
        if (password == nullptr || container == nullptr) {
            return open_container(container, module, flags, no_password);
        }
        const auto name = std::make_shared<const SecretText>(container);
        return open_container(container, module, flags, [password, arg, name](char* buffer, int size) {
            return password(buffer, size, name->c_str(), arg);
        });
    });
}

BOOL KeyContainerFromKey(HCRYPTPROV* phProv, struct evp_pkey_st* key) {
    return answer_handle(phProv, [&] {
        if (key == nullptr) {
            throw Failure{E_INVALIDARG};
        }
        const LibcryptoScope scope;
        return std::make_shared<KeyContainer>(make_private_key(share(key)));
    });
}

BOOL CryptContextAddRef(HCRYPTPROV hProv, DWORD* pdwReserved, DWORD dwFlags) {
    return answer([&] {
        if (pdwReserved != nullptr || dwFlags != 0) {
            return ERROR_INVALID_PARAMETER;
        }
        return key_containers.add_reference(hProv);
    });
}

BOOL CryptReleaseContext(HCRYPTPROV hProv, DWORD dwFlags) {
    return answer([&] {
        const ErrorCode code = key_containers.release(hProv);
        return code == ERROR_SUCCESS && dwFlags != 0 ? NTE_BAD_FLAGS : code;
    });
}

BOOL CryptSetProvParam(HCRYPTPROV hProv, DWORD dwParam, const BYTE* pbData, DWORD dwFlags) {
    return answer([&] {
        const auto container = key_containers.pin(hProv);
        if (!container) {
            return ERROR_INVALID_HANDLE;
        }
        if (dwFlags != 0) {
            return NTE_BAD_FLAGS;
        }
        if ((dwParam != PP_SIGNATURE_PIN && dwParam != PP_KEYEXCHANGE_PIN) || pbData == nullptr) {
            return E_INVALIDARG;
        }
        container->set_password(reinterpret_cast<const char*>(pbData));
        return ERROR_SUCCESS;
    });
}
