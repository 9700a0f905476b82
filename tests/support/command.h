#pragma once

// Running other programs from tests, in a directory that goes when the test is over.

#include <filesystem>
#include <string>

#include "values/blob.h"

namespace Quillmark::test {

struct CommandResult {
    int status;          ///< exit status, -1 when it did not exit
    std::string output;  ///< standard output and standard error
};

/// Runs `command` by the shell in `directory`.
CommandResult run(const std::string& command, const std::filesystem::path& directory);

/// A fresh directory for the life of the object.
class ScratchDirectory {
  public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// Runs `command` here.
    CommandResult run(const std::string& command) const { return test::run(command, path_); }
    void write(const std::string& name, const CBlob& octets) const;
    CBlob read(const std::string& name) const;

  private:
    std::filesystem::path path_;
};

}  // namespace Quillmark::test
