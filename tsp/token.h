#pragma once

// A time-stamp token (RFC 3161 2.4.2): the fields of its TSTInfo, and the attributes, signer and certificates
// of the CMS SignedData around it. An authority makes one of the required fields, sets the optional ones and
// signs it; a client decodes one and verifies it.
//
//     CToken token("1.2.3.4", algorithm, hash, serial, CDateTime::Now(), false);
//     token.put_accuracy(&accuracy);
//     token.sign(provider, AT_SIGNATURE, certificate, digest_algorithm);
//
//     CToken received;
//     received.decode(bytes);
//     if (!received.verify(certificate_of_authority)) { ... }
//
// Signing and verifying is done by the platform's message service (platform/cryptoapi.h). Comparing the hash
// and the nonce with those of the request, and trusting the certificate, is up to the caller.

#include <cstdint>

#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/extension.h"
#include "asn1/general_name.h"
#include "asn1/signer_info.h"
#include "tsp/accuracy.h"
#include "values/blob.h"
#include "values/datetime.h"
#include "values/export.h"

namespace Quillmark::PKI::TSP {

/// A time-stamp token, signed or to be signed.
class QUILLMARK_API CToken {
  public:
    /// The fields themselves, and their conversion to and from the codec's record. Private to the library.
    class Impl;

    /// A token of version 1 with every other field empty.
    CToken();
    /// The fields of TSTInfo that are always there. `policy` is an OID in dotted text; it is looked at by
    /// `sign` alone.
    CToken(const char* policy, const ASN1::CAlgorithmIdentifierEx& hashAlgorithm, const CBlob& hashedMessage,
           const ASN1::CBigInteger& serialNumber, const CDateTime& genTime, bool ordering);
    /// The copy has a message handle of its own (`CryptMsgDuplicate`).
    CToken(const CToken& other);
    /// A copy that fails leaves this object as it was. The old message is closed before the new one is
    /// duplicated.
    CToken& operator=(const CToken& other);
    ~CToken();

    /// Destroys the content for good: afterwards the object may be neither used nor destroyed.
    void clear();

    std::uint32_t get_version() const;
    /// Never null. Lent, as all pointers and references of `get_` operations are: valid until the field is
    /// put anew, the object is assigned to, decodes or ends.
    const char* get_policy() const;
    const ASN1::CAlgorithmIdentifierEx& get_hashAlgorithm() const;
    const CBlob& get_hashedMessage() const;
    const ASN1::CBigInteger& get_serialNumber() const;
    /// The time of the stamp, parsed from its text on each call; throws as the constructor of `CDateTime`
    /// does when the text is no time.
    CDateTime get_genTime() const;
    /// The GeneralizedTime as it stands on the wire. Never null.
    const char* get_genTimeZ() const;
    bool get_ordering() const;
    /// The signer of the message, as of the last `sign`, `decode` or `encode` that asked the service for it.
    const ASN1::CSignerInfo& get_signerInfo() const;
    const CAccuracy* get_accuracy() const;
    const ASN1::CBigInteger* get_nonce() const;
    const ASN1::CGeneralName* get_tsa() const;
    const ASN1::CExtensions* get_extensions() const;
    const ASN1::CAttributes* get_signedAttributes() const;
    const ASN1::CAttributes* get_unsignedAttributes() const;
    /// DER of each certificate of the message, in its order.
    const CBlobList* get_certificates() const;

    /// Each `put_` copies what it is given, null clears, and a copy that fails leaves the old value. Each of
    /// them also drops the encoded form but keeps the message: until the next `sign`, `encode` answers from
    /// the message as it was signed, and after `decode` with the bare TSTInfo.
    void put_accuracy(const CAccuracy* accuracy);
    void put_nonce(const ASN1::CBigInteger* nonce);
    void put_tsa(const ASN1::CGeneralName* tsa);
    void put_extensions(const ASN1::CExtensions* extensions);
    void put_signedAttributes(const ASN1::CAttributes* attributes);
    void put_unsignedAttributes(const ASN1::CAttributes* attributes);
    void put_certificates(const CBlobList* certificates);

    /// The token: the bytes that `sign` made or `decode` was given. When a `put_` has dropped them they are
    /// taken from the message, and the signer is read anew, so that even this must be alone on the object.
    /// Throws `E_FAIL` when there is neither, and what the service reports.
    CBlob encode() const;

    /// Replaces the whole content by the token in `blob`, and keeps its message open. Bytes that are no
    /// signed message are refused with the service's error; a message without content or content type with
    /// `TRUST_E_TIME_STAMP`; one that carries no TSTInfo with `CRYPT_E_BAD_MSG`; a malformed TSTInfo with
    /// `CRYPT_E_ASN1_INTERNAL`, its version of more than four octets with `E_INVALIDARG`. A digest algorithm
    /// that the service does not know is no failure. After a failure `encode` returns the bytes of `blob`,
    /// and the fields read before it stand.
    void decode(const CBlob& blob);

    /// Whether the signature of the message holds with the key of `certificate` (DER). False also when the
    /// message has not exactly one signer. Throws `CRYPT_E_UNKNOWN_ALGO` when `decode` met an algorithm that
    /// the service does not know, `E_FAIL` when nothing was signed or decoded, and what the service reports
    /// of bytes that are no certificate.
    bool verify(const CBlob& certificate) const;

    /// Signs the fields as a SignedData of content type id-ct-TSTInfo. `provider` is an open HCRYPTPROV, used
    /// only during the call; `keySpec` says which of its keys; `certificate` is the signer's, in DER. No
    /// attribute is added here: what a policy asks for, such as a signing certificate (RFC 5816), is put
    /// before. Throws `CRYPT_E_ASN1_INTERNAL` when a field cannot be encoded, and what the service reports.
    /// The old message is closed before the new one is sure: after a failure from there on only `sign`,
    /// `decode` or assignment make sense.
    void sign(unsigned long long provider, unsigned int keySpec, const CBlob& certificate,
              const ASN1::CAlgorithmIdentifierEx& hashAlgorithm);

  private:
    friend class CResponse;  // hands over a freshly encoded token without another copy

    Impl* impl_;
};

}  // namespace Quillmark::PKI::TSP
