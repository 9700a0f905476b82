#pragma once

// References on key providers under test. Programs that link this see each reference that is taken and given
// back, on its way to the service.
//
//     ProviderCalls calls;
//     { const CMSStamp copy(stamp); }
//     EXPECT_EQ(calls.list(), (ProviderCalls::List{{"AddRef", h, true}, {"Release", h, true}}));

#include <ostream>
#include <string>
#include <vector>

#include "platform/cryptoapi.h"

namespace Quillmark::test {

struct ProviderCall {
    std::string function;  ///< "AddRef" or "Release"
    HCRYPTPROV provider;
    bool succeeded;

    friend bool operator==(const ProviderCall&, const ProviderCall&) = default;
};

inline std::ostream& operator<<(std::ostream& out, const ProviderCall& call) {
    return out << call.function << ' ' << std::hex << call.provider << (call.succeeded ? "" : " refused");
}

/// In force for the life of the object; there is one at a time.
class ProviderCalls {
  public:
    using List = std::vector<ProviderCall>;

    ProviderCalls();
    ~ProviderCalls();
    ProviderCalls(const ProviderCalls&) = delete;
    ProviderCalls& operator=(const ProviderCalls&) = delete;

    List list() const;
    void forget();
};

/// References that were taken and not given back since the program began, of all providers together. Takes no
/// memory, for tests that refuse it.
int open_provider_references();

}  // namespace Quillmark::test
