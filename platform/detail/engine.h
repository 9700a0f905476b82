#pragma once

// The engines of libcrypto: GOST R 34.10 and 34.11 come from the engine `gost`, keys on PKCS #11 tokens from
// the engine `pkcs11`, others from whatever engine an application names. libcrypto 3.0 deprecates engines in
// favour of providers; until those have the same algorithms and keys, all that is done with engines is done
// in engine.cpp. In a libcrypto without engines everything here says that there is none.
//
// An engine is never made the default for anything, and stays loaded to the end of the process: its keys may
// be in use for as long, and a PKCS #11 module that is unloaded takes the sessions of others with it.

#include <memory>
#include <string>

#include "platform/detail/password.h"
#include "platform/detail/private_key.h"

namespace Quillmark::platform {

/// Makes the GOST algorithms and keys known. Looks for the engine once; false when there is none.
bool load_gost_engine();
bool is_gost_engine_loaded();

/// Loads the engine with this identifier; false when there is none.
bool load_engine(const char* id);

/// The private key that the engine `id` has under `name`. The source is asked only when the engine asks, and
/// in no lock. A key of the engine `pkcs11` may have a URI with `pin-value` and `module-path`.
///
/// `NTE_PROVIDER_DLL_FAIL`: the engine or the PKCS #11 module cannot be loaded, or another module is in use.
/// `NTE_BAD_KEYSET`: no such token, or not a name. `NTE_NO_KEY`: no such key on the token.
/// `NTE_SILENT_CONTEXT`: a PIN is needed and there is none. `SCARD_W_WRONG_CHV`: the PIN is wrong.
std::shared_ptr<const PrivateKey> load_engine_key(const std::string& id, std::string_view name,
                                                  const PasswordSource& password);

/// Whether an engine asked this thread for a PIN in the middle of its work since the last call, and got none.
bool take_refused_question() noexcept;

}  // namespace Quillmark::platform
