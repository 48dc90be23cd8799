// SPDX-License-Identifier: MIT
// Onboard logs of priority-flow-control pause events.
//
// Both commands ask the onboard-logging service through sse_call2; the count
// per port comes back in the request buffer itself, the list of events is
// read from the System V shared-memory segment that the service keeps under
// the key ftok("vrid/tessikusd_intf.h", 65). The segment is the service's:
// it is found, attached, read, detached, and never created, resized or
// removed here. Output goes to standard output; the messages printed with
// fputs carry no newline, the shell's prompt follows them.
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "catalogue/attribute_ids.hpp"
#include "frame/guard.hpp"
#include "output/observe.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace qdcli {
namespace {

constexpr int kModules = 4;
constexpr int kPortsPerModule = 112;

constexpr char kCountsDashes[] = "----------------------------";                          // 28
constexpr char kEventsDashes[] = "----------------------------------------------------";  // 52
static_assert(sizeof kCountsDashes - 1 == 28 && sizeof kEventsDashes - 1 == 52);

// Told to the observer beside the printed lines: a row per port with pause
// events (module and port counted from 1, as printed) and its count, a row
// per event with its port and its time stamp (escaped as printed).

// One pause_event_rec in the segment, host order.
constexpr std::size_t kStampOffset = 4;
constexpr std::size_t kStampFieldSize = 256;
constexpr std::size_t kPortOffset = 260;
constexpr std::size_t kModuleOffset = 264;
constexpr std::size_t kStampShown = 26;  // characters of the time stamp that are printed
static_assert(kModuleOffset < PAUSE_EVENT_REC_SIZE && kStampOffset + kStampFieldSize <= kPortOffset);

// Request of the event-list query: sub-command, then the event count that
// the service writes back (signed).
struct pause_event_query {
    std::int32_t subcmd;
    std::int32_t count;
};
static_assert(sizeof(pause_event_query) == 8);

// The segment is writable by every local user, so its text is not trusted
// to be harmless to a terminal: a byte outside printable ASCII (controls,
// DEL, and every byte from 0x80, which includes the C1 controls) is shown
// as \xNN. Printable text is kept byte for byte. `out` holds 4 bytes per
// input byte plus the NUL.
void escape_segment_text(const char *text, std::size_t length, char *out) {
    static constexpr char kHex[] = "0123456789abcdef";
    for (std::size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x20 && byte < 0x7f) {
            *out++ = static_cast<char>(byte);
        } else {
            *out++ = '\\';
            *out++ = 'x';
            *out++ = kHex[byte >> 4];
            *out++ = kHex[byte & 0xf];
        }
    }
    *out = '\0';
}

void print_event(const std::uint8_t *record) {
    // The time stamp is read within its own field: at most 26 characters, up
    // to its NUL when it has one in reach, so an unterminated field is never
    // read beyond. Escaping may make it longer than 26: it is then printed
    // whole, so that an escape is never cut in half; shorter text is padded
    // to 26 as before.
    char stamp[4 * kStampShown + 1] = {};
    const auto *field = reinterpret_cast<const char *>(record + kStampOffset);
    std::size_t length = 0;
    while (length < kStampShown && field[length] != '\0') ++length;
    escape_segment_text(field, length, stamp);

    std::uint32_t port = 0;
    std::memcpy(&port, record + kPortOffset, sizeof port);
    const std::uint8_t module = record[kModuleOffset];

    // Module and port are stored counted from 0 and shown counted from 1.
    const observe::Row row("pause_events");
    observe::u32(attr::event_module, module + 1u);
    observe::u32(attr::event_port, port + 1u);
    observe::text(attr::event_time, stamp);
    std::printf(" %d/%d             %-26s \n", module + 1, static_cast<int>(port + 1u), stamp);
}

// Number of whole records that may be read from the attached segment: the
// count the service answered, but never more than the segment really holds.
// shmget already refuses a size larger than the segment; the size the kernel
// reports for the segment is asked for all the same, so that the list never
// runs past the segment whatever count the service wrote. When the kernel
// cannot tell (no permission to ask), the size shmget vouched for is the
// bound.
std::size_t readable_records(int segment, std::int32_t count, std::size_t requested_size) {
    if (count <= 0) return 0;
    shmid_ds info{};
    const std::size_t segment_size =
        shmctl(segment, IPC_STAT, &info) == 0 ? static_cast<std::size_t>(info.shm_segsz) : requested_size;
    const std::size_t whole = segment_size / PAUSE_EVENT_REC_SIZE;
    return static_cast<std::size_t>(count) < whole ? static_cast<std::size_t>(count) : whole;
}

