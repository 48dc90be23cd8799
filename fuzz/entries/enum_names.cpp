// SPDX-License-Identifier: MIT
// Show-queuing of every interface, through the interface enumeration, with
// hostile passes (Session::enum_passes: failing, negative counts, null
// arrays, unknown indexes) over interfaces with long and %-laden names. The
// first byte picks the names' length (up to 255), then the passes (each
// preceded by a byte that is 1 while passes follow), then exchange frames.
#include <string>

#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {
constexpr std::uint32_t kEth = 0x1a000000u, kHif = 0x1f010000u, kAlt = 0x01000400u;
const std::vector<std::uint32_t> kPool = {kEth, kHif, kAlt, 0x05000001u, 0};
constexpr std::size_t kMaxExchanges = 12;
}  // namespace

QDFUZZ_ENTRY(enum_names) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    qdtest::Platform &pf = session.pf();
    std::string tail;
    const std::size_t length = in.u8();
    while (tail.size() < length) tail += "%s%n%%";
    tail.resize(length);
    pf.add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1" + tail, 1);
    pf.add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1" + tail, 4);
    pf.add_interface(kAlt, IF_TYPE_ETH_ALT, "%n%s" + tail, 1);
    pf.sat_of_slot[3] = 101;
    while (in.u8() == 1) session.enum_passes(in, 1, kPool);
    session.replies(in, kMaxExchanges);
    // Every interface the passes list may make its exchanges (at most three
    // a report): none may run into an unscripted send.
    std::size_t listed = 0;
    for (const qdtest::EnumPass &pass : pf.enum_passes) listed += pass.indexes ? pass.indexes->size() : 0;
    session.pad_replies(pf.replies.size() + 3 * listed + kMaxExchanges);
    qd_cli_show_queuing_intf_all(session.command());
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_enum_names() {
    using qdfuzz::Frames;
    auto passes = [](std::initializer_list<qdfuzz::Bytes> list) {
        qdfuzz::Bytes b;
        for (const qdfuzz::Bytes &p : list) {
            b.push_back(1);
            b.insert(b.end(), p.begin(), p.end());
        }
        b.push_back(0);
        return b;
    };
    qdfuzz::Bytes first = {40};
    const qdfuzz::Bytes p1 = passes({qdfuzz::enum_pass_bytes(0, 0, 2, {0, 2}), qdfuzz::enum_pass_bytes(0, 0, 1, {1})});
    first.insert(first.end(), p1.begin(), p1.end());
    qdfuzz::Bytes hostile = {255};
    const qdfuzz::Bytes p2 = passes({qdfuzz::enum_pass_bytes(-1, 0, 3, {0}), qdfuzz::enum_pass_bytes(0, -2, 1, {0}),
                                     qdfuzz::enum_pass_bytes(0, 0, -7, {0, 1}),
                                     qdfuzz::Bytes{0, 0, 9, 0, 0, 0, 255}});
    hostile.insert(hostile.end(), p2.begin(), p2.end());
    return {
        Frames().raw(first).reply(qdfuzz::eth_queuing_reply(2)).reply(qdfuzz::eth_queuing_reply(1)),
        Frames().raw(hostile),
    };
}
