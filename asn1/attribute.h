#pragma once

// Attributes (RFC 5652 5.3): an OID with one or more DER values, and values of well-known attributes that
// keep a decoded member beside their DER.
//
//     CAttributes attributes;
//     CAttribute content_type("1.2.840.113549.1.9.3");
//     content_type.add(CAttrContentType("1.2.840.113549.1.9.16.1.4"));
//     attributes.push_back(content_type);

#include <list>
#include <memory>
#include <string>

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_Attribute;
}

namespace Quillmark::ASN1 {

class CTimeChoice;

/// One value of an attribute with the attribute's OID. The OID here is never written to the wire.
class CAttrValue {
  public:
    CAttrValue();
    explicit CAttrValue(const char* oid);
    CAttrValue(const char* oid, const CBlob& value);

    const char* get_oid() const { return oid_ == nullptr ? "" : oid_->c_str(); }
    /// The DER of the AttributeValue.
    const CBlob& get_value() const { return value_; }
    CBlob& value() { return value_; }

  private:
    friend class CAttribute;
    friend struct ASN1T_Attribute_traits;
    CAttrValue(std::shared_ptr<const std::string> oid, const CBlob& value);

    // One text for all values of an attribute: a message can have a long identifier over a great many short
    // values. It never changes. Null is the empty text.
    std::shared_ptr<const std::string> oid_;
    CBlob value_;
};

/// Same OID text and same octets.
bool operator==(const CAttrValue& left, const CAttrValue& right);
bool operator!=(const CAttrValue& left, const CAttrValue& right);

/// Values in order of insertion; lists compare pairwise in order.
typedef std::list<CAttrValue> CAttrValueList;

/// An attribute.
class CAttribute {
  public:
    typedef CAttrValueList::iterator iterator;
    typedef CAttrValueList::const_iterator const_iterator;

    CAttribute();
    explicit CAttribute(const char* oid);
    CAttribute(const CAttribute& other);
    CAttribute& operator=(const CAttribute& other);
    ~CAttribute();

    const char* get_oid() const;
    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;
    unsigned long size() const;

    /// Appends a value with the OID of this attribute.
    void add(const CBlob& value);
    /// Appends a value with the OID that it has.
    void add(const CAttrValue& value);
    void erase(iterator position);

    /// A bad OID throws `E_INVALIDARG`, a value that does not fit the type of a known OID
    /// `CRYPT_E_ASN1_INTERNAL`.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    friend struct ASN1T_Attribute_traits;
    struct Impl;
    auto_ptr<Impl> impl_;
};

/// Same OID and same values in the same order.
bool operator==(const CAttribute& left, const CAttribute& right);
bool operator!=(const CAttribute& left, const CAttribute& right);

/// Attributes in order of insertion.
class CAttributes : public std::list<CAttribute> {
  public:
    using std::list<CAttribute>::list;
    using std::list<CAttribute>::erase;

    /// The first attribute of that OID, `end()` when there is none.
    iterator find(const char* oid);
    const_iterator find(const char* oid) const;
    /// Removes the first attribute of that OID, if there is one.
    void erase(const char* oid);

    /// The SET OF Attribute of RFC 5652, sorted as DER wants it.
    CBlob encode() const;
    void decode(const CBlob& der);
};

// Typed values. The constructor from a blob takes the DER of the value and decodes it; `encode` writes the
// typed member into the DER, `decode` reads it back; `put_` stores the member and then encodes, so that after
// a failed `put_` the member is new and the DER old.

/// content-type (RFC 5652 11.1).
class CAttrContentType : public CAttrValue {
  public:
    explicit CAttrContentType(const char* contentType);
    explicit CAttrContentType(const CBlob& der);

    void encode();
    void decode();
    const char* get_contentType() const { return contentType_.c_str(); }
    void put_contentType(const char* contentType);

  private:
    CStringProxy contentType_;
};

/// message-digest (RFC 5652 11.2).
class CAttrMessageDigest : public CAttrValue {
  public:
    CAttrMessageDigest();
    /// Takes the DER of the OCTET STRING, not the digest.
    explicit CAttrMessageDigest(const CBlob& der);

    void encode();
    void decode();
    /// The digest itself.
    const CBlob& get_messageDigest() const { return messageDigest_; }
    void put_messageDigest(const CBlob& messageDigest);

