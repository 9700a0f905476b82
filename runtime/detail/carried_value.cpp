#include "runtime/detail/carried_value.h"

#include <algorithm>

#include "runtime/der_encode.h"

namespace Quillmark::detail {

int open_octets(ASN1CTXT* ctxt, const ASN1OpenType& value) {
    if (value.numocts > INT32_MAX) {
        return RT_E_INVLEN;
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
