#pragma once

// What was found in a file, once for people and once for programs:
//
//     Section& signer = report.found.section("Signer", "signer");
//     signer.text("Issuer", "issuer", name_text(issuer));
//     signer.octets("Signature", "signature", signature);

#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "values/blob.h"

namespace inspect {

using Json = nlohmann::ordered_json;

/// A text for people. What a file holds can break no line: its line feeds are escaped as other control
/// characters.
using Lines = std::vector<std::string>;

/// Facts in the order in which they were found. Labels are for people, keys for programs.
class Section {
  public:
    /// Either side may be left out: by no lines, which print nothing, or an empty `key`.
    void fact(const std::string& label, const std::string& key, const Json& value, const Lines& lines);
    void fact(const std::string& label, const std::string& key, const Json& value, const std::string& line);
    /// The same text for both.
    void text(const std::string& label, const std::string& key, const std::string& text);
    /// Hexadecimal digits: upper case in groups of four octets for people, lower case in one run for
    /// programs.
    void octets(const std::string& label, const std::string& key, const Quillmark::CBlob& octets);

    /// A section within this one, for programs an object. With an empty label or key its facts belong to this
    /// section or this object.
    Section& section(const std::string& label, const std::string& key);
    /// The same as one element of an array, to which entries of one key that follow each other belong.
    Section& entry(const std::string& label, const std::string& key);

    bool empty() const { return items_.empty(); }

    /// One fact a line, the texts in one column.
    void print(std::ostream& out) const;
    Json json() const;

  private:
    enum class Shape { kFact, kSection, kEntry };
    struct Item {
        Shape shape;
        std::string label;
        std::string key;
        Json value;
        Lines lines;
        std::unique_ptr<Section> inside;
    };

    Section& add(Shape shape, const std::string& label, const std::string& key);
    void print(std::ostream& out, std::size_t indent, std::size_t column) const;
    std::size_t column(std::size_t indent) const;
    void write(Json& object) const;

    std::list<Item> items_;
};

/// A message, or a part of one, that was refused.
struct Fault {
    std::string what;
    std::optional<std::size_t> offset;  ///< of the element where reading stopped
    std::string reason;
    std::string code;  ///< the library's, by its published name; empty when the fault was found without it
};

/// All that is said of one file, or of one block of a PEM file.
struct Report {
    std::string kind;   ///< a word for programs
    std::string title;  ///< the same for people
    std::string label;  ///< of the PEM block; empty for octets that came in none
    std::size_t size = 0;
    Section found;
    std::list<Fault> faults;
    std::list<Report> blocks;

    Json json() const;
};

}  // namespace inspect
