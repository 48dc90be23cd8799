// SPDX-License-Identifier: MIT
// Internal port statistics of an extender: exchange frames, the daemon's
// reply to command code 22 (slot, NIF port), then the line card's reply to
// sub-command 23 (header, port records of 84 bytes).
#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {
constexpr std::uint32_t kEth = 0x1a000000u;
constexpr std::size_t kMaxExchanges = 2;
}  // namespace

QDFUZZ_ENTRY(internal_stats) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    session.pf().sat_of_slot[3] = 101;
    session.replies(in, kMaxExchanges);
    session.pad_replies(kMaxExchanges);
    qd_cli_show_internal_stats(session.command(CMD_ID_SHOW_QUEUING_IF), kEth, "Ethernet1/1");
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_internal_stats() {
    using qdfuzz::Frames;
    const qdfuzz::Bytes nif = qdfuzz::nif_port_reply(3, 0x1a000100u);
    qdfuzz::Bytes repeated = qdfuzz::port_records_reply(4);
    repeated[32 + 84 * 3 + 1] = 0;  // the fourth record repeats the first's class and glb_idx
    repeated[32 + 84 * 3 + 7] = 2;
    repeated[32 + 84 * 3 + 11] = 0;
    qdfuzz::Bytes misplaced = qdfuzz::port_records_reply(3);
    misplaced[32 + 1] = 9;  // glb_idx beyond its class's count
    qdfuzz::Bytes refused = qdfuzz::port_records_reply(0);
    qdfuzz::put_be32(refused, 28, 0x40aa0001u);
    return {
        Frames().reply(nif).reply(qdfuzz::port_records_reply(7)),
        Frames().reply(nif).reply(qdfuzz::port_records_reply(1)),
        Frames().reply(nif).reply(repeated),
        Frames().reply(nif).reply(misplaced),
        Frames().reply(nif).reply(qdfuzz::port_records_reply(0)),
        Frames().reply(nif).reply(refused),
        Frames().reply(nif).reply(qdfuzz::cut(qdfuzz::port_records_reply(5), 32 + 84 * 4)),
        Frames().reply(qdfuzz::nif_port_reply(3, 0)),
        Frames().reply(qdfuzz::cut(nif, 5)),
        Frames().reply(nif).send_failure(),
        Frames().recv_failure(),
    };
}
