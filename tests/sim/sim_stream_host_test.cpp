// SPDX-License-Identifier: MIT
// The host-interface part of the switch-wide report: which host interface
// the daemon's stream describes, its layout under the report's headings,
// and attribute 58, which runs the host-interface report.
#include <algorithm>

#include <nlohmann/json.hpp>

#include "sim_stream_fixture.hpp"

namespace simtest {
namespace {

// Ethernet1/1 has no queuing report, so the stream holds the host part only.
// Ethernet101/1/1 has no host-interface queuing report either, 101/1/3 an
// empty one; Ethernet101/1/2
// has control buffers and queues, a shared buffer, unsupported and missing
// qos-groups, a queue without cos and one without statistics.
const char *kHostSwitch = R"({
  "ethernet": [{"slot": 1, "ports": 1}],
  "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/1", "ports": "1-3"}],
  "interfaces": {
    "Ethernet1/1": {"queuing": {"supported": false}},
    "Ethernet101/1/1": {"hif_queuing": {"supported": false}},
    "Ethernet101/1/3": {"hif_queuing": {"stats_format": 2}},
    "Ethernet101/1/2": {"hif_queuing": {
      "supported": true, "stats_format": 1,
      "input_buffers": [
        {"frh": 0, "no_drop": false, "qos_groups": [3, 0], "unsupported_qos_groups": [], "ctrl": false,
         "cos": [2, 0, 1], "xon": 10, "xoff": 20, "buffer_size": 3000},
        {"frh": 1, "no_drop": false, "qos_groups": [4], "unsupported_qos_groups": [], "ctrl": false,
         "cos": [3], "xon": 0, "xoff": 0, "buffer_size": 0},
        {"frh": 2, "no_drop": true, "qos_groups": [7], "unsupported_qos_groups": [], "ctrl": true,
         "cos": [7], "xon": 0, "xoff": 0, "buffer_size": 0},
        {"frh": 3, "no_drop": true, "qos_groups": [1], "unsupported_qos_groups": [5], "ctrl": false,
         "cos": [3, 4], "xon": 1, "xoff": 2, "buffer_size": 4}
      ],
      "queues": [
        {"queue_id": 0, "qos_groups": [7], "unsupported_qos_groups": [], "cos": [7], "priority": true,
         "bandwidth": 0, "ctrl": false, "mtu": 2240},
        {"queue_id": 9, "qos_groups": [6], "unsupported_qos_groups": [], "cos": [6], "priority": false,
         "bandwidth": 0, "ctrl": true, "mtu": 1500},
        {"queue_id": 2, "qos_groups": [0, 3], "unsupported_qos_groups": [], "cos": [0, 1, 2], "priority": false,
         "bandwidth": 60, "ctrl": false, "mtu": 1500},
        {"queue_id": 3, "qos_groups": [], "unsupported_qos_groups": [5], "cos": [], "priority": true,
         "bandwidth": 40, "ctrl": false, "mtu": 9216}
      ],
      "queue_stats": [
        {"queue_id": 2, "queue_num": 2, "ctrl": false, "counters": {"rx": 1000, "tx": 2000, "tail_drop_tx": 1,
         "tail_drop_rx": 2, "no_buffer_tx": 3, "no_buffer_rx": 4, "mac_error_tx": 5, "mac_error_rx": 6,
         "mcast_tail_drop": 7}, "rates": {"counters": {"rx": 10}}},
        {"queue_id": 9, "queue_num": 9, "ctrl": true, "counters": {"rx": 5, "tx": 6}},
        {"queue_id": 0, "queue_num": 0, "ctrl": false, "counters": {"rx": 7, "tx": 8}}
      ],
      "counters": {"rx_drop": 1, "rx_mcast_drop": 2, "rx_error": 3, "tx_drop": 4},
      "mux_ovflow_flags": 0, "mux_ovflow_ports": 8,
      "pfc_enabled": true, "pfc_rx_mask": 9, "cos_qos_group": [1, 1, 0, 8, 8, 12, 0], "pause_rx": 1, "pause_tx": 256,
      "buffer_threshold": 65536, "queue_limit": null, "queue_limit_rx": 4096
    }}
  }
})";

using HostStreamTest = StreamTest;

const std::string kHeading = "if_slot 33, ifidx 0x1f650100\n"
                             "Ethernet101/1/2 queuing information:\n"
                             "  Input buffer allocation:\n"
                             "  Qos-group: 0  3  (shared)\n"
                             "  frh: 0\n"
                             "  drop-type: drop\n"
                             "  cos: 0 1 2\n"
                             "  xon       xoff      buffer-size\n"
                             "  ---------+---------+-----------\n"
                             "  10        20        3000     \n";

const std::string kLastBuffer = "\n"
                                "  Qos-group: 1 \n"
                                "  frh: 3\n"
                                "  drop-type: no-drop\n"
                                "  cos: 3 4\n"
                                "  xon       xoff      buffer-size\n"
                                "  ---------+---------+-----------\n"
                                "  1         2         4        \n";

