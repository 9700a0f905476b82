#include "tests/platform/containers.h"

#include <cstring>

namespace Quillmark::test {

HCRYPTMSG open_with(HCRYPTPROV provider, const std::string& signer, DWORD key_spec,
                    const std::string& digest) {
    return open_to_encode(
        {.signers = {{.name = signer, .digest = digest, .key_spec = key_spec, .provider = provider}}});
}

testing::AssertionResult signs(HCRYPTPROV provider, const std::string& signer, DWORD key_spec,
                               const std::string& digest) {
    const Message message(open_with(provider, signer, key_spec, digest));
    if (message.handle() == nullptr || !message.update(kContent)) {
        return testing::AssertionFailure() << std::hex << GetLastError();
    }
    const Certificate certificate(signer + ".der");
    return message.verify(certificate.info())
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << "does not verify: " << std::hex << GetLastError();
}

int give_password(char* buffer, int size, LPCSTR container, void* argument) {
    auto& password = *static_cast<Password*>(argument);
    ++password.calls;
    password.container = container;
    if (password.text == nullptr) {
        return -1;
    }
    const int length = static_cast<int>(std::strlen(password.text));
    EXPECT_LE(length, size);
    std::memcpy(buffer, password.text, static_cast<std::size_t>(length));
    return length;
}

}  // namespace Quillmark::test
