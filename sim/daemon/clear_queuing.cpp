// SPDX-License-Identifier: MIT
// Clearing the queuing counters: all interfaces (18), one interface (24).
//
// The daemon's queuing counters of an Ethernet interface are the counter
// blocks of its "queuing" and "extended" sections (every object named
// "counters" in them); a clear zeroes those and leaves the configuration
// beside them (qos-groups, bandwidths, thresholds, CoS maps) as it is.
// Counters with a rate go on growing from 0 at the next tick.
//
// Both replies are a status word (host order), which the handlers do not
// read:
//   18: 0; the request's if_index is not looked at.
//   24: 0 once the interface's counters are zero. An interface that the
//       daemon keeps no queuing counters of (a host interface, whose
//       counters are the statistics client's, or another kind) is cleared
//       of nothing and also answers 0. Index 0, or an index the switch does
//       not know, answers kErrNoInterface and changes nothing.
#include <initializer_list>

#include "core/errors.hpp"
#include "daemon/daemon.hpp"
#include "qdcli/wire.h"

namespace qdsim::daemon {
namespace {

constexpr std::initializer_list<const char *> kQueuingSections = {"/queuing", "/extended"};

void clear_queuing_counters(const Interface &i) {
    if (i.kind != InterfaceKind::ethernet || i.data == nullptr) return;
    for (const char *section : kQueuingSections)
        if (Json *value = i.data.edit(section)) zero_counter_blocks(*value);
}

Reply clear_all(const Request &, Model &model) {
    for (const Interface &i : model.interfaces()) clear_queuing_counters(i);
    model.note_counters_cleared();
    return Reply::status(0);
}

Reply clear_one(const Request &request, Model &model) {
    const Interface *i = request.if_index == 0 ? nullptr : model.interface(request.if_index);
    if (i == nullptr) return Reply::status(static_cast<std::uint32_t>(kErrNoInterface));
    clear_queuing_counters(*i);
    model.note_counters_cleared();
    return Reply::status(0);
}

Reply refused(const Request &, Model &) { return Reply::status(QD_STATUS_UNSUPPORTED); }

const CommandRegistrar all_command{{QD_CLI_CMD_CLEAR_QUEUING_ALL, "clear queuing counters", clear_all, refused}};
const CommandRegistrar one_command{{QD_CLI_CMD_CLEAR_QUEUING_IF, "clear queuing counters interface", clear_one, refused}};

}  // namespace
}  // namespace qdsim::daemon
