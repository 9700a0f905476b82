#include "asn1/attribute.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "asn1/detail/bridge.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/list_traits.h"
#include "asn1/detail/oid_text.h"
#include "asn1/detail/table_constraint.h"
#include "asn1/detail/text.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_Attribute_traits> {
    using Record = asn1data::ASN1T_Attribute;
    using Control = asn1data::ASN1C_Attribute;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_Attributes_traits> {
    using Record = asn1data::ASN1T_SignedAttributes;
    using Control = asn1data::ASN1C_SignedAttributes;
};

namespace Quillmark::ASN1 {

using AttributeList =
    ASN1TSeqOfList_traits<asn1data::ASN1T_Attribute, ASN1T_Attribute_traits, CAttribute, CAttributes>;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_Attribute, ASN1T_Attribute_traits, CAttribute,
                                      CAttributes>;
template CBlob asn1Encode<ASN1T_Attribute_traits, CAttribute>(const CAttribute&);
template void asn1Decode<ASN1T_Attribute_traits, CAttribute>(const CBlob&, CAttribute&);
template CBlob asn1Encode<ASN1T_Attributes_traits, CAttributes>(const CAttributes&);
template void asn1Decode<ASN1T_Attributes_traits, CAttributes>(const CBlob&, CAttributes&);

namespace {

using SharedText = std::shared_ptr<const std::string>;

SharedText shared_text(const char* text) {
    return text == nullptr || *text == '\0' ? nullptr : std::make_shared<const std::string>(text);
}

}  // namespace

struct CAttribute::Impl {
    CAttrValueList values;
    SharedText oid;
};

CAttrValue::CAttrValue() = default;

CAttrValue::CAttrValue(const char* oid) : oid_(shared_text(oid)) {}

CAttrValue::CAttrValue(const char* oid, const CBlob& value) : oid_(shared_text(oid)), value_(value) {}

CAttrValue::CAttrValue(SharedText oid, const CBlob& value) : oid_(std::move(oid)), value_(value) {}

bool operator==(const CAttrValue& left, const CAttrValue& right) {
    return std::strcmp(left.get_oid(), right.get_oid()) == 0 && left.get_value() == right.get_value();
}

bool operator!=(const CAttrValue& left, const CAttrValue& right) {
    return !(left == right);
}

CAttribute::CAttribute() : impl_(std::make_unique<Impl>()) {}

CAttribute::CAttribute(const char* oid) : CAttribute() {
    impl_->oid = shared_text(oid);
}

CAttribute::CAttribute(const CAttribute& other) : impl_(std::make_unique<Impl>(*other.impl_)) {}

CAttribute& CAttribute::operator=(const CAttribute& other) {
    if (this != &other) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CAttribute::~CAttribute() = default;

const char* CAttribute::get_oid() const {
    return impl_->oid == nullptr ? "" : impl_->oid->c_str();
}

CAttribute::iterator CAttribute::begin() {
    return impl_->values.begin();
}

CAttribute::iterator CAttribute::end() {
    return impl_->values.end();
}

CAttribute::const_iterator CAttribute::begin() const {
    return impl_->values.begin();
}

CAttribute::const_iterator CAttribute::end() const {
    return impl_->values.end();
}

unsigned long CAttribute::size() const {
    return impl_->values.size();
}

void CAttribute::add(const CBlob& value) {
    impl_->values.push_back(CAttrValue(impl_->oid, value));
}

void CAttribute::add(const CAttrValue& value) {
    impl_->values.push_back(value);
}

void CAttribute::erase(iterator position) {
    impl_->values.erase(position);
}

CBlob CAttribute::encode() const {
    return asn1Encode<ASN1T_Attribute_traits>(*this);
}

void CAttribute::decode(const CBlob& der) {
    asn1Decode<ASN1T_Attribute_traits>(der, *this);
}

bool operator==(const CAttribute& left, const CAttribute& right) {
    return std::strcmp(left.get_oid(), right.get_oid()) == 0 &&
           std::equal(left.begin(), left.end(), right.begin(), right.end());
}

bool operator!=(const CAttribute& left, const CAttribute& right) {
    return !(left == right);
}

CAttributes::iterator CAttributes::find(const char* oid) {
    return std::find_if(begin(), end(), [wanted = detail::or_empty(oid)](const CAttribute& attribute) {
        return std::strcmp(attribute.get_oid(), wanted) == 0;
    });
}

CAttributes::const_iterator CAttributes::find(const char* oid) const {
    return const_cast<CAttributes*>(this)->find(oid);
}

void CAttributes::erase(const char* oid) {
    const iterator position = find(oid);
    if (position != end()) {
        erase(position);
    }
}

CBlob CAttributes::encode() const {
    return asn1Encode<ASN1T_Attributes_traits>(*this);
}

void CAttributes::decode(const CBlob& der) {
    asn1Decode<ASN1T_Attributes_traits>(der, *this);
}

void ASN1T_Attribute_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CAttribute& value) {
    ASN1TObjId_traits::set(ctxt, record.type, value.get_oid());
    rtDListInit(&record.values);
    for (const CAttrValue& element : value) {
        // The attribute's own identifier goes to the wire, whatever the value has.
        Asn1TObject_traits::set(ctxt, detail::append_record<Asn1TObject>(ctxt, record.values),
                                element.get_value());
    }
    detail::check_table_constraint(ctxt, record, asn1data::asn1DTC_Attribute);
}

void ASN1T_Attribute_traits::get(const ASN1_T& record, CAttribute& value) {
    CAttribute fresh(detail::OidText(record.type).c_str());
    for (const _Asn1RTDListNode* node = record.values.head; node != nullptr; node = node->next) {
        const auto& element = *static_cast<const Asn1TObject*>(node->data);
        fresh.impl_->values.push_back(CAttrValue(fresh.impl_->oid, CBlob()));
        fresh.impl_->values.back().value().assign(element.data, element.numocts);
    }
    value.impl_ = std::move(fresh.impl_);
}

void ASN1T_Attribute_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_Attribute(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_Attributes_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CAttributes& value) {
    AttributeList::set(ctxt, record, value);
}

void ASN1T_Attributes_traits::get(const ASN1TSeqOfList& record, CAttributes& value) {
    AttributeList::get(record, value);
}

void ASN1T_Attributes_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target) {
    AttributeList::copy(ctxt, source, target);
}

}  // namespace Quillmark::ASN1