// A failure of the platform, told and printed in the service's words.
std::int32_t refused(const char *message) {
    observe::fail_on_stdout(QDCLI_FAILURE_PLATFORM, -1, "%s", message);
    return -1;
}

// A list's heading: its title, then its two column lines between dashes.
void heading(const char *title, const char *dashes, const char *columns, const char *second) {
    for (const char *line : {title, dashes, columns, second, dashes}) std::puts(line);
}

}  // namespace
}  // namespace qdcli

using namespace qdcli;

extern "C" std::int32_t qd_cli_show_logging_onboard_flow_control_td(void) {
    return guarded(
        []() -> std::int32_t {
            // The whole table is cleared first, so that a service that fills
            // only part of it never makes stack contents show as counts.
            pause_count_table table;
            std::memset(&table, 0, sizeof table);
            table.subcmd = ONBOARD_LOG_PAUSE_COUNTS;
            if (sse_call2(SSE_OP_ONBOARD_LOG, &table, sizeof table) == -1)
                return refused("There was a problem processing the request.");
            heading("\n\nNumber of Pause Events per Port", kCountsDashes, "Ethernet      Number of",
                    "Interface     Pause Events");

            bool any = false;
            for (int module = 1; module <= kModules; ++module) {
                for (int port = 1; port <= kPortsPerModule; ++port) {
                    const std::uint32_t count = table.counts[module - 1][port - 1];
                    if (count == 0) continue;
                    // Shown signed, as the service's counts always were:
                    // 2^31 and above print negative.
                    const observe::Row row("pause_counts");
                    observe::u32(attr::pause_module, static_cast<std::uint32_t>(module));
                    observe::u32(attr::pause_port, static_cast<std::uint32_t>(port));
                    observe::u32(attr::pause_events, count);
                    std::printf(" %d/%d            %d \n", module, port, static_cast<int>(count));
                    any = true;
                }
            }
            if (!any) std::puts("No Pause Events have occurred on the switch.");
            return 0;
        },
        -1);
}

extern "C" std::int32_t qd_cli_show_logging_onboard_flow_control_pe(void) {
    return guarded(
        []() -> std::int32_t {
            pause_event_query query{static_cast<std::int32_t>(ONBOARD_LOG_PAUSE_EVENTS), 0};
            if (sse_call2(SSE_OP_ONBOARD_LOG, &query, sizeof query) == -1) {
                if (query.count == 0) {
                    std::fputs("No Pause Events have occurred.", stdout);
                    return 0;
                }
                return refused("The command failed.");
            }

            // A count of 0 or below asks for a segment of any size (no record
            // is read from it); a positive count for one that holds all of its
            // records. The size is computed in 64 bits: a huge count asks for
            // more than any segment holds and is refused by shmget.
            const std::size_t requested_size =
                query.count > 0 ? static_cast<std::size_t>(query.count) * PAUSE_EVENT_REC_SIZE : 0;
            const key_t key = ftok(PAUSE_LOG_FTOK_PATH, PAUSE_LOG_FTOK_ID);
            const int segment = key == static_cast<key_t>(-1) ? -1 : shmget(key, requested_size, 0666);
            if (segment < 0) return refused("Error Locating shared memory space!");
            void *base = shmat(segment, nullptr, 0);
            if (base == reinterpret_cast<void *>(-1)) return refused("Error attaching to the shared memory space!");
            heading("\n\nList of Pause Events", kEventsDashes, "Ethernet         Timestamp", "Interface");

            const std::size_t records = readable_records(segment, query.count, requested_size);
            const auto *bytes = static_cast<const std::uint8_t *>(base);
            for (std::size_t i = 0; i < records; ++i) print_event(bytes + i * PAUSE_EVENT_REC_SIZE);

            if (shmdt(base) != 0) observe::fail_on_stdout(QDCLI_FAILURE_PLATFORM, 0, "%s", "detach fails!");
            return 0;
        },
        -1);
}
