// SPDX-License-Identifier: MIT
// Switch-wide attribute-stream report, host-interface part, entered
// directly for host interface 0x1f010000: the input is attribute records;
// the value of each attribute 58 is also the line-card reply of the
// host-interface report that the attribute runs.
#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {
constexpr std::uint32_t kHif = 0x1f010000u;
constexpr const char *kName = "Ethernet101/1/1";
}  // namespace

QDFUZZ_ENTRY(switch_stream_hif) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    session.pf().add_interface(kHif, IF_TYPE_HIF, kName, 4);
    session.stream(in, ATTR_RUN_HIF_REPORT);
    cmd_rsp rsp{};
    rsp.mts_handle = 0x77;
    qd_cli_show_queuing_intf_switch_hif(&rsp, kName, kHif);
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_switch_stream_hif() {
    std::vector<qdfuzz::Bytes> seeds;
    // The full stream of the switch_stream seeds, after its interface record.
    qdfuzz::Frames queues;
    for (std::uint8_t q = 0; q < 8; ++q) {
        queues.attr_u8(0x14ff00d6u, q);
        for (std::uint32_t g = 0; g <= q; ++g) queues.attr_u32(0x11ff00d7u, q == 0 ? 0xffffffffu : g);
        for (std::uint32_t c = 0; c <= q; ++c) queues.attr_u32(0x14ff00d8u, q == 1 ? 8 : c);
        queues.attr_u8(0x14ff00d9u, q % 2).attr_u8(0x14ff00dau, 12).attr_u16(0x14ff00dbu, 1500);
    }
    seeds.push_back(queues);
    qdfuzz::HifShape format4;
    format4.stats_format = 4;
    seeds.push_back(qdfuzz::Frames().attr(ATTR_RUN_HIF_REPORT, qdfuzz::hif_queuing_reply(format4)).attr(
        ATTR_RUN_HIF_REPORT, qdfuzz::hif_queuing_reply({})));
    seeds.push_back(qdfuzz::Frames().attr(0x14ff00e3u, {1, 2, 3}).attr(0x02ff00f4u, {1}).attr_u32(0x11ff00f7u, 0xffffffffu));
    return seeds;
}
