#include "tests/asn1data/type_vectors.h"

#include <fstream>
#include <map>
#include <stdexcept>

#include "tests/support/hex.h"

namespace Quillmark::test {

namespace {

using Fields = std::map<std::string, std::string>;

TypeVector row_of(Fields& fields) {
    const std::size_t wanted = fields.contains("Ber") ? 4 : 3;
    if (fields.size() != wanted || !fields.contains("Type") || !fields.contains("Name") ||
        !fields.contains("Der")) {
        throw std::runtime_error("a row needs Type, Name and Der, each once, and may have Ber");
    }
    TypeVector row{fields["Type"], fields["Name"], from_hex(fields["Der"]), from_hex(fields["Ber"])};
    fields.clear();
    return row;
}

}  // namespace

std::vector<TypeVector> load_type_vectors(const std::string& file) {
    std::ifstream in(file);
    if (!in) {
        throw std::runtime_error("cannot open " + file);
    }
    std::vector<TypeVector> rows;
    Fields fields;
    std::string last;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() && !fields.empty()) {
            rows.push_back(row_of(fields));
        } else if (line.starts_with("    ")) {
            fields.at(last) += " " + line.substr(4);
        } else if (const auto equals = line.find(" = ");
                   equals != std::string::npos && !line.starts_with("#")) {
            last = line.substr(0, equals);
            if (!fields.emplace(last, line.substr(equals + 3)).second) {
                throw std::runtime_error("repeated name " + last);
            }
        }
    }
    if (!fields.empty()) {
        rows.push_back(row_of(fields));
    }
    return rows;
}

}  // namespace Quillmark::test
