#pragma once

// Expecting a result code: the calls of the value, object and time-stamp layers throw `CAtlException`.

#include <gtest/gtest.h>

#include "values/result.h"

namespace Quillmark::test {

/// Runs `call` and expects it to throw `CAtlException` with exactly `code`.
template <typename Call>
::testing::AssertionResult throws_code(HRESULT code, Call&& call) {
    try {
        call();
    } catch (const CAtlException& exception) {
        const HRESULT got = exception;
        if (got == code) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "threw " << result_name(got) << ", want " << result_name(code);
    }
    return ::testing::AssertionFailure() << "threw nothing, want " << result_name(code);
}

}  // namespace Quillmark::test

#define EXPECT_CODE(code, statement) EXPECT_TRUE(::Quillmark::test::throws_code((code), [&] { (void)(statement); }))
