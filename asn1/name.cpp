#include "asn1/name.h"

#include <cstring>
#include <string_view>

#include "asn1/detail/bridge.h"
#include "asn1/detail/decode_record.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/list_traits.h"
#include "asn1/detail/oid_text.h"
#include "asn1/detail/table_constraint.h"
#include "asn1/detail/text.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_AttributeTypeAndValue_traits> {
    using Record = asn1data::ASN1T_AttributeTypeAndValue;
    using Control = asn1data::ASN1C_AttributeTypeAndValue;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_RelativeDistinguishedName_traits> {
    using Record = asn1data::ASN1T_RelativeDistinguishedName;
    using Control = asn1data::ASN1C_RelativeDistinguishedName;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_Name_traits> {
    using Record = asn1data::ASN1T_Name;
    using Control = asn1data::ASN1C_Name;
};

namespace Quillmark::ASN1 {

using MemberList =
    ASN1TSeqOfList_traits<asn1data::ASN1T_AttributeTypeAndValue, ASN1T_AttributeTypeAndValue_traits,
                          CAttributeTypeAndValue, CAttributeTypeAndValueSet>;
using ElementList =
    ASN1TSeqOfList_traits<asn1data::ASN1T_RelativeDistinguishedName, ASN1T_RelativeDistinguishedName_traits,
                          CRelativeDistinguishedName, CName>;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_AttributeTypeAndValue,
                                      ASN1T_AttributeTypeAndValue_traits, CAttributeTypeAndValue,
                                      CAttributeTypeAndValueSet>;
template struct ASN1TSeqOfList_traits<asn1data::ASN1T_RelativeDistinguishedName,
                                      ASN1T_RelativeDistinguishedName_traits, CRelativeDistinguishedName,
                                      CName>;
template CBlob asn1Encode<ASN1T_AttributeTypeAndValue_traits, CAttributeTypeAndValue>(
    const CAttributeTypeAndValue&);
template void asn1Decode<ASN1T_AttributeTypeAndValue_traits, CAttributeTypeAndValue>(const CBlob&,
                                                                                     CAttributeTypeAndValue&);
template CBlob asn1Encode<ASN1T_RelativeDistinguishedName_traits, CRelativeDistinguishedName>(
    const CRelativeDistinguishedName&);
template void asn1Decode<ASN1T_RelativeDistinguishedName_traits, CRelativeDistinguishedName>(
    const CBlob&, CRelativeDistinguishedName&);
template CBlob asn1Encode<ASN1T_Name_traits, CName>(const CName&);
template void asn1Decode<ASN1T_Name_traits, CName>(const CBlob&, CName&);

namespace {

/// Hands each piece of a text between separators to `take`, the empty ones too.
template <class Take>
void split(std::wstring_view text, wchar_t separator, Take take) {
    for (;;) {
        const std::size_t length = text.find(separator);
        take(std::wstring(text.substr(0, length)).c_str());
        if (length == std::wstring_view::npos) {
            return;
        }
        text.remove_prefix(length + 1);
    }
}

template <class List>
std::wstring join(const List& list, wchar_t separator) {
    std::wstring text;
    for (const auto& element : list) {
        if (&element != &list.front()) {
            text += separator;
        }
        text += element.toString();
    }
    return text;
}

}  // namespace

CAttributeTypeAndValue::CAttributeTypeAndValue() : type_("") {}

CAttributeTypeAndValue::CAttributeTypeAndValue(const CAttrValue& value)
    : type_(value.get_oid()), value_(value.get_value()) {}

CAttributeTypeAndValue::CAttributeTypeAndValue(const char* oid, const CBlob& value)
    : type_(oid), value_(value) {}

CAttributeTypeAndValue::CAttributeTypeAndValue(const wchar_t* type, const wchar_t* value,
                                               StringType stringType)
    : CAttributeTypeAndValue(CATAVRegister::makeATAV(type, value, stringType)) {}

CAttributeTypeAndValue::CAttributeTypeAndValue(const wchar_t* text, StringType stringType)
    : CAttributeTypeAndValue(CATAVRegister::makeATAV(text, stringType)) {}

std::wstring CAttributeTypeAndValue::get_type_str() const {
    return CATAVRegister::typeToStr(get_type());
}

std::wstring CAttributeTypeAndValue::get_value_str() const {
    return CATAVRegister::valueToStr(get_type(), value_);
}

void CAttributeTypeAndValue::put_type(const char* oid) {
    type_ = CStringProxy(oid);
}

void CAttributeTypeAndValue::put_type_str(const wchar_t* type) {
    put_type(CATAVRegister::typeFromStr(type).c_str());
}

void CAttributeTypeAndValue::put_value(const CBlob& value) {
    value_ = value;
}

void CAttributeTypeAndValue::put_value_str(const wchar_t* text, StringType stringType) {
    put_value(CATAVRegister::valueFromStr(get_type(), text, stringType));
}

std::wstring CAttributeTypeAndValue::toString() const {
    return get_type_str() + L"=" + get_value_str();
}

void CAttributeTypeAndValue::fromString(const wchar_t* text, StringType) {
    // Intended: the kind registered for the type wins over the argument.
    *this = CATAVRegister::makeATAV(text, StringTypeDefault);
}

CBlob CAttributeTypeAndValue::encode() const {
    return asn1Encode<ASN1T_AttributeTypeAndValue_traits>(*this);
}

void CAttributeTypeAndValue::decode(const CBlob& der) {
    asn1Decode<ASN1T_AttributeTypeAndValue_traits>(der, *this);
}

bool operator==(const CAttributeTypeAndValue& left, const CAttributeTypeAndValue& right) {
    return std::strcmp(left.get_type(), right.get_type()) == 0 && left.get_value() == right.get_value();
}

bool operator!=(const CAttributeTypeAndValue& left, const CAttributeTypeAndValue& right) {
    return !(left == right);
}

CRelativeDistinguishedName::CRelativeDistinguishedName(const wchar_t* text) {
    fromString(text);
}

std::wstring CRelativeDistinguishedName::toString() const {
    return join(*this, L'+');
}

void CRelativeDistinguishedName::fromString(const wchar_t* text) {
    split(detail::or_empty(text), L'+',
          [this](const wchar_t* piece) { emplace_back(piece, StringTypeDefault); });
}

CBlob CRelativeDistinguishedName::encode() const {
    return asn1Encode<ASN1T_RelativeDistinguishedName_traits>(*this);
}

void CRelativeDistinguishedName::decode(const CBlob& der) {
    asn1Decode<ASN1T_RelativeDistinguishedName_traits>(der, *this);
}

CName::CName(const wchar_t* text) {
    fromString(text);
}

std::wstring CName::toString() const {
    return join(*this, L',');
}

void CName::fromString(const wchar_t* text) {
    split(detail::or_empty(text), L',', [this](const wchar_t* piece) { emplace_back(piece); });
}

CBlob CName::encode() const {
    return asn1Encode<ASN1T_Name_traits>(*this);
}

void CName::decode(const CBlob& der) {
    asn1Decode<ASN1T_Name_traits>(der, *this);
}

void fromString(CRelativeDistinguishedName& target, const unsigned short* text) {
    target.fromString(reinterpret_cast<const wchar_t*>(text));
}

void fromString(CName& target, const unsigned short* text) {
    target.fromString(reinterpret_cast<const wchar_t*>(text));
}

void ASN1T_AttributeTypeAndValue_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                             const CAttributeTypeAndValue& value) {
    ASN1TObjId_traits::set(ctxt, record.type, value.get_type());
    Asn1TObject_traits::set(ctxt, record.value, value.get_value());
    detail::check_table_constraint(ctxt, record, asn1data::asn1DTC_AttributeTypeAndValue);
}

void ASN1T_AttributeTypeAndValue_traits::get(const ASN1_T& record, CAttributeTypeAndValue& value) {
    value.put_type(detail::OidText(record.type).c_str());
    value.put_value(CBlob(record.value.data, record.value.numocts));
}

void ASN1T_AttributeTypeAndValue_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_AttributeTypeAndValue(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_RelativeDistinguishedName_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record,
                                                 const CRelativeDistinguishedName& value) {
    MemberList::set(ctxt, record, value);
}

void ASN1T_RelativeDistinguishedName_traits::get(const ASN1TSeqOfList& record,
                                                 CRelativeDistinguishedName& value) {
    MemberList::get(record, value);
}

void ASN1T_RelativeDistinguishedName_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source,
                                                  ASN1TSeqOfList& target) {
    MemberList::copy(ctxt, source, target);
}

void ASN1T_Name_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CName& value) {
    record.t = asn1data::T_Name_rdnSequence;
    record.u.rdnSequence = detail::new_record<asn1data::ASN1T_RDNSequence>(ctxt);
    ElementList::set(ctxt, *record.u.rdnSequence, value);
}

void ASN1T_Name_traits::get(const ASN1_T& record, CName& value) {
    // Intended: the one alternative is read without a look at its number.
    ElementList::get(*record.u.rdnSequence, value);
}

void ASN1T_Name_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& der) {
    detail::decode_onto(ctxt, der, record, asn1data::asn1D_Name);
}

void ASN1T_Name_traits::get(const ASN1_T& record, CBlob& der) {
    der = asn1EncodeT<ASN1T_Name_traits>(record);
}

void ASN1T_Name_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_Name(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
