#include "asn1/codec.h"

#include <cstring>

#include "asn1/detail/bridge.h"
#include "asn1/detail/check.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/list_traits.h"
#include "asn1/detail/text.h"
#include "runtime/ber_decode.h"
#include "runtime/copy.h"
#include "runtime/der_encode.h"
#include "runtime/detail/local_buffer.h"
#include "runtime/message_buffer.h"

namespace Quillmark::ASN1 {
namespace {

constexpr ASN1TAG kGeneralizedTime = 24;

// Eight bits for each octet must fit the bit count of a record.
constexpr unsigned long kMaxBitStringOctets = 0x1FFFFFFF;

}  // namespace

CBlob toOctetString(const CBlob& octets) {
    ctxt_handle handle;
    if (!handle.init()) {
        throw CAtlException(CRYPT_E_ASN1_MEMORY);
    }
    ASN1CTXT* ctxt = handle.get();
    const auto size = static_cast<std::uint32_t>(detail::message_size(octets));
    detail::check_codec(xe_setp(ctxt, nullptr, 0));
    const int length = detail::check_codec(xe_octstr(ctxt, octets.pbData(), size, ASN1EXPL));
    return CBlob(xe_getp(ctxt), static_cast<unsigned long>(length));
}

CBlob fromOctetString(const CBlob& der) {
    if (der.cbData() == 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    ctxt_handle handle;
    if (!handle.init()) {
        throw CAtlException(CRYPT_E_ASN1_MEMORY);
    }
    ASN1CTXT* ctxt = handle.get();
    const int size = detail::message_size(der);
    detail::check_codec(xd_setp(ctxt, der.pbData(), size, nullptr, nullptr));
    CBlob octets(der.cbData());
    auto length = static_cast<std::uint32_t>(size);
    detail::check_codec(xd_octstr_s(ctxt, octets.pbData(), &length, ASN1EXPL, 0));
    octets.resize_to(length);
    return octets;
}

const char* DateToASN1GeneralizedTime(ASN1CTXT* ctxt, const CDateTime& date, bool wholeSeconds) {
    if (!wholeSeconds) {
        return detail::copy_text(ctxt, date.getGeneralizedTime().c_str());
    }
    // Intended: half a second and more does not round up.
    _SYSTEMTIME fields = date.getSystemTime();
    fields.wMilliseconds = 0;
    return detail::copy_text(ctxt, CDateTime(fields).getGeneralizedTime().c_str());
}

void ASN1TDynOctStr_traits::set(ASN1CTXT* ctxt, ASN1TDynOctStr& record, const CBlob& value) {
    detail::put_octets(ctxt, record, value);
}

void ASN1TDynOctStr_traits::get(const ASN1TDynOctStr& record, CBlob& value) {
    value.assign(record.data, record.numocts);
}

void ASN1TDynOctStr_traits::copy(ASN1CTXT* ctxt, const ASN1TDynOctStr& source, ASN1TDynOctStr& target) {
    target.data = detail::copy_octets(ctxt, source.data, source.numocts);
    target.numocts = source.numocts;
}

void ASN1TOpenType_traits::set(ASN1CTXT* ctxt, ASN1OpenType& record, const CBlob& value) {
    detail::put_octets(ctxt, record, value);
}

void ASN1TOpenType_traits::get(const ASN1OpenType& record, CBlob& value) {
    value.assign(record.data, record.numocts);
}

void ASN1TOpenType_traits::copy(ASN1CTXT* ctxt, const ASN1OpenType& source, ASN1OpenType& target) {
    target.data = detail::copy_octets(ctxt, source.data, source.numocts);
    target.numocts = source.numocts;
}

void Asn1TObject_traits::set(ASN1CTXT* ctxt, Asn1Object& record, const CBlob& value) {
    detail::put_octets(ctxt, record, value);
    record.decoded = nullptr;
}

void Asn1TObject_traits::get(const Asn1Object& record, CBlob& value) {
    value.assign(record.data, record.numocts);
}

void Asn1TObject_traits::copy(ASN1CTXT* ctxt, const Asn1Object& source, Asn1Object& target) {
    detail::check_copied(rtCopyOpenType(ctxt, &source, &target));
    target.decoded = nullptr;
}

void ASN1TDynBitStr_traits::set(ASN1CTXT* ctxt, ASN1TDynBitStr& record, const CBlob& value) {
    if (value.cbData() > kMaxBitStringOctets) {
        throw CAtlException(CRYPT_E_ASN1_MEMORY);
    }
    record.data = detail::copy_octets(ctxt, value.pbData(), value.cbData());
    record.numbits = static_cast<std::uint32_t>(value.cbData() * 8);
}

void ASN1TDynBitStr_traits::get(const ASN1TDynBitStr& record, CBlob& value) {
    value.assign(record.data, (record.numbits + 7UL) / 8);
}

void ASN1TDynBitStr_traits::copy(ASN1CTXT* ctxt, const ASN1TDynBitStr& source, ASN1TDynBitStr& target) {
    detail::check_copied(rtCopyDynBitStr(ctxt, &source, &target));
}

void ASN1IA5String_traits::set(ASN1CTXT* ctxt, const char*& record, const char* value) {
    record = detail::copy_text(ctxt, detail::or_empty(value));
}

void ASN1IA5String_traits::get(const char* const& record, CStringProxy& value) {
    value = CStringProxy(record);
}

void ASN1IA5String_traits::copy(ASN1CTXT* ctxt, const char* const& source, const char*& target) {
    // Intended: the copy stays idle on the heap and the target shares the text of the source.
    detail::copy_text(ctxt, source);
    target = source;
}

void ASN1GeneralizedTime_traits::set(ASN1CTXT* ctxt, const char*& record, const CDateTime& value) {
    record = DateToASN1GeneralizedTime(ctxt, value, true);
}

void ASN1GeneralizedTime_traits::get(const char* const& record, CDateTime& value) {
    value = CDateTime(record);
}

void ASN1GeneralizedTime_traits::copy(ASN1CTXT* ctxt, const char* const& source, const char*& target) {
    set(ctxt, target, CDateTime(source));
}

int ASN1GeneralizedTime_traits::encode(ASN1BEREncodeBuffer& buffer, const char* text) {
    buffer.init();
    return xe_charstr(buffer.getCtxtPtr(), text, ASN1EXPL, kGeneralizedTime);
}

int ASN1GeneralizedTime_traits::decode(ASN1BERDecodeBuffer& buffer, const char*& text) {
    buffer.init();
    char* read = nullptr;
    const int status = xd_charstr(buffer.getCtxtPtr(), &read, ASN1EXPL, kGeneralizedTime, 0);
    text = read;
    return status;
}

template <>
CBlob asn1Encode<ASN1TObjId_traits, const char*>(const char* const& oid) {
    ASN1OBJID record;
    ASN1TObjId_traits::set(nullptr, record, oid);
    detail::LocalEncodeBuffer buffer;
    const int length = detail::check_codec(xe_objid(buffer.getCtxtPtr(), &record, ASN1EXPL));
    return CBlob(buffer.getMsgPtr(), static_cast<unsigned long>(length));
}

template <>
void asn1Decode<ASN1TObjId_traits, CStringProxy>(const CBlob& blob, CStringProxy& oid) {
    detail::LocalDecodeBuffer buffer(blob.pbData(), detail::message_size(blob));
    buffer.init();
    ASN1OBJID record;
    detail::check_codec(xd_objid(buffer.getCtxtPtr(), &record, ASN1EXPL, 0));
    ASN1TObjId_traits::get(record, oid);
}

template <>
CBlob asn1Encode<ASN1GeneralizedTime_traits, CDateTime>(const CDateTime& time) {
    ASN1BEREncodeBuffer buffer;
    const char* text = nullptr;
    ASN1GeneralizedTime_traits::set(buffer.getCtxtPtr(), text, time);
    const int length = detail::check_codec(ASN1GeneralizedTime_traits::encode(buffer, text));
    return CBlob(buffer.getMsgPtr(), static_cast<unsigned long>(length));
}

template <>
void asn1Decode<ASN1GeneralizedTime_traits, CDateTime>(const CBlob& blob, CDateTime& time) {
    ASN1BERDecodeBuffer buffer(blob.pbData(), detail::message_size(blob));
    const char* text = nullptr;
    detail::check_codec(ASN1GeneralizedTime_traits::decode(buffer, text));
    ASN1GeneralizedTime_traits::get(text, time);
}

template struct ASN1TSeqOfList_traits<Asn1TObject, Asn1TObject_traits, CBlob, CBlobList>;

}  // namespace Quillmark::ASN1
