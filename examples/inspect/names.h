#pragma once

// Names of object identifiers, for people: algorithms, contents, attributes, extensions, key purposes.

#include <string>

namespace inspect {

/// Null for an object identifier that is not in the table.
const char* known_name(const std::string& oid);

/// The name, or the object identifier itself.
std::string name_or_oid(const std::string& oid);

/// "name (1.2.3)", or the object identifier alone.
std::string name_and_oid(const std::string& oid);

}  // namespace inspect
