// The client's last step: checks the response to a request and prints the stamp.
//
//     check_response REQUEST RESPONSE CERTIFICATE
//
// REQUEST is what make_request wrote, CERTIFICATE a PEM file that begins with the certificate of the
// authority. Whether that certificate is to be trusted is not asked here: a chain to a root is the work of
// other tools.

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "asn1/signing_certificate.h"
#include "support/certificate.h"
#include "support/failure.h"
#include "support/failure_info.h"
#include "support/files.h"
#include "support/hash.h"
#include "tsp/request.h"
#include "tsp/response.h"

namespace {

using namespace Quillmark;
using namespace example;

// id-aa-signingCertificateV2 (RFC 5035 3)
constexpr char kSigningCertificateV2[] = "1.2.840.113549.1.9.16.2.47";

std::string reasons(const ASN1::CPKIFailureInfo& failure) {
    std::string names;
    for (unsigned int bit = 0; bit < 32; ++bit) {
        if (failure.get_bit(bit)) {
            const char* name = failure_name(bit);
            names += " " + (name != nullptr ? std::string(name) : "bit " + std::to_string(bit));
        }
    }
    return names;
}

const PKI::TSP::CToken& granted_token(const PKI::TSP::CResponse& response) {
    const ASN1::CPKIStatusInfo& status = response.get_status();
    if (status.get_pkiStatus() != ASN1::PKIStatus_granted &&
        status.get_pkiStatus() != ASN1::PKIStatus_grantedWithMods) {
        std::string message = "not granted (status " + std::to_string(status.get_pkiStatus()) + ")" +
                              reasons(status.get_failureInfo());
        for (const ASN1::CPKIFreeTextString& text : status.get_statusString()) {
            message += ": " + to_utf8(text.get_value());
        }
        throw Failure(message);
    }
    if (response.get_timeStampToken() == nullptr) {
        throw Failure("granted, but there is no token");
    }
    return *response.get_timeStampToken();
}

// RFC 3161 2.2: what the client must find to be what it asked for.
void check_token(const PKI::TSP::CToken& token, const PKI::TSP::CRequest& request) {
    if (std::strcmp(token.get_hashAlgorithm().get_algorithm(), request.get_hashAlgorithm().get_algorithm()) !=
            0 ||
        token.get_hashedMessage() != request.get_hashedMessage()) {
        throw Failure("the stamp is for another message");
    }
    if (request.get_nonce() != nullptr &&
        (token.get_nonce() == nullptr || *token.get_nonce() != *request.get_nonce())) {
        throw Failure("the nonce is not that of the request");
    }
    if (request.get_reqPolicy() != nullptr && std::strcmp(token.get_policy(), request.get_reqPolicy()) != 0) {
        throw Failure(std::string("stamped under the policy ") + token.get_policy() + ", asked for " +
                      request.get_reqPolicy());
    }
}

// RFC 5816 2.2.1: the signer says which certificate it signed with.
bool names_certificate(const PKI::TSP::CToken& token, const CBlob& certificate) {
    const ASN1::CAttributes* attributes = token.get_signedAttributes();
    if (attributes == nullptr) {
        return false;
    }
    const ASN1::CAttributes::const_iterator found = attributes->find(kSigningCertificateV2);
    if (found == attributes->end() || found->size() != 1) {
        return false;
    }
    const ASN1::CAttrSigningCertificateV2 value(found->begin()->get_value());
    if (value.get_certs().empty()) {
        return false;
    }
    const ASN1::CESSCertIDv2& first = value.get_certs().front();
    const HashAlgorithm* hash = find_hash(first.get_hashAlgorithm().get_algorithm());
    return hash != nullptr && first.get_certHash() == hash_of(*hash, certificate);
}

void check_signature(const PKI::TSP::CToken& token, const CBlob& certificate) {
    const bool holds = attempt("verifying the signature", [&] { return token.verify(certificate); });
    if (!holds) {
        throw Failure("the signature does not hold with the given certificate");
    }
    if (!attempt("reading the signing certificate", [&] { return names_certificate(token, certificate); })) {
        throw Failure("the stamp names another certificate than the given one");
    }
}

void print_accuracy(const PKI::TSP::CAccuracy* accuracy) {
    if (accuracy != nullptr) {
        std::printf("Accuracy    %u.%03u%03u s\n", accuracy->seconds, accuracy->millis, accuracy->micros);
    }
}

void print(const PKI::TSP::CToken& token, const CBlob& certificate) {
    const HashAlgorithm* hash = find_hash(token.get_hashAlgorithm().get_algorithm());
    std::printf("Time        %s UTC\n", token.get_genTime().tostring().c_str());
    print_accuracy(token.get_accuracy());
    std::printf("Hash        %s %s\n",
                hash != nullptr ? hash->name : token.get_hashAlgorithm().get_algorithm(),
                token.get_hashedMessage().writeToHexString(0).c_str());
    std::printf("Policy      %s\n", token.get_policy());
    std::printf("Serial      %s\n", token.get_serialNumber().writeToHexString(0).c_str());
    if (token.get_nonce() != nullptr) {
        std::printf("Nonce       %s\n", token.get_nonce()->writeToHexString(0).c_str());
    }
    if (token.get_tsa() != nullptr && token.get_tsa()->get_directoryName() != nullptr) {
        std::printf("Authority   %s\n", name_text(*token.get_tsa()->get_directoryName()).c_str());
    }
    std::printf("Signature   holds, by %s\n", name_text(Certificate(certificate).subject()).c_str());
}

int check_response(const std::vector<std::string>& arguments) {
    if (arguments.size() != 3) {
        throw Failure("usage: check_response REQUEST RESPONSE CERTIFICATE");
    }
    PKI::TSP::CRequest request;
    const CBlob request_bytes = read_file(arguments[0]);
    attempt("decoding " + arguments[0], [&] { request.decode(request_bytes); });
    PKI::TSP::CResponse response;
    const CBlob response_bytes = read_file(arguments[1]);
    attempt("decoding " + arguments[1], [&] { response.decode(response_bytes); });
    const CBlob certificate = read_certificates(arguments[2]).front();

    const PKI::TSP::CToken& token = granted_token(response);
    check_token(token, request);
    check_signature(token, certificate);
    attempt("printing the stamp", [&] { print(token, certificate); });
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return run(argc, argv, check_response);
}
