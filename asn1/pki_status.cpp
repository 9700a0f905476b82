#include "asn1/pki_status.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "asn1/detail/bridge.h"
#include "asn1/detail/check.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/named_bits.h"
#include "asn1/detail/text.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_PKIFailureInfo_traits> {
    using Record = asn1data::ASN1T_PKIFailureInfo;
    using Control = asn1data::ASN1C_PKIFailureInfo;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_PKIStatusInfo_traits> {
    using Record = asn1data::ASN1T_PKIStatusInfo;
    using Control = asn1data::ASN1C_PKIStatusInfo;
};

namespace Quillmark::ASN1 {

template CBlob asn1Encode<ASN1T_PKIFailureInfo_traits, CPKIFailureInfo>(const CPKIFailureInfo&);
template void asn1Decode<ASN1T_PKIFailureInfo_traits, CPKIFailureInfo>(const CBlob&, CPKIFailureInfo&);
template CBlob asn1Encode<ASN1T_PKIStatusInfo_traits, CPKIStatusInfo>(const CPKIStatusInfo&);
template void asn1Decode<ASN1T_PKIStatusInfo_traits, CPKIStatusInfo>(const CBlob&, CPKIStatusInfo&);

namespace {

constexpr unsigned int kFailureBits = 32;

// How a language tag is written in front of a text. The scheme follows RFC 2482 in a block of the Basic
// Multilingual Plane.
constexpr wchar_t kTagStart = 0x0E01;
constexpr wchar_t kTagBlock = 0x0E00;
constexpr wchar_t kTagEnd = 0x0E7E;

bool is_tag_character(wchar_t character) {
    return character != kTagEnd && (static_cast<std::uint32_t>(character) >> 8 & 0xFF) == kTagBlock >> 8;
}

/// What stands in front of a text in that language.
std::wstring tag_prefix(const CLanguageTag& language) {
    const CStringProxy tag = language.tostring();
    std::wstring prefix(1, kTagStart);
    for (const char* octet = tag.c_str(); *octet != '\0'; ++octet) {
        // Intended: an octet above 0x7F extends its sign, and no character comes of it.
        prefix += static_cast<wchar_t>(static_cast<signed char>(*octet) | kTagBlock);
    }
    prefix += kTagEnd;
    return prefix;
}

/// The language of a text as it is on the wire.
CLanguageTag read_language(const std::wstring& text) {
    if (text.empty() || text.front() != kTagStart) {
        return CLanguageTagDefaultRead();
    }
    const auto end = std::find_if_not(text.begin() + 1, text.end(), is_tag_character);
    detail::check_argument(end != text.end() && *end == kTagEnd);
    std::string tag;
    std::transform(text.begin() + 1, end, std::back_inserter(tag),
                   [](wchar_t character) { return static_cast<char>(character & 0xFF); });
    return CLanguageTag(tag.c_str());
}

}  // namespace

bool CPKIFailureInfo::get_bit(unsigned int bit) const {
    detail::check_argument(bit < kFailureBits);
    return (value_ >> bit & 1) != 0;
}

void CPKIFailureInfo::put_bit(unsigned int bit, bool on) {
    detail::check_argument(bit < kFailureBits);
    const unsigned int mask = 1u << bit;
    value_ = on ? value_ | mask : value_ & ~mask;
}

CBlob CPKIFailureInfo::encode() const {
    return asn1Encode<ASN1T_PKIFailureInfo_traits>(*this);
}

void CPKIFailureInfo::decode(const CBlob& der) {
    asn1Decode<ASN1T_PKIFailureInfo_traits>(der, *this);
}

CLanguageTag::CLanguageTag() : tag_("") {}

CLanguageTag::CLanguageTag(const char* tag) : tag_(normalize(tag).c_str()) {}

CLanguageTag::CLanguageTag(const wchar_t* tag)
    : CLanguageTag(ASN1::tostring(detail::or_empty(tag)).c_str()) {}

void CLanguageTag::assign(const CLanguageTag& other) {
    *this = other;
}

CStringProxy CLanguageTag::tostring() const {
    return tag_;
}

std::string CLanguageTag::normalize(const char* tag) {
    std::string lower(detail::or_empty(tag));
    // Language tags are ASCII (RFC 3066 2.1). Not tolower, for which 'I' has no lower case in Turkish
    // locales.
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char octet) {
        return octet >= 'A' && octet <= 'Z' ? static_cast<char>(octet - 'A' + 'a') : octet;
    });
    return lower;
}

bool operator==(const CLanguageTag& left, const CLanguageTag& right) {
    return std::strcmp(left.tag_.c_str(), right.tag_.c_str()) == 0;
}

CPKIFreeTextString::CPKIFreeTextString(const CLanguageTag& language) : value_(L""), language_(language) {}

CPKIFreeTextString::CPKIFreeTextString(const wchar_t* value, const CLanguageTag& language)
    : value_(value), language_(language) {}

CPKIFreeTextString::CPKIFreeTextString(const char* value, const CLanguageTag& language)
    : value_(towstring(detail::or_empty(value)).c_str()), language_(language) {}

void CPKIFreeTextString::set_value(const wchar_t* value) {
    value_ = CWStringProxy(value);
}

void CPKIFreeTextString::assign(const CPKIFreeTextString& other) {
    *this = other;
}

