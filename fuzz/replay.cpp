// Runs targets over files, in a build of any compiler.
//
//     fuzz_replay TARGET FILE|FOLDER...   runs it over each file, and says how much memory it took for its
//     size fuzz_replay --targets               names all targets fuzz_replay --choices               what the
//     first octets of an input choose: target, name, the octets

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/target.h"

namespace {

using namespace Quillmark::fuzz;

struct Totals {
    std::size_t files = 0;
    std::size_t most_memory = 0;
};

void replay_file(const Target& target, const std::filesystem::path& path, Totals& totals) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
    const std::vector<std::uint8_t> octets(content.begin(), content.end());
    std::printf("%s", path.c_str());
    std::fflush(stdout);  // so that the last line names the input that ended the program
    const std::size_t used = run(target, octets);
    std::printf(": %zu octets, memory %zu\n", octets.size(), used);
    ++totals.files;
    totals.most_memory = std::max(totals.most_memory, used);
}

void replay(const Target& target, const std::filesystem::path& path, Totals& totals) {
    if (!std::filesystem::exists(path)) {
        return;  // a target that never failed has no folder of inputs that did
    }
    if (!std::filesystem::is_directory(path)) {
        replay_file(target, path, totals);
        return;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
        if (entry.is_regular_file()) {
            replay_file(target, entry.path(), totals);
        }
    }
}

void print_choices() {
    for (const Target& target : targets()) {
        if (target.choices == nullptr) {
            continue;
        }
        const auto names = target.choices();
        for (std::size_t i = 0; i < names.size(); ++i) {
            std::printf("%s %s %04zx\n", target.name, names[i].c_str(), i);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--targets") == 0) {
        for (const Target& target : targets()) {
            std::puts(target.name);
        }
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--choices") == 0) {
        print_choices();
        return 0;
    }
    if (argc < 3) {
        std::fputs("usage: fuzz_replay TARGET FILE|FOLDER... | --targets | --choices\n", stderr);
        return 2;
    }
    Totals totals;
    for (int i = 2; i < argc; ++i) {
        replay(target_named(argv[1]), argv[i], totals);
    }
    std::printf("%zu inputs, memory at most %zu\n", totals.files, totals.most_memory);
    if (totals.files == 0) {
        std::fputs("fuzz_replay: there was no input\n", stderr);
        return 1;
    }
    return 0;
}
