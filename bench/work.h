#pragma once

// The work that both sides do, on the same bytes: a full request (policy, nonce, certReq, one extension) and
// a granted response with the signer's and the CA's certificate and the four usual signed attributes
// (content type, message digest, signing time, signing certificate version 2).

#include <cstdint>
#include <vector>

#include "bench/authority.h"

namespace Quillmark::bench {

using Bytes = std::vector<std::uint8_t>;

inline constexpr const char* kPolicy = "1.3.6.1.4.1.13762.3";
inline constexpr const char* kExtension = "1.3.6.1.4.1.13762.4.1";
inline constexpr const char* kSha256 = "2.16.840.1.101.3.4.2.1";

/// SHA-256 of the octets, as a 32-octet value that looks like a real imprint.
const Bytes& imprint();
/// DER of the extension's value: an OCTET STRING.
const Bytes& extension_value();
/// Content octets of the nonce, 8 of them.
const Bytes& nonce();

/// DER of the request, written by OpenSSL.
const Bytes& request();
/// DER of a response to it, written by OpenSSL with the key of `kind`.
const Bytes& response(KeyKind kind);

}  // namespace Quillmark::bench
