// The extended queuing report (command 23) as the library prints it from
// the switch's model.
#include "core/errors.hpp"
#include "sim_ethernet_fixture.hpp"

namespace simtest {
namespace {

using EthernetExtendedTest = EthernetSimTest;

TEST_F(EthernetExtendedTest, MapLevelsDropModesAndCountersFromTheModel) {
    const std::string out = show_extended("Ethernet1/1");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out.rfind("Ethernet1/1 queuing information extend:\nIngress Queuing\n", 0), 0u) << out;
    EXPECT_EQ(lines_starting(out, "COS["),
              (std::vector<std::string>{"COS[0] ===> Q[0]  |  Q[0]      DWRR           NO",
                                        "COS[1] ===> Q[1]  |  Q[1]      DWRR           NO",
                                        "COS[2] ===> Q[2]  |  Q[2]      DWRR           NO",
                                        "COS[3] ===> Q[3]  |  Q[3]      DWRR           YES",
                                        "COS[4] ===> Q[4]  |  Q[4]      DWRR           NO",
                                        "COS[5] ===> Q[3]  |  Q[5]      DWRR           NO",
                                        "COS[6] ===> Q[6]  |  Q[6]      SP[2]          NO",
                                        "COS[7] ===> Q[7]  |  Q[7]      SP[1]          NO"}));
    // Pass rows first, then drop rows; counters beyond 2^32 in full.
    const auto queue0 = lines_starting(out, "[0]");
    ASSERT_EQ(queue0.size(), 2u);
    EXPECT_EQ(queue0[0], "[0]           4831838208              6442463289                       0");
    EXPECT_EQ(queue0[1], "[0]                    0              4294967301                       0");
    EXPECT_EQ(lines_starting(out, "[3]")[1], "[3]                70872                      12                       0");
}

TEST_F(EthernetExtendedTest, EachInterfaceHasItsOwnConfiguration) {
    const auto rows = lines_starting(show_extended("Ethernet1/2"), "COS[");
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_EQ(rows[0], "COS[0] ===> Q[0]  |  Q[0]      DWRR           YES");
    EXPECT_EQ(rows[6], "COS[6] ===> Q[6]  |  Q[6]      DWRR           NO");
    EXPECT_EQ(rows[7], "COS[7] ===> Q[7]  |  Q[7]      DWRR           YES");

    std::string error;
    ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~12/extended/cos_to_queue/0", "7", error)) << error;
    ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~12/extended/sp_level/0", "7", error)) << error;
    EXPECT_EQ(lines_starting(show_extended("Ethernet1/2"), "COS[0]")[0],
              "COS[0] ===> Q[7]  |  Q[0]      SP[7]          YES");
    EXPECT_FALSE(qdsim::set_state_value("/interfaces/Ethernet1~12/extended/sp_level/0", "8", error));
}

TEST_F(EthernetExtendedTest, CountersGrowWithTheClock) {
    show_extended("Ethernet1/1");  // closing it ticks once
    qdsim::advance_clock(999);
    const auto queue0 = lines_starting(show_extended("Ethernet1/1"), "[0]");
    ASSERT_EQ(queue0.size(), 2u);
    // 4831838208 + 1000 x 1494, 6442463289 + 1000 x 900; drops 4294967301 + 1000.
    EXPECT_EQ(queue0[0], "[0]           4833332208              6443363289                       0");
    EXPECT_EQ(queue0[1], "[0]                    0              4294968301                       0");
}

TEST_F(EthernetExtendedTest, NotSupportedAndFaults) {
    for (const char *name : {"Ethernet2/24", "Ethernet101/1/1"}) {
        EXPECT_EQ(show_extended(name), "Unsupported interface\n") << name;
        EXPECT_EQ(status, 1) << name;
    }
    load(R"({"extends": "default", "faults": [
        {"target": "daemon", "command": 23, "kind": "short_payload", "bytes": 412, "count": 1},
        {"target": "daemon", "command": 23, "interface": "Ethernet1/3", "kind": "send_failure", "error": "no_service"},
        {"target": "daemon", "command": 23, "kind": "unsupported", "count": 1}]})");
    EXPECT_EQ(show_extended("Ethernet1/1"), "Truncated extended queuing reply: 412 of 413 bytes\n");
    EXPECT_EQ(show_extended("Ethernet1/3"), "service not available\n");
    EXPECT_EQ(status, qdsim::kErrNoService);
    EXPECT_EQ(show_extended("Ethernet1/1"), "Unsupported interface\n");
    EXPECT_EQ(lines_starting(show_extended("Ethernet1/1"), "COS[").size(), 8u);
}

}  // namespace
}  // namespace simtest
