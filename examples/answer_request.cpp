// The authority: answers a time-stamp request.
//
//     answer_request REQUEST RESPONSE CERTIFICATES KEY
//
// CERTIFICATES is a PEM file that begins with the authority's own certificate, KEY its private key: a file,
// or any other name that the platform service opens, such as
// "pkcs11:token=T;object=K?module-path=/usr/lib/module.so&pin-value=1234". Writes the DER of a TimeStampResp
// (RFC 3161 2.4.2) to RESPONSE: a stamp, or a rejection that says why. A request that is refused is answered
// and no failure of this program; trouble of its own is one, though the client gets an answer then too.

#include <cstdio>
#include <string>
#include <vector>

#include "platform/cryptoapi.h"
#include "support/certificate.h"
#include "support/failure.h"
#include "support/files.h"
#include "support/hash.h"
#include "support/key.h"
#include "support/number.h"
#include "support/reply.h"
#include "support/signer.h"

namespace {

using namespace Quillmark;
using namespace example;

// The one policy of this authority, under the arc for examples (X.660).
constexpr char kPolicy[] = "2.999.1";

struct Authority {
    Authority(const std::string& certificate_file, const std::string& key_container)
        : certificates(read_certificates(certificate_file)), key(key_container) {}

    CBlobList certificates;  // its own first
    Key key;
};

// The digest to sign with: most keys go with any, and SHA-256 is understood everywhere.
const char* signing_digest(const CBlob& certificate) {
    const char* bound = bound_digest(Certificate(certificate).key_algorithm());
    return bound != nullptr ? bound : sha256().oid;
}

PKI::TSP::CToken make_token(const PKI::TSP::CRequest& request, const Authority& authority) {
    const CBlob& certificate = authority.certificates.front();
    // Unique (RFC 3161 2.4.2) without a memory of the serial numbers given before: 128 random bits.
    PKI::TSP::CToken token(kPolicy, request.get_hashAlgorithm(), request.get_hashedMessage(),
                           random_number(16), CDateTime::Now(), false);
    const PKI::TSP::CAccuracy accuracy{1, 0, 0};
    token.put_accuracy(&accuracy);
    token.put_nonce(request.get_nonce());

    ASN1::CGeneralName name;
    name.put_directoryName(Certificate(certificate).subject());
    token.put_tsa(&name);

    const ASN1::CAttributes attributes = signing_certificate(certificate, sha256());
    token.put_signedAttributes(&attributes);
    if (request.get_certReq()) {
        token.put_certificates(&authority.certificates);
    }
    token.sign(authority.key.provider(), AT_SIGNATURE, certificate,
               ASN1::CAlgorithmIdentifierEx(signing_digest(certificate)));
    return token;
}

// The answer, and a line that says what it is.
PKI::TSP::CResponse answer(const CBlob& bytes, const Authority& authority, std::string& summary) {
    try {
        const PKI::TSP::CRequest request = decode_request(bytes);
        check_request(request, Terms{all_hashes(), {kPolicy}});
        const PKI::TSP::CToken token = make_token(request, authority);
        summary =
            std::string("granted, serial number ") + token.get_serialNumber().writeToHexString(0).c_str();
        return granted(token);
    } catch (const Refusal& refusal) {
        summary = std::string("rejected (") + failure_name(refusal.reason) + "): " + refusal.text;
        return rejection(refusal);
    }
}

int answer_request(const std::vector<std::string>& arguments) {
    if (arguments.size() != 4) {
        throw Failure("usage: answer_request REQUEST RESPONSE CERTIFICATES KEY");
    }
    const std::string& response_file = arguments[1];
    const CBlob bytes = read_file(arguments[0]);
    try {
        const Authority authority(arguments[2], arguments[3]);
        std::string summary;
        const PKI::TSP::CResponse response =
            attempt("stamping", [&] { return answer(bytes, authority, summary); });
        write_file(response_file, attempt("encoding the response", [&] { return response.encode(); }));
        std::printf("%s: %s\n", response_file.c_str(), summary.c_str());
    } catch (...) {
        write_file(response_file,
                   rejection({systemFailure, "the authority has trouble of its own"}).encode());
        throw;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return run(argc, argv, answer_request);
}
