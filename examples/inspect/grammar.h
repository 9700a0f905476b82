#pragma once

// Where decoding stopped. The classes of the library say that a message is refused but not where. So the
// message is walked along its ASN.1, and each part that the object layer has a class for is given to that
// class alone: the innermost part that is refused is the place.

#include <vector>

#include "inspect/element.h"
#include "inspect/report.h"
#include "values/result.h"

namespace inspect {

struct Production;

/// One element of a SEQUENCE, or the one that is repeated.
struct Part {
    const char* name;                 ///< as in the standard
    std::vector<unsigned char> tags;  ///< identifier octets that it may have; none: any
    bool optional;
    const Production* type;  ///< null: not looked into
};

enum class Form {
    kSequence,    ///< the parts in their order; an explicit tag has one
    kSequenceOf,  ///< the one part, any number of times; a SET OF too
    kAlone        ///< left to what reads it
};

/// A type of the standard. Its own tag is told by the part that has the type.
struct Production {
    const char* name;
    Form form;
    std::vector<Part> parts;
    /// Refuses by an exception what the library would refuse; null when the parts say all.
    void (*read)(const Element& element);
};

const Production& time_stamp_request();
const Production& time_stamp_response();
const Production& time_stamp_token();
const Production& authenticode_request();
/// A SignedData of any content.
const Production& signed_message();
const Production& certificate();
const Production& certificate_list();

/// Throws `Malformed` for the first part of the element at the front of `octets` that is not what `type` says
/// or that the library refuses.
void check(const Production& type, const Octets& octets);
/// The same for an element under another tag.
void check_content(const Production& type, const Element& element);

/// The fault of the message in `octets`, refused with `code`: the place of its first fault, else its
/// beginning.
Fault locate(const std::string& what, const Production& type, const Octets& octets, HRESULT code);

}  // namespace inspect
