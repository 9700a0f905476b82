#pragma once

// What is in a message, one function for each kind. Each takes the octets of the file from the first element
// on and writes facts into `report.found`, faults into `report.faults`. What the library refuses is a fault
// and no exception.

#include "inspect/element.h"
#include "inspect/report.h"

namespace inspect {

void describe_request(const Octets& octets, Report& report);
/// Of a response that is refused, status and token are read on their own.
void describe_response(const Octets& octets, Report& report);
void describe_token(const Octets& octets, Report& report);
/// The request of the Authenticode exchange, which is older than RFC 3161.
void describe_authenticode_request(const Octets& octets, Report& report);
/// The answer of the Authenticode exchange: a SignedData whose content is what was stamped.
void describe_stamp(const Octets& octets, Report& report);
/// Any other SignedData.
void describe_signed_message(const Octets& octets, Report& report);
void describe_certificate(const Octets& octets, Report& report);
void describe_revocation_list(const Octets& octets, Report& report);
/// Something that has only its outer type named: its elements must fit in each other.
void describe_other(const Octets& octets, Report& report);

}  // namespace inspect
