#include "asn1/access_description.h"

#include <cstring>

#include "asn1/detail/bridge.h"
#include "asn1/detail/list_traits.h"
#include "asn1/detail/oid_text.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_AccessDescription_traits> {
    using Record = asn1data::ASN1T_AccessDescription;
    using Control = asn1data::ASN1C_AccessDescription;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_AuthorityInfoAccessSyntax_traits> {
    using Record = asn1data::ASN1T_AuthorityInfoAccessSyntax;
    using Control = asn1data::ASN1C_AuthorityInfoAccessSyntax;
};

namespace Quillmark::ASN1 {

using AccessDescriptionList =
    ASN1TSeqOfList_traits<asn1data::ASN1T_AccessDescription, ASN1T_AccessDescription_traits,
                          CAccessDescription, CAuthorityInfoAccessSyntax>;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_AccessDescription, ASN1T_AccessDescription_traits,
                                      CAccessDescription, CAuthorityInfoAccessSyntax>;
template CBlob asn1Encode<ASN1T_AccessDescription_traits, CAccessDescription>(const CAccessDescription&);
template void asn1Decode<ASN1T_AccessDescription_traits, CAccessDescription>(const CBlob&,
                                                                             CAccessDescription&);
template CBlob asn1Encode<ASN1T_AuthorityInfoAccessSyntax_traits, CAuthorityInfoAccessSyntax>(
    const CAuthorityInfoAccessSyntax&);
template void asn1Decode<ASN1T_AuthorityInfoAccessSyntax_traits, CAuthorityInfoAccessSyntax>(
    const CBlob&, CAuthorityInfoAccessSyntax&);

CAccessDescription::CAccessDescription() : accessMethod_("") {}

CAccessDescription::CAccessDescription(const char* accessMethod, const CGeneralName& accessLocation)
    : accessMethod_(accessMethod), accessLocation_(accessLocation) {}

void CAccessDescription::put_accessMethod(const char* accessMethod) {
    accessMethod_ = CStringProxy(accessMethod);
}

void CAccessDescription::put_accessLocation(const CGeneralName& accessLocation) {
    accessLocation_ = accessLocation;
}

CBlob CAccessDescription::encode() const {
    return asn1Encode<ASN1T_AccessDescription_traits>(*this);
}

void CAccessDescription::decode(const CBlob& der) {
    asn1Decode<ASN1T_AccessDescription_traits>(der, *this);
}

bool operator==(const CAccessDescription& left, const CAccessDescription& right) {
    return std::strcmp(left.get_accessMethod(), right.get_accessMethod()) == 0 &&
           left.get_accessLocation() == right.get_accessLocation();
}

bool operator!=(const CAccessDescription& left, const CAccessDescription& right) {
    return !(left == right);
}

CBlob CAuthorityInfoAccessSyntax::encode() const {
    return asn1Encode<ASN1T_AuthorityInfoAccessSyntax_traits>(*this);
}

void CAuthorityInfoAccessSyntax::decode(const CBlob& der) {
    asn1Decode<ASN1T_AuthorityInfoAccessSyntax_traits>(der, *this);
}

void ASN1T_AccessDescription_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CAccessDescription& value) {
    ASN1TObjId_traits::set(ctxt, record.accessMethod, value.get_accessMethod());
    ASN1T_GeneralName_traits::set(ctxt, record.accessLocation, value.get_accessLocation());
}

void ASN1T_AccessDescription_traits::get(const ASN1_T& record, CAccessDescription& value) {
    CGeneralName location;
    ASN1T_GeneralName_traits::get(record.accessLocation, location);
    value.put_accessMethod(detail::OidText(record.accessMethod).c_str());
    value.put_accessLocation(location);
}

void ASN1T_AccessDescription_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_AccessDescription(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_AuthorityInfoAccessSyntax_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record,
                                                 const CAuthorityInfoAccessSyntax& value) {
    AccessDescriptionList::set(ctxt, record, value);
}

void ASN1T_AuthorityInfoAccessSyntax_traits::get(const ASN1TSeqOfList& record,
                                                 CAuthorityInfoAccessSyntax& value) {
    AccessDescriptionList::get(record, value);
}

void ASN1T_AuthorityInfoAccessSyntax_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source,
                                                  ASN1TSeqOfList& target) {
    AccessDescriptionList::copy(ctxt, source, target);
}

}  // namespace Quillmark::ASN1
