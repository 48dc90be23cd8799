// SPDX-License-Identifier: MIT
// Switch-wide queuing report, host-interface part: renders the attribute
// stream of one host interface in the layout of the host-interface report
// (input buffers, queueing table, queue and port statistics, flow control),
// on standard output. Attribute 58 runs the host-interface report itself.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "catalogue/attribute_ids.hpp"
#include "frame/guard.hpp"
#include "hif/switch_stream_table.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using namespace qdcli::stream;
using qdcli::PayloadReader;
namespace attr = qdcli::attr;

constexpr std::uint32_t kNotApplicable = 0xffffffffu;  // -1 in the signed attributes
constexpr std::uint32_t kLimitDisabled = 0xffffffffu;
constexpr std::uint32_t kCosNone = 8;                   // first cos of a queue without one

// The renderer's state words; they live for one walk and change only where
// the rows below say so.
struct HifContext : WalkState {
    cmd_rsp *rsp = nullptr;
    const char *name = "";
    std::uint32_t if_index = 0;
    cmd_paraminfo *blank = nullptr;  // record handed to the nested host-interface report

    std::int32_t qg_first = 1;
    std::int32_t qg_shared = 0;
    std::int32_t cos_first = 1;
    std::int32_t queueing_hdr = 1;
    std::int32_t row_qg_first = 1;
    std::int32_t qg_col_width = 0;
    std::int32_t row_cos_first = 1;
    std::int32_t cos_col_width = 0;
};

void blanks(std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i) std::putchar(' ');
}

void print_limit(std::uint32_t limit) {
    if (limit == kLimitDisabled)
        std::puts("Disabled");
    else
        std::printf("%u bytes\n", limit);
}

void two_column_heading() {
    std::puts("\n  Queue Statistics:");
    std::printf("  queue  rx              tx             ");
    std::puts("      ");
    std::printf("  ------+---------------+---------------");
    std::puts("      ");
}

constexpr const char *kSixColumnRule = "  ---+----------------+-----------+------------+----------+-----------+";

void six_column_heading() {
    std::puts("\n  Queue Statistics:");
    std::puts(kSixColumnRule);
    std::puts("  Que|Received /      |Tail Drop  |No Buffer   |MAC Error |Multicast  |");
    std::puts("  No |Transmitted     |           |            |          |Tail Drop  |");
    std::puts(kSixColumnRule);
}

const char *pause_text(std::uint8_t v) { return v != 0 ? "xoff" : "xon"; }

void limit_tx(HifContext &, const PayloadReader &v) {
    std::printf("\n  Queue Limit Tx: ");
    print_limit(word_of(v));
}
void count_column(HifContext &, const PayloadReader &v) { std::printf("%16llu", counter_of(v)); }
void tail_drop_column(HifContext &, const PayloadReader &v) { std::printf("|%11llu", counter_of(v)); }
void no_buffer_column(HifContext &, const PayloadReader &v) { std::printf("|%12llu", counter_of(v)); }
void port_counter(HifContext &, const PayloadReader &v) { std::printf(" %-15llu", counter_of(v)); }

void run_hif_report(HifContext &c, const PayloadReader &) {
    c.blank->mts_handle = c.rsp != nullptr ? c.rsp->mts_handle : 0;
    (void)qd_cli_show_queuing_hif(c.blank, c.if_index, c.name);
}

