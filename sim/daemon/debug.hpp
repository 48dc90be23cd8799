// SPDX-License-Identifier: MIT
// The daemon's debug functions, reached through sdwrap_debug_dump with a
// 16-byte request and the function's name. Each returns the text the user
// sees; it goes to the output sink. A function registers itself:
//
//   const qdsim::daemon::DebugRegistrar memstats{"mtrack_dump_memstats", dump_memstats};
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "model/model.hpp"

namespace qdsim::daemon {

struct DebugRequest {
    std::uint32_t mts_handle = 0;
    std::string function;
    std::vector<std::uint8_t> record;  // the 16-byte request as sent
    std::uint32_t word(unsigned i) const;  // host-order word i of the record
};

using DebugFunction = std::function<std::string(const DebugRequest &, Model &)>;

bool register_debug_function(const std::string &name, DebugFunction function);
bool unregister_debug_function(const std::string &name);

struct DebugRegistrar {
    DebugRegistrar(const std::string &name, DebugFunction function) { register_debug_function(name, std::move(function)); }
};

}  // namespace qdsim::daemon
