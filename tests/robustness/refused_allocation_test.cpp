// Every exported operation with each of its allocations refused in turn; and those that take no memory take
// none.

#include <gtest/gtest.h>

#include <iostream>

#include "tests/robustness/operations.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

class OperationWithoutMemory : public testing::TestWithParam<Operation> {};

/// Runs a row with one allocation after the other refused, until there is none left. Returns the number of
/// refusals.
std::size_t refuse_each(const Operation& operation, bool balanced) {
    for (std::size_t n = 0;; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        const std::ptrdiff_t live = live_block_count();
        Trial trial(n);
        operation.run(trial);
        if (balanced) {
            EXPECT_EQ(live_block_count(), live);
        }
        if (!trial.refused() || testing::Test::HasFailure()) {
            return n;
        }
    }
}

TEST_P(OperationWithoutMemory, FailsCleanly) {
    // What is made at first use comes into being in the first pass and stays, so that only the second one can
    // count.
    refuse_each(GetParam(), false);
    const std::size_t refusals = refuse_each(GetParam(), true);
    EXPECT_GT(refusals, 0u) << "belongs to the operations that take no memory";
    RecordProperty("refusals", std::to_string(refusals));
}

class OperationThatTakesNone : public testing::TestWithParam<Operation> {};

TEST_P(OperationThatTakesNone, TakesNone) {
    Trial first;
    GetParam().run(first);
    const std::ptrdiff_t live = live_block_count();
    Trial trial;
    GetParam().run(trial);
    EXPECT_EQ(trial.allocations(), 0u);
    EXPECT_EQ(live_block_count(), live);
}

#define QUILLMARK_OPERATIONS(Suite, Part, table) \
    INSTANTIATE_TEST_SUITE_P(Part, Suite, testing::ValuesIn(table()), case_name)

QUILLMARK_OPERATIONS(OperationWithoutMemory, Values, value_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, TimeStamps, time_stamp_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, Authenticode, authenticode_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, Objects, object_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, Heap, heap_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, Encoders, encode_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, Decoders, decode_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, Lists, list_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, Classes, class_operations);
QUILLMARK_OPERATIONS(OperationWithoutMemory, Service, service_operations);

QUILLMARK_OPERATIONS(OperationThatTakesNone, Values, value_operations_without_memory);
QUILLMARK_OPERATIONS(OperationThatTakesNone, TimeStamps, time_stamp_operations_without_memory);
QUILLMARK_OPERATIONS(OperationThatTakesNone, Authenticode, authenticode_operations_without_memory);
QUILLMARK_OPERATIONS(OperationThatTakesNone, RunTime, runtime_operations_without_memory);
QUILLMARK_OPERATIONS(OperationThatTakesNone, Classes, class_operations_without_memory);
QUILLMARK_OPERATIONS(OperationThatTakesNone, Service, service_operations_without_memory);

}  // namespace
}  // namespace Quillmark::test
