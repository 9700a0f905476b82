#pragma once

// Tokens put together by hand. Their signature is made up: they can be read, not verified.

#include "tests/support/der.h"

namespace Quillmark::test {

inline const Octets kSha256 = sequence({element(0x06, "60 86 48 01 65 03 04 02 01")});
inline const Octets kTSTInfoType = element(0x06, "2a 86 48 86 f7 0d 01 09 10 01 04");
inline const Octets kDataType = element(0x06, "2a 86 48 86 f7 0d 01 07 01");

/// version 1, policy 1.2.3, SHA-256 of two octets, serial 5, and the time; then `optional` elements.
Octets sample_tst_info(const Octets& optional = {});

struct TokenParts {
    Octets tst_info = sample_tst_info();
    Octets content_type = kTSTInfoType;
    Octets digest_algorithm = kSha256;
    Octets certificates;         ///< contents of [0]; absent when empty
    Octets signed_attributes;    ///< contents of [0]; absent when empty
    Octets unsigned_attributes;  ///< contents of [1]; absent when empty
    Octets signer_identifier;    ///< issuer and serial when empty
    bool with_content = true;
    int signer_count = 1;
};

/// A SignerInfo (RFC 5652 5.3), its signature rsaEncryption over nothing.
Octets sample_signer(const TokenParts& parts = {});

/// A SignedData in a ContentInfo (RFC 5652 3, 5.1).
Octets sample_token(const TokenParts& parts = {});

/// A certificate in outline (RFC 5280 4.1): `contents` where the TBSCertificate has its own, and a made-up
/// signature.
Octets sample_certificate(std::string_view contents);

}  // namespace Quillmark::test
