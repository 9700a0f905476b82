#pragma once

// The reasons for which an authority refuses (RFC 3161 2.4.2, PKIFailureInfo).

namespace example {

/// The named bits.
enum FailureBit : unsigned int {
    badAlg = 0,
    badRequest = 2,
    badDataFormat = 5,
    timeNotAvailable = 14,
    unacceptedPolicy = 15,
    unacceptedExtension = 16,
    addInfoNotAvailable = 17,
    systemFailure = 25
};

/// The name of a bit, null for one that RFC 3161 does not name.
inline const char* failure_name(unsigned int bit) {
    switch (bit) {
        case badAlg:
            return "badAlg";
        case badRequest:
            return "badRequest";
        case badDataFormat:
            return "badDataFormat";
        case timeNotAvailable:
            return "timeNotAvailable";
        case unacceptedPolicy:
            return "unacceptedPolicy";
        case unacceptedExtension:
            return "unacceptedExtension";
        case addInfoNotAvailable:
            return "addInfoNotAvailable";
        case systemFailure:
            return "systemFailure";
        default:
            return nullptr;
    }
}

}  // namespace example
