#pragma once

// Values as text for people.

#include <string>
#include <vector>

#include "asn1/general_name.h"
#include "inspect/element.h"
#include "values/blob.h"
#include "values/datetime.h"

namespace inspect {

/// The text with everything escaped that a terminal would act on or that would deceive the eye: control
/// characters, marks of writing direction, octets that are no UTF-8.
std::string printable(const std::string& text);

/// Lower-case digits in one run.
std::string hex(const Quillmark::CBlob& octets);
/// Upper-case digits in groups of four octets, 32 octets a line.
std::vector<std::string> grouped_hex(const Quillmark::CBlob& octets);
/// The same; of more than 64 octets their number instead.
std::vector<std::string> short_hex(const Quillmark::CBlob& octets);

/// "2026-03-01T12:00:00.25Z" (RFC 3339). Throws `CAtlException` for a time beyond the calendar.
std::string iso_text(const Quillmark::CDateTime& time);
/// "2026-03-01 12:00:00.25 UTC"; throws as well.
std::string time_text(const Quillmark::CDateTime& time);
/// The same for the text of a GeneralizedTime, which stands for itself when it is no time.
std::string generalized_time_text(const std::string& text);

/// A Name in the form of RFC 4514, but with the first element first. `name` holds whole elements in front of
/// which the Name stands. Throws `Malformed`.
std::string name_text(const Octets& name);
/// The same; a name that is malformed is shown by its octets.
std::string name_text(const Quillmark::CBlob& name);

/// A GeneralName with its form in front, "URI:http://...".
std::string general_name_text(const Quillmark::ASN1::CGeneralName& name);
/// The same for its octets; one of a form that the object layer does not know is shown by them. Throws
/// `Malformed`.
std::string general_name_text(const Octets& name);

}  // namespace inspect
