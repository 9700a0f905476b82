#pragma once

// What the generated control classes share: binding a buffer, and copies of their records.

#include <type_traits>

#include "runtime/context.h"
#include "runtime/detail/record_memory.h"
#include "runtime/message_buffer.h"

namespace Quillmark::detail {

inline ASN1Context& new_context() {
    return *new ASN1Context;
}

/// Binds a control object to a buffer that begins a message.
ASN1CTXT* start_message(ASN1CType& control, ASN1MessageBufferIF& buffer);

/// Lets a copied record keep the context that its parts lie on.
template <typename Record>
void keep_context(ASN1Context& context, Record& record) {
    if constexpr (std::is_base_of_v<ASN1TPDU, Record>) {
        if (record.mpContext.isNull()) {
            record.setContext(&context);
        }
    }
}

/// The copy that a control object works on: it lies on the heap of the context that the object keeps.
template <typename Record>
Record& copy_for_control(ASN1Context& context, Record& src, void (*copy)(ASN1CTXT*, Record*, Record*)) {
    Record* dst = make_record_or_throw<Record>(&context);
    copy(&context, &src, dst);
    return *dst;
}

template <typename Record>
Record* copy_record(ASN1Context& context, Record& src, Record* dst,
                    void (*copy)(ASN1CTXT*, Record*, Record*)) {
    if (dst == &src) {
        return dst;
    }
    if (dst == nullptr) {
        dst = make_record_or_throw<Record>(&context);
    }
    copy(&context, &src, dst);
    keep_context(context, *dst);
    return dst;
}

/// As `copy_record`, into a record made with `new`. By hand, because every source that includes the control
/// classes would compile one `std::unique_ptr` for each type.
template <typename Record>
Record* new_copy(ASN1Context& context, Record& src, void (*copy)(ASN1CTXT*, Record*, Record*)) {
    auto* dst = new Record();
    try {
        copy(&context, &src, dst);
    } catch (...) {
        delete dst;
        throw;
    }
    keep_context(context, *dst);
    return dst;
}

}  // namespace Quillmark::detail
