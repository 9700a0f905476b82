#include "inspect/parts.h"

#include "asn1/signing_certificate.h"
#include "inspect/certificate_context.h"
#include "inspect/names.h"
#include "inspect/text.h"
#include "values/datetime.h"
#include "values/result.h"

namespace inspect {

namespace {

using namespace Quillmark;

Lines content_type(const CBlob& value) {
    return {name_and_oid(ASN1::CAttrContentType(value).get_contentType())};
}

Lines message_digest(const CBlob& value) {
    return grouped_hex(ASN1::CAttrMessageDigest(value).get_messageDigest());
}

Lines signing_time(const CBlob& value) {
    return {time_text(ASN1::CAttrSigningTime(value).get_time())};
}

// The hashes of the certificates that may have signed (RFC 5035 5.4).
Lines signing_certificate(const CBlob& value) {
    const ASN1::CAttrSigningCertificate attribute(value);
    Lines lines;
    for (const ASN1::CESSCertID& certificate : attribute.get_certs()) {
        lines.push_back("sha1 " + hex(certificate.get_certHash()));
    }
    return lines;
}

Lines signing_certificate_v2(const CBlob& value) {
    const ASN1::CAttrSigningCertificateV2 attribute(value);
    Lines lines;
    for (const ASN1::CESSCertIDv2& certificate : attribute.get_certs()) {
        const std::string algorithm = certificate.get_hashAlgorithm().get_algorithm();
        lines.push_back(name_or_oid(algorithm) + " " + hex(certificate.get_certHash()));
    }
    return lines;
}

struct Reader {
    const char* oid;
    Lines (*lines)(const CBlob& value);
};

const Reader kReaders[] = {
    {"1.2.840.113549.1.9.3", content_type},
    {"1.2.840.113549.1.9.4", message_digest},
    {"1.2.840.113549.1.9.5", signing_time},
    {"1.2.840.113549.1.9.16.2.12", signing_certificate},
    {"1.2.840.113549.1.9.16.2.47", signing_certificate_v2},
};

// None for an unknown attribute, and for a value that is not what its standard says.
Lines known_lines(const std::string& oid, const CBlob& value) {
    for (const Reader& reader : kReaders) {
        if (oid == reader.oid) {
            try {
                return reader.lines(value);
            } catch (const CAtlException&) {
                return {};
            }
        }
    }
    return {};
}

void describe_attribute(const std::string& key, const ASN1::CAttribute& attribute, Section& found) {
    Json values = Json::array();
    Json texts = Json::array();
    Lines shown;
    for (const ASN1::CAttrValue& value : attribute) {
        values.push_back(hex(value.get_value()));
        Lines lines = known_lines(attribute.get_oid(), value.get_value());
        for (const std::string& line : lines) {
            texts.push_back(line);
        }
        if (lines.empty()) {
            lines = short_hex(value.get_value());
        }
        shown.insert(shown.end(), lines.begin(), lines.end());
    }
    Section& entry = found.entry("", key);
    entry.fact(name_or_oid(attribute.get_oid()), "", Json(), shown.empty() ? Lines{"(no value)"} : shown);
    entry.fact("", "oid", attribute.get_oid(), "");
    entry.fact("", "values", values, "");
    if (!texts.empty()) {
        entry.fact("", "texts", texts, "");
    }
}

}  // namespace

void describe_imprint(const ASN1::CAlgorithmIdentifier& algorithm, const CBlob& hash, Section& found) {
    found.fact("Hash algorithm", "hash", name_or_oid(algorithm.get_algorithm()),
               name_and_oid(algorithm.get_algorithm()));
    found.octets("Hash", "imprint", hash);
}

void describe_signer(const ASN1::CSignerInfo& signer, Section& found) {
    found.text("Issuer", "issuer", name_text(signer.get_issuer()));
    found.octets("Serial number", "serial", signer.get_serialNumber());
    found.fact("Digest", "digestAlgorithm", name_or_oid(signer.get_digestAlgorithm().get_algorithm()),
               name_and_oid(signer.get_digestAlgorithm().get_algorithm()));
    found.fact("Algorithm", "signatureAlgorithm",
               name_or_oid(signer.get_signatureAlgorithm().get_algorithm()),
               name_and_oid(signer.get_signatureAlgorithm().get_algorithm()));
    found.octets("Signature", "signature", signer.get_signature());
}

void describe_attributes(const std::string& label, const std::string& key,
                         const ASN1::CAttributes& attributes, Section& found) {
    if (attributes.empty()) {
        return;
    }
    Section& section = found.section(label, "");
    for (const ASN1::CAttribute& attribute : attributes) {
        describe_attribute(key, attribute, section);
    }
}

void describe_certificate_summary(unsigned int number, const CBlob& der, Section& found) {
    Section& entry = found.entry("Certificate " + std::to_string(number), "certificates");
    try {
        const CertificateContext certificate(der);
        entry.text("Subject", "subject", name_text(certificate.subject()));
        entry.text("Issuer", "issuer", name_text(certificate.issuer()));
        entry.octets("Serial number", "serial", certificate.serial_number());
        describe_time("Valid from", "notBefore", certificate.info().NotBefore, entry);
        describe_time("Valid until", "notAfter", certificate.info().NotAfter, entry);
    } catch (const CAtlException& exception) {
        entry.text("Unreadable", "code", result_name(exception));
    }
}

void describe_contents(const Message& message, Section& found) {
    found.fact("Content", "eContentType", message.content_type(), name_and_oid(message.content_type()));
    found.fact("Certificates", "certs", message.certificates(), std::to_string(message.certificates()));
    found.fact("Revocation lists", "crls", message.revocation_lists(),
               std::to_string(message.revocation_lists()));
    found.fact("Signers", "signers", message.signers(), std::to_string(message.signers()));
}

void describe_time(const std::string& label, const std::string& key, const CDateTime& time, Section& found) {
    found.fact(label, key, iso_text(time), time_text(time));
}

void describe_time(const std::string& label, const std::string& key, const FILETIME& time, Section& found) {
    if (time.dwLowDateTime == 0 && time.dwHighDateTime == 0) {
        found.fact(label, key, Json(), "(unreadable)");
        return;
    }
    describe_time(label, key, CDateTime(time), found);
}

}  // namespace inspect
