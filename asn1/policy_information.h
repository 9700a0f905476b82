#pragma once

// PolicyInformation and CertificatePolicies (RFC 5280 4.2.1.4) without the qualifiers, which are dropped on
// reading and never written.

#include <list>

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_PolicyInformation;
}

namespace Quillmark::ASN1 {

/// A policy by its OID.
class CPolicyInformation {
  public:
    CPolicyInformation();
    explicit CPolicyInformation(const char* policyIdentifier);

    const char* get_policyIdentifier() const { return policyIdentifier_.c_str(); }
    void put_policyIdentifier(const char* policyIdentifier);

    /// A bad OID throws `E_INVALIDARG`.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    CStringProxy policyIdentifier_;
};

/// Policies in order of insertion.
class CPolicyInformationList : public std::list<CPolicyInformation> {
  public:
    using std::list<CPolicyInformation>::list;

    /// There must be at least one, else `CRYPT_E_ASN1_INTERNAL` is thrown.
    CBlob encode() const;
    void decode(const CBlob& der);
};

struct ASN1T_PolicyInformation_traits {
    typedef asn1data::ASN1T_PolicyInformation ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CPolicyInformation& value);
    static void get(const ASN1_T& record, CPolicyInformation& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_CertificatePoliciesSyntax_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CPolicyInformationList& value);
    static void get(const ASN1TSeqOfList& record, CPolicyInformationList& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

}  // namespace Quillmark::ASN1
