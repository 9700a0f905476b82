#include "tests/support/command.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace Quillmark::test {

CommandResult run(const std::string& command, const std::filesystem::path& directory) {
    const std::string line = "cd '" + directory.string() + "' && { " + command + "\n} 2>&1 < /dev/null";
    FILE* pipe = popen(line.c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("cannot run " + command);
    }
    CommandResult result;
    std::array<char, 4096> part;
    while (const std::size_t size = fread(part.data(), 1, part.size(), pipe)) {
        result.output.append(part.data(), size);
    }
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

ScratchDirectory::ScratchDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "quillmark-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make " + name);
    }
    path_ = name;
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void ScratchDirectory::write(const std::string& name, const CBlob& octets) const {
    octets.writeToFile((path_ / name).c_str());
}

CBlob ScratchDirectory::read(const std::string& name) const {
    CBlob octets;
    octets.readFromFile((path_ / name).c_str());
    return octets;
}

}  // namespace Quillmark::test
