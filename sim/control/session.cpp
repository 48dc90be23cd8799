// SPDX-License-Identifier: MIT
// Commands as hosts run them: a transport handle each, the clock, the end.
#include <chrono>
#include <vector>

#include "core/cleanup.hpp"
#include "core/command_end.hpp"
#include "core/diagnostics.hpp"
#include "core/lock.hpp"
#include "model/model.hpp"
#include "mts/router.hpp"
#include "qdsim/sim.h"

namespace qdsim {
namespace {

// The clock mode and, in real time, where the clock started and how many
// whole seconds of it the model has been given.
struct ClockState {
    ClockMode mode = ClockMode::per_command;
    std::chrono::steady_clock::time_point start;
    std::uint64_t applied = 0;
};

ClockState &clock_state() {
    static ClockState state;
    return state;
}

// In real time the model gets one tick per whole second elapsed since the
// mode was chosen, before a command reads it.
void catch_up_real_time() {
    ClockState &c = clock_state();
    if (c.mode != ClockMode::real_time) return;
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - c.start);
    const auto due = static_cast<std::uint64_t>(elapsed.count());
    if (due > c.applied) {
        current_model().tick(due - c.applied);
        c.applied = due;
    }
}

}  // namespace

void set_clock_mode(ClockMode mode) {
    SwitchLock lock(switch_mutex());
    ClockState &c = clock_state();
    c.mode = mode;
    c.start = std::chrono::steady_clock::now();
    c.applied = 0;
}


std::uint32_t open_command() {
    SwitchLock lock(switch_mutex());
    catch_up_real_time();
    return mts::open_handle();
}

void close_command(std::uint32_t mts_handle) {
    SwitchLock lock(switch_mutex());
    if (!mts::handle_open(mts_handle)) {
        diagnostic("close_command of handle " + hex32(mts_handle) + ", which is not open");
        return;
    }
    run_command_end_hooks(mts_handle);
    for (const std::string &problem : mts::close_handle(mts_handle))
        diagnostic("command " + hex32(mts_handle) + ": " + problem);
    Model &model = current_model();
    if (!model.take_counters_cleared() && clock_state().mode == ClockMode::per_command) model.tick(1);
}

std::size_t live_messages() { return mts::live_messages(); }

std::vector<std::string> check_ledger(std::uint32_t mts_handle) { return mts::check_handle(mts_handle); }

void shutdown() {
    SwitchLock lock(switch_mutex());
    run_cleanups();
}

}  // namespace qdsim
