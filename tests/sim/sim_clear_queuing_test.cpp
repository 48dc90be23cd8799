// SPDX-License-Identifier: MIT
// The clear-queuing handlers of the library against the switch: what each
// clears in the model (daemon queuing counters, host QoS counters, pause
// counters), what it leaves, and that cleared counters count again.
#include <cstdio>

#include "core/errors.hpp"
#include "model/model.hpp"
#include "qdcli/handlers.h"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

// Counters on every Ethernet and host interface, laid out as the sections'
// services keep them; received packets and host drops grow by 10 a tick.
constexpr char kCountingSwitch[] = R"({"extends": "default",
  "platform": {"vdc": %u},
  "defaults": {
    "ethernet": {
      "queuing": {"counters": {"mcast_tail_drops": 5},
                  "qos_groups": [{"qos_group": 0, "bandwidth": 50, "counters": {"rx_port_pkts": 100, "tx_port_pkts": 90}}]},
      "extended": {"counters": {"pass": [[1, 1, 1, 1, 1, 1, 1, 1], [2, 2, 2, 2, 2, 2, 2, 2], [3, 3, 3, 3, 3, 3, 3, 3]],
                                "drop": [[4, 4, 4, 4, 4, 4, 4, 4], [5, 5, 5, 5, 5, 5, 5, 5], [6, 6, 6, 6, 6, 6, 6, 6]]}},
      "rates": {"queuing": {"qos_groups": {"counters": {"rx_port_pkts": 10}}}}
    },
    "host": {
      "hif_queuing": {"pfc_enabled": true, "counters": {"rx_drop": 7, "tx_drop": 3},
                      "queue_stats": [{"queue_id": 2, "queue_num": 2, "counters": {"rx": 40, "tx": 30}}]},
      "rates": {"hif_queuing": {"counters": {"rx_drop": 10}}}
    }
  },
  "faults": %s
})";

class ClearQueuingTest : public SimTest {
protected:
    void load(unsigned vdc = 1, const char *faults = "[]") {
        char text[sizeof kCountingSwitch + 512];
        std::snprintf(text, sizeof text, kCountingSwitch, vdc, faults);
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(text, "counting.json", e)) << e.message();
    }

    // The value at a pointer below an interface, -1 when there is none.
    static std::int64_t at(const std::string &name, const std::string &pointer) {
        const qdsim::Interface *i = qdsim::current_model().find_interface(name);
        const qdsim::Json *v = i ? qdsim::find(*i->data, pointer) : nullptr;
        return v && v->is_number() ? v->get<std::int64_t>() : -1;
    }
    static std::int64_t rx(const std::string &name) { return at(name, "/queuing/qos_groups/0/counters/rx_port_pkts"); }
    static std::int64_t pause(const std::string &name) { return at(name, "/pause/counters/events"); }
    static std::int64_t host_drops(const std::string &name) { return at(name, "/hif_queuing/counters/rx_drop"); }

    std::int32_t clear_all(std::string &out) {
        cmd_paraminfo pinfo{};
        pinfo.mts_handle = handle;
        testing::internal::CaptureStdout();
        const std::int32_t rc = qd_cli_clear_queuing_all(&pinfo);
        out = testing::internal::GetCapturedStdout();
        return rc;
    }

    std::int32_t clear_one(const std::string &name, std::string &out) {
        std::uint32_t if_index = *qdsim::find_interface(name);
        cmd_param_arg arg{};
        arg.param_id = PARAM_ID_IF_INDEX;
        arg.value = &if_index;
        cmd_paraminfo pinfo{};
        pinfo.mts_handle = handle;
        pinfo.argc = 1;
        pinfo.args[1] = &arg;
        testing::internal::CaptureStdout();
        const std::int32_t rc = qd_cli_clear_queuing_interface(&pinfo);
        out = testing::internal::GetCapturedStdout();
        return rc;
    }
};

