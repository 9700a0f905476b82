#include "fuzz/law.h"

#include <cstdio>
#include <cstdlib>

namespace Quillmark::fuzz {

void broken(const std::string& law) {
    std::fprintf(stderr, "a law is broken: %s\n", law.c_str());
    std::abort();
}

}  // namespace Quillmark::fuzz
