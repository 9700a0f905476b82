#include "bench/authority_load/client.h"

#include <cstring>
#include <stdexcept>

#include "tsp/response.h"

namespace Quillmark::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";
constexpr std::size_t kSha256Octets = 32;

// Verifying costs more than signing and goes at the expense of the authority on the same machine.
constexpr std::uint64_t kVerifiedOneOf = 100;

void fill(std::mt19937_64& random, std::span<unsigned char> octets) {
    for (unsigned char& octet : octets) {
        octet = static_cast<unsigned char>(random());
    }
}

const PKI::TSP::CToken& granted_token(const PKI::TSP::CResponse& response) {
    const auto status = response.get_status().get_pkiStatus();
    if (status != ASN1::PKIStatus_granted || response.get_timeStampToken() == nullptr) {
        throw std::runtime_error("not granted: status " + std::to_string(status));
    }
    return *response.get_timeStampToken();
}

}  // namespace

Client::Client(const Target& target)
    : target_(target), connection_(target.address, target.port), random_(std::random_device{}()) {}

PKI::TSP::CRequest Client::new_request() {
    unsigned char digest[kSha256Octets];
    fill(random_, digest);
    unsigned char nonce_octets[8];
    fill(random_, nonce_octets);
    // A positive number in as many octets as it takes (X.690 8.3): neither sign bit nor leading zero.
    nonce_octets[0] = static_cast<unsigned char>((nonce_octets[0] & 0x3F) | 0x40);

    PKI::TSP::CRequest request(ASN1::CAlgorithmIdentifierEx(kSha256), CBlob(digest, sizeof digest), true);
    const ASN1::CBigInteger nonce(nonce_octets, sizeof nonce_octets);
    request.put_nonce(&nonce);
    return request;
}

void Client::check(const PKI::TSP::CToken& token, const PKI::TSP::CRequest& request) {
    if (std::strcmp(token.get_hashAlgorithm().get_algorithm(), kSha256) != 0 ||
        token.get_hashedMessage() != request.get_hashedMessage()) {
        throw std::runtime_error("the stamp is for another message");
    }
    if (token.get_nonce() == nullptr || *token.get_nonce() != *request.get_nonce()) {
        throw std::runtime_error("the nonce is not that of the request");
    }
    if (asked_ % kVerifiedOneOf == 0 && !token.verify(target_.certificate)) {
        throw std::runtime_error("the signature does not hold");
    }
}

Stamp Client::ask() {
    const PKI::TSP::CRequest request = new_request();
    const CBlob encoded = request.encode();

    const Clock::time_point begun = Clock::now();
    const auto answer = connection_.post({encoded.pbData(), encoded.cbData()});
    const auto latency = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - begun);

    PKI::TSP::CResponse response;
    response.decode(CBlob(answer.data(), answer.size()));
    const PKI::TSP::CToken& token = granted_token(response);
    check(token, request);
    ++asked_;
    return {token.get_serialNumber().writeToHexString(0).c_str(), latency};
}

}  // namespace Quillmark::bench
