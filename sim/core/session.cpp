// SPDX-License-Identifier: MIT
#include "core/session.hpp"

#include <vector>

#include "core/diagnostics.hpp"
#include "core/lock.hpp"
#include "model/model.hpp"
#include "mts/router.hpp"
#include "qdsim/sim.h"

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

std::uint32_t open_command() { return mts::open_handle(); }

void close_command(std::uint32_t mts_handle) {
    SwitchLock lock(switch_mutex());
    if (!mts::handle_open(mts_handle)) {
        diagnostic("close_command of handle " + hex32(mts_handle) + ", which is not open");
        return;
    }
    for (const CommandEndHook &hook : hooks()) hook(mts_handle);
    for (const std::string &problem : mts::close_handle(mts_handle))
        diagnostic("command " + hex32(mts_handle) + ": " + problem);
    Model &model = current_model();
    if (!model.take_counters_cleared()) model.tick(1);
}

std::size_t live_messages() { return mts::live_messages(); }

std::vector<std::string> check_ledger(std::uint32_t mts_handle) { return mts::check_handle(mts_handle); }

}  // namespace qdsim
