// SPDX-License-Identifier: MIT
// Ethernet interface queuing report: one flags byte, then exchange frames.
//   flags bit 0: platform type 3 (per-ASIC multicast statistics)
//   flags bit 1: a single named interface (command 59: extender block and
//                internal statistics)
//   flags bit 2: command 18 (tells "Unsupported interface")
// Frame 1 is the daemon's reply to command code 17; frames 2 and 3 answer
// the internal statistics (command code 22, then line-card sub-command 23).
#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {
constexpr std::uint32_t kEth = 0x1a000000u;
constexpr std::size_t kMaxExchanges = 3;
}  // namespace

QDFUZZ_ENTRY(eth_report) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    const std::uint8_t flags = in.u8();
    session.pf().platform_type = (flags & 1) != 0 ? 3 : 2;
    session.pf().sat_of_slot[3] = 101;
    session.replies(in, kMaxExchanges);
    session.pad_replies(kMaxExchanges);
    const std::uint32_t cmd_id = (flags & 2) != 0 ? CMD_ID_SHOW_QUEUING_IF : (flags & 4) != 0 ? CMD_ID_UNSUPPORTED_MSG : 0;
    qd_cli_show_queuing_if(session.command(cmd_id), kEth, "Ethernet1/1");
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_eth_report() {
    using qdfuzz::Frames;
    const qdfuzz::Bytes nif = qdfuzz::nif_port_reply(3, 0x1a000100u);
    qdfuzz::Bytes unsupported(8, 0);
    qdfuzz::put_host32(unsupported, 4, QD_STATUS_UNSUPPORTED);
    return {
        Frames().raw({0}).reply(qdfuzz::eth_queuing_reply(4)),
        Frames().raw({1}).reply(qdfuzz::eth_queuing_reply(0)),
        Frames().raw({2}).reply(qdfuzz::eth_queuing_reply(3, true)).reply(nif).reply(qdfuzz::port_records_reply(7)),
        Frames().raw({3}).reply(qdfuzz::eth_queuing_reply(2, true, true)).reply(nif).no_payload(),
        Frames().raw({2}).reply(qdfuzz::eth_queuing_reply(1, true)).reply(qdfuzz::nif_port_reply(0, 0)),
        Frames().raw({4}).reply(unsupported),
        Frames().raw({0}).reply(qdfuzz::cut(qdfuzz::eth_queuing_reply(3), 48 + 152 * 2 + 10)),
    };
}
