// SPDX-License-Identifier: MIT
// The extended queuing report: entry from the command's first argument,
// the interface checks, then one exchange with the queuing daemon (command
// code 23) and the report, printed through the shell's printer.
//
// Choices where the shell and the daemon leave room:
//   - A command that arrives without an argument record (argc 0 or a null
//     record at position 1) is treated like an argument whose value pointer
//     is null: interface index 0, refused with "Invalid interface".
//   - The status word is looked at as soon as the reply carries it, so an
//     "unsupported" answer is told whatever its length. Any other reply
//     shorter than the 413-byte record is refused as a whole with a message
//     that names the damage (bytes received of bytes expected); it is
//     released and the command ends with 0. Nothing past the payload's end
//     is read and nothing of a short reply is printed.
//   - A null parameter-info record ends a handler with 1 and no output.
#include "queuing/extended_report.hpp"

#include <cstdint>

#include "catalogue/attribute_ids.hpp"
#include "frame/exchange.hpp"
#include "frame/exchange_failure.hpp"
#include "frame/guard.hpp"
#include "frame/message.hpp"
#include "inventory/platform_query.hpp"
#include "output/observe.hpp"
#include "output/printer.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace qdcli {
namespace {

// Attribute IDs of the report. The interface name and the drop mode are
// text although their type byte is that of unsigned integers: the shell's
// attribute catalogue marks both as text, and they are handed over as
// NUL-terminated text with the NUL counted in the length.
constexpr std::uint32_t kAttrPassCount[kIngressChannels] = {attr::ext_pass_count_ch0, attr::ext_pass_count_ch1, attr::ext_pass_count_ch2};
constexpr std::uint32_t kAttrDropCount[kIngressChannels] = {attr::ext_drop_count_ch0, attr::ext_drop_count_ch1, attr::ext_drop_count_ch2};
// Told to the observer, not printed: a line of the map carries two rows, the
// queue a CoS goes to and the scheduling of the queue numbered like the CoS.

// Transport failures are formatted into a buffer of this size (longer
// error texts are cut).
constexpr std::size_t kErrorBufferSize = 50;
constexpr std::size_t kMessageBufferSize = 80;

constexpr const char *kChannelHeading =
    " Q#       40G[0]                  40G[1]                  40G[2]\n";
constexpr const char *kChannelRule =
    "=========================================================================\n";

void print_counter_rows(Printer &out, std::uint32_t queue_attr, const std::uint32_t (&count_attr)[kIngressChannels],
                        const std::uint64_t (&counts)[kIngressChannels][kIngressQueues], const char *table) {
    for (std::uint32_t q = 0; q < kIngressQueues; ++q) {
        const observe::Row row(table);
        out.line("[%s] %20s    %20s    %20s\n", u32(queue_attr, q), u64(count_attr[0], counts[0][q]),
                 u64(count_attr[1], counts[1][q]), u64(count_attr[2], counts[2][q]));
    }
}

// The two rows of a line of the map, for the observer.
void tell_map_line(std::uint32_t n, const ExtendedQueuing &report, const char *drop_mode) {
    {
        const observe::Row row("cos_map");
        observe::u32(attr::ext_cos, n);
        observe::u32(attr::ext_cos_queue, report.cos_to_queue[n]);
    }
    const observe::Row row("ingress_queues");
    observe::u32(attr::ext_queue, n);
    observe::text(attr::ext_sched, report.sp_level[n] == 0 ? "dwrr" : "sp");
    if (report.sp_level[n] != 0) observe::u32(attr::ext_sp_level, report.sp_level[n]);
    observe::text(attr::ext_drop_mode, drop_mode);
}

void print_report(Printer &out, const char *if_name, const ExtendedQueuing &report) {
    out.line("%s queuing information extend:\n", text(attr::ext_if_name, if_name));
    out.line("Ingress Queuing\n");
    out.line("COS to Queue Map  |  Q#        Type         Drop-mode\n");
    out.line("======================================================\n");
    for (std::uint32_t n = 0; n < kIngressQueues; ++n) {
        const char *drop_mode = (report.drop_mode_bits >> n) & 1u ? "YES" : "NO";
        tell_map_line(n, report, drop_mode);
        if (report.sp_level[n] == 0)
            out.line_untold("COS[%s] ===> Q[%s]  |  Q[%s]      DWRR           %s\n", u32(attr::ext_cos, n),
                     u32(attr::ext_cos_queue, report.cos_to_queue[n]), u32(attr::ext_cos, n), text(attr::ext_drop_mode, drop_mode));
        else
            out.line_untold("COS[%s] ===> Q[%s]  |  Q[%s]      SP[%s]          %s\n", u32(attr::ext_cos, n),
                     u32(attr::ext_cos_queue, report.cos_to_queue[n]), u32(attr::ext_cos, n),
                     u32(attr::ext_sp_level, report.sp_level[n]), text(attr::ext_drop_mode, drop_mode));
    }
    out.line("\nIngress Queue Packet Pass Count:\n");
    out.line(kChannelHeading);
    out.line(kChannelRule);
    print_counter_rows(out, attr::ext_pass_queue, kAttrPassCount, report.pass_count, "pass_counts");
    out.line("\nIngress Queue Packet Drop Count:\n");
    out.line(kChannelHeading);
    out.line(kChannelRule);
    print_counter_rows(out, attr::ext_drop_queue, kAttrDropCount, report.drop_count, "drop_counts");
}

std::int32_t show_if_extend(cmd_paraminfo *pinfo, std::uint32_t if_index, const char *if_name) {
    Printer out(pinfo);
    const observe::Subject subject(observe::interface(if_index, if_name));
    ReceivedMessage reply(pinfo->mts_handle);
    if (const auto status = ask_daemon(out, pinfo->mts_handle, QD_CLI_CMD_SHOW_IF_EXTEND, if_index, reply, kErrorBufferSize))
        return *status;

    const PayloadReader payload = reply.payload();
    if (payload.covers(ExtendedQueuingLayout::status, 4) &&
        payload.host32(ExtendedQueuingLayout::status) == QD_STATUS_UNSUPPORTED) {
        out.fail_literal(QDCLI_FAILURE_UNSUPPORTED, 1, "Unsupported interface\n");
        out.flush();
        return 1;
    }
    const std::optional<ExtendedQueuing> report = decode_extended_queuing(payload);
    if (!report) {
        out.fail(QDCLI_FAILURE_TRUNCATED, 0, kMessageBufferSize, "Truncated extended queuing reply: %zu of %zu bytes\n",
                 payload.length(), ExtendedQueuingLayout::size);
        out.flush();
        return 0;
    }
    print_report(out, if_name != nullptr ? if_name : "", *report);
    reply.release();
    out.flush();
    return 0;
}

}  // namespace

