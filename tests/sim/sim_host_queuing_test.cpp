// SPDX-License-Identifier: MIT
// The host-interface queuing reports of the library, run against the
// extenders' agents: what the user sees of a host interface's hif_queuing
// data, its faults, and its counters over time.
#include <nlohmann/json.hpp>

#include "qdcli/handlers.h"
#include "sim_fixture.hpp"
#include "support/capture_stdout.hpp"

namespace simtest {
namespace {

// Extender 101 in slot 33 with three host interfaces: one with data, one
// that does not support the request, one without data.
const char *const kSwitch = R"({
  "ethernet": [{"slot": 1, "ports": "1-2"}],
  "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/1", "ports": "1-3"}],
  "interfaces": {
    "Ethernet101/1/1": {
      "qos_counters": {"tx_queue_drops": 8589934595, "rates": {"tx_queue_drops": 5}},
      "hif_queuing": {
        "stats_format": 0,
        "input_buffers": [
          {"no_drop": true, "qos_groups": [1, 3], "unsupported_qos_groups": [6], "cos": [3], "xon": 100, "xoff": 200, "buffer_size": 3000},
          {"frh": 2, "ctrl": true, "qos_groups": [0], "cos": [0, 7], "buffer_size": 40},
          {"frh": 1, "qos_groups": [2], "cos": [1]}
        ],
        "queues": [
          {"queue_id": 1, "cos": [6], "priority": true, "ctrl": true, "mtu": 2240},
          {"queue_id": 3, "qos_groups": [1, 3], "unsupported_qos_groups": [6], "cos": [3, 4], "bandwidth": 60, "mtu": 9216},
          {"queue_id": 9, "qos_groups": [0], "cos": [0, 1, 2], "bandwidth": 40, "mtu": 1500}
        ],
        "queue_stats": [
          {"queue_id": 3, "counters": {"rx": 4294967301, "tx": 7, "tail_drop_rx": 11, "tail_drop_tx": 12,
                                       "no_buffer_rx": 13, "no_buffer_tx": 14, "mac_error_rx": 15, "mac_error_tx": 16,
                                       "mcast_tail_drop": 17},
           "rates": {"counters": {"rx": 10, "tx": 4}}},
          {"queue_id": 9, "queue_num": 7, "ctrl": true, "counters": {"rx": 12345, "tx": 54321}}
        ],
        "counters": {"rx_drop": 21, "rx_mcast_drop": 22, "rx_error": 23, "tx_drop": 24},
        "mux_ovflow_ports": 8,
        "pfc_enabled": true, "pfc_rx_mask": 12, "cos_qos_group": [1, 0, 0, 10], "pause_rx": 260, "pause_tx": 8,
        "buffer_threshold": 0, "queue_limit": 65536
      }
    },
    "Ethernet101/1/2": {"hif_queuing": {"supported": false}}
  }
})";

class HostQueuingTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        load(kSwitch);
    }
    void load(const std::string &scenario) {
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(scenario, "hosts.json", e)) << e.message();
    }
    // The same switch with a change to Ethernet101/1/1's section.
    void load_with(const std::string &hif_queuing_override) {
        nlohmann::json doc = nlohmann::json::parse(kSwitch);
        doc["interfaces"]["Ethernet101/1/1"]["hif_queuing"].merge_patch(nlohmann::json::parse(hif_queuing_override));
        load(doc.dump());
    }
    void load_with_faults(const std::string &faults) {
        nlohmann::json doc = nlohmann::json::parse(kSwitch);
        doc["faults"] = nlohmann::json::parse(faults);
        load(doc.dump());
    }

    // Runs one command, as the shell would, and ends it (the clock ticks).
    std::string text(const std::string &name, bool detailed = false) {
        return testsupport::capture_stdout([&] { run(qd_cli_show_queuing_hif, name, detailed); });
    }
    std::string typed(const std::string &name, bool detailed = false) {
        output.clear();
        run(qd_cli_show_queuing_hif_xmlized, name, detailed);
        return output;
    }

