// SPDX-License-Identifier: MIT
// Switch-wide queuing report, host-interface part: the state words of the
// renderer, every attribute of its table, and attribute 58, which runs the
// host-interface report. Values are host-order byte literals.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "double/fixture.hpp"
#include "frame/exchange.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;

constexpr std::uint32_t kHif = 0x1f010000u;
constexpr const char *kName = "Ethernet101/1/1";
const Bytes kMinusOne = {0xff, 0xff, 0xff, 0xff};

class SwitchStreamHifTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kHif, 31, kName, 4);
    }
    void attr(std::uint32_t id, Bytes value) { pf().response_attrs.push_back({id, std::move(value)}); }
    std::string run(std::vector<qdtest::Attr> attrs) {
        pf().response_attrs.insert(pf().response_attrs.end(), attrs.begin(), attrs.end());
        cmd_rsp rsp{};
        rsp.mts_handle = 0x77;
        return qdtest::capture_stdout([&] { result = qd_cli_show_queuing_intf_switch_hif(&rsp, kName, kHif); });
    }
    // One queueing row: queue, qos-groups and cos values (4-byte values),
    // priority, bandwidth, MTU.
    void queue_row(std::uint8_t queue, const std::vector<Bytes> &groups, const std::vector<Bytes> &cos,
                   std::uint8_t priority, std::uint8_t bandwidth, Bytes mtu) {
        attr(0x14ff00d6, {queue});
        for (const Bytes &g : groups) attr(0x11ff00d7, g);
        for (const Bytes &c : cos) attr(0x14ff00d8, c);
        attr(0x14ff00d9, {priority});
        attr(0x14ff00da, {bandwidth});
        attr(0x14ff00db, std::move(mtu));
    }
    std::int32_t result = 0;
};

const std::string kHeading = "if_slot 3, ifidx 0x1f010000\nEthernet101/1/1 queuing information:\n  Input buffer allocation:";
const std::string kXonHeading = "\n  xon       xoff      buffer-size\n  ---------+---------+-----------\n";
const std::string kQueueingHeading =
    "\n  Queueing:\n"
    "  queue    qos-group    cos            priority  bandwidth mtu \n"
    "  --------+------------+--------------+---------+---------+----\n";
const std::string kTwoColumnHeading =
    "\n  Queue Statistics:\n"
    "  queue  rx              tx                   \n"
    "  ------+---------------+---------------      \n";
const std::string kRule = "  ---+----------------+-----------+------------+----------+-----------+\n";

TEST_F(SwitchStreamHifTest, EmptyStreamPrintsNothingAndEndsWithMinusOne) {
    EXPECT_EQ(run({}), "");
    EXPECT_EQ(result, -1);
}

TEST_F(SwitchStreamHifTest, InputBuffersSharedLinesAndCosLists) {
    EXPECT_EQ(run({{0x14ff00cd, {3}}, {0x14ff00ce, {0x00, 0x00, 0x01, 0x1f}},
                   // One qos-group, two cos values.
                   {0x14ff00cf, {1}}, {0x14ff00d0, {0}}, {0x02ff00d1, {1}}, {0x14ff00d2, {3}}, {0x14ff00d2, {4}},
                   {0x14ff00d3, {100, 0, 0, 0}}, {0x14ff00d4, {200, 0, 0, 0}}, {0x14ff00d5, {0x2c, 0x01, 0, 0}},
                   // Shared: the second qos-group marks the line.
                   {0x14ff00cf, {2}}, {0x14ff00cf, {5}}, {0x14ff00d0, {0}}, {0x02ff00d1, {0}}, {0x14ff00d2, {0}},
                   {0x14ff00d3, {10, 0, 0, 0}}, {0x14ff00d4, {20, 0, 0, 0}}, {0x14ff00d5, kMinusOne},
                   // The mark does not carry over.
                   {0x14ff00cf, {6}}, {0x14ff00d0, {1}}}),
              kHeading + "\n  Qos-group: 1 \n  frh: 0\n  drop-type: no-drop\n  cos: 3 4" + kXonHeading +
                  "  100       200       300      \n"
                  "\n  Qos-group: 2  5  (shared)\n  frh: 0\n  drop-type: drop\n  cos: 0" +
                  kXonHeading +
                  "  10        20        -1       \n"
                  "\n  Qos-group: 6 \n  frh: 1\n");
}

