#include <cstdio>

#include "runtime/context.h"

extern "C" {

int rtErrSetData(ASN1ErrInfo* errInfo, int status) {
    if (errInfo->status == RT_OK) {
        errInfo->status = status;
    }
    return status;
}

int rtErrReset(ASN1ErrInfo* errInfo) {
    return errInfo->status = RT_OK;
}

int rtErrCopyData(const ASN1ErrInfo* src, ASN1ErrInfo* dst) {
    return dst->status = src->status;
}

void rtErrPrint(const ASN1ErrInfo* errInfo) {
    std::printf("ASN.1 ERROR: Status %d\n", errInfo->status);
}

int rtErrAddIntParm(ASN1ErrInfo*, int) {
    return 1;
}

int rtErrAddStrParm(ASN1ErrInfo*, const char*) {
    return 1;
}

const char* rtErrGetText(void*) {
    return "";
}

}  // extern "C"
