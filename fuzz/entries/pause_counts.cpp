// SPDX-License-Identifier: MIT
// Onboard pause-event counts: the input is what the logging service writes
// into the count table (subcommand word, then 4 x 112 counts, host order);
// bit 0 of the first byte makes the service call fail instead.
#include <cstring>

#include "harness/harness.hpp"
#include "qdcli/handlers.h"

QDFUZZ_ENTRY(pause_counts) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    const bool fail = (in.u8() & 1) != 0;
    const qdfuzz::Bytes answer = in.rest();
    session.pf().sse_call2_handler = [&answer, fail](std::uint32_t, void *buffer, std::uint32_t length) {
        if (!answer.empty()) std::memcpy(buffer, answer.data(), answer.size() < length ? answer.size() : length);
        return fail ? -1 : 0;
    };
    qd_cli_show_logging_onboard_flow_control_td();
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_pause_counts() {
    qdfuzz::Bytes table(1 + 4 + 4 * 112 * 4, 0);
    qdfuzz::put_host32(table, 1, 7);
    qdfuzz::put_host32(table, 1 + 4 + 4 * (0 * 112 + 0), 3);
    qdfuzz::put_host32(table, 1 + 4 + 4 * (3 * 112 + 111), 0x80000000u);
    qdfuzz::put_host32(table, 1 + 4 + 4 * (1 * 112 + 5), 12);
    return {table, {0}, {1}};
}
