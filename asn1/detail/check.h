#pragma once

// How the failures below this floor become exceptions.

#include "values/result.h"

namespace Quillmark::detail {

/// An encoder or decoder refused: a negative status. Returns the status of a success.
inline int check_codec(int status) {
    if (status < 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    return status;
}

/// A context's heap is exhausted when there is no block. Returns the block.
template <class T>
T* check_allocation(T* block) {
    if (block == nullptr) {
        throw CAtlException(CRYPT_E_ASN1_MEMORY);
    }
    return block;
}

/// A `rtCopy` function came back with 0: the heap of its context is exhausted.
inline void check_copied(int result) {
    if (result == 0) {
        throw CAtlException(CRYPT_E_ASN1_MEMORY);
    }
}

/// A value does not fit its type.
inline void check_argument(bool acceptable) {
    if (!acceptable) {
        throw CAtlException(E_INVALIDARG);
    }
}

}  // namespace Quillmark::detail