TEST_F(ClearQueuingTest, ClearAllZeroesEveryCounterKeepsConfigurationAndCountsAgain) {
    load();
    std::string out;
    ASSERT_EQ(clear_all(out), 0);
    EXPECT_EQ(out, "");
    for (const char *name : {"Ethernet1/1", "Ethernet2/48"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(rx(name), 0);
        EXPECT_EQ(at(name, "/queuing/counters/mcast_tail_drops"), 0);
        EXPECT_EQ(at(name, "/queuing/qos_groups/0/bandwidth"), 50);
        EXPECT_EQ(at(name, "/extended/counters/pass/2/7"), 0);
        EXPECT_EQ(at(name, "/extended/counters/drop/0/0"), 0);
    }
    EXPECT_EQ(pause("Ethernet1/1"), 0);
    EXPECT_EQ(pause("Ethernet2/3"), 0);
    EXPECT_EQ(host_drops("Ethernet102/1/48"), 0);
    EXPECT_EQ(at("Ethernet102/1/48", "/hif_queuing/queue_stats/0/counters/tx"), 0);
    EXPECT_EQ(at("Ethernet102/1/48", "/hif_queuing/queue_stats/0/queue_num"), 2);
    EXPECT_EQ(at("Ethernet101/1/1", "/qos_counters/tx_queue_drops"), 0);

    finish();  // the clearing command does not advance the clock
    EXPECT_EQ(rx("Ethernet2/48"), 0);
    EXPECT_EQ(host_drops("Ethernet101/1/7"), 0);
    handle = qdsim::open_command();
    finish();  // the next one does
    EXPECT_EQ(rx("Ethernet2/48"), 10);
    EXPECT_EQ(at("Ethernet2/48", "/queuing/qos_groups/0/counters/tx_port_pkts"), 0);
    EXPECT_EQ(host_drops("Ethernet101/1/7"), 10);
    EXPECT_EQ(at("Ethernet101/1/1", "/qos_counters/tx_queue_drops"), 3);
}

TEST_F(ClearQueuingTest, ClearOneInterfaceLeavesTheOthersCounting) {
    load();
    std::string out;
    ASSERT_EQ(clear_one("Ethernet1/1", out), 0);
    ASSERT_EQ(clear_one("Ethernet101/1/2", out), 0);
    EXPECT_EQ(out, "");
    finish();  // the clearing command does not advance the clock
    EXPECT_EQ(rx("Ethernet1/1"), 0);
    EXPECT_EQ(rx("Ethernet1/2"), 100);
    handle = qdsim::open_command();
    finish();  // the next one does: everything counts again
    EXPECT_EQ(rx("Ethernet1/1"), 10);
    EXPECT_EQ(at("Ethernet1/1", "/extended/counters/pass/0/0"), 0);
    EXPECT_EQ(pause("Ethernet1/1"), 0);
    EXPECT_EQ(rx("Ethernet1/2"), 110);
    EXPECT_EQ(at("Ethernet1/2", "/extended/counters/pass/0/0"), 1);
    EXPECT_EQ(pause("Ethernet1/5"), 2);
    EXPECT_EQ(host_drops("Ethernet101/1/2"), 10);
    EXPECT_EQ(at("Ethernet101/1/2", "/hif_queuing/queue_stats/0/counters/rx"), 0);
    EXPECT_EQ(host_drops("Ethernet101/1/3"), 17);
    EXPECT_EQ(at("Ethernet101/1/1", "/qos_counters/tx_queue_drops"), 15);
}

TEST_F(ClearQueuingTest, PauseCountersAreClearedInVdcOneOnly) {
    for (const unsigned vdc : {1u, 2u}) {
        SCOPED_TRACE(vdc);
        const std::int64_t pause_after = vdc == 1 ? 0 : 4;
        std::string out;
        load(vdc);
        ASSERT_EQ(clear_all(out), 0);
        EXPECT_EQ(rx("Ethernet2/3"), 0);
        EXPECT_EQ(host_drops("Ethernet101/1/1"), 0);
        EXPECT_EQ(pause("Ethernet2/3"), pause_after);
        load(vdc);
        ASSERT_EQ(clear_one("Ethernet2/3", out), 0);
        EXPECT_EQ(rx("Ethernet2/3"), 0);
        EXPECT_EQ(pause("Ethernet2/3"), pause_after);
    }
}

TEST_F(ClearQueuingTest, DaemonRefusesUnknownInterfacesAndChangesNothing) {
    load();
    const std::string before = qdsim::dump_state_json();
    for (const std::uint32_t if_index : {0u, 0x1a300000u}) {
        const Exchange ex = daemon(handle, QD_CLI_CMD_CLEAR_QUEUING_IF, if_index);
        ASSERT_EQ(ex.payload.size(), 4u);
        EXPECT_EQ(host32(ex.payload, 0), static_cast<std::uint32_t>(qdsim::kErrNoInterface));
    }
    // A host interface's counters are the statistics client's, not the daemon's.
    const Exchange ex = daemon(handle, QD_CLI_CMD_CLEAR_QUEUING_IF, *qdsim::find_interface("Ethernet101/1/1"));
    EXPECT_EQ(host32(ex.payload, 0), 0u);
    EXPECT_EQ(qdsim::dump_state_json(), before);
}

TEST_F(ClearQueuingTest, FaultsStopTheClearWhereTheHandlerStops) {
    std::string out;
    // Not sent: nothing at all is cleared.
    load(1, R"([{"target": "daemon", "command": 18, "kind": "send_failure"}])");
    EXPECT_EQ(clear_all(out), qdsim::kErrSend);
    EXPECT_EQ(out, "message could not be sent\n");
    EXPECT_EQ(rx("Ethernet1/1"), 100);
    EXPECT_EQ(host_drops("Ethernet101/1/1"), 7);
    EXPECT_EQ(pause("Ethernet1/1"), 3);

    // The daemon cleared, its reply was lost: the handler stops there.
    load(1, R"([{"target": "daemon", "command": 24, "kind": "recv_failure"}])");
    EXPECT_EQ(clear_one("Ethernet1/1", out), qdsim::kErrTimeout);
    EXPECT_EQ(rx("Ethernet1/1"), 0);
    EXPECT_EQ(pause("Ethernet1/1"), 3);

    // The daemon refused (the reply is not read): the pause counters go all the same.
    load(1, R"([{"target": "daemon", "command": 24, "kind": "unsupported"}])");
    EXPECT_EQ(clear_one("Ethernet1/1", out), 0);
    EXPECT_EQ(rx("Ethernet1/1"), 100);
    EXPECT_EQ(pause("Ethernet1/1"), 0);

    // One host interface's QoS clear fails; the others and the pause counters are cleared.
    load(1, R"([{"target": "statscl", "operation": "clear", "interface": "Ethernet101/1/1", "kind": "failure"}])");
    EXPECT_EQ(clear_all(out), 0);
    EXPECT_EQ(host_drops("Ethernet101/1/1"), 7);
    EXPECT_EQ(at("Ethernet101/1/1", "/qos_counters/tx_queue_drops"), 12);
    EXPECT_EQ(host_drops("Ethernet101/1/2"), 0);
    EXPECT_EQ(pause("Ethernet2/31"), 0);
}

}  // namespace
}  // namespace simtest
