// SPDX-License-Identifier: MIT
// The fuzz targets of entries/targets.hpp, by name, for the libFuzzer
// binaries, the replay and the fault matrix.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "harness/harness.hpp"

namespace qdfuzz {

struct Target {
    const char *name;
    // One input through a fresh session, its ledger checked; returns 0.
    int (*run)(const std::uint8_t *data, std::size_t size);
    std::vector<Bytes> (*seeds)();
};

extern const Target kTargets[];
extern const std::size_t kTargetCount;

const Target *find_target(std::string_view name);

}  // namespace qdfuzz
