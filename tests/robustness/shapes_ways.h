#pragma once

// Ways into the library, each with the failures that it reports in one number.

#include <new>

#include "tests/robustness/growth_law.h"
#include "values/result.h"

namespace Quillmark::test {

template <typename Call>
Outcome outcome_of(Call&& call) {
    try {
        call();
        return kTaken;
    } catch (const CAtlException& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

template <class Value>
Outcome decode_value(const CBlob& input) {
    return outcome_of([&] {
        Value value;
        value.decode(input);
    });
}

/// And writes what was read, which puts every SET OF in order.
template <class Value>
Outcome decode_and_encode(const CBlob& input) {
    return outcome_of([&] {
        Value value;
        value.decode(input);
        (void)value.encode();
    });
}

/// For values that are decoded when they are made.
template <class Value>
Outcome construct_value(const CBlob& input) {
    return outcome_of([&] { (void)Value(input); });
}

}  // namespace Quillmark::test
