// SPDX-License-Identifier: MIT
// Command lines run by vsh_system2.
//
// The host (qdsh) installs a runner with qdsim::set_command_runner. Without
// one, or when the runner hands a line back with run_platform_command, the
// line goes to the platform's own commands, which services register by
// their leading words:
//
//   const qdsim::printer::PlatformCommandRegistrar clear_pfc{"clear interface priority-flow-control", clear_pause};
//
// The longest registered prefix that the line starts with (whole words)
// runs; the handler gets the words after the prefix.
#pragma once

#include <functional>
#include <string>

#include "model/model.hpp"

namespace qdsim::printer {

using PlatformCommand = std::function<int(const std::string &rest, Model &)>;

bool register_platform_command(const std::string &prefix, PlatformCommand command);
bool unregister_platform_command(const std::string &prefix);

struct PlatformCommandRegistrar {
    PlatformCommandRegistrar(const std::string &prefix, PlatformCommand command) {
        register_platform_command(prefix, std::move(command));
    }
};

}  // namespace qdsim::printer
