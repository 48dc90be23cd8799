// Queuing report of an Ethernet interface (daemon command 17), over the
// scripted platform. Replies are written byte by byte at the offsets of the
// reply layout.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"

namespace {

using qdtest::Bytes;
using qdtest::put_be16;
using qdtest::put_be32;
using qdtest::put_host32;
using qdtest::Reply;

constexpr std::uint32_t kIf = 0x1a001000u;
constexpr std::size_t kHdr = 48;
constexpr std::size_t kRec = 152;

// Header with `count` in its first word and room for `records` records.
Bytes reply_with(std::uint32_t count, std::size_t records) {
    Bytes b(kHdr + kRec * records);
    put_be32(b, 0, count);
    return b;
}

struct Group {
    std::uint8_t qos_group = 0, sched_priority = 0, no_drop = 0, oper_bandwidth = 0;
    std::uint16_t mtu_configured = 0, mtu_hw = 0, discards16 = 0;
    std::uint32_t xon = 0, xoff = 0, q_size = 0, q_size_40g = 0, rx = 0, ucast_to = 0, ucast_from = 0, tx = 0,
                  pfc_rx = 0, pfc_tx = 0, discards32 = 0, mcast_to = 0, mcast_from = 0;
};

void put_group(Bytes &b, std::size_t i, const Group &g) {
    const std::size_t at = kHdr + kRec * i;
    b[at + 0] = g.qos_group;
    b[at + 1] = g.sched_priority;
    b[at + 2] = g.no_drop;
    b[at + 3] = g.oper_bandwidth;
    put_be16(b, at + 4, g.mtu_configured);
    put_be32(b, at + 6, g.xon);
    put_be32(b, at + 10, g.xoff);
    put_be16(b, at + 14, g.mtu_hw);
    put_be32(b, at + 16, g.q_size);
    put_be32(b, at + 20, g.q_size_40g);
    put_be16(b, at + 30, g.discards16);
    put_be32(b, at + 36, g.rx);
    put_be32(b, at + 40, g.ucast_to);
    put_be32(b, at + 44, g.ucast_from);
    put_be32(b, at + 52, g.tx);
    put_be32(b, at + 56, g.pfc_rx);
    put_be32(b, at + 60, g.pfc_tx);
    put_be32(b, at + 64, g.discards32);
    put_be32(b, at + 68, g.mcast_to);
    put_be32(b, at + 72, g.mcast_from);
}

// Two qos-groups: a strict-priority drop class and a WRR no-drop class.
Bytes two_group_reply() {
    Bytes b = reply_with(2, 2);
    // Not-read bytes hold junk that must not show anywhere.
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = 0xee;
    put_be32(b, 0, 2);
    put_be32(b, 4, 0);
    put_be32(b, 16, 0);  // no VAQ block
    Group g0;
    g0.qos_group = 0, g0.sched_priority = 1, g0.no_drop = 0, g0.oper_bandwidth = 20;
    g0.mtu_configured = 1500, g0.xon = 10240, g0.xoff = 20480, g0.mtu_hw = 1500;
    g0.q_size = 100000, g0.q_size_40g = 200000, g0.discards16 = 0, g0.discards32 = 0;
    g0.rx = 11, g0.ucast_to = 12, g0.ucast_from = 13, g0.tx = 14, g0.pfc_rx = 1, g0.pfc_tx = 0;
    g0.mcast_to = 15, g0.mcast_from = 7777;
    Group g1;
    g1.qos_group = 1, g1.sched_priority = 0, g1.no_drop = 1, g1.oper_bandwidth = 80;
    g1.mtu_configured = 9216, g1.xon = 0x01020304, g1.xoff = 2, g1.mtu_hw = 9000;
    g1.q_size = 3, g1.q_size_40g = 4, g1.discards16 = 5, g1.discards32 = 99;
    g1.rx = 21, g1.ucast_to = 22, g1.ucast_from = 23, g1.tx = 24, g1.pfc_rx = 0, g1.pfc_tx = 0x80000000u;
    g1.mcast_to = 25, g1.mcast_from = 8888;
    put_group(b, 0, g0);
    put_group(b, 1, g1);
    return b;
}

const std::string kTwoGroupTx =
    "Ethernet1/1 queuing information:\n"
    "  TX Queuing\n"
    "    qos-group  sched-type  oper-bandwidth\n"
    "        0       priority        20\n"
    "        1       WRR             80\n";

const std::string kTwoGroupRx =
    "\n  RX Queuing\n"
    "    qos-group 0\n"
    "    q-size: 100000, q-size-40g: 200000, HW MTU: 1500 (1500 configured)\n"
    "    drop-type: drop, xon: 10240, xoff: 20480\n"
    "    Statistics:\n"
    "        Pkts received over the port\t\t: 11\n"
    "        Ucast pkts sent to the cross-bar\t: 12\n"
    "        Mcast pkts sent to the cross-bar\t: 15\n"
    "        Ucast pkts received from the cross-bar\t: 13\n"
    "        Pkts sent to the port\t\t\t: 14\n"
    "        Pkts discarded on ingress\t\t: 0\n"
    "        Per-priority-pause status\t\t: Rx (Active), Tx (Inactive)\n\n"
    "    qos-group 1\n"
    "    q-size: 3, q-size-40g: 4, HW MTU: 9000 (9216 configured)\n"
    "    drop-type: no-drop, xon: 16909060, xoff: 2\n"
    "    Statistics:\n"
    "        Pkts received over the port\t\t: 21\n"
    "        Ucast pkts sent to the cross-bar\t: 22\n"
    "        Mcast pkts sent to the cross-bar\t: 25\n"
    "        Ucast pkts received from the cross-bar\t: 23\n"
    "        Pkts sent to the port\t\t\t: 24\n"
    "        Pkts discarded on ingress\t\t: 5\n"
    "        Per-priority-pause status\t\t: Rx (Inactive), Tx (Active)\n\n";

const std::string kMcastTotal7777 =
    "  Total Multicast crossbar statistics:\n"
    "    Mcast pkts received from the cross-bar\t: 7777\n";

class EthReportTest : public qdtest::PlatformTest {
protected:
    std::int32_t run(std::uint32_t cmd_id = 0, const char *name = "Ethernet1/1") {
        command.id(cmd_id);
        return qd_cli_show_queuing_if(command.info(), kIf, name);
    }
    // (attribute, length) of every printed value, in order.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> printed_args() {
        std::vector<std::pair<std::uint32_t, std::uint32_t>> args;
        for (const auto &call : pf().printer_calls)
            for (const auto &arg : call.args) args.emplace_back(arg.attr, arg.length);
        return args;
    }
    const qdtest::PrinterCall *call_with_format(const std::string &format) {
        for (const auto &call : pf().printer_calls)
            if (call.format == format) return &call;
        return nullptr;
    }
    // A new scripted platform within one test (the fixture gives the first).
    void fresh() {
        qdtest::reset();
        qdcli::platform_type_cache_reset();
    }
    qdtest::Command command;
};

