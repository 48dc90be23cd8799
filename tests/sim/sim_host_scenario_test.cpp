// SPDX-License-Identifier: MIT
// Host-interface queuing data in scenarios: what the checker refuses. (What
// the default switch's host interfaces show is in the end-to-end cases hif-*.)
#include "sim_fixture.hpp"

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

}  // namespace
}  // namespace simtest
