#pragma once

// ContentInfo (RFC 5652 3): the type of a content by OID, and the DER of the content.

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_ContentInfo;
}

namespace Quillmark::ASN1 {

/// A content with its type.
class CContentInfo {
  public:
    CContentInfo();
    CContentInfo(const char* contentType, const CBlob& content);

    const char* get_contentType() const { return contentType_.c_str(); }
    const CBlob& get_content() const { return content_; }
    void put_contentType(const char* contentType);
    void put_content(const CBlob& content);

    /// A bad OID throws `E_INVALIDARG`, a content that does not fit a known type `CRYPT_E_ASN1_INTERNAL`.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    CStringProxy contentType_;
    CBlob content_;
};

/// A ContentInfo as a value, or as the DER of a whole ContentInfo.
struct ASN1T_ContentInfo_traits {
    typedef asn1data::ASN1T_ContentInfo ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CContentInfo& value);
    static void get(const ASN1_T& record, CContentInfo& value);
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& der);
    static void get(const ASN1_T& record, CBlob& der);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