TEST_F(EthReportTest, TwoGroupReportPrintsEveryLineAndAsksTheDaemonOnce) {
    pf().platform_type = 2;
    pf().replies.push_back(Reply::bytes(two_group_reply()));
    EXPECT_EQ(run(), 0);

    EXPECT_EQ(pf().printed, kTwoGroupTx + kTwoGroupRx + kMcastTotal7777);
    EXPECT_EQ(pf().delivered, pf().printed);
    ASSERT_EQ(pf().sent.size(), 1u);
    Bytes request = {17, 0, 0, 0};
    const Bytes index = qdtest::host32_bytes(kIf);
    request.insert(request.end(), index.begin(), index.end());
    request.insert(request.end(), {0, 0, 0, 0});
    EXPECT_EQ(pf().sent[0].payload, request);
    EXPECT_EQ(pf().sent[0].node, 0xfe000000u);
    EXPECT_EQ(pf().platform_type_queries, 1);
}

TEST_F(EthReportTest, ValuesGoOutUnderTheirAttributesAndWidths) {
    pf().platform_type = 2;
    pf().replies.push_back(Reply::bytes(two_group_reply()));
    run();
    std::vector<std::pair<std::uint32_t, std::uint32_t>> expected = {{0x30ff003a, 12}};
    for (int i = 0; i < 2; ++i)  // "priority" and "WRR     " are both 8 characters
        expected.insert(expected.end(), {{0x14ff003b, 4}, {0x30ff003c, 9}, {0x14ff003d, 4}});
    const std::uint32_t drop_len[2] = {5, 8};  // "drop", "no-drop"
    const std::uint32_t rx_len[2] = {7, 9}, tx_len[2] = {9, 7};  // "Active", "Inactive"
    for (int i = 0; i < 2; ++i)
        expected.insert(expected.end(), {{0x14ff003f, 4}, {0x14ff0040, 4}, {0x14ff0041, 4}, {0x14ff0042, 4},
                                         {0x14ff0043, 4}, {0x30ff0044, drop_len[i]}, {0x14ff0045, 4},
                                         {0x14ff0046, 4}, {0x14ff0047, 4}, {0x14ff0048, 4}, {0x14ff0049, 4},
                                         {0x14ff004a, 4}, {0x14ff004b, 4}, {0x14ff004c, 4},
                                         {0x30ff004d, rx_len[i]}, {0x30ff004e, tx_len[i]}});
    expected.push_back({0x14ff004f, 4});
    EXPECT_EQ(printed_args(), expected);
    // The operational bandwidth is right-aligned in five columns.
    ASSERT_NE(call_with_format("        %s       %s     %5s\n"), nullptr);
}

