#pragma once

// The platform's cryptographic message service: the message, certificate and provider functions of the
// published CryptoAPI interface and the few Win32 support functions that the library calls. Nothing of
// the implementation shows here, so another service with the same interface can take its place at link
// time. Struct tags and layouts are those of the published interface with 64-bit pointers. A C header.
//
// What holds for all functions:
// - A function that returns BOOL or a handle answers FALSE or null when it fails and leaves the reason in
//   the last error of the thread (`GetLastError`); a call that succeeds leaves the last error as it was.
// - Handles are numbers. One that is closed, released too often, of the other kind or never given out
//   fails with ERROR_INVALID_HANDLE (6) and touches nothing. A call that runs keeps its object when
//   another thread closes the last handle.
// - All functions may be called from any thread. `CryptMsgUpdate` must be alone on its message; after it
//   the message never changes.
// - Null where a pointer is needed, an unknown encoding type and a bad `cbSize` fail with E_INVALIDARG.
//
// Signing a token:
//
//     HCRYPTMSG message = CryptMsgOpenToEncode(PKCS_7_ASN_ENCODING, CMSG_CMS_ENCAPSULATED_CONTENT_FLAG,
//                                              CMSG_SIGNED, &info, inner_type, NULL);
//     CryptMsgUpdate(message, content, content_size, 1);
//     CryptMsgGetParam(message, CMSG_CONTENT_PARAM, 0, NULL, &size);
//     CryptMsgGetParam(message, CMSG_CONTENT_PARAM, 0, token, &size);
//     CryptMsgClose(message);

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
typedef char* LPSTR; /* terminated text */
typedef const char* LPCSTR;
typedef wchar_t* LPWSTR; /* terminated text, one wchar_t a code point */
typedef const wchar_t* LPCWSTR;
typedef uint64_t ULONG_PTR;
typedef ULONG_PTR HCRYPTPROV; /* a key container */
typedef void* HCRYPTMSG;      /* a message that is made or read */
typedef void* HCERTSTORE;

/// 100-nanosecond ticks since 1601-01-01T00:00:00 UTC, in two halves.
typedef struct _FILETIME {
    DWORD dwLowDateTime, dwHighDateTime;
} FILETIME, *LPFILETIME;

/// A date of the proleptic Gregorian calendar, UTC. Sunday is day 0 of the week.
typedef struct _SYSTEMTIME {
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
} SYSTEMTIME, *LPSYSTEMTIME;

/// Octets of someone else: a record never owns what its blobs point at.
typedef struct _CRYPTOAPI_BLOB {
    DWORD cbData;
    BYTE* pbData;
} CRYPT_DATA_BLOB, CRYPT_INTEGER_BLOB, CRYPT_OBJID_BLOB, CRYPT_ATTR_BLOB, *PCRYPT_ATTR_BLOB, CERT_NAME_BLOB,
    CERT_BLOB, *PCERT_BLOB, CRL_BLOB, *PCRL_BLOB;

/// A BIT STRING: its octets, and how many bits of the last one are not used.
typedef struct _CRYPT_BIT_BLOB {
    DWORD cbData;
    BYTE* pbData;
    DWORD cUnusedBits;
} CRYPT_BIT_BLOB;

/// AlgorithmIdentifier: dotted OID and the encoded parameters, of size 0 when they are absent.
typedef struct _CRYPT_ALGORITHM_IDENTIFIER {
    LPSTR pszObjId;
    CRYPT_OBJID_BLOB Parameters;
} CRYPT_ALGORITHM_IDENTIFIER;

/// SubjectPublicKeyInfo (RFC 5280 4.1.2.7).
typedef struct _CERT_PUBLIC_KEY_INFO {
    CRYPT_ALGORITHM_IDENTIFIER Algorithm;
    CRYPT_BIT_BLOB PublicKey;
} CERT_PUBLIC_KEY_INFO;

/// Extension (RFC 5280 4.1.2.9); `Value` is what lies in the OCTET STRING.
typedef struct _CERT_EXTENSION {
    LPSTR pszObjId;
    BOOL fCritical;
    CRYPT_OBJID_BLOB Value;
} CERT_EXTENSION, *PCERT_EXTENSION;

/// The fields of a certificate (RFC 5280 4.1.2). `dwVersion` is 0 to 2, `SerialNumber` has its least
/// significant octet first, names are whole encodings. A time that cannot be read is zero.
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

