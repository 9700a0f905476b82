// OpenSSL 3.0 deprecates engines: the warnings are silenced here, and engines are used nowhere else.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "platform/detail/engine.h"

#include <openssl/engine.h>
#include <openssl/err.h>

#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/detail/pkcs11_module.h"
#include "platform/detail/pkcs11_uri.h"

namespace Quillmark::platform {

#ifndef OPENSSL_NO_ENGINE

namespace {

constexpr char kGost[] = "gost";
constexpr char kPkcs11[] = "pkcs11";

thread_local bool is_question_refused = false;

int refuse_question(UI*, UI_STRING* question) {
    const UI_string_types type = UI_get_string_type(question);
    if (type != UIT_PROMPT && type != UIT_VERIFY) {
        return 1;
    }
    is_question_refused = true;
    return -1;
}

/// Answers what an engine asks outside of the loading of a key: never.
UI_METHOD* refusing_method() {
    static UI_METHOD* const the_method = [] {
        UI_METHOD* const fresh = UI_create_method("no questions");
        if (fresh == nullptr) {
            throw std::bad_alloc();
        }
        UI_method_set_reader(fresh, refuse_question);
        return fresh;
    }();
    return the_method;
}

/// The errors that the application has in its queue. An engine may clear the queue, marks and all; at the end
/// of this scope they are there again, marked for each `LibcryptoScope` around it.
class KeptErrors {
  public:
    KeptErrors() {
        Error error;
        const char* file = nullptr;
        const char* function = nullptr;
        const char* data = nullptr;
        int flags = 0;
        while ((error.code = ERR_get_error_all(&file, &error.line, &function, &data, &flags)) != 0) {
            error.file = file;
            error.function = function;
            error.data = (flags & ERR_TXT_STRING) != 0 ? data : "";
            errors_.push_back(error);
        }
    }
    KeptErrors(const KeptErrors&) = delete;
    KeptErrors& operator=(const KeptErrors&) = delete;
    ~KeptErrors() {
        ERR_clear_error();
        for (const Error& error : errors_) {
            ERR_new();
            ERR_set_debug(error.file.c_str(), error.line, error.function.c_str());
            ERR_set_error(ERR_GET_LIB(error.code), ERR_GET_REASON(error.code),
                          error.data.empty() ? nullptr : "%s", error.data.c_str());
        }
        for (int scope = 0; scope < LibcryptoScope::depth(); ++scope) {
            ERR_set_mark();
        }
    }

