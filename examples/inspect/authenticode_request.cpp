// Requests of the Authenticode exchange: the signature value that is to be stamped, in a ContentInfo (RFC
// 5652 3).

#include "inspect/describe.h"
#include "inspect/grammar.h"
#include "inspect/names.h"
#include "inspect/parts.h"
#include "tsp/cms_request.h"

namespace inspect {

namespace {

using namespace Quillmark;
using PKI::TSP::CMSRequest;

constexpr char kData[] = "1.2.840.113549.1.7.1";  // id-data, RFC 5652 4

// What is to be stamped: of data the octets, of another content the whole element.
CBlob stamped(const ASN1::CContentInfo& content) {
    const bool data = std::string(content.get_contentType()) == kData;
    return data ? ASN1::fromOctetString(content.get_content()) : content.get_content();
}

void describe(const CMSRequest& request, Section& found) {
    const ASN1::CContentInfo& content = request.get_contentInfo();
    found.fact("Algorithm", "timeStampAlgorithm", request.get_timeStampAlgorithm(),
               name_and_oid(request.get_timeStampAlgorithm()));
    found.fact("Content", "contentType", content.get_contentType(), name_and_oid(content.get_contentType()));
    found.octets("To be stamped", "content", stamped(content));
    if (request.get_attributes() != nullptr) {
        describe_attributes("Attributes", "attributes", *request.get_attributes(), found);
    }
}

}  // namespace

void describe_authenticode_request(const Octets& octets, Report& report) {
    CMSRequest request;
    try {
        request.decode(to_blob(octets));
    } catch (const CAtlException& exception) {
        report.faults.push_back(locate("request", authenticode_request(), octets, exception));
        return;
    }
    describe(request, report.found);
}

}  // namespace inspect