TEST_F(EthReportTest, EachReceiveBlockIsFlushedAndTheTransmitSectionGoesWithTheFirst) {
    pf().platform_type = 2;
    pf().replies.push_back(Reply::bytes(two_group_reply()));
    run();
    EXPECT_EQ(pf().flushes, 3u);
    const auto *tx_heading = call_with_format("  TX Queuing\n");
    const auto *second_block = call_with_format("    qos-group %s\n");
    ASSERT_TRUE(tx_heading && second_block);
    EXPECT_EQ(tx_heading->flushes_before, 0u);
    std::size_t group_headings = 0;
    for (const auto &call : pf().printer_calls) {
        if (call.format == "    qos-group %s\n") {
            EXPECT_EQ(call.flushes_before, group_headings++);
        }
        if (call.format == "        Per-priority-pause status\t\t: Rx (%s), Tx (%s)\n\n") {
            EXPECT_EQ(call.flushes_before, group_headings - 1);
        }
    }
    EXPECT_EQ(call_with_format("  Total Multicast crossbar statistics:\n")->flushes_before, 2u);
}

TEST_F(EthReportTest, PlatformTypeThreeShowsTheTailDropsInsteadOfTheCrossbarTotal) {
    pf().platform_type = 3;
    Bytes b = two_group_reply();
    const Bytes tail = {0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02};  // high word, then low word
    std::copy(tail.begin(), tail.end(), b.begin() + 8);
    pf().replies.push_back(Reply::bytes(b));
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(pf().printed, kTwoGroupTx +
                                "    Statistics:\n"
                                "       Mcast pkts tail dropped on this egress asic\t: 4294967298 \n" +
                                kTwoGroupRx);
    const auto *line = call_with_format("       Mcast pkts tail dropped on this egress asic\t: %s \n");
    ASSERT_NE(line, nullptr);
    ASSERT_EQ(line->args.size(), 1u);
    EXPECT_EQ(line->args[0].attr, 0x15ff003eu);
    EXPECT_EQ(line->args[0].length, 8u);
}

