// SPDX-License-Identifier: MIT
// Fuzz targets of the queuing reports: Ethernet, extended, internal
// statistics, the show-queuing dispatch and the switch-wide stream.
#include <string>

#include "entries/targets.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

using namespace qdfuzz;

namespace {

constexpr std::size_t kExtendedReplySize = 413;

Bytes named(std::uint32_t if_index, const Bytes &reply) {
    Bytes value(4);
    put_host32(value, 0, if_index);
    value.insert(value.end(), reply.begin(), reply.end());
    return value;
}

}  // namespace

// Ethernet interface queuing report: one flags byte, then exchange frames.
//   flags bit 0: platform type 3 (per-ASIC multicast statistics)
//   flags bit 1: a single named interface (command 59: extender block and
//                internal statistics)
//   flags bit 2: command 18 (tells "Unsupported interface")
// Frame 1 is the daemon's reply to command code 17; frames 2 and 3 answer
// the internal statistics (command code 22, then line-card sub-command 23).
void qdfuzz_eth_report(Session &session, Input &in) {
    const std::uint8_t flags = in.u8();
    session.pf().platform_type = (flags & 1) != 0 ? 3 : 2;
    session.pf().sat_of_slot[3] = 101;
    session.exchanges(in, 3);
    const std::uint32_t cmd_id =
        (flags & 2) != 0 ? CMD_ID_SHOW_QUEUING_IF : (flags & 4) != 0 ? CMD_ID_UNSUPPORTED_MSG : 0;
    qd_cli_show_queuing_if(session.command(cmd_id), kEth, "Ethernet1/1");
}

std::vector<Bytes> qdfuzz_seeds_eth_report() {
    const Bytes nif = nif_port_reply(3, 0x1a000100u);
    Bytes unsupported(8, 0);
    put_host32(unsupported, 4, QD_STATUS_UNSUPPORTED);
    return {
        Frames().raw({0}).reply(eth_queuing_reply(4)),
        Frames().raw({1}).reply(eth_queuing_reply(0)),
        Frames().raw({2}).reply(eth_queuing_reply(3, true)).reply(nif).reply(port_records_reply(7)),
        Frames().raw({3}).reply(eth_queuing_reply(2, true, true)).reply(nif).no_payload(),
        Frames().raw({2}).reply(eth_queuing_reply(1, true)).reply(nif_port_reply(0, 0)),
        Frames().raw({4}).reply(unsupported),
        Frames().raw({0}).reply(cut(eth_queuing_reply(3), 48 + 152 * 2 + 10)),
    };
}

// Extended queuing report: the input is the daemon's reply to command code
// 23 (413 bytes, host order) for a named Ethernet interface.
void qdfuzz_extended_report(Session &session, Input &in) {
    session.pf().add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1");
    session.reply(in.rest());
    qd_cli_show_queuing_ifindex_extend(session.command(CMD_ID_SHOW_QUEUING_IF), kEth);
}

std::vector<Bytes> qdfuzz_seeds_extended_report() {
    Bytes full(kExtendedReplySize, 0);
    for (unsigned q = 0; q < 8; ++q) {
        full[4 + q] = q == 7 ? 7 : 0;                       // strict priority on queue 7
        full[21 + q] = static_cast<std::uint8_t>(7 - q);  // cos -> queue
    }
    full[20] = 0x81;  // drop mode on queues 0 and 7
    for (unsigned slot = 0; slot < 24; ++slot) {
        put_host64_low_first(full, 29 + 8 * slot, 0x100000000ull * slot + slot);
        put_host64_low_first(full, 221 + 8 * slot, ~0ull - slot);
    }
    Bytes unsupported;
    put_host32(unsupported, 0, QD_STATUS_UNSUPPORTED);
    return {full, unsupported, cut(full, kExtendedReplySize - 1), cut(full, 3), {}};
}

// The argument entry of the extended report, qd_cli_show_queuing_intf_extend:
// the number of arguments, each [param_type: 1][param_id: 4][value: 4]
// (param_type 255: an argument without value), then exchange frames.
void qdfuzz_extended_args(Session &session, Input &in) {
    qdtest::Platform &pf = session.pf();
    pf.add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1", 1);
    pf.add_interface(kSub, IF_TYPE_ETH, "Ethernet1/1.1", 1, true);
    pf.add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1", 4);
    session.argument_records(in, in.u8() % 8);
    session.exchanges(in, 2);
    qd_cli_show_queuing_intf_extend(session.command());
}

