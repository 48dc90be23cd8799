// SPDX-License-Identifier: MIT
#include "internal_stats/internal_stats.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>
#include <vector>

#include "frame/exchange.hpp"
#include "frame/exchange_failure.hpp"
#include "frame/guard.hpp"
#include "frame/message.hpp"
#include "output/observe.hpp"
#include "output/printer.hpp"
#include "internal_stats/port_records.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace qdcli::internal_stats {
namespace {

// Every message of this command is formatted into a buffer of this size.
constexpr std::size_t kMessageBuffer = 80;

// The daemon's answer to QD_CLI_CMD_GET_NIF_PORT: slot, then NIF port.
constexpr std::size_t kNifReplySize = 6;

struct NifPort {
    std::uint16_t slot = 0;
    std::uint32_t if_index = 0;  // 0: the daemon knows none
};

NifPort decode_nif_port(const PayloadReader &payload) { return {payload.be16(0), payload.be32(2)}; }

lc_stats_req internal_ports_request(const NifPort &nif) {
    // The result of the lookup is not examined; starting at 0 keeps the
    // request defined when it fails.
    std::uint8_t vaq = 0;
    if_index_sat_get_sat_from_slot(static_cast<std::uint8_t>(nif.slot & 0xffu), &vaq);
    lc_stats_req request = make_lc_request(LC_STATS_CMD_INTERNAL_PORTS, 2);
    put_be32(request.hdr.vaq_id, vaq);
    put_be32(request.hdr.slot, nif.slot);
    const std::uint32_t port = hton_if_index(nif.if_index);
    std::memcpy(request.hdr.if_index, &port, sizeof port);
    std::memcpy(request.target_if_index, &port, sizeof port);
    return request;
}

// The working tables, released together whatever path the command takes.
struct WorkingTables {
    std::pmr::vector<std::uint64_t> n2h_ctrl, n2h_data, n2h_drop, h2n_ctrl, h2n_data, h2n_drop;
    std::pmr::vector<qd_port_map_entry> port_map;

    explicit WorkingTables(std::pmr::memory_resource *resource)
        : n2h_ctrl(resource), n2h_data(resource), n2h_drop(resource), h2n_ctrl(resource), h2n_data(resource),
          h2n_drop(resource), port_map(resource) {}

    // Allocates in the order n2h_ctrl, n2h_data, n2h_drop, h2n_ctrl,
    // h2n_data, h2n_drop, port_map. Throws std::bad_alloc.
    void allocate(std::uint32_t rows, std::uint32_t records) {
        n2h_ctrl.resize(std::size_t{rows} * 3);
        n2h_data.resize(std::size_t{rows} * 3);
        n2h_drop.resize(std::size_t{rows} * 5);
        h2n_ctrl.resize(std::size_t{rows} * 3);
        h2n_data.resize(std::size_t{rows} * 3);
        h2n_drop.resize(std::size_t{rows} * 4);
        port_map.resize(records);
    }
};

// Formats a failure into the command's message buffer (longer text is cut),
// prints it as it stands, tells it and flushes it.
__attribute__((format(printf, 4, 5))) void tell(Printer &out, qdcli_failure_kind kind, std::int32_t code,
                                                const char *format, ...) {
    va_list args;
    va_start(args, format);
    out.vfail(kind, code, kMessageBuffer, format, args);
    va_end(args);
    out.flush();
}

}  // namespace

