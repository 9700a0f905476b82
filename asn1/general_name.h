#pragma once

// GeneralName and GeneralNames (RFC 5280 4.2.1.6). The type numbers are those of the CHOICE in declared
// order, from 1 for otherName to 9 for registeredID; otherName, x400Address and ediPartyName are not
// represented.
//
//     CGeneralName name;
//     name.put_uniformResourceIdentifier(L"https://tsa.example");

#include <list>

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_GeneralName;
}

namespace Quillmark::ASN1 {

class CGeneralNameImpl;

/// A name in one of six forms, or none.
class CGeneralName {
  public:
    CGeneralName();
    CGeneralName(const CGeneralName& other);
    CGeneralName& operator=(const CGeneralName& other);
    ~CGeneralName();

    /// Ends the use of this object: afterwards it can only be assigned to or destroyed.
    void clear();

    /// The number of the form, 0 for none.
    unsigned int get_type() const;

    // Null when the name has another form.
    const wchar_t* get_rfc822Name() const;
    const wchar_t* get_dNSName() const;
    const CBlob* get_directoryName() const;
    const wchar_t* get_uniformResourceIdentifier() const;
    const CBlob* get_iPAddress() const;
    const wchar_t* get_registeredID() const;

    // Those that take a text throw `E_INVALIDARG` for a null one.
    void put_rfc822Name(const wchar_t* name);
    void put_dNSName(const wchar_t* name);
    /// Takes the DER of a Name; it is not looked at before `encode`.
    void put_directoryName(const CBlob& name);
    void put_uniformResourceIdentifier(const wchar_t* uri);
    void put_iPAddress(const CBlob& address);
    /// Takes an OID in dotted text; it is not looked at before `encode`.
    void put_registeredID(const wchar_t* oid);

    /// Throws `E_INVALIDARG` for a name of no form and a bad registeredID, `CRYPT_E_ASN1_INTERNAL` for a
    /// directoryName that is no Name.
    CBlob encode() const;
    /// Throws `E_INVALIDARG` for the three forms that are not represented.
    void decode(const CBlob& der);

    /// A label and the first character of the name; a directoryName is written whole.
    std::wstring toString() const;

  private:
    auto_ptr<CGeneralNameImpl> impl_;
};

/// Same form, and: blobs equal, or texts that begin with the same character.
bool operator==(const CGeneralName& left, const CGeneralName& right);
bool operator!=(const CGeneralName& left, const CGeneralName& right);

/// Names in order of insertion.
class CGeneralNames : public std::list<CGeneralName> {
  public:
    using std::list<CGeneralName>::list;

    CBlob encode() const;
    void decode(const CBlob& der);
};

struct ASN1T_GeneralName_traits {
    typedef asn1data::ASN1T_GeneralName ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CGeneralName& value);
    static void get(const ASN1_T& record, CGeneralName& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_GeneralNames_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CGeneralNames& value);
    static void get(const ASN1TSeqOfList& record, CGeneralNames& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

}  // namespace Quillmark::ASN1
