#pragma once

// Failures as one line for the person at the terminal.

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "values/result.h"

namespace example {

/// What went wrong, in one line.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    /// "`doing`: NAME (0x80070002)".
    Failure(const std::string& doing, HRESULT code);
};

/// The code by its published name and number.
std::string describe(HRESULT code);

/// The exception that is being handled, in a few words.
std::string describe_exception();

/// The result that stands for the last error of a platform call.
HRESULT last_error();

/// Runs `call`; a result code thrown by it leaves as a `Failure` that says what was being done.
template <typename Call>
auto attempt(const std::string& doing, Call&& call) -> decltype(call()) {
    try {
        return std::forward<Call>(call)();
    } catch (const CAtlException& exception) {
        throw Failure(doing, exception);
    }
}

/// The whole of `main`: runs `program` on the arguments. Any failure is printed as one line, with exit
/// status 1.
int run(int argc, char** argv, int (*program)(const std::vector<std::string>& arguments));

}  // namespace example
