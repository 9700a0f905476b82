#pragma once

// OtherHash (RFC 5126 5.7.3.3): a SHA-1 hash without its algorithm, or a hash with it. The type numbers are
// those of the CHOICE in declared order, 1 for sha1Hash and 2 for otherHash.
//
//     COtherHash hash(COtherHashAlgAndValue(sha256_of_certificate, CAlgorithmIdentifier(id_sha256)));

#include "asn1/algorithm_identifier.h"

namespace asn1data {
struct ASN1T_OtherHash;
struct ASN1T_OtherHashAlgAndValue;
}  // namespace asn1data

namespace Quillmark::ASN1 {

class COtherHashImpl;

/// OtherHashAlgAndValue (RFC 5126 5.7.3.3).
class COtherHashAlgAndValue {
  public:
    COtherHashAlgAndValue() = default;
    COtherHashAlgAndValue(const CBlob& hashValue, const CAlgorithmIdentifier& hashAlgorithm);

    const CAlgorithmIdentifier& get_hashAlgorithm() const { return hashAlgorithm_; }
    const CBlob& get_hashValue() const { return hashValue_; }
    void put_hashAlgorithm(const CAlgorithmIdentifier& hashAlgorithm);
    void put_hashValue(const CBlob& hashValue);

    CBlob encode() const;
    void decode(const CBlob& der);

    /// Same value, whatever the algorithms are.
    bool compare_hashValue(const COtherHashAlgAndValue& other) const;

  private:
    CAlgorithmIdentifier hashAlgorithm_;
    CBlob hashValue_;
};

/// Same algorithm with the same parameters, and same value.
bool operator==(const COtherHashAlgAndValue& left, const COtherHashAlgAndValue& right);
bool operator!=(const COtherHashAlgAndValue& left, const COtherHashAlgAndValue& right);

/// A hash in one of the two forms, or none.
class COtherHash {
  public:
    /// No hash, type 0.
    COtherHash();
    explicit COtherHash(const CBlob& sha1Hash);
    explicit COtherHash(const COtherHashAlgAndValue& otherHash);
    COtherHash(const COtherHash& other);
    COtherHash& operator=(const COtherHash& other);
    virtual ~COtherHash();

    /// Ends the use of this object: afterwards it can only be assigned to or destroyed.
    void clear();

    /// The number of the form, 0 for none.
    unsigned int get_type() const;
    // Null when the hash has another form.
    const CBlob* get_sha1Hash() const;
    const COtherHashAlgAndValue* get_otherHash() const;
    void put_sha1Hash(const CBlob& sha1Hash);
    void put_otherHash(const COtherHashAlgAndValue& otherHash);

    /// Throws `CRYPT_E_ASN1_INTERNAL` for a hash of no form.
    CBlob encode() const;
    void decode(const CBlob& der);

    /// Same form and same hash value, so that the parameters of an algorithm do not make a difference.
    bool compare_hashValue(const COtherHash& other) const;

  private:
    auto_ptr<COtherHashImpl> impl_;
};

/// Same form, and: same octets, or same algorithm and value.
bool operator==(const COtherHash& left, const COtherHash& right);
bool operator!=(const COtherHash& left, const COtherHash& right);

struct ASN1T_OtherHashAlgAndValue_traits {
    typedef asn1data::ASN1T_OtherHashAlgAndValue ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const COtherHashAlgAndValue& value);
    static void get(const ASN1_T& record, COtherHashAlgAndValue& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

/// Setting a hash of no form is no failure and changes nothing: the encoder refuses a record without an
/// alternative. A record without an alternative leaves the value as it was.
struct ASN1T_OtherHash_traits {
    typedef asn1data::ASN1T_OtherHash ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const COtherHash& value);
    static void get(const ASN1_T& record, COtherHash& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
