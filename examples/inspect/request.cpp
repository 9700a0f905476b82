// Time-stamp requests (RFC 3161 2.4.1).

#include "tsp/request.h"
#include "inspect/describe.h"
#include "inspect/extensions.h"
#include "inspect/grammar.h"
#include "inspect/parts.h"

namespace inspect {

namespace {

using namespace Quillmark;

// Which of the optional elements are there.
Json optional_fields(const PKI::TSP::CRequest& request) {
    Json fields = Json::array();
    if (request.get_reqPolicy() != nullptr) {
        fields.push_back("policy");
    }
    if (request.get_nonce() != nullptr) {
        fields.push_back("nonce" + std::to_string(request.get_nonce()->cbData()));
    }
    if (request.get_certReq()) {
        fields.push_back("certReq");
    }
    if (request.get_extensions() != nullptr) {
        fields.push_back("extensions");
    }
    return fields;
}

void describe(const PKI::TSP::CRequest& request, Section& found) {
    found.fact("Version", "version", request.get_version(), std::to_string(request.get_version()));
    describe_imprint(request.get_hashAlgorithm(), request.get_hashedMessage(), found);
    found.fact("", "fields", optional_fields(request), "");
    if (request.get_reqPolicy() != nullptr) {
        found.text("Policy", "policy", request.get_reqPolicy());
    }
    if (request.get_nonce() != nullptr) {
        found.octets("Nonce", "nonce", *request.get_nonce());
    }
    found.fact("Certificates", "certReq", request.get_certReq(),
               request.get_certReq() ? "asked for" : "not asked for");
    if (request.get_extensions() != nullptr) {
        describe_extensions(extensions_of(*request.get_extensions()), found);
    }
}

}  // namespace

void describe_request(const Octets& octets, Report& report) {
    PKI::TSP::CRequest request;
    try {
        request.decode(to_blob(octets));
    } catch (const CAtlException& exception) {
        report.faults.push_back(locate("request", time_stamp_request(), octets, exception));
        return;
    }
    describe(request, report.found);
}

}  // namespace inspect
