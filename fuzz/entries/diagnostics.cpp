// SPDX-License-Identifier: MIT
// Diagnostics: memory statistics and the debug dumps. One selector byte
// (% 3: qd_cli_show_memstats, qd_cli_debug_show_intf, qd_cli_debug_show_all),
// a no-form byte (bit 0), the command id (one byte), then up to three
// arguments, each [param_type: 1][param_id: 4][value: 4] (param_type 255:
// an argument without value); then exchange frames.
#include "harness/harness.hpp"
#include "qdcli/handlers.h"

namespace {
constexpr std::size_t kMaxExchanges = 4;
}  // namespace

QDFUZZ_ENTRY(diagnostics) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    const std::uint8_t selector = in.u8();
    session.arguments().no_form((in.u8() & 1) != 0);
    const std::uint32_t cmd_id = in.u8();
    session.argument_records(in, in.u8() % 4);
    session.replies(in, kMaxExchanges);
    session.pad_replies(kMaxExchanges);
    cmd_paraminfo *pinfo = session.command(cmd_id);
    switch (selector % 3) {
    case 0: qd_cli_show_memstats(pinfo); break;
    case 1: qd_cli_debug_show_intf(pinfo); break;
    default: qd_cli_debug_show_all(pinfo); break;
    }
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_diagnostics() {
    using qdfuzz::Frames;
    using qdfuzz::argument_record;
    qdfuzz::Bytes memstats_detail = {0, 0, 0, 1};
    const qdfuzz::Bytes detail = argument_record(2, 0, 1);
    memstats_detail.insert(memstats_detail.end(), detail.begin(), detail.end());
    qdfuzz::Bytes intf = {1, 0, 5, 1};
    const qdfuzz::Bytes if_arg = argument_record(1, 0x40200001u, 0x1a000000u);
    intf.insert(intf.end(), if_arg.begin(), if_arg.end());
    return {
        Frames().raw({0, 0, 0, 0}).reply(qdfuzz::Bytes(64, 0x11)),
        Frames().raw(memstats_detail).reply(qdfuzz::Bytes(256, 0x22)),
        Frames().raw(intf),
        Frames().raw({2, 0, 30, 0}),
        Frames().raw({2, 1, 43, 0}),
        Frames().raw({2, 0, 200, 0}),
    };
}
