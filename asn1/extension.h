#pragma once

// Extensions (RFC 5280 4.1, RFC 3161 2.4.1): an OID, a critical flag, and the DER of the value that the
// extnValue OCTET STRING wraps.
//
//     CExtensions extensions;
//     extensions.insert(CExtension(CExtValue("1.2.3.4", der), true));
//     request.put_extensions(&extensions);

#include <list>

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_Extension;
}

namespace Quillmark::ASN1 {

/// The OID of an extension and the DER of its value.
class CExtValue {
  public:
    CExtValue();
    explicit CExtValue(const char* oid);
    CExtValue(const char* oid, CBlob value);

    const char* get_oid() const { return oid_.c_str(); }
    const CBlob& get_value() const { return value_; }
    CBlob& value() { return value_; }

  private:
    CStringProxy oid_;
    CBlob value_;
};

/// One extension.
class CExtension {
  public:
    CExtension() = default;
    explicit CExtension(CExtValue value, bool critical = false);

    const char* get_extnID() const { return value_.get_oid(); }
    const CBlob& get_extnValue() const { return value_.get_value(); }
    bool get_critical() const { return critical_; }

    /// A value that does not fit the type of a known OID throws `CRYPT_E_ASN1_INTERNAL`.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    friend struct ASN1T_Extension_traits;

    CExtValue value_;
    bool critical_ = false;
};

/// Extensions in order of insertion.
class CExtensions : public std::list<CExtension> {
  public:
    using std::list<CExtension>::list;
    using std::list<CExtension>::insert;
    using std::list<CExtension>::erase;

    /// The first extension of that OID, `end()` when there is none.
    iterator find(const char* oid);
    const_iterator find(const char* oid) const;
    /// Overwrites the extension of the same OID in its place, else appends.
    void insert(CExtension extension);
    /// Removes the first extension of that OID, if there is one.
    void erase(const char* oid);

    CBlob encode() const;
    void decode(const CBlob& der);
};

struct ASN1T_Extension_traits {
    typedef asn1data::ASN1T_Extension ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CExtension& value);
    static void get(const ASN1_T& record, CExtension& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_Extensions_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CExtensions& value);
    static void get(const ASN1TSeqOfList& record, CExtensions& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

}  // namespace Quillmark::ASN1
