#pragma once

// The one parser of compact date texts, and calendar months.

#include "values/datetime.h"

#include <ctime>
#include <string>

namespace Quillmark {

/// Reads YYYYMMDDHHMMSS and a fraction from the sixteenth character on into a `tm` and `microseconds`. A
/// field that the text is too short for counts as 0. For a point in time year and month are as a `tm` has
/// them, for a `span` as they stand in the text. Throws 0x8007076D for a character that is no digit.
std::tm GeneralizedTimeToTm(const std::string& text, unsigned int& microseconds, bool span);

/// `date` moved by calendar months; a day that the month reached does not have becomes its last. Throws the
/// platform's code for a year beyond its calendar.
CDateTime DateAddMonth(int months, const CDateTime& date);

}  // namespace Quillmark
