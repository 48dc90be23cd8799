// SPDX-License-Identifier: MIT
// The queuing report of an Ethernet interface (command 17) as the library
// prints it from the switch's model.
#include "core/errors.hpp"
#include "sim_ethernet_fixture.hpp"

namespace simtest {
namespace {

using EthernetQueuingTest = EthernetSimTest;

TEST_F(EthernetQueuingTest, AnUplinkNamedAloneShowsItsVaqBlockThenTheExtendersPorts) {
    const std::string out = show_queuing("Ethernet1/48");
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(contains(out, "        1       WRR             30\n        2       priority         0\n"));
    EXPECT_TRUE(contains(out, "    drop-type: no-drop, xon: 38400, xoff: 52480\n"));
    EXPECT_TRUE(contains(out, "    Mcast pkts received from the cross-bar\t: 1429105\n"
                              "\n  VAQ interface info:\n    VAQ Drop Class Buffer Size:  32768\n"
                              "\n  Total VAQ interface statistics:\n"
                              "    VAQ Uplink Interface Rx Drops   : 112\n"
                              "    Vaq Uplink Interface Err Drops  : 3\n"
                              "    Vaq Uplink Interface Mcast Drops: 57\n\n+-------------+\n N2H direction \n"))
        << out;
    EXPECT_EQ(lines_starting(out, " eNIF ").size() + lines_starting(out, " iHIF ").size(), 7u);

    // Enumerated, the uplink shows its queuing only; the other extender's
    // uplink hides its buffer size; a port without an extender has no block.
    EXPECT_FALSE(contains(show_queuing("Ethernet1/48", 0), "VAQ"));
    const std::string hidden = show_queuing("Ethernet2/48");
    EXPECT_FALSE(contains(hidden, "VAQ interface info"));
    EXPECT_TRUE(contains(hidden, "\n  Total VAQ interface statistics:\n    VAQ Uplink Interface Rx Drops   : 6\n"));
    EXPECT_FALSE(contains(show_queuing("Ethernet1/1"), "VAQ"));
}

TEST_F(EthernetQueuingTest, GroupsShowTheirModelValuesAndCountersGrow) {
    std::string out = show_queuing("Ethernet1/1");
    // Group 0 counts its discards in the 16-bit form, group 3 in the 32-bit one.
    EXPECT_EQ(lines_starting(out, "        Pkts discarded on ingress"),
              (std::vector<std::string>{"        Pkts discarded on ingress\t\t: 17",
                                        "        Pkts discarded on ingress\t\t: 0",
                                        "        Pkts discarded on ingress\t\t: 0",
                                        "        Pkts discarded on ingress\t\t: 70872"}));
    EXPECT_EQ(lines_starting(show_queuing("Ethernet2/1"), "        Per-priority-pause status")[1],
              "        Per-priority-pause status\t\t: Rx (Inactive), Tx (Active)");
    EXPECT_EQ(lines_starting(out, "        Pkts received over the port")[0],
              "        Pkts received over the port\t\t: 18446230");
    EXPECT_TRUE(contains(out, "    Mcast pkts received from the cross-bar\t: 414364\n"));

    std::string error;
    const std::string group = "/interfaces/Ethernet1~11/queuing/qos_groups/";
    ASSERT_TRUE(qdsim::set_state_value(group + "0/priority", "true", error)) << error;
    ASSERT_TRUE(qdsim::set_state_value(group + "0/mtu_hw", "9216", error)) << error;
    // A 16-bit counter shows its low bits; at a multiple of 65536 the 32-bit form shows.
    ASSERT_TRUE(qdsim::set_state_value(group + "0/counters/ingress_discards16", "65541", error)) << error;
    ASSERT_TRUE(qdsim::set_state_value(group + "3/counters/ingress_discards16", "131072", error)) << error;
    out = show_queuing("Ethernet1/1");
    EXPECT_TRUE(contains(out, "        0       priority        50\n"));
    EXPECT_TRUE(contains(out, "HW MTU: 9216 (1500 configured)\n"));
    const auto discards = lines_starting(out, "        Pkts discarded on ingress");
    EXPECT_EQ(discards.at(0), "        Pkts discarded on ingress\t\t: 5");
    EXPECT_EQ(discards.at(3), "        Pkts discarded on ingress\t\t: 70878");  // 70872, two ticks at 3
    EXPECT_EQ(lines_starting(out, "        Pkts received over the port")[0],
              "        Pkts received over the port\t\t: 18449270");  // two ticks at 1520
}

TEST_F(EthernetQueuingTest, PlatformThreeShowsTheTailDropsInFull) {
    load(R"({"extends": "default", "platform": {"type": 3}})");
    const std::string out = show_queuing("Ethernet1/1");
    EXPECT_TRUE(contains(out, "        3       WRR             20\n    Statistics:\n"
                              "       Mcast pkts tail dropped on this egress asic\t: 4294967301 \n\n  RX Queuing\n"))
        << out;
    EXPECT_FALSE(contains(out, "Total Multicast crossbar statistics"));
}

TEST_F(EthernetQueuingTest, AnInterfaceWithoutQosGroupsStillCarriesThePortTotal) {
    load(R"({"ethernet": [{"slot": 1, "ports": 1, "queuing": {"qos_groups": []}}]})");
    EXPECT_EQ(show_queuing("Ethernet1/1"),
              "Ethernet1/1 queuing information:\n  TX Queuing\n    qos-group  sched-type  oper-bandwidth\n"
              "\n  RX Queuing\n  Total Multicast crossbar statistics:\n"
              "    Mcast pkts received from the cross-bar\t: 0\n");
    EXPECT_EQ(status, 0);
}

TEST_F(EthernetQueuingTest, InterfacesWithoutAReportAreNotSupported) {
    const auto expect_unsupported = [&](const char *name) {
        EXPECT_EQ(show_queuing(name), "") << name;
        EXPECT_EQ(status, 1) << name;
        EXPECT_EQ(show_queuing(name, CMD_ID_UNSUPPORTED_MSG), "Unsupported interface\n") << name;
    };
    load(R"({"extends": "default", "sub_interfaces": ["Ethernet1/5.100"],
             "other_interfaces": [{"name": "mgmt0", "type": 40}]})");
    for (const char *name : {"Ethernet2/24", "Ethernet1/5.100", "Ethernet101/1/1", "mgmt0"}) expect_unsupported(name);
    load(R"({"ethernet": [{"slot": 1, "ports": 1}]})");  // no queuing section
    expect_unsupported("Ethernet1/1");
}

TEST_F(EthernetQueuingTest, FaultsReachTheUserInTheReportsWords) {
    load(R"({"extends": "default", "faults": [
        {"target": "daemon", "command": 17, "interface": "eth1/1", "kind": "recv_failure", "count": 1},
        {"target": "daemon", "command": 17, "interface": "eth1/1", "kind": "short_payload", "bytes": 100, "count": 1},
        {"target": "daemon", "command": 17, "interface": "eth1/1", "kind": "empty_payload", "count": 1},
        {"target": "daemon", "command": 17, "interface": "eth1/1", "kind": "unsupported", "count": 1},
        {"target": "daemon", "command": 22, "interface": "eth1/48", "kind": "send_failure", "count": 1}]})");
    EXPECT_EQ(show_queuing("Ethernet1/1"), "timed out waiting for the reply\n");
    EXPECT_EQ(status, qdsim::kErrTimeout);
    EXPECT_EQ(show_queuing("Ethernet1/1"), "Truncated queuing reply: 100 of 656 bytes\n");
    EXPECT_EQ(show_queuing("Ethernet1/1"), "mts payload is empty");
    EXPECT_EQ(show_queuing("Ethernet1/1"), "");
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(contains(show_queuing("Ethernet1/1"), "Ethernet1/1 queuing information:\n"));  // all spent
    // The uplink's own report is whole; its internal statistics fail.
    const std::string out = show_queuing("Ethernet1/48");
    // 57 and five ticks at 1 before the error of the NIF port's exchange.
    EXPECT_EQ(out.substr(out.find("Mcast Drops: ")), "Mcast Drops: 62\nmessage could not be sent\n");
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace simtest
