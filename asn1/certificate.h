#pragma once

// Certificate (RFC 5280 4.1) as the DER that a value holds.

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

struct ASN1T_Certificate_traits {
    typedef asn1data::ASN1T_Certificate ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& value);
    static void get(const ASN1_T& record, CBlob& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
