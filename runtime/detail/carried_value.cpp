#include "runtime/detail/carried_value.h"

#include <algorithm>

#include "runtime/der_encode.h"
#include "runtime/detail/record_memory.h"

namespace Quillmark::detail {

int open_octets(ASN1CTXT* ctxt, const ASN1OpenType& value) {
    if (value.numocts > INT32_MAX) {
        return RT_E_INVLEN;
    }
    // What a value lends must outlive it. Octets outside the message are a block that is freed with the
    // record.
    if (!in_message(ctxt, value.data)) {
        ctxt->flags &= static_cast<uint16_t>(~RT_F_FASTCOPY);
    }
    return xd_setp(ctxt, value.data, static_cast<int>(value.numocts), nullptr, nullptr);
}

int begin_carried(ASN1CTXT* ctxt) {
    return recorded(ctxt, xe_setp(ctxt, nullptr, 0));
}

int end_carried(ASN1CTXT* ctxt, int written, Asn1Object& value) {
    int status = written < 0 ? written : RT_OK;
    if (written > 0) {
        auto* octets = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt->typeHeap, static_cast<size_t>(written)));
        if (octets != nullptr) {
            std::copy_n(xe_getp(ctxt), written, octets);
            value.numocts = static_cast<uint32_t>(written);
            value.data = octets;
        } else {
            status = RT_E_NOMEM;
        }
    }
    xe_free(ctxt);
    return recorded(ctxt, status);
}

}  // namespace Quillmark::detail
