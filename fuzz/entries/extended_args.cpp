// SPDX-License-Identifier: MIT
// The argument entry of the extended report, qd_cli_show_queuing_intf_extend:
// the number of arguments, each [param_type: 1][param_id: 4][value: 4]
// (param_type 255: an argument without value), then exchange frames.
#include "harness/harness.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {
constexpr std::size_t kMaxExchanges = 2;
}  // namespace

QDFUZZ_ENTRY(extended_args) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    qdtest::Platform &pf = session.pf();
    pf.add_interface(0x1a000000u, IF_TYPE_ETH, "Ethernet1/1", 1);
    pf.add_interface(0x1a000001u, IF_TYPE_ETH, "Ethernet1/1.1", 1, true);
    pf.add_interface(0x1f010000u, IF_TYPE_HIF, "Ethernet101/1/1", 4);
    session.argument_records(in, in.u8() % 8);
    session.replies(in, kMaxExchanges);
    session.pad_replies(kMaxExchanges);
    qd_cli_show_queuing_intf_extend(session.command());
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_extended_args() {
    using qdfuzz::Frames;
    using qdfuzz::argument_record;
    qdfuzz::Bytes one = {1};
    const qdfuzz::Bytes eth = argument_record(1, PARAM_ID_IF_INDEX, 0x1a000000u);
    one.insert(one.end(), eth.begin(), eth.end());
    qdfuzz::Bytes reply(29 + 8 * 8 * 2 * 2, 0x5a);  // status, maps, modes, then counters
    qdfuzz::Bytes two = {2};
    const qdfuzz::Bytes word = argument_record(3, 0, 7), null_if = argument_record(255, PARAM_ID_IF_INDEX, 0);
    two.insert(two.end(), word.begin(), word.end());
    two.insert(two.end(), null_if.begin(), null_if.end());
    return {
        Frames().raw(one).reply(reply),
        Frames().raw(two).reply(reply),
        Frames().raw({0}),
    };
}