std::vector<Bytes> qdfuzz_seeds_extended_args() {
    Bytes one = {1};
    const Bytes eth = argument_record(1, PARAM_ID_IF_INDEX, 0x1a000000u);
    one.insert(one.end(), eth.begin(), eth.end());
    Bytes reply(29 + 8 * 8 * 2 * 2, 0x5a);  // status, maps, modes, then counters
    Bytes two = {2};
    const Bytes word = argument_record(3, 0, 7), null_if = argument_record(255, PARAM_ID_IF_INDEX, 0);
    two.insert(two.end(), word.begin(), word.end());
    two.insert(two.end(), null_if.begin(), null_if.end());
    return {
        Frames().raw(one).reply(reply),
        Frames().raw(two).reply(reply),
        Frames().raw({0}),
    };
}

// Internal port statistics of an extender: exchange frames, the daemon's
// reply to command code 22 (slot, NIF port), then the line card's reply to
// sub-command 23 (header, port records of 84 bytes).
void qdfuzz_internal_stats(Session &session, Input &in) {
    session.pf().sat_of_slot[3] = 101;
    session.exchanges(in, 2);
    qd_cli_show_internal_stats(session.command(CMD_ID_SHOW_QUEUING_IF), kEth, "Ethernet1/1");
}

std::vector<Bytes> qdfuzz_seeds_internal_stats() {
    const Bytes nif = nif_port_reply(3, 0x1a000100u);
    Bytes repeated = port_records_reply(4);
    repeated[32 + 84 * 3 + 1] = 0;  // the fourth record repeats the first's class and glb_idx
    repeated[32 + 84 * 3 + 7] = 2;
    repeated[32 + 84 * 3 + 11] = 0;
    Bytes misplaced = port_records_reply(3);
    misplaced[32 + 1] = 9;  // glb_idx beyond its class's count
    Bytes refused = port_records_reply(0);
    put_be32(refused, 28, 0x40aa0001u);
    return {
        Frames().reply(nif).reply(port_records_reply(7)),
        Frames().reply(nif).reply(port_records_reply(1)),
        Frames().reply(nif).reply(repeated),
        Frames().reply(nif).reply(misplaced),
        Frames().reply(nif).reply(port_records_reply(0)),
        Frames().reply(nif).reply(refused),
        Frames().reply(nif).reply(cut(port_records_reply(5), 32 + 84 * 4)),
        Frames().reply(nif_port_reply(3, 0)),
        Frames().reply(cut(nif, 5)),
        Frames().reply(nif).send_failure(),
        Frames().recv_failure(),
    };
}

// Show-queuing of every interface, through the interface enumeration, with
// hostile passes (Session::enum_passes: failing, negative counts, null
// arrays, unknown indexes) over interfaces with long and %-laden names. The
// first byte picks the names' length (up to 255), then the passes (each
// preceded by a byte that is 1 while passes follow), then exchange frames.
void qdfuzz_enum_names(Session &session, Input &in) {
    static const std::vector<std::uint32_t> pool = {kEth, kHif, kAlt, kOther, 0};
    qdtest::Platform &pf = session.pf();
    std::string tail;
    const std::size_t length = in.u8();
    while (tail.size() < length) tail += "%s%n%%";
    tail.resize(length);
    pf.add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1" + tail, 1);
    pf.add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1" + tail, 4);
    pf.add_interface(kAlt, IF_TYPE_ETH_ALT, "%n%s" + tail, 1);
    pf.sat_of_slot[3] = 101;
    while (in.u8() == 1) session.enum_passes(in, 1, pool);
    session.replies(in, 12);
    session.pad_listed(12);
    qd_cli_show_queuing_intf_all(session.command());
}

