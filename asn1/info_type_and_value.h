#pragma once

// InfoTypeAndValue (RFC 4210 5.3.19): a piece of information by OID, with or without a value.
//
//     CInfoTypeAndValueList infos;
//     infos.insert(CInfoTypeAndValue("1.3.6.1.5.5.7.4.4", algorithm.encode()));

#include <list>
#include <string>

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_InfoTypeAndValue;
}

namespace Quillmark::ASN1 {

/// An OID and the DER of the value that belongs to it; an empty value is an absent one.
class CInfoTypeAndValue {
  public:
    CInfoTypeAndValue();
    explicit CInfoTypeAndValue(const char* infoType);
    CInfoTypeAndValue(const char* infoType, const CBlob& infoValue);

    const char* get_infoType() const { return infoType_.c_str(); }
    const CBlob& get_infoValue() const { return infoValue_; }
    void put_infoType(const char* infoType);
    void put_infoValue(const CBlob& infoValue);

    /// A bad OID throws `E_INVALIDARG`, a value that does not fit the type of a known OID
    /// `CRYPT_E_ASN1_INTERNAL`.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    CStringProxy infoType_;
    CBlob infoValue_;
};

/// Same OID text and same octets.
bool operator==(const CInfoTypeAndValue& left, const CInfoTypeAndValue& right);
bool operator!=(const CInfoTypeAndValue& left, const CInfoTypeAndValue& right);

/// Whether an element has that OID, for the algorithms of the standard library.
class findByOid {
  public:
    explicit findByOid(const char* oid);
    bool operator()(const CInfoTypeAndValue& info) const { return oid_ == info.get_infoType(); }

  private:
    std::string oid_;
};

/// Pieces of information in order of insertion.
class CInfoTypeAndValueList : public std::list<CInfoTypeAndValue> {
  public:
    using std::list<CInfoTypeAndValue>::list;
    using std::list<CInfoTypeAndValue>::insert;

    /// The first element of that OID, `end()` when there is none.
    iterator find(const char* oid);
    const_iterator find(const char* oid) const;
    /// Overwrites the element of the same OID in its place, else appends.
    void insert(const CInfoTypeAndValue& info);
    /// Removes the first element of that OID, if there is one.
    void remove(const char* oid);

    /// The SEQUENCE OF InfoTypeAndValue of a general message (RFC 4210 5.3.19).
    CBlob encode() const;
    void decode(const CBlob& der);
};

/// Replaces what `target` holds by the elements of `list`.
void ASN1TavList_Parse(const ASN1TSeqOfList& list, CInfoTypeAndValueList& target);
/// Appends the elements of `source` to `list`, with everything on the context of `buffer`, whose message
/// stays as it is. Throws as `CInfoTypeAndValue::encode`, and `CRYPT_E_ASN1_MEMORY`.
void ASN1TavList_Encode(const CInfoTypeAndValueList& source, ASN1TSeqOfList& list,
                        ASN1BERDecodeBuffer& buffer);

struct ASN1T_InfoTypeAndValue_traits {
    typedef asn1data::ASN1T_InfoTypeAndValue ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CInfoTypeAndValue& value);
    static void get(const ASN1_T& record, CInfoTypeAndValue& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_GenMsgContent_traits {
    typedef ASN1TSeqOfList ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CInfoTypeAndValueList& value);
    static void get(const ASN1TSeqOfList& record, CInfoTypeAndValueList& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

}  // namespace Quillmark::ASN1
