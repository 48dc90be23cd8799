// SPDX-License-Identifier: MIT
// The Ethernet part of the switch-wide report, rendered by the library from
// the daemon's stream of small switches.
#include "sim_stream_fixture.hpp"

namespace simtest {
namespace {

// Ethernet1/1 lists its qos-groups out of order, one with a rate; Ethernet1/2
// has no queuing report; Ethernet1/3 (type 1) has one without qos-groups;
// Ethernet1/4 has no queuing section; the sub-interface is not the daemon's
// to report; no host interface is shown.
const char *kEthernetSwitch = R"({
  "platform": {"type": 2},
  "ethernet": [{"slot": 1, "ports": "1-2"}, {"slot": 1, "ports": 3, "type": 1}, {"slot": 1, "ports": 4}],
  "sub_interfaces": ["Ethernet1/1.5"],
  "switch_report": {"host_interface": null},
  "interfaces": {
    "Ethernet1/1": {"queuing": {
      "counters": {"mcast_tail_drops": 77},
      "qos_groups": [
        {"qos_group": 1, "priority": true, "no_drop": true, "bandwidth": 30, "mtu": 2240, "mtu_hw": 2304,
         "xon": 100, "xoff": 200, "q_size": 1000, "q_size_40g": 4000, "pfc_rx_active": true, "pfc_tx_active": false,
         "counters": {"rx_port_pkts": 11, "ucast_to_xbar": 12, "mcast_to_xbar": 13, "ucast_from_xbar": 14,
                      "tx_port_pkts": 15, "ingress_discards16": 0, "ingress_discards32": 16, "mcast_from_xbar": 99}},
        {"qos_group": 0, "priority": false, "no_drop": false, "bandwidth": 70,
         "xon": 0, "xoff": 0, "q_size": 500, "q_size_40g": 2000, "pfc_rx_active": false, "pfc_tx_active": true,
         "counters": {"rx_port_pkts": 100, "ucast_to_xbar": 21, "mcast_to_xbar": 22, "ucast_from_xbar": 23,
                      "tx_port_pkts": 4294967301, "ingress_discards16": 3, "ingress_discards32": 40, "mcast_from_xbar": 8},
         "rates": {"counters": {"rx_port_pkts": 50}}}
      ]}},
    "Ethernet1/2": {"queuing": {"supported": false}},
    "Ethernet1/3": {"queuing": {}}
  }
})";

using EthernetStreamTest = StreamTest;

const std::string kType1Interface = "Ethernet1/3 queuing information:\n"
                                    "  Total Multicast crossbar statistics:\n"
                                    "    Mcast pkts received from the cross-bar\t: 0\n";

const std::string kTransmit = "Ethernet1/1 queuing information:\n"
                              "  TX Queuing\n"
                              "    qos-group  sched-type  oper-bandwidth\n"
                              "        0       WRR             70\n"
                              "        1       priority        30\n";

const std::string kReceive = "\n  RX Queuing\n"
                             "    qos-group 0\n"
                             "    q-size: 500, q-size-40g: 2000, HW MTU: 1500 (1500 configured)\n"
                             "    drop-type: drop, xon: 0, xoff: 0\n"
                             "    Statistics:\n"
                             "        Pkts received over the port\t\t: 100\n"
                             "        Ucast pkts sent to the cross-bar\t: 21\n"
                             "        Mcast pkts sent to the cross-bar\t: 22\n"
                             "        Ucast pkts received from the cross-bar\t: 23\n"
                             "        Pkts sent to the port\t\t\t: 5\n"
                             "        Pkts discarded on ingress\t\t: 3\n"
                             "        Per-priority-pause status\t\t: Rx (Inactive), Tx (Active)\n"
                             "\n"
                             "    qos-group 1\n"
                             "    q-size: 1000, q-size-40g: 4000, HW MTU: 2304 (2240 configured)\n"
                             "    drop-type: no-drop, xon: 100, xoff: 200\n"
                             "    Statistics:\n"
                             "        Pkts received over the port\t\t: 11\n"
                             "        Ucast pkts sent to the cross-bar\t: 12\n"
                             "        Mcast pkts sent to the cross-bar\t: 13\n"
                             "        Ucast pkts received from the cross-bar\t: 14\n"
                             "        Pkts sent to the port\t\t\t: 15\n"
                             "        Pkts discarded on ingress\t\t: 16\n"
                             "        Per-priority-pause status\t\t: Rx (Active), Tx (Inactive)\n"
                             "\n";

// The layout of the Ethernet report: groups in ascending order under their
// headings, the port's cross-bar total from the first group written, MTUs
// of 1500 where none is given, the 32-bit counters' low words, the 16-bit
// discard count when it is set; interfaces in ascending index order (type 1
// before type 26), those without a queuing report and the sub-interface
// left out.
TEST_F(EthernetStreamTest, EachInterfaceInTheLayoutOfTheEthernetReport) {
    load(kEthernetSwitch);
    EXPECT_EQ(show_switch(), kType1Interface + kTransmit + kReceive +
                                 "  Total Multicast crossbar statistics:\n"
                                 "    Mcast pkts received from the cross-bar\t: 99\n");
}

// Platform type 3: the egress ASIC's tail drops after the transmit table,
// no cross-bar total (whole text in the end-to-end case).
TEST_F(EthernetStreamTest, PlatformType3ShowsTheTailDropsInsteadOfTheCrossbarTotal) {
    load(kEthernetSwitch);
    set("/platform/type", "3");
    const std::string text = show_switch();
    EXPECT_NE(text.find(kTransmit + "    Statistics:\n        Mcast pkts tail dropped on this egress asic\t: 77 \n" +
                        kReceive),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("Total Multicast"), std::string::npos);
}

TEST_F(EthernetStreamTest, CountersGrowBetweenCommandsAndChangesShowAtOnce) {
    load(kEthernetSwitch);
    EXPECT_NE(show_switch().find("Pkts received over the port\t\t: 100\n"), std::string::npos);
    next_command();
    qdsim::advance_clock(2);
    EXPECT_NE(show_switch().find("Pkts received over the port\t\t: 250\n"), std::string::npos);

    set("/interfaces/Ethernet1~12/queuing/supported", "true");
    set("/interfaces/Ethernet1~11/queuing/qos_groups/1/priority", "true");
    const std::string text = show_switch();
    EXPECT_NE(text.find("        0       priority        70\n"), std::string::npos) << text;
    EXPECT_NE(text.find(kTransmit.substr(0, kTransmit.find('\n') + 1)), std::string::npos);
    EXPECT_NE(text.find("Ethernet1/2 queuing information:\n  Total Multicast"), std::string::npos) << text;
}

}  // namespace
}  // namespace simtest
