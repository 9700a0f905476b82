#pragma once

// An open type under a known identifier is written in the carried type's own encoding, so what a value gives
// as octets is decoded before it is encoded. A value that does not fit its identifier fails here and not at
// the receiver.

#include "asn1/detail/check.h"
#include "runtime/context.h"

namespace Quillmark::detail {

/// Keeps the message buffer of a context while another message is read on it.
class BufferKeeper {
  public:
    explicit BufferKeeper(ASN1CTXT* ctxt) : ctxt_(ctxt) { rtCopyContext(&saved_, ctxt_); }
    ~BufferKeeper() { rtCopyContext(ctxt_, &saved_); }
    BufferKeeper(const BufferKeeper&) = delete;
    BufferKeeper& operator=(const BufferKeeper&) = delete;

  private:
    ASN1CTXT* ctxt_;
    ASN1CTXT saved_{};
};

/// Decodes the open type of `record`, whose pointers lie on the heap of `ctxt`, by its generated step
/// `asn1DTC_X`.
template <class R>
void check_table_constraint(ASN1CTXT* ctxt, R& record, int (*step)(ASN1CTXT*, R*)) {
    const BufferKeeper keeper(ctxt);
    if (step(ctxt, &record) != 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
}

}  // namespace Quillmark::detail