TEST_F(EthReportTest, OnlyTheLowEightBitsOfTheGroupCountCount) {
    pf().platform_type = 3;
    pf().replies.push_back(Reply::bytes(reply_with(256, 0)));  // 256: no record
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(pf().printed,
              "Ethernet1/1 queuing information:\n  TX Queuing\n    qos-group  sched-type  oper-bandwidth\n"
              "    Statistics:\n       Mcast pkts tail dropped on this egress asic\t: 0 \n\n  RX Queuing\n");
    EXPECT_EQ(pf().flushes, 1u);  // only the final one

    fresh();
    pf().platform_type = 2;
    Bytes b = reply_with(257, 1);  // 257: one record
    Group g;
    g.qos_group = 7, g.mcast_from = 42;
    put_group(b, 0, g);
    pf().replies.push_back(Reply::bytes(b));
    EXPECT_EQ(run(), 0);
    EXPECT_NE(pf().printed.find("        7       WRR              0\n\n  RX Queuing\n    qos-group 7\n"),
              std::string::npos);
    EXPECT_NE(pf().printed.find(": Rx (Inactive), Tx (Inactive)\n\n  Total Multicast crossbar statistics:\n"
                                "    Mcast pkts received from the cross-bar\t: 42\n"),
              std::string::npos);
    EXPECT_EQ(pf().flushes, 2u);
}

TEST_F(EthReportTest, NoGroupsOnOtherPlatformsStillPrintsTheFirstRecordsMulticastTotal) {
    pf().platform_type = 1;
    Bytes b = reply_with(0, 0);
    b.resize(124);
    put_be32(b, 120, 31337);
    pf().replies.push_back(Reply::bytes(b));
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(pf().printed,
              "Ethernet1/1 queuing information:\n  TX Queuing\n    qos-group  sched-type  oper-bandwidth\n"
              "\n  RX Queuing\n" +
                  std::string("  Total Multicast crossbar statistics:\n"
                              "    Mcast pkts received from the cross-bar\t: 31337\n"));
}

TEST_F(EthReportTest, DiscardsUseTheSixteenBitFormUnlessItIsZero) {
    pf().platform_type = 3;
    Bytes b = reply_with(3, 3);
    Group g;
    g.discards16 = 0, g.discards32 = 77;
    put_group(b, 0, g);
    g.discards16 = 0x8001, g.discards32 = 1;
    put_group(b, 1, g);
    g.discards16 = 0, g.discards32 = 0xfffffffeu;
    put_group(b, 2, g);
    pf().replies.push_back(Reply::bytes(b));
    run();
    std::vector<std::string> discards;
    for (const auto &call : pf().printer_calls)
        if (call.format == "        Pkts discarded on ingress\t\t: %s\n") discards.push_back(call.args[0].text);
    EXPECT_EQ(discards, (std::vector<std::string>{"77", "32769", "4294967294"}));
}

// ---- VAQ block ----

// A reply leading to an extender: vaq_port 1, drop-class buffer 4096, the
// uplink counters as the daemon stores them (host order).
Bytes vaq_reply(const Bytes &vaq_port_bytes, std::uint32_t hidden) {
    Bytes b = reply_with(0, 1);
    std::copy(vaq_port_bytes.begin(), vaq_port_bytes.end(), b.begin() + 16);
    put_host32(b, 20, hidden);
    put_be32(b, 32, 4096);
    put_host32(b, 36, 3600);  // multicast drops
    put_host32(b, 40, 4000);  // error drops
    put_host32(b, 44, 4400);  // receive drops
    return b;
}

const Bytes kVaqPortOne = {0, 0, 0, 1};
const std::string kVaqInfo =
    "\n  VAQ interface info:\n"
    "    VAQ Drop Class Buffer Size:   4096\n";
const std::string kVaqStats =
    "\n  Total VAQ interface statistics:\n"
    "    VAQ Uplink Interface Rx Drops   : 4400\n"
    "    Vaq Uplink Interface Err Drops  : 4000\n"
    "    Vaq Uplink Interface Mcast Drops: 3600\n";
// What the internal statistics print when the daemon knows no NIF port.
const std::string kNoNifPort = "qd_cli_show_internal_stats: failed to find nif port for ifidx 0x1a001000";

// What follows the report's last line (the multicast total of 0).
std::string report_tail(const std::string &printed) {
    const std::string last = "    Mcast pkts received from the cross-bar\t: 0\n";
    const auto at = printed.find(last);
    return at == std::string::npos ? printed : printed.substr(at + last.size());
}

