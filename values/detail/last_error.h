#pragma once

// The last-error rule: how a failed call of the platform service becomes an exception.

#include "platform/cryptoapi.h"
#include "values/result.h"

namespace Quillmark::detail {

/// The result that stands for the last error of this thread. A last error of 0 gives 0.
inline HRESULT last_error_result() {
    return HRESULT_FROM_WIN32(GetLastError());
}

/// Throws what the platform call that has just failed left as its last error.
[[noreturn]] inline void throw_last_error() {
    throw CAtlException(last_error_result());
}

/// Throws the last error unless the platform call `succeeded`.
inline void check_call(BOOL succeeded) {
    if (succeeded == 0) {
        throw_last_error();
    }
}

}  // namespace Quillmark::detail
