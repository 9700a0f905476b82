#pragma once

// Parts that several kinds of message have.

#include <string>

#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/signer_info.h"
#include "inspect/message.h"
#include "inspect/report.h"
#include "platform/cryptoapi.h"
#include "values/datetime.h"

namespace inspect {

/// The hash algorithm and the hash.
void describe_imprint(const Quillmark::ASN1::CAlgorithmIdentifier& algorithm, const Quillmark::CBlob& hash,
                      Section& found);

/// Issuer, serial number, algorithms and signature.
void describe_signer(const Quillmark::ASN1::CSignerInfo& signer, Section& found);

/// The attributes as entries of `key`; nothing for an empty list.
void describe_attributes(const std::string& label, const std::string& key,
                         const Quillmark::ASN1::CAttributes& attributes, Section& found);

/// Whose a certificate of a message is, as an entry of "certificates".
void describe_certificate_summary(unsigned int number, const Quillmark::CBlob& der, Section& found);

/// The counts of signers, certificates and revocation lists, and the type of the content.
void describe_contents(const Message& message, Section& found);

void describe_time(const std::string& label, const std::string& key, const Quillmark::CDateTime& time,
                   Section& found);
/// The same of a certificate, whose times are zero when they cannot be read.
void describe_time(const std::string& label, const std::string& key, const FILETIME& time, Section& found);

}  // namespace inspect
