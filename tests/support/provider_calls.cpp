#include "tests/support/provider_calls.h"

#include <dlfcn.h>

#include <stdexcept>

namespace Quillmark::test {

namespace {

bool watching = false;
ProviderCalls::List calls;
int references = 0;

/// The service's own function: the next definition behind the one in this program.
template <class Function>
Function* real(const char* name) {
    void* address = dlsym(RTLD_NEXT, name);
    if (address == nullptr) {
        throw std::logic_error(std::string("the platform service lacks ") + name);
    }
    return reinterpret_cast<Function*>(address);
}

void note(const char* function, HCRYPTPROV provider, BOOL succeeded) {
    if (watching) {
        calls.push_back({function, provider, succeeded != 0});
    }
}

}  // namespace

ProviderCalls::ProviderCalls() {
    if (watching) {
        throw std::logic_error("provider calls are watched already");
    }
    watching = true;
    calls.clear();
}

ProviderCalls::~ProviderCalls() {
    watching = false;
}

ProviderCalls::List ProviderCalls::list() const {
    return calls;
}

void ProviderCalls::forget() {
    calls.clear();
}

int open_provider_references() {
    return references;
}

}  // namespace Quillmark::test

using namespace Quillmark::test;

extern "C" {

BOOL CryptContextAddRef(HCRYPTPROV provider, DWORD* reserved, DWORD flags) {
    const BOOL taken = real<decltype(CryptContextAddRef)>("CryptContextAddRef")(provider, reserved, flags);
    note("AddRef", provider, taken);
    references += taken != 0;
    return taken;
}

BOOL CryptReleaseContext(HCRYPTPROV provider, DWORD flags) {
    const BOOL given = real<decltype(CryptReleaseContext)>("CryptReleaseContext")(provider, flags);
    note("Release", provider, given);
    references -= given != 0;
    return given;
}

}  // extern "C"
