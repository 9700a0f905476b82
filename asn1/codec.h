#pragma once

// The bridge between value objects and generated records.
//
// A value class owns its data on the ordinary heap. A generated record `asn1data::ASN1T_X` owns nothing:
// its pointers lie on the heap of a codec context. A traits class `ASN1T_X_traits` is the only code that
// knows both sides. It is stateless and has three operations:
//
//     set(ctxt, record, value)     fills the record; every pointer written lies on the heap of `ctxt`
//     get(record, value)           replaces what the value held
//     copy(ctxt, source, target)   copies a record deeply to the heap of `ctxt`
//
// `asn1Encode` and `asn1Decode` make the buffers, call the traits and the generated codec, and turn every
// failure into a thrown `CAtlException`: `CRYPT_E_ASN1_INTERNAL` when the codec refused, `E_INVALIDARG` when
// a value does not fit its type, `CRYPT_E_ASN1_MEMORY` when a context's heap is exhausted. A record lives no
// longer than one call; a throwing `set` leaves it half filled for the release of the context. `asn1Decode`
// leaves the value alone when the decoder fails; a failure inside `get` can leave it partly replaced. What a
// lower floor throws passes through: `ASN1MessageBuffer::RTLError` when a context cannot be made, and
// `std::bad_alloc`.
//
// Callers use the `encode` and `decode` of the value classes, which forward to these templates. They are
// instantiated by the sources of this folder and take no other traits in an application.

#include <memory>
#include <string>

#include "runtime/context.h"
#include "runtime/list.h"
#include "runtime/object_id.h"
#include "runtime/value_types.h"
#include "values/blob.h"
#include "values/datetime.h"
#include "values/result.h"
#include "values/string_proxy.h"

class ASN1BEREncodeBuffer;
class ASN1BERDecodeBuffer;

namespace Quillmark::ASN1 {

/// The DER of `value`. Throws as told above; the value is never changed.
template <class Traits, class V>
CBlob asn1Encode(const V& value);

/// Reads one element from the front of `blob` into `value`; octets behind it are not looked at.
template <class Traits, class V>
void asn1Decode(const CBlob& blob, V& value);

/// The DER of a record.
template <class Traits>
CBlob asn1EncodeT(const typename Traits::ASN1_T& record);

/// Decodes into `record` with everything on the heap of `ctxt`, so that the record outlives the call.
template <class Traits>
void asn1DecodeT(const CBlob& blob, ASN1CTXT* ctxt, typename Traits::ASN1_T& record);

/// The owner of an optional member; null means absent.
template <class V>
using auto_ptr = std::unique_ptr<V>;

/// Replaces what `target` owns by a copy of `*source`, or by null. The copy is made first, so `source` may
/// lie inside the old value and a failing copy changes nothing.
template <class V>
void copy_to_auto_ptr(auto_ptr<V>& target, const V* source) {
    target = source == nullptr ? nullptr : std::make_unique<V>(*source);
}

/// The ASN.1 string kinds that a wide text can be written as.
enum StringType {
    StringTypeDefault = 0,  ///< the kind registered for the attribute type, see `asn1/name.h`
    StringTypeUTF8 = 1,
    StringTypePrintable = 2,
    StringTypeTeletex = 3,
    StringTypeBMP = 4,
    StringTypeIA5 = 5,
    StringTypeUniversal = 6
};

/// One codec context by value, for code that calls the `xe_` and `xd_` functions directly.
class ctxt_handle {
  public:
    ctxt_handle() = default;
    ~ctxt_handle() { release(); }
    ctxt_handle(const ctxt_handle&) = delete;
    ctxt_handle& operator=(const ctxt_handle&) = delete;

    /// True when the context is ready for use.
    bool init() {
        live_ = true;
        return rtInitContext(&ctxt_, nullptr) == RT_OK;
    }
    /// Frees the context and all that lies on its heap; nothing happens without `init` before.
    void release() {
        if (live_) {
            live_ = false;
            rtFreeContext(&ctxt_);
        }
    }
    ASN1CTXT* get() { return &ctxt_; }

