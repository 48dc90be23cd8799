// SPDX-License-Identifier: MIT
// The Ethernet interfaces' pause data (see pause.hpp), its checks, and the
// platform's command line that clears the pause counters:
//
//   clear interface priority-flow-control            every interface
//   clear interface priority-flow-control IFNAME     one, in any spelling
//
// An interface that keeps no pause counters (a host interface, a management
// port) is cleared of nothing and the command succeeds; a name the switch
// does not know answers kErrNoInterface and changes nothing.
#include "platform/pause.hpp"

#include <algorithm>

#include "core/errors.hpp"
#include "model/sections.hpp"
#include "printer/commands.hpp"

namespace qdsim::platform {
namespace {

void check_pause(const Checker &check) {
    check.members_among("", {"counters", "events"});
    if (find(check.value(), "/counters") != nullptr) {
        check.members_among("/counters", {"events"});
        check.counters("/counters");
    }
    if (find(check.value(), "/events") == nullptr) return;
    const Json &events = check.array("/events");
    for (std::size_t n = 0; n < events.size(); ++n) {
        const std::string at = "/events/" + std::to_string(n);
        check.members_among(at, {"time"});
        const Json *time = find(check.value(), at + "/time");
        if (time == nullptr || !time->is_string()) check.fail(at + "/time", "expected the event's time stamp (a text)");
        const std::size_t length = time->get_ref<const std::string &>().size();
        if (length == 0 || length > kPauseStampMax)
            check.fail(at + "/time", "a time stamp has 1 to " + std::to_string(kPauseStampMax) + " characters, not " +
                                         std::to_string(length));
    }
}

const SectionRegistrar pause_section{Scope::ethernet, "pause", check_pause};

void clear_pause_counters(const Interface &i) {
    if (i.kind != InterfaceKind::ethernet || i.data == nullptr) return;
    if (Json *section = i.data.edit("/pause")) zero_counter_blocks(*section);
}

int clear_pause(const std::string &rest, Model &model) {
    model.note_counters_cleared();
    if (rest.empty()) {
        for (const Interface &i : model.interfaces()) clear_pause_counters(i);
        return 0;
    }
    const Interface *i = model.find_interface(rest);
    if (i == nullptr) return kErrNoInterface;
    clear_pause_counters(*i);
    return 0;
}

const printer::PlatformCommandRegistrar clear_pfc{"clear interface priority-flow-control", clear_pause};

}  // namespace

bool is_pause_port(const Interface &i) { return i.kind == InterfaceKind::ethernet && !i.sub_intf; }

std::uint64_t pause_count(const Interface &i) {
    return i.data == nullptr ? 0 : get_u64(*i.data, "/pause/counters/events", 0);
}

std::vector<PauseEvent> pause_events(const Model &model) {
    std::vector<PauseEvent> events;
    for (const Interface &i : model.interfaces()) {
        if (!is_pause_port(i) || i.data == nullptr) continue;
        const Json *list = find(*i.data, "/pause/events");
        if (list == nullptr || !list->is_array()) continue;
        for (const Json &event : *list)
            events.push_back({get_string(event, "/time"), static_cast<std::uint8_t>(i.slot - 1),
                              static_cast<std::uint32_t>(i.port - 1u)});
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const PauseEvent &a, const PauseEvent &b) { return a.time < b.time; });
    return events;
}

}  // namespace qdsim::platform
