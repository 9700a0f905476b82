#pragma once

// Rules that only some types have: the lists of described_type_exceptions.txt.

#include <map>
#include <set>
#include <string>

#include "tests/asn1data/type_description.h"

namespace Quillmark::test {

/// Names of types by the name of their rule. Throws `std::runtime_error` for a file that is not of the form.
const std::map<std::string, std::set<std::string>>& type_exceptions();

/// Holds that a type meets a rule exactly when it is listed under it.
class Exceptions {
  public:
    explicit Exceptions(const TypeDescription& type) : type_(type) {}

    void met(const std::string& rule, const std::string& where) { met_.emplace(rule, where); }
    void expect(const std::string& rule) const;

  private:
    const TypeDescription& type_;
    std::map<std::string, std::string> met_;
};

}  // namespace Quillmark::test