private:
    void run(std::int32_t (*handler)(cmd_paraminfo *, std::uint32_t, const char *), const std::string &name,
             bool detailed) {
        cmd_paraminfo pinfo{};
        pinfo.mts_handle = handle;
        pinfo.cmd_id = detailed ? CMD_ID_SHOW_QUEUING_IF : 0;
        EXPECT_EQ(handler(&pinfo, *qdsim::find_interface(name), name.c_str()), 0);
        EXPECT_EQ(qdsim::check_ledger(handle), std::vector<std::string>{});
        qdsim::close_command(handle);
        handle = qdsim::open_command();
    }
};

TEST_F(HostQueuingTest, DetailedReportInFormatZero) {
    EXPECT_EQ(text("Ethernet101/1/1", true),
              "if_slot 33, ifidx 0x1f650000\n"
              "Ethernet101/1/1 queuing information:\n"
              "  Input buffer allocation:\n"
              "  Qos-group: 1  3  6  (shared)\n"
              "  frh: 0\n"
              "  drop-type: no-drop\n"
              "  cos: 3\n"
              "  xon       xoff      buffer-size\n"
              "  ---------+---------+-----------\n"
              "  100       200       3000     \n"
              "\n"
              "  Qos-group: 0 \n"
              "  frh: 2\n"
              "  drop-type: drop\n"
              "  cos: 0 7\n"
              "  xon       xoff      buffer-size\n"
              "  ---------+---------+-----------\n"
              "  0         0         40       \n"
              "\n"
              "* qos-group 6  unsupported, merged with other qos-group\n"
              "\n"
              "  Queueing:\n"
              "  queue    qos-group    cos            priority  bandwidth mtu \n"
              "  --------+------------+--------------+---------+---------+----\n"
              "  ctrl-lo  n/a          6               PRI         0      2240\n"
              "  3        1 3 6        3 4             WRR        60      9216\n"
              "  9        0            0 1 2           WRR        40      1500\n"
              "\n"
              "  * qos-group 6  unsupported, merged with other qos-group\n"
              "\n"
              "  Buffer threshold: 0 bytes\n"
              "  Queue limit: 65536 bytes\n"
              "\n"
              "  Queue Statistics:\n"
              "  queue  rx               flags\n"
              "  ------+---------------+-----\n"
              "  1      0                ctrl\n"
              "  3      4294967301       data\n"
              "  7      12345            ctrl\n"
              "\n"
              "  Port Statistics:\n"
              "  tx queue drop   mux ovflow \n"
              "  ---------------+-----------\n"
              "  8589934595        Active (Port 3)\n"
              "\n"
              "  Priority-flow-control enabled: yes\n"
              "  Flow-control status: rx 0xff, tx 0x8, rx_mask 0xc\n"
              "  cos     qos-group   rx pause  tx pause  masked rx pause\n"
              "  -------+-----------+---------+---------+---------------\n"
              "  0              0    xoff      xon       xon \n"
              "  1            n/a    xoff      xon       xon \n"
              "  2            n/a    xoff      xon       xoff\n"
              "  3              1    xoff      xoff      xoff\n"
              "  4            n/a    xoff      xon       xon \n"
              "  5            n/a    xoff      xon       xon \n"
              "  6            n/a    xoff      xon       xon \n"
              "  7            n/a    xoff      xon       xon \n");
}

// Not detailed: unsupported groups and control queues are left out, and a
// statistics row follows the control flag of its own record (queue 9's).
TEST_F(HostQueuingTest, SummaryLeavesOutWhatIsDetail) {
    const std::string out = text("Ethernet101/1/1");
    EXPECT_NE(out.find("  Qos-group: 1  3  (shared)\n"), std::string::npos) << out;
    EXPECT_NE(out.find("\n* qos-group 6  unsupported\n"), std::string::npos);
    EXPECT_EQ(out.find("ctrl-lo"), std::string::npos);
    EXPECT_NE(out.find("  9        0            0 1 2"), std::string::npos);
    EXPECT_NE(out.find("  ------+---------------      \n  3      4294967301     \n\n"), std::string::npos) << out;
    EXPECT_NE(out.find("  Flow-control status: \n"), std::string::npos);
}

