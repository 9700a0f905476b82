#pragma once

// Opening keys in ways that the published interface has no function for. The handles are those of
// `CryptAcquireContextA` and are released with `CryptReleaseContext`.

#include "platform/cryptoapi.h"

#ifdef __cplusplus
extern "C" {
#endif

struct evp_pkey_st;

/// Writes a password of at most `size` octets into `buf` and gives its length, or -1 when there is none.
/// `container` is the name that is being opened, `arg` what was given with the function. It is called in the
/// thread that opens the container or makes the first signature, and must neither throw nor use the
/// container.
typedef int (*KEY_CONTAINER_PASSWORD)(char* buf, int size, LPCSTR container, void* arg);

/// Opens a container as `CryptAcquireContextA` does, with a source for its password (may be null). FALSE with
/// the last error as there; `SCARD_W_WRONG_CHV` (0x8010006B) when the source gives a wrong password.
QUILLMARK_PLATFORM_API BOOL KeyContainerOpen(HCRYPTPROV* phProv, LPCSTR container, LPCSTR module, DWORD flags,
                                             KEY_CONTAINER_PASSWORD password, void* arg);

/// A container of one private key that the application opened with libcrypto itself (`EVP_PKEY`). Takes a
/// reference on it.
QUILLMARK_PLATFORM_API BOOL KeyContainerFromKey(HCRYPTPROV* phProv, struct evp_pkey_st* key);

#ifdef __cplusplus
}
#endif
