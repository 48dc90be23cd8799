// SPDX-License-Identifier: MIT
// The default scenario compiled into the library: one entry per fragment
// file of sim/scenarios/default, in name order (generated at build time).
#pragma once

#include <cstddef>

namespace qdsim::embedded {

struct Fragment {
    const char *name;
    const char *text;
};

extern const Fragment kDefaultFragments[];
extern const std::size_t kDefaultFragmentCount;

}  // namespace qdsim::embedded
