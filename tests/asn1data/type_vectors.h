#pragma once

// Rows of the files types*.txt in tests/data/asn1data: values in DER and the type that each has.

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace Quillmark::test {

struct TypeVector {
    std::string type;
    std::string name;
    std::vector<std::uint8_t> der;
    std::vector<std::uint8_t> ber;  // the same value otherwise, in the rows that have it
};

inline void PrintTo(const TypeVector& row, std::ostream* out) {
    *out << row.type << " " << row.name;
}

/// Throws `std::runtime_error` for a file that is not of the form: an unknown name, a repeated or a missing
/// one.
std::vector<TypeVector> load_type_vectors(const std::string& file);

}  // namespace Quillmark::test
