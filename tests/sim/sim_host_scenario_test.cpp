// SPDX-License-Identifier: MIT
// Host-interface queuing data in scenarios: what the checker refuses, and
// what the default switch's host interfaces show.
#include "qdcli/handlers.h"
#include "sim_fixture.hpp"
#include "support/capture_stdout.hpp"

namespace simtest {
namespace {

using qdsim::ScenarioError;

// Extender 101 with one host interface; `section` is its hif_queuing,
// starting on line 4.
std::string scenario(const std::string &section) {
    return "{\"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n"
           " \"extenders\": [{\"number\": 101, \"slot\": 33, \"uplink\": \"Ethernet1/1\", \"ports\": 1}],\n"
           " \"interfaces\": {\"Ethernet101/1/1\": {\"hif_queuing\":\n" +
           section + "\n}}}";
}

class HostScenarioTest : public SimTest {
protected:
    ScenarioError refused(const std::string &section) {
        ScenarioError error;
        EXPECT_FALSE(qdsim::load_scenario_text(scenario(section), "hosts.json", error)) << section;
        return error;
    }

    // The text report; the command stays open, so the clock stands still.
    std::string show(const std::string &name) {
        cmd_paraminfo pinfo{};
        pinfo.mts_handle = handle;
        return testsupport::capture_stdout([&] { qd_cli_show_queuing_hif(&pinfo, *qdsim::find_interface(name), name.c_str()); });
    }
};

TEST_F(HostScenarioTest, BadDataIsRefusedWhereItWasWritten) {
    const std::string prefix = "at /interfaces/Ethernet101~11~11/hif_queuing";
    struct Case {
        std::string section;
        std::size_t line, column;
        std::string reason;
    };
    const std::vector<Case> cases = {
        {R"({"queues": [{"queue_id": 10}]})", 4, 26, "/queues/0/queue_id: 10 is above the maximum 9"},
        {R"({"queues": [{"queue_id": 2}, {"queue_id": 2}]})", 4, 43, "/queues/1/queue_id: queue id 2 is listed twice"},
        {R"({"queues": [{"queue_id": 2, "qos_groups": [8]}]})", 4, 44, "/queues/0/qos_groups/0: 8 is above the maximum 7"},
        {R"({"input_buffers": [{}, {}, {}, {}, {}, {}, {}, {}, {}]})", 4, 19, "/input_buffers: at most 8 input buffers, found 9"},
        {R"({"input_buffers": [{"cos": [3, 3]}]})", 4, 32, "/input_buffers/0/cos/1: cos 3 is listed twice"},
        {R"({"input_buffers": [{"qos_groups": [1], "unsupported_qos_groups": [1]}]})", 4, 67,
         "/input_buffers/0/unsupported_qos_groups/0: qos-group 1 is listed as supported too"},
        {R"({"stats_format": 256})", 4, 18, "/stats_format: 256 is above the maximum 255"},
        {R"({"queue_limit": "none"})", 4, 17, "/queue_limit: expected a number of bytes, or null for none"},
        {R"({"cos_qos_group": [1, 1, 1, 1, 1, 1, 1, 1]})", 4, 19, "/cos_qos_group: at most 7 qos-group maps (cos 0 to 6), found 8"},
        {R"({"queue_stats": [{"queue_id": 1, "counters": {"rx": -1}}]})", 4, 53,
         "/queue_stats/0/counters/rx: expected a counter (an unsigned integer)"},
        {R"({"pfc": true})", 4, 9, "/pfc: unknown member \"pfc\""},
    };
    for (const Case &c : cases) {
        const ScenarioError e = refused(c.section);
        EXPECT_EQ(e.file, "hosts.json");
        EXPECT_EQ(e.line, c.line) << c.section << "\n" << e.message();
        EXPECT_EQ(e.column, c.column) << c.section << "\n" << e.message();
        EXPECT_EQ(e.reason.rfind(prefix + c.reason, 0), 0u) << e.message();
    }
    // The switch that was loaded stays.
    EXPECT_EQ(qdsim::interfaces().size(), 192u);
}

// A template's bad value is refused where the template wrote it.
TEST_F(HostScenarioTest, ATemplatesBadValueIsPlacedInTheTemplate) {
    ScenarioError e;
    ASSERT_FALSE(qdsim::load_scenario_text(R"({"extends": "default",
  "defaults": {"host": {"hif_queuing": {"queues": [{"queue_id": 1, "bandwidth": 101}]}}}})",
                                           "lab.json", e));
    EXPECT_EQ(e.message(), "lab.json:2:81: at /defaults/host/hif_queuing/queues/0/bandwidth: 101 is above the maximum 100");
}

// Each host interface of the default switch that stands for a kind of data
// shows it (the rest follow the profile of Ethernet101/1/1).
TEST_F(HostScenarioTest, TheDefaultSwitchShowsEveryKindOfHostInterface) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
        {"Ethernet101/1/1", {"  2      48211734       \n", "  12              InActive \n", "  Queue limit: Disabled\n"}},
        {"Ethernet101/1/41", {"  Qos-group: 0  2  (shared)\n", "\n* qos-group 5  unsupported\n", "  4        4            5 6 ",
                             "  Buffer threshold: 65536 bytes\n  Queue limit: 131072 bytes\n", "  Active (Port 1)\n"}},
        {"Ethernet101/1/42", {"  3              1    xoff      xoff      xoff\n", "  Active (Port 3)\n"}},
        {"Ethernet101/1/43", {"Cmd not supported for Ethernet101/1/43, error code operation not supported\n"}},
        {"Ethernet101/1/44", {"  queue  rx              tx  ", "  17              3               2               1408 "}},
        {"Ethernet101/1/45", {"  2              0    xoff      xon       xon \n", "  3              1    xoff      xon       xoff\n",
                             "  88211           InActive \n"}},
        {"Ethernet101/1/46", {"  0                 Active \n"}},
        {"Ethernet102/1/41", {"  Buffer threshold: 98304 bytes\n  Queue Limit Tx: 102400 bytes\n  Queue Limit Rx: 51200 bytes\n",
                             "  2tx|        51902218|       1312|           4|         0|         96|\n"}},
        {"Ethernet102/1/42", {"  Queue Limit Tx: Disabled\n  Queue Limit Rx: 81920 bytes\n", "enabled: no\n",
                             "  2        0            0 1 2 3 4 5 6   WRR       100      1500\n"}},
        {"Ethernet102/1/43", {"  queue  rx              tx  ", "  0         0         81920    \n\n  Qos-group: 1 "}},
        {"Ethernet102/1/48", {"  4294967290      InActive \n"}},
    };
    for (const auto &[name, lines] : cases) {
        const std::string out = show(name);
        for (const std::string &line : lines) EXPECT_NE(out.find(line), std::string::npos) << name << ": " << line << "\n" << out;
    }
    EXPECT_TRUE(qdsim::take_diagnostics().empty());
}

}  // namespace
}  // namespace simtest
