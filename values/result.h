#pragma once

// Result codes and the one exception type of everything above the run-time. The codes have their
// published COM, Win32 and CryptoAPI meanings.
//
//     try {
//         token.decode(bytes);
//     } catch (const CAtlException& failure) {
//         std::fprintf(stderr, "token: %s\n", result_name(failure));
//     }

#include <cstdint>

#include "values/export.h"

typedef int32_t HRESULT;

/// Win32 error numbers. As a result they stand behind `HRESULT_FROM_WIN32`.
enum Win32Error : uint32_t {
    ERROR_FILE_NOT_FOUND = 2,
    ERROR_INVALID_HANDLE = 6,
    ERROR_INVALID_PARAMETER = 87,
    ERROR_INSUFFICIENT_BUFFER = 122,
    ERROR_MORE_DATA = 234,
    ERROR_INVALID_FLAGS = 1004,
    ERROR_NO_UNICODE_TRANSLATION = 1113,
    ERROR_FILE_CORRUPT = 1392,
    ERROR_INVALID_TIME = 1901
};

/// The result that stands for an error number, as `GetLastError` gives it: a value above 0 as a signed
/// number becomes facility 7 with its low 16 bits, any other is a result already and stays.
constexpr HRESULT HRESULT_FROM_WIN32(uint32_t error) {
    return static_cast<HRESULT>(error) > 0 ? static_cast<HRESULT>((error & 0xFFFFu) | 0x80070000u)
                                           : static_cast<HRESULT>(error);
}

/// Each code is an enumerator of its published name.
enum ResultCode : HRESULT {
    S_OK = 0,
    E_NOTIMPL = static_cast<HRESULT>(0x80004001u),      ///< not implemented
    E_FAIL = static_cast<HRESULT>(0x80004005u),         ///< unspecified failure
    E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu),  ///< out of memory
    E_INVALIDARG = static_cast<HRESULT>(0x80070057u),   ///< bad argument

    NTE_BAD_SIGNATURE = static_cast<HRESULT>(0x80090006u),      ///< the signature does not hold
    NTE_BAD_ALGID = static_cast<HRESULT>(0x80090008u),          ///< algorithms that do not go together
    NTE_BAD_FLAGS = static_cast<HRESULT>(0x80090009u),          ///< bad flags
    NTE_NO_KEY = static_cast<HRESULT>(0x8009000Du),             ///< the container holds no such key
    NTE_NO_MEMORY = static_cast<HRESULT>(0x8009000Eu),          ///< no memory in a value type
    NTE_BAD_PUBLIC_KEY = static_cast<HRESULT>(0x80090015u),     ///< malformed or foreign public key
    NTE_BAD_KEYSET = static_cast<HRESULT>(0x80090016u),         ///< the key container cannot be read
    NTE_PROVIDER_DLL_FAIL = static_cast<HRESULT>(0x8009001Du),  ///< a crypto module cannot be loaded
    NTE_FAIL = static_cast<HRESULT>(0x80090020u),               ///< the key refused to sign
    NTE_SILENT_CONTEXT = static_cast<HRESULT>(0x80090022u),     ///< a password is needed, none may be asked
    SCARD_W_WRONG_CHV = static_cast<HRESULT>(0x8010006Bu),      ///< wrong password or PIN

    CRYPT_E_MSG_ERROR = static_cast<HRESULT>(0x80091001u),           ///< a message in the wrong state
    CRYPT_E_UNKNOWN_ALGO = static_cast<HRESULT>(0x80091002u),        ///< unknown cryptographic algorithm
    CRYPT_E_OID_FORMAT = static_cast<HRESULT>(0x80091003u),          ///< text that is no object identifier
    CRYPT_E_INVALID_MSG_TYPE = static_cast<HRESULT>(0x80091004u),    ///< message type or parameter
    CRYPT_E_AUTH_ATTR_MISSING = static_cast<HRESULT>(0x80091006u),   ///< a required attribute is missing
    CRYPT_E_HASH_VALUE = static_cast<HRESULT>(0x80091007u),          ///< the content has another hash
    CRYPT_E_INVALID_INDEX = static_cast<HRESULT>(0x80091008u),       ///< index behind the last
    CRYPT_E_CONTROL_TYPE = static_cast<HRESULT>(0x8009100Cu),        ///< unknown message control
    CRYPT_E_SIGNER_NOT_FOUND = static_cast<HRESULT>(0x8009100Eu),    ///< no signer for the certificate
    CRYPT_E_ATTRIBUTES_MISSING = static_cast<HRESULT>(0x8009100Fu),  ///< the signer has no attributes
    CRYPT_E_BAD_MSG = static_cast<HRESULT>(0x8009200Du),             ///< not a message of the expected kind

    CRYPT_E_ASN1_INTERNAL = static_cast<HRESULT>(0x80093101u),  ///< an encoder or decoder failed
    CRYPT_E_ASN1_EOD = static_cast<HRESULT>(0x80093102u),       ///< unexpected end of data
    CRYPT_E_ASN1_CORRUPT = static_cast<HRESULT>(0x80093103u),   ///< corrupt data
    CRYPT_E_ASN1_LARGE = static_cast<HRESULT>(0x80093104u),     ///< a value beyond the limits
    CRYPT_E_ASN1_MEMORY = static_cast<HRESULT>(0x80093106u),    ///< codec heap exhausted
    CRYPT_E_ASN1_BADTAG = static_cast<HRESULT>(0x8009310Bu),    ///< another tag than expected
    CRYPT_E_ASN1_UTF8 = static_cast<HRESULT>(0x8009310Eu),      ///< bad UTF-8
    TRUST_E_TIME_STAMP = static_cast<HRESULT>(0x80096005u)      ///< time stamp without content or type
};

/// The published name of `code`, for messages; a result made of a Win32 error has the error's name, but
/// 0x80070057 and 0x8007000E are `E_INVALIDARG` and `E_OUTOFMEMORY`. Never null: a code that neither the
/// library nor its platform service makes is "unknown result code".
QUILLMARK_API const char* result_name(HRESULT code);

namespace ATL {

/// A failure: nothing but its result code.
class QUILLMARK_API CAtlException {
  public:
    CAtlException() noexcept : m_hr(E_FAIL) {}
    CAtlException(HRESULT code) noexcept : m_hr(code) {}

    operator HRESULT() const noexcept { return m_hr; }

    HRESULT m_hr;
};

static_assert(sizeof(CAtlException) == 4, "the exception is its code and nothing else");

}  // namespace ATL

using ATL::CAtlException;