std::vector<Bytes> qdfuzz_seeds_enum_names() {
    auto passes = [](std::initializer_list<Bytes> list) {
        Bytes b;
        for (const Bytes &p : list) {
            b.push_back(1);
            b.insert(b.end(), p.begin(), p.end());
        }
        b.push_back(0);
        return b;
    };
    Bytes first = {40};
    const Bytes p1 = passes({enum_pass_bytes(0, 0, 2, {0, 2}), enum_pass_bytes(0, 0, 1, {1})});
    first.insert(first.end(), p1.begin(), p1.end());
    Bytes hostile = {255};
    const Bytes p2 = passes({enum_pass_bytes(-1, 0, 3, {0}), enum_pass_bytes(0, -2, 1, {0}),
                                     enum_pass_bytes(0, 0, -7, {0, 1}),
                                     Bytes{0, 0, 9, 0, 0, 0, 255}});
    hostile.insert(hostile.end(), p2.begin(), p2.end());
    return {
        Frames().raw(first).reply(eth_queuing_reply(2)).reply(eth_queuing_reply(1)),
        Frames().raw(hostile),
    };
}

// Show-queuing dispatch: the input is the request's attribute records. An
// interface attribute (0x0cff0039) names an interface by the first four
// bytes of its value; the bytes after them, when there are any, are one
// reply. The reports' exchanges take these replies in the order of the
// attributes (an interface whose report makes no exchange leaves its reply
// to the next one), then replies without payload. With no interface
// attribute, the command reports every interface that one enumeration pass
// lists (the interfaces below, each answered without payload).
void qdfuzz_show_queuing(Session &session, Input &in) {
    qdtest::Platform &pf = session.pf();
    pf.add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1", 1);
    pf.add_interface(kAlt, IF_TYPE_ETH_ALT, "Ethernet1/2", 1);
    pf.add_interface(kSub, IF_TYPE_ETH, "Ethernet1/1.1", 1, true);
    pf.add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1", 4);
    pf.add_interface(kOther, 5, "mgmt0");
    pf.sat_of_slot[3] = 101;
    qdtest::Attr attr;
    std::size_t named_count = 0;
    while (next_attr(in, attr)) {
        if (attr.id == ATTR_IF_INDEX) {
            ++named_count;
            if (attr.value.size() > 4)
                pf.replies.push_back(qdtest::Reply::bytes(Bytes(attr.value.begin() + 4, attr.value.end())));
        }
        pf.request_attrs.push_back(attr);
    }
    if (named_count == 0) {
        pf.enum_passes.push_back({0, 0, -1, std::vector<std::uint32_t>{kEth, kAlt, kSub, kHif, kOther}});
        named_count = 5;
    }
    session.pad_replies(pf.replies.size() + 3 * named_count);  // a report makes at most three exchanges
    qd_cli_show_queuing_interface(session.command());
}

std::vector<Bytes> qdfuzz_seeds_show_queuing() {
    HifShape shape;
    const Bytes eth = eth_queuing_reply(2, true);
    const Bytes hif = hif_queuing_reply(shape);
    return {
        Frames().attr(ATTR_IF_INDEX, named(kEth, eth)),
        Frames().attr(ATTR_IF_INDEX, named(kHif, hif)).attr(ATTR_IF_INDEX, named(kAlt, eth_queuing_reply(1))),
        Frames().attr(ATTR_IF_INDEX, named(kSub, {})).attr(ATTR_IF_INDEX, named(kOther, {})).attr_u32(0x14ff0001u, 1),
        Frames().attr(ATTR_IF_INDEX, {1, 2}).attr(ATTR_IF_INDEX, named(0x1a0000ffu, eth)),
        Frames().attr_u32(0x14ff0001u, 1),
        {},
    };
}

// Switch-wide attribute-stream report, from its start: the input is one
// flags byte (bit 0: platform type 3, whose multicast statistics differ)
// followed by attribute records. An interface record can name the Ethernet
// interface 0x1a000000 or the host interface 0x1f010000, which hands the
// rest of the stream to the host-interface renderer; there the value of
// each attribute 58 is also the line-card reply of the host-interface
// report that the attribute runs.
void qdfuzz_switch_stream(Session &session, Input &in) {
    session.pf().platform_type = (in.u8() & 1) != 0 ? 3 : 2;
    session.pf().add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1");
    session.pf().add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1", 4);
    session.stream(in, ATTR_RUN_HIF_REPORT);
    cmd_rsp rsp{};
    rsp.mts_handle = 0x77;
    qd_cli_show_queuing_intf_switch(&rsp);
}

