// Certificate revocation lists (RFC 5280 5.1). The object layer has no class for the list as a whole, so the
// list is walked and its parts are given to their classes.

#include "asn1/algorithm_identifier.h"
#include "asn1/extension_value.h"
#include "inspect/describe.h"
#include "inspect/extensions.h"
#include "inspect/grammar.h"
#include "inspect/names.h"
#include "inspect/parts.h"
#include "inspect/text.h"
#include "values/datetime.h"
#include "values/result.h"

namespace inspect {

namespace {

using namespace Quillmark;

bool at_time(const Elements& elements) {
    return elements.next_is(kUtcTime) || elements.next_is(kGeneralizedTime);
}

CDateTime read_time(const Element& element) {
    ASN1::CTimeChoice time;
    time.decode(to_blob(element.whole));
    return *time.get_time();
}

void describe_entry(const Element& revoked, Section& list) {
    Elements members(revoked);
    Section& entry = list.entry("Certificate", "revoked");
    entry.octets("Serial number", "serial", to_blob(members.next().content));
    describe_time("Revoked", "revocationDate", read_time(members.next()), entry);
    if (!members.at_end()) {
        describe_extensions(extensions_of(members.next()), entry);
    }
}

void describe_entries(const Element& list, Section& found) {
    std::size_t count = 0;
    for (Elements entries(list); !entries.at_end(); ++count) {
        entries.next();
    }
    found.fact("Revoked", "revokedCount", count, std::to_string(count));
    Section& section = found.section("Revoked certificates", "");
    for (Elements entries(list); !entries.at_end();) {
        describe_entry(entries.next(), section);
    }
}

void describe(const Element& message, Section& found) {
    Elements fields(Elements(message).next());
    unsigned int version = 1;
    if (fields.next_is(kInteger)) {
        const Element number = fields.next();
        version = number.content.size == 1 ? number.content.data[0] + 1u : 0;
    }
    found.fact("Version", "version", version, std::to_string(version));
    ASN1::CAlgorithmIdentifier algorithm;
    algorithm.decode(to_blob(fields.next().whole));
    found.fact("Signed with", "signatureAlgorithm", name_or_oid(algorithm.get_algorithm()),
               name_and_oid(algorithm.get_algorithm()));
    found.text("Issuer", "issuer", name_text(fields.next().whole));
    describe_time("This update", "thisUpdate", read_time(fields.next()), found);
    if (at_time(fields)) {
        describe_time("Next update", "nextUpdate", read_time(fields.next()), found);
    }
    if (fields.next_is(kSequence)) {
        describe_entries(fields.next(), found);
    } else {
        found.fact("Revoked", "revokedCount", 0, "0");
    }
    if (fields.next_is(kContext0)) {
        describe_extensions(extensions_of(Elements(fields.next()).next()), found);
    }
}

}  // namespace

void describe_revocation_list(const Octets& octets, Report& report) {
    try {
        check(certificate_list(), octets);
        describe(Elements(octets).next(), report.found);
    } catch (const Malformed& malformed) {
        report.faults.push_back({"certificate revocation list", malformed.offset(), malformed.what(), ""});
    } catch (const CAtlException& exception) {
        report.faults.push_back(
            {"certificate revocation list", octets.offset, "a part is refused", result_name(exception)});
    }
}

}  // namespace inspect
