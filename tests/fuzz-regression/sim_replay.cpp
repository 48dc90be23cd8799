// Replay of the simulator's fuzz targets (fuzz/sim-entries): every seed,
// then every file of fuzz/corpus/<target>.
//
//   qdsim_fuzz_replay TARGET [DIRECTORY...]
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "sim_targets.hpp"

namespace fs = std::filesystem;

int main(int argc, char **argv) {
    if (argc < 2) return 2;
    for (const qdfuzz::SimTarget &target : qdfuzz::kSimTargets) {
        if (std::strcmp(argv[1], target.name) != 0) continue;
        std::size_t inputs = 0;
        for (const std::string &seed : target.seeds()) {
            target.run(reinterpret_cast<const std::uint8_t *>(seed.data()), seed.size());
            ++inputs;
        }
        for (int d = 2; d < argc; ++d) {
            if (!fs::is_directory(argv[d])) continue;
            std::vector<fs::path> files;
            for (const auto &entry : fs::directory_iterator(argv[d]))
                if (entry.is_regular_file()) files.push_back(entry.path());
            std::sort(files.begin(), files.end());
            for (const fs::path &file : files) {
                std::ifstream in(file, std::ios::binary);
                const std::string input((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
                std::fprintf(stderr, "%s\n", file.c_str());
                target.run(reinterpret_cast<const std::uint8_t *>(input.data()), input.size());
                ++inputs;
            }
        }
        std::fprintf(stderr, "%s: %zu inputs replayed\n", target.name, inputs);
        return 0;
    }
    std::fprintf(stderr, "no simulator fuzz target %s\n", argv[1]);
    return 2;
}
