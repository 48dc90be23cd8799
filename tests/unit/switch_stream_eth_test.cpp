// SPDX-License-Identifier: MIT
// Switch-wide queuing report, Ethernet part: attribute stream in, exact text
// out. Values are host-order byte literals as the daemon sends them.
#include <gtest/gtest.h>

#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

class SwitchStreamEthTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(0x1a000000u, 26, "Eth%s1/1");
        pf().add_interface(0x1f010000u, 31, "Ethernet101/1/1", 3);
    }
    std::string run(std::vector<qdtest::Attr> attrs) {
        pf().response_attrs = std::move(attrs);
        pf().response_attr_pos = 0;
        cmd_rsp rsp{};
        return qdtest::capture_stdout([&] { result = qd_cli_show_queuing_intf_switch(&rsp); });
    }
    std::int32_t result = 0;
};

// One Ethernet interface: two transmit groups, the tail-drop counter
// (5 * 2^32 + 7), one receive group, the multicast total.
const std::vector<qdtest::Attr> kInterface = {
    {0x0cff00b7, {0x00, 0x00, 0x00, 0x1a}},
    {0x14ff00b8, {0}}, {0x02ff00b9, {1}}, {0x14ff00ba, {50}},
    {0x14ff00b8, {1}}, {0x02ff00b9, {0}}, {0x14ff00ba, {50}},
    {0x15ff00bb, {7, 0, 0, 0, 5, 0, 0, 0}},
    {0x14ff00bc, {0}}, {0x14ff00bd, {0xe8, 0x03, 0, 0}}, {0x14ff00be, {0xa0, 0x0f, 0, 0}},
    {0x14ff00bf, {0xdc, 0x05}}, {0x14ff00c0, {0xdc, 0x05}}, {0x02ff00c1, {1}},
    {0x14ff00c2, {100, 0, 0, 0}}, {0x14ff00c3, {200, 0, 0, 0}},
    {0x14ff00c4, {11, 0, 0, 0}}, {0x14ff00c5, {12, 0, 0, 0}}, {0x14ff00c6, {13, 0, 0, 0}},
    {0x14ff00c7, {14, 0, 0, 0}}, {0x14ff00c8, {15, 0, 0, 0}}, {0x14ff00c9, {16, 0, 0, 0}},
    {0x02ff00ca, {1, 0, 0, 0}}, {0x02ff00cb, {0, 0, 0, 0}},
    {0x14ff00cc, {17, 0, 0, 0}},
};
const std::string kTransmit =
    "Eth%s1/1 queuing information:\n"
    "  TX Queuing\n"
    "    qos-group  sched-type  oper-bandwidth\n"
    "        0       priority        50\n"
    "        1       WRR             50\n";
const std::string kTailDrops = "    Statistics:\n        Mcast pkts tail dropped on this egress asic\t: 21474836487 \n";
const std::string kReceive =
    "\n  RX Queuing\n"
    "    qos-group 0\n"
    "    q-size: 1000, q-size-40g: 4000, HW MTU: 1500 (1500 configured)\n"
    "    drop-type: no-drop, xon: 100, xoff: 200\n"
    "    Statistics:\n"
    "        Pkts received over the port\t\t: 11\n"
    "        Ucast pkts sent to the cross-bar\t: 12\n"
    "        Mcast pkts sent to the cross-bar\t: 13\n"
    "        Ucast pkts received from the cross-bar\t: 14\n"
    "        Pkts sent to the port\t\t\t: 15\n"
    "        Pkts discarded on ingress\t\t: 16\n"
    "        Per-priority-pause status\t\t: Rx (Active), Tx (Inactive)\n\n";
const std::string kMcastTotal = "  Total Multicast crossbar statistics:\n    Mcast pkts received from the cross-bar\t: 17\n";

TEST_F(SwitchStreamEthTest, InterfaceReportFollowsThePlatformType) {
    struct Case {
        std::int32_t type, query_rc;  // a failed query counts as "not 3"
        std::string expected;
    };
    for (const Case &c : {Case{2, 0, kTransmit + kReceive + kMcastTotal}, Case{3, 0, kTransmit + kTailDrops + kReceive},
                          Case{4, 0, kTransmit + kReceive + kMcastTotal}, Case{3, 5, kTransmit + kReceive + kMcastTotal}}) {
        SCOPED_TRACE(testing::Message() << "platform type " << c.type << ", query rc " << c.query_rc);
        qdcli::platform_type_cache_reset();
        pf().platform_type = c.type;
        pf().platform_type_rc = c.query_rc;
        EXPECT_EQ(run(kInterface), c.expected);
        EXPECT_EQ(result, -1);
    }
}

TEST_F(SwitchStreamEthTest, UnknownAndShortAttributesAreReportedAndTheWalkGoesOn) {
    EXPECT_EQ(run({}), "");  // an empty stream prints nothing
    EXPECT_EQ(result, -1);
    pf().platform_type = 3;
    EXPECT_EQ(run({{0x14ff00cd, {3}},                 // a host-interface attribute
                   {0x14ff00bd, {0xe8, 0x03}},        // two bytes of a 32-bit value
                   {0x15ff00bb, {1, 0, 0, 0}},        // four bytes of a 64-bit counter
                   {0x14ff00c3, {}},
                   {ATTR_RUN_HIF_REPORT, {}},
                   {0x14ff00c2, {7, 0, 0, 0}}}),
              "\n Unknown attr 0x14ff00cd\n"
              "\n Malformed attr 0x14ff00bd: 2 bytes, 4 expected\n"
              "\n Malformed attr 0x15ff00bb: 4 bytes, 8 expected\n"
              "\n Malformed attr 0x14ff00c3: 0 bytes, 4 expected\n"
              "\n Unknown attr 0x3a\n"
              "xon: 7, ");
    EXPECT_EQ(result, -1);
}

}  // namespace
