// Replay of the simulator's fuzz targets (fuzz/sim-entries): every seed,
// then every file of the directories given.
//
//   qdsim_fuzz_replay TARGET [DIRECTORY...]
#include <cstdio>
#include <cstring>

#include "inputs.hpp"
#include "sim_targets.hpp"

int main(int argc, char **argv) {
    for (const qdfuzz::SimTarget &target : qdfuzz::kSimTargets) {
        if (argc < 2 || std::strcmp(argv[1], target.name) != 0) continue;
        auto run = [&](const std::string &input, const std::string &name) {
            std::fprintf(stderr, "%s\n", name.c_str());
            target.run(reinterpret_cast<const std::uint8_t *>(input.data()), input.size());
        };
        const std::vector<std::string> seeds = target.seeds();
        for (const std::string &seed : seeds) run(seed, "seed");
        const std::size_t files = fuzzreplay::for_each_file<std::string>(argc - 2, argv + 2, run);
        std::fprintf(stderr, "%s: %zu inputs replayed\n", target.name, seeds.size() + files);
        return 0;
    }
    std::fprintf(stderr, "no simulator fuzz target %s\n", argc < 2 ? "named" : argv[1]);
    return 2;
}
