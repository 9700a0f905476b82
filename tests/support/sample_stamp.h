#pragma once

// Stamps of the Authenticode exchange put together by hand. Their signature is made up: they can be read, not
// verified.

#include "tests/support/sample_token.h"

namespace Quillmark::test {

/// The attribute signing-time (RFC 5652 11.3) with these values.
inline Octets signing_time_attribute(const Octets& values) {
    return sequence({element(0x06, "2a 86 48 86 f7 0d 01 09 05"), element(0x31, values)});
}

struct StampParts {
    Octets content = element(0xa0, element(0x04, "aa bb"));  ///< behind its type; absent when empty
    Octets content_type = kDataType;
    Octets digest_algorithm = kSha256;
    Octets certificates;  ///< contents of [0]; absent when empty
    /// Contents of [0]; absent when empty. 2024-01-02 03:04:05.
    Octets signed_attributes = signing_time_attribute(text_element(0x17, "240102030405Z"));
    Octets signer_identifier;  ///< issuer CN=A and serial 7 when empty
    bool with_signer = true;
    Octets more_signers;
};

/// A SignerInfo of issuer CN=A and this serial number.
inline Octets sample_stamp_signer(const Octets& time, std::uint8_t serial) {
    const Octets attribute = sequence({element(0x06, "55 04 03"), text_element(0x0c, "A")});
    TokenParts signer;
    signer.signed_attributes = signing_time_attribute(time);
    signer.signer_identifier =
        sequence({sequence({element(0x31, attribute)}), element(0x02, Octets{serial})});
    return sample_signer(signer);
}

/// A SignedData in a ContentInfo (RFC 2315 9.1).
inline Octets sample_stamp(const StampParts& parts = {}) {
    TokenParts signer;
    signer.digest_algorithm = parts.digest_algorithm;
    signer.signed_attributes = parts.signed_attributes;
    signer.signer_identifier = parts.signer_identifier;
    const Octets first = parts.with_signer ? sample_signer(signer) : Octets{};
    const Octets certificates = parts.certificates.empty() ? Octets{} : element(0xa0, parts.certificates);
    const Octets signed_data = sequence({element(0x02, "01"), element(0x31, parts.digest_algorithm),
                                         sequence({parts.content_type, parts.content}), certificates,
                                         element(0x31, {first, parts.more_signers})});
    return sequence({element(0x06, "2a 86 48 86 f7 0d 01 07 02"), element(0xa0, signed_data)});
}

}  // namespace Quillmark::test