std::optional<ExtendedQueuing> decode_extended_queuing(const PayloadReader &payload) {
    using L = ExtendedQueuingLayout;
    if (!payload.covers(0, L::size)) return std::nullopt;
    ExtendedQueuing report;
    for (unsigned n = 0; n < kIngressQueues; ++n) {
        report.sp_level[n] = payload.u8(L::sp_level + n);
        report.cos_to_queue[n] = payload.u8(L::cos_to_queue + n);
    }
    report.drop_mode_bits = payload.u8(L::drop_mode_bits);
    for (unsigned ch = 0; ch < kIngressChannels; ++ch) {
        for (unsigned q = 0; q < kIngressQueues; ++q) {
            const std::size_t slot = 8 * (kIngressQueues * ch + q);
            report.pass_count[ch][q] = payload.host64_low_first(L::pass_count + slot);
            report.drop_count[ch][q] = payload.host64_low_first(L::drop_count + slot);
        }
    }
    return report;
}

}  // namespace qdcli

using qdcli::guarded_command;

extern "C" int32_t qd_cli_show_queuing_intf_extend(cmd_paraminfo *pinfo) {
    return guarded_command(
        pinfo, [&]() -> std::int32_t {
            const cmd_param_arg *first = pinfo->argc >= 1 ? qdcli::command_arg(pinfo, 1) : nullptr;
            return qd_cli_show_queuing_ifindex_extend(pinfo, qdcli::arg_u32(first));
        },
        0);
}

extern "C" int32_t qd_cli_show_queuing_ifindex_extend(cmd_paraminfo *pinfo, uint32_t if_index) {
    return guarded_command(
        pinfo, [&]() -> std::int32_t {
            const qdcli::CheckedInterface checked = qdcli::check_interface(if_index);
            if (!checked.accepted) return 0;
            if (checked.type != IF_TYPE_ETH && checked.type != IF_TYPE_ETH_ALT) return 0;
            return qd_cli_show_queuing_if_extend(pinfo, if_index, checked.name);
        },
        0);
}

extern "C" int32_t qd_cli_show_queuing_if_extend(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name) {
    return guarded_command(
        pinfo, [&]() -> std::int32_t {
            return qdcli::show_if_extend(pinfo, if_index, if_name);
        },
        0);
}
