// SPDX-License-Identifier: MIT
// What happens when a command ends: services register hooks, and
// qdsim::close_command runs them.
#pragma once

#include <cstdint>
#include <functional>

namespace qdsim {

// Run by close_command for the command's handle, in registration order,
// before its ledger is checked (the printer delivers leftover output, the
// attribute streams of the command are released, ...).
using CommandEndHook = std::function<void(std::uint32_t mts_handle)>;
void on_command_end(CommandEndHook hook);
// Runs every hook for `mts_handle`; the caller holds the switch lock.
void run_command_end_hooks(std::uint32_t mts_handle);

struct CommandEndRegistrar {
    explicit CommandEndRegistrar(CommandEndHook hook) { on_command_end(std::move(hook)); }
};

}  // namespace qdsim
