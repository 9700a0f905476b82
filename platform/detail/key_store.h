#pragma once

// Private keys out of files, engines and other stores that libcrypto can open.

#include <memory>
#include <string_view>
#include <vector>

#include "platform/detail/password.h"
#include "platform/detail/private_key.h"

namespace Quillmark::platform {

/// The private keys of a container in their order, at least one. `name` is
///
///     engine:<id>:<key id>   a key of an engine
///     pkcs11:...             a key on a token: from a provider that knows the scheme, else from the engine
///     scheme:...             whatever a loaded provider knows by that scheme
///     anything else          the path of a file
///
/// `NTE_BAD_KEYSET` when it cannot be opened or read, `NTE_NO_KEY` when no private key is in it,
/// `NTE_SILENT_CONTEXT` when a password is needed and the source has none, `SCARD_W_WRONG_CHV` when it is
/// wrong, `NTE_PROVIDER_DLL_FAIL` when an engine or a PKCS #11 module cannot be loaded.
std::vector<std::shared_ptr<const PrivateKey>> load_private_keys(const SecretText& name,
                                                                 const PasswordSource& password);

/// The key, used by one thread at a time if it is not libcrypto's own.
std::shared_ptr<const PrivateKey> make_private_key(KeyPointer key);

}  // namespace Quillmark::platform
