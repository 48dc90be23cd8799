// SPDX-License-Identifier: MIT
// The extended queuing report (command 23) as the library prints it from
// the switch's model.
#include "core/errors.hpp"
#include "sim_ethernet_fixture.hpp"

namespace simtest {
namespace {

using EthernetExtendedTest = EthernetSimTest;

TEST_F(EthernetExtendedTest, MapLevelsDropModesAndCountersFromTheModel) {
    std::string out = show_extended("Ethernet1/1");
    EXPECT_EQ(status, 0);
    const auto rows = lines_starting(out, "COS[");
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_EQ(rows[3], "COS[3] ===> Q[3]  |  Q[3]      DWRR           YES");
    EXPECT_EQ(rows[5], "COS[5] ===> Q[3]  |  Q[5]      DWRR           NO");
    EXPECT_EQ(rows[6], "COS[6] ===> Q[6]  |  Q[6]      SP[2]          NO");
    // Pass row, then drop row; counters beyond 2^32 in full.
    EXPECT_EQ(lines_starting(out, "[0]"),
              (std::vector<std::string>{"[0]           4831838208              6442463289                       0",
                                        "[0]                    0              4294967301                       0"}));

    // The uplink's counters grow: closing that command ticked once; 999 more.
    qdsim::advance_clock(999);
    out = show_extended("Ethernet1/48");
    EXPECT_EQ(lines_starting(out, "[0]")[0], "[0]           5376809120              4299018320                       0");
    EXPECT_EQ(lines_starting(out, "[3]")[1], "[3]                 2204                       0                       0");

    // Another interface, its own configuration, changed through the state.
    out = show_extended("Ethernet1/2");
    EXPECT_EQ(lines_starting(out, "COS[0]")[0], "COS[0] ===> Q[0]  |  Q[0]      DWRR           YES");
    EXPECT_EQ(lines_starting(out, "COS[7]")[0], "COS[7] ===> Q[7]  |  Q[7]      DWRR           YES");
    std::string error;
    ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~12/extended/cos_to_queue/0", "7", error)) << error;
    ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~12/extended/sp_level/0", "7", error)) << error;
    EXPECT_FALSE(qdsim::set_state_value("/interfaces/Ethernet1~12/extended/sp_level/0", "8", error));
    EXPECT_EQ(lines_starting(show_extended("Ethernet1/2"), "COS[0]")[0],
              "COS[0] ===> Q[7]  |  Q[0]      SP[7]          YES");
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
