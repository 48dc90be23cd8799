// SPDX-License-Identifier: MIT
// Switch-wide queuing report, Ethernet part: renders the daemon's attribute
// stream in the layout of the per-interface Ethernet report, on standard
// output. A host interface in the stream hands the rest of it to the
// host-interface renderer.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "catalogue/attribute_ids.hpp"
#include "frame/guard.hpp"
#include "hif/switch_stream_table.hpp"
#include "inventory/platform_query.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using namespace qdcli::stream;
using qdcli::PayloadReader;
namespace attr = qdcli::attr;

// Platform type on which the per-ASIC multicast tail drops replace the
// total multicast cross-bar statistics.
constexpr std::int32_t kPlatformPerAsicMcast = 3;

struct EthContext : WalkState {
    cmd_rsp *rsp = nullptr;
    // The interface being rendered, for the host's observer.
    bool in_subject = false;
    qdcli_subject subject{};
    char name[32] = "";

    void end_subject() {
        if (in_subject) qdcli::observe::subject_end(subject);
        in_subject = false;
    }
};

const char *active_text(std::uint32_t v) { return v != 0 ? "Active" : "Inactive"; }

void interface_row(EthContext &c, const PayloadReader &v) {
    const std::uint32_t if_index = word_of(v);
    std::uint8_t type = 0;
    if_index_get_type(if_index, &type);
    c.end_subject();
    char name[32];
    qdcli::interface_name(if_index, name, sizeof name);
    if (type == IF_TYPE_HIF) {
        c.result = qd_cli_show_queuing_intf_switch_hif(c.rsp, name, if_index);
        c.done = true;
        return;
    }
    std::memcpy(c.name, name, sizeof name);
    c.subject = qdcli::observe::interface(if_index, c.name);
    c.in_subject = true;
    qdcli::observe::subject_begin(c.subject);
    std::printf("%s queuing information:\n", name);
}

constexpr std::array<Row<EthContext>, 22> kEthRows{{
    {attr::sw_if_index, u32, interface_row},
    {attr::sw_tx_qos_group, u8,
     [](EthContext &, const PayloadReader &v) {
         if (byte_of(v) == 0) {
             std::puts("  TX Queuing");
             std::puts("    qos-group  sched-type  oper-bandwidth");
         }
         std::printf("        %u", static_cast<unsigned>(byte_of(v)));
     }},
    {attr::sw_sched_priority, u8,
     [](EthContext &, const PayloadReader &v) { std::printf("       %s", byte_of(v) != 0 ? "priority" : "WRR     "); }},
    {attr::sw_oper_bandwidth, u8, [](EthContext &, const PayloadReader &v) { std::printf("     %5d\n", byte_of(v)); }},
    {attr::sw_mcast_tail_drops, u64,
     [](EthContext &, const PayloadReader &v) {
         if (qd_cli_platform_type_get() != kPlatformPerAsicMcast) return;
         std::puts("    Statistics:");
         std::printf("        Mcast pkts tail dropped on this egress asic\t: %llu \n", counter_of(v));
     }},
    {attr::sw_rx_qos_group, u8,
     [](EthContext &, const PayloadReader &v) {
         if (byte_of(v) == 0) std::puts("\n  RX Queuing");
         std::printf("    qos-group %u\n", static_cast<unsigned>(byte_of(v)));
     }},
    {attr::sw_q_size, u32, [](EthContext &, const PayloadReader &v) { std::printf("    q-size: %d, ", signed_of(v)); }},
    {attr::sw_q_size_40g, u32, [](EthContext &, const PayloadReader &v) { std::printf("q-size-40g: %d, ", signed_of(v)); }},
    {attr::sw_mtu_hw, u16, [](EthContext &, const PayloadReader &v) { std::printf("HW MTU: %4d ", half_of(v)); }},
    {attr::sw_mtu_configured, u16, [](EthContext &, const PayloadReader &v) { std::printf("(%4d configured)\n", half_of(v)); }},
    {attr::sw_no_drop, u8,
     [](EthContext &, const PayloadReader &v) {
         std::printf("    drop-type: %s, ", byte_of(v) != 0 ? "no-drop" : "drop");
     }},
    {attr::sw_xon, u32, [](EthContext &, const PayloadReader &v) { std::printf("xon: %u, ", word_of(v)); }},
    {attr::sw_xoff, u32, [](EthContext &, const PayloadReader &v) { std::printf("xoff: %u\n", word_of(v)); }},
    {attr::sw_rx_port_pkts, u32,
     [](EthContext &, const PayloadReader &v) {
         std::puts("    Statistics:");
         std::printf("        Pkts received over the port\t\t: %u\n", word_of(v));
     }},
    {attr::sw_ucast_to_xbar, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Ucast pkts sent to the cross-bar\t: %u\n", word_of(v));
     }},
    {attr::sw_mcast_to_xbar, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Mcast pkts sent to the cross-bar\t: %u\n", word_of(v));
     }},
    {attr::sw_ucast_from_xbar, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Ucast pkts received from the cross-bar\t: %u\n", word_of(v));
     }},
    {attr::sw_tx_port_pkts, u32,
     [](EthContext &, const PayloadReader &v) { std::printf("        Pkts sent to the port\t\t\t: %u\n", word_of(v)); }},
    {attr::sw_ingress_discards, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Pkts discarded on ingress\t\t: %u\n", word_of(v));
     }},
    // The pause states carry the one-byte type but are sent and tested as
    // 32-bit words.
    {attr::sw_pfc_rx_active, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Per-priority-pause status\t\t: Rx (%s), ", active_text(word_of(v)));
     }},
    {attr::sw_pfc_tx_active, u32,
     [](EthContext &, const PayloadReader &v) { std::printf("Tx (%s)\n\n", active_text(word_of(v))); }},
    {attr::sw_mcast_from_xbar_total, u32,
     [](EthContext &, const PayloadReader &v) {
         if (qd_cli_platform_type_get() == kPlatformPerAsicMcast) return;
         std::puts("  Total Multicast crossbar statistics:");
         std::printf("    Mcast pkts received from the cross-bar\t: %u\n", word_of(v));
     }},
}};
static_assert(ids_unique(kEthRows), "one row per attribute ID");

}  // namespace

extern "C" std::int32_t qd_cli_show_queuing_intf_switch(cmd_rsp *rsp) {
    return qdcli::guarded(
        [&] {
            EthContext context;
            context.rsp = rsp;
            const std::int32_t result = walk(rsp, kEthRows, context);
            context.end_subject();
            return result;
        },
        -1);
}