TEST_F(SwitchStreamHifTest, QueueingRowsLineUpUnderOneHeading) {
    queue_row(0, {kMinusOne}, {{7, 0, 0, 0}}, 1, 0, {0xdc, 0x05});
    queue_row(1, {kMinusOne}, {{6, 0, 0, 0}}, 1, 0, {0xdc, 0x05});
    queue_row(2, {{1, 0, 0, 0}, {3, 0, 0, 0}}, {{1, 0, 0, 0}, {2, 0, 0, 0}, {3, 0, 0, 0}}, 0, 50, {0xdc, 0x05});
    queue_row(3, {{4, 0, 0, 0}}, {{8, 0, 0, 0}}, 0, 50, {0x00, 0x24});  // first cos 8: one blank
    std::vector<Bytes> eight;                                           // wider than the cells: no padding
    for (std::uint8_t v = 0; v < 8; ++v) eight.push_back({v, 0, 0, 0});
    queue_row(7, eight, eight, 1, 100, {0xdc, 0x05});
    // Tested as words, printed from the low byte: 0x103 and 0x108 are
    // neither -1 nor 8; a low byte of 0xff alone is not -1.
    queue_row(4, {{0x03, 0x01, 0, 0}}, {{0x08, 0x01, 0, 0}}, 0, 5, {0x40, 0x00});
    queue_row(5, {{0xff, 0, 0, 0}}, {{1, 0, 0, 0}}, 0, 5, {0x40, 0x00});
    EXPECT_EQ(run({}), kQueueingHeading +
                           "  ctrl-hi  n/a          7               PRI         0      1500\n"
                           "  ctrl-lo  n/a          6               PRI         0      1500\n"
                           "  2        1 3          1 2 3           WRR        50      1500\n"
                           "  3        4                            WRR        50      9216\n"
                           "  7        0 1 2 3 4 5 6 70 1 2 3 4 5 6 7 PRI       100      1500\n"
                           "  4        3            8               WRR         5        64\n"
                           "  5        255            1               WRR         5        64\n");
}

TEST_F(SwitchStreamHifTest, ShortAndUnknownAttributesLeaveTheStateAlone) {
    EXPECT_EQ(run({{0x14ff00d6, {2}},
                   {0x11ff00d7, {5}},                      // one byte of a word
                   {0x11ff00d7, {1, 0, 0, 0}},             // still the first of the row
                   {0x14ff00d8, {2, 0}},
                   {0x14ff00d8, {2, 0, 0, 0}},
                   {0x02ff00f4, {0, 0, 0, 1}},             // half of the eight bytes
                   {0x14ff00cf, {}},
                   {0x14ff00b8, {0}},                      // Ethernet attributes are unknown here
                   {0x0cff00b7, {0x00, 0x00, 0x00, 0x1a}}, // skipped
                   {0x0cff00b7, {}},
                   {0x14ff00ff, {1, 0, 0, 0}}}),
              kQueueingHeading +
                  "  2        "
                  "\n Malformed attr 0x11ff00d7: 1 bytes, 4 expected\n"
                  "1"
                  "\n Malformed attr 0x14ff00d8: 2 bytes, 4 expected\n"
                  "            2"
                  "\n Malformed attr 0x2ff00f4: 4 bytes, 8 expected\n"
                  "\n Malformed attr 0x14ff00cf: 0 bytes, 1 expected\n"
                  "\n Unknown attr 0x14ff00b8\n"
                  "\n Unknown attr 0x14ff00ff\n");
    EXPECT_EQ(result, -1);
}

