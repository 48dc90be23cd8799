// SPDX-License-Identifier: MIT
// Clearing of queuing, QoS and priority-flow-control pause counters.
//
// The two clear-queuing commands work in a fixed order and stop at the first
// failed step:
//   1. the daemon's queuing counters (command 24 for one interface, 18 for
//      all); a failed exchange ends the command before anything else is
//      cleared;
//   2. the QoS counters of host interfaces (statscl), whose result is ignored;
//   3. in VDC 1 only, the pause counters, by having the shell run a
//      "clear interface priority-flow-control" command line.
// All output goes to standard output.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "catalogue/attribute_ids.hpp"
#include "frame/exchange.hpp"
#include "frame/exchange_failure.hpp"
#include "frame/guard.hpp"
#include "frame/message.hpp"
#include "inventory/enumeration.hpp"
#include "inventory/platform_query.hpp"
#include "output/bounded_string.hpp"
#include "output/observe.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace qdcli {
namespace {

// Size of the buffer snprintf_if_index writes the interface name into.
constexpr std::size_t kPauseIfNameSize = 64;

constexpr char kClearInterface[] = "clear interface ";
constexpr char kPriorityFlowControl[] = "priority-flow-control ";
constexpr char kClearAllPauseCounters[] = "clear interface priority-flow-control";

// Told to the observer, not printed: what a clear has cleared ("queuing" for
// the daemon's counters, "qos" for a host interface's QoS counters, "pause"
// for the pause counters the shell was asked to clear).

// A zero-filled shell command record with the fixed words of a clear command.
vsh_cmd_req pause_clear_request() {
    vsh_cmd_req request;
    std::memset(&request, 0, sizeof request);
    request.word0 = 1;
    request.word776 = 2;
    request.word780 = 2;
    return request;
}

// Appends `piece` (at most `max` characters of it) behind the text already in
// the command line, bounded by the room left in the field: a piece that does
// not fit is cut, the line stays NUL-terminated.
void append_to_line(vsh_cmd_req &request, const char *piece, std::size_t max) {
    const std::size_t used = strnlen_s(request.cmd_line, sizeof request.cmd_line);
    if (used >= sizeof request.cmd_line) return;  // cannot happen: the copy terminated it
    strncat_s(request.cmd_line + used, sizeof request.cmd_line - used, piece, strnlen_s(piece, max));
}

// "clear interface priority-flow-control <name>" for one interface.
void clear_pause_counters_of(std::uint32_t if_index) {
    char name[kPauseIfNameSize];
    interface_name(if_index, name, sizeof name);

    vsh_cmd_req request = pause_clear_request();
    strncpy_s(request.cmd_line, sizeof request.cmd_line, kClearInterface, sizeof kClearInterface - 1);
    append_to_line(request, kPriorityFlowControl, sizeof kPriorityFlowControl - 1);
    append_to_line(request, name, sizeof name);
    vsh_system2(&request);  // the shell tells its own failures; nothing to add
    observe::text(attr::cleared, "pause");
}

void clear_all_pause_counters() {
    vsh_cmd_req request = pause_clear_request();
    strncpy_s(request.cmd_line, sizeof request.cmd_line, kClearAllPauseCounters, sizeof kClearAllPauseCounters - 1);
    vsh_system2(&request);
    observe::text(attr::cleared, "pause");
}

// The interface the one-interface clear is about: its first argument, when
// the shell gave one and it is an interface.
struct InterfaceArgument {
    bool present = false;
    std::uint32_t if_index = 0;
    std::uint32_t raw_value = 0;  // the 32-bit value shown when it is not an interface
};

InterfaceArgument first_interface_argument(const cmd_paraminfo *pinfo) {
    InterfaceArgument result;
    const cmd_param_arg *first = pinfo->argc >= 1 ? command_arg(pinfo, 1) : nullptr;
    result.raw_value = arg_u32(first);  // 0 when there is no record or no value
    if (first != nullptr && first->param_id == PARAM_ID_IF_INDEX && first->value != nullptr) {
        result.present = true;
        result.if_index = result.raw_value;
    }
    return result;
}

}  // namespace
}  // namespace qdcli

