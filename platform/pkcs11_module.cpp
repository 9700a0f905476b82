#include "platform/detail/pkcs11_module.h"

#include <dlfcn.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

namespace Quillmark::platform {

namespace {

using ReturnValue = unsigned long;  // CK_RV, 0 for success
using SlotId = unsigned long;       // CK_SLOT_ID

constexpr unsigned long kTokenIsInitialized = 0x400;  // CKF_TOKEN_INITIALIZED

// CK_TOKEN_INFO. Texts are padded with spaces and have no terminator.
struct TokenInfo {
    char label[32];
    char manufacturer[32];
    char model[16];
    char serial[16];
    unsigned long flags;
    unsigned long limits[10];
    unsigned char versions[4];
    char utc_time[16];
};
static_assert(sizeof(TokenInfo) == 208);

template <std::size_t size>
bool matches(const std::optional<std::string>& wanted, const char (&field)[size]) {
    std::string_view text(field, size);
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    return !wanted || *wanted == text;
}

bool matches(const Pkcs11TokenName& name, const TokenInfo& info) {
    return (info.flags & kTokenIsInitialized) != 0 && matches(name.label, info.label) &&
           matches(name.serial, info.serial) && matches(name.manufacturer, info.manufacturer) &&
           matches(name.model, info.model);
}

}  // namespace

// The beginning of CK_FUNCTION_LIST, in the order of the standard.
struct Pkcs11Module::Functions {
    unsigned char version[2];
    ReturnValue (*initialize)(void*);
    ReturnValue (*finalize)(void*);
    ReturnValue (*get_info)(void*);
    ReturnValue (*get_function_list)(const Functions**);
    ReturnValue (*get_slot_list)(unsigned char with_token, SlotId* slots, unsigned long* count);
    ReturnValue (*get_slot_info)(SlotId, void*);
    ReturnValue (*get_token_info)(SlotId, TokenInfo*);
};

namespace {

std::optional<std::vector<SlotId>> slots_with_token(const Pkcs11Module::Functions& functions) {
    unsigned long count = 0;
    if (functions.get_slot_list(1, nullptr, &count) != 0) {
        return std::nullopt;
    }
    std::vector<SlotId> slots(count);
    if (functions.get_slot_list(1, slots.data(), &count) != 0) {
        return std::nullopt;
    }
    slots.resize(std::min<std::size_t>(count, slots.size()));
    return slots;
}

}  // namespace

Pkcs11Module::Pkcs11Module(const std::string& path)
    : was_loaded_(dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD) != nullptr) {
    void* const library = path.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return;
    }
    using GetFunctionList = ReturnValue (*)(const Functions**);
    const auto get_list = reinterpret_cast<GetFunctionList>(dlsym(library, "C_GetFunctionList"));
    if (get_list == nullptr || get_list(&functions_) != 0) {
        functions_ = nullptr;
    }
}

std::optional<bool> Pkcs11Module::has_token(const Pkcs11TokenName& name) const {
    const auto slots = slots_with_token(*functions_);
    if (!slots) {
        return std::nullopt;
    }
    return std::ranges::any_of(*slots, [&](SlotId slot) {
        TokenInfo info{};
        return functions_->get_token_info(slot, &info) == 0 && matches(name, info);
    });
}

}  // namespace Quillmark::platform
