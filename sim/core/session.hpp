// SPDX-License-Identifier: MIT
// Commands: a transport handle per command, and what happens when one ends.
#pragma once

#include <cstdint>
#include <functional>

namespace qdsim {

// Run by close_command for the command's handle, in registration order,
// before its ledger is checked (the printer delivers leftover output, the
// attribute streams of the command are released, ...).
using CommandEndHook = std::function<void(std::uint32_t mts_handle)>;
void on_command_end(CommandEndHook hook);

struct CommandEndRegistrar {
    explicit CommandEndRegistrar(CommandEndHook hook) { on_command_end(std::move(hook)); }
};

}  // namespace qdsim
