// SPDX-License-Identifier: MIT
// Fuzz targets of the simulated switch's own inputs: scenario texts and the
// values of "sim set". They run against libqdsim itself (no scripted
// platform), so they are built and replayed apart from the handler targets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern "C" int qdfuzz_scenario_text(const std::uint8_t *data, std::size_t size);
extern "C" int qdfuzz_sim_set(const std::uint8_t *data, std::size_t size);

namespace qdfuzz {

struct SimTarget {
    const char *name;
    int (*run)(const std::uint8_t *data, std::size_t size);
    std::vector<std::string> (*seeds)();
};

std::vector<std::string> scenario_text_seeds();
std::vector<std::string> sim_set_seeds();

inline const SimTarget kSimTargets[] = {
    {"scenario_text", qdfuzz_scenario_text, scenario_text_seeds},
    {"sim_set", qdfuzz_sim_set, sim_set_seeds},
};

}  // namespace qdfuzz