TEST_F(EthReportTest, NamedInterfaceOnAnExtenderPortPrintsTheVaqBlockThenTheInternalStatistics) {
    pf().replies.push_back(Reply::bytes(vaq_reply(kVaqPortOne, 0)));
    pf().replies.push_back(Reply::bytes({0x00, 0x03, 0x00, 0x00, 0x00, 0x00}));  // no NIF port
    EXPECT_EQ(run(59), 0);
    EXPECT_EQ(report_tail(pf().printed), kVaqInfo + kVaqStats + kNoNifPort);
    ASSERT_EQ(pf().sent.size(), 2u);
    EXPECT_EQ(pf().sent[1].payload[0], 22);
    EXPECT_EQ(qdtest::get_host32(pf().sent[1].payload, 4), kIf);
    std::vector<std::pair<std::uint32_t, std::uint32_t>> vaq_args;
    for (const auto &arg : printed_args())
        if (arg.first >= 0x14ff0050u && arg.first <= 0x14ff0053u) vaq_args.push_back(arg);
    EXPECT_EQ(vaq_args, (std::vector<std::pair<std::uint32_t, std::uint32_t>>{
                            {0x14ff0050, 4}, {0x14ff0051, 4}, {0x14ff0052, 4}, {0x14ff0053, 4}}));
    // The internal statistics flush their message; the report flushes last.
    EXPECT_EQ(pf().flushes, 2u);
    EXPECT_EQ(pf().delivered, pf().printed);
}

TEST_F(EthReportTest, HiddenBufferLeavesOutOnlyTheInterfaceInfoLines) {
    pf().replies.push_back(Reply::bytes(vaq_reply(kVaqPortOne, 0x00010000)));
    pf().replies.push_back(Reply::bytes({0x00, 0x03, 0x00, 0x00, 0x00, 0x00}));
    run(59);
    EXPECT_EQ(report_tail(pf().printed), kVaqStats + kNoNifPort);
}

TEST_F(EthReportTest, VaqBlockNeedsVaqPortExactlyOne) {
    const Bytes others[] = {{0, 0, 0, 0}, {0, 0, 0, 2}, {0, 0, 1, 0}, {1, 0, 0, 0}, {0xff, 0xff, 0xff, 0xff}};
    for (const Bytes &vaq_port : others) {
        fresh();
        pf().replies.push_back(Reply::bytes(vaq_reply(vaq_port, 0)));
        EXPECT_EQ(run(59), 0);
        EXPECT_EQ(report_tail(pf().printed), "") << int(vaq_port[0]) << int(vaq_port[3]);
        EXPECT_EQ(pf().sent.size(), 1u);
    }
}

TEST_F(EthReportTest, ReportsOfAnEnumerationNeverShowTheVaqBlock) {
    for (std::uint32_t cmd_id : {0u, 18u, 58u, 60u}) {
        fresh();
        pf().replies.push_back(Reply::bytes(vaq_reply(kVaqPortOne, 0)));
        EXPECT_EQ(run(cmd_id), 0);
        EXPECT_EQ(report_tail(pf().printed), "") << cmd_id;
        EXPECT_EQ(pf().sent.size(), 1u) << cmd_id;
        EXPECT_EQ(pf().flushes, 1u) << cmd_id;
    }
}

// ---- Refusals and failures ----

TEST_F(EthReportTest, UnsupportedInterfaceIsToldOnlyForCommandEighteen) {
    Bytes b = reply_with(2, 0);  // nothing after the header: not read
    put_host32(b, 4, 0x41f70012u);
    pf().replies.push_back(Reply::bytes(b));
    EXPECT_EQ(run(18), 1);
    EXPECT_EQ(pf().printed, "Unsupported interface\n");
    EXPECT_EQ(pf().flushes, 1u);
    EXPECT_EQ(pf().platform_type_queries, 0);

    for (std::uint32_t cmd_id : {59u, 0u, 17u}) {
        fresh();
        Bytes short_reply(8);
        put_host32(short_reply, 4, 0x41f70012u);
        pf().replies.push_back(Reply::bytes(short_reply));
        EXPECT_EQ(run(cmd_id), 1) << cmd_id;
        EXPECT_EQ(pf().printed, "") << cmd_id;
        EXPECT_EQ(pf().flushes, 0u) << cmd_id;
    }
}

