// SPDX-License-Identifier: MIT
// Multicast WRR queue CoS map, show form: the input is the daemon's reply to
// command code 20 (byte 4 + v holds the queue of CoS v).
#include "harness/harness.hpp"
#include "qdcli/handlers.h"

QDFUZZ_ENTRY(cosmap_show) {
    qdfuzz::Session session;
    session.pf().platform_type = 2;  // shown from platform type 2 on
    session.reply(data, size);
    qd_cli_show_wrrqueue_cosmap(session.command());
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_cosmap_show() {
    const qdfuzz::Bytes map = {0, 0, 0, 0, 0, 1, 2, 3, 3, 2, 1, 0};
    const qdfuzz::Bytes out_of_range = {0xff, 0xff, 0xff, 0xff, 4, 9, 0xff, 0, 1, 2, 3, 200};
    return {map, out_of_range, qdfuzz::cut(map, 11), {}};
}
