#pragma once

// SET OF Attribute without a bound on its size (RFC 5652 5.3 and 9.1 in the form that may be empty). A set
// that is not empty is UnauthAttributes, whose codec it takes.

#include "asn1data/codecs.h"
#include "asn1data/records.h"
#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "runtime/message_buffer.h"

namespace Quillmark::detail {

class SetOfAttribute {
  public:
    SetOfAttribute(ASN1MessageBufferIF&, asn1data::ASN1T_UnauthAttributes& record) : record_(record) {}

    int EncodeTo(ASN1MessageBufferIF& buffer) {
        buffer.init();
        ASN1CTXT* ctxt = buffer.getCtxtPtr();
        if (record_.count == 0) {
            return xe_tag_len(ctxt, kConstructedSet, 0);
        }
        return asn1data::asn1E_UnauthAttributes(ctxt, &record_, ASN1EXPL);
    }

    int DecodeFrom(ASN1MessageBufferIF& buffer) {
        buffer.init();
        ASN1CTXT* ctxt = buffer.getCtxtPtr();
        int length = 0;
        const int status = xd_match1(ctxt, kSet, &length);
        if (status != RT_OK || is_empty(*ctxt, length)) {
            return status;
        }
        return asn1data::asn1D_UnauthAttributes(ctxt, &record_, ASN1IMPL, length);
    }

  private:
    static constexpr ASN1TAG kSet = 17;
    static constexpr ASN1TAG kConstructedSet = 0x20000000 | kSet;

    static bool is_empty(const ASN1CTXT& ctxt, int length) {
        const ASN1BUFFER& in = ctxt.buffer;
        if (length != RT_INDEFLEN) {
            return length == 0;
        }
        return in.byteIndex < in.size && in.size - in.byteIndex >= 2 && in.data[in.byteIndex] == 0 &&
               in.data[in.byteIndex + 1] == 0;
    }

    asn1data::ASN1T_UnauthAttributes& record_;
};

}  // namespace Quillmark::detail