// Format 4: both limits and the receive and transmit rows, the drop pairs in
// their places, no port statistics. Format 2: the rx/tx table and the port
// counters. A control input buffer shows as such in these formats.
TEST_F(HostQueuingTest, TheOtherStatisticsFormats) {
    load_with(R"({"stats_format": 4, "queue_limit": null, "queue_limit_rx": 4096})");
    std::string out = text("Ethernet101/1/1", true);
    EXPECT_NE(out.find("  Qos-group: ctrl\n  frh: 2\n"), std::string::npos) << out;
    EXPECT_NE(out.find("  Queue Limit Tx: Disabled\n  Queue Limit Rx: 4096 bytes\n"), std::string::npos);
    EXPECT_NE(out.find("  3rx|      4294967301|         11|          13|        15|     -     | data|\n"
                       "  3tx|               7|         12|          14|        16|         17|     |\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(out.find("Port Statistics"), std::string::npos);

    load_with(R"({"stats_format": 2})");
    out = text("Ethernet101/1/1");
    EXPECT_EQ(out.find("Qos-group: ctrl"), std::string::npos);
    EXPECT_NE(out.find("  3      4294967301      7              \n"), std::string::npos) << out;
    EXPECT_NE(out.find("  21              22              23              24                 Active\n"),
              std::string::npos)
        << out;
}

TEST_F(HostQueuingTest, RefusalsAndFaultsAreTold) {
    load_with_faults(R"([
        {"target": "agent", "command": 16, "interface": "Ethernet101/1/1", "kind": "recv_failure", "count": 1},
        {"target": "agent", "command": 16, "interface": "Ethernet101/1/1", "kind": "short_payload", "bytes": 600, "count": 1},
        {"target": "agent", "command": 16, "interface": "Ethernet101/1/1", "kind": "empty_payload", "count": 1}])");
    const std::string head = "if_slot 33, ifidx 0x1f650000\n";
    EXPECT_EQ(text("Ethernet101/1/1"), head + "Cmd recv failed for Ethernet101/1/1 with error code timed out waiting for the reply\n");
    const std::string truncated = typed("Ethernet101/1/1");
    EXPECT_EQ(truncated.substr(truncated.find('\n') + 1), "Reply for Ethernet101/1/1 truncated: 600 of 1140 bytes\n");
    EXPECT_EQ(text("Ethernet101/1/1"), head + "mts payload is empty");
    EXPECT_NE(text("Ethernet101/1/1").find("queuing information"), std::string::npos);  // faults spent

    EXPECT_EQ(text("Ethernet101/1/2"), "if_slot 33, ifidx 0x1f650100\n"
                                       "Cmd not supported for Ethernet101/1/2, error code operation not supported\n");
    EXPECT_NE(typed("Ethernet101/1/3").find("Cmd not supported for Ethernet101/1/3"), std::string::npos);
    EXPECT_NE(text("Ethernet1/2").find("Cmd not supported for Ethernet1/2"), std::string::npos);
}

// Counters grow with the clock between commands; the model is what the
// report shows, and a QoS clear zeroes the section's counters.
TEST_F(HostQueuingTest, CountersGrowBetweenCommandsAndClear) {
    EXPECT_NE(text("Ethernet101/1/1").find("  3      4294967301     \n"), std::string::npos);
    EXPECT_NE(text("Ethernet101/1/1").find("  3      4294967311     \n"), std::string::npos);
    const std::string third = text("Ethernet101/1/1");
    EXPECT_NE(third.find("  3      4294967321     \n"), std::string::npos) << third;
    EXPECT_NE(third.find("  8589934605        Active (Port 3)"), std::string::npos) << third;

    const std::uint32_t hif = *qdsim::find_interface("Ethernet101/1/1");
    ASSERT_EQ(statscl_clear_qos_counters(0, hif, 0, nullptr), 0);
    std::string value, error;
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet101~11~11/hif_queuing/queue_stats/0/counters/rx", value, error));
    EXPECT_EQ(value, "0");
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet101~11~11/hif_queuing/counters/tx_drop", value, error));
    EXPECT_EQ(value, "0");
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet101~11~11/hif_queuing/queue_limit", value, error));
    EXPECT_EQ(value, "65536");
    EXPECT_NE(text("Ethernet101/1/1").find("  3      0              \n"), std::string::npos);

    ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet101~11~11/hif_queuing/pfc_enabled", "false", error)) << error;
    EXPECT_NE(text("Ethernet101/1/1").find("Priority-flow-control enabled: no\n"), std::string::npos);
}

}  // namespace
}  // namespace simtest
