// SPDX-License-Identifier: MIT
// The switch-wide report's section of a scenario, which names the host
// interface the daemon's stream describes. (The report itself is checked by
// the end-to-end cases switch-report*.)
#include <nlohmann/json.hpp>

#include "frame/platform_query.hpp"
#include "qdcli/handlers.h"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

// Extender 101 with three host interfaces; Ethernet1/1 has no queuing
// report, so the stream holds the host part only.
const char *kHostSwitch = R"({
  "ethernet": [{"slot": 1, "ports": 1}],
  "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/1", "ports": "1-3"}],
  "interfaces": {"Ethernet1/1": {"queuing": {"supported": false}},
                 "Ethernet101/1/3": {"hif_queuing": {"stats_format": 2}}}
})";

class HostStreamTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        qdcli::platform_type_cache_reset();
    }
    // The switch-wide report as the shell runs it: the daemon's stream handed
    // to the library's renderer.
    std::string show_switch() {
        cmd_rsp rsp{};
        qdsim::open_switch_stream(&rsp, handle);
        ::testing::internal::CaptureStdout();
        EXPECT_EQ(qd_cli_show_queuing_intf_switch(&rsp), -1);
        EXPECT_TRUE(qdsim::check_ledger(handle).empty());
        return ::testing::internal::GetCapturedStdout();
    }
};

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
    std::string error;
    qdsim::ScenarioError e;
    ASSERT_TRUE(qdsim::load_scenario_text(kHostSwitch, "stream.json", e)) << e.message();
    ASSERT_TRUE(qdsim::set_state_value("/switch_report", R"({"host_interface": "Ethernet101/1/3"})", error)) << error;
    auto state = nlohmann::json::parse(qdsim::dump_state_json());
    state["extenders"][0]["ports"] = "1-2";
    state["interfaces"].erase("Ethernet101/1/3");
    EXPECT_FALSE(qdsim::load_scenario_text(state.dump(), "state.json", e));
    EXPECT_NE(e.message().find("no host interface named \"Ethernet101/1/3\""), std::string::npos) << e.message();
    EXPECT_NE(show_switch().find("Ethernet101/1/3 queuing information:"), std::string::npos);
}

}  // namespace
}  // namespace simtest
