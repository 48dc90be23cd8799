// SPDX-License-Identifier: MIT
// Table of every fuzz target, generated at configure time from the entry
// files (see fuzz/qdfuzz.cmake).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "harness/harness.hpp"

namespace qdfuzz {

struct Target {
    const char *name;
    int (*run)(const std::uint8_t *data, std::size_t size);
    std::vector<Bytes> (*seeds)();
};

extern const Target kTargets[];
extern const std::size_t kTargetCount;

}  // namespace qdfuzz
