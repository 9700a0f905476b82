#include "runtime/detail/control_object.h"

namespace Quillmark::detail {

ASN1CTXT* start_message(ASN1CType& control, ASN1MessageBufferIF& buffer) {
    control.setMsgBuf(buffer);
    buffer.init();
    return buffer.getCtxtPtr();
}

}  // namespace Quillmark::detail