  private:
    struct Error {
        unsigned long code = 0;
        int line = 0;
        std::string file;
        std::string function;
        std::string data;
    };
    std::vector<Error> errors_;
};

/// An engine that is ready for work, with a reference that is never given back.
ENGINE* start_engine(const char* id) {
    // The configuration may name engines and set them up.
    OPENSSL_init_crypto(OPENSSL_INIT_ENGINE_DYNAMIC | OPENSSL_INIT_LOAD_CONFIG, nullptr);
    ENGINE* const engine = ENGINE_by_id(id);
    if (engine != nullptr && ENGINE_init(engine) != 1) {
        ENGINE_free(engine);
        return nullptr;
    }
    return engine;
}

// The engine is looked for when the first identifier of its algorithms is met, which strangers may send, so a
// search that failed is not made again.
enum class GostState { kUnknown, kLoaded, kAbsent };

constinit std::mutex gost_mutex;
constinit std::atomic<GostState> gost_state{GostState::kUnknown};

GostState find_gost_engine() {
    const LibcryptoScope scope;
    ENGINE* const engine = start_engine(kGost);
    // Registered, its methods are found for the identifiers that nothing else implements.
    return engine != nullptr && ENGINE_register_complete(engine) == 1 ? GostState::kLoaded
                                                                      : GostState::kAbsent;
}

/// Why a key was not loaded, as the engine has told.
enum class Reason { kOther, kNotFound, kWrongPin, kNoModule };

// Names of the libraries that the engine `pkcs11` raises its errors in, and reasons in these: the return
// values of PKCS #11 (CKR_PIN_...) are such reasons.
constexpr char kEngineErrors[] = "pkcs11 engine";
constexpr char kModuleErrors[] = "PKCS#11 module";
constexpr char kLibraryErrors[] = "libp11";
constexpr int kObjectNotFound = 101;
constexpr int kModuleNotLoaded = 1025;
constexpr int kPinIncorrect = 0xA0;
constexpr int kPinLocked = 0xA4;

Reason reason_of(unsigned long error) {
    const char* const library = ERR_lib_error_string(error);
    const int reason = ERR_GET_REASON(error);
    if (library == nullptr) {
        return Reason::kOther;
    }
    if (std::strcmp(library, kModuleErrors) == 0 && reason >= kPinIncorrect && reason <= kPinLocked) {
        return Reason::kWrongPin;
    }
    if (std::strcmp(library, kLibraryErrors) == 0 && reason == kModuleNotLoaded) {
        return Reason::kNoModule;
    }
    return std::strcmp(library, kEngineErrors) == 0 && reason == kObjectNotFound ? Reason::kNotFound
                                                                                 : Reason::kOther;
}

// The first reason that says something.
Reason take_reason() {
    Reason found = Reason::kOther;
    while (const unsigned long error = ERR_get_error()) {
        if (found == Reason::kOther) {
            found = reason_of(error);
        }
    }
    return found;
}

/// What an attempt to load a key came to: a key, a question without answer, or the reason that the engine
/// has.
struct Attempt {
    std::shared_ptr<const PrivateKey> key;
    bool was_asked_in_vain = false;
    Reason reason = Reason::kOther;
};

/// An engine with keys. It is used by one call at a time, for whatever purpose.
class KeyEngine {
  public:
    explicit KeyEngine(ENGINE* engine) : engine_(engine) {}
    KeyEngine(const KeyEngine&) = delete;
    KeyEngine& operator=(const KeyEngine&) = delete;
    virtual ~KeyEngine() = default;

    virtual std::shared_ptr<const PrivateKey> load(std::string_view name, const PasswordSource& password) {
        const std::string key(name);
        const Attempt first = attempt_in_turn(key, no_password);
        if (first.key != nullptr) {
            return first.key;
        }
        if (!first.was_asked_in_vain) {
            throw Failure{NTE_BAD_KEYSET};
        }
        const std::optional<SecretText> pin = ask(password);
        if (!pin) {
            throw Failure{NTE_SILENT_CONTEXT};
        }
        const Attempt second = attempt_in_turn(key, source_of(*pin));
        if (second.key == nullptr) {
            throw Failure{SCARD_W_WRONG_CHV};
        }
        return second.key;
    }

  protected:
    ENGINE* engine() const { return engine_; }
    std::mutex& turn() const { return *turn_; }

    /// Needs the turn, here and below.
    KeyPointer load_key(const std::string& name, PasswordDialog& dialog) const {
        return KeyPointer(
            ENGINE_load_private_key(engine_, name.c_str(), PasswordDialog::method(), dialog.data()));
    }

    Attempt attempt(const std::string& name, const PasswordSource& password) const {
        const KeptErrors errors;
        PasswordDialog dialog(password);
        KeyPointer key = load_key(name, dialog);
        if (key == nullptr) {
            return {.key = {}, .was_asked_in_vain = dialog.was_asked_in_vain(), .reason = take_reason()};
        }
        return {.key = std::make_shared<PrivateKey>(std::move(key), turn_)};
    }

  private:
    Attempt attempt_in_turn(const std::string& name, const PasswordSource& password) const {
        const std::lock_guard lock(turn());
        return attempt(name, password);
    }

