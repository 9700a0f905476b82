#pragma once

// Signing-certificate attributes: identifiers of the signer's certificate and of those above it, and
// policies. Three attributes differ in the identifiers that they hold: signing-certificate (RFC 2634 5.4),
// signing-certificate-v2 (RFC 5035 3) and other-signing-certificate (RFC 5126 5.7.3.3).
//
//     CESSCertIDv2List certs;
//     certs.push_back(CESSCertIDv2(sha256_of_certificate));
//     CAttribute attribute("1.2.840.113549.1.9.16.2.47");
//     attribute.add(CAttrSigningCertificateV2(certs));

#include "asn1/attribute.h"
#include "asn1/certificate_identifier.h"
#include "asn1/policy_information.h"

namespace asn1data {
struct ASN1T_OtherSigningCertificate;
struct ASN1T_SigningCertificate;
struct ASN1T_SigningCertificateV2;
}  // namespace asn1data

namespace Quillmark::ASN1 {

// What the three classes have in common: the default constructor leaves the DER empty. The constructor from a
// blob takes the DER and decodes it, the one from a list takes the identifiers and encodes. `put_certs`
// stores the identifiers and encodes; after a failure the identifiers are new and the DER is old.

/// The value of a signing-certificate attribute, 1.2.840.113549.1.9.16.2.12.
class CAttrSigningCertificate : public CAttrValue {
  public:
    CAttrSigningCertificate();
    explicit CAttrSigningCertificate(const CBlob& der);
    explicit CAttrSigningCertificate(const CESSCertIDList& certs);
    CAttrSigningCertificate(const CAttrSigningCertificate& other);
    CAttrSigningCertificate& operator=(const CAttrSigningCertificate& other);
    ~CAttrSigningCertificate();

    /// Writes identifiers and policies into the DER; an empty list of policies is absent.
    void encode();
    /// Reads identifiers and policies. The DER is then this library's own of the identifiers with the
    /// policies that the object had before, until the next `encode`.
    void decode();
    const CESSCertIDList& get_certs() const;
    /// Null when absent.
    const CPolicyInformationList* get_policies() const;
    void put_certs(const CESSCertIDList& certs);
    /// Stores the policies, null clears; the DER stays as it is until `encode`.
    void put_policies(const CPolicyInformationList* policies);

  private:
    struct Impl;
    auto_ptr<Impl> impl_;
};

/// The value of a signing-certificate-v2 attribute, 1.2.840.113549.1.9.16.2.47.
class CAttrSigningCertificateV2 : public CAttrValue {
  public:
    CAttrSigningCertificateV2();
    explicit CAttrSigningCertificateV2(const CBlob& der);
    explicit CAttrSigningCertificateV2(const CESSCertIDv2List& certs);
    CAttrSigningCertificateV2(const CAttrSigningCertificateV2& other);
    CAttrSigningCertificateV2& operator=(const CAttrSigningCertificateV2& other);
    ~CAttrSigningCertificateV2();

    /// Writes identifiers and policies into the DER; an empty list of policies is absent.
    void encode();
    /// Reads identifiers and policies. The DER is then this library's own of the identifiers with the
    /// policies that the object had before, until the next `encode`.
    void decode();
    const CESSCertIDv2List& get_certs() const;
    /// Null when absent.
    const CPolicyInformationList* get_policies() const;
    void put_certs(const CESSCertIDv2List& certs);
    /// Stores the policies, null clears; the DER stays as it is until `encode`.
    void put_policies(const CPolicyInformationList* policies);

  private:
    struct Impl;
    auto_ptr<Impl> impl_;
};

/// The value of an other-signing-certificate attribute, 1.2.840.113549.1.9.16.2.19.
class CAttrOtherSigningCertificate : public CAttrValue {
  public:
    CAttrOtherSigningCertificate();
    explicit CAttrOtherSigningCertificate(const CBlob& der);
    explicit CAttrOtherSigningCertificate(const COtherCertIDList& certs);
    CAttrOtherSigningCertificate(const CAttrOtherSigningCertificate& other);
    CAttrOtherSigningCertificate& operator=(const CAttrOtherSigningCertificate& other);
    ~CAttrOtherSigningCertificate();

    /// Writes identifiers and policies into the DER; an empty list of policies is absent. A hash of no form
    /// throws `CRYPT_E_ASN1_INTERNAL`.
    void encode();
    /// Reads identifiers and policies. The DER is then this library's own of both.
    void decode();
    const COtherCertIDList& get_certs() const;
    /// Null when absent.
    const CPolicyInformationList* get_policies() const;
    void put_certs(const COtherCertIDList& certs);
    /// Stores the policies, null clears, and encodes.
    void put_policies(const CPolicyInformationList* policies);

  private:
    struct Impl;
    auto_ptr<Impl> impl_;
};

struct ASN1T_SigningCertificate_traits {
    typedef asn1data::ASN1T_SigningCertificate ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CAttrSigningCertificate& value);
    static void get(const ASN1_T& record, CAttrSigningCertificate& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_SigningCertificateV2_traits {
    typedef asn1data::ASN1T_SigningCertificateV2 ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CAttrSigningCertificateV2& value);
    static void get(const ASN1_T& record, CAttrSigningCertificateV2& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_OtherSigningCertificate_traits {
    typedef asn1data::ASN1T_OtherSigningCertificate ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CAttrOtherSigningCertificate& value);
    static void get(const ASN1_T& record, CAttrOtherSigningCertificate& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
