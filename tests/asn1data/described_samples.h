#pragma once

// Values of a described type, made from its description: empty and full, with each element that may be
// absent, each alternative, lists of none, one and three, each identifier that is known and one that is not,
// and each bound at its last good and first bad value.

#include <string>
#include <vector>

#include "tests/asn1data/described_value.h"

namespace Quillmark::test {

struct Sample {
    std::string name;
    Value value;
};

/// Values that are as they should be.
std::vector<Sample> good_samples(const TypeDescription& type);

/// A value just outside of one bound, and what the encoder says to it.
struct BadSample {
    std::string name;
    Value value;
    int encoder_status;
};

std::vector<BadSample> bad_samples(const TypeDescription& type);

/// All that may be absent is; lists have as few elements as they may.
Value empty_value(const TypeDescription& type);
/// All is there, also in the elements.
Value full_value(const TypeDescription& type);

}  // namespace Quillmark::test