  private:
    ASN1CTXT ctxt_{};
    bool live_ = false;
};

// OBJECT IDENTIFIER and its dotted text.

/// Reads decimal arcs separated by full stops, at most 128. Blanks around numbers and signs pass, as
/// `strtoul` takes them. Returns 0 on success and 1 on failure.
int str2oid(const char* text, ASN1OBJID* oid);

/// Writes the dotted text with its terminator. Always 1.
int oid2str(CBlob& text, const ASN1OBJID* oid);

/// `str2oid` by value; throws `E_INVALIDARG`.
ASN1OBJID toASN1OBJID(const char* text);

/// The dotted text of `oid`.
CStringProxy toOID(const ASN1OBJID& oid);

// Text. Narrow text is in the system's ANSI code page. A null text is refused; that and any other failing
// conversion throws the code of the last error of the platform.

/// Wide text as narrow text.
std::string tostring(const wchar_t* text);
/// The text has 32-bit characters in spite of its type.
std::string tostring(const unsigned short* text);
std::string tostring(int number);
std::wstring towstring(const char* text);
std::wstring towstring(int number);

/// Reads a primitive UTF8String, NumericString, PrintableString, TeletexString, IA5String, UniversalString or
/// BMPString. Throws `CRYPT_E_ASN1_INTERNAL` for anything else.
CWStringProxy decodeCharString(const CBlob& der);

/// Writes a character string of the given kind; `StringTypeDefault` throws `CRYPT_E_ASN1_INTERNAL`.
/// Printable, Teletex and IA5 text is not tested against the alphabet of its kind, BMP keeps the low 16 bits
/// of a character.
CBlob encodeCharString(const wchar_t* text, StringType type);

/// The DER of an OCTET STRING.
CBlob toOctetString(const CBlob& octets);
/// The octets of an OCTET STRING. An empty blob throws `CRYPT_E_ASN1_INTERNAL`.
CBlob fromOctetString(const CBlob& der);

/// The GeneralizedTime text of `date` on the heap of `ctxt`. With `wholeSeconds` the fraction is cut off.
const char* DateToASN1GeneralizedTime(ASN1CTXT* ctxt, const CDateTime& date, bool wholeSeconds);

// Traits of the primitive types.

struct ASN1TObjId_traits {
    typedef ASN1OBJID ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1OBJID& record, const char* value);
    static void get(const ASN1OBJID& record, CStringProxy& value);
    static void copy(ASN1CTXT* ctxt, const ASN1OBJID& source, ASN1OBJID& target);
};

struct ASN1TDynOctStr_traits {
    typedef ASN1TDynOctStr ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TDynOctStr& record, const CBlob& value);
    static void get(const ASN1TDynOctStr& record, CBlob& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TDynOctStr& source, ASN1TDynOctStr& target);
};

struct ASN1TOpenType_traits {
    typedef ASN1OpenType ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1OpenType& record, const CBlob& value);
    static void get(const ASN1OpenType& record, CBlob& value);
    static void copy(ASN1CTXT* ctxt, const ASN1OpenType& source, ASN1OpenType& target);
};

struct Asn1TObject_traits {
    typedef Asn1Object ASN1_T;
    static void set(ASN1CTXT* ctxt, Asn1Object& record, const CBlob& value);
    static void get(const Asn1Object& record, CBlob& value);
    static void copy(ASN1CTXT* ctxt, const Asn1Object& source, Asn1Object& target);
};

/// The value is whole octets: writing counts eight bits for each, reading rounds up.
struct ASN1TDynBitStr_traits {
    typedef ASN1TDynBitStr ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1TDynBitStr& record, const CBlob& value);
    static void get(const ASN1TDynBitStr& record, CBlob& value);
    static void copy(ASN1CTXT* ctxt, const ASN1TDynBitStr& source, ASN1TDynBitStr& target);
};

struct ASN1IA5String_traits {
    typedef const char* ASN1_T;
    static void set(ASN1CTXT* ctxt, const char*& record, const char* value);
    static void get(const char* const& record, CStringProxy& value);
    /// The target shares the text of the source and lives as long as the source's context.
    static void copy(ASN1CTXT* ctxt, const char* const& source, const char*& target);
};

struct ASN1UTF8String_traits {
    typedef const char* ASN1_T;
    static void set(ASN1CTXT* ctxt, const char*& record, const wchar_t* value);
    static void get(const char* const& record, CWStringProxy& value);
    static void copy(ASN1CTXT* ctxt, const char* const& source, const char*& target);
};

/// GeneralizedTime with whole seconds (X.680 46).
struct ASN1GeneralizedTime_traits {
    typedef const char* ASN1_T;
    static void set(ASN1CTXT* ctxt, const char*& record, const CDateTime& value);
    static void get(const char* const& record, CDateTime& value);
    static void copy(ASN1CTXT* ctxt, const char* const& source, const char*& target);
    /// Writes the text with its universal tag 24. Returns the number of octets or a negative status.
    static int encode(ASN1BEREncodeBuffer& buffer, const char* text);
    /// Reads universal tag 24; the text lies on the heap of the buffer's context. Returns 0 or a negative
    /// status.
    static int decode(ASN1BERDecodeBuffer& buffer, const char*& text);
};

/// Lists of records against containers of values, in order.
template <class R, class Traits, class Value, class Container>
struct ASN1TSeqOfList_traits {
    /// An empty container gives an empty list.
    static void set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const Container& values);
    /// Empties the container first.
    static void get(const ASN1TSeqOfList& record, Container& values);
    static void copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target);
};

// Types without a control class.
template <>
CBlob asn1Encode<ASN1TObjId_traits, const char*>(const char* const& oid);
template <>
void asn1Decode<ASN1TObjId_traits, CStringProxy>(const CBlob& blob, CStringProxy& oid);
template <>
CBlob asn1Encode<ASN1GeneralizedTime_traits, CDateTime>(const CDateTime& time);
template <>
void asn1Decode<ASN1GeneralizedTime_traits, CDateTime>(const CBlob& blob, CDateTime& time);

}  // namespace Quillmark::ASN1
