#pragma once

// Rows of tests/data/asn1data/types.txt: values in DER and the type that each has.

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace Quillmark::test {

struct TypeVector {
    std::string type;
    std::string name;
    std::vector<std::uint8_t> der;
};

inline void PrintTo(const TypeVector& row, std::ostream* out) {
    *out << row.type << " " << row.name;
}

/// Throws `std::runtime_error` for a file that is not of the form: an unknown name, a repeated or a missing
/// one.
std::vector<TypeVector> load_type_vectors(const std::string& file);

}  // namespace Quillmark::test
