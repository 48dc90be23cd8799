// SPDX-License-Identifier: MIT
// The clear family: one selector byte, one interface byte, a qos-clear
// result byte, up to four enumeration passes (Session::enum_passes, each
// preceded by a byte that is 1 while passes follow), then exchange frames.
//   selector % 4: 0 qd_cli_clear_queuing_interface (the interface as its
//   argument), 1 qd_cli_clear_queuing_all, 2 qd_cli_clear_qos_stats_ifindex,
//   3 qd_cli_clear_qos_stats_all.
#include "harness/harness.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {
constexpr std::uint32_t kEth = 0x1a000000u, kHif = 0x1f010000u, kSub = 0x1a000001u;
const std::vector<std::uint32_t> kPool = {kEth, kHif, kSub, 0x05000001u, 0, 0x2a000000u};
constexpr std::size_t kMaxExchanges = 8;
}  // namespace

QDFUZZ_ENTRY(clear_family) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    qdtest::Platform &pf = session.pf();
    pf.add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1", 1);
    pf.add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1", 4);
    pf.add_interface(kSub, IF_TYPE_ETH, "Ethernet1/1.1", 1, true);
    pf.sat_of_slot[3] = 101;
    const std::uint8_t selector = in.u8();
    const std::uint32_t target = kPool[in.u8() % kPool.size()];
    pf.qos_clear_rc = static_cast<std::int8_t>(in.u8());
    while (in.u8() == 1) session.enum_passes(in, 1, kPool);
    session.replies(in, kMaxExchanges);
    // Every interface the passes list may make its exchanges (at most three
    // a report): none may run into an unscripted send.
    std::size_t listed = 0;
    for (const qdtest::EnumPass &pass : pf.enum_passes) listed += pass.indexes ? pass.indexes->size() : 0;
    session.pad_replies(pf.replies.size() + 3 * listed + kMaxExchanges);
    switch (selector % 4) {
    case 0:
        session.arguments().arg_u32(0, target, PARAM_ID_IF_INDEX);
        qd_cli_clear_queuing_interface(session.command());
        break;
    case 1: qd_cli_clear_queuing_all(session.command()); break;
    case 2: qd_cli_clear_qos_stats_ifindex(target); break;
    default: qd_cli_clear_qos_stats_all(session.command()); break;
    }
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_clear_family() {
    using qdfuzz::Frames;
    qdfuzz::Bytes passes = {1};
    const qdfuzz::Bytes all = qdfuzz::enum_pass_bytes(0, 0, 3, {0, 1, 2});
    passes.insert(passes.end(), all.begin(), all.end());
    passes.push_back(1);
    const qdfuzz::Bytes failing = qdfuzz::enum_pass_bytes(-1, 0, 0, {});
    passes.insert(passes.end(), failing.begin(), failing.end());
    passes.push_back(0);
    auto with = [&](std::uint8_t selector, std::uint8_t target) {
        qdfuzz::Bytes b = {selector, target, 0};
        b.insert(b.end(), passes.begin(), passes.end());
        return b;
    };
    return {
        Frames().raw(with(0, 1)).reply({0, 0, 0, 0}),
        Frames().raw(with(0, 0)).reply({0, 0, 0, 0}),
        Frames().raw(with(1, 0)).reply({0, 0, 0, 0}).reply({0, 0, 0, 0}),
        Frames().raw(with(2, 1)),
        Frames().raw(with(3, 0)).reply({0, 0, 0, 0}),
        // Hostile passes: a negative count, then a null array that claims 7.
        Frames().raw({3, 0, 0xfd, 1}).raw(qdfuzz::enum_pass_bytes(0, 0, -5, {1})).raw({1, 0, 0, 7, 0, 0, 0, 255, 0}),
    };
}
