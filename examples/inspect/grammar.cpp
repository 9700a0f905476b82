#include "inspect/grammar.h"

#include <algorithm>

#include "support/failure.h"

namespace inspect {

namespace {

using namespace Quillmark;

std::string expected(const Part& part) {
    std::string text = part.name;
    for (std::size_t i = 0; i < part.tags.size(); ++i) {
        text += (i == 0 ? " (" : " or ") + tag_name(part.tags[i]);
    }
    return text + (part.tags.empty() ? "" : ")");
}

bool fits(const Part& part, unsigned char tag) {
    return part.tags.empty() || std::find(part.tags.begin(), part.tags.end(), tag) != part.tags.end();
}

void check_part(const Part& part, const Element& element) {
    if (part.type != nullptr) {
        check_content(*part.type, element);
    }
}

void check_sequence(const Production& type, const Element& sequence) {
    Elements elements(sequence);
    for (auto part = type.parts.begin(); part != type.parts.end(); ++part) {
        if (elements.at_end()) {
            if (part->optional) {
                continue;
            }
            throw Malformed(sequence.whole.offset,
                            std::string(type.name) + " ends before " + expected(*part));
        }
        Elements ahead = elements;
        const Element element = ahead.next();
        if (fits(*part, element.tag)) {
            check_part(*part, element);
            elements = ahead;
        } else if (!part->optional) {
            throw Malformed(element.whole.offset, std::string(type.name) + " has " + tag_name(element.tag) +
                                                      " in place of " + expected(*part));
        }
    }
    if (!elements.at_end()) {
        const Element element = elements.next();
        throw Malformed(element.whole.offset, std::string(type.name) + " has " + tag_name(element.tag) +
                                                  " where it has no more elements or another order");
    }
}

void check_list(const Production& type, const Element& list) {
    const Part& part = type.parts.front();
    for (Elements elements(list); !elements.at_end();) {
        const Element element = elements.next();
        if (!fits(part, element.tag)) {
            throw Malformed(element.whole.offset, std::string(type.name) + " has " + tag_name(element.tag) +
                                                      " in place of " + expected(part));
        }
        check_part(part, element);
    }
}

}  // namespace

void check_content(const Production& type, const Element& element) {
    if (type.form == Form::kSequence) {
        check_sequence(type, element);
    } else if (type.form == Form::kSequenceOf) {
        check_list(type, element);
    }
    if (type.read == nullptr) {
        return;
    }
    try {
        type.read(element);
    } catch (const CAtlException& exception) {
        throw Malformed(element.whole.offset,
                        std::string(type.name) + " is refused: " + example::describe(exception));
    }
}

void check(const Production& type, const Octets& octets) {
    const Element element = Elements(octets).next();
    if (element.tag != kSequence) {
        throw Malformed(element.whole.offset, std::string(type.name) + " begins with " +
                                                  tag_name(element.tag) + " and not with SEQUENCE");
    }
    check_content(type, element);
}

Fault locate(const std::string& what, const Production& type, const Octets& octets, HRESULT code) {
    try {
        check(type, octets);
    } catch (const Malformed& malformed) {
        return {what, malformed.offset(), malformed.what(), result_name(code)};
    }
    return {what, octets.offset, "the message is refused as a whole", result_name(code)};
}

}  // namespace inspect
