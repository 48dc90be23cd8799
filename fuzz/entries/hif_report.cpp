// SPDX-License-Identifier: MIT
// Host-interface queuing report (text): one flags byte, then the line
// card's reply to sub-command 16 (32-byte header, 1108-byte body).
//   flags bit 0: a single named interface (command 59: detailed report)
//   flags bit 1: the QoS counter query fails
#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "hif_seeds.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

QDFUZZ_ENTRY(hif_report) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    const std::uint8_t flags = in.u8();
    qdfuzz::hif_platform(session, flags);
    session.reply(in.rest());
    qd_cli_show_queuing_hif(session.command((flags & 1) != 0 ? CMD_ID_SHOW_QUEUING_IF : 0), qdfuzz::kHifIndex,
                            qdfuzz::kHifName);
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_hif_report() { return qdfuzz::hif_seeds(); }
