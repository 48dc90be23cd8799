// SPDX-License-Identifier: MIT
// Show-queuing dispatch: the input is the request's attribute records. An
// interface attribute (0x0cff0039) names an interface by the first four
// bytes of its value; the bytes after them, when there are any, are one
// reply. The reports' exchanges take these replies in the order of the
// attributes (an interface whose report makes no exchange leaves its reply
// to the next one), then replies without payload. With no interface
// attribute, the command reports every interface that one enumeration pass
// lists (the interfaces below, each answered without payload).
#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

constexpr std::uint32_t kEth = 0x1a000000u, kAlt = 0x01000400u, kSub = 0x1a000001u;
constexpr std::uint32_t kHif = 0x1f010000u, kOther = 0x05000001u;
constexpr std::size_t kMaxExchangesPerReport = 3;

qdfuzz::Bytes named(std::uint32_t if_index, const qdfuzz::Bytes &reply) {
    qdfuzz::Bytes value(4);
    qdfuzz::put_host32(value, 0, if_index);
    value.insert(value.end(), reply.begin(), reply.end());
    return value;
}

}  // namespace

QDFUZZ_ENTRY(show_queuing) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    qdtest::Platform &pf = session.pf();
    pf.add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1", 1);
    pf.add_interface(kAlt, IF_TYPE_ETH_ALT, "Ethernet1/2", 1);
    pf.add_interface(kSub, IF_TYPE_ETH, "Ethernet1/1.1", 1, true);
    pf.add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1", 4);
    pf.add_interface(kOther, 5, "mgmt0");
    pf.sat_of_slot[3] = 101;

    qdtest::Attr attr;
    std::size_t named_count = 0;
    while (qdfuzz::next_attr(in, attr)) {
        if (attr.id == ATTR_IF_INDEX) {
            ++named_count;
            if (attr.value.size() > 4)
                pf.replies.push_back(qdtest::Reply::bytes(qdfuzz::Bytes(attr.value.begin() + 4, attr.value.end())));
        }
        pf.request_attrs.push_back(attr);
    }
    if (named_count == 0) {
        pf.enum_passes.push_back({0, 0, -1, std::vector<std::uint32_t>{kEth, kAlt, kSub, kHif, kOther}});
        named_count = 5;
    }
    session.pad_replies(pf.replies.size() + kMaxExchangesPerReport * named_count);
    qd_cli_show_queuing_interface(session.command());
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_show_queuing() {
    using qdfuzz::Frames;
    qdfuzz::HifShape shape;
    const qdfuzz::Bytes eth = qdfuzz::eth_queuing_reply(2, true);
    const qdfuzz::Bytes hif = qdfuzz::hif_queuing_reply(shape);
    return {
        Frames().attr(ATTR_IF_INDEX, named(kEth, eth)),
        Frames().attr(ATTR_IF_INDEX, named(kHif, hif)).attr(ATTR_IF_INDEX, named(kAlt, qdfuzz::eth_queuing_reply(1))),
        Frames().attr(ATTR_IF_INDEX, named(kSub, {})).attr(ATTR_IF_INDEX, named(kOther, {})).attr_u32(0x14ff0001u, 1),
        Frames().attr(ATTR_IF_INDEX, {1, 2}).attr(ATTR_IF_INDEX, named(0x1a0000ffu, eth)),
        Frames().attr_u32(0x14ff0001u, 1),
        {},
    };
}
