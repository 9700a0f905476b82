#pragma once

// A time-stamp request (RFC 3161 2.4.1). A client makes one of a hash and sends its encoding; a time-stamp
// authority decodes the bytes that came and reads the fields.
//
//     CRequest request(CAlgorithmIdentifierEx("2.16.840.1.101.3.4.2.1"), hash, true);
//     request.put_nonce(&nonce);
//     send(request.encode());
//
// All failures are thrown as `CAtlException`, but for those of the standard allocator.

#include <cstdint>

#include "asn1/algorithm_identifier.h"
#include "asn1/big_integer.h"
#include "asn1/extension.h"
#include "values/blob.h"
#include "values/export.h"

namespace Quillmark::PKI::TSP {

/// A time-stamp request.
class QUILLMARK_API CRequest {
  public:
    /// The fields themselves, and their conversion to and from the codec's record. Private to the library.
    class Impl;

    /// A request of version 1 with an empty hash, an empty algorithm and nothing optional.
    CRequest();
    CRequest(const ASN1::CAlgorithmIdentifierEx& hashAlgorithm, const CBlob& hashedMessage, bool certReq);
    CRequest(const CRequest& other);
    /// A copy that fails leaves this object as it was.
    CRequest& operator=(const CRequest& other);
    ~CRequest();

    /// Destroys the content for good: afterwards the object may be neither used nor destroyed.
    void clear();

    std::uint32_t get_version() const;
    const ASN1::CAlgorithmIdentifierEx& get_hashAlgorithm() const;
    const CBlob& get_hashedMessage() const;
    /// Whether the authority is asked to put its certificates into the token.
    bool get_certReq() const;
    /// The policy asked for, an OID in dotted text; null when absent. Lent, as all pointers of `get_`
    /// operations are: valid until the field is put anew, the object is assigned to, decodes or ends.
    const char* get_reqPolicy() const;
    const ASN1::CBigInteger* get_nonce() const;
    /// Null when absent; an empty list on the way out is absent on the wire.
    const ASN1::CExtensions* get_extensions() const;

    /// Copies the text; null clears. The text is looked at by `encode` alone, which throws `E_INVALIDARG`
    /// when it is no OID. This and the other `put_` operations leave the old value when the copy fails.
    void put_reqPolicy(const char* policy);
    void put_nonce(const ASN1::CBigInteger* nonce);
    void put_extensions(const ASN1::CExtensions* extensions);

    /// The DER of the request. Throws `CRYPT_E_ASN1_INTERNAL` when a field cannot be encoded and
    /// `CRYPT_E_ASN1_MEMORY` or `E_OUTOFMEMORY` when the codec's heap gives no memory.
    CBlob encode() const;

    /// Replaces the whole content by what `blob` holds in DER or BER; bytes behind the request are not looked
    /// at. Throws `CRYPT_E_ASN1_EOD` for an empty blob and then changes nothing; `CRYPT_E_ASN1_INTERNAL` when
    /// the bytes are no request; `E_INVALIDARG` when the version has more than four octets. After the latter
    /// two the old content is gone, and the fields have initial values or what was read.
    void decode(const CBlob& blob);

  private:
    Impl* impl_;
};

}  // namespace Quillmark::PKI::TSP
