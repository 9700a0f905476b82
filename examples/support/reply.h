#pragma once

// What an authority makes of a request, and its two answers (RFC 3161 2.4).

#include <string>
#include <vector>

#include "failure_info.h"
#include "hash.h"
#include "tsp/request.h"
#include "tsp/response.h"

namespace example {

/// Why a request is not stamped; thrown.
struct Refusal {
    FailureBit reason;
    std::string text;
};

/// What is stamped.
struct Terms {
    std::vector<const HashAlgorithm*> hashes;
    std::vector<std::string> policies;  // the first is that of requests which ask for none
};

/// Throws `Refusal` for octets that are no request.
Quillmark::PKI::TSP::CRequest decode_request(const Quillmark::CBlob& octets);

/// Throws `Refusal` for a request that is not to be stamped. Gives its hash algorithm.
const HashAlgorithm& check_request(const Quillmark::PKI::TSP::CRequest& request, const Terms& terms);

Quillmark::PKI::TSP::CResponse granted(const Quillmark::PKI::TSP::CToken& token);
Quillmark::PKI::TSP::CResponse rejection(const Refusal& refusal);

}  // namespace example
