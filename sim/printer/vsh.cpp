// SPDX-License-Identifier: MIT
// vsh_system2 and the platform's own command lines.
#include <cstring>
#include <map>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"
#include "qdcli/platform.h"
#include "printer/commands.hpp"

namespace qdsim {
namespace printer {
namespace {

struct Commands {
    std::map<std::string, PlatformCommand> table;
    std::function<int(const std::string &)> runner;
};

Commands &commands() {
    static Commands c;
    return c;
}

// Blanks at either end go, runs of blanks inside become one.
std::string normalize(const std::string &line) {
    std::string out;
    bool blank = false;
    for (char c : line) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            blank = !out.empty();
            continue;
        }
        if (blank) out += ' ';
        blank = false;
        out += c;
    }
    return out;
}

}  // namespace

bool register_platform_command(const std::string &prefix, PlatformCommand command) {
    SwitchLock lock(switch_mutex());
    auto [it, inserted] = commands().table.emplace(normalize(prefix), std::move(command));
    if (!inserted) diagnostic("platform command \"" + prefix + "\" registered twice");
    return inserted;
}

bool unregister_platform_command(const std::string &prefix) {
    SwitchLock lock(switch_mutex());
    return commands().table.erase(normalize(prefix)) != 0;
}

}  // namespace printer

void set_command_runner(std::function<int(const std::string &)> runner) {
    SwitchLock lock(switch_mutex());
    printer::commands().runner = std::move(runner);
}

int run_platform_command(const std::string &line) {
    SwitchLock lock(switch_mutex());
    const std::string words = printer::normalize(line);
    const std::pair<const std::string, printer::PlatformCommand> *best = nullptr;
    for (const auto &entry : printer::commands().table) {
        const std::string &prefix = entry.first;
        if (words.compare(0, prefix.size(), prefix) != 0) continue;
        if (words.size() > prefix.size() && words[prefix.size()] != ' ') continue;
        if (best == nullptr || prefix.size() > best->first.size()) best = &entry;
    }
    if (best == nullptr) {
        diagnostic("no platform command for \"" + words + "\"");
        return kErrUnsupported;
    }
    const std::string rest = words.size() > best->first.size() ? words.substr(best->first.size() + 1) : std::string();
    const printer::PlatformCommand command = best->second;
    try {
        return command(rest, current_model());
    } catch (const std::exception &e) {
        diagnostic("platform command \"" + words + "\" failed: " + e.what());
        return kErrNoService;
    }
}

}  // namespace qdsim

extern "C" std::int32_t vsh_system2(vsh_cmd_req *req) {
    using namespace qdsim;
    SwitchLock lock(switch_mutex());
    if (req == nullptr) {
        diagnostic("vsh_system2 without a command record");
        return kErrBadArgument;
    }
    if (req->word0 != 1 || req->word776 != 2 || req->word780 != 2) {
        diagnostic("vsh_system2 record with words " + std::to_string(req->word0) + ", " + std::to_string(req->word776) +
                   ", " + std::to_string(req->word780) + " (expected 1, 2, 2)");
        return kErrBadArgument;
    }
    if (std::memchr(req->cmd_line, 0, sizeof req->cmd_line) == nullptr) {
        diagnostic("vsh_system2 command line is not NUL-terminated within its 256 bytes");
        return kErrBadArgument;
    }
    const std::string line = req->cmd_line;
    const auto runner = printer::commands().runner;
    return runner ? runner(line) : run_platform_command(line);
}
