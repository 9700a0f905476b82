#pragma once

// The fields of a response (RFC 3161 2.4.2).

#include <memory>

#include "tsp/response.h"

namespace Quillmark::PKI::TSP {

class CResponse::Impl {
  public:
    Impl();
    /// `initial` as the status, and no token.
    explicit Impl(const ASN1::CPKIStatusInfo& initial);
    Impl(const Impl& other);
    Impl& operator=(const Impl&) = delete;
    ~Impl();

    ASN1::CPKIStatusInfo status;
    std::unique_ptr<CToken> timeStampToken;
};

}  // namespace Quillmark::PKI::TSP