bool operator==(const CPKIFreeTextString& left, const CPKIFreeTextString& right) {
    return left.get_language() == right.get_language() &&
           std::wcscmp(left.get_value(), right.get_value()) == 0;
}

bool operator!=(const CPKIFreeTextString& left, const CPKIFreeTextString& right) {
    return !(left == right);
}

CPKIFreeText::CPKIFreeText(const wchar_t* value, const CLanguageTag& language) {
    emplace_back(value, language);
}

CPKIFreeText::CPKIFreeText(const CPKIFreeTextString& text) {
    push_back(text);
}

CPKIFreeText::iterator CPKIFreeText::find(const CLanguageTag& language) {
    if (language == CLanguageTagDefaultRead()) {
        return begin();
    }
    // Intended: the whole element is compared, so that one which holds text is not found by its language.
    return std::find(begin(), end(), CPKIFreeTextString(language));
}

CPKIFreeText::const_iterator CPKIFreeText::find(const CLanguageTag& language) const {
    return const_cast<CPKIFreeText*>(this)->find(language);
}

void CPKIFreeText::insert(const CPKIFreeTextString& text) {
    const bool tagged = text.get_language() != CLanguageTagDefaultRead();
    const iterator position = tagged ? find(text.get_language()) : end();
    if (position == end()) {
        push_back(text);
    } else {
        *position = text;
    }
}

void CPKIFreeText::remove(const CLanguageTag& language) {
    const CLanguageTag wanted(language);  // NOLINT: the tag may lie in an element that goes
    if (wanted == CLanguageTagDefaultRead()) {
        clear();  // it is what `find` finds first
        return;
    }
    std::list<CPKIFreeTextString>::remove(CPKIFreeTextString(wanted));
}

CPKIFreeText::operator const CPKIFreeTextString&() const {
    static const CPKIFreeTextString& none = *new CPKIFreeTextString(CLanguageTagDefaultRead());
    return empty() ? none : front();
}

CPKIStatusInfo::CPKIStatusInfo(PKIStatusEnum status) : pkiStatus_(status) {}

void CPKIStatusInfo::put_statusString(const CPKIFreeText& statusString) {
    statusString_ = statusString;
}

CBlob CPKIStatusInfo::encode() const {
    return asn1Encode<ASN1T_PKIStatusInfo_traits>(*this);
}

void CPKIStatusInfo::decode(const CBlob& der) {
    asn1Decode<ASN1T_PKIStatusInfo_traits>(der, *this);
}

void CPKIFreeText_Encode(ASN1CTXT* ctxt, asn1data::ASN1T_PKIFreeText& record, const CPKIFreeText& text) {
    const CLanguageTagDefaultRead untagged;
    record.elem = static_cast<const char**>(detail::allocate(ctxt, text.size() * sizeof(const char*)));
    record.n = 0;
    for (const CPKIFreeTextString& element : text) {
        const CLanguageTag& language = element.get_language();
        const std::wstring prefix = language == untagged ? std::wstring() : tag_prefix(language);
        record.elem[record.n++] = detail::to_utf8(ctxt, prefix + element.get_value(), CRYPT_E_ASN1_INTERNAL);
    }
}

void CPKIFreeText_Parse(ASN1CTXT*, CPKIFreeText& text, const asn1data::ASN1T_PKIFreeText& record) {
    for (std::uint32_t i = 0; i < record.n; ++i) {
        const std::wstring wire = detail::from_utf8(record.elem[i], CRYPT_E_ASN1_UTF8);
        // Intended: the tag stays in the value.
        text.emplace_back(wire.c_str(), read_language(wire));
    }
}

void ASN1T_PKIFailureInfo_traits::set(ASN1CTXT*, ASN1_T& record, const CPKIFailureInfo& value) {
    detail::put_named_bits(record, value.get_value(), kFailureBits);
}

void ASN1T_PKIFailureInfo_traits::get(const ASN1_T& record, CPKIFailureInfo& value) {
    detail::check_argument(record.numbits <= kFailureBits);
    // Intended: bits that the value has already stay.
    value.put_value(value.get_value() | detail::named_bits(record));
}

void ASN1T_PKIFailureInfo_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_PKIFailureInfo(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_PKIStatusInfo_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CPKIStatusInfo& value) {
    record.m.statusStringPresent = 0;
    record.m.failInfoPresent = 0;
    record.status = value.get_pkiStatus();
    if (value.get_failureInfo().get_value() != 0) {
        ASN1T_PKIFailureInfo_traits::set(ctxt, record.failInfo, value.get_failureInfo());
        record.m.failInfoPresent = 1;
    }
    if (!value.get_statusString().empty()) {
        record.m.statusStringPresent = 1;
        CPKIFreeText_Encode(ctxt, record.statusString, value.get_statusString());
    }
}

void ASN1T_PKIStatusInfo_traits::get(const ASN1_T& record, CPKIStatusInfo& value) {
    value.put_pkiStatus(static_cast<PKIStatusEnum>(record.status));
    CPKIFailureInfo failure_info;
    if (record.m.failInfoPresent) {
        ASN1T_PKIFailureInfo_traits::get(record.failInfo, failure_info);
    }
    value.put_failureInfo(failure_info);
    CPKIFreeText status_string;
    if (record.m.statusStringPresent) {
        CPKIFreeText_Parse(nullptr, status_string, record.statusString);
    }
    value.statusString_.swap(status_string);
}

void ASN1T_PKIStatusInfo_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_PKIStatusInfo(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