std::vector<Bytes> qdfuzz_seeds_switch_stream() {
    Frames eth;
    eth.raw({0}).attr_u32(0x0cff00b7u, kEth);
    for (std::uint8_t g = 0; g < 3; ++g)
        eth.attr_u8(0x14ff00b8u, g).attr_u8(0x02ff00b9u, g % 2).attr_u8(0x14ff00bau, static_cast<std::uint8_t>(30 * g));
    eth.attr_u64(0x15ff00bbu, 0x123456789ull);
    for (std::uint8_t g = 0; g < 3; ++g) {
        eth.attr_u8(0x14ff00bcu, g).attr_u32(0x14ff00bdu, 0x30000).attr_u32(0x14ff00beu, 0x40000);
        eth.attr_u16(0x14ff00bfu, 9216).attr_u16(0x14ff00c0u, 9000).attr_u8(0x02ff00c1u, g % 2);
        eth.attr_u32(0x14ff00c2u, 100).attr_u32(0x14ff00c3u, 200);
        for (std::uint32_t id = 0x14ff00c4u; id <= 0x14ff00c9u; ++id) eth.attr_u32(id, id & 0xff);
        eth.attr_u32(0x02ff00cau, g % 2).attr_u32(0x02ff00cbu, 1);
    }
    eth.attr_u32(0x14ff00ccu, 77);
    Bytes eth_type3 = eth;
    eth_type3[0] = 1;

    Frames hif;
    hif.raw({0}).attr_u32(0x0cff00b7u, kHif).attr_u8(0x14ff00cdu, 4).attr_u32(0x14ff00ceu, kHif);
    hif.attr_u8(0x14ff00cfu, 1).attr_u8(0x14ff00cfu, 2).attr_u8(0x14ff00d0u, 3).attr_u8(0x02ff00d1u, 1);
    hif.attr_u8(0x14ff00d2u, 0).attr_u8(0x14ff00d2u, 5).attr_u32(0x14ff00d3u, 10).attr_u32(0x14ff00d4u, 20);
    hif.attr_u32(0x14ff00d5u, 30);
    for (std::uint8_t q = 0; q < 4; ++q) {
        hif.attr_u8(0x14ff00d6u, q).attr_u32(0x11ff00d7u, q < 2 ? 0xffffffffu : q).attr_u32(0x11ff00d7u, 7);
        hif.attr_u32(0x14ff00d8u, q == 1 ? 8 : q).attr_u32(0x14ff00d8u, 6).attr_u8(0x14ff00d9u, q % 2);
        hif.attr_u8(0x14ff00dau, 50).attr_u16(0x14ff00dbu, 9216);
    }
    hif.attr_u32(0x14ff00dcu, 4096).attr_u32(0x14ff00ddu, 0xffffffffu);
    hif.attr_u8(0x14ff00e2u, 2).attr_u64(0x14ff00e3u, 5).attr_u64(0x14ff00e4u, 6);
    hif.attr_u32(0x14ff00deu, 1024).attr_u32(0x14ff00dfu, 0xffffffffu);
    hif.attr_u32(0x14ff00e5u, 3);
    for (std::uint32_t id = 0x14ff00e6u; id <= 0x14ff00e9u; ++id) hif.attr_u64(id, id);
    hif.attr_u32(0x14ff00eau, 3);
    for (std::uint32_t id = 0x14ff00ebu; id <= 0x14ff00efu; ++id) hif.attr_u64(id, 0x100000000ull + id);
    hif.attr_u32(0x14ff00e0u, 1).attr_u32(0x14ff00e1u, 2);
    for (std::uint32_t id = 0x14ff00f0u; id <= 0x14ff00f3u; ++id) hif.attr_u64(id, id);
    hif.attr_u64(0x02ff00f4u, 1ull << 60).attr_u8(0x02ff00f5u, 1);
    for (std::uint8_t cos = 0; cos < 8; ++cos) {
        hif.attr_u32(0x14ff00f6u, cos).attr_u32(0x11ff00f7u, cos == 7 ? 0xffffffffu : cos);
        hif.attr_u8(0x02ff00f8u, cos % 2).attr_u8(0x02ff00f9u, 0).attr_u8(0x02ff00fau, 1);
    }
    hif.attr_u32(0x0cff00b7u, kEth).attr(ATTR_RUN_HIF_REPORT, hif_queuing_reply({}));
    hif.attr(0x14ff00ceu, {1, 2}).attr_u32(0x12345678u, 0);

    return {eth, eth_type3, hif, {}};
}