const std::string kQueueing = "\n"
                              "  Queueing:\n"
                              "  queue    qos-group    cos            priority  bandwidth mtu \n"
                              "  --------+------------+--------------+---------+---------+----\n"
                              "  ctrl-hi  n/a          7               PRI         0      2240\n"
                              "  2        0 3          0 1 2           WRR        60      1500\n"
                              "  3        n/a                          PRI        40      9216\n"
                              "\n"
                              "  Buffer threshold: 65536 bytes";

const std::string kFlowControl = "\n"
                                 "  Priority-flow-control enabled: yes\n"
                                 "  Flow-control status: \n"
                                 "  cos     qos-group   rx pause  tx pause  masked rx pause\n"
                                 "  -------+-----------+---------+---------+---------------\n"
                                 "  0              0    xoff      xoff      xoff\n"
                                 "  1              0    xon       xoff      xon \n"
                                 "  2            n/a    xon       xoff      xon \n"
                                 "  3              3    xon       xoff      xon \n"
                                 "  4              3    xon       xoff      xon \n"
                                 "  5              2    xon       xoff      xon \n"
                                 "  6            n/a    xon       xoff      xon \n"
                                 "  7            n/a    xon       xoff      xon \n";

// The lines of `text` from the one that starts with `first` up to, not
// including, the first empty line after it.
std::vector<std::string> table(const std::string &text, const std::string &first) {
    std::vector<std::string> lines;
    std::size_t at = text.find("\n" + first);
    if (at == std::string::npos) return lines;
    for (++at; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        const std::string line = text.substr(at, end - at);
        if (line.empty()) break;
        lines.push_back(line);
        if (end == std::string::npos) break;
        at = end + 1;
    }
    return lines;
}

// Format 1: the two-column statistics and the five-column port statistics.
// Left out as in the report of an interface not named on the command line:
// the buffer with frh 1, the control buffer, the control queue, the
// statistics row of the control queue, and unsupported qos-group 5 (queue 3
// has no other, so "n/a"); a queue without cos leaves the cos column blank.
TEST_F(HostStreamTest, TheHostInterfaceInTheLayoutOfTheHostInterfaceReport) {
    load(kHostSwitch);
    const std::string text = show_switch();
    EXPECT_EQ(text, kHeading + kLastBuffer + kQueueing +
                        "\n  Queue limit: Disabled\n"
                        "\n"
                        "  Queue Statistics:\n"
                        "  queue  rx              tx                   \n"
                        "  ------+---------------+---------------      \n"
                        "  0      7               8              \n"
                        "  2      1000            2000           \n"
                        "  3      0               0              \n"
                        "\n"
                        "  Port Statistics:\n"
                        "  rx drop         rx mcast drop   rx error        tx drop         mux ovflow    \n"
                        "  ---------------+---------------+---------------+---------------+--------------\n"
                        "  1               2               3               4                  Active\n" +
                        kFlowControl);
}

// Format 4 (whole text in the switch-report end-to-end case): transmit and
// receive limits, the six-column table whose cell borders fall on the rule's
// crossings (the control queue's row left out), and no port statistics.
// Format 0 shows the control buffer like any other.
TEST_F(HostStreamTest, TheStatsFormatChoosesTheLimitsAndTheTable) {
    load(kHostSwitch);
    set("/interfaces/Ethernet101~11~12/hif_queuing/stats_format", "4");
    std::string text = show_switch();
    EXPECT_NE(text.find(kQueueing + "\n  Queue Limit Tx: Disabled\n  Queue Limit Rx: 4096 bytes\n"), std::string::npos);
    EXPECT_EQ(text.find("Port Statistics"), std::string::npos);
    const std::string rule = "  ---+----------------+-----------+------------+----------+-----------+";
    const std::vector<std::string> rows = table(text, rule);
    ASSERT_EQ(rows.size(), 13u);  // four lines of heading; per queue two rows and a rule
    EXPECT_EQ(rows[4], "  0rx|               7|          0|           0|         0|     -     |");
    for (const std::string &row : rows) {
        ASSERT_EQ(row.size(), rule.size()) << row;
        for (std::size_t i = 0; i < row.size(); ++i)
            EXPECT_EQ(row[i] == '|' || row[i] == '+', rule[i] == '+') << i << " in \"" << row << "\"";
    }

    set("/interfaces/Ethernet101~11~12/hif_queuing/stats_format", "0");
    text = show_switch();
    EXPECT_NE(text.find("\n  Qos-group: 7 \n  frh: 2\n  drop-type: no-drop\n  cos: 7\n"), std::string::npos) << text;
}

