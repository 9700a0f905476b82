#pragma once

// A time-stamp response (RFC 3161 2.4.2): a status and, when the stamp was granted, the token.
//
//     CResponse response;
//     response.put_status(CPKIStatusInfo(0));
//     response.put_timeStampToken(&token);
//     send(response.encode());
//
// All failures are thrown as `CAtlException`, but for those of the standard allocator.

#include "asn1/pki_status.h"
#include "tsp/token.h"
#include "values/blob.h"
#include "values/export.h"

namespace Quillmark::PKI::TSP {

/// A time-stamp response: a status, and a token when the status grants one.
class QUILLMARK_API CResponse {
  public:
    /// The fields themselves. Private to the library.
    class Impl;

    /// A response that rejects (status 2): one that grants must be told so.
    CResponse();
    CResponse(const CResponse& other);
    /// A copy that fails leaves this object as it was.
    CResponse& operator=(const CResponse& other);
    ~CResponse();

    /// Destroys the content for good: afterwards the object may be neither used nor destroyed.
    void clear();

    const ASN1::CPKIStatusInfo& get_status() const;
    /// Null when there is none. Lent: valid until a token is put, the object is assigned to, decodes or ends.
    const CToken* get_timeStampToken() const;

    /// This and `put_timeStampToken` leave the old value when the copy fails.
    void put_status(const ASN1::CPKIStatusInfo& status);
    /// Copies the token; null clears. Whether it goes with the status is not looked at.
    void put_timeStampToken(const CToken* token);

    /// The DER of the response. Throws what `CToken::encode` throws, `E_FAIL` for a token that was neither
    /// signed nor decoded, and `CRYPT_E_ASN1_INTERNAL` when the token's bytes are no ContentInfo.
    CBlob encode() const;

    /// Replaces the whole content by the response in `blob`. Throws `E_INVALIDARG` for an empty blob and then
    /// changes nothing; `CRYPT_E_ASN1_INTERNAL` when the bytes are no response; what `CToken::decode` throws
    /// for its token. After the latter two the old content is gone. The token comes out in DER: one that was
    /// in DER already is unchanged to the last byte.
    void decode(const CBlob& blob);

  private:
    Impl* impl_;
};

}  // namespace Quillmark::PKI::TSP
