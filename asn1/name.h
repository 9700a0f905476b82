#pragma once

// Distinguished names (X.501, RFC 5280 4.1.2.4) and their text form, a plain list `CN=Alpha,O=Org` in the
// order of the wire. There is no quoting: a ',' or '+' inside a value always splits it.
//
//     CName name(L"CN=Time Stamping,O=Example,C=RU");
//     CBlob der = name.encode();

#include <list>

#include "asn1/attribute.h"
#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_AttributeTypeAndValue;
struct ASN1T_Name;
}  // namespace asn1data

namespace Quillmark::ASN1 {

class CAttributeTypeAndValue;

/// One row of the register of attribute types: short name, string kind and longest text of an OID. The rows
/// of this library are there from first use; a constructed row is appended to them.
class CATAVRegister {
  public:
    typedef std::list<CATAVRegister>::const_iterator const_iterator;

    CATAVRegister(const char* oid, const wchar_t* name, StringType type, unsigned long maxLength);

    const char* get_oid() const { return oid_.c_str(); }
    const wchar_t* get_name() const { return name_.c_str(); }
    StringType get_type() const { return type_; }
    /// In characters.
    unsigned long get_maxLength() const { return maxLength_; }

    /// All rows in order of registration.
    static const std::list<CATAVRegister>& registered();
    /// By OID or by short name, exactly; the end of `registered()` when nothing matches.
    static const_iterator find(const char* oid);
    static const_iterator find(const wchar_t* name);

    /// The short name; an unregistered OID stands for itself.
    static std::wstring typeToStr(const char* oid);
    /// The OID; an unregistered name is taken as the OID.
    static std::string typeFromStr(const wchar_t* name);
    /// The text of a value; of an unregistered type "#" and the DER in hexadecimal digits. Throws
    /// `CRYPT_E_ASN1_INTERNAL` for a value of a registered type that is no character string.
    static std::wstring valueToStr(const char* oid, const CBlob& value);
    /// The DER of a value. `StringTypeDefault` takes the registered kind. A text above the registered length
    /// throws `E_INVALIDARG`. Of an unregistered type the text is the DER in hexadecimal digits behind one
    /// marker character; an empty text throws `std::out_of_range`.
    static CBlob valueFromStr(const char* oid, const wchar_t* text, StringType type);
    static CAttributeTypeAndValue makeATAV(const wchar_t* type, const wchar_t* value, StringType stringType);
    /// Splits at the first '='; without one it throws `E_INVALIDARG`.
    static CAttributeTypeAndValue makeATAV(const wchar_t* text, StringType stringType);

  private:
    struct BuiltIn;
    explicit CATAVRegister(const BuiltIn& row);
    static std::list<CATAVRegister>& rows();

    std::string oid_;
    std::wstring name_;
    StringType type_;
    unsigned long maxLength_;
};

/// The rows of the register by name.
extern const CATAVRegister& commonNameAttribute;
extern const CATAVRegister& countryNameAttribute;
extern const CATAVRegister& localityNameAttribute;
extern const CATAVRegister& stateOrProvinceNameAttribute;
extern const CATAVRegister& emailAddressAttribute;
extern const CATAVRegister& organizationNameAttribute;
extern const CATAVRegister& organizationUnitNameAttribute;
extern const CATAVRegister& titleAttribute;
extern const CATAVRegister& givenNameAttribute;
extern const CATAVRegister& initialsAttribute;
extern const CATAVRegister& surnameAttribute;
extern const CATAVRegister& pseudonymAttribute;
extern const CATAVRegister& ogrnAttribute;
extern const CATAVRegister& ogrnipAttribute;
extern const CATAVRegister& snilsAttribute;
extern const CATAVRegister& innleAttribute;
extern const CATAVRegister& innAttribute;
extern const CATAVRegister& streetAddressAttribute;
extern const CATAVRegister& domainComponentAttribute;
extern const CATAVRegister& unstructuredNameAttribute;
extern const CATAVRegister& PostalCodeAttribute;
extern const CATAVRegister& serialNumberAttribute;

/// AttributeTypeAndValue: an OID and the DER of a value.
class CAttributeTypeAndValue {
  public:
    CAttributeTypeAndValue();
    explicit CAttributeTypeAndValue(const CAttrValue& value);
    CAttributeTypeAndValue(const char* oid, const CBlob& value);
    CAttributeTypeAndValue(const wchar_t* type, const wchar_t* value, StringType stringType);
    /// Takes `TYPE=value`.
    CAttributeTypeAndValue(const wchar_t* text, StringType stringType);

    const char* get_type() const { return type_.c_str(); }
    std::wstring get_type_str() const;
    CBlob get_value() const { return value_; }
    std::wstring get_value_str() const;
    void put_type(const char* oid);
    /// Takes a short name or an OID.
    void put_type_str(const wchar_t* type);
    void put_value(const CBlob& value);
    /// Writes the text as the current type wants it.
    void put_value_str(const wchar_t* text, StringType stringType);

    std::wstring toString() const;
    /// Takes `TYPE=value`, always in the string kind registered for the type.
    void fromString(const wchar_t* text, StringType stringType);

    /// A bad OID throws `E_INVALIDARG`, a value that does not fit a known OID `CRYPT_E_ASN1_INTERNAL`.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    CStringProxy type_;
    CBlob value_;
};

bool operator==(const CAttributeTypeAndValue& left, const CAttributeTypeAndValue& right);
bool operator!=(const CAttributeTypeAndValue& left, const CAttributeTypeAndValue& right);

/// Members in order of insertion; sets compare pairwise in order.
typedef std::list<CAttributeTypeAndValue> CAttributeTypeAndValueSet;

/// RelativeDistinguishedName.
class CRelativeDistinguishedName : public CAttributeTypeAndValueSet {
  public:
    CRelativeDistinguishedName() = default;
    explicit CRelativeDistinguishedName(const wchar_t* text);

    /// The members, joined by "+".
    std::wstring toString() const;
    /// Appends the members of a text. A piece without '=' throws `E_INVALIDARG`.
    void fromString(const wchar_t* text);

    CBlob encode() const;
    void decode(const CBlob& der);
};

/// Name, first element first as on the wire.
class CName : public std::list<CRelativeDistinguishedName> {
  public:
    CName() = default;
    explicit CName(const wchar_t* text);

    /// The elements, joined by ",".
    std::wstring toString() const;
    /// Appends the elements of a text. A piece without '=' throws `E_INVALIDARG`.
    void fromString(const wchar_t* text);

    CBlob encode() const;
    void decode(const CBlob& der);
};

// The text has 32-bit characters in spite of its type.
void fromString(CRelativeDistinguishedName& target, const unsigned short* text);
void fromString(CName& target, const unsigned short* text);

struct ASN1T_AttributeTypeAndValue_traits {
    typedef asn1data::ASN1T_AttributeTypeAndValue ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CAttributeTypeAndValue& value);
    static void get(const ASN1_T& record, CAttributeTypeAndValue& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_RelativeDistinguishedName_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CRelativeDistinguishedName& value);
    static void get(const ASN1TSeqOfList& record, CRelativeDistinguishedName& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

/// A Name as a value, or as the DER of a whole Name.
struct ASN1T_Name_traits {
    typedef asn1data::ASN1T_Name ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CName& value);
    static void get(const ASN1_T& record, CName& value);
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& der);
    static void get(const ASN1_T& record, CBlob& der);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
