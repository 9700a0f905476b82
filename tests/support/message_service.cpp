#include "tests/support/message_service.h"

#include <dlfcn.h>

#include <cstring>
#include <map>
#include <stdexcept>

namespace Quillmark::test {

namespace {

struct Refusal {
    DWORD last_error;
    int skip;
};

struct State {
    std::map<std::string, Refusal> refusals;
    std::map<DWORD, MessageService::Query> queries;
    std::vector<std::string> calls;
    MessageService::Watch watch = MessageService::kEverything;
    int messages = 0;
    int certificates = 0;
    int failed_updates = 0;
};

MessageService* current = nullptr;
State state;

/// The service's own function: the next definition behind the one in this program.
template <class Function>
Function* real(const char* name) {
    void* address = dlsym(RTLD_NEXT, name);
    if (address == nullptr) {
        throw std::logic_error(std::string("the platform service lacks ") + name);
    }
    return reinterpret_cast<Function*>(address);
}

bool watching() {
    return current != nullptr && state.watch == MessageService::kEverything;
}

/// Whether the call is to fail; the last error is then set.
bool refused(const std::string& call) {
    const auto refusal = state.refusals.find(call);
    if (refusal == state.refusals.end() || refusal->second.skip-- > 0) {
        return false;
    }
    SetLastError(refusal->second.last_error);
    state.refusals.erase(refusal);
    return true;
}

/// Notes the call. False when it is to fail.
bool goes_through(const char* function) {
    if (!watching()) {
        return true;
    }
    state.calls.push_back(function);
    return !refused(function);
}

HCRYPTMSG count_message(HCRYPTMSG message) {
    state.messages += message != nullptr;
    return message;
}

}  // namespace

MessageService::MessageService(Watch watch) {
    if (current != nullptr) {
        throw std::logic_error("a message service is in force already");
    }
    state = State{};
    state.watch = watch;
    current = this;
}

MessageService::~MessageService() {
    current = nullptr;
}

void MessageService::refuse(const std::string& function, DWORD last_error, int skip) {
    state.refusals[function] = {last_error, skip};
}

void MessageService::answer(DWORD parameter, Query query) {
    state.queries[parameter] = std::move(query);
}

void MessageService::answer(DWORD parameter, std::vector<BYTE> octets) {
    answer(parameter, [octets](DWORD /*index*/, void* data, DWORD* size) {
        if (data != nullptr && !octets.empty()) {
            std::memcpy(data, octets.data(), octets.size());
        }
        *size = static_cast<DWORD>(octets.size());
        return 1;
    });
}

std::vector<std::string> MessageService::calls() const {
    return state.calls;
}

void MessageService::forget_calls() {
    state.calls.clear();
}

int MessageService::open_messages() const {
    return state.messages;
}

int MessageService::open_certificates() const {
    return state.certificates;
}

int MessageService::failed_updates() const {
    return state.failed_updates;
}

}  // namespace Quillmark::test

using namespace Quillmark::test;

extern "C" {

HCRYPTMSG CryptMsgOpenToEncode(DWORD encoding, DWORD flags, DWORD type, const void* info, LPSTR inner_type,
                               PCMSG_STREAM_INFO stream) {
    const bool through = goes_through("CryptMsgOpenToEncode");
    if (watching() && current->on_open_to_encode) {
        current->on_open_to_encode(flags, *static_cast<const CMSG_SIGNED_ENCODE_INFO*>(info), inner_type);
    }
    if (!through) {
        return nullptr;
    }
    return count_message(real<decltype(CryptMsgOpenToEncode)>("CryptMsgOpenToEncode")(
        encoding, flags, type, info, inner_type, stream));
}

HCRYPTMSG CryptMsgOpenToDecode(DWORD encoding, DWORD flags, DWORD type, HCRYPTPROV provider,
                               PCERT_INFO recipient, PCMSG_STREAM_INFO stream) {
    if (!goes_through("CryptMsgOpenToDecode")) {
        return nullptr;
    }
    return count_message(real<decltype(CryptMsgOpenToDecode)>("CryptMsgOpenToDecode")(
        encoding, flags, type, provider, recipient, stream));
}

BOOL CryptMsgUpdate(HCRYPTMSG message, const BYTE* data, DWORD size, BOOL final) {
    const BOOL updated = goes_through("CryptMsgUpdate") &&
                         real<decltype(CryptMsgUpdate)>("CryptMsgUpdate")(message, data, size, final);
    state.failed_updates += updated == 0;
    return updated;
}

BOOL CryptMsgGetParam(HCRYPTMSG message, DWORD parameter, DWORD index, void* data, DWORD* size) {
    if (watching()) {
        const std::string call = "CryptMsgGetParam " + std::to_string(parameter);
        if (!goes_through(call.c_str())) {
            return 0;
        }
        const auto query = state.queries.find(parameter);
        if (query != state.queries.end()) {
            return query->second(index, data, size);
        }
    }
    return real<decltype(CryptMsgGetParam)>("CryptMsgGetParam")(message, parameter, index, data, size);
}

BOOL CryptMsgControl(HCRYPTMSG message, DWORD flags, DWORD type, const void* parameter) {
    if (!goes_through("CryptMsgControl")) {
        return 0;
    }
    return real<decltype(CryptMsgControl)>("CryptMsgControl")(message, flags, type, parameter);
}

HCRYPTMSG CryptMsgDuplicate(HCRYPTMSG message) {
    if (!goes_through("CryptMsgDuplicate")) {
        return nullptr;
    }
    return count_message(real<decltype(CryptMsgDuplicate)>("CryptMsgDuplicate")(message));
}

BOOL CryptMsgClose(HCRYPTMSG message) {
    goes_through("CryptMsgClose");
    const BOOL closed = real<decltype(CryptMsgClose)>("CryptMsgClose")(message);
    state.messages -= closed != 0 && message != nullptr;
    return closed;
}

PCCERT_CONTEXT CertCreateCertificateContext(DWORD encoding, const BYTE* data, DWORD size) {
    if (!goes_through("CertCreateCertificateContext")) {
        return nullptr;
    }
    PCCERT_CONTEXT context =
        real<decltype(CertCreateCertificateContext)>("CertCreateCertificateContext")(encoding, data, size);
    state.certificates += context != nullptr;
    return context;
}

BOOL CertFreeCertificateContext(PCCERT_CONTEXT context) {
    goes_through("CertFreeCertificateContext");
    state.certificates -= context != nullptr;
    return real<decltype(CertFreeCertificateContext)>("CertFreeCertificateContext")(context);
}

}  // extern "C"