/// A certificate, its encoding and its fields; of `CertCreateCertificateContext`. `hCertStore` is null here.
typedef struct _CERT_CONTEXT {
    DWORD dwCertEncodingType;
    BYTE* pbCertEncoded;
    DWORD cbCertEncoded;
    PCERT_INFO pCertInfo;
    HCERTSTORE hCertStore;
} CERT_CONTEXT, *PCERT_CONTEXT;
typedef const CERT_CONTEXT* PCCERT_CONTEXT;

/// Attribute (RFC 5652 5.3): each value is one whole encoding.
typedef struct _CRYPT_ATTRIBUTE {
    LPSTR pszObjId;
    DWORD cValue;
    PCRYPT_ATTR_BLOB rgValue;
} CRYPT_ATTRIBUTE, *PCRYPT_ATTRIBUTE;
/// A list of attributes. An array of `cAttr`.
typedef struct _CRYPT_ATTRIBUTES {
    DWORD cAttr;
    PCRYPT_ATTRIBUTE rgAttr;
} CRYPT_ATTRIBUTES, *PCRYPT_ATTRIBUTES;

/// One signer of a message. `cbSize` is the size of the record; a longer form is taken when the further
/// fields are zero. Of `pCertInfo` issuer, serial number and public key are used. `dwKeySpec` is
/// AT_KEYEXCHANGE or AT_SIGNATURE, 0 being the former. `HashAlgorithm.Parameters` go into the message as they
/// are. `pvHashAuxInfo` is not looked at.
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

/// What a SignedData is made of, apart from its content. Without signers it is a message of certificates.
typedef struct _CMSG_SIGNED_ENCODE_INFO {
    DWORD cbSize, cSigners;
    PCMSG_SIGNER_ENCODE_INFO rgSigners;
    DWORD cCertEncoded;
    PCERT_BLOB rgCertEncoded;
    DWORD cCrlEncoded;
    PCRL_BLOB rgCrlEncoded;
} CMSG_SIGNED_ENCODE_INFO, *PCMSG_SIGNED_ENCODE_INFO;

/// Incomplete: streaming is not offered.
typedef struct _CMSG_STREAM_INFO CMSG_STREAM_INFO, *PCMSG_STREAM_INFO;

/* Encoding types */
#define X509_ASN_ENCODING 1u
#define PKCS_7_ASN_ENCODING 0x10000u

/* Message types */
// No macro: <sys/socket.h> has one of this name, which takes an argument.
constexpr DWORD CMSG_DATA = 1;
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

/* Messages (RFC 5652) */

/// Opens a SignedData to be made. Everything of the records is checked, copied or encoded here, and the key
/// is looked up, so they may go when the call returns. `dwMsgType` is CMSG_SIGNED; unknown flags are ignored.
/// The inner type is a dotted OID, null for data. Content of another type is wrapped in an OCTET STRING with
/// CMSG_CMS_ENCAPSULATED_CONTENT_FLAG, and embedded as the one element that it must be without. Signed
/// attributes are made when a signer has some, when the inner type is not data, or with
/// CMSG_AUTHENTICATED_ATTRIBUTES_FLAG; content-type and message-digest are the service's. With
/// CMSG_CRYPT_RELEASE_CONTEXT_FLAG the message takes the providers' references over. Fails with
/// CRYPT_E_INVALID_MSG_TYPE, E_NOTIMPL (CMSG_DETACHED_FLAG), E_INVALIDARG (also for a value that is not one
/// element), CRYPT_E_OID_FORMAT, CRYPT_E_UNKNOWN_ALGO, NTE_BAD_ALGID, ERROR_INVALID_HANDLE, NTE_NO_KEY,
/// NTE_SILENT_CONTEXT (a password is needed) or NTE_BAD_PUBLIC_KEY (the certificate is not the key's).
QUILLMARK_PLATFORM_API HCRYPTMSG CryptMsgOpenToEncode(DWORD dwMsgEncodingType, DWORD dwFlags, DWORD dwMsgType,
                                                      const void* pvMsgEncodeInfo, LPSTR pszInnerContentObjID,
                                                      PCMSG_STREAM_INFO pStreamInfo);

