// SPDX-License-Identifier: MIT
// The onboard log service of priority-flow-control pause events
// (sse_call2 operation 1128), built from the Ethernet interfaces' "pause"
// sections (platform/pause.hpp).
//
// Sub-command 7 (pause counts): the 1796-byte pause_count_table, the count
// of port p of the line card in slot m at counts[m - 1][p - 1], for slots 1
// to 4 and ports 1 to 112 (the table has no room for others); each count is
// the low 32 bits of the port's counter.
//
// Sub-command 6 (pause events): word 1 gets the number of events, and the
// events are published in the shared-memory segment under
// ftok("vrid/tessikusd_intf.h", 65) in the current directory, one 268-byte
// record each, oldest first: 4 bytes 0, the time stamp in a 256-byte
// NUL-terminated field, the port counted from 0 (32 bits), the module (the
// line card's slot) counted from 0 (8 bits), 3 bytes 0. The segment has
// exactly the events' size, or one record's size when there are none, so
// that the reader still finds it when it asks for 0 events.
//
// The log keeps the newest events only: at most /onboard_log/capacity
// (default 4096, at most 65536).
//
// An injected sse fault fails the call (-1) after the event count has been
// written, as the service does when it cannot publish the segment; the
// segment is left as it was. A buffer too short for the sub-command, or an
// unknown sub-command, fails too.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "core/diagnostics.hpp"
#include "model/sections.hpp"
#include "core/command_end.hpp"
#include "platform/keyed_segment.hpp"
#include "platform/pause.hpp"
#include "platform/services.hpp"
#include "qdcli/platform.h"
#include "qdcli/wire.h"

namespace qdsim::platform {
namespace {

// Events the log keeps (by default, at most); slots and ports of the counts table.
constexpr std::uint64_t kDefaultCapacity = 4096, kMaxCapacity = 65536;
constexpr std::size_t kSlots = 4, kPorts = 112;
constexpr std::uint32_t kEventQueryLength = 8;

// Record layout.
constexpr std::size_t kStampAt = 4, kPortAt = 260, kModuleAt = 264;

const SectionRegistrar onboard_log_section{Scope::root, "onboard_log", [](const Checker &check) {
    check.members_among("", {"capacity"});
    if (find(check.value(), "/capacity") != nullptr && check.unsigned_value("/capacity", kMaxCapacity) == 0)
        check.fail("/capacity", "the log keeps at least 1 event");
}};

KeyedSegment &log_segment() {
    // Never destroyed: qdsim::shutdown may run after static destruction has
    // begun. A host that exits without shutting down still gets it removed.
    static KeyedSegment *segment = [] {
        auto *s = new KeyedSegment(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID, "onboard pause log segment");
        std::atexit([] { log_segment().release(); });
        return s;
    }();
    return *segment;
}

// The reader has read the segment by the time its command ends: other
// processes sharing the key may publish again.
const CommandEndRegistrar release_log_segment{[](std::uint32_t) { log_segment().end_use(); }};

std::vector<PauseEvent> logged_events(const Model &model) {
    std::vector<PauseEvent> events = pause_events(model);
    const std::uint64_t capacity = get_u64(model.root(), "/onboard_log/capacity", kDefaultCapacity);
    if (events.size() > capacity) events.erase(events.begin(), events.end() - static_cast<std::ptrdiff_t>(capacity));
    return events;
}

std::vector<std::uint8_t> records_of(const std::vector<PauseEvent> &events) {
    std::vector<std::uint8_t> bytes(events.size() * PAUSE_EVENT_REC_SIZE, 0);
    for (std::size_t n = 0; n < events.size(); ++n) {
        std::uint8_t *record = bytes.data() + n * PAUSE_EVENT_REC_SIZE;
        const std::string &time = events[n].time;
        std::memcpy(record + kStampAt, time.data(), std::min(time.size(), kPauseStampMax));
        std::memcpy(record + kPortAt, &events[n].port, sizeof events[n].port);
        record[kModuleAt] = events[n].module;
    }
    return bytes;
}

void write_count(void *buffer, std::int32_t count) { std::memcpy(static_cast<std::uint8_t *>(buffer) + 4, &count, 4); }

std::int32_t pause_counts(void *buffer, std::uint32_t length, const Model &model) {
    if (length < sizeof(pause_count_table)) {
        diagnostic("onboard log: the pause-count query needs " + std::to_string(sizeof(pause_count_table)) +
                   " bytes, not " + std::to_string(length));
        return -1;
    }
    pause_count_table table{};
    table.subcmd = ONBOARD_LOG_PAUSE_COUNTS;
    for (const Interface &i : model.interfaces()) {
        if (!is_pause_port(i) || i.slot < 1 || i.slot > kSlots || i.port < 1 || i.port > kPorts) continue;
        table.counts[i.slot - 1][i.port - 1] = static_cast<std::uint32_t>(pause_count(i));
    }
    std::memcpy(buffer, &table, sizeof table);
    return 0;
}

std::int32_t pause_events_query(void *buffer, std::uint32_t length, const Model &model) {
    if (length < kEventQueryLength) {
        diagnostic("onboard log: the pause-event query needs " + std::to_string(kEventQueryLength) + " bytes, not " +
                   std::to_string(length));
        return -1;
    }
    const std::vector<PauseEvent> events = logged_events(model);
    const std::vector<std::uint8_t> records = records_of(events);
    const auto count = static_cast<std::int32_t>(events.size());
    write_count(buffer, count);
    std::string error;
    if (!log_segment().publish(records.data(), records.size(), std::max<std::size_t>(records.size(), PAUSE_EVENT_REC_SIZE),
                               error)) {
        diagnostic("onboard log: " + error);
        return -1;
    }
    return 0;
}

std::uint32_t subcommand(const void *buffer, std::uint32_t length) {
    std::uint32_t word = 0;
    if (buffer != nullptr && length >= 4) std::memcpy(&word, buffer, 4);
    return word;
}

std::int32_t serve(void *buffer, std::uint32_t length, Model &model) {
    if (buffer == nullptr || length < 4) {
        diagnostic("onboard log: no sub-command in a buffer of " + std::to_string(length) + " bytes");
        return -1;
    }
    switch (subcommand(buffer, length)) {
    case ONBOARD_LOG_PAUSE_COUNTS: return pause_counts(buffer, length, model);
    case ONBOARD_LOG_PAUSE_EVENTS: return pause_events_query(buffer, length, model);
    default:
        diagnostic("onboard log: unknown sub-command " + std::to_string(subcommand(buffer, length)));
        return -1;
    }
}

// The event query fails having told how many events there are.
void failed(void *buffer, std::uint32_t length, Model &model) {
    if (buffer != nullptr && length >= kEventQueryLength && subcommand(buffer, length) == ONBOARD_LOG_PAUSE_EVENTS)
        write_count(buffer, static_cast<std::int32_t>(logged_events(model).size()));
}

const Sse2Registrar onboard_log{SSE_OP_ONBOARD_LOG, serve, failed};

}  // namespace
}  // namespace qdsim::platform
