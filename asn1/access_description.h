#pragma once

// AccessDescription and AuthorityInfoAccessSyntax (RFC 5280 4.2.2.1): where to find what belongs to the
// issuer of a certificate.
//
//     CGeneralName location;
//     location.put_uniformResourceIdentifier(L"http://ocsp.example");
//     CAuthorityInfoAccessSyntax access;
//     access.push_back(CAccessDescription("1.3.6.1.5.5.7.48.1", location));

#include <list>

#include "asn1/codec.h"
#include "asn1/general_name.h"

namespace asn1data {
struct ASN1T_AccessDescription;
}

namespace Quillmark::ASN1 {

/// A way of access by OID, and the place.
class CAccessDescription {
  public:
    CAccessDescription();
    CAccessDescription(const char* accessMethod, const CGeneralName& accessLocation);

    const char* get_accessMethod() const { return accessMethod_.c_str(); }
    const CGeneralName& get_accessLocation() const { return accessLocation_; }
    void put_accessMethod(const char* accessMethod);
    void put_accessLocation(const CGeneralName& accessLocation);

    /// A bad OID and a location that cannot be written throw `E_INVALIDARG`.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    CStringProxy accessMethod_;
    CGeneralName accessLocation_;
};

/// Same text of the OID, and equal locations by the rule of `CGeneralName`.
bool operator==(const CAccessDescription& left, const CAccessDescription& right);
bool operator!=(const CAccessDescription& left, const CAccessDescription& right);

/// Descriptions in order of insertion.
class CAuthorityInfoAccessSyntax : public std::list<CAccessDescription> {
  public:
    using std::list<CAccessDescription>::list;

    /// There must be at least one, else `CRYPT_E_ASN1_INTERNAL` is thrown.
    CBlob encode() const;
    void decode(const CBlob& der);
};

struct ASN1T_AccessDescription_traits {
    typedef asn1data::ASN1T_AccessDescription ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CAccessDescription& value);
    static void get(const ASN1_T& record, CAccessDescription& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_AuthorityInfoAccessSyntax_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CAuthorityInfoAccessSyntax& value);
    static void get(const ASN1TSeqOfList& record, CAuthorityInfoAccessSyntax& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

}  // namespace Quillmark::ASN1
