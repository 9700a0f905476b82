#pragma once

// What the operator reads: a line on standard output for each stamp, a line on standard error for each
// request that is refused. Lines are whole, whichever threads write them, and written at once.

#include <string>

#include "values/datetime.h"

namespace authority {

/// As "2026-01-31T12:00:00.000001Z" (RFC 3339).
std::string text_of(const Quillmark::CDateTime& time);

/// `line` on standard output.
void log_stamp(const std::string& line);

/// "authority: TIME " and `line` on standard error.
void log_trouble(const std::string& line);

}  // namespace authority
