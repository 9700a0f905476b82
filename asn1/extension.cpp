#include "asn1/extension.h"

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
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_Extension_traits> {
    using Record = asn1data::ASN1T_Extension;
    using Control = asn1data::ASN1C_Extension;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_Extensions_traits> {
    using Record = asn1data::ASN1T_Extensions;
    using Control = asn1data::ASN1C_Extensions;
};

namespace Quillmark::ASN1 {

using ExtensionList =
    ASN1TSeqOfList_traits<asn1data::ASN1T_Extension, ASN1T_Extension_traits, CExtension, CExtensions>;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_Extension, ASN1T_Extension_traits, CExtension,
                                      CExtensions>;
template CBlob asn1Encode<ASN1T_Extension_traits, CExtension>(const CExtension&);
template void asn1Decode<ASN1T_Extension_traits, CExtension>(const CBlob&, CExtension&);
template CBlob asn1Encode<ASN1T_Extensions_traits, CExtensions>(const CExtensions&);
template void asn1Decode<ASN1T_Extensions_traits, CExtensions>(const CBlob&, CExtensions&);

CExtValue::CExtValue() : oid_("") {}

CExtValue::CExtValue(const char* oid) : oid_(oid) {}

CExtValue::CExtValue(const char* oid, CBlob value) : oid_(oid), value_(std::move(value)) {}

CExtension::CExtension(CExtValue value, bool critical) : value_(std::move(value)), critical_(critical) {}

CBlob CExtension::encode() const {
    return asn1Encode<ASN1T_Extension_traits>(*this);
}

void CExtension::decode(const CBlob& der) {
    asn1Decode<ASN1T_Extension_traits>(der, *this);
}

CExtensions::iterator CExtensions::find(const char* oid) {
    return std::find_if(begin(), end(), [wanted = detail::or_empty(oid)](const CExtension& extension) {
        return std::strcmp(extension.get_extnID(), wanted) == 0;
    });
}

CExtensions::const_iterator CExtensions::find(const char* oid) const {
    return const_cast<CExtensions*>(this)->find(oid);
}

void CExtensions::insert(CExtension extension) {
    const iterator position = find(extension.get_extnID());
    if (position == end()) {
        push_back(std::move(extension));
    } else {
        *position = std::move(extension);
    }
}

void CExtensions::erase(const char* oid) {
    const iterator position = find(oid);
    if (position != end()) {
        erase(position);
    }
}

CBlob CExtensions::encode() const {
    return asn1Encode<ASN1T_Extensions_traits>(*this);
}

void CExtensions::decode(const CBlob& der) {
    asn1Decode<ASN1T_Extensions_traits>(der, *this);
}

void ASN1T_Extension_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CExtension& value) {
    ASN1TObjId_traits::set(ctxt, record.extnID, value.get_extnID());
    record.critical = value.get_critical() ? 1 : 0;
    detail::put_octets(ctxt, record.extnValue, value.get_extnValue());
    record.extnType = Asn1TObject();
    detail::check_table_constraint(ctxt, record, asn1data::asn1DTC_Extension);
}

void ASN1T_Extension_traits::get(const ASN1_T& record, CExtension& value) {
    value.value_ = CExtValue(detail::OidText(record.extnID).c_str(),
                             CBlob(record.extnValue.data, record.extnValue.numocts));
    value.critical_ = record.critical != 0;
}

void ASN1T_Extension_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_Extension(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_Extensions_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CExtensions& value) {
    ExtensionList::set(ctxt, record, value);
}

void ASN1T_Extensions_traits::get(const ASN1TSeqOfList& record, CExtensions& value) {
    ExtensionList::get(record, value);
}

void ASN1T_Extensions_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target) {
    ExtensionList::copy(ctxt, source, target);
}

}  // namespace Quillmark::ASN1
