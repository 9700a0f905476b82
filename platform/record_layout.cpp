// The records of the interface lie in memory as published for 64-bit pointers: other binaries fill and read
// them, so a change of layout must not compile.

#include "platform/cryptoapi.h"

static_assert(sizeof(CMSG_SIGNER_ENCODE_INFO) == 96);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, pCertInfo) == 8);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, hCryptProv) == 16);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, dwKeySpec) == 24);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, HashAlgorithm) == 32);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, pvHashAuxInfo) == 56);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, cAuthAttr) == 64);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, rgAuthAttr) == 72);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, cUnauthAttr) == 80);
static_assert(offsetof(CMSG_SIGNER_ENCODE_INFO, rgUnauthAttr) == 88);

static_assert(sizeof(CMSG_SIGNED_ENCODE_INFO) == 48);
static_assert(offsetof(CMSG_SIGNED_ENCODE_INFO, cSigners) == 4);
static_assert(offsetof(CMSG_SIGNED_ENCODE_INFO, rgSigners) == 8);
static_assert(offsetof(CMSG_SIGNED_ENCODE_INFO, cCertEncoded) == 16);
static_assert(offsetof(CMSG_SIGNED_ENCODE_INFO, rgCertEncoded) == 24);
static_assert(offsetof(CMSG_SIGNED_ENCODE_INFO, cCrlEncoded) == 32);
static_assert(offsetof(CMSG_SIGNED_ENCODE_INFO, rgCrlEncoded) == 40);

static_assert(sizeof(CERT_INFO) == 208);
static_assert(offsetof(CERT_INFO, SerialNumber) == 8);
static_assert(offsetof(CERT_INFO, SignatureAlgorithm) == 24);
static_assert(offsetof(CERT_INFO, Issuer) == 48);
static_assert(offsetof(CERT_INFO, NotBefore) == 64);
static_assert(offsetof(CERT_INFO, NotAfter) == 72);
static_assert(offsetof(CERT_INFO, Subject) == 80);
static_assert(offsetof(CERT_INFO, SubjectPublicKeyInfo) == 96);
static_assert(offsetof(CERT_INFO, IssuerUniqueId) == 144);
static_assert(offsetof(CERT_INFO, SubjectUniqueId) == 168);
static_assert(offsetof(CERT_INFO, cExtension) == 192);
static_assert(offsetof(CERT_INFO, rgExtension) == 200);

static_assert(sizeof(CERT_CONTEXT) == 40);
static_assert(offsetof(CERT_CONTEXT, pbCertEncoded) == 8);
static_assert(offsetof(CERT_CONTEXT, cbCertEncoded) == 16);
static_assert(offsetof(CERT_CONTEXT, pCertInfo) == 24);
static_assert(offsetof(CERT_CONTEXT, hCertStore) == 32);

static_assert(sizeof(CRYPT_DATA_BLOB) == 16);
static_assert(offsetof(CRYPT_DATA_BLOB, pbData) == 8);
static_assert(sizeof(CRYPT_BIT_BLOB) == 24);
static_assert(offsetof(CRYPT_BIT_BLOB, cUnusedBits) == 16);
static_assert(sizeof(CRYPT_ALGORITHM_IDENTIFIER) == 24);
static_assert(sizeof(CERT_PUBLIC_KEY_INFO) == 48);
static_assert(sizeof(CERT_EXTENSION) == 32);
static_assert(offsetof(CERT_EXTENSION, fCritical) == 8);
static_assert(offsetof(CERT_EXTENSION, Value) == 16);
static_assert(sizeof(CRYPT_ATTRIBUTE) == 24);
static_assert(offsetof(CRYPT_ATTRIBUTE, cValue) == 8);
static_assert(offsetof(CRYPT_ATTRIBUTE, rgValue) == 16);
static_assert(sizeof(CRYPT_ATTRIBUTES) == 16);
static_assert(offsetof(CRYPT_ATTRIBUTES, rgAttr) == 8);
static_assert(sizeof(FILETIME) == 8);
static_assert(sizeof(SYSTEMTIME) == 16);
static_assert(sizeof(wchar_t) == 4, "one wide character is one code point");
