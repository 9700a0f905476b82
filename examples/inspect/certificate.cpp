// Certificates (RFC 5280 4.1).

#include "inspect/certificate_context.h"
#include "inspect/describe.h"
#include "inspect/extensions.h"
#include "inspect/grammar.h"
#include "inspect/names.h"
#include "inspect/parts.h"
#include "inspect/text.h"

namespace inspect {

namespace {

using namespace Quillmark;

constexpr char kRsaEncryption[] = "1.2.840.113549.1.1.1";
constexpr char kRsaPss[] = "1.2.840.113549.1.1.10";

std::size_t significant_bits(const Octets& number) {
    std::size_t leading = 0;
    while (leading < number.size && number.data[leading] == 0) {
        ++leading;
    }
    if (leading == number.size) {
        return 0;
    }
    std::size_t bits = (number.size - leading) * 8;
    for (unsigned char mask = 0x80; (number.data[leading] & mask) == 0; mask >>= 1) {
        --bits;
    }
    return bits;
}

// RSAPublicKey (RFC 8017 A.1.1)
void describe_rsa_key(const CBlob& key, Section& found) {
    Elements members(Elements(octets_of(key)).next());
    const Element modulus = members.next();
    const Element exponent = members.next();
    const std::size_t bits = significant_bits(modulus.content);
    found.fact("Modulus", "bits", bits, std::to_string(bits) + " bits");
    found.octets("Exponent", "exponent", to_blob(exponent.content));
}

void describe_key(const CERT_PUBLIC_KEY_INFO& info, Section& found) {
    const std::string algorithm = info.Algorithm.pszObjId;
    const CBlob parameters(info.Algorithm.Parameters.pbData, info.Algorithm.Parameters.cbData);
    const CBlob key(info.PublicKey.pbData, info.PublicKey.cbData);
    found.fact("Algorithm", "algorithm", name_or_oid(algorithm), name_and_oid(algorithm));
    try {
        if (parameters.cbData() != 0 && parameters.pbData()[0] == kObjectId) {
            const std::string curve = object_id(Elements(octets_of(parameters)).next());
            found.fact("Parameters", "parameters", name_or_oid(curve), name_and_oid(curve));
        }
        if (algorithm == kRsaEncryption || algorithm == kRsaPss) {
            describe_rsa_key(key, found);
        }
    } catch (const Malformed& malformed) {
        found.text("Unreadable", "unreadable", malformed.what());
    }
    found.octets("Key", "key", key);
}

void describe(const CertificateContext& certificate, Section& found) {
    const CERT_INFO& info = certificate.info();
    found.fact("Version", "version", info.dwVersion + 1, std::to_string(info.dwVersion + 1));
    found.octets("Serial number", "serial", certificate.serial_number());
    found.text("Subject", "subject", name_text(certificate.subject()));
    found.text("Issuer", "issuer", name_text(certificate.issuer()));
    describe_time("Valid from", "notBefore", info.NotBefore, found);
    describe_time("Valid until", "notAfter", info.NotAfter, found);
    found.fact("Signed with", "signatureAlgorithm", name_or_oid(info.SignatureAlgorithm.pszObjId),
               name_and_oid(info.SignatureAlgorithm.pszObjId));
    describe_key(info.SubjectPublicKeyInfo, found.section("Public key", "publicKey"));
    describe_extensions(extensions_of(info), found);
}

}  // namespace

void describe_certificate(const Octets& octets, Report& report) {
    try {
        // The service takes a certificate with nothing behind it.
        const CertificateContext context(to_blob(Elements(octets).next().whole));
        describe(context, report.found);
    } catch (const Malformed& malformed) {
        report.faults.push_back({"certificate", malformed.offset(), malformed.what(), ""});
    } catch (const CAtlException& exception) {
        report.faults.push_back(locate("certificate", certificate(), octets, exception));
    }
}

}  // namespace inspect
