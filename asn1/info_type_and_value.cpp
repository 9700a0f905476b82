#include "asn1/info_type_and_value.h"

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
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_InfoTypeAndValue_traits> {
    using Record = asn1data::ASN1T_InfoTypeAndValue;
    using Control = asn1data::ASN1C_InfoTypeAndValue;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_GenMsgContent_traits> {
    using Record = asn1data::ASN1T_GenMsgContent;
    using Control = asn1data::ASN1C_GenMsgContent;
};

namespace Quillmark::ASN1 {

using InfoTypeAndValueRecords =
    ASN1TSeqOfList_traits<asn1data::ASN1T_InfoTypeAndValue, ASN1T_InfoTypeAndValue_traits, CInfoTypeAndValue,
                          CInfoTypeAndValueList>;

template CBlob asn1Encode<ASN1T_InfoTypeAndValue_traits, CInfoTypeAndValue>(const CInfoTypeAndValue&);
template void asn1Decode<ASN1T_InfoTypeAndValue_traits, CInfoTypeAndValue>(const CBlob&, CInfoTypeAndValue&);
template CBlob asn1Encode<ASN1T_GenMsgContent_traits, CInfoTypeAndValueList>(const CInfoTypeAndValueList&);
template void asn1Decode<ASN1T_GenMsgContent_traits, CInfoTypeAndValueList>(const CBlob&,
                                                                            CInfoTypeAndValueList&);

CInfoTypeAndValue::CInfoTypeAndValue() : infoType_("") {}

CInfoTypeAndValue::CInfoTypeAndValue(const char* infoType) : infoType_(infoType) {}

CInfoTypeAndValue::CInfoTypeAndValue(const char* infoType, const CBlob& infoValue)
    : infoType_(infoType), infoValue_(infoValue) {}

void CInfoTypeAndValue::put_infoType(const char* infoType) {
    infoType_ = CStringProxy(infoType);
}

void CInfoTypeAndValue::put_infoValue(const CBlob& infoValue) {
    infoValue_ = infoValue;
}

CBlob CInfoTypeAndValue::encode() const {
    return asn1Encode<ASN1T_InfoTypeAndValue_traits>(*this);
}

void CInfoTypeAndValue::decode(const CBlob& der) {
    asn1Decode<ASN1T_InfoTypeAndValue_traits>(der, *this);
}

bool operator==(const CInfoTypeAndValue& left, const CInfoTypeAndValue& right) {
    return std::strcmp(left.get_infoType(), right.get_infoType()) == 0 &&
           left.get_infoValue() == right.get_infoValue();
}

bool operator!=(const CInfoTypeAndValue& left, const CInfoTypeAndValue& right) {
    return !(left == right);
}

findByOid::findByOid(const char* oid) : oid_(detail::or_empty(oid)) {}

CInfoTypeAndValueList::iterator CInfoTypeAndValueList::find(const char* oid) {
    return std::find_if(begin(), end(), findByOid(oid));
}

CInfoTypeAndValueList::const_iterator CInfoTypeAndValueList::find(const char* oid) const {
    return std::find_if(begin(), end(), findByOid(oid));
}

void CInfoTypeAndValueList::insert(const CInfoTypeAndValue& info) {
    const iterator position = find(info.get_infoType());
    if (position == end()) {
        push_back(info);
    } else {
        *position = info;
    }
}

void CInfoTypeAndValueList::remove(const char* oid) {
    const iterator position = find(oid);
    if (position != end()) {
        erase(position);
    }
}

CBlob CInfoTypeAndValueList::encode() const {
    return asn1Encode<ASN1T_GenMsgContent_traits>(*this);
}

void CInfoTypeAndValueList::decode(const CBlob& der) {
    asn1Decode<ASN1T_GenMsgContent_traits>(der, *this);
}

void ASN1TavList_Parse(const ASN1TSeqOfList& list, CInfoTypeAndValueList& target) {
    InfoTypeAndValueRecords::get(list, target);
}

void ASN1TavList_Encode(const CInfoTypeAndValueList& source, ASN1TSeqOfList& list,
                        ASN1BERDecodeBuffer& buffer) {
    ASN1CTXT* ctxt = buffer.getCtxtPtr();
    for (const CInfoTypeAndValue& info : source) {
        auto& record = detail::append_record<asn1data::ASN1T_InfoTypeAndValue>(ctxt, list);
        ASN1T_InfoTypeAndValue_traits::set(ctxt, record, info);
    }
}

void ASN1T_InfoTypeAndValue_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CInfoTypeAndValue& value) {
    // Intended: an empty value is not written at all.
    record.m.infoValuePresent = value.get_infoValue().cbData() != 0;
    if (record.m.infoValuePresent) {
        Asn1TObject_traits::set(ctxt, record.infoValue, value.get_infoValue());
    }
    ASN1TObjId_traits::set(ctxt, record.infoType, value.get_infoType());
    detail::check_table_constraint(ctxt, record, asn1data::asn1DTC_InfoTypeAndValue);
}

void ASN1T_InfoTypeAndValue_traits::get(const ASN1_T& record, CInfoTypeAndValue& value) {
    CInfoTypeAndValue fresh(detail::OidText(record.infoType).c_str());
    if (record.m.infoValuePresent) {
        fresh.put_infoValue(CBlob(record.infoValue.data, record.infoValue.numocts));
    }
    value = std::move(fresh);
}

void ASN1T_InfoTypeAndValue_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_InfoTypeAndValue(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_GenMsgContent_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record,
                                     const CInfoTypeAndValueList& value) {
    InfoTypeAndValueRecords::set(ctxt, record, value);
}

void ASN1T_GenMsgContent_traits::get(const ASN1TSeqOfList& record, CInfoTypeAndValueList& value) {
    InfoTypeAndValueRecords::get(record, value);
}

void ASN1T_GenMsgContent_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target) {
    InfoTypeAndValueRecords::copy(ctxt, source, target);
}

}  // namespace Quillmark::ASN1
