#pragma once

// Identifiers of certificates in signing-certificate attributes (RFC 2634 5.4.1, RFC 5035 4,
// RFC 5126 5.7.3.3): the hash of a certificate and, if wanted, the certificate's issuer and serial number.
// They differ in how the hash is made: by SHA-1 in `CESSCertID`, by SHA-256 unless another algorithm is given
// in `CESSCertIDv2`, by any algorithm in `COtherCertID`.
//
//     CGeneralNames issuer;
//     issuer.emplace_back().put_directoryName(issuer_der);
//     const CIssuerSerial issuer_serial(issuer, serial_number);
//     CESSCertIDv2 identifier(sha256_of_certificate);
//     identifier.put_issuerSerial(&issuer_serial);

#include <list>

#include "asn1/algorithm_identifier.h"
#include "asn1/big_integer.h"
#include "asn1/general_name.h"
#include "asn1/other_hash.h"

namespace asn1data {
struct ASN1T_ESSCertID;
struct ASN1T_ESSCertIDv2;
struct ASN1T_IssuerSerial;
struct ASN1T_OtherCertID;
}  // namespace asn1data

namespace Quillmark::ASN1 {

/// IssuerSerial (RFC 2634 5.4.1).
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

/// ESSCertID (RFC 2634 5.4.1). The hash is a SHA-1 hash.
class CESSCertID {
  public:
    CESSCertID();
    explicit CESSCertID(const CBlob& certHash);
    CESSCertID(const CESSCertID& other);
    CESSCertID& operator=(const CESSCertID& other);
    ~CESSCertID();

    const CBlob& get_certHash() const;
    /// Null when absent.
    const CIssuerSerial* get_issuerSerial() const;
    void put_certHash(const CBlob& certHash);
    /// Null clears.
    void put_issuerSerial(const CIssuerSerial* issuerSerial);

    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    struct Impl;
    auto_ptr<Impl> impl_;
};

bool operator==(const CESSCertID& left, const CESSCertID& right);
bool operator!=(const CESSCertID& left, const CESSCertID& right);

/// Certificate identifiers in order of insertion.
typedef std::list<CESSCertID> CESSCertIDList;

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

/// The algorithms are compared with their parameters.
bool operator==(const CESSCertIDv2& left, const CESSCertIDv2& right);
bool operator!=(const CESSCertIDv2& left, const CESSCertIDv2& right);

/// Certificate identifiers in order of insertion.
typedef std::list<CESSCertIDv2> CESSCertIDv2List;

/// OtherCertID (RFC 5126 5.7.3.3).
class COtherCertID {
  public:
    /// A hash of no form, which cannot be encoded.
    COtherCertID();
    explicit COtherCertID(const CBlob& sha1Hash);
    COtherCertID(const CBlob& hashValue, const CAlgorithmIdentifier& hashAlgorithm);
    COtherCertID(const COtherCertID& other);
    COtherCertID& operator=(const COtherCertID& other);
    ~COtherCertID();

    const COtherHash& get_otherCertHash() const;
    /// Null when absent.
    const CIssuerSerial* get_issuerSerial() const;
    void put_otherCertHash(const COtherHash& otherCertHash);
    /// Null clears.
    void put_issuerSerial(const CIssuerSerial* issuerSerial);

    CBlob encode() const;
    void decode(const CBlob& der);

    /// As `==`, but of the hashes only form and value count and not the algorithm.
    bool compare_noHashParam(const COtherCertID& other) const;

  private:
    struct Impl;
    auto_ptr<Impl> impl_;
};

bool operator==(const COtherCertID& left, const COtherCertID& right);
bool operator!=(const COtherCertID& left, const COtherCertID& right);

/// Certificate identifiers in order of insertion.
typedef std::list<COtherCertID> COtherCertIDList;

struct ASN1T_IssuerSerial_traits {
    typedef asn1data::ASN1T_IssuerSerial ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CIssuerSerial& value);
    static void get(const ASN1_T& record, CIssuerSerial& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_ESSCertID_traits {
    typedef asn1data::ASN1T_ESSCertID ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CESSCertID& value);
    static void get(const ASN1_T& record, CESSCertID& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_ESSCertIDv2_traits {
    typedef asn1data::ASN1T_ESSCertIDv2 ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CESSCertIDv2& value);
    static void get(const ASN1_T& record, CESSCertIDv2& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_OtherCertID_traits {
    typedef asn1data::ASN1T_OtherCertID ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const COtherCertID& value);
    static void get(const ASN1_T& record, COtherCertID& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
