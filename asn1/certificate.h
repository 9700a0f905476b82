#pragma once

// Certificate (RFC 5280 4.1) and CertificateList (RFC 5280 5.1) as the DER that a value holds, and
// CertificateValues (RFC 5126 6.3.3), a list of certificates.

#include <list>

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_Certificate;
}

namespace Quillmark::ASN1 {

/// The DER of a certificate. `encode` gives this library's own DER of it and throws `CRYPT_E_ASN1_INTERNAL`
/// when the octets are no certificate.
class CCertificateValue : public CBlob {
  public:
    CCertificateValue() = default;
    explicit CCertificateValue(const CBlob& der) : CBlob(der) {}

    CBlob encode() const;
    void decode(const CBlob& der);
};

/// Certificates in order of insertion.
class CCertificateValues : public std::list<CCertificateValue> {
  public:
    using std::list<CCertificateValue>::list;

    /// Throws `CRYPT_E_ASN1_INTERNAL` when an element is no certificate.
    CBlob encode() const;
    void decode(const CBlob& der);
};

struct ASN1T_Certificate_traits {
    typedef asn1data::ASN1T_Certificate ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& value);
    static void get(const ASN1_T& record, CBlob& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

/// The DER of a CRL, which is carried as it is and not looked into.
struct ASN1T_CertificateList_traits {
    typedef ASN1TOpenType ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& value);
    static void get(const ASN1_T& record, CBlob& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_CertificateValues_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CCertificateValues& value);
    static void get(const ASN1TSeqOfList& record, CCertificateValues& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

}  // namespace Quillmark::ASN1
