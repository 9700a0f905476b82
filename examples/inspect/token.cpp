// Time-stamp tokens (RFC 3161 2.4.2).

#include "inspect/token.h"

#include "inspect/describe.h"
#include "inspect/extensions.h"
#include "inspect/grammar.h"
#include "inspect/message.h"
#include "inspect/parts.h"
#include "inspect/text.h"

namespace inspect {

namespace {

using namespace Quillmark;
using PKI::TSP::CAccuracy;
using PKI::TSP::CToken;

// An element that is absent is 0.
void describe_accuracy(const CAccuracy* accuracy, Section& found) {
    if (accuracy == nullptr) {
        found.fact("", "accuracy", Json(), "");
        return;
    }
    const struct {
        const char* key;
        const char* unit;
        std::uint32_t value;
    } kParts[] = {
        {"s", " s", accuracy->seconds}, {"ms", " ms", accuracy->millis}, {"us", " us", accuracy->micros}};
    Json parts = Json::object();
    std::string text;
    for (const auto& part : kParts) {
        if (part.value != 0) {
            parts[part.key] = part.value;
            text += (text.empty() ? "" : " ") + std::to_string(part.value) + part.unit;
        }
    }
    found.fact("Accuracy", "accuracy", parts, text.empty() ? "(empty)" : text);
}

void describe_extension_list(const ASN1::CExtensions* extensions, Section& found) {
    if (extensions == nullptr) {
        found.fact("", "ext", Json(), "");
        return;
    }
    Json oids = Json::array();
    for (const ASN1::CExtension& extension : *extensions) {
        oids.push_back(extension.get_extnID());
    }
    found.fact("", "ext", oids, "");
    describe_extensions(extensions_of(*extensions), found);
}

// TSTInfo in its order.
void describe_info(const CToken& token, Section& found) {
    found.fact("Version", "version", token.get_version(), std::to_string(token.get_version()));
    found.text("Policy", "policy", token.get_policy());
    describe_imprint(token.get_hashAlgorithm(), token.get_hashedMessage(), found);
    found.octets("Serial number", "serial", token.get_serialNumber());
    found.fact("Time", "genTime", token.get_genTimeZ(), generalized_time_text(token.get_genTimeZ()));
    describe_accuracy(token.get_accuracy(), found);
    // The octet of TRUE in DER; FALSE is the DEFAULT.
    found.fact("Ordering", "ordering", token.get_ordering() ? Json("ff") : Json(),
               token.get_ordering() ? "by time, whatever the accuracy" : "");
    if (token.get_nonce() != nullptr) {
        found.octets("Nonce", "nonce", *token.get_nonce());
    } else {
        found.fact("", "nonce", Json(), "");
    }
    found.fact("", "tsa", token.get_tsa() != nullptr, "");
    if (token.get_tsa() != nullptr) {
        found.text("Authority", "tsaName", general_name_text(*token.get_tsa()));
    }
    describe_extension_list(token.get_extensions(), found);
}

void describe_message(const CToken& token, const CBlob& encoded, Section& found) {
    Section& contents = found.section("Signed message", "");
    describe_contents(Message(encoded), contents);
    Section& signer = found.section("Signer", "signer");
    describe_signer(token.get_signerInfo(), signer);
    if (token.get_signedAttributes() != nullptr) {
        describe_attributes("Signed attributes", "signedAttributes", *token.get_signedAttributes(), found);
    }
    if (token.get_unsignedAttributes() != nullptr) {
        describe_attributes("Unsigned attributes", "unsignedAttributes", *token.get_unsignedAttributes(),
                            found);
    }
    if (token.get_certificates() != nullptr) {
        unsigned int number = 0;
        for (const CBlob& certificate : *token.get_certificates()) {
            describe_certificate_summary(++number, certificate, found);
        }
    }
}

void describe_refused(const CBlob& encoded, Section& found) {
    try {
        describe_contents(Message(encoded), found);
    } catch (const CAtlException&) {
        return;  // not even that
    }
}

}  // namespace

void describe_fields(const CToken& token, const CBlob& encoded, Section& found) {
    describe_info(token, found);
    describe_message(token, encoded, found);
}

void read_token(const Octets& octets, Section& found, std::list<Fault>& faults) {
    const CBlob encoded = to_blob(octets);
    CToken token;
    try {
        token.decode(encoded);
    } catch (const CAtlException& exception) {
        faults.push_back(locate("token", time_stamp_token(), octets, exception));
        describe_refused(encoded, found);
        return;
    }
    describe_fields(token, encoded, found);
}

void describe_token(const Octets& octets, Report& report) {
    read_token(octets, report.found, report.faults);
}

}  // namespace inspect