std::int32_t show_internal_stats(cmd_paraminfo *pinfo, std::uint32_t if_index, const char *if_name,
                                 std::pmr::memory_resource *tables) {
    // A call without the shell's record has nothing to print to.
    if (pinfo == nullptr) return 0;
    if (if_name == nullptr) if_name = "";
    Printer out(pinfo);
    const observe::Subject subject(observe::interface(if_index, if_name));
    const std::uint32_t mts_handle = pinfo->mts_handle;

    // 1. The slot and the NIF port behind the interface, from the daemon.
    NifPort nif;
    {
        ReceivedMessage reply(mts_handle);
        if (const auto status = ask_daemon(out, mts_handle, QD_CLI_CMD_GET_NIF_PORT, if_index, reply, kMessageBuffer))
            return *status;
        const PayloadReader payload = reply.payload();
        if (!payload.covers(0, kNifReplySize)) {
            tell(out, QDCLI_FAILURE_TRUNCATED, 0, "Truncated NIF port reply: %zu of %zu bytes\n", payload.length(), kNifReplySize);
            return 0;
        }
        nif = decode_nif_port(payload);
    }  // the daemon's reply is released here, before the line card is asked
    if (nif.if_index == 0) {
        tell(out, QDCLI_FAILURE_PLATFORM, 0, "%s: failed to find nif port for ifidx 0x%x", "qd_cli_show_internal_stats", if_index);
        return 0;
    }

    // 2. The extender's port records, from the slot's statistics agent.
    ReceivedMessage reply(mts_handle);
    const ExchangeResult exchange =
        lc_stats_exchange(mts_handle, lc_stats_node(nif.slot), internal_ports_request(nif), reply);
    switch (exchange.outcome) {
    case Outcome::send_failed:
        tell(out, QDCLI_FAILURE_SEND, exchange.error, "Cmd send failed for %s with error code %s\n", if_name,
             error_text(exchange.error));
        return 0;
    case Outcome::recv_failed:
        tell(out, QDCLI_FAILURE_RECEIVE, exchange.error, "Cmd recv failed for %s with error code %s\n", if_name,
             error_text(exchange.error));
        return 0;
    case Outcome::empty_payload:
        tell(out, QDCLI_FAILURE_EMPTY, 0, "mts payload is empty");
        return 0;
    case Outcome::ok:
        break;
    }
    const PayloadReader payload = reply.payload();
    if (!payload.covers(0, LC_STATS_HDR_SIZE)) {
        tell(out, QDCLI_FAILURE_TRUNCATED, 0, "Truncated internal statistics reply: %zu of %zu bytes\n",
             payload.length(), std::size_t{LC_STATS_HDR_SIZE});
        return 0;
    }
    if (const std::uint32_t status = lc_reply_status(payload); status != 0) {
        tell(out, QDCLI_FAILURE_NOT_SUPPORTED, static_cast<std::int32_t>(status),
             "Cmd not supported for %s, error code %s\n", if_name, error_text(static_cast<std::int32_t>(status)));
        return 0;
    }
    const std::uint32_t count = payload.u8(2);
    if (count == 0) {
        out.literal("No internal statistic information to display!\n");
        out.flush();
        return 0;
    }
    // A reply announcing more records than it carries is refused whole.
    const std::size_t needed = LC_STATS_HDR_SIZE + std::size_t{LC_PORT_REC_SIZE} * count;
    if (!payload.covers(0, needed)) {
        tell(out, QDCLI_FAILURE_TRUNCATED, 0, "Truncated internal statistics reply: %zu of %zu bytes\n",
             payload.length(), needed);
        return 0;
    }
    const std::uint8_t *records = payload.from(LC_STATS_HDR_SIZE).data();

    std::uint32_t enif = 0, ihif = 0, inif = 0;
    qd_count_ports(records, count, &enif, &ihif, &inif);
    const std::uint32_t rows = std::max({enif, ihif, inif});

    WorkingTables t(tables);
    try {
        t.allocate(rows, count);
    } catch (const std::bad_alloc &) {
        tell(out, QDCLI_FAILURE_MEMORY, 0, "Failed to allocate memory!");
        return 0;
    }
    qd_process_internal_stats(records, count, enif, ihif, inif, rows, t.n2h_ctrl.data(), t.n2h_data.data(),
                              t.n2h_drop.data(), t.h2n_ctrl.data(), t.h2n_data.data(), t.h2n_drop.data(),
                              t.port_map.data(), out.handle());
    return 0;
}

}  // namespace qdcli::internal_stats

extern "C" int32_t qd_cli_show_internal_stats(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name) {
    return qdcli::guarded(
        [&] {
            return qdcli::internal_stats::show_internal_stats(pinfo, if_index, if_name,
                                                              std::pmr::new_delete_resource());
        },
        0);
}
