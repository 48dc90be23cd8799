// Replay of fuzz inputs through the fuzz targets' own entry functions.
//
//   qdcli_fuzz_replay <target> [directory...]  seeds, then every file of each directory
//   qdcli_fuzz_replay --check-dirs <directory> every subdirectory names a target
//
// An input whose run leaves the message ledger unhappy aborts the replay
// with the ledger's findings and the input's name.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "harness/registry.hpp"

namespace fs = std::filesystem;

namespace {

const qdfuzz::Target *find_target(const std::string &name) {
    for (std::size_t i = 0; i < qdfuzz::kTargetCount; ++i)
        if (name == qdfuzz::kTargets[i].name) return &qdfuzz::kTargets[i];
    return nullptr;
}

qdfuzz::Bytes read_file(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return qdfuzz::Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void run(const qdfuzz::Target &target, const qdfuzz::Bytes &input, const std::string &label) {
    qdfuzz::set_input_label(label);
    target.run(input.data(), input.size());
}

int replay(const qdfuzz::Target &target, int count, char **dirs) {
    std::size_t inputs = 0;
    const std::vector<qdfuzz::Bytes> seeds = target.seeds();
    for (std::size_t i = 0; i < seeds.size(); ++i, ++inputs)
        run(target, seeds[i], std::string(target.name) + " seed " + std::to_string(i));
    for (int d = 0; d < count; ++d) {
        const fs::path dir(dirs[d]);
        if (!fs::is_directory(dir)) continue;
        std::vector<fs::path> files;
        for (const auto &entry : fs::directory_iterator(dir))
            if (entry.is_regular_file()) files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        for (const fs::path &file : files) {
            run(target, read_file(file), file.string());
            ++inputs;
        }
    }
    std::fprintf(stderr, "%s: %zu inputs replayed\n", target.name, inputs);
    return 0;
}

int check_dirs(const fs::path &root) {
    int unknown = 0;
    for (const auto &entry : fs::directory_iterator(root)) {
        if (!entry.is_directory() || find_target(entry.path().filename().string()) != nullptr) continue;
        std::fprintf(stderr, "%s: no fuzz target of that name\n", entry.path().string().c_str());
        ++unknown;
    }
    return unknown == 0 ? 0 : 1;
}

int usage() {
    std::fputs("usage: qdcli_fuzz_replay <target> [directory...] | --check-dirs <directory>\n", stderr);
    return 2;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 2) return usage();
    const std::string first = argv[1];
    if (first == "--check-dirs") return argc == 3 ? check_dirs(argv[2]) : usage();
    const qdfuzz::Target *target = find_target(first);
    if (target == nullptr) {
        std::fprintf(stderr, "no fuzz target named %s\n", first.c_str());
        return 2;
    }
    return replay(*target, argc - 2, argv + 2);
}
