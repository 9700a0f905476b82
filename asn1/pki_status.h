#pragma once

// PKIStatusInfo (RFC 3161 2.4.2, RFC 4210 5.2.3): a status number, failure bits, and free text in languages.
//
// PKIFreeText has no field for the language. Here it travels inside each UTF8String: U+0E01, the tag with
// every octet placed in the block at U+0E00, U+0E7E, then the text. Text in the default language "*" has no
// such tag.

#include <list>

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_PKIFailureInfo;
struct ASN1T_PKIFreeText;
struct ASN1T_PKIStatusInfo;
}  // namespace asn1data

namespace Quillmark::ASN1 {

/// PKIStatus (RFC 3161 2.4.2). Other numbers pass as they are.
enum PKIStatusEnum : unsigned int {
    PKIStatus_granted = 0,
    PKIStatus_grantedWithMods = 1,
    PKIStatus_rejection = 2,
    PKIStatus_waiting = 3,
    PKIStatus_revocationWarning = 4,
    PKIStatus_revocationNotification = 5,
    PKIStatus_keyUpdateWarning = 6
};

/// PKIFailureInfo: bit `n` of the word (mask `1 << n`) is the named bit `n` of the BIT STRING.
class CPKIFailureInfo {
  public:
    explicit CPKIFailureInfo(unsigned int value = 0) : value_(value) {}

    unsigned int get_value() const { return value_; }
    void put_value(unsigned int value) { value_ = value; }
    /// Throws `E_INVALIDARG` for a bit above 31.
    bool get_bit(unsigned int bit) const;
    void put_bit(unsigned int bit, bool on);

    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    unsigned int value_;
};

inline bool operator==(const CPKIFailureInfo& left, const CPKIFailureInfo& right) {
    return left.get_value() == right.get_value();
}
inline bool operator!=(const CPKIFailureInfo& left, const CPKIFailureInfo& right) {
    return !(left == right);
}

/// A language tag (RFC 3066) in lower case; its syntax is not tested.
class CLanguageTag {
  public:
    CLanguageTag();
    explicit CLanguageTag(const char* tag);
    explicit CLanguageTag(const wchar_t* tag);

    void assign(const CLanguageTag& other);
    CStringProxy tostring() const;
    /// The tag in lower case, octet by octet.
    static std::string normalize(const char* tag);

    friend bool operator==(const CLanguageTag& left, const CLanguageTag& right);
    friend bool operator!=(const CLanguageTag& left, const CLanguageTag& right) { return !(left == right); }

  private:
    CStringProxy tag_;
};

/// "*", the default language: text without a tag.
class CLanguageTagDefaultRead : public CLanguageTag {
  public:
    CLanguageTagDefaultRead() : CLanguageTag("*") {}
};

/// The tag `en-us`.
class CLanguageTagEnUs : public CLanguageTag {
  public:
    CLanguageTagEnUs() : CLanguageTag("en-us") {}
};

/// The tag `ru-ru`.
class CLanguageTagRuRu : public CLanguageTag {
  public:
    CLanguageTagRuRu() : CLanguageTag("ru-ru") {}
};

/// A text with its language.
class CPKIFreeTextString {
  public:
    explicit CPKIFreeTextString(const CLanguageTag& language);
    CPKIFreeTextString(const wchar_t* value, const CLanguageTag& language);
    /// Widens the text from the system's code page.
    CPKIFreeTextString(const char* value, const CLanguageTag& language);

    const wchar_t* get_value() const { return value_.c_str(); }
    const CLanguageTag& get_language() const { return language_; }
    void set_value(const wchar_t* value);
    void assign(const CPKIFreeTextString& other);

  private:
    CWStringProxy value_;
    CLanguageTag language_;
};

bool operator==(const CPKIFreeTextString& left, const CPKIFreeTextString& right);
bool operator!=(const CPKIFreeTextString& left, const CPKIFreeTextString& right);

/// Texts in order of insertion.
class CPKIFreeText : public std::list<CPKIFreeTextString> {
  public:
    CPKIFreeText() = default;
    CPKIFreeText(const wchar_t* value, const CLanguageTag& language);
    explicit CPKIFreeText(const CPKIFreeTextString& text);

    /// For "*" the first element in any language; for another tag the first element of that language whose
    /// text is empty. `end()` when there is none.
    iterator find(const CLanguageTag& language);
    const_iterator find(const CLanguageTag& language) const;
    /// Overwrites what `find` gives for the language, else appends. Text in "*" is always appended.
    void insert(const CPKIFreeTextString& text);
    /// Removes all that `find` gives for the language.
    void remove(const CLanguageTag& language);

    /// The first element; an empty text in "*" when there is none.
    operator const CPKIFreeTextString&() const;
};

/// Status, failure bits and texts.
class CPKIStatusInfo {
  public:
    explicit CPKIStatusInfo(PKIStatusEnum status = PKIStatus_granted);

    PKIStatusEnum get_pkiStatus() const { return pkiStatus_; }
    const CPKIFailureInfo& get_failureInfo() const { return failureInfo_; }
    const CPKIFreeText& get_statusString() const { return statusString_; }
    void put_pkiStatus(PKIStatusEnum status) { pkiStatus_ = status; }
    void put_failureInfo(const CPKIFailureInfo& failureInfo) { failureInfo_ = failureInfo; }
    void put_statusString(const CPKIFreeText& statusString);

    /// No failure bits and no texts are absent on the wire.
    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    friend struct ASN1T_PKIStatusInfo_traits;

    PKIStatusEnum pkiStatus_;
    CPKIFailureInfo failureInfo_;
    CPKIFreeText statusString_;
};

/// Fills `record` on the heap of `ctxt`. Throws `CRYPT_E_ASN1_INTERNAL` for a character that UTF-8 cannot
/// hold.
void CPKIFreeText_Encode(ASN1CTXT* ctxt, asn1data::ASN1T_PKIFreeText& record, const CPKIFreeText& text);
/// Appends the strings of `record`. Throws `CRYPT_E_ASN1_UTF8` for bad UTF-8, `E_INVALIDARG` for a language
/// tag without its end. The tag stays in the value.
void CPKIFreeText_Parse(ASN1CTXT* ctxt, CPKIFreeText& text, const asn1data::ASN1T_PKIFreeText& record);

struct ASN1T_PKIFailureInfo_traits {
    typedef asn1data::ASN1T_PKIFailureInfo ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CPKIFailureInfo& value);
    /// Adds the bits of the record to those of the value.
    static void get(const ASN1_T& record, CPKIFailureInfo& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_PKIStatusInfo_traits {
    typedef asn1data::ASN1T_PKIStatusInfo ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CPKIStatusInfo& value);
    static void get(const ASN1_T& record, CPKIStatusInfo& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1
