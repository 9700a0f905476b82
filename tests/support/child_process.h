#pragma once

// The end of a process that a test made for itself.

#include <unistd.h>

#ifdef QUILLMARK_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace Quillmark::test {

/// Ends the process at once: no destructor runs, and nothing that was registered for the end. Only the
/// counters of a build for coverage are written, which else would be lost.
[[noreturn]] inline void end_child(int status) {
#ifdef QUILLMARK_COVERAGE
    __gcov_dump();
#endif
    _exit(status);
}

}  // namespace Quillmark::test
