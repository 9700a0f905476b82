#pragma once

// Names for tests that run over a table.

#include <gtest/gtest.h>

#include <string>

namespace Quillmark::test {

/// The `name` of a row, for `INSTANTIATE_TEST_SUITE_P(Prefix, Suite, testing::ValuesIn(kCases), case_name)`.
inline constexpr auto case_name = [](const auto& row) { return std::string(row.param.name); };

}  // namespace Quillmark::test
