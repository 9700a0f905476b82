#pragma once

// The platform's message service under test. Programs that link this put it between the library and the
// service: it counts what is open, keeps the order of the calls, and can answer in the service's place.
//
//     MessageService service;
//     service.refuse("CryptMsgUpdate", 0x80091001);
//     EXPECT_CODE(CRYPT_E_MSG_ERROR, token.decode(bytes));
//     EXPECT_EQ(service.open_messages(), 0);

#include <functional>
#include <string>
#include <vector>

#include "platform/cryptoapi.h"

namespace Quillmark::test {

/// In force for the life of the object; there is one at a time.
class MessageService {
  public:
    enum Watch {
        kEverything,
        kHandles  ///< nothing but the number of open handles; takes no memory, for tests that refuse it
    };

    explicit MessageService(Watch watch = kEverything);
    ~MessageService();
    MessageService(const MessageService&) = delete;
    MessageService& operator=(const MessageService&) = delete;

    /// The next call of `function` fails with this last error; `skip` calls before it go through.
    void refuse(const std::string& function, DWORD last_error, int skip = 0);

    /// Answers a query of `parameter` in the service's place, as `CryptMsgGetParam` would; for size and bytes
    /// alike.
    using Query = std::function<BOOL(DWORD index, void* data, DWORD* size)>;
    void answer(DWORD parameter, Query query);
    /// The same with fixed octets.
    void answer(DWORD parameter, std::vector<BYTE> octets);

    /// Sees the records of `CryptMsgOpenToEncode`.
    std::function<void(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const char* inner_type)>
        on_open_to_encode;

    /// Names of the calls so far, in order; a query has its parameter behind it, as in "CryptMsgGetParam 28".
    std::vector<std::string> calls() const;
    void forget_calls();

    /// Handles that were opened or duplicated and not closed, since this object was made.
    int open_messages() const;
    int open_certificates() const;
    /// How many updates failed.
    int failed_updates() const;
};

}  // namespace Quillmark::test
