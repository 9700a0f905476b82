#pragma once

// The fields of a request, and their way to and from TimeStampReq (RFC 3161 2.4.1).

#include <cstdint>
#include <memory>
#include <string>

#include "asn1data/records.h"
#include "tsp/request.h"

namespace Quillmark::PKI::TSP {

class QUILLMARK_API CRequest::Impl {
  public:
    Impl();
    Impl(const Impl& other);
    Impl& operator=(const Impl&) = delete;
    ~Impl();

    /// Fills `record` anew, on the heap of `ctxt`, which alone owns what the record points to.
    void fillRequest(asn1data::ASN1T_TimeStampReq& record, ASN1CTXT* ctxt);
    /// Writes over the fields; optional ones that `record` lacks stay as they are.
    void readRequest(asn1data::ASN1T_TimeStampReq& record);

    std::uint32_t version = 1;
    ASN1::CAlgorithmIdentifierEx hashAlgorithm;
    CBlob hashedMessage;
    bool certReq = false;
    std::unique_ptr<std::string> reqPolicy;
    std::unique_ptr<ASN1::CBigInteger> nonce;
    std::unique_ptr<ASN1::CExtensions> extensions;
    std::wstring comment;  // Intended: copies carry it along, no operation reads or sets it
};

}  // namespace Quillmark::PKI::TSP
