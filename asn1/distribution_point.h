#pragma once

// DistributionPoint and CRLDistributionPoints (RFC 5280 4.2.1.13): where the CRLs for a certificate are
// found, for which reasons, and who signs them.
//
//     const CDistributionPointName name(names);
//     CDistributionPoint point;
//     point.put_distributionPoint(&name);
//     CCRLDistPointsSyntax points;
//     points.push_back(point);

#include <list>

#include "asn1/codec.h"
#include "asn1/distribution_point_name.h"
#include "asn1/general_name.h"
#include "asn1/reason_flags.h"

namespace asn1data {
struct ASN1T_DistributionPoint;
}

namespace Quillmark::ASN1 {

class CDistributionPointImpl;

/// One place; every field is optional.
class CDistributionPoint {
  public:
    CDistributionPoint();
    CDistributionPoint(const CDistributionPoint& other);
    CDistributionPoint& operator=(const CDistributionPoint& other);
    ~CDistributionPoint();

    // Null when absent.
    const CDistributionPointName* get_distributionPoint() const;
    const CReasonFlags* get_reasons() const;
    const CGeneralNames* get_cRLIssuer() const;

    // Null clears.
    void put_distributionPoint(const CDistributionPointName* distributionPoint);
    void put_reasons(const CReasonFlags* reasons);
    void put_cRLIssuer(const CGeneralNames* cRLIssuer);

    /// An empty list of issuers is absent on the wire. A distribution point name of no form throws
    /// `CRYPT_E_ASN1_INTERNAL`.
    CBlob encode() const;
    /// A nameRelativeToCRLIssuer is read as a name of no form.
    void decode(const CBlob& der);

  private:
    friend struct ASN1T_DistributionPoint_traits;
    auto_ptr<CDistributionPointImpl> impl_;
};

/// Equal in every field; an absent field equals an absent one only.
bool operator==(const CDistributionPoint& left, const CDistributionPoint& right);
bool operator!=(const CDistributionPoint& left, const CDistributionPoint& right);

/// Distribution points in order of insertion.
class CCRLDistPointsSyntax : public std::list<CDistributionPoint> {
  public:
    using std::list<CDistributionPoint>::list;

    /// There must be at least one, else `CRYPT_E_ASN1_INTERNAL` is thrown.
    CBlob encode() const;
    void decode(const CBlob& der);
};

struct ASN1T_DistributionPoint_traits {
    typedef asn1data::ASN1T_DistributionPoint ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CDistributionPoint& value);
    static void get(const ASN1_T& record, CDistributionPoint& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_CRLDistPointsSyntax_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CCRLDistPointsSyntax& value);
    static void get(const ASN1TSeqOfList& record, CCRLDistPointsSyntax& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

}  // namespace Quillmark::ASN1