/// Opens a message to be read. `dwMsgType` is 0, CMSG_DATA or CMSG_SIGNED; the message itself tells what it
/// is. The only flag is CMSG_CRYPT_RELEASE_CONTEXT_FLAG, else NTE_BAD_FLAGS; provider, recipient and stream
/// are not used, the last two null.
QUILLMARK_PLATFORM_API HCRYPTMSG CryptMsgOpenToDecode(DWORD dwMsgEncodingType, DWORD dwFlags, DWORD dwMsgType,
                                                      HCRYPTPROV hCryptProv, PCERT_INFO pRecipientInfo,
                                                      PCMSG_STREAM_INFO pStreamInfo);

/// Gives the message its data, all at once (`fFinal` TRUE) and one time, else CRYPT_E_MSG_ERROR. When
/// encoding, the data is the content, which is digested and signed now: NTE_FAIL when the key refuses. When
/// decoding, it is a ContentInfo in DER or BER, which is copied; octets behind it are ignored. Malformed data
/// fails with CRYPT_E_ASN1_EOD, _CORRUPT, _LARGE or _BADTAG, another content type with
/// CRYPT_E_INVALID_MSG_TYPE. CRYPT_E_UNKNOWN_ALGO, for a signer whose digest is unknown, leaves a message
/// that answers queries all the same; any other failure one that does not.
QUILLMARK_PLATFORM_API BOOL CryptMsgUpdate(HCRYPTMSG hCryptMsg, const BYTE* pbData, DWORD cbData,
                                           BOOL fFinal);

/// Queries a message after its update. With `pvData` null `*pcbData` becomes the size of the answer; else it
/// is the room at `pvData` and becomes the octets written, or the size needed (ERROR_MORE_DATA, nothing
/// written). Counts are a DWORD. CMSG_CONTENT_PARAM is the finished message when encoding; when decoding the
/// content, of size 0 when there is none. The attributes of a signer are one CRYPT_ATTRIBUTES with all it
/// points at behind it in the same buffer, which should be aligned to 8 and cannot be moved; without
/// attributes CRYPT_E_ATTRIBUTES_MISSING and size 0. The inner content type has its terminator. Encoding
/// answers content, bare content, encoded signer, computed hash and signer count, decoding all but the bare
/// content. Fails with CRYPT_E_MSG_ERROR before a good update, CRYPT_E_INVALID_MSG_TYPE for a parameter that
/// the message does not have, CRYPT_E_INVALID_INDEX.
QUILLMARK_PLATFORM_API BOOL CryptMsgGetParam(HCRYPTMSG hCryptMsg, DWORD dwParamType, DWORD dwIndex,
                                             void* pvData, DWORD* pcbData);

/// With CMSG_CTRL_VERIFY_SIGNATURE, the only control (else CRYPT_E_CONTROL_TYPE), checks digest, attributes
/// and signature of the first signer that the certificate names, `pvCtrlPara` being its CERT_INFO. Validity,
/// key usage and chain are not looked at; flags neither. Fails with CRYPT_E_SIGNER_NOT_FOUND,
/// CRYPT_E_UNKNOWN_ALGO, CRYPT_E_AUTH_ATTR_MISSING, CRYPT_E_HASH_VALUE, NTE_BAD_PUBLIC_KEY, NTE_BAD_ALGID,
/// NTE_BAD_SIGNATURE, or CRYPT_E_MSG_ERROR without content.
QUILLMARK_PLATFORM_API BOOL CryptMsgControl(HCRYPTMSG hCryptMsg, DWORD dwFlags, DWORD dwCtrlType,
                                            const void* pvCtrlPara);

/// Another handle of the same message, to be closed on its own.
QUILLMARK_PLATFORM_API HCRYPTMSG CryptMsgDuplicate(HCRYPTMSG hCryptMsg);

/// Closes a handle; the message goes with its last one. TRUE for null.
QUILLMARK_PLATFORM_API BOOL CryptMsgClose(HCRYPTMSG hCryptMsg);

/* Certificates */

/// Reads exactly one certificate (RFC 5280 4.1) into a context of its own memory. The encoding type must hold
/// X509_ASN_ENCODING. Fails with CRYPT_E_ASN1_EOD, _CORRUPT, _LARGE or _BADTAG.
QUILLMARK_PLATFORM_API PCCERT_CONTEXT CertCreateCertificateContext(DWORD dwCertEncodingType,
                                                                   const BYTE* pbCertEncoded,
                                                                   DWORD cbCertEncoded);

/// The same context with one reference more; null for null.
QUILLMARK_PLATFORM_API PCCERT_CONTEXT CertDuplicateCertificateContext(PCCERT_CONTEXT pCertContext);

