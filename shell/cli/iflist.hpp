// SPDX-License-Identifier: MIT
// Interface names as a user types them: single names, ranges of the last
// number ("ethernet1/1-4", "Ethernet101/1/1-3"), comma lists, and a type word
// written apart from its numbers ("ethernet 1/1"). Each name is resolved by a
// resolver (the simulator's find_interface in qdsh).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qdsh {

using Resolver = std::function<std::optional<std::uint32_t>(const std::string &)>;

struct ResolvedInterface {
    std::string spelling;  // as typed or as expanded from a range
    std::uint32_t if_index = 0;
    std::string name;      // the switch's name for it (filled by the executor)
};

struct InterfaceListResult {
    std::vector<ResolvedInterface> interfaces;  // in the order typed, without repeats
    std::string error;                          // empty on success
    bool ok() const { return error.empty(); }
};

// Resolves one interface.
InterfaceListResult resolve_interface(const std::string &spelling, const Resolver &resolve);

// Resolves the words of an interface list.
InterfaceListResult resolve_interface_list(const std::vector<std::string> &words, const Resolver &resolve);

// The most interfaces one range may name.
constexpr std::uint32_t kMaxRange = 4096;

}  // namespace qdsh
