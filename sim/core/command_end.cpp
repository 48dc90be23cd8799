// SPDX-License-Identifier: MIT
#include "core/command_end.hpp"

#include <vector>

#include "core/lock.hpp"

namespace qdsim {
namespace {

std::vector<CommandEndHook> &hooks() {
    static std::vector<CommandEndHook> list;
    return list;
}

}  // namespace

void on_command_end(CommandEndHook hook) {
    SwitchLock lock(switch_mutex());
    hooks().push_back(std::move(hook));
}

void run_command_end_hooks(std::uint32_t mts_handle) {
    for (const CommandEndHook &hook : hooks()) hook(mts_handle);
}

}  // namespace qdsim