TEST_F(EthReportTest, StatusIsComparedAsStoredWithoutConversion) {
    pf().platform_type = 3;
    Bytes b = reply_with(0, 0);
    const Bytes swapped = {0x41, 0xf7, 0x00, 0x12};  // the value in network order
    std::copy(swapped.begin(), swapped.end(), b.begin() + 4);
    if (qdtest::get_host32(b, 4) == 0x41f70012u) GTEST_SKIP() << "big-endian host";
    pf().replies.push_back(Reply::bytes(b));
    EXPECT_EQ(run(18), 0);
    EXPECT_NE(pf().printed.find("queuing information"), std::string::npos);
}

TEST_F(EthReportTest, TransportFailuresAreToldInAFiftyByteBuffer) {
    const std::string long_text = "transport failure text long enough to be cut at forty-nine characters";
    pf().error_texts[0x40aa0001] = long_text;
    pf().replies.push_back(Reply::send_failure(0x40aa0001));
    EXPECT_EQ(run(59), 0x40aa0001);
    EXPECT_EQ(pf().printed, long_text.substr(0, 49));
    EXPECT_EQ(pf().flushes, 1u);
    EXPECT_FALSE(pf().sent[0].received);

    fresh();
    pf().error_texts[0x40aa0002] = "no reply, 100% lost";
    pf().replies.push_back(Reply::recv_failure(0x40aa0002));
    EXPECT_EQ(run(59), 0x40aa0002);
    EXPECT_EQ(pf().printed, "no reply, 100% lost\n");
    EXPECT_EQ(pf().flushes, 1u);

    fresh();
    pf().replies.push_back(Reply::empty());
    EXPECT_EQ(run(59), 0);
    EXPECT_EQ(pf().printed, "mts payload is empty");
    EXPECT_EQ(pf().flushes, 1u);
}

TEST_F(EthReportTest, ShortRepliesAreRefusedBeforeAnythingIsPrinted) {
    struct Case {
        std::int32_t platform_type;
        Bytes payload;
        std::string message;
    };
    Bytes two_groups_one_short = two_group_reply();
    two_groups_one_short.resize(kHdr + kRec + 100);
    Bytes header_only = reply_with(0, 0);
    Bytes one_byte_short = reply_with(0, 0);
    one_byte_short.resize(123);
    const Case cases[] = {
        {2, Bytes(5), "Truncated queuing reply: 5 of 48 bytes\n"},
        {3, Bytes(47), "Truncated queuing reply: 47 of 48 bytes\n"},
        {2, two_groups_one_short, "Truncated queuing reply: 300 of 352 bytes\n"},
        {3, two_groups_one_short, "Truncated queuing reply: 300 of 352 bytes\n"},
        {2, header_only, "Truncated queuing reply: 48 of 124 bytes\n"},
        {2, one_byte_short, "Truncated queuing reply: 123 of 124 bytes\n"},
    };
    for (const Case &c : cases) {
        fresh();
        pf().platform_type = c.platform_type;
        pf().replies.push_back(Reply::bytes(c.payload));
        EXPECT_EQ(run(59), 0);
        EXPECT_EQ(pf().printed, c.message);
        EXPECT_EQ(pf().flushes, 1u);
        EXPECT_TRUE(qdtest::ledger_errors().empty());
    }
    // The per-ASIC layout does not read the multicast total: 48 bytes do.
    fresh();
    pf().platform_type = 3;
    pf().replies.push_back(Reply::bytes(header_only));
    EXPECT_EQ(run(59), 0);
    EXPECT_NE(pf().printed.find("\n  RX Queuing\n"), std::string::npos);
}

TEST_F(EthReportTest, PercentSignsInTheNamePrintLiterally) {
    pf().platform_type = 3;
    pf().replies.push_back(Reply::bytes(reply_with(0, 0)));
    run(0, "eth%s%n1");
    EXPECT_EQ(pf().printed.rfind("eth%s%n1 queuing information:\n  TX Queuing\n", 0), 0u);
}

}  // namespace
