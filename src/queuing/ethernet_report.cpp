// SPDX-License-Identifier: MIT
// qd_cli_show_queuing_if: the queuing report of one front-panel Ethernet
// interface, printed through the shell's printer with typed values.
#include "queuing/ethernet_report.hpp"

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

namespace qdcli::ethernet {
namespace {

// Messages of this report are formatted into buffers of this size.
constexpr std::size_t kMessageBuffer = 50;

// The platform type on which the transmit section carries the per-ASIC
// multicast tail drops in place of the port's multicast cross-bar total.
constexpr std::int32_t kPlatformPerAsicMcast = 3;

const char *pause_text(bool active) { return active ? "Active" : "Inactive"; }

void print_transmit_section(Printer &out, const char *if_name, const QueuingReply &reply, bool per_asic_mcast) {
    out.line("%s queuing information:\n", text(attr::if_name, if_name));
    out.line("  TX Queuing\n");
    out.line("    qos-group  sched-type  oper-bandwidth\n");
    for (unsigned i = 0; i < reply.header().group_count; ++i) {
        const QosGroup g = reply.group(i);
        const observe::Row row("tx_queues");
        out.line("        %s       %s     %5s\n", u32(attr::tx_qos_group, g.qos_group),
                 text(attr::sched_type, g.strict_priority ? "priority" : "WRR     "),
                 u32(attr::oper_bandwidth, g.oper_bandwidth));
    }
    if (per_asic_mcast) {
        out.line("    Statistics:\n");
        out.line("       Mcast pkts tail dropped on this egress asic\t: %s \n",
                 u64(attr::mcast_tail_drops, reply.header().mcast_tail_drops));
    }
}

// One receive block per record, each flushed on its own; the transmit
// section goes out with the first of them.
void print_receive_section(Printer &out, const QueuingReply &reply, bool per_asic_mcast) {
    out.line("\n  RX Queuing\n");
    for (unsigned i = 0; i < reply.header().group_count; ++i) {
        const QosGroup g = reply.group(i);
        const observe::Row row("rx_queues");
        out.line("    qos-group %s\n", u32(attr::rx_qos_group, g.qos_group));
        out.line("    q-size: %s, q-size-40g: %s, HW MTU: %s (%s configured)\n", u32(attr::q_size, g.q_size),
                 u32(attr::q_size_40g, g.q_size_40g), u32(attr::mtu_hw, g.mtu_hw),
                 u32(attr::mtu_configured, g.mtu_configured));
        out.line("    drop-type: %s, xon: %s, xoff: %s\n", text(attr::drop_type, g.no_drop ? "no-drop" : "drop"),
                 u32(attr::xon, g.xon), u32(attr::xoff, g.xoff));
        out.line("    Statistics:\n");
        out.line("        Pkts received over the port\t\t: %s\n", u32(attr::rx_port_pkts, g.rx_port_pkts));
        out.line("        Ucast pkts sent to the cross-bar\t: %s\n", u32(attr::ucast_to_xbar, g.ucast_to_xbar));
        out.line("        Mcast pkts sent to the cross-bar\t: %s\n", u32(attr::mcast_to_xbar, g.mcast_to_xbar));
        out.line("        Ucast pkts received from the cross-bar\t: %s\n",
                 u32(attr::ucast_from_xbar, g.ucast_from_xbar));
        out.line("        Pkts sent to the port\t\t\t: %s\n", u32(attr::tx_port_pkts, g.tx_port_pkts));
        observe::u32(attr::ingress_discards_bits, g.ingress_discards_bits);
        out.line("        Pkts discarded on ingress\t\t: %s\n", u32(attr::ingress_discards, g.ingress_discards));
        out.line("        Per-priority-pause status\t\t: Rx (%s), Tx (%s)\n\n",
                 text(attr::pfc_rx_status, pause_text(g.pfc_rx_active)), text(attr::pfc_tx_status, pause_text(g.pfc_tx_active)));
        out.flush();
    }
    if (!per_asic_mcast) {
        if (!reply.has_mcast_total()) {
            // Only when the first platform-type answer was 3 and the second
            // is not: the total was not required and did not arrive.
            out.fail(QDCLI_FAILURE_TRUNCATED, 0, kMessageBuffer, "Truncated queuing reply: %zu of %zu bytes\n",
                     reply.length(), kMcastTotalOffset + 4);
            return;
        }
        out.line("  Total Multicast crossbar statistics:\n");
        out.line("    Mcast pkts received from the cross-bar\t: %s\n",
                 u32(attr::mcast_from_xbar_total, reply.mcast_total()));
    }
}

void print_vaq_block(Printer &out, const Header &h) {
    if (!h.vaq_buf_hidden) {
        out.line("\n  VAQ interface info:\n");
        out.line("    VAQ Drop Class Buffer Size: %6s\n", u32(attr::vaq_drop_class_buf, h.vaq_drop_class_buf));
    }
    out.line("\n  Total VAQ interface statistics:\n");
    out.line("    VAQ Uplink Interface Rx Drops   : %s\n", u32(attr::vaq_uplink_rx_drops, h.vaq_uplink_rx_drops));
    out.line("    Vaq Uplink Interface Err Drops  : %s\n", u32(attr::vaq_uplink_err_drops, h.vaq_uplink_err_drops));
    out.line("    Vaq Uplink Interface Mcast Drops: %s\n", u32(attr::vaq_uplink_mcast_drops, h.vaq_uplink_mcast_drops));
}

std::int32_t show_queuing_if(cmd_paraminfo *pinfo, std::uint32_t if_index, const char *if_name) {
    // A call without the shell's record has nothing to print to.
    if (pinfo == nullptr) return 1;
    if (if_name == nullptr) if_name = "";
    const std::uint32_t cmd_id = pinfo->cmd_id;
    const bool single_interface = cmd_id == CMD_ID_SHOW_QUEUING_IF;
    Printer out(pinfo);
    const observe::Subject subject(observe::interface(if_index, if_name));

    ReceivedMessage reply(pinfo->mts_handle);
    if (const auto status = ask_daemon(out, pinfo->mts_handle, QD_CLI_CMD_SHOW_IF_QUEUING, if_index, reply, kMessageBuffer))
        return *status;

    const PayloadReader payload = reply.payload();
    if (queuing_reply_unsupported(payload)) {
        if (cmd_id == CMD_ID_UNSUPPORTED_MSG) {
            out.fail_literal(QDCLI_FAILURE_UNSUPPORTED, 1, "Unsupported interface\n");
            out.flush();
        } else {
            observe::failure(QDCLI_FAILURE_UNSUPPORTED, nullptr, 1);
        }
        return 1;
    }

    // Each of the two sections asks the platform type for itself (the answer
    // is cached once known). The first answer decides what the reply must
    // hold; should the second differ (the first query failed, or answered 0,
    // which is not cached), the receive section follows the second.
    const bool tx_per_asic_mcast = qd_cli_platform_type_get() == kPlatformPerAsicMcast;
    const QueuingReply decoded = decode_queuing_reply(payload, !tx_per_asic_mcast);
    if (!decoded.complete()) {
        // Nothing of a damaged reply is printed.
        out.fail(QDCLI_FAILURE_TRUNCATED, 0, kMessageBuffer, "Truncated queuing reply: %zu of %zu bytes\n",
                 decoded.length(), decoded.needed());
        out.flush();
        return 0;
    }

    print_transmit_section(out, if_name, decoded, tx_per_asic_mcast);
    print_receive_section(out, decoded, qd_cli_platform_type_get() == kPlatformPerAsicMcast);

    if (single_interface && decoded.header().vaq_port == 1) {
        print_vaq_block(out, decoded.header());
        // The internal statistics make their own exchanges: nothing is held
        // while they run.
        reply.release();
        qd_cli_show_internal_stats(pinfo, if_index, if_name);
    } else {
        reply.release();
    }
    out.flush();
    return 0;
}

}  // namespace
}  // namespace qdcli::ethernet

extern "C" int32_t qd_cli_show_queuing_if(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name) {
    return qdcli::guarded([&] { return qdcli::ethernet::show_queuing_if(pinfo, if_index, if_name); }, 0);
}
