#include "inspect/report.h"

#include <algorithm>
#include <utility>

#include "inspect/text.h"

namespace inspect {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kWidestLabel = 40;  // a longer one moves its own text only

// Everything for the terminal passes here.
void print_fact(std::ostream& out, std::size_t indent, std::size_t column, const std::string& label,
                const Lines& lines) {
    std::string front = std::string(indent, ' ') + printable(label);
    front.append(front.size() < column ? column - front.size() : 1, ' ');
    for (const std::string& line : lines) {
        out << front << printable(line) << '\n';
        front.assign(column, ' ');
    }
}

Json fault_json(const Fault& fault) {
    Json object;
    object["what"] = fault.what;
    object["offset"] = fault.offset ? Json(*fault.offset) : Json();
    object["reason"] = fault.reason;
    object["code"] = fault.code.empty() ? Json() : Json(fault.code);
    return object;
}

}  // namespace

void Section::fact(const std::string& label, const std::string& key, const Json& value, const Lines& lines) {
    items_.push_back({Shape::kFact, label, key, value, lines, nullptr});
}

void Section::fact(const std::string& label, const std::string& key, const Json& value,
                   const std::string& line) {
    fact(label, key, value, line.empty() ? Lines() : Lines{line});
}

void Section::text(const std::string& label, const std::string& key, const std::string& text) {
    fact(label, key, text, text.empty() ? "(empty)" : text);
}

void Section::octets(const std::string& label, const std::string& key, const Quillmark::CBlob& octets) {
    fact(label, key, hex(octets), grouped_hex(octets));
}

Section& Section::section(const std::string& label, const std::string& key) {
    return add(Shape::kSection, label, key);
}

Section& Section::entry(const std::string& label, const std::string& key) {
    return add(Shape::kEntry, label, key);
}

Section& Section::add(Shape shape, const std::string& label, const std::string& key) {
    items_.push_back({shape, label, key, Json(), {}, std::make_unique<Section>()});
    return *items_.back().inside;
}

std::size_t Section::column(std::size_t indent) const {
    std::size_t widest = 0;
    for (const Item& item : items_) {
        if (item.shape != Shape::kFact) {
            widest = std::max(widest, item.inside->column(item.label.empty() ? indent : indent + kIndent));
        } else if (!item.lines.empty() && indent + item.label.size() <= kWidestLabel) {
            widest = std::max(widest, indent + item.label.size());
        }
    }
    return widest;
}

void Section::print(std::ostream& out) const {
    print(out, kIndent, column(kIndent) + kIndent);
}

void Section::print(std::ostream& out, std::size_t indent, std::size_t column) const {
    for (const Item& item : items_) {
        if (item.shape != Shape::kFact && item.label.empty()) {
            item.inside->print(out, indent, column);
        } else if (item.shape != Shape::kFact && !item.inside->empty()) {
            out << std::string(indent, ' ') << printable(item.label) << '\n';
            item.inside->print(out, indent + kIndent, column);
        } else {
            print_fact(out, indent, column, item.label, item.lines);
        }
    }
}

Json Section::json() const {
    Json object = Json::object();
    write(object);
    return object;
}

void Section::write(Json& object) const {
    // Entries of one key stand together, so that the last array is the one to go on with.
    std::string array_key;
    Json array;
    const auto close_array = [&] {
        if (!array_key.empty()) {
            object[array_key] = std::exchange(array, Json());
            array_key.clear();
        }
    };
    for (const Item& item : items_) {
        if (item.shape != Shape::kEntry || item.key != array_key) {
            close_array();
        }
        if (item.shape == Shape::kEntry) {
            array_key = item.key;
            array.push_back(item.inside->json());
        } else if (item.shape == Shape::kSection && item.key.empty()) {
            item.inside->write(object);
        } else if (!item.key.empty()) {
            object[item.key] = item.shape == Shape::kSection ? item.inside->json() : item.value;
        }
    }
    close_array();
}

Json Report::json() const {
    Json object;
    object["kind"] = kind;
    object["size"] = size;
    if (!label.empty()) {
        object["pem"] = label;
    }
    if (!blocks.empty()) {
        Json& list = object["blocks"] = Json::array();
        for (const Report& block : blocks) {
            list.push_back(block.json());
        }
    } else {
        object["decoded"] = found.json();
    }
    for (const Fault& fault : faults) {
        object["faults"].push_back(fault_json(fault));
    }
    return object;
}

}  // namespace inspect
