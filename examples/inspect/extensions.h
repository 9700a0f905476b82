#pragma once

// Extensions of requests, tokens, certificates and revocation lists (RFC 5280 4.2, 5.2, 5.3).

#include <string>
#include <vector>

#include "asn1/extension.h"
#include "inspect/element.h"
#include "inspect/report.h"
#include "platform/cryptoapi.h"

namespace inspect {

struct ExtensionFields {
    std::string oid;
    bool critical = false;
    Quillmark::CBlob value;  ///< what lies in the OCTET STRING
};

std::vector<ExtensionFields> extensions_of(const Quillmark::ASN1::CExtensions& extensions);
std::vector<ExtensionFields> extensions_of(const CERT_INFO& certificate);
/// Of the SEQUENCE OF Extension. Throws `Malformed`. Unlike `CExtensions::decode` it takes values of known
/// extensions that are not what their standard says.
std::vector<ExtensionFields> extensions_of(const Element& extensions);

/// One fact each in a section of its own; nothing for an empty list.
void describe_extensions(const std::vector<ExtensionFields>& extensions, Section& found);

}  // namespace inspect
