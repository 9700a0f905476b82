#pragma once

// What a decoder must say to octets, by the rules of the encoding and the description of the type alone: a
// second reader, short and slow, that goes through a description where the generated code is one function for
// each type. It is held against the codecs and shares nothing with them.
//
// The rules, as the tables of the codecs have them:
//   * A SEQUENCE ends where its length says or where the octets end, whatever element is due; then
//     `RT_E_SETMISSING` for a required element that did not come, `RT_E_SEQOVFL` for one more than it has.
//   * An element with a tag of its own is there when the tag is, in either form. One without a tag is tried:
//     `RT_E_IDNOTFOUND` is final for a required one and passes on to the next for others.
//   * A CHOICE compares tags with their form, else `RT_E_INVOPT`; a SET likewise, else `RT_E_NOTINSET`.
//   * A length of the short form is held against the octets only by what is read of the contents.
//   * A bound is tested behind its value: `RT_E_CONSVIO`.

#include <span>

#include "tests/asn1data/decoding_primitives.h"
#include "tests/asn1data/described_value.h"

namespace Quillmark::test {

/// What reading octets comes to.
struct Reading {
    int status;
    Value value;  // when the status is 0
    Encounters met;
};

/// Reads `octets` as the codec of `type` does with `ASN1EXPL`, its buffer being these octets.
Reading read_by_rule(const TypeDescription& type, std::span<const std::uint8_t> octets);

/// The same as a message: the length of the outermost element is held against the octets first, and a failure
/// of that leaves the position behind its header.
Reading read_message_by_rule(const TypeDescription& type, std::span<const std::uint8_t> octets);

}  // namespace Quillmark::test
