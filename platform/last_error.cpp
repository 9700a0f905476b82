#include "platform/cryptoapi.h"

namespace {

thread_local DWORD last_error = 0;

}  // namespace

DWORD GetLastError(void) {
    return last_error;
}

void SetLastError(DWORD dwErrCode) {
    last_error = dwErrCode;
}
