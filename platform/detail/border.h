#pragma once

// The border of the service: no exception passes it, and a failing call leaves its code in the last error
// just before it returns. A succeeding call leaves the last error as it was.

#include <new>
#include <stdexcept>

#include "platform/detail/error_code.h"

namespace Quillmark::platform {

/// Runs `body`, which returns an `ErrorCode` or throws, and gives the code of its end.
template <typename Body>
ErrorCode outcome(Body&& body) noexcept {
    try {
        return body();
    } catch (const Failure& failure) {
        return failure.code;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::length_error&) {
        return E_OUTOFMEMORY;  // a container that cannot grow to the size asked for
    } catch (...) {
        return E_FAIL;
    }
}

/// Runs `body` as `outcome` does and answers TRUE, or FALSE with the last error set.
template <typename Body>
BOOL answer(Body&& body) noexcept {
    const ErrorCode code = outcome(body);
    if (code == ERROR_SUCCESS) {
        return 1;
    }
    SetLastError(code);
    return 0;
}

}  // namespace Quillmark::platform