/// Takes one reference away; the context goes with the last. Always TRUE.
QUILLMARK_PLATFORM_API BOOL CertFreeCertificateContext(PCCERT_CONTEXT pCertContext);

/* Keys */

/// Opens a key container: a file path (PEM, DER, PKCS #8, PKCS #12), "pkcs11:..." for a key on a token (RFC
/// 7512, with `module-path` and `pin-value`), "engine:<id>:<key id>", or a URI of a scheme that a loaded
/// provider knows, in UTF-8. `szProvider` names a provider or engine of libcrypto to be loaded first, or is
/// null; `dwProvType` is not looked at. Keys are loaded now; if a password is needed, loading waits for
/// `CryptSetProvParam`. With CRYPT_VERIFYCONTEXT and a null container the handle has no keys. Fails with
/// NTE_BAD_KEYSET (no such container, unreadable), NTE_NO_KEY, SCARD_W_WRONG_CHV (a PIN in the name is
/// wrong), NTE_PROVIDER_DLL_FAIL, NTE_BAD_FLAGS.
QUILLMARK_PLATFORM_API BOOL CryptAcquireContextA(HCRYPTPROV* phProv, LPCSTR szContainer, LPCSTR szProvider,
                                                 DWORD dwProvType, DWORD dwFlags);

/// The same with wide names.
QUILLMARK_PLATFORM_API BOOL CryptAcquireContextW(HCRYPTPROV* phProv, LPCWSTR szContainer, LPCWSTR szProvider,
                                                 DWORD dwProvType, DWORD dwFlags);

/// One more reference on the handle. `pdwReserved` must be null and `dwFlags` 0, else ERROR_INVALID_PARAMETER
/// (87).
QUILLMARK_PLATFORM_API BOOL CryptContextAddRef(HCRYPTPROV hProv, DWORD* pdwReserved, DWORD dwFlags);

/// Takes one reference away; the handle ends with the last. With flags it does so too and answers
/// NTE_BAD_FLAGS.
QUILLMARK_PLATFORM_API BOOL CryptReleaseContext(HCRYPTPROV hProv, DWORD dwFlags);

/// Gives the container its password as terminated text (PP_KEYEXCHANGE_PIN or PP_SIGNATURE_PIN, flags 0) and
/// loads the keys if they wait for it. SCARD_W_WRONG_CHV when it is wrong.
QUILLMARK_PLATFORM_API BOOL CryptSetProvParam(HCRYPTPROV hProv, DWORD dwParam, const BYTE* pbData,
                                              DWORD dwFlags);

/* Support */

/// The last error of this thread.
QUILLMARK_PLATFORM_API DWORD GetLastError(void);
QUILLMARK_PLATFORM_API void SetLastError(DWORD dwErrCode);

/// The time of the system's clock.
QUILLMARK_PLATFORM_API void GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime);

/// Splits a time below 2^63 ticks into its fields; what is below a millisecond is cut.
/// ERROR_INVALID_PARAMETER (87) else.
QUILLMARK_PLATFORM_API BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime);

/// Joins the fields of a date from 1601 to 30827; the day of the week is ignored. ERROR_INVALID_PARAMETER
/// (87) for a date that does not exist.
QUILLMARK_PLATFORM_API BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime);

/// UTF-8 (code pages CP_ACP and CP_UTF8 alike) to wide text. A length of -1 means terminated text, and the
/// result then counts the terminator. Gives the characters written, with room 0 the room needed, and 0 on
/// failure: ERROR_INVALID_PARAMETER (87), ERROR_INSUFFICIENT_BUFFER (122), ERROR_INVALID_FLAGS (1004). A bad
/// sequence becomes U+FFFD, or with MB_ERR_INVALID_CHARS the failure ERROR_NO_UNICODE_TRANSLATION (1113).
QUILLMARK_PLATFORM_API int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr,
                                               int cbMultiByte, LPWSTR lpWideCharStr, int cchWideChar);

/// The way back, by the same rules with WC_ERR_INVALID_CHARS. `lpDefaultChar` and `lpUsedDefaultChar` must be
/// null.
QUILLMARK_PLATFORM_API int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr,
                                               int cchWideChar, LPSTR lpMultiByteStr, int cbMultiByte,
                                               LPCSTR lpDefaultChar, BOOL* lpUsedDefaultChar);

#ifdef __cplusplus
}
#endif
