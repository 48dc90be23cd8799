// SPDX-License-Identifier: MIT
#include "core/cleanup.hpp"

#include <utility>
#include <vector>

#include "core/lock.hpp"

namespace qdsim {
namespace {

std::vector<std::pair<std::string, std::function<void()>>> &cleanups() {
    static std::vector<std::pair<std::string, std::function<void()>>> list;
    return list;
}

}  // namespace

void register_cleanup(std::string what, std::function<void()> cleanup) {
    SwitchLock lock(switch_mutex());
    cleanups().emplace_back(std::move(what), std::move(cleanup));
}

void run_cleanups() {
    SwitchLock lock(switch_mutex());
    auto pending = std::exchange(cleanups(), {});
    for (auto it = pending.rbegin(); it != pending.rend(); ++it)
        if (it->second) it->second();
}

}  // namespace qdsim
