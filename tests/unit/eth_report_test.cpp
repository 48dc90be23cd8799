// SPDX-License-Identifier: MIT
// Queuing report of an Ethernet interface (daemon command 17). Replies are
// written field by field at the offsets of the reply layout.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"

namespace {

using qdtest::Bytes;
using qdtest::put_be32;
using qdtest::put_host32;
using qdtest::Reply;
using Args = std::vector<std::pair<std::uint32_t, std::uint32_t>>;  // (attribute, length)

constexpr std::uint32_t kIf = 0x1a001000u;

// Header announcing `count` records, with room for `records` of them.
Bytes reply_with(std::uint32_t count, std::size_t records) {
    Bytes b(48 + 152 * records);
    put_be32(b, 0, count);
    return b;
}

// Big-endian fields {offset, size, value} of record i.
struct Field {
    std::size_t offset;
    int size;
    std::uint32_t value;
};
void put_record(Bytes &b, std::size_t i, std::initializer_list<Field> fields) {
    for (const Field &f : fields)
        for (int k = 0; k < f.size; ++k)
            b[48 + 152 * i + f.offset + k] = static_cast<std::uint8_t>(f.value >> (8 * (f.size - 1 - k)));
}

class EthReportTest : public qdtest::PlatformTest {
protected:
    std::int32_t run(std::uint32_t cmd_id, std::initializer_list<Reply> replies, std::int32_t platform_type = 2) {
        qdtest::reset();
        qdcli::platform_type_cache_reset();
        pf().platform_type = platform_type;
        for (const Reply &r : replies) pf().replies.push_back(r);
        command.id(cmd_id);
        return qd_cli_show_queuing_if(command.info(), kIf, "Ethernet1/1");
    }
    Args printed_args() {
        Args args;
        for (const auto &call : pf().printer_calls)
            for (const auto &arg : call.args) args.emplace_back(arg.attr, arg.length);
        return args;
    }
    qdtest::Command command;
};

TEST_F(EthReportTest, GroupCountUsesItsLowEightBits) {
    const std::string head =
        "Ethernet1/1 queuing information:\n  TX Queuing\n    qos-group  sched-type  oper-bandwidth\n";
    // 256 announced: no record. The first record's multicast total is read
    // all the same (payload offset 120).
    Bytes none = reply_with(256, 1);
    put_record(none, 0, {{72, 4, 31337}});
    run(0, {Reply::bytes(none)});
    EXPECT_EQ(pf().printed, head + "\n  RX Queuing\n  Total Multicast crossbar statistics:\n"
                                   "    Mcast pkts received from the cross-bar\t: 31337\n");
    EXPECT_EQ(pf().flushes, 1u);

    Bytes one = reply_with(257, 1);
    put_record(one, 0, {{0, 1, 7}});
    run(0, {Reply::bytes(one)}, 3);
    EXPECT_EQ(pf().printed.substr(0, head.size() + 35), head + "        7       WRR              0\n");
    EXPECT_EQ(pf().flushes, 2u);
    // Without records the total is read all the same: a reply that stops
    // before it is refused before anything is printed.
    for (const std::size_t size : {48u, 123u}) {
        Bytes cut = reply_with(0, 1);
        cut.resize(size);
        run(0, {Reply::bytes(cut)});
        EXPECT_EQ(pf().printed, "Truncated queuing reply: " + std::to_string(size) + " of 124 bytes\n");
    }
}

TEST_F(EthReportTest, VaqBlockNeedsANamedInterfaceAndVaqPortOne) {
    const std::string last = "    Mcast pkts received from the cross-bar\t: 0\n";
    const std::string info = "\n  VAQ interface info:\n    VAQ Drop Class Buffer Size:   4096\n";
    const std::string stats =
        "\n  Total VAQ interface statistics:\n"
        "    VAQ Uplink Interface Rx Drops   : 4400\n"
        "    Vaq Uplink Interface Err Drops  : 4000\n"
        "    Vaq Uplink Interface Mcast Drops: 3600\n";
    // What the internal statistics print when the daemon knows no NIF port.
    const std::string no_nif = "qd_cli_show_internal_stats: failed to find nif port for ifidx 0x1a001000";
    struct Case {
        std::uint32_t cmd_id;
        Bytes vaq_port;
        std::uint32_t hidden;
        std::string tail;
    };
    const Case cases[] = {
        {59, {0, 0, 0, 1}, 0, info + stats + no_nif},
        {59, {0, 0, 0, 1}, 0x00010000, stats + no_nif},
        {59, {0, 0, 0, 0}, 0, ""},
        {59, {0, 0, 0, 2}, 0, ""},
        {59, {0, 0, 1, 0}, 0, ""},
        {59, {1, 0, 0, 0}, 0, ""},  // big-endian: not 1
        {0, {0, 0, 0, 1}, 0, ""},
        {18, {0, 0, 0, 1}, 0, ""},
    };
    for (const Case &c : cases) {
        Bytes b = reply_with(0, 1);
        std::copy(c.vaq_port.begin(), c.vaq_port.end(), b.begin() + 16);
        put_host32(b, 20, c.hidden);
        put_be32(b, 32, 4096);
        put_host32(b, 36, 3600);  // uplink counters as the daemon stores them
        put_host32(b, 40, 4000);
        put_host32(b, 44, 4400);
        EXPECT_EQ(run(c.cmd_id, {Reply::bytes(b), Reply::bytes({0, 3, 0, 0, 0, 0})}), 0);
        const std::size_t at = pf().printed.find(last);
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(pf().printed.substr(at + last.size()), c.tail) << c.cmd_id << " " << int(c.vaq_port[0]);
        const bool extender = !c.tail.empty();
        EXPECT_EQ(pf().sent.size(), extender ? 2u : 1u);
        EXPECT_EQ(pf().flushes, extender ? 2u : 1u);  // the internal statistics flush their own
        if (extender) {
            EXPECT_EQ(pf().sent[1].payload[0], 22);
            EXPECT_EQ(qdtest::get_host32(pf().sent[1].payload, 4), kIf);
        }
        if (!qdtest::ledger_errors().empty()) ADD_FAILURE() << qdtest::ledger_errors().front();
    }
    Bytes b = reply_with(0, 1);
    put_be32(b, 16, 1);
    run(59, {Reply::bytes(b), Reply::bytes({0, 3, 0, 0, 0, 0})});
    const Args args = printed_args();
    EXPECT_EQ(Args(args.end() - 4, args.end()),
              (Args{{0x14ff0050, 4}, {0x14ff0051, 4}, {0x14ff0052, 4}, {0x14ff0053, 4}}));
}

}  // namespace
