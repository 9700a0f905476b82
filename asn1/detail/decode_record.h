#pragma once

// Reading the DER that a value holds into a record, for traits whose value is a whole encoding.

#include "asn1/detail/bridge.h"
#include "asn1/detail/check.h"
#include "asn1/detail/table_constraint.h"
#include "runtime/ber_decode.h"

namespace Quillmark::detail {

/// Decodes `der` into `record` with everything on the heap of `ctxt`, whose own message stays as it is.
template <class R>
void decode_onto(ASN1CTXT* ctxt, const CBlob& der, R& record,
                 int (*decoder)(ASN1CTXT*, R*, ASN1TagType, int)) {
    const int size = message_size(der);
    if (size == 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    const BufferKeeper keeper(ctxt);
    // As with a decode buffer, what is wrong with the first header is left for the decoder to find.
    xd_setp(ctxt, der.pbData(), size, nullptr, nullptr);
    check_codec(decoder(ctxt, &record, ASN1EXPL, 0));
}

}  // namespace Quillmark::detail
