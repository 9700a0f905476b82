#pragma once

// What a file is, by its bytes.

#include <string>

#include "inspect/element.h"

namespace inspect {

enum class Kind {
    kRequest,
    kResponse,
    kToken,
    kAuthenticodeRequest,
    kStamp,
    kCertificate,
    kRevocationList,
    kSignedData,  ///< of another content than a token or a stamp
    kOther        ///< what has only its outer type named
};

struct Recognised {
    Kind kind;
    std::string word;   ///< for programs: "request", "cms", ...
    std::string title;  ///< for people
};

/// Looks at the first elements alone, so that a damaged message is known for what it was. The answer to an
/// Authenticode request is a SignedData of data by one signer with the signed attributes contentType,
/// signingTime and messageDigest and no others; nothing tells it from another message of that shape.
Recognised recognise(const Octets& octets);

}  // namespace inspect
