// Time-stamp responses (RFC 3161 2.4.2).

#include "tsp/response.h"
#include "inspect/describe.h"
#include "inspect/grammar.h"
#include "inspect/text.h"
#include "inspect/token.h"
#include "support/certificate.h"
#include "support/failure.h"
#include "support/failure_info.h"

namespace inspect {

namespace {

using namespace Quillmark;
using PKI::TSP::CResponse;

const char* status_name(unsigned int status) {
    static const char* const kNames[] = {
        "granted",           "granted with modifications", "rejection",
        "waiting",           "revocation warning",         "revocation notification",
        "key update warning"};
    return status < sizeof kNames / sizeof *kNames ? kNames[status] : "unknown";
}

void describe_failure(const ASN1::CPKIFailureInfo& failure, Section& found) {
    Json names = Json::array();
    std::string text;
    for (unsigned int bit = 0; bit < 32; ++bit) {
        if (failure.get_bit(bit)) {
            const char* known = example::failure_name(bit);
            const std::string name = known != nullptr ? known : "bit " + std::to_string(bit);
            names.push_back(name);
            text += (text.empty() ? "" : ", ") + name;
        }
    }
    if (!names.empty()) {
        found.fact("Reasons", "failInfo", names, text);
    }
}

void describe_status(const ASN1::CPKIStatusInfo& status, Section& found) {
    const unsigned int number = status.get_pkiStatus();
    found.fact("Status", "status", number, std::to_string(number) + " (" + status_name(number) + ")");
    Json texts = Json::array();
    for (const ASN1::CPKIFreeTextString& string : status.get_statusString()) {
        const std::string text = example::to_utf8(string.get_value());
        found.fact("Text", "", Json(), text.empty() ? "(empty)" : text);
        texts.push_back(text);
    }
    if (!texts.empty()) {
        found.fact("", "statusString", texts, "");
    }
    describe_failure(status.get_failureInfo(), found);
}

void describe(const CResponse& response, Section& found) {
    describe_status(response.get_status(), found);
    const PKI::TSP::CToken* token = response.get_timeStampToken();
    if (token != nullptr) {
        describe_fields(*token, token->encode(), found.section("Token", ""));
    }
}

// The parts of a response that is refused as a whole.
void describe_parts(const Octets& octets, Report& report) {
    const std::vector<Element> message = outline(octets, 1);
    const std::vector<Element> parts = outline(message.front().content, 2);
    try {
        ASN1::CPKIStatusInfo status;
        status.decode(to_blob(parts.front().whole));
        describe_status(status, report.found);
    } catch (const CAtlException&) {
        return;  // that is what the response was refused for
    }
    if (parts.size() == 2) {
        read_token(parts[1].whole, report.found.section("Token, read by itself", ""), report.faults);
    }
}

}  // namespace

void describe_response(const Octets& octets, Report& report) {
    CResponse response;
    try {
        response.decode(to_blob(octets));
    } catch (const CAtlException& exception) {
        report.faults.push_back(locate("response", time_stamp_response(), octets, exception));
        describe_parts(octets, report);
        return;
    }
    describe(response, report.found);
}

}  // namespace inspect
