#pragma once

// The answer of the Authenticode time-stamp exchange: a PKCS #7 SignedData (RFC 2315 9) over the data that
// the `CMSRequest` carried, whose one signed attribute says when it was signed. An authority makes one of the
// content and the time and signs it; a client decodes one and verifies it.
//
//     CMSStamp stamp(request.get_contentInfo().get_content(), CDateTime::Now());
//     stamp.put_certificates(&chain);
//     stamp.sign(provider, AT_SIGNATURE, certificate, digest_algorithm);
//     send(base64_of(stamp.encode()));
//
//     CMSStamp received;
//     received.decode(bytes);
//     if (!received.verify(certificate_of_authority)) { ... }
//
// Signing and verifying is done by the platform's message service (platform/cryptoapi.h); what that reports
// is thrown as `CAtlException`, as all failures are but for those of the standard allocator. Comparing the
// content with the data that was to be stamped, and trusting the certificate, is up to the caller.

#include "asn1/algorithm_identifier.h"
#include "asn1/signer_info.h"
#include "values/blob.h"
#include "values/datetime.h"
#include "values/export.h"

namespace Quillmark::PKI::TSP {

struct CMSStampImpl;

/// A stamp of the Authenticode exchange, signed or to be signed.
class QUILLMARK_API CMSStamp {
  public:
    /// A stamp with every field empty.
    CMSStamp();
    /// `content` is the DER of an OCTET STRING, whose value is what gets signed. Signs nothing yet.
    CMSStamp(const CBlob& content, const CDateTime& signingTime);
    /// The copy has a reference of its own on the signer's provider (`CryptContextAddRef`).
    CMSStamp(const CMSStamp& other);
    /// A copy that fails leaves this object as it was. The old provider is released before the new one gets
    /// its reference.
    CMSStamp& operator=(const CMSStamp& other);
    ~CMSStamp();

    /// Destroys the content for good: afterwards the object may be destroyed, and nothing else.
    void clear();

    /// The DER of an OCTET STRING. Lent, as all pointers and references of `get_` operations are: valid until
    /// the field is put anew, the object is assigned to, decodes or ends.
    const CBlob& get_content() const;
    const CDateTime& get_signingTime() const;
    /// DER of each certificate of the message, in its order; null when there are none.
    const CBlobList* get_certificates() const;

    /// Each `put_` copies what it is given; null clears. After `sign` each of them signs anew, at once, and
    /// throws what `sign` throws: then the field is new and the message the old one. Before `sign`, and after
    /// `decode` alone, the message is left as it is.
    void put_content(const CBlob& content) const;
    void put_signingTime(const CDateTime& signingTime);
    void put_certificates(const CBlobList* certificates);

    /// Signs the fields, now and at each `put_` from now on. `provider` is an open HCRYPTPROV, on which the
    /// stamp takes a reference of its own; `keySpec` says which of its keys; `certificate` is the signer's,
    /// in DER. Throws `CRYPT_E_ASN1_INTERNAL` when the content is no OCTET STRING, and what the service
    /// reports. The reference of an earlier `sign` is given back before the new one is sure: when the
    /// provider is refused, the stamp goes on with a handle on which it has none.
    void sign(unsigned long long provider, unsigned int keySpec, const CBlob& certificate,
              const ASN1::CAlgorithmIdentifierEx& hashAlgorithm);

    /// The message that was signed last. Throws `E_FAIL` unless `sign` was called, after `decode` too.
    CBlob encode() const;

    /// Reads the message in `blob`, field by field: after a failure the message, and what was read before the
    /// failure, is new. Throws `CRYPT_E_BAD_MSG` when the message has no signing time, what
    /// `CAttrSigningTime` throws of one that is no time, and what the service reports of bytes that are no
    /// signed message, of algorithms that it does not know, and of a message without signed attributes.
    /// Certificates stay as they were when the message has none.
    void decode(const CBlob& blob);

    /// Whether the signature of the message's first signer holds with the key of `certificate` (DER). Throws
    /// what the service reports when there is no message, or bytes are no certificate.
    bool verify(const CBlob& certificate) const;

    /// The first signer of the message, read from it on each call. Throws what the service reports when there
    /// is none, and `CRYPT_E_ASN1_INTERNAL` when the signer is named by subject key identifier.
    ASN1::CSignerInfo get_signerInfo() const;

  private:
    CMSStampImpl* impl_;
};

}  // namespace Quillmark::PKI::TSP
