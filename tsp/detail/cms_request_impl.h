#pragma once

// The fields of a request of the Authenticode exchange.

#include <memory>
#include <string>

#include "tsp/cms_request.h"

namespace Quillmark::PKI::TSP {

struct CMSRequestImpl {
    CMSRequestImpl() = default;
    CMSRequestImpl(const CMSRequestImpl& other);
    CMSRequestImpl& operator=(const CMSRequestImpl&) = delete;

    std::string timeStampAlgorithm;
    std::unique_ptr<ASN1::CAttributes> attributes;
    ASN1::CContentInfo contentInfo;
};

}  // namespace Quillmark::PKI::TSP
