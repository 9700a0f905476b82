#pragma once

// RevAnnContent (RFC 4210 5.3.14): the announcement that a certificate is, or is about to be, revoked; and
// CertId (RFC 4211 6.5), which names the certificate.
//
//     CGeneralName issuer;
//     issuer.put_directoryName(name_of_the_ca);
//     const CRevAnnContent announcement(PKIStatus_revocationWarning, CCertId(issuer, serial), when, since);

#include "asn1/big_integer.h"
#include "asn1/codec.h"
#include "asn1/extension.h"
#include "asn1/general_name.h"
#include "asn1/pki_status.h"

namespace asn1data {
struct ASN1T_CertId;
struct ASN1T_RevAnnContent;
}  // namespace asn1data

namespace Quillmark::ASN1 {

/// A certificate by its issuer and serial number.
class CCertId {
  public:
    CCertId() = default;
    CCertId(const CGeneralName& issuer, const CBigInteger& serialNumber);

    const CGeneralName& get_issuer() const { return issuer_; }
    const CBigInteger& get_serialNumber() const { return serialNumber_; }
    void put_issuer(const CGeneralName& issuer);
    void put_serialNumber(const CBigInteger& serialNumber);

    /// Throws `E_INVALIDARG` for an issuer that cannot be written, such as one of no form.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    CGeneralName issuer_;
    CBigInteger serialNumber_;
};

/// What is revoked, when, since when it is not to be trusted, and details for the CRL.
class CRevAnnContent {
  public:
    /// Status granted, no certificate, and the first instant that `CDateTime` can hold for both times.
    CRevAnnContent();
    CRevAnnContent(const PKIStatusEnum& status, const CCertId& certId, const CDateTime& willBeRevokedAt,
                   const CDateTime& badSinceDate);
    CRevAnnContent(const CRevAnnContent& other);
    CRevAnnContent& operator=(const CRevAnnContent& other);
    ~CRevAnnContent();

    PKIStatusEnum get_status() const;
    const CCertId& get_certId() const;
    const CDateTime& get_willBeRevokedAt() const;
    const CDateTime& get_badSinceDate() const;
    /// Null when absent.
    const CExtensions* get_crlDetails() const;

    void put_status(PKIStatusEnum status);
    void put_certId(const CCertId& certId);
    void put_willBeRevokedAt(const CDateTime& willBeRevokedAt);
    void put_badSinceDate(const CDateTime& badSinceDate);
    /// Null clears.
    void put_crlDetails(const CExtensions* crlDetails);

    /// Times are written in whole seconds; an empty list of details is absent on the wire.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    struct Impl;
    auto_ptr<Impl> impl_;
};

struct ASN1T_CertId_traits {
    typedef asn1data::ASN1T_CertId ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CCertId& value);
    static void get(const ASN1_T& record, CCertId& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_RevAnnContent_traits {
    typedef asn1data::ASN1T_RevAnnContent ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CRevAnnContent& value);
    static void get(const ASN1_T& record, CRevAnnContent& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
