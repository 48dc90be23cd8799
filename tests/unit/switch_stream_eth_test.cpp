// Switch-wide queuing report, Ethernet part: attribute stream in, exact text
// out. Values are host-order byte literals as the daemon sends them.
#include <gtest/gtest.h>

#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;

constexpr std::uint32_t kEth = 0x1a000000u;
constexpr std::uint32_t kHif = 0x1f010000u;

class SwitchStreamEthTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kEth, 26, "Ethernet1/1");
        pf().add_interface(kHif, 31, "Ethernet101/1/1", 3);
    }
    void attr(std::uint32_t id, Bytes value) { pf().response_attrs.push_back({id, std::move(value)}); }
    std::string run() {
        cmd_rsp rsp{};
        rsp.mts_handle = 0x77;
        return qdtest::capture_stdout([&] { result = qd_cli_show_queuing_intf_switch(&rsp); });
    }
    // One Ethernet interface with two transmit groups, the tail-drop
    // counter, one receive group and the multicast total.
    void one_interface() {
        attr(0x0cff00b7, {0x00, 0x00, 0x00, 0x1a});
        attr(0x14ff00b8, {0});
        attr(0x02ff00b9, {1});
        attr(0x14ff00ba, {50});
        attr(0x14ff00b8, {1});
        attr(0x02ff00b9, {0});
        attr(0x14ff00ba, {50});
        attr(0x15ff00bb, {0x07, 0, 0, 0, 0x05, 0, 0, 0});  // 5 * 2^32 + 7
        attr(0x14ff00bc, {0});
        attr(0x14ff00bd, {0xe8, 0x03, 0, 0});
        attr(0x14ff00be, {0xa0, 0x0f, 0, 0});
        attr(0x14ff00bf, {0xdc, 0x05});
        attr(0x14ff00c0, {0xdc, 0x05});
        attr(0x02ff00c1, {1});
        attr(0x14ff00c2, {100, 0, 0, 0});
        attr(0x14ff00c3, {200, 0, 0, 0});
        for (std::uint8_t id = 0xc4, v = 11; id <= 0xc9; ++id, ++v) attr(0x14ff0000u | id, {v, 0, 0, 0});
        attr(0x02ff00ca, {1, 0, 0, 0});
        attr(0x02ff00cb, {0, 0, 0, 0});
        attr(0x14ff00cc, {17, 0, 0, 0});
    }
    std::int32_t result = 0;
};

const std::string kInterfaceText =
    "Ethernet1/1 queuing information:\n"
    "  TX Queuing\n"
    "    qos-group  sched-type  oper-bandwidth\n"
    "        0       priority        50\n"
    "        1       WRR             50\n";
const std::string kReceiveText =
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
const std::string kMcastTailDropText =
    "    Statistics:\n"
    "        Mcast pkts tail dropped on this egress asic\t: 21474836487 \n";
const std::string kMcastTotalText =
    "  Total Multicast crossbar statistics:\n"
    "    Mcast pkts received from the cross-bar\t: 17\n";

TEST_F(SwitchStreamEthTest, EmptyStreamPrintsNothingAndEndsWithMinusOne) {
    EXPECT_EQ(run(), "");
    EXPECT_EQ(result, -1);
}

TEST_F(SwitchStreamEthTest, MulticastStatisticsFollowThePlatformType) {
    struct Case {
        std::int32_t type;
        std::int32_t query_rc;  // non-zero: the platform query fails, which counts as "not 3"
        std::string expected;
    };
    const Case cases[] = {
        {2, 0, kInterfaceText + kReceiveText + kMcastTotalText},
        {3, 0, kInterfaceText + kMcastTailDropText + kReceiveText},
        {4, 0, kInterfaceText + kReceiveText + kMcastTotalText},
        {3, 5, kInterfaceText + kReceiveText + kMcastTotalText},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "platform type " << c.type << ", query rc " << c.query_rc);
        qdcli::platform_type_cache_reset();
        pf().platform_type = c.type;
        pf().platform_type_rc = c.query_rc;
        pf().response_attrs.clear();
        pf().response_attr_pos = 0;
        one_interface();
        EXPECT_EQ(run(), c.expected);
        EXPECT_EQ(result, -1);
    }
}

