#include "failure.h"

#include <cstdint>
#include <cstdio>
#include <exception>
#include <new>

#include "platform/cryptoapi.h"
#include "runtime/context.h"

namespace example {

Failure::Failure(const std::string& doing, HRESULT code)
    : std::runtime_error(doing + ": " + describe(code)) {}

std::string describe(HRESULT code) {
    char number[16];
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned int>(code));
    return std::string(result_name(code)) + " (" + number + ")";
}

std::string describe_exception() {
    try {
        throw;
    } catch (const CAtlException& exception) {
        return describe(exception);
    } catch (const ASN1RTLException& exception) {
        return "the codec failed with status " + std::to_string(exception.getStatus());
    } catch (const std::bad_alloc&) {
        return "out of memory";
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "an exception of unknown type";
    }
}

HRESULT last_error() {
    return HRESULT_FROM_WIN32(GetLastError());
}

int run(int argc, char** argv, int (*program)(const std::vector<std::string>& arguments)) {
    const std::string path = argv[0];
    const std::string name = path.substr(path.rfind('/') + 1);
    try {
        return program(std::vector<std::string>(argv + 1, argv + argc));
    } catch (...) {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), describe_exception().c_str());
        return 1;
    }
}

}  // namespace example
