#pragma once

// A client of the authority: asks with a fresh nonce, and looks at all that a careful client looks at.

#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "bench/authority_load/http_connection.h"
#include "tsp/request.h"
#include "tsp/token.h"

namespace Quillmark::bench {

struct Target {
    std::string address;
    std::uint16_t port = 0;
    CBlob certificate;  ///< of the authority, in DER
};

/// One stamp that held.
struct Stamp {
    std::string serial_number;            ///< in hexadecimal
    std::chrono::nanoseconds latency{0};  ///< from the first octet of the request to the last of the answer
};

/// A client with a connection of its own.
class Client {
  public:
    explicit Client(const Target& target);

    /// Asks for a stamp. Throws `std::runtime_error` when it is not granted, or is not what was asked for:
    /// imprint, nonce and, of the first and then of every hundredth, the signature.
    Stamp ask();

  private:
    PKI::TSP::CRequest new_request();
    void check(const PKI::TSP::CToken& token, const PKI::TSP::CRequest& request);

    const Target& target_;
    HttpConnection connection_;
    std::mt19937_64 random_;
    std::uint64_t asked_ = 0;
};

}  // namespace Quillmark::bench