    ENGINE* const engine_;
    const std::shared_ptr<std::mutex> turn_ = std::make_shared<std::mutex>();
};

/// The engine `pkcs11`. It has one module at a time, and from the first key on keeps it and the tokens that
/// were there. It keeps the last PIN too, and would try it on any token, where wrong attempts are counted.
class Pkcs11Engine final : public KeyEngine {
  public:
    explicit Pkcs11Engine(ENGINE* engine) : KeyEngine(engine) {
        ENGINE_ctrl_cmd_string(engine, "QUIET", nullptr, 0);
        ENGINE_ctrl_cmd(engine, "SET_USER_INTERFACE", 0, refusing_method(), nullptr, 0);
    }

    std::shared_ptr<const PrivateKey> load(std::string_view name, const PasswordSource& password) override {
        Pkcs11Uri uri;
        if (is_pkcs11_uri(name)) {
            uri = parse_pkcs11_uri(name);
        } else {
            uri.key = name;
        }
        if (std::shared_ptr<const PrivateKey> key = load_without_pin(uri)) {
            return key;
        }
        if (!uri.pin) {
            uri.pin = ask(password);
        }
        if (!uri.pin) {
            throw Failure{NTE_SILENT_CONTEXT};
        }
        return load_with_pin(uri);
    }

  private:
    /// Null when a PIN is needed.
    std::shared_ptr<const PrivateKey> load_without_pin(const Pkcs11Uri& uri) {
        const std::lock_guard lock(turn());
        use_module(uri);
        if (kept_pin_token_ && *kept_pin_token_ != uri.token) {
            if (!module_has_token(uri).value_or(true)) {
                throw Failure{NTE_BAD_KEYSET};
            }
            return nullptr;
        }
        Attempt attempt = attempt_key(uri);
        if (attempt.key == nullptr && !attempt.was_asked_in_vain) {
            throw Failure{code_of(attempt.reason, uri)};
        }
        return std::move(attempt.key);
    }

    std::shared_ptr<const PrivateKey> load_with_pin(const Pkcs11Uri& uri) {
        const std::lock_guard lock(turn());
        use_module(uri);
        if (ENGINE_ctrl_cmd_string(engine(), "PIN", uri.pin->c_str(), 0) != 1) {
            throw std::bad_alloc();
        }
        kept_pin_token_ = uri.token;
        Attempt attempt = attempt_key(uri);
        if (attempt.key == nullptr) {
            throw Failure{code_of(attempt.reason, uri)};
        }
        return std::move(attempt.key);
    }

    Attempt attempt_key(const Pkcs11Uri& uri) {
        was_tried_ = true;
        Attempt made = attempt(uri.key, no_password);
        is_in_use_ |= made.key != nullptr;
        if (made.reason == Reason::kWrongPin) {
            kept_pin_token_.reset();  // the engine drops what did not open the token
        }
        return made;
    }

    ErrorCode code_of(Reason reason, const Pkcs11Uri& uri) {
        switch (reason) {
            case Reason::kWrongPin:
                return SCARD_W_WRONG_CHV;
            case Reason::kNoModule:
                return NTE_PROVIDER_DLL_FAIL;
            case Reason::kNotFound:
                return is_token_there(uri) ? NTE_NO_KEY : NTE_BAD_KEYSET;
            case Reason::kOther:
                return NTE_BAD_KEYSET;
        }
        return NTE_BAD_KEYSET;
    }

    // The engine does not tell a token that is missing from a key that is. Where its module is not known here
    // it is asked for any key on the token.
    bool is_token_there(const Pkcs11Uri& uri) {
        if (uri.token.empty()) {
            return true;
        }
        if (const std::optional<bool> has_token = module_has_token(uri)) {
            return *has_token;
        }
        const KeptErrors errors;
        const PasswordSource nothing = no_password;
        PasswordDialog dialog(nothing);
        const bool has_keys = load_key(uri.token, dialog) != nullptr;
        is_in_use_ |= has_keys;
        return has_keys || dialog.was_asked_in_vain();
    }

    std::optional<bool> module_has_token(const Pkcs11Uri& uri) const {
        return module_ ? module_->has_token(uri.token_name) : std::nullopt;
    }