constexpr std::array<Row<HifContext>, 48> kHifRows{{
    // Heading and input buffers.
    {attr::sw_hif_slot, u8, [](HifContext &, const PayloadReader &v) { std::printf("if_slot %d, ", byte_of(v)); }},
    {attr::sw_hif_if_index, u32,
     [](HifContext &c, const PayloadReader &v) {
         std::printf("ifidx 0x%x\n", word_of(v));
         std::printf("%s queuing information:\n", c.name);
         std::printf("  Input buffer allocation:");
     }},
    {attr::sw_ib_qos_group, u8,
     [](HifContext &c, const PayloadReader &v) {
         if (c.qg_first != 0) {
             std::printf("\n  Qos-group: %d ", byte_of(v));
             c.qg_first = 0;
         } else {
             std::printf(" %d ", byte_of(v));
             c.qg_shared = 1;
         }
     }},
    {attr::sw_ib_frh, u8,
     [](HifContext &c, const PayloadReader &v) {
         if (c.qg_shared != 0) {
             std::puts(" (shared)");
             c.qg_shared = 0;
         } else {
             std::putchar('\n');
         }
         std::printf("  frh: %d\n", byte_of(v));
         c.qg_first = 1;
     }},
    {attr::sw_ib_no_drop, u8,
     [](HifContext &, const PayloadReader &v) {
         std::printf("  drop-type: %s\n", byte_of(v) != 0 ? "no-drop" : "drop");
     }},
    {attr::sw_ib_cos, u8,
     [](HifContext &c, const PayloadReader &v) {
         if (c.cos_first != 0) {
             std::printf("  cos: %d", byte_of(v));
             c.cos_first = 0;
         } else {
             std::printf(" %d", byte_of(v));
         }
     }},
    {attr::sw_ib_xon, u32,
     [](HifContext &c, const PayloadReader &v) {
         std::putchar('\n');
         std::puts("  xon       xoff      buffer-size");
         std::puts("  ---------+---------+-----------");
         std::printf("  %-9d", signed_of(v));
         c.cos_first = 1;
     }},
    {attr::sw_ib_xoff, u32, [](HifContext &, const PayloadReader &v) { std::printf(" %-9d", signed_of(v)); }},
    {attr::sw_ib_buffer_size, u32, [](HifContext &, const PayloadReader &v) { std::printf(" %-9d\n", signed_of(v)); }},

    // Queueing table: queue, qos-groups, cos values, priority, bandwidth,
    // MTU. The column counters assume one-digit qos-groups and cos values.
    {attr::sw_queue_id, u8,
     [](HifContext &c, const PayloadReader &v) {
         if (c.queueing_hdr != 0) {
             std::puts("\n  Queueing:");
             std::puts("  queue    qos-group    cos            priority  bandwidth mtu ");
             std::puts("  --------+------------+--------------+---------+---------+----");
         }
         const std::uint8_t queue = byte_of(v);
         if (queue == 0)
             std::printf("  %s", "ctrl-hi  ");
         else if (queue == 1)
             std::printf("  %s", "ctrl-lo  ");
         else
             std::printf("  %d        ", queue);
         c.queueing_hdr = 0;
     }},
    // Tested as a 32-bit word, printed from its low byte.
    {attr::sw_queue_qos_group, u32,
     [](HifContext &c, const PayloadReader &v) {
         const std::uint32_t word = word_of(v);
         const auto low = static_cast<std::uint8_t>(word);
         if (c.row_qg_first != 0) {
             if (word == kNotApplicable) {
                 std::printf("n/a");
                 c.qg_col_width = 3;
             } else {
                 std::printf("%d", low);
                 c.qg_col_width = 1;
             }
             c.row_qg_first = 0;
         } else {
             std::printf(" %d", low);
             c.qg_col_width += 2;
         }
     }},
    {attr::sw_queue_cos, u32,
     [](HifContext &c, const PayloadReader &v) {
         const std::uint32_t word = word_of(v);
         const auto low = static_cast<std::uint8_t>(word);
         if (c.row_cos_first != 0) {
             blanks(13 - c.qg_col_width);
             if (word == kCosNone)
                 std::putchar(' ');
             else
                 std::printf("%d", low);
             c.row_cos_first = 0;
             c.cos_col_width = 1;
         } else {
             std::printf(" %d", low);
             c.cos_col_width += 2;
         }
         c.row_qg_first = 1;
     }},
    {attr::sw_queue_priority, u8,
     [](HifContext &c, const PayloadReader &v) {
         blanks(15 - c.cos_col_width);
         std::printf(" %3s", byte_of(v) != 0 ? "PRI" : "WRR");
         c.row_cos_first = 1;
     }},
    {attr::sw_queue_bandwidth, u8, [](HifContext &, const PayloadReader &v) { std::printf("     %5d", byte_of(v)); }},
    {attr::sw_queue_mtu, u16, [](HifContext &, const PayloadReader &v) { std::printf("      %4d\n", half_of(v)); }},

    // Threshold and queue limits.
    {attr::sw_buffer_threshold, u32,
     [](HifContext &, const PayloadReader &v) { std::printf("\n  Buffer threshold: %u bytes", word_of(v)); }},
    {attr::sw_queue_limit, u32,
     [](HifContext &, const PayloadReader &v) {
         std::printf("\n  Queue limit: ");
         print_limit(word_of(v));
         two_column_heading();
     }},
    {attr::sw_queue_limit_tx, u32, limit_tx},
    {attr::sw_queue_limit_rx, u32,
     [](HifContext &, const PayloadReader &v) {
         std::printf("  Queue Limit Rx: ");
         print_limit(word_of(v));
         six_column_heading();
     }},
    {attr::sw_queue_limit_tx_alt, u32, limit_tx},
    {attr::sw_queue_limit_rx_alt, u32,
     [](HifContext &, const PayloadReader &v) {
         std::printf("  Queue Limit Rx: ");
         print_limit(word_of(v));
         two_column_heading();
     }},

    // Queue statistics, two-column rows.
    {attr::sw_stats_queue, u8, [](HifContext &, const PayloadReader &v) { std::printf("  %d", byte_of(v)); }},
    {attr::sw_stats_rx, u64, [](HifContext &, const PayloadReader &v) { std::printf("      %-15llu", counter_of(v)); }},
    {attr::sw_stats_tx, u64,
     [](HifContext &, const PayloadReader &v) {
         std::printf(" %-15llu", counter_of(v));
         std::putchar('\n');
     }},

    // Queue statistics, six-column receive and transmit rows.
    {attr::sw_rx_row_queue, u32, [](HifContext &, const PayloadReader &v) { std::printf("%3urx|", word_of(v)); }},
    {attr::sw_rx_row_received, u64, count_column},
    {attr::sw_rx_row_tail_drop, u64, tail_drop_column},
    {attr::sw_rx_row_no_buffer, u64, no_buffer_column},
    {attr::sw_rx_row_mac_error, u64,
     [](HifContext &, const PayloadReader &v) {
         std::printf("|%10llu", counter_of(v));
         std::printf("|     -     |");
         std::putchar('\n');
     }},
    {attr::sw_tx_row_queue, u32, [](HifContext &, const PayloadReader &v) { std::printf("%3utx|", word_of(v)); }},
    {attr::sw_tx_row_transmitted, u64, count_column},
    {attr::sw_tx_row_tail_drop, u64, tail_drop_column},
    {attr::sw_tx_row_no_buffer, u64, no_buffer_column},
    {attr::sw_tx_row_mac_error, u64, [](HifContext &, const PayloadReader &v) { std::printf("|%10llu", counter_of(v)); }},
    {attr::sw_tx_row_mcast_tail_drop, u64,
     [](HifContext &, const PayloadReader &v) {
         std::printf("|%11llu|", counter_of(v));
         std::putchar('\n');
         std::puts(kSixColumnRule);
     }},

    // Port statistics.
    {attr::sw_port_rx_drop, u64,
     [](HifContext &, const PayloadReader &v) {
         std::puts("\n  Port Statistics:");
         std::puts("  rx drop         rx mcast drop   rx error        tx drop         mux ovflow    ");
         std::puts("  ---------------+---------------+---------------+---------------+--------------");
         std::printf("  %-15llu", counter_of(v));
     }},
    {attr::sw_port_rx_mcast_drop, u64, port_counter},
    {attr::sw_port_rx_error, u64, port_counter},
    {attr::sw_port_tx_drop, u64, port_counter},
    // Overflow flags and port word: active when any of the eight bytes is set.
    {attr::sw_mux_ovflow, u64,
     [](HifContext &, const PayloadReader &v) {
         bool active = false;
         for (std::size_t i = 0; i < 8; ++i) active = active || v.u8(i) != 0;
         std::printf("  %8s", active ? "  Active" : "InActive");
         std::putchar('\n');
     }},

    // Priority flow control, one row per cos.
    {attr::sw_pfc_enabled, u8,
     [](HifContext &, const PayloadReader &v) {
         std::printf("\n  Priority-flow-control enabled: %s\n", byte_of(v) != 0 ? "yes" : "no");
         std::printf("  Flow-control status: ");
         std::putchar('\n');
         std::puts("  cos     qos-group   rx pause  tx pause  masked rx pause");
         std::puts("  -------+-----------+---------+---------+---------------");
     }},
    {attr::sw_pause_cos, u32, [](HifContext &, const PayloadReader &v) { std::printf("  %d", signed_of(v)); }},
    {attr::sw_pause_qos_group, u32,
     [](HifContext &, const PayloadReader &v) {
         if (word_of(v) == kNotApplicable)
             std::printf("            n/a");
         else
             std::printf("       %8d", signed_of(v));
     }},
    {attr::sw_rx_pause, u8, [](HifContext &, const PayloadReader &v) { std::printf("    %-8s", pause_text(byte_of(v))); }},
    {attr::sw_tx_pause, u8, [](HifContext &, const PayloadReader &v) { std::printf("  %-8s", pause_text(byte_of(v))); }},
    {attr::sw_masked_rx_pause, u8, [](HifContext &, const PayloadReader &v) { std::printf("  %-4s\n", pause_text(byte_of(v))); }},

    // The stream describes the interface it was handed over for: a further
    // interface attribute is skipped and the name stays the one given.
    {attr::sw_if_index, none, [](HifContext &, const PayloadReader &) {}},
    {ATTR_RUN_HIF_REPORT, none, run_hif_report},
}};
static_assert(ids_unique(kHifRows), "one row per attribute ID");

}  // namespace

extern "C" std::int32_t qd_cli_show_queuing_intf_switch_hif(cmd_rsp *rsp, const char *if_name, std::uint32_t if_index) {
    return qdcli::guarded(
        [&] {
            // The record for the nested report: the platform's full size,
            // cleared once here; only mts_handle is set, before each run, so
            // its cmd_id stays 0 (no single-interface extras).
            cmd_paraminfo blank;
            std::memset(&blank, 0, sizeof blank);
            HifContext context;
            context.rsp = rsp;
            context.name = if_name != nullptr ? if_name : "";
            context.if_index = if_index;
            context.blank = &blank;
            const qdcli::observe::Subject subject(qdcli::observe::interface(if_index, context.name));
            return walk(rsp, kHifRows, context);
        },
        -1);
}
