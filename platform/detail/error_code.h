#pragma once

// The codes that the service leaves in the last error, by their published names, and the exception that
// carries one from where it is found to the function of the interface that answers with it.

#include "platform/cryptoapi.h"

namespace Quillmark::platform {

enum ErrorCode : DWORD {
    ERROR_SUCCESS = 0,
    ERROR_INVALID_HANDLE = 6,         // a handle that is null, closed, of the other kind or never given out
    ERROR_INVALID_PARAMETER = 87,     // support functions: bad argument
    ERROR_INSUFFICIENT_BUFFER = 122,  // text conversion: output too small
    ERROR_MORE_DATA = 234,            // buffer too small, the size needed was written
    ERROR_INVALID_FLAGS = 1004,       // text conversion: unknown flag
    ERROR_NO_UNICODE_TRANSLATION = 1113,  // text conversion: bad sequence
    E_NOTIMPL = 0x80004001,
    E_FAIL = 0x80004005,
    E_OUTOFMEMORY = 0x8007000E,
    E_INVALIDARG = 0x80070057,
    CRYPT_E_MSG_ERROR = 0x80091001,           // the message is not in the state for this call
    CRYPT_E_UNKNOWN_ALGO = 0x80091002,        // digest or public key algorithm not known
    CRYPT_E_OID_FORMAT = 0x80091003,          // text is no object identifier
    CRYPT_E_INVALID_MSG_TYPE = 0x80091004,    // type, parameter or control that the message does not have
    CRYPT_E_AUTH_ATTR_MISSING = 0x80091006,   // no usable content-type or message-digest attribute
    CRYPT_E_HASH_VALUE = 0x80091007,          // message-digest attribute differs from the digest
    CRYPT_E_INVALID_INDEX = 0x80091008,       // index not below the count
    CRYPT_E_CONTROL_TYPE = 0x8009100C,        // unknown control
    CRYPT_E_SIGNER_NOT_FOUND = 0x8009100E,    // no signer belongs to the certificate
    CRYPT_E_ATTRIBUTES_MISSING = 0x8009100F,  // no attributes of this kind
    CRYPT_E_ASN1_EOD = 0x80093102,            // empty or truncated input
    CRYPT_E_ASN1_CORRUPT = 0x80093103,        // bad content
    CRYPT_E_ASN1_LARGE = 0x80093104,          // length of more than four octets
    CRYPT_E_ASN1_BADTAG = 0x8009310B,         // wrong tag
    NTE_BAD_SIGNATURE = 0x80090006,           // the signature does not hold
    NTE_BAD_ALGID = 0x80090008,               // known algorithms that do not go together
    NTE_BAD_FLAGS = 0x80090009,
    NTE_NO_KEY = 0x8009000D,             // no private key for this specification
    NTE_BAD_PUBLIC_KEY = 0x80090015,     // malformed, or not the private key's
    NTE_BAD_KEYSET = 0x80090016,         // the container cannot be opened or read
    NTE_PROVIDER_DLL_FAIL = 0x8009001D,  // the cryptographic module cannot be loaded
    NTE_FAIL = 0x80090020,               // the key refused to sign
    NTE_SILENT_CONTEXT = 0x80090022,     // a password is needed and there is none
    SCARD_W_WRONG_CHV = 0x8010006B,      // the password or PIN is wrong
};

/// Thrown inside the service only; `outcome` (border.h) turns it into the last error.
struct Failure {
    ErrorCode code;
};

}  // namespace Quillmark::platform