    void use_module(const Pkcs11Uri& uri) {
        if (uri.module_path) {
            select_module(Pkcs11Module(*uri.module_path), *uri.module_path);
        }
        if (was_tried_ && !is_in_use_) {
            start_again();
        }
    }

    void select_module(const Pkcs11Module& module, const std::string& path) {
        if (!module.is_loaded()) {
            throw Failure{NTE_PROVIDER_DLL_FAIL};
        }
        if (module_ && module_->is_same(module)) {
            return;
        }
        // What is in use may be this module under a path of the configuration, which is not known here.
        const bool may_be_in_use = !module_ && module.was_loaded();
        if (is_in_use_ && !may_be_in_use) {
            throw Failure{NTE_PROVIDER_DLL_FAIL};
        }
        if (ENGINE_ctrl_cmd_string(engine(), "MODULE_PATH", path.c_str(), 0) != 1) {
            throw std::bad_alloc();
        }
        module_ = module;
    }

    // As long as no key is in use the engine can be started anew: it then takes another module, and sees
    // tokens that were put in meanwhile.
    void start_again() {
        ENGINE_finish(engine());
        if (ENGINE_init(engine()) != 1) {
            throw Failure{NTE_PROVIDER_DLL_FAIL};
        }
        was_tried_ = false;
    }

    std::optional<Pkcs11Module> module_;  // none: that of the configuration
    bool was_tried_ = false;              // a key was looked for since the start
    bool is_in_use_ = false;
    std::optional<std::string> kept_pin_token_;  // the token whose PIN the engine has
};

std::unique_ptr<KeyEngine> make_key_engine(const std::string& id) {
    const LibcryptoScope scope;
    ENGINE* const engine = start_engine(id.c_str());
    if (engine == nullptr) {
        throw Failure{NTE_PROVIDER_DLL_FAIL};
    }
    if (id == kPkcs11) {
        return std::make_unique<Pkcs11Engine>(engine);
    }
    return std::make_unique<KeyEngine>(engine);
}

KeyEngine& key_engine(const std::string& id) {
    static std::mutex mutex;
    static auto& engines = *new std::map<std::string, std::unique_ptr<KeyEngine>>;
    const std::lock_guard lock(mutex);
    std::unique_ptr<KeyEngine>& engine = engines[id];
    if (engine == nullptr) {
        engine = make_key_engine(id);
    }
    return *engine;
}

}  // namespace

bool load_gost_engine() {
    if (gost_state.load(std::memory_order_acquire) == GostState::kUnknown) {
        const std::lock_guard lock(gost_mutex);
        if (gost_state.load(std::memory_order_relaxed) == GostState::kUnknown) {
            gost_state.store(find_gost_engine(), std::memory_order_release);
        }
    }
    return is_gost_engine_loaded();
}

bool is_gost_engine_loaded() {
    return gost_state.load(std::memory_order_acquire) == GostState::kLoaded;
}

bool load_engine(const char* id) {
    if (std::strcmp(id, kGost) == 0) {
        return load_gost_engine();
    }
    try {
        key_engine(id);
        return true;
    } catch (const Failure& failure) {
        if (failure.code != NTE_PROVIDER_DLL_FAIL) {
            throw;
        }
        return false;
    }
}

std::shared_ptr<const PrivateKey> load_engine_key(const std::string& id, std::string_view name,
                                                  const PasswordSource& password) {
    const LibcryptoScope scope;
    return key_engine(id).load(name, password);
}

bool take_refused_question() noexcept {
    return std::exchange(is_question_refused, false);
}

#else

bool load_gost_engine() {
    return false;
}

bool is_gost_engine_loaded() {
    return false;
}

bool load_engine(const char*) {
    return false;
}

std::shared_ptr<const PrivateKey> load_engine_key(const std::string&, std::string_view,
                                                  const PasswordSource&) {
    throw Failure{NTE_PROVIDER_DLL_FAIL};
}

bool take_refused_question() noexcept {
    return false;
}

#endif

}  // namespace Quillmark::platform