TEST_F(SwitchStreamHifTest, LimitsAndQueueStatistics) {
    const Bytes one = {1, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(run({{0x14ff00dc, {0xe8, 0x03, 0, 0}}, {0x14ff00dd, kMinusOne},
                   {0x14ff00e2, {2}}, {0x14ff00e3, {5, 0, 0, 0, 0, 0, 0, 0}}, {0x14ff00e4, {0, 0, 0, 0, 1, 0, 0, 0}},
                   {0x14ff00e0, {0, 0, 0, 0}}, {0x14ff00e1, kMinusOne},
                   {0x14ff00de, {0x00, 0x40, 0x01, 0x00}}, {0x14ff00df, kMinusOne},
                   {0x14ff00e5, {2, 0, 0, 0}}, {0x14ff00e6, {10, 0, 0, 0, 0, 0, 0, 0}}, {0x14ff00e7, one},
                   {0x14ff00e8, {2, 0, 0, 0, 0, 0, 0, 0}}, {0x14ff00e9, {3, 0, 0, 0, 0, 0, 0, 0}},
                   {0x14ff00ea, {2, 0, 0, 0}}, {0x14ff00eb, {20, 0, 0, 0, 0, 0, 0, 0}},
                   {0x14ff00ec, {4, 0, 0, 0, 0, 0, 0, 0}}, {0x14ff00ed, {5, 0, 0, 0, 0, 0, 0, 0}},
                   {0x14ff00ee, {6, 0, 0, 0, 0, 0, 0, 0}}, {0x14ff00ef, {7, 0, 0, 0, 0, 0, 0, 0}}}),
              "\n  Buffer threshold: 1000 bytes"
              "\n  Queue limit: Disabled\n" +
                  kTwoColumnHeading + "  2      5               4294967296     \n" +
                  "\n  Queue Limit Tx: 0 bytes\n  Queue Limit Rx: Disabled\n" + kTwoColumnHeading +
                  "\n  Queue Limit Tx: 81920 bytes\n  Queue Limit Rx: Disabled\n"
                  "\n  Queue Statistics:\n" +
                  kRule +
                  "  Que|Received /      |Tail Drop  |No Buffer   |MAC Error |Multicast  |\n"
                  "  No |Transmitted     |           |            |          |Tail Drop  |\n" +
                  kRule +
                  "  2rx|              10|          1|           2|         3|     -     |\n"
                  "  2tx|              20|          4|           5|         6|          7|\n" +
                  kRule);
}

TEST_F(SwitchStreamHifTest, PortStatisticsAndFlowControl) {
    EXPECT_EQ(run({{0x14ff00f0, {1, 0, 0, 0, 0, 0, 0, 0}}, {0x14ff00f1, {2, 0, 0, 0, 0, 0, 0, 0}},
                   {0x14ff00f2, {3, 0, 0, 0, 0, 0, 0, 0}}, {0x14ff00f3, {4, 0, 0, 0, 0, 0, 0, 0}},
                   {0x02ff00f4, {0, 0, 0, 0, 2, 0, 0, 0}},  // only the high word set
                   {0x02ff00f4, {0, 0, 0, 0, 0, 0, 0, 0}},
                   {0x02ff00f5, {1}},
                   {0x14ff00f6, {0, 0, 0, 0}}, {0x11ff00f7, {3, 0, 0, 0}}, {0x02ff00f8, {1}}, {0x02ff00f9, {0}},
                   {0x02ff00fa, {0}},
                   {0x14ff00f6, {7, 0, 0, 0}}, {0x11ff00f7, kMinusOne}, {0x02ff00f8, {0}}, {0x02ff00f9, {1}},
                   {0x02ff00fa, {1}},
                   {0x02ff00f5, {0}}}),
              "\n  Port Statistics:\n"
              "  rx drop         rx mcast drop   rx error        tx drop         mux ovflow    \n"
              "  ---------------+---------------+---------------+---------------+--------------\n"
              "  1               2               3               4                  Active\n"
              "  InActive\n"
              "\n  Priority-flow-control enabled: yes\n  Flow-control status: \n"
              "  cos     qos-group   rx pause  tx pause  masked rx pause\n"
              "  -------+-----------+---------+---------+---------------\n"
              "  0              3    xoff      xon       xon \n"
              "  7            n/a    xon       xoff      xoff\n"
              "\n  Priority-flow-control enabled: no\n  Flow-control status: \n"
              "  cos     qos-group   rx pause  tx pause  masked rx pause\n"
              "  -------+-----------+---------+---------+---------------\n");
}

// Attribute 58 runs the host-interface report for the handler's interface
// with a blank record carrying only the response's transport handle. Before
// the report is linked in, the stand-in above records the call; with the
// report linked in, what it sends shows the same: a sub-command 16 request
// for this interface to its slot's agent, over the response's handle.
TEST_F(SwitchStreamHifTest, AttributeRunsTheHostInterfaceReportWithABlankRecord) {
    pf().replies.push_back(qdtest::Reply::send_failure(0x40aa0001));
    pf().replies.push_back(qdtest::Reply::send_failure(0x40aa0001));
    const std::string out = run({{0x14ff00cd, {3}}, {0x14ff00ce, {0x00, 0x00, 0x01, 0x1f}}, {ATTR_RUN_HIF_REPORT, {}},
                                 {0x14ff00dc, {5, 0, 0, 0}}, {ATTR_RUN_HIF_REPORT, {1, 2, 3}}});
    EXPECT_EQ(result, -1);  // the report's own status is ignored
    EXPECT_EQ(out.substr(0, kHeading.size()), kHeading);
    const std::string between = "\n  Buffer threshold: 5 bytes";
    ASSERT_NE(out.find(between), std::string::npos);

    ASSERT_EQ(pf().sent.size(), 2u);
    for (const qdtest::SentRequest &sent : pf().sent) {
        EXPECT_EQ(sent.handle, 0x77u);
        EXPECT_EQ(sent.node, qdcli::lc_stats_node(4));
        ASSERT_EQ(sent.payload.size(), 40u);
        EXPECT_EQ(sent.payload[0], LC_STATS_CMD_HIF_QUEUING);
        EXPECT_EQ(Bytes(sent.payload.begin() + 32, sent.payload.begin() + 36), (Bytes{0x1f, 0x01, 0x00, 0x00}));
    }
    EXPECT_EQ(out.find("if_slot 4, ifidx 0x1f010000\n", kHeading.size()), kHeading.size());
    EXPECT_NE(out.find("if_slot 4, ifidx 0x1f010000\n", out.find(between)), std::string::npos);
}

}  // namespace
