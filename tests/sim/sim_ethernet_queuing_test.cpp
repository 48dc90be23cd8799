// The queuing report of an Ethernet interface (command 17) as the library
// prints it from the switch's model: the default chassis, small scenarios,
// the clock, state changes and faults.
#include "core/errors.hpp"
#include "sim_ethernet_fixture.hpp"

namespace simtest {
namespace {

using EthernetQueuingTest = EthernetSimTest;

TEST_F(EthernetQueuingTest, AnUplinkNamedAloneShowsItsVaqBlockThenTheExtendersPorts) {
    const std::string out = show_queuing("Ethernet1/48");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out.rfind("Ethernet1/48 queuing information:\n  TX Queuing\n", 0), 0u) << out;
    EXPECT_TRUE(contains(out, "        0       WRR             50\n"
                              "        1       WRR             30\n"
                              "        2       priority         0\n"
                              "        3       WRR             20\n\n  RX Queuing\n"));
    EXPECT_TRUE(contains(out, "    q-size: 79360, q-size-40g: 158720, HW MTU: 2240 (2240 configured)\n"
                              "    drop-type: no-drop, xon: 38400, xoff: 52480\n"));
    EXPECT_TRUE(contains(out, "  Total Multicast crossbar statistics:\n"
                              "    Mcast pkts received from the cross-bar\t: 1429105\n"
                              "\n  VAQ interface info:\n"
                              "    VAQ Drop Class Buffer Size:  32768\n"
                              "\n  Total VAQ interface statistics:\n"
                              "    VAQ Uplink Interface Rx Drops   : 112\n"
                              "    Vaq Uplink Interface Err Drops  : 3\n"
                              "    Vaq Uplink Interface Mcast Drops: 57\n"
                              "\n+-------------+\n N2H direction \n"))
        << out;
    // The extender's nine ports follow, eNIF first.
    EXPECT_EQ(lines_starting(out, " eNIF ").size(), 4u);
    EXPECT_EQ(lines_starting(out, " iHIF ").size(), 3u);
    EXPECT_EQ(lines_starting(out, " iNIF ").size(), 2u);
}

TEST_F(EthernetQueuingTest, TheVaqExtrasDependOnTheCommandAndTheInterface) {
    // Enumerated, the uplink reports its queuing only.
    std::string out = show_queuing("Ethernet1/48", 0);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(contains(out, "VAQ")) << out;
    EXPECT_FALSE(contains(out, "N2H")) << out;
    // The second extender's uplink hides its buffer size.
    out = show_queuing("Ethernet2/48");
    EXPECT_FALSE(contains(out, "VAQ interface info"));
    EXPECT_TRUE(contains(out, "\n  Total VAQ interface statistics:\n    VAQ Uplink Interface Rx Drops   : 5\n"));  // 4, one tick at 1
    EXPECT_TRUE(contains(out, " port map \n"));
    // A port that leads to no extender has no VAQ block, even named alone.
    out = show_queuing("Ethernet1/1");
    EXPECT_FALSE(contains(out, "VAQ")) << out;
    EXPECT_TRUE(contains(out, "    Mcast pkts received from the cross-bar\t: 414432\n"));  // 414364, two ticks at 34
}

TEST_F(EthernetQueuingTest, DiscardFormsAndPauseStatesPerQosGroup) {
    const std::string out = show_queuing("Ethernet1/1");
    // Group 0 counts in the 16-bit form, group 3 in the 32-bit form.
    EXPECT_EQ(lines_starting(out, "        Pkts discarded on ingress"),
              (std::vector<std::string>{"        Pkts discarded on ingress\t\t: 17",
                                        "        Pkts discarded on ingress\t\t: 0",
                                        "        Pkts discarded on ingress\t\t: 0",
                                        "        Pkts discarded on ingress\t\t: 70872"}));
    EXPECT_EQ(lines_starting(out, "        Per-priority-pause status")[1],
              "        Per-priority-pause status\t\t: Rx (Active), Tx (Inactive)");
    EXPECT_EQ(lines_starting(show_queuing("Ethernet1/2"), "        Per-priority-pause status")[1],
              "        Per-priority-pause status\t\t: Rx (Inactive), Tx (Active)");
}

TEST_F(EthernetQueuingTest, TheReportFollowsChangesToTheModel) {
    std::string error;
    const std::string group = "/interfaces/Ethernet1~11/queuing/qos_groups/0";
    ASSERT_TRUE(qdsim::set_state_value(group + "/priority", "true", error)) << error;
    ASSERT_TRUE(qdsim::set_state_value(group + "/mtu_hw", "9216", error)) << error;
    // A 16-bit discard counter past its width shows its low bits; at a
    // multiple of 65536 the 32-bit form is shown.
    ASSERT_TRUE(qdsim::set_state_value(group + "/counters/ingress_discards16", "65541", error)) << error;
    ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~11/queuing/qos_groups/3/counters/ingress_discards16",
                                       "131072", error))
        << error;
    const std::string out = show_queuing("Ethernet1/1");
    EXPECT_TRUE(contains(out, "        0       priority        50\n"));
    EXPECT_TRUE(contains(out, "HW MTU: 9216 (1500 configured)\n"));
    const auto discards = lines_starting(out, "        Pkts discarded on ingress");
    ASSERT_EQ(discards.size(), 4u);
    EXPECT_EQ(discards[0], "        Pkts discarded on ingress\t\t: 5");
    EXPECT_EQ(discards[3], "        Pkts discarded on ingress\t\t: 70872");
}

TEST_F(EthernetQueuingTest, CountersGrowBetweenCommands) {
    const auto first = lines_starting(show_queuing("Ethernet1/1"), "        Pkts received over the port");
    const auto second = lines_starting(show_queuing("Ethernet1/1"), "        Pkts received over the port");
    ASSERT_EQ(first.size(), 4u);
    EXPECT_EQ(first[0], "        Pkts received over the port\t\t: 18446230");
    EXPECT_EQ(second[0], "        Pkts received over the port\t\t: 18447750");  // one tick at 1520
    EXPECT_EQ(second[3], "        Pkts received over the port\t\t: 5121384");   // one tick at 610
}

TEST_F(EthernetQueuingTest, PlatformThreeShowsTheTailDropsInFull) {
    load(R"({"extends": "default", "platform": {"type": 3}})");
    const std::string out = show_queuing("Ethernet1/1");
    EXPECT_TRUE(contains(out, "        3       WRR             20\n"
                              "    Statistics:\n"
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
        // Only the command that tells it says so.
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
    EXPECT_EQ(status, 0);
    EXPECT_EQ(show_queuing("Ethernet1/1"), "mts payload is empty");
    EXPECT_EQ(show_queuing("Ethernet1/1"), "");
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(contains(show_queuing("Ethernet1/1"), "Ethernet1/1 queuing information:\n"));  // all spent
    // The uplink's report is whole; only its internal statistics fail.
    const std::string out = show_queuing("Ethernet1/48");
    EXPECT_TRUE(contains(out, "    Vaq Uplink Interface Mcast Drops: 62\nmessage could not be sent\n")) << out;  // 57, five ticks at 1
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace simtest
