#include "reply.h"

#include <algorithm>

namespace example {

using namespace Quillmark;

namespace {

const HashAlgorithm& accepted_hash(const std::string& oid, const Terms& terms) {
    const auto found = std::find_if(terms.hashes.begin(), terms.hashes.end(),
                                    [&](const HashAlgorithm* hash) { return oid == hash->oid; });
    if (found == terms.hashes.end()) {
        throw Refusal{badAlg, "the hash algorithm is not accepted here"};
    }
    return **found;
}

void check_policy(const std::string& policy, const Terms& terms) {
    if (std::find(terms.policies.begin(), terms.policies.end(), policy) == terms.policies.end()) {
        throw Refusal{unacceptedPolicy, "the policy here is " + terms.policies.front()};
    }
}

}  // namespace

PKI::TSP::CRequest decode_request(const CBlob& octets) {
    PKI::TSP::CRequest request;
    try {
        request.decode(octets);
    } catch (const CAtlException& exception) {
        if (exception == CRYPT_E_ASN1_MEMORY) {
            throw;
        }
        throw Refusal{badDataFormat, std::string("the request cannot be decoded: ") + result_name(exception)};
    }
    return request;
}

const HashAlgorithm& check_request(const PKI::TSP::CRequest& request, const Terms& terms) {
    if (request.get_version() != 1) {
        throw Refusal{badRequest, "only version 1 is known here"};
    }
    const HashAlgorithm& hash = accepted_hash(request.get_hashAlgorithm().get_algorithm(), terms);
    if (request.get_hashedMessage().cbData() != hash.octets) {
        throw Refusal{badDataFormat, "the hash has another length than its algorithm gives"};
    }
    if (request.get_reqPolicy() != nullptr) {
        check_policy(request.get_reqPolicy(), terms);
    }
    if (request.get_extensions() != nullptr) {
        throw Refusal{unacceptedExtension, "no extension is known here"};
    }
    return hash;
}

PKI::TSP::CResponse granted(const PKI::TSP::CToken& token) {
    PKI::TSP::CResponse response;
    response.put_status(ASN1::CPKIStatusInfo(ASN1::PKIStatus_granted));
    response.put_timeStampToken(&token);
    return response;
}

PKI::TSP::CResponse rejection(const Refusal& refusal) {
    ASN1::CPKIFailureInfo failure;
    failure.put_bit(refusal.reason, true);
    ASN1::CPKIStatusInfo status(ASN1::PKIStatus_rejection);
    status.put_failureInfo(failure);
    status.put_statusString(
        ASN1::CPKIFreeText(ASN1::CPKIFreeTextString(refusal.text.c_str(), ASN1::CLanguageTagDefaultRead())));
    PKI::TSP::CResponse response;
    response.put_status(status);
    return response;
}

}  // namespace example
