// SPDX-License-Identifier: MIT
// Extended queuing report: the input is the daemon's reply to command code
// 23 (413 bytes, host order) for a named Ethernet interface.
#include "harness/harness.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {
constexpr std::uint32_t kEth = 0x1a000000u;
constexpr std::size_t kReplySize = 413;
}  // namespace

QDFUZZ_ENTRY(extended_report) {
    qdfuzz::Session session;
    session.pf().add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1");
    session.reply(data, size);
    qd_cli_show_queuing_ifindex_extend(session.command(CMD_ID_SHOW_QUEUING_IF), kEth);
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_extended_report() {
    qdfuzz::Bytes full(kReplySize, 0);
    for (unsigned q = 0; q < 8; ++q) {
        full[4 + q] = q == 7 ? 7 : 0;                       // strict priority on queue 7
        full[21 + q] = static_cast<std::uint8_t>(7 - q);  // cos -> queue
    }
    full[20] = 0x81;  // drop mode on queues 0 and 7
    for (unsigned slot = 0; slot < 24; ++slot) {
        qdfuzz::put_host64_low_first(full, 29 + 8 * slot, 0x100000000ull * slot + slot);
        qdfuzz::put_host64_low_first(full, 221 + 8 * slot, ~0ull - slot);
    }
    qdfuzz::Bytes unsupported;
    qdfuzz::put_host32(unsupported, 0, QD_STATUS_UNSUPPORTED);
    return {full, unsupported, qdfuzz::cut(full, kReplySize - 1), qdfuzz::cut(full, 3), {}};
}
