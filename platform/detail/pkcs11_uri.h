#pragma once

// Names of keys on PKCS #11 tokens (RFC 7512):
//
//     pkcs11:token=T;object=K;type=private?module-path=/usr/lib/module.so&pin-value=1234
//
// Two of the attributes are not for the engine that loads the key: the PIN is taken out, so that it lies in
// no text that anyone keeps or prints, and the module is told to the engine in its own way.

#include <optional>
#include <string>
#include <string_view>

#include "platform/detail/pkcs11_module.h"
#include "platform/detail/secret_text.h"

namespace Quillmark::platform {

struct Pkcs11Uri {
    std::string key;                         // the URI without `pin-value` and `module-path`
    std::string token;                       // what names the token in it, as a URI; empty when nothing does
    Pkcs11TokenName token_name;              // the same, decoded
    std::optional<std::string> module_path;  // decoded
    std::optional<SecretText> pin;           // decoded
};

/// Whether `name` has the scheme "pkcs11".
bool is_pkcs11_uri(std::string_view name);

/// Takes a URI apart; attributes of the query may also stand in the path, as some writers have them.
/// `NTE_BAD_KEYSET` for an attribute without '=', and for a percent sign without two hexadecimal digits in
/// one that is decoded here.
Pkcs11Uri parse_pkcs11_uri(std::string_view uri);

}  // namespace Quillmark::platform
