#pragma once

// DistributionPointName (RFC 5280 4.2.1.13): where a CRL is found. The type numbers are those of the CHOICE
// in declared order; only fullName (1) is represented, and a nameRelativeToCRLIssuer is read as a name of no
// form.
//
//     CGeneralNames names;
//     names.emplace_back().put_uniformResourceIdentifier(L"http://ca.example/ca.crl");
//     CDistributionPointName name(names);

#include "asn1/codec.h"
#include "asn1/general_name.h"

namespace asn1data {
struct ASN1T_DistributionPointName;
}

namespace Quillmark::ASN1 {

class CDistributionPointNameImpl;

/// The full name of a distribution point, or none.
class CDistributionPointName {
  public:
    /// No name, type 0.
    CDistributionPointName();
    explicit CDistributionPointName(const CGeneralNames& fullName);
    CDistributionPointName(const CDistributionPointName& other);
    CDistributionPointName& operator=(const CDistributionPointName& other);
    ~CDistributionPointName();

    /// Ends the use of this object: afterwards it can only be assigned to or destroyed.
    void clear();

    /// The number of the form, 0 for none.
    unsigned int get_type() const;
    /// Null when there is no full name.
    const CGeneralNames* get_fullName() const;
    void put_fullName(const CGeneralNames& fullName);

    /// Throws `CRYPT_E_ASN1_INTERNAL` for a name of no form and for an empty list of names.
    CBlob encode() const;
    /// A nameRelativeToCRLIssuer leaves a name of no form.
    void decode(const CBlob& der);

  private:
    auto_ptr<CDistributionPointNameImpl> impl_;
};

/// Same form and the same names in the same order.
bool operator==(const CDistributionPointName& left, const CDistributionPointName& right);
bool operator!=(const CDistributionPointName& left, const CDistributionPointName& right);

/// Setting a name of no form is no failure: the record then has no alternative, and the encoder refuses it.
struct ASN1T_DistributionPointName_traits {
    typedef asn1data::ASN1T_DistributionPointName ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CDistributionPointName& value);
    static void get(const ASN1_T& record, CDistributionPointName& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
