#pragma once

// The platform's cryptographic message service: the message, certificate and provider functions of the
// published CryptoAPI interface and the few Win32 support functions that the library calls. Nothing of
// the implementation shows here, so another service with the same interface can take its place at link
// time. Struct tags and layouts are those of the published interface with 64-bit pointers.

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#define QUILLMARK_PLATFORM_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD, UINT;
typedef int32_t LONG;
typedef int BOOL;
typedef char* LPSTR;
typedef const char* LPCSTR;
typedef wchar_t* LPWSTR;
typedef const wchar_t* LPCWSTR;
typedef uint64_t ULONG_PTR;
typedef ULONG_PTR HCRYPTPROV;
typedef void* HCRYPTMSG;
typedef void* HCERTSTORE;
typedef struct _FILETIME {
    DWORD dwLowDateTime, dwHighDateTime;
} FILETIME, *LPFILETIME;
typedef struct _SYSTEMTIME {
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
} SYSTEMTIME, *LPSYSTEMTIME;
typedef struct _CRYPTOAPI_BLOB {
    DWORD cbData;
    BYTE* pbData;
} CRYPT_DATA_BLOB, CRYPT_INTEGER_BLOB, CRYPT_OBJID_BLOB, CRYPT_ATTR_BLOB, *PCRYPT_ATTR_BLOB, CERT_NAME_BLOB,
    CERT_BLOB, *PCERT_BLOB, CRL_BLOB, *PCRL_BLOB;
typedef struct _CRYPT_BIT_BLOB {
    DWORD cbData;
    BYTE* pbData;
    DWORD cUnusedBits;
} CRYPT_BIT_BLOB;
typedef struct _CRYPT_ALGORITHM_IDENTIFIER {
    LPSTR pszObjId;
    CRYPT_OBJID_BLOB Parameters;
} CRYPT_ALGORITHM_IDENTIFIER;
typedef struct _CERT_PUBLIC_KEY_INFO {
    CRYPT_ALGORITHM_IDENTIFIER Algorithm;
    CRYPT_BIT_BLOB PublicKey;
} CERT_PUBLIC_KEY_INFO;
typedef struct _CERT_EXTENSION {
    LPSTR pszObjId;
    BOOL fCritical;
    CRYPT_OBJID_BLOB Value;
} CERT_EXTENSION, *PCERT_EXTENSION;
typedef struct _CERT_INFO {
    DWORD dwVersion;
    CRYPT_INTEGER_BLOB SerialNumber;
    CRYPT_ALGORITHM_IDENTIFIER SignatureAlgorithm;
    CERT_NAME_BLOB Issuer;
    FILETIME NotBefore, NotAfter;
    CERT_NAME_BLOB Subject;
    CERT_PUBLIC_KEY_INFO SubjectPublicKeyInfo;
    CRYPT_BIT_BLOB IssuerUniqueId, SubjectUniqueId;
    DWORD cExtension;
    PCERT_EXTENSION rgExtension;
} CERT_INFO, *PCERT_INFO;
typedef struct _CERT_CONTEXT {
    DWORD dwCertEncodingType;
    BYTE* pbCertEncoded;
    DWORD cbCertEncoded;
    PCERT_INFO pCertInfo;
    HCERTSTORE hCertStore;
} CERT_CONTEXT, *PCERT_CONTEXT;
typedef const CERT_CONTEXT* PCCERT_CONTEXT;
typedef struct _CRYPT_ATTRIBUTE {
    LPSTR pszObjId;
    DWORD cValue;
    PCRYPT_ATTR_BLOB rgValue;
} CRYPT_ATTRIBUTE, *PCRYPT_ATTRIBUTE;
typedef struct _CRYPT_ATTRIBUTES {
    DWORD cAttr;
    PCRYPT_ATTRIBUTE rgAttr;
} CRYPT_ATTRIBUTES, *PCRYPT_ATTRIBUTES;
typedef struct _CMSG_SIGNER_ENCODE_INFO {
    DWORD cbSize;
    PCERT_INFO pCertInfo;
    HCRYPTPROV hCryptProv;
    DWORD dwKeySpec;
    CRYPT_ALGORITHM_IDENTIFIER HashAlgorithm;
    void* pvHashAuxInfo;
    DWORD cAuthAttr;
    PCRYPT_ATTRIBUTE rgAuthAttr;
    DWORD cUnauthAttr;
    PCRYPT_ATTRIBUTE rgUnauthAttr;
} CMSG_SIGNER_ENCODE_INFO, *PCMSG_SIGNER_ENCODE_INFO;
typedef struct _CMSG_SIGNED_ENCODE_INFO {
    DWORD cbSize, cSigners;
    PCMSG_SIGNER_ENCODE_INFO rgSigners;
    DWORD cCertEncoded;
    PCERT_BLOB rgCertEncoded;
    DWORD cCrlEncoded;
    PCRL_BLOB rgCrlEncoded;
} CMSG_SIGNED_ENCODE_INFO, *PCMSG_SIGNED_ENCODE_INFO;
typedef struct _CMSG_STREAM_INFO CMSG_STREAM_INFO, *PCMSG_STREAM_INFO;

/* Encoding types */
#define X509_ASN_ENCODING 1u
#define PKCS_7_ASN_ENCODING 0x10000u

/* Message types */
#define CMSG_DATA 1u
#define CMSG_SIGNED 2u

/* Message flags */
#define CMSG_BARE_CONTENT_FLAG 1u
#define CMSG_DETACHED_FLAG 4u
#define CMSG_AUTHENTICATED_ATTRIBUTES_FLAG 8u
#define CMSG_CMS_ENCAPSULATED_CONTENT_FLAG 0x40u
#define CMSG_CRYPT_RELEASE_CONTEXT_FLAG 0x8000u

