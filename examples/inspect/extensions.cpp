#include "inspect/extensions.h"

#include "asn1/access_description.h"
#include "asn1/distribution_point.h"
#include "asn1/extension_value.h"
#include "asn1/policy_information.h"
#include "inspect/names.h"
#include "inspect/text.h"
#include "values/result.h"

namespace inspect {

namespace {

using namespace Quillmark;

void append(std::string& list, const std::string& text) {
    list += (list.empty() ? "" : ", ") + text;
}

Element value_of(const CBlob& value) {
    return Elements(octets_of(value)).next();
}

std::string number_text(const Element& number) {
    return "0x" + hex(to_blob(number.content));
}

// Names of the bits of a BIT STRING, the first being bit 0.
template <std::size_t count>
std::string bit_names(const Octets& bits, const char* const (&names)[count]) {
    std::string text;
    for (std::size_t bit = 0; bit < count && 1 + bit / 8 < bits.size; ++bit) {
        if ((bits.data[1 + bit / 8] & 0x80u >> bit % 8) != 0) {
            append(text, names[bit]);
        }
    }
    return text.empty() ? "none" : text;
}

std::string key_usage(const CBlob& value) {
    static const char* const kNames[] = {"digitalSignature", "nonRepudiation", "keyEncipherment",
                                         "dataEncipherment", "keyAgreement",   "keyCertSign",
                                         "cRLSign",          "encipherOnly",   "decipherOnly"};
    return bit_names(value_of(value).content, kNames);
}

std::string path_length(const Element& number) {
    const bool small = number.content.size == 1 && number.content.data[0] < 0x80;
    return small ? std::to_string(number.content.data[0]) : number_text(number);
}

std::string basic_constraints(const CBlob& value) {
    std::string text = "no CA";
    for (Elements members(value_of(value)); !members.at_end();) {
        const Element member = members.next();
        if (member.tag == kBoolean && member.content.size == 1 && member.content.data[0] != 0) {
            text = "CA";
        } else if (member.tag == kInteger) {
            append(text, "path length " + path_length(member));
        }
    }
    return text;
}

std::string purposes(const CBlob& value) {
    std::string text;
    for (Elements oids(value_of(value)); !oids.at_end();) {
        append(text, name_or_oid(object_id(oids.next())));
    }
    return text;
}

std::string policies(const CBlob& value) {
    std::string text;
    for (Elements policies(value_of(value)); !policies.at_end();) {
        ASN1::CPolicyInformation policy;
        policy.decode(to_blob(policies.next().whole));
        append(text, policy.get_policyIdentifier());
    }
    return text;
}

std::string key_identifier(const CBlob& value) {
    return hex(to_blob(value_of(value).content));
}

// keyIdentifier [0], authorityCertIssuer [1], authorityCertSerialNumber [2]
std::string authority_key_identifier(const CBlob& value) {
    static const char* const kNames[] = {"key ", "issuer ", "serial "};
    std::string text;
    for (Elements members(value_of(value)); !members.at_end();) {
        const Element member = members.next();
        const unsigned int number = member.tag & 0x1F;
        if (number == 1) {
            append(text, kNames[number] + general_name_text(member.content));
        } else if (number < 3) {
            append(text, kNames[number] + hex(to_blob(member.content)));
        }
    }
    return text;
}

std::string general_names(const CBlob& value) {
    std::string text;
    for (Elements names(value_of(value)); !names.at_end();) {
        append(text, general_name_text(names.next().whole));
    }
    return text;
}

std::string access_descriptions(const CBlob& value) {
    ASN1::CAuthorityInfoAccessSyntax descriptions;
    descriptions.decode(value);
    std::string text;
    for (const ASN1::CAccessDescription& description : descriptions) {
        append(text, name_or_oid(description.get_accessMethod()) + " " +
                         general_name_text(description.get_accessLocation()));
    }
    return text;
}

std::string distribution_point(const ASN1::CDistributionPoint& point) {
    const ASN1::CDistributionPointName* name = point.get_distributionPoint();
    if (name == nullptr || name->get_fullName() == nullptr) {
        return "(a point without full name)";
    }
    std::string text;
    for (const ASN1::CGeneralName& full_name : *name->get_fullName()) {
        append(text, general_name_text(full_name));
    }
    return text;
}

std::string distribution_points(const CBlob& value) {
    ASN1::CCRLDistPointsSyntax points;
    points.decode(value);
    std::string text;
    for (const ASN1::CDistributionPoint& point : points) {
        append(text, distribution_point(point));
    }
    return text;
}

std::string statements(const CBlob& value) {
    std::string text;
    for (Elements statements(value_of(value)); !statements.at_end();) {
        append(text, name_or_oid(object_id(Elements(statements.next()).next())));
    }
    return text;
}

std::string number(const CBlob& value) {
    return number_text(value_of(value));
}

// CRLReason has no 7 (RFC 5280 5.3.1).
std::string reason(const CBlob& value) {
    static const char* const kNames[] = {
        "unspecified",   "keyCompromise",        "cACompromise",    "affiliationChanged",
        "superseded",    "cessationOfOperation", "certificateHold", "7",
        "removeFromCRL", "privilegeWithdrawn",   "aACompromise"};
    const Element code = value_of(value);
    const std::size_t number = code.content.size == 1 ? code.content.data[0] : sizeof kNames;
    return number < sizeof kNames / sizeof *kNames ? kNames[number] : number_text(code);
}

std::string invalidity_date(const CBlob& value) {
    return time_text(ASN1::CExtInvalidityDate(value).get_invalidityDate());
}

struct Reader {
    const char* oid;
    std::string (*text)(const CBlob& value);
};

const Reader kReaders[] = {
    {"2.5.29.14", key_identifier},
    {"2.5.29.15", key_usage},
    {"2.5.29.17", general_names},
    {"2.5.29.18", general_names},
    {"2.5.29.19", basic_constraints},
    {"2.5.29.20", number},
    {"2.5.29.21", reason},
    {"2.5.29.24", invalidity_date},
    {"2.5.29.27", number},
    {"2.5.29.29", general_names},
    {"2.5.29.31", distribution_points},
    {"2.5.29.32", policies},
    {"2.5.29.35", authority_key_identifier},
    {"2.5.29.37", purposes},
    {"2.5.29.46", distribution_points},
    {"1.3.6.1.5.5.7.1.1", access_descriptions},
    {"1.3.6.1.5.5.7.1.3", statements},
    {"1.3.6.1.5.5.7.1.11", access_descriptions},
};

// Empty for an extension that is not in the table, and for a value that is not what its standard says.
std::string known_text(const ExtensionFields& extension) {
    for (const Reader& reader : kReaders) {
        if (extension.oid == reader.oid) {
            try {
                return reader.text(extension.value);
            } catch (const Malformed&) {
                return "";
            } catch (const CAtlException&) {
                return "";
            }
        }
    }
    return "";
}

void describe(const ExtensionFields& extension, Section& found) {
    const std::string text = known_text(extension);
    const std::string label = name_or_oid(extension.oid) + (extension.critical ? " (critical)" : "");
    Section& entry = found.entry("", "extensions");
    entry.fact(label, "", Json(), text.empty() ? short_hex(extension.value) : Lines{text});
    entry.fact("", "oid", extension.oid, "");
    entry.fact("", "critical", extension.critical, "");
    entry.fact("", "value", hex(extension.value), "");
    if (!text.empty()) {
        entry.fact("", "text", text, "");
    }
}

}  // namespace

std::vector<ExtensionFields> extensions_of(const ASN1::CExtensions& extensions) {
    std::vector<ExtensionFields> fields;
    for (const ASN1::CExtension& extension : extensions) {
        fields.push_back({extension.get_extnID(), extension.get_critical(), extension.get_extnValue()});
    }
    return fields;
}

std::vector<ExtensionFields> extensions_of(const CERT_INFO& certificate) {
    std::vector<ExtensionFields> fields;
    for (DWORD i = 0; i < certificate.cExtension; ++i) {
        const CERT_EXTENSION& extension = certificate.rgExtension[i];
        fields.push_back({extension.pszObjId, extension.fCritical != 0,
                          CBlob(extension.Value.pbData, extension.Value.cbData)});
    }
    return fields;
}

std::vector<ExtensionFields> extensions_of(const Element& extensions) {
    std::vector<ExtensionFields> fields;
    for (Elements list(extensions); !list.at_end();) {
        Elements members(list.next());
        ExtensionFields extension;
        extension.oid = object_id(members.next());
        if (members.next_is(kBoolean)) {
            const Element critical = members.next();
            extension.critical = critical.content.size != 0 && critical.content.data[0] != 0;
        }
        extension.value = to_blob(members.next().content);
        fields.push_back(extension);
    }
    return fields;
}

void describe_extensions(const std::vector<ExtensionFields>& extensions, Section& found) {
    if (extensions.empty()) {
        return;
    }
    Section& section = found.section("Extensions", "");
    for (const ExtensionFields& extension : extensions) {
        describe(extension, section);
    }
}

}  // namespace inspect
