// Authenticode time stamps, and signed messages of any other content (RFC 5652 5.1).

#include "inspect/describe.h"
#include "inspect/grammar.h"
#include "inspect/message.h"
#include "inspect/parts.h"
#include "inspect/text.h"
#include "values/result.h"

namespace inspect {

namespace {

using namespace Quillmark;

// The object layer reads signers that are named by issuer and serial number.
void describe_signer_of(const Message& message, unsigned int index, Section& found) {
    Section& entry = found.entry("Signer " + std::to_string(index + 1), "signerInfos");
    try {
        describe_signer(message.signer(index), entry);
    } catch (const CAtlException& exception) {
        entry.text("Unreadable", "code", result_name(exception));
    }
    describe_attributes("Signed attributes", "signedAttributes", message.signed_attributes(index), entry);
    describe_attributes("Unsigned attributes", "unsignedAttributes", message.unsigned_attributes(index),
                        entry);
}

void describe(const Message& message, Section& found) {
    describe_contents(message, found);
    for (unsigned int i = 0; i < message.signers(); ++i) {
        describe_signer_of(message, i, found);
    }
    for (unsigned int i = 0; i < message.certificates(); ++i) {
        describe_certificate_summary(i + 1, message.certificate(i), found);
    }
}

// RFC 5652 11.3, of the one signer
void describe_signing_time(const Message& message, Section& found) {
    const ASN1::CAttributes attributes = message.signed_attributes(0);
    const ASN1::CAttributes::const_iterator time = attributes.find("1.2.840.113549.1.9.5");
    if (time == attributes.end() || time->size() == 0) {
        throw CAtlException(CRYPT_E_BAD_MSG);
    }
    describe_time("Time", "signingTime", ASN1::CAttrSigningTime(time->begin()->get_value()).get_time(),
                  found);
}

template <class Describe>
void describe_message(const char* what, const Octets& octets, Report& report, Describe&& describe_it) {
    try {
        describe_it(Message(to_blob(octets)));
    } catch (const CAtlException& exception) {
        report.faults.push_back(locate(what, signed_message(), octets, exception));
    }
}

}  // namespace

void describe_stamp(const Octets& octets, Report& report) {
    describe_message("stamp", octets, report, [&](const Message& message) {
        describe_signing_time(message, report.found);
        report.found.octets("What is stamped", "content", message.content());
        describe(message, report.found);
    });
}

void describe_signed_message(const Octets& octets, Report& report) {
    describe_message("signed message", octets, report,
                     [&](const Message& message) { describe(message, report.found); });
}

}  // namespace inspect
