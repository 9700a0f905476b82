#pragma once

// The two exchanges, from the body of a request to the body of its answer.

#include <string>

#include "authority/stamper.h"

namespace authority {

/// An answer of HTTP. What became of the request stands in the log, unless the status is other than 200.
struct Answer {
    int status;
    std::string content_type;
    std::string body;
};

/// The time-stamp protocol (RFC 3161): DER of a TimeStampReq, and of a TimeStampResp. A request that is
/// refused is answered by a response that says so. `client` is for the log.
Answer answer_query(const std::string& body, Stamper& stamper, const std::string& client);

/// The Authenticode exchange, in base64: a TimeStampAuthenticodeRequest, and a PKCS #7 message. A request
/// that is refused is answered by the status 400 and a line of text.
Answer answer_authenticode(const std::string& body, Stamper& stamper, const std::string& client);

}  // namespace authority
