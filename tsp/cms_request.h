#pragma once

// A request of the Authenticode time-stamp exchange, which is older than RFC 3161: the data to be stamped,
// the signature value of the signed file, in a ContentInfo (RFC 5652 3). The answer is a `CMSStamp`. On the
// wire, HTTP as a rule, both travel in base64.
//
//     const CContentInfo content("1.2.840.113549.1.7.1", toOctetString(signature));
//     const CMSRequest request("1.3.6.1.4.1.311.3.2.1", content);
//     send(base64_of(request.encode()));
//
// All failures are thrown as `CAtlException`, but for those of the standard allocator.

#include "asn1/attribute.h"
#include "asn1/content_info.h"
#include "values/blob.h"
#include "values/export.h"

namespace asn1data {
struct ASN1T_TimeStampAuthenticodeRequest;
}

namespace Quillmark::PKI::TSP {

struct CMSRequestImpl;

/// A request of the Authenticode exchange.
class QUILLMARK_API CMSRequest {
  public:
    /// A request with every field empty.
    CMSRequest();
    /// `timeStampAlgorithm` is an OID in dotted text, which `encode` alone looks at; null is the empty text.
    CMSRequest(const char* timeStampAlgorithm, const ASN1::CContentInfo& contentInfo);
    CMSRequest(const CMSRequest& other);
    /// A copy that fails leaves this object as it was.
    CMSRequest& operator=(const CMSRequest& other);
    ~CMSRequest();

    /// Destroys the content for good: afterwards the object may be destroyed, and nothing else.
    void clear();

    /// Never null. Lent, as all pointers and references of `get_` operations are: valid until the field is
    /// put anew, the object is assigned to, decodes or ends.
    const char* get_timeStampAlgorithm() const;
    const ASN1::CContentInfo& get_contentInfo() const;
    /// Null when absent. An empty list is absent on the wire.
    const ASN1::CAttributes* get_attributes() const;

    /// Each `put_` copies what it is given and leaves the old value when the copy fails. A null text is the
    /// empty text; null attributes clear.
    void put_timeStampAlgorithm(const char* timeStampAlgorithm);
    void put_contentInfo(const ASN1::CContentInfo& contentInfo);
    void put_attributes(const ASN1::CAttributes* attributes);

    /// The DER of the request, its attributes in the order of a DER set. Throws `E_INVALIDARG` when an
    /// identifier is no OID, `CRYPT_E_ASN1_INTERNAL` when a field cannot be encoded, `CRYPT_E_ASN1_MEMORY` or
    /// `E_OUTOFMEMORY` when the codec's heap gives no memory.
    CBlob encode() const;

    /// Reads the request in `blob`, DER or BER; bytes behind it are not looked at. Throws
    /// `CRYPT_E_ASN1_INTERNAL` when the bytes are no request, none at all included, and then changes nothing.
    /// When memory runs out while the fields are taken over, some are new and some are not.
    void decode(const CBlob& blob);

  private:
    CMSRequestImpl* impl_;
};

/// A request and its record.
struct ASN1T_TimeStampAuthenticodeRequest_traits {
    typedef asn1data::ASN1T_TimeStampAuthenticodeRequest ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CMSRequest& value);
    static void get(const ASN1_T& record, CMSRequest& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::PKI::TSP
