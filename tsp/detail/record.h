#pragma once

// Filling generated records, and handing blobs to what counts octets in 32 bits.

#include <cstring>
#include <limits>

#include "runtime/context.h"
#include "values/blob.h"
#include "values/result.h"

namespace Quillmark::detail {

/// Makes `record` a flat image on its context's heap: every octet is zeroed, counted context pointers
/// included. A reference held before is not released, so that the record's destructor frees nothing and the
/// context alone owns what the record points to.
template <class Record>
void zero_record(Record& record) {
    std::memset(static_cast<void*>(&record), 0, sizeof record);
}

/// Lets a record point into the message that is decoded on `ctxt` instead of at copies of its strings. For a
/// message that outlives the record and changes neither with it nor before it goes.
inline void lend_message(ASN1CTXT* ctxt) {
    rtCtxtSetFlag(ctxt, RT_F_FASTCOPY);
}

/// The size of `blob` as codecs and the platform service take it. Throws `CRYPT_E_ASN1_INTERNAL` for one that
/// does not fit 31 bits.
inline int checked_length(const CBlob& blob) {
    if (blob.cbData() > static_cast<unsigned long>(std::numeric_limits<int>::max())) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    return static_cast<int>(blob.cbData());
}

}  // namespace Quillmark::detail
