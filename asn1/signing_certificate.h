#pragma once

// The signing-certificate-v2 attribute (RFC 5035 3): hashes of certificates, each with the certificate's
// issuer and serial number if wanted.
//
//     CESSCertIDv2List certs;
//     certs.push_back(CESSCertIDv2(sha256_of_certificate));
//     CAttribute attribute("1.2.840.113549.1.9.16.2.47");
//     attribute.add(CAttrSigningCertificateV2(certs));

#include <list>

#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/general_name.h"
#include "asn1/policy_information.h"

namespace asn1data {
struct ASN1T_ESSCertIDv2;
struct ASN1T_IssuerSerial;
struct ASN1T_SigningCertificateV2;
}  // namespace asn1data

namespace Quillmark::ASN1 {

/// IssuerSerial (RFC 5035 5.1).
class CIssuerSerial {
  public:
    CIssuerSerial() = default;
    CIssuerSerial(const CGeneralNames& issuer, const CBigInteger& serialNumber);

    const CGeneralNames& get_issuer() const { return issuer_; }
    const CBigInteger& get_serialNumber() const { return serialNumber_; }
    void put_issuer(const CGeneralNames& issuer);
    void put_serialNumber(const CBigInteger& serialNumber);

    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    CGeneralNames issuer_;
    CBigInteger serialNumber_;
};

/// Same names pairwise and same number.
bool operator==(const CIssuerSerial& left, const CIssuerSerial& right);
bool operator!=(const CIssuerSerial& left, const CIssuerSerial& right);

/// ESSCertIDv2 (RFC 5035 4). The hash algorithm is SHA-256 unless another is given; SHA-256 is not written,
/// whatever its parameters are.
class CESSCertIDv2 {
  public:
    CESSCertIDv2();
    explicit CESSCertIDv2(const CBlob& certHash);
    CESSCertIDv2(const CBlob& certHash, const CAlgorithmIdentifier& hashAlgorithm);
    CESSCertIDv2(const CESSCertIDv2& other);
    CESSCertIDv2& operator=(const CESSCertIDv2& other);
    ~CESSCertIDv2();

    const CAlgorithmIdentifier& get_hashAlgorithm() const;
    const CBlob& get_certHash() const;
    /// Null when absent.
    const CIssuerSerial* get_issuerSerial() const;
    void put_hashAlgorithm(const CAlgorithmIdentifier& hashAlgorithm);
    void put_certHash(const CBlob& certHash);
    /// Null clears.
    void put_issuerSerial(const CIssuerSerial* issuerSerial);

    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    struct Impl;
    auto_ptr<Impl> impl_;
};

bool operator==(const CESSCertIDv2& left, const CESSCertIDv2& right);
bool operator!=(const CESSCertIDv2& left, const CESSCertIDv2& right);

/// Certificate identifiers in order of insertion.
typedef std::list<CESSCertIDv2> CESSCertIDv2List;

/// The value of a signing-certificate-v2 attribute.
class CAttrSigningCertificateV2 : public CAttrValue {
  public:
    CAttrSigningCertificateV2();
    /// Takes the DER and decodes it.
    explicit CAttrSigningCertificateV2(const CBlob& der);
    /// Takes the identifiers and encodes.
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
    /// Stores the identifiers and encodes.
    void put_certs(const CESSCertIDv2List& certs);
    /// Stores the policies, null clears; the DER stays as it is until `encode`.
    void put_policies(const CPolicyInformationList* policies);

  private:
    struct Impl;
    auto_ptr<Impl> impl_;
};

struct ASN1T_IssuerSerial_traits {
    typedef asn1data::ASN1T_IssuerSerial ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CIssuerSerial& value);
    static void get(const ASN1_T& record, CIssuerSerial& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_ESSCertIDv2_traits {
    typedef asn1data::ASN1T_ESSCertIDv2 ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CESSCertIDv2& value);
    static void get(const ASN1_T& record, CESSCertIDv2& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_SigningCertificateV2_traits {
    typedef asn1data::ASN1T_SigningCertificateV2 ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CAttrSigningCertificateV2& value);
    static void get(const ASN1_T& record, CAttrSigningCertificateV2& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
