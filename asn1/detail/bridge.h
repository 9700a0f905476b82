#pragma once

// The bodies of `asn1Encode` and its kin, for the sources that instantiate them. Such a source names the
// generated record and its control class:
//
//     template <>
//     struct Quillmark::detail::Binding<ASN1T_Extension_traits> {
//         using Record = asn1data::ASN1T_Extension;
//         using Control = asn1data::ASN1C_Extension;
//     };
//     template CBlob asn1Encode<ASN1T_Extension_traits, CExtension>(const CExtension&);
//     template void asn1Decode<ASN1T_Extension_traits, CExtension>(const CBlob&, CExtension&);

#include <limits>

#include "asn1/codec.h"
#include "asn1/detail/check.h"
#include "runtime/detail/local_buffer.h"

namespace Quillmark::detail {

template <class Traits>
struct Binding;

/// The size of a message; one beyond what a buffer can take is refused as the decoder would.
inline int message_size(const CBlob& blob) {
    if (blob.cbData() > static_cast<unsigned long>(std::numeric_limits<int>::max())) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    return static_cast<int>(blob.cbData());
}

/// Encodes a record that lies on the context of `buffer`.
template <class Traits>
CBlob encode_record(LocalEncodeBuffer& buffer, typename Binding<Traits>::Record& record) {
    typename Binding<Traits>::Control control(buffer, record);
    const int length = check_codec(control.EncodeTo(buffer));
    return CBlob(buffer.getMsgPtr(), static_cast<unsigned long>(length));
}

/// Decodes the message of `buffer` into `record`, with everything on the context of `buffer`.
template <class Traits>
void decode_record(LocalDecodeBuffer& buffer, typename Binding<Traits>::Record& record) {
    typename Binding<Traits>::Control control(buffer, record);
    check_codec(control.DecodeFrom(buffer));
}

}  // namespace Quillmark::detail

namespace Quillmark::ASN1 {

template <class Traits, class V>
CBlob asn1Encode(const V& value) {
    detail::LocalEncodeBuffer buffer;
    typename detail::Binding<Traits>::Record record;
    Traits::set(buffer.getCtxtPtr(), record, value);
    return detail::encode_record<Traits>(buffer, record);
}

template <class Traits, class V>
void asn1Decode(const CBlob& blob, V& value) {
    detail::LocalDecodeBuffer buffer(blob.pbData(), detail::message_size(blob));
    typename detail::Binding<Traits>::Record record;
    detail::decode_record<Traits>(buffer, record);
    Traits::get(record, value);
}

template <class Traits>
CBlob asn1EncodeT(const typename Traits::ASN1_T& record) {
    detail::LocalEncodeBuffer buffer;
    typename detail::Binding<Traits>::Record copy;
    Traits::copy(buffer.getCtxtPtr(), record, copy);
    return detail::encode_record<Traits>(buffer, copy);
}

template <class Traits>
void asn1DecodeT(const CBlob& blob, ASN1CTXT* ctxt, typename Traits::ASN1_T& record) {
    detail::LocalDecodeBuffer buffer(blob.pbData(), detail::message_size(blob));
    typename detail::Binding<Traits>::Record local;
    detail::decode_record<Traits>(buffer, local);
    Traits::copy(ctxt, local, record);
}

}  // namespace Quillmark::ASN1
