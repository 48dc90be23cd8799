// SPDX-License-Identifier: MIT
// Priority-flow-control pause data of the Ethernet interfaces.
//
// Each Ethernet interface may hold a "pause" section:
//
//   "pause": {
//     "counters": {"events": 3},
//     "events": [{"time": "2026-11-23 08:14:02.318734"}, ...]
//   }
//
// counters.events is the port's pause-event count (a counter: it may have a
// rate, and "clear interface priority-flow-control" zeroes it); events is
// the port's part of the onboard log, each event with the time stamp the
// log shows (at most 255 characters). Clearing the counters keeps the
// events: the log is a history, kept by the onboard log service, and only
// the count starts again.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "model/model.hpp"

namespace qdsim::platform {

// Longest time stamp an event may carry: the log's field is 256 bytes with
// the NUL.
constexpr std::size_t kPauseStampMax = 255;

// Whether the interface is a front-panel port of its own (an Ethernet
// interface, not a sub-interface): the ports the onboard log counts.
bool is_pause_port(const Interface &i);

// The port's pause-event count (0 when it has none).
std::uint64_t pause_count(const Interface &i);

struct PauseEvent {
    std::string time;
    std::uint8_t module = 0;  // the line card's slot, counted from 0
    std::uint32_t port = 0;   // the port, counted from 0
};

// Every event of every port, oldest first (by time stamp; events with equal
// stamps in interface order, then in their list's order).
std::vector<PauseEvent> pause_events(const Model &model);

}  // namespace qdsim::platform