  private:
    CBlob messageDigest_;
};

/// signing-time (RFC 5652 11.3): UTCTime through 2049, GeneralizedTime after.
class CAttrSigningTime : public CAttrValue {
  public:
    explicit CAttrSigningTime(const CDateTime& time);
    explicit CAttrSigningTime(const CBlob& der);
    CAttrSigningTime(const CAttrSigningTime& other);
    CAttrSigningTime& operator=(const CAttrSigningTime& other);
    ~CAttrSigningTime();

    void encode();
    void decode();
    CDateTime get_time() const;
    void put_time(const CDateTime& time);

  private:
    auto_ptr<CTimeChoice> time_;
};

/// A character string of the kind registered for its OID (`CATAVRegister`). Under another OID the text is the
/// DER in hexadecimal digits behind one marker character.
class CAttrStringValue : public CAttrValue {
  public:
    CAttrStringValue(const char* oid, const char* text);
    CAttrStringValue(const char* oid, const wchar_t* text);
};

// Attributes of names (RFC 5280 appendix A, RFC 2985 5.2.1).

/// commonName (RFC 5280 A.1).
class CAttrCommonName : public CAttrStringValue {
  public:
    explicit CAttrCommonName(const char* text) : CAttrStringValue("2.5.4.3", text) {}
};

/// surname (RFC 5280 A.1).
class CAttrSurname : public CAttrStringValue {
  public:
    explicit CAttrSurname(const char* text) : CAttrStringValue("2.5.4.4", text) {}
};

/// serialNumber (RFC 5280 A.1).
class CAttrSerialNumber : public CAttrStringValue {
  public:
    explicit CAttrSerialNumber(const char* text) : CAttrStringValue("2.5.4.5", text) {}
};

/// countryName (RFC 5280 A.1).
class CAttrCountry : public CAttrStringValue {
  public:
    explicit CAttrCountry(const char* text) : CAttrStringValue("2.5.4.6", text) {}
};

/// localityName (RFC 5280 A.1).
class CAttrLocality : public CAttrStringValue {
  public:
    explicit CAttrLocality(const char* text) : CAttrStringValue("2.5.4.7", text) {}
};

/// stateOrProvinceName (RFC 5280 A.1).
class CAttrStateOrProvinceName : public CAttrStringValue {
  public:
    explicit CAttrStateOrProvinceName(const char* text) : CAttrStringValue("2.5.4.8", text) {}
};

/// organizationName (RFC 5280 A.1).
class CAttrOrganizationName : public CAttrStringValue {
  public:
    explicit CAttrOrganizationName(const char* text) : CAttrStringValue("2.5.4.10", text) {}
};

/// organizationalUnitName (RFC 5280 A.1).
class CAttrOrganizationalUnitName : public CAttrStringValue {
  public:
    explicit CAttrOrganizationalUnitName(const char* text) : CAttrStringValue("2.5.4.11", text) {}
};

/// title (RFC 5280 A.1).
class CAttrTitle : public CAttrStringValue {
  public:
    explicit CAttrTitle(const char* text) : CAttrStringValue("2.5.4.12", text) {}
};

/// givenName (RFC 5280 A.1).
class CAttrGivenName : public CAttrStringValue {
  public:
    explicit CAttrGivenName(const char* text) : CAttrStringValue("2.5.4.42", text) {}
};

/// initials (RFC 5280 A.1).
class CAttrInitials : public CAttrStringValue {
  public:
    explicit CAttrInitials(const char* text) : CAttrStringValue("2.5.4.43", text) {}
};

/// pseudonym (RFC 5280 A.1).
class CAttrPseudonym : public CAttrStringValue {
  public:
    explicit CAttrPseudonym(const char* text) : CAttrStringValue("2.5.4.65", text) {}
};

/// emailAddress (RFC 2985 5.2.1).
class CAttrEmailAddress : public CAttrStringValue {
  public:
    explicit CAttrEmailAddress(const char* text) : CAttrStringValue("1.2.840.113549.1.9.1", text) {}
};

struct ASN1T_Attribute_traits {
    typedef asn1data::ASN1T_Attribute ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CAttribute& value);
    static void get(const ASN1_T& record, CAttribute& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_Attributes_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CAttributes& value);
    static void get(const ASN1TSeqOfList& record, CAttributes& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

}  // namespace Quillmark::ASN1
