// The client's first step: a time-stamp request for a file.
//
//     make_request [--hash NAME] [--policy OID] FILE REQUEST
//
// Hashes FILE, and writes the DER of a TimeStampReq (RFC 3161 2.4.1) with a fresh nonce to REQUEST. The
// request goes to the authority as it is, and is kept to check the response.

#include <cstdio>
#include <string>
#include <vector>

#include "support/failure.h"
#include "support/files.h"
#include "support/hash.h"
#include "support/number.h"
#include "tsp/request.h"

namespace {

using namespace Quillmark;
using namespace example;

struct Options {
    const HashAlgorithm* hash = &sha256();
    std::string policy;
    std::string file;
    std::string request;
};

Options parse(const std::vector<std::string>& arguments) {
    Options options;
    std::size_t next = 0;
    for (; next + 1 < arguments.size() && arguments[next].compare(0, 2, "--") == 0; next += 2) {
        if (arguments[next] == "--hash") {
            options.hash = find_hash(arguments[next + 1]);
        } else if (arguments[next] == "--policy") {
            options.policy = arguments[next + 1];
        } else {
            throw Failure("unknown option " + arguments[next]);
        }
    }
    if (options.hash == nullptr) {
        throw Failure("unknown hash; SHA256, SHA384, SHA512, SHA3-256, SHA3-384 and SHA3-512 are known");
    }
    if (arguments.size() - next != 2) {
        throw Failure("usage: make_request [--hash NAME] [--policy OID] FILE REQUEST");
    }
    options.file = arguments[next];
    options.request = arguments[next + 1];
    return options;
}

int make_request(const std::vector<std::string>& arguments) {
    const Options options = parse(arguments);
    // Without parameters (RFC 5754 2), and with the authority's certificates in the token.
    PKI::TSP::CRequest request(ASN1::CAlgorithmIdentifierEx(options.hash->oid),
                               hash_of_file(*options.hash, options.file), true);
    const ASN1::CBigInteger nonce = random_number(8);
    request.put_nonce(&nonce);
    if (!options.policy.empty()) {
        request.put_reqPolicy(options.policy.c_str());
    }
    write_file(options.request, attempt("encoding the request", [&] { return request.encode(); }));
    std::printf("%s: %s of %s, nonce %s\n", options.request.c_str(), options.hash->name, options.file.c_str(),
                nonce.writeToHexString(0).c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return run(argc, argv, make_request);
}
