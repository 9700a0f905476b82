#include "asn1/content_info.h"

#include "asn1/detail/bridge.h"
#include "asn1/detail/decode_record.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/oid_text.h"
#include "asn1/detail/table_constraint.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_ContentInfo_traits> {
    using Record = asn1data::ASN1T_ContentInfo;
    using Control = asn1data::ASN1C_ContentInfo;
};

namespace Quillmark::ASN1 {

template CBlob asn1Encode<ASN1T_ContentInfo_traits, CContentInfo>(const CContentInfo&);
template void asn1Decode<ASN1T_ContentInfo_traits, CContentInfo>(const CBlob&, CContentInfo&);

CContentInfo::CContentInfo() : contentType_("") {}

CContentInfo::CContentInfo(const char* contentType, const CBlob& content)
    : contentType_(contentType), content_(content) {}

void CContentInfo::put_contentType(const char* contentType) {
    contentType_ = CStringProxy(contentType);
}

void CContentInfo::put_content(const CBlob& content) {
    content_ = content;
}

CBlob CContentInfo::encode() const {
    return asn1Encode<ASN1T_ContentInfo_traits>(*this);
}

void CContentInfo::decode(const CBlob& der) {
    asn1Decode<ASN1T_ContentInfo_traits>(der, *this);
}

void ASN1T_ContentInfo_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CContentInfo& value) {
    ASN1TObjId_traits::set(ctxt, record.contentType, value.get_contentType());
    Asn1TObject_traits::set(ctxt, record.content, value.get_content());
    detail::check_table_constraint(ctxt, record, asn1data::asn1DTC_ContentInfo);
}

void ASN1T_ContentInfo_traits::get(const ASN1_T& record, CContentInfo& value) {
    value.put_contentType(detail::OidText(record.contentType).c_str());
    value.put_content(CBlob(record.content.data, record.content.numocts));
}

void ASN1T_ContentInfo_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CBlob& der) {
    detail::decode_onto(ctxt, der, record, asn1data::asn1D_ContentInfo);
}

void ASN1T_ContentInfo_traits::get(const ASN1_T& record, CBlob& der) {
    der = asn1EncodeT<ASN1T_ContentInfo_traits>(record);
}

void ASN1T_ContentInfo_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_ContentInfo(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