TEST_F(HostStreamTest, TheModelChoosesTheHostInterfaceAndTheFullReport) {
    load(kHostSwitch);
    // Without a choice: the first host interface with a queuing report.
    std::string text = show_switch();
    EXPECT_EQ(occurrences(text, "if_slot "), 1u);
    EXPECT_EQ(text.rfind("if_slot 33, ifidx 0x1f650100\nEthernet101/1/2 queuing information:\n", 0), 0u);

    // Attribute 58 runs the host-interface report after the stream's tables.
    set("/switch_report", R"({"full_report": true})");
    text = show_switch();
    EXPECT_EQ(occurrences(text, "if_slot 33, ifidx 0x1f650100\n"), 2u);
    const std::size_t nested = text.find(kFlowControl);
    ASSERT_NE(nested, std::string::npos);
    EXPECT_EQ(text.substr(nested + kFlowControl.size()).rfind("if_slot 33, ifidx 0x1f650100\n", 0), 0u) << text;

    // Any spelling of a host interface; null for none; an interface without
    // a queuing report gives no host part.
    set("/switch_report", R"({"host_interface": "e101/1/3"})");
    text = show_switch();
    EXPECT_EQ(text.rfind("if_slot 33, ifidx 0x1f650200\nEthernet101/1/3 queuing information:\n", 0), 0u) << text;
    EXPECT_EQ(occurrences(text, "if_slot "), 1u);
    set("/switch_report", R"({"host_interface": null, "full_report": true})");
    EXPECT_EQ(show_switch(), "");
    set("/switch_report", R"({"host_interface": "Ethernet101/1/1"})");
    EXPECT_EQ(show_switch(), "");
}

TEST_F(HostStreamTest, TheSwitchReportSectionIsChecked) {
    const struct {
        const char *section;
        const char *reason;
    } cases[] = {
        {R"({"host_interface": "Ethernet1/1"})", "at /switch_report/host_interface: no host interface named \"Ethernet1/1\""},
        {R"({"host_interface": "Ethernet101/1/4"})", "no host interface named \"Ethernet101/1/4\""},
        {R"({"host_interface": 5})", "at /switch_report/host_interface: expected the name of a host interface, or null"},
        {R"({"full_report": "yes"})", "at /switch_report/full_report: expected true or false"},
        {R"({"host": "Ethernet101/1/1"})", "unknown member \"host\""},
    };
    const std::string base = kHostSwitch;
    for (const auto &c : cases) {
        const std::string text = base.substr(0, base.rfind('}')) + R"(, "switch_report": )" + c.section + "}";
        qdsim::ScenarioError e;
        EXPECT_FALSE(qdsim::load_scenario_text(text, "stream.json", e)) << c.section;
        EXPECT_NE(e.message().find(c.reason), std::string::npos) << e.message();
    }
    // A state whose named interface has gone is refused, and the switch
    // stays as it was.
    load(kHostSwitch);
    set("/switch_report", R"({"host_interface": "Ethernet101/1/3"})");
    auto state = nlohmann::json::parse(qdsim::dump_state_json());
    state["extenders"][0]["ports"] = "1-2";
    state["interfaces"].erase("Ethernet101/1/3");
    qdsim::ScenarioError e;
    EXPECT_FALSE(qdsim::load_scenario_text(state.dump(), "state.json", e));
    EXPECT_NE(e.message().find("no host interface named \"Ethernet101/1/3\""), std::string::npos) << e.message();
    EXPECT_NE(show_switch().find("Ethernet101/1/3 queuing information:"), std::string::npos);
}

// The default switch: its Ethernet interfaces with a queuing report in
// ascending order, then the host interface the default names, with its full
// report; nothing the renderer does not know.
TEST_F(HostStreamTest, TheDefaultSwitch) {
    load(R"({"extends": "default", "defaults": {"host": {"hif_queuing": {}}},
             "interfaces": {"Ethernet1/1": {"queuing": {}}, "Ethernet2/48": {"queuing": {}}}})");
    const std::string text = show_switch();
    std::vector<std::uint32_t> indexes;
    for (std::size_t at = text.find(" queuing information:\n"); at != std::string::npos;
         at = text.find(" queuing information:\n", at + 1)) {
        const std::size_t start = text.rfind('\n', at) + 1;
        indexes.push_back(*qdsim::find_interface(text.substr(start, at - start)));
        if (indexes.back() >> 24 == IF_TYPE_HIF) break;  // the rest is its full report
    }
    ASSERT_GE(indexes.size(), 3u);
    EXPECT_EQ(indexes.front(), *qdsim::find_interface("Ethernet1/1"));
    EXPECT_EQ(indexes[indexes.size() - 2], *qdsim::find_interface("Ethernet2/48"));
    EXPECT_TRUE(std::is_sorted(indexes.begin(), indexes.end() - 1));
    EXPECT_EQ(indexes.back(), *qdsim::find_interface("Ethernet101/1/1"));
    EXPECT_EQ(occurrences(text, "if_slot 33, ifidx 0x1f650000\n"), 2u);
    EXPECT_EQ(text.find(" attr 0x"), std::string::npos);
}

}  // namespace
}  // namespace simtest
