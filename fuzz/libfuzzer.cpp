// What libFuzzer calls. Each target is a program of its own, which names it.

#include "fuzz/target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Quillmark::fuzz;
    static const Target& target = target_named(QUILLMARK_FUZZ_TARGET);
    run(target, {data, size});
    return 0;
}
