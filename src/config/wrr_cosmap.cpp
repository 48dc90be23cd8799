// SPDX-License-Identifier: MIT
// Multicast WRR queue CoS map: configure, remove and show.
//
// The daemon holds the map; these handlers only build the request, hand it
// over and, for the show, print the daemon's answer. All three print to
// standard output and report transport failures with the error text on a
// line of its own.
#include <cstdint>
#include <cstdio>

#include "catalogue/attribute_ids.hpp"
#include "frame/exchange.hpp"
#include "frame/exchange_failure.hpp"
#include "frame/guard.hpp"
#include "inventory/platform_query.hpp"
#include "output/observe.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace qdcli {
namespace {

// Status returned if a handler body fails inside the library (it cannot
// throw in practice: nothing here allocates).
constexpr std::int32_t kInternalFailure = 1;

constexpr unsigned kMcastQueues = 4;
constexpr unsigned kCosValues = 8;

// The show reply: byte 4 + v holds the multicast queue of CoS v. Bytes 0 to
// 3 are not read, but the reply must reach byte 11.
constexpr std::size_t kCosMapOffset = 4;
constexpr std::size_t kCosMapReplySize = kCosMapOffset + kCosValues;

const char kNotSupported[] = "Command not supported on this platform";

// Told to the observer beside the printed map: a row per queue with the CoS
// values mapped to it.

void refuse_on_platform() { observe::fail_on_stdout(QDCLI_FAILURE_NOT_SUPPORTED, 0, "%s\n", kNotSupported); }

// Bits 0-7: the set of CoS values; bits 8-15: the queue number. Queue
// numbers are OR-ed together (never replaced); a CoS value is taken modulo
// 32. An argument record or value pointer that is missing is skipped, as is
// any argument of another kind.
std::uint32_t cosmap_value(const cmd_paraminfo &pinfo) {
    std::uint32_t value = 0;
    for (unsigned position = 1; position <= pinfo.argc; ++position) {
        const cmd_param_arg *arg = command_arg(&pinfo, position);
        if (arg == nullptr || arg->value == nullptr) continue;
        switch (arg->param_type) {
        case PARAM_TYPE_QUEUE:
            value |= std::uint32_t{arg_u8(arg)} << 8;
            break;
        case PARAM_TYPE_COS:
            value |= 1u << (arg_u8(arg) % 32u);
            break;
        default:
            break;
        }
    }
    return value;
}

// Sends a configure or remove request; the reply only confirms.
std::int32_t send_cosmap_change(const cmd_paraminfo &pinfo, std::uint8_t command) {
    ReceivedMessage reply(pinfo.mts_handle);
    const ExchangeResult result = qd_exchange(pinfo.mts_handle, command, 0, cosmap_value(pinfo),
                                              Reply::confirm_only, reply);
    return told_on_stdout(result).value_or(0);
}

struct CosMap {
    std::uint8_t queue_of_cos[kCosValues];
};

CosMap decode_cosmap(const PayloadReader &payload) {
    CosMap map{};
    for (unsigned cos = 0; cos < kCosValues; ++cos) map.queue_of_cos[cos] = payload.u8(kCosMapOffset + cos);
    return map;
}

// Header, then one row per queue: the queue number, three tabs, and each CoS
// mapped to it followed by a blank. A queue number outside 0 to 3 in the
// reply puts its CoS in no row.
void print_cosmap(const CosMap &map) {
    std::puts("MCAST Queue ID\t\t Cos Map");
    for (unsigned queue = 0; queue < kMcastQueues; ++queue) {
        const observe::Row row("mcast_queues");
        observe::u32(attr::mcast_queue, queue);
        std::printf("%d\t\t\t", static_cast<int>(queue));
        for (unsigned cos = 0; cos < kCosValues; ++cos) {
            if (map.queue_of_cos[cos] != queue) continue;
            observe::u32(attr::mcast_cos, cos);
            std::printf("%d ", static_cast<int>(cos));
        }
        std::putchar('\n');
    }
}

std::int32_t show_cosmap(const cmd_paraminfo &pinfo) {
    if (qd_cli_platform_type_get() <= 1) {
        refuse_on_platform();
        return 0;
    }
    ReceivedMessage reply(pinfo.mts_handle);
    const ExchangeResult result =
        qd_exchange(pinfo.mts_handle, QD_CLI_CMD_SHOW_WRR_COSMAP, 0, 0, Reply::read, reply);
    if (const auto status = told_on_stdout(result)) return *status;
    const PayloadReader payload = reply.payload();
    if (!payload.covers(0, kCosMapReplySize)) {
        // A reply too short to hold the map is told like an empty one (status
        // 0), with what arrived and what the map needs; nothing is printed
        // of the map.
        observe::fail_on_stdout(QDCLI_FAILURE_TRUNCATED, 0, "mts payload is too short: %zu bytes received, %zu needed\n",
                                payload.length(), kCosMapReplySize);
        reply.release();
        return 0;
    }
    const CosMap map = decode_cosmap(payload);
    print_cosmap(map);
    reply.release();
    return 0;
}

}  // namespace
}  // namespace qdcli

extern "C" {

QDCLI_EXPORT int32_t qd_cli_no_wrrqueue_cosmap(cmd_paraminfo *pinfo) {
    return qdcli::guarded_command(
        pinfo, [&]() -> std::int32_t {
            // Never refused: the remove works on every platform.
            return qdcli::send_cosmap_change(*pinfo, QD_CLI_CMD_NO_WRR_COSMAP);
        },
        qdcli::kInternalFailure);
}

QDCLI_EXPORT int32_t qd_cli_conf_wrrqueue_cosmap(cmd_paraminfo *pinfo) {
    return qdcli::guarded_command(
        pinfo, [&]() -> std::int32_t {
            if (qd_cli_platform_type_get() >= 2) {
                qdcli::refuse_on_platform();
                return 0;
            }
            if (pinfo->no_form != 0) {
                qd_cli_no_wrrqueue_cosmap(pinfo);  // its status is not passed on
                return 0;
            }
            return qdcli::send_cosmap_change(*pinfo, QD_CLI_CMD_CONF_WRR_COSMAP);
        },
        qdcli::kInternalFailure);
}

QDCLI_EXPORT int32_t qd_cli_show_wrrqueue_cosmap(cmd_paraminfo *pinfo) {
    return qdcli::guarded_command(
        pinfo, [&]() -> std::int32_t {
            return qdcli::show_cosmap(*pinfo);
        },
        qdcli::kInternalFailure);
}

}  // extern "C"
