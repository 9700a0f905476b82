#include "values/result.h"

namespace {

constexpr const char* kUnknown = "unknown result code";

// A switch without default, so that the compiler warns of a code that has no name here.
#define QUILLMARK_NAME_OF(code) \
    case code:                  \
        return #code;

const char* win32_name(Win32Error error) {
    switch (error) {
        QUILLMARK_NAME_OF(ERROR_FILE_NOT_FOUND)
        QUILLMARK_NAME_OF(ERROR_INVALID_HANDLE)
        QUILLMARK_NAME_OF(ERROR_INVALID_PARAMETER)
        QUILLMARK_NAME_OF(ERROR_INSUFFICIENT_BUFFER)
        QUILLMARK_NAME_OF(ERROR_MORE_DATA)
        QUILLMARK_NAME_OF(ERROR_INVALID_FLAGS)
        QUILLMARK_NAME_OF(ERROR_NO_UNICODE_TRANSLATION)
        QUILLMARK_NAME_OF(ERROR_FILE_CORRUPT)
        QUILLMARK_NAME_OF(ERROR_INVALID_TIME)
    }
    return kUnknown;
}

const char* published_name(ResultCode code) {
    switch (code) {
        QUILLMARK_NAME_OF(S_OK)
        QUILLMARK_NAME_OF(E_NOTIMPL)
        QUILLMARK_NAME_OF(E_FAIL)
        QUILLMARK_NAME_OF(E_OUTOFMEMORY)
        QUILLMARK_NAME_OF(E_INVALIDARG)
        QUILLMARK_NAME_OF(NTE_BAD_SIGNATURE)
        QUILLMARK_NAME_OF(NTE_BAD_ALGID)
        QUILLMARK_NAME_OF(NTE_BAD_FLAGS)
        QUILLMARK_NAME_OF(NTE_NO_KEY)
        QUILLMARK_NAME_OF(NTE_NO_MEMORY)
        QUILLMARK_NAME_OF(NTE_BAD_PUBLIC_KEY)
        QUILLMARK_NAME_OF(NTE_BAD_KEYSET)
        QUILLMARK_NAME_OF(NTE_PROVIDER_DLL_FAIL)
        QUILLMARK_NAME_OF(NTE_FAIL)
        QUILLMARK_NAME_OF(NTE_SILENT_CONTEXT)
        QUILLMARK_NAME_OF(SCARD_W_WRONG_CHV)
        QUILLMARK_NAME_OF(CRYPT_E_MSG_ERROR)
        QUILLMARK_NAME_OF(CRYPT_E_UNKNOWN_ALGO)
        QUILLMARK_NAME_OF(CRYPT_E_OID_FORMAT)
        QUILLMARK_NAME_OF(CRYPT_E_INVALID_MSG_TYPE)
        QUILLMARK_NAME_OF(CRYPT_E_AUTH_ATTR_MISSING)
        QUILLMARK_NAME_OF(CRYPT_E_HASH_VALUE)
        QUILLMARK_NAME_OF(CRYPT_E_INVALID_INDEX)
        QUILLMARK_NAME_OF(CRYPT_E_CONTROL_TYPE)
        QUILLMARK_NAME_OF(CRYPT_E_SIGNER_NOT_FOUND)
        QUILLMARK_NAME_OF(CRYPT_E_ATTRIBUTES_MISSING)
        QUILLMARK_NAME_OF(CRYPT_E_BAD_MSG)
        QUILLMARK_NAME_OF(CRYPT_E_ASN1_INTERNAL)
        QUILLMARK_NAME_OF(CRYPT_E_ASN1_EOD)
        QUILLMARK_NAME_OF(CRYPT_E_ASN1_CORRUPT)
        QUILLMARK_NAME_OF(CRYPT_E_ASN1_LARGE)
        QUILLMARK_NAME_OF(CRYPT_E_ASN1_MEMORY)
        QUILLMARK_NAME_OF(CRYPT_E_ASN1_BADTAG)
        QUILLMARK_NAME_OF(CRYPT_E_ASN1_UTF8)
        QUILLMARK_NAME_OF(TRUST_E_TIME_STAMP)
    }
    return kUnknown;
}

#undef QUILLMARK_NAME_OF

}  // namespace

const char* result_name(HRESULT code) {
    if (const char* name = published_name(static_cast<ResultCode>(code)); name != kUnknown) {
        return name;
    }
    const auto bits = static_cast<uint32_t>(code);
    return bits >> 16 == 0x8007u ? win32_name(static_cast<Win32Error>(bits & 0xFFFFu)) : kUnknown;
}
