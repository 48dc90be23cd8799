// SPDX-License-Identifier: MIT
// Structured host-interface queuing report: the same input as hif_report.
#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "hif_seeds.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

QDFUZZ_ENTRY(hif_xmlized) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    const std::uint8_t flags = in.u8();
    qdfuzz::hif_platform(session, flags);
    session.reply(in.rest());
    qd_cli_show_queuing_hif_xmlized(session.command((flags & 1) != 0 ? CMD_ID_SHOW_QUEUING_IF : 0),
                                    qdfuzz::kHifIndex, qdfuzz::kHifName);
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_hif_xmlized() { return qdfuzz::hif_seeds(); }