TEST_F(SwitchStreamEthTest, HeadingsComeOnlyBeforeGroupZero) {
    attr(0x14ff00b8, {1});
    attr(0x02ff00b9, {0});
    attr(0x14ff00ba, {0});
    attr(0x14ff00bc, {2});
    attr(0x14ff00bc, {0});
    EXPECT_EQ(run(),
              "        1       WRR              0\n"
              "    qos-group 2\n"
              "\n  RX Queuing\n"
              "    qos-group 0\n");
}

TEST_F(SwitchStreamEthTest, ValuesAreReadWithTheWidthOfTheirAttribute) {
    attr(0x14ff00bd, {0xff, 0xff, 0xff, 0xff});         // signed
    attr(0x14ff00bf, {0x34, 0x12});                     // 16-bit
    attr(0x14ff00c2, {0xff, 0xff, 0xff, 0xff});         // unsigned
    attr(0x02ff00ca, {0, 0, 0, 1});                     // tested as a 32-bit word
    attr(0x02ff00cb, {0, 1, 0, 0});
    attr(0x14ff00bc, {3, 0, 0, 0});                     // a u8 sent as a word: its first byte
    attr(0x02ff00c1, {0});
    EXPECT_EQ(run(),
              "    q-size: -1, HW MTU: 4660 xon: 4294967295, "
              "        Per-priority-pause status\t\t: Rx (Active), Tx (Active)\n\n"
              "    qos-group 3\n"
              "    drop-type: drop, ");
}

TEST_F(SwitchStreamEthTest, UnknownAndShortAttributesAreReportedAndTheWalkGoesOn) {
    attr(0x14ff00cd, {3});             // a host-interface attribute
    attr(0x14ff00bd, {0xe8, 0x03});    // two bytes of a 32-bit value
    attr(0x15ff00bb, {1, 0, 0, 0});    // four bytes of a 64-bit counter
    attr(0x14ff00c3, {});              // no value at all
    attr(ATTR_RUN_HIF_REPORT, {});
    attr(0x14ff00c2, {7, 0, 0, 0});
    pf().platform_type = 3;
    EXPECT_EQ(run(),
              "\n Unknown attr 0x14ff00cd\n"
              "\n Malformed attr 0x14ff00bd: 2 bytes, 4 expected\n"
              "\n Malformed attr 0x15ff00bb: 4 bytes, 8 expected\n"
              "\n Malformed attr 0x14ff00c3: 0 bytes, 4 expected\n"
              "\n Unknown attr 0x3a\n"
              "xon: 7, ");
    EXPECT_EQ(result, -1);
}

TEST_F(SwitchStreamEthTest, InterfaceNamesArePrintedAsTheyStand) {
    pf().add_interface(0x1a000200u, 1, "Eth%s%n1/3");
    attr(0x0cff00b7, {0x00, 0x02, 0x00, 0x1a});
    EXPECT_EQ(run(), "Eth%s%n1/3 queuing information:\n");
}

TEST_F(SwitchStreamEthTest, HostInterfaceTakesOverTheRestOfTheStream) {
    attr(0x0cff00b7, {0x00, 0x00, 0x00, 0x1a});
    attr(0x14ff00b8, {1});
    attr(0x0cff00b7, {0x00, 0x00, 0x01, 0x1f});  // type 31: hand-over
    attr(0x14ff00cd, {3});
    attr(0x14ff00ce, {0x00, 0x00, 0x01, 0x1f});
    attr(0x14ff00b8, {0});                       // Ethernet attributes are unknown from here on
    attr(0x14ff00cc, {1, 0, 0, 0});
    attr(0x0cff00b7, {0x00, 0x00, 0x00, 0x1a});  // skipped: the name stays
    attr(0x14ff00ce, {0x00, 0x00, 0x01, 0x1f});
    EXPECT_EQ(run(),
              "Ethernet1/1 queuing information:\n"
              "        1"
              "if_slot 3, ifidx 0x1f010000\n"
              "Ethernet101/1/1 queuing information:\n"
              "  Input buffer allocation:"
              "\n Unknown attr 0x14ff00b8\n"
              "\n Unknown attr 0x14ff00cc\n"
              "ifidx 0x1f010000\n"
              "Ethernet101/1/1 queuing information:\n"
              "  Input buffer allocation:");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(pf().response_attr_pos, pf().response_attrs.size());
}

}  // namespace
