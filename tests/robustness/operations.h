#pragma once

// The tables of operations, one for each part of what is exported.

#include "tests/robustness/operation.h"

namespace Quillmark::test {

// Operations that take memory.
Operations value_operations();
Operations time_stamp_operations();
Operations authenticode_operations();
Operations object_operations();
Operations heap_operations();
Operations encode_operations();
Operations decode_operations();
Operations list_operations();
Operations class_operations();
Operations service_operations();

// Operations that take none.
Operations value_operations_without_memory();
Operations time_stamp_operations_without_memory();
Operations authenticode_operations_without_memory();
Operations runtime_operations_without_memory();
Operations class_operations_without_memory();
Operations service_operations_without_memory();

}  // namespace Quillmark::test
