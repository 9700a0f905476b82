#pragma once

// Time-stamp tokens, in a file of their own or in a response.

#include "inspect/element.h"
#include "inspect/report.h"
#include "tsp/token.h"

namespace inspect {

/// All that is in a token that was decoded. `encoded` is what it was decoded from.
void describe_fields(const Quillmark::PKI::TSP::CToken& token, const Quillmark::CBlob& encoded,
                     Section& found);

/// Decodes the token at the front of `octets`. Of one that is refused `found` gets what the message service
/// says.
void read_token(const Octets& octets, Section& found, std::list<Fault>& faults);

}  // namespace inspect