using namespace qdcli;

extern "C" std::int32_t qd_cli_clear_qos_stats_ifindex(std::uint32_t if_index) {
    return guarded(
        [&]() -> std::int32_t {
            if (if_index == 0) return -1;
            std::uint8_t type = 0;  // stays 0 (no QoS counters) when the platform does not know the index
            if_index_get_type(if_index, &type);
            if (type != IF_TYPE_HIF) return 0;  // only host interfaces have QoS counters here
            const observe::Subject subject(observe::interface(if_index));
            const std::int32_t result = statscl_clear_qos_counters(0, if_index, 0, nullptr);
            if (result == 0) observe::text(attr::cleared, "qos");
            return result;
        },
        -1);
}

extern "C" std::int32_t qd_cli_clear_qos_stats_all(cmd_paraminfo *pinfo) {
    return guarded(
        [&]() -> std::int32_t {
            // The enumeration works on a copy of the shell's record; without
            // one there is nothing to enumerate with, hence nothing to clear.
            if (pinfo == nullptr) return 0;
            // Every enumerated index goes through the per-interface clear,
            // which itself skips what is not a host interface; its result is
            // not collected, a failed clear does not stop the others.
            for_each_enumerated_interface(pinfo, [](std::uint32_t if_index) { qd_cli_clear_qos_stats_ifindex(if_index); });
            return 0;
        },
        0);
}

extern "C" std::int32_t qd_cli_clear_queuing_interface(cmd_paraminfo *pinfo) {
    return guarded_command(
        pinfo, [&]() -> std::int32_t {

            // When the first argument is missing or is not an interface, the
            // command is refused after its message and nothing at all is
            // cleared. Going on with interface index 0 would send the daemon
            // a clear for an interface nobody named and, in VDC 1, have the
            // shell run a pause-counter clear for whatever name index 0 is
            // given; a refused command is easier to understand and repeat.
            // A missing argument (argc 0, no record or no value) is told the
            // same way, with the value 0. As for every refusal, the status
            // is 0.
            const InterfaceArgument argument = first_interface_argument(pinfo);
            if (!argument.present) {
                observe::fail_on_stdout(QDCLI_FAILURE_INVALID, 0,
                                        "Error retrieving CLI interface parameter, value is %u\n", argument.raw_value);
                return 0;
            }

            const observe::Subject subject(observe::interface(argument.if_index));
            ReceivedMessage reply(pinfo->mts_handle);
            const ExchangeResult exchange = qd_exchange(pinfo->mts_handle, QD_CLI_CMD_CLEAR_QUEUING_IF,
                                                        argument.if_index, 0, Reply::confirm_only, reply);
            if (const auto status = told_by_interface_clear(exchange)) return *status;
            observe::text(attr::cleared, "queuing");

            qd_cli_clear_qos_stats_ifindex(argument.if_index);
            if (in_vdc_one()) clear_pause_counters_of(argument.if_index);
            return 0;
        },
        -1);
}

extern "C" std::int32_t qd_cli_clear_queuing_all(cmd_paraminfo *pinfo) {
    return guarded_command(
        pinfo, [&]() -> std::int32_t {

            ReceivedMessage reply(pinfo->mts_handle);
            const ExchangeResult exchange =
                qd_exchange(pinfo->mts_handle, QD_CLI_CMD_CLEAR_QUEUING_ALL, 0, 0, Reply::confirm_only, reply);
            if (const auto status = told_on_stdout(exchange)) return *status;
            observe::text(attr::cleared, "queuing");

            qd_cli_clear_qos_stats_all(pinfo);
            if (in_vdc_one()) clear_all_pause_counters();
            return 0;
        },
        -1);
}
