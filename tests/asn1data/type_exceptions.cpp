#include "tests/asn1data/type_exceptions.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Quillmark::test {
namespace {

using Rules = std::map<std::string, std::set<std::string>>;

/// Lines `rule:` and below each, indented, the names of types; `#` begins a remark.
Rules load(const std::string& file) {
    std::ifstream in(file);
    if (!in) {
        throw std::runtime_error("cannot open " + file);
    }
    Rules rules;
    std::set<std::string>* names = nullptr;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (line.front() != ' ') {
            names = &rules[line.substr(0, line.find(':'))];
            continue;
        }
        if (names == nullptr) {
            throw std::runtime_error("a type without a rule: " + line);
        }
        std::istringstream words(line);
        for (std::string name; words >> name;) {
            if (!names->insert(name).second) {
                throw std::runtime_error("named twice: " + name);
            }
        }
    }
    return rules;
}

bool is_listed(const std::string& rule, const TypeDescription& type) {
    const auto found = type_exceptions().find(rule);
    return found != type_exceptions().end() && found->second.contains(type.name);
}

}  // namespace

const Rules& type_exceptions() {
    static const Rules rules = load(QUILLMARK_TYPE_EXCEPTIONS);
    return rules;
}

void Exceptions::expect(const std::string& rule) const {
    const auto found = met_.find(rule);
    const bool listed = is_listed(rule, type_);
    if (listed && found == met_.end()) {
        ADD_FAILURE() << type_.name << " is listed under '" << rule << "' and does not need to be";
    } else if (!listed && found != met_.end()) {
        ADD_FAILURE() << type_.name << " is not listed under '" << rule << "', met at " << found->second;
    }
}

}  // namespace Quillmark::test
