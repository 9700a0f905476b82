#pragma once

// Messages taken apart, changed and put together again, and what verifying them comes to.

#include <vector>

#include "tests/platform/der_tree.h"
#include "tests/platform/service.h"

namespace Quillmark::test {

/// A message taken apart, to be put together again with something changed.
struct Pieces {
    explicit Pieces(const Octets& message)
        : data(signed_data_fields(message)), signer(signer_fields(message)) {}

    Octets message() const {
        std::vector<Octets> fields = data;
        fields.back() = element(0x31, whole(signer));
        return sequence({object_id("1.2.840.113549.1.7.2"), element(0xA0, whole(fields))});
    }

    static Octets whole(const std::vector<Octets>& fields) {
        Octets all;
        for (const Octets& field : fields) {
            all = join({all, field});
        }
        return element(0x30, all);
    }

    // Positions in SignerInfo
    static constexpr std::size_t kIdentifier = 1, kDigest = 2, kAttributes = 3, kAlgorithm = 4,
                                 kSignature = 5;
    std::vector<Octets> data;
    std::vector<Octets> signer;
};

inline testing::AssertionResult verifies(const Octets& octets, const CERT_INFO* certificate) {
    const Message message(open_to_decode());
    if (!message.update(octets)) {
        return testing::AssertionFailure() << "not read: " << std::hex << GetLastError();
    }
    return message.verify(certificate) ? testing::AssertionSuccess()
                                       : testing::AssertionFailure() << std::hex << GetLastError();
}

inline testing::AssertionResult fails_to_verify(DWORD code, const Octets& octets,
                                                const CERT_INFO* certificate) {
    const Message message(open_to_decode());
    message.update(octets);
    return fails_with(code, message.verify(certificate));
}

}  // namespace Quillmark::test