/* Parameters of CryptMsgGetParam */
#define CMSG_TYPE_PARAM 1u
#define CMSG_CONTENT_PARAM 2u
#define CMSG_BARE_CONTENT_PARAM 3u
#define CMSG_INNER_CONTENT_TYPE_PARAM 4u
#define CMSG_SIGNER_COUNT_PARAM 5u
#define CMSG_SIGNER_AUTH_ATTR_PARAM 9u
#define CMSG_SIGNER_UNAUTH_ATTR_PARAM 10u
#define CMSG_CERT_COUNT_PARAM 11u
#define CMSG_CERT_PARAM 12u
#define CMSG_CRL_COUNT_PARAM 13u
#define CMSG_CRL_PARAM 14u
#define CMSG_COMPUTED_HASH_PARAM 22u
#define CMSG_ENCODED_SIGNER 28u

/* Controls */
#define CMSG_CTRL_VERIFY_SIGNATURE 1u

/* Providers and keys */
#define AT_KEYEXCHANGE 1u
#define AT_SIGNATURE 2u
#define PROV_RSA_FULL 1u
#define PROV_RSA_AES 24u
#define CRYPT_VERIFYCONTEXT 0xF0000000u
#define CRYPT_SILENT 0x40u
#define CRYPT_MACHINE_KEYSET 0x20u
#define PP_KEYEXCHANGE_PIN 32u
#define PP_SIGNATURE_PIN 33u

/* Text conversion */
#define CP_ACP 0u
#define CP_UTF8 65001u
#define MB_ERR_INVALID_CHARS 8u
#define WC_ERR_INVALID_CHARS 0x80u

QUILLMARK_PLATFORM_API HCRYPTMSG CryptMsgOpenToEncode(DWORD dwMsgEncodingType, DWORD dwFlags, DWORD dwMsgType,
                                                      const void* pvMsgEncodeInfo, LPSTR pszInnerContentObjID,
                                                      PCMSG_STREAM_INFO pStreamInfo);
QUILLMARK_PLATFORM_API HCRYPTMSG CryptMsgOpenToDecode(DWORD dwMsgEncodingType, DWORD dwFlags, DWORD dwMsgType,
                                                      HCRYPTPROV hCryptProv, PCERT_INFO pRecipientInfo,
                                                      PCMSG_STREAM_INFO pStreamInfo);
QUILLMARK_PLATFORM_API BOOL CryptMsgUpdate(HCRYPTMSG hCryptMsg, const BYTE* pbData, DWORD cbData,
                                           BOOL fFinal);
QUILLMARK_PLATFORM_API BOOL CryptMsgGetParam(HCRYPTMSG hCryptMsg, DWORD dwParamType, DWORD dwIndex,
                                             void* pvData, DWORD* pcbData);
QUILLMARK_PLATFORM_API BOOL CryptMsgControl(HCRYPTMSG hCryptMsg, DWORD dwFlags, DWORD dwCtrlType,
                                            const void* pvCtrlPara);
QUILLMARK_PLATFORM_API HCRYPTMSG CryptMsgDuplicate(HCRYPTMSG hCryptMsg);
QUILLMARK_PLATFORM_API BOOL CryptMsgClose(HCRYPTMSG hCryptMsg);
QUILLMARK_PLATFORM_API PCCERT_CONTEXT CertCreateCertificateContext(DWORD dwCertEncodingType,
                                                                   const BYTE* pbCertEncoded,
                                                                   DWORD cbCertEncoded);
QUILLMARK_PLATFORM_API PCCERT_CONTEXT CertDuplicateCertificateContext(PCCERT_CONTEXT pCertContext);
QUILLMARK_PLATFORM_API BOOL CertFreeCertificateContext(PCCERT_CONTEXT pCertContext);
QUILLMARK_PLATFORM_API BOOL CryptAcquireContextA(HCRYPTPROV* phProv, LPCSTR szContainer, LPCSTR szProvider,
                                                 DWORD dwProvType, DWORD dwFlags);
QUILLMARK_PLATFORM_API BOOL CryptAcquireContextW(HCRYPTPROV* phProv, LPCWSTR szContainer, LPCWSTR szProvider,
                                                 DWORD dwProvType, DWORD dwFlags);
QUILLMARK_PLATFORM_API BOOL CryptContextAddRef(HCRYPTPROV hProv, DWORD* pdwReserved, DWORD dwFlags);
QUILLMARK_PLATFORM_API BOOL CryptReleaseContext(HCRYPTPROV hProv, DWORD dwFlags);
QUILLMARK_PLATFORM_API BOOL CryptSetProvParam(HCRYPTPROV hProv, DWORD dwParam, const BYTE* pbData,
                                              DWORD dwFlags);
QUILLMARK_PLATFORM_API DWORD GetLastError(void);
QUILLMARK_PLATFORM_API void SetLastError(DWORD dwErrCode);
QUILLMARK_PLATFORM_API void GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime);
QUILLMARK_PLATFORM_API BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime);
QUILLMARK_PLATFORM_API BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime);
QUILLMARK_PLATFORM_API int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr,
                                               int cbMultiByte, LPWSTR lpWideCharStr, int cchWideChar);
QUILLMARK_PLATFORM_API int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr,
                                               int cchWideChar, LPSTR lpMultiByteStr, int cbMultiByte,
                                               LPCSTR lpDefaultChar, BOOL* lpUsedDefaultChar);

#ifdef __cplusplus
}
#endif
