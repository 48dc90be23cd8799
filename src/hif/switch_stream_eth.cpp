// SPDX-License-Identifier: MIT
// Switch-wide queuing report, Ethernet part: renders the daemon's attribute
// stream in the layout of the per-interface Ethernet report, on standard
// output. A host interface in the stream hands the rest of it to the
// host-interface renderer.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "frame/guard.hpp"
#include "frame/platform_query.hpp"
#include "hif/switch_stream_table.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using namespace qdcli::stream;
using qdcli::PayloadReader;

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
    {0x0cff00b7u, u32, interface_row},
    {0x14ff00b8u, u8,
     [](EthContext &, const PayloadReader &v) {
         if (byte_of(v) == 0) {
             std::puts("  TX Queuing");
             std::puts("    qos-group  sched-type  oper-bandwidth");
         }
         std::printf("        %u", static_cast<unsigned>(byte_of(v)));
     }},
    {0x02ff00b9u, u8,
     [](EthContext &, const PayloadReader &v) { std::printf("       %s", byte_of(v) != 0 ? "priority" : "WRR     "); }},
    {0x14ff00bau, u8, [](EthContext &, const PayloadReader &v) { std::printf("     %5d\n", byte_of(v)); }},
    {0x15ff00bbu, u64,
     [](EthContext &, const PayloadReader &v) {
         if (qd_cli_platform_type_get() != kPlatformPerAsicMcast) return;
         std::puts("    Statistics:");
         std::printf("        Mcast pkts tail dropped on this egress asic\t: %llu \n", counter_of(v));
     }},
    {0x14ff00bcu, u8,
     [](EthContext &, const PayloadReader &v) {
         if (byte_of(v) == 0) std::puts("\n  RX Queuing");
         std::printf("    qos-group %u\n", static_cast<unsigned>(byte_of(v)));
     }},
    {0x14ff00bdu, u32, [](EthContext &, const PayloadReader &v) { std::printf("    q-size: %d, ", signed_of(v)); }},
    {0x14ff00beu, u32, [](EthContext &, const PayloadReader &v) { std::printf("q-size-40g: %d, ", signed_of(v)); }},
    {0x14ff00bfu, u16, [](EthContext &, const PayloadReader &v) { std::printf("HW MTU: %4d ", half_of(v)); }},
    {0x14ff00c0u, u16, [](EthContext &, const PayloadReader &v) { std::printf("(%4d configured)\n", half_of(v)); }},
    {0x02ff00c1u, u8,
     [](EthContext &, const PayloadReader &v) {
         std::printf("    drop-type: %s, ", byte_of(v) != 0 ? "no-drop" : "drop");
     }},
    {0x14ff00c2u, u32, [](EthContext &, const PayloadReader &v) { std::printf("xon: %u, ", word_of(v)); }},
    {0x14ff00c3u, u32, [](EthContext &, const PayloadReader &v) { std::printf("xoff: %u\n", word_of(v)); }},
    {0x14ff00c4u, u32,
     [](EthContext &, const PayloadReader &v) {
         std::puts("    Statistics:");
         std::printf("        Pkts received over the port\t\t: %u\n", word_of(v));
     }},
    {0x14ff00c5u, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Ucast pkts sent to the cross-bar\t: %u\n", word_of(v));
     }},
    {0x14ff00c6u, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Mcast pkts sent to the cross-bar\t: %u\n", word_of(v));
     }},
    {0x14ff00c7u, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Ucast pkts received from the cross-bar\t: %u\n", word_of(v));
     }},
    {0x14ff00c8u, u32,
     [](EthContext &, const PayloadReader &v) { std::printf("        Pkts sent to the port\t\t\t: %u\n", word_of(v)); }},
    {0x14ff00c9u, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Pkts discarded on ingress\t\t: %u\n", word_of(v));
     }},
    // The pause states carry the one-byte type but are sent and tested as
    // 32-bit words.
    {0x02ff00cau, u32,
     [](EthContext &, const PayloadReader &v) {
         std::printf("        Per-priority-pause status\t\t: Rx (%s), ", active_text(word_of(v)));
     }},
    {0x02ff00cbu, u32,
     [](EthContext &, const PayloadReader &v) { std::printf("Tx (%s)\n\n", active_text(word_of(v))); }},
    {0x14ff00ccu, u32,
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
