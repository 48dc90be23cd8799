// SPDX-License-Identifier: MIT
// The extenders' no-credit drop counters of a scenario: what the checker
// refuses. (The report is checked by the end-to-end cases vaq-drops-*.)
#include "qdcli/handlers.h"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

std::string drop_line(unsigned ss, unsigned count) {
    return "\nNo-credit drop count on 'no-drop class' for SS " + std::to_string(ss) + " is = " + std::to_string(count);
}

class VaqDropsTest : public SimTest {
protected:
    // Runs the drop report as the shell would; its single flush lands in
    // `output`.
    std::string show() {
        output.clear();
        cmd_paraminfo pinfo{};
        pinfo.mts_handle = handle;
        EXPECT_EQ(process_qd_cli_show_vaq_drops_all(&pinfo), 0);
        EXPECT_TRUE(qdsim::check_ledger(handle).empty());
        return output;
    }

    std::string refusal(const std::string &text) {
        qdsim::ScenarioError e;
        EXPECT_FALSE(qdsim::load_scenario_text(text, "drops.json", e));
        return e.message();
    }
};

TEST_F(VaqDropsTest, TheCheckerRefusesWhatTheReplyCannotCarry) {
    const std::string head = R"({"ethernet": [{"slot": 1, "ports": 1}],
        "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/1", "ports": 1, "vaq_drops": )";
    const struct {
        const char *section;
        const char *reason;
    } cases[] = {
        {R"({"asics": [{"ss_drops": []}, {"ss_drops": []}, {"ss_drops": []}, {"ss_drops": []}, {"ss_drops": []}]})",
         "vaq_drops/asics: 5 ASICs, an extender reports at most 4"},
        {R"({"asics": [{"ss_drops": [0,0,0,0,0,0,0,0,0,0,0,0,0]}]})",
         "vaq_drops/asics/0/ss_drops: 13 SS, an ASIC reports at most 12"},
        {R"({"asics": [{"ss_drops": [3, 16]}]})", "vaq_drops/asics/0/ss_drops/1: 16 is above the maximum 15"},
        {R"({"asics": [{"ss_drops": [-1]}]})", "vaq_drops/asics/0/ss_drops/0: expected an unsigned integer"},
        {R"({"asics": [{"ss_drops": [1]}], "rates": {"asics": {"ss_drops": 1}}})",
         "vaq_drops/rates: the drop counters saturate at 15"},
        {R"({"asics": [{"ss_drops": [1], "rates": {"ss_drops": 1}}]})",
         "vaq_drops/asics/0/rates: the drop counters saturate at 15"},
        {R"({"asics": [{"ss": [1]}]})", "unknown member \"ss\""},
        {R"({"asics": [{}]})", "vaq_drops/asics/0: an ASIC lists the drop counts of its SS in \"ss_drops\""},
        {R"({"asics": {"ss_drops": []}})", "vaq_drops/asics: expected an array"},
    };
    for (const auto &c : cases)
        EXPECT_NE(refusal(head + c.section + "}]}").find(c.reason), std::string::npos) << c.section;

    // The default's own extenders override the template; an extender's
    // entry is refused where it was written.
    const std::string message = refusal(R"({"extends": "default", "extenders": [
        {"number": 101, "slot": 33, "uplink": "Ethernet1/48"}, {"number": 102, "slot": 34, "uplink": "Ethernet2/48",
         "vaq_drops": {"asics": [{"ss_drops": [20]}]}}]})");
    EXPECT_NE(message.find("drops.json:3:"), std::string::npos) << message;

    // A refused change leaves the counters as they were.
    std::string error;
    EXPECT_FALSE(qdsim::set_state_value("/extenders/0/vaq_drops/asics/0/ss_drops/0", "16", error));
    EXPECT_NE(error.find("16 is above the maximum 15"), std::string::npos) << error;
    EXPECT_NE(show().find(drop_line(0, 0) + drop_line(1, 3)), std::string::npos);
}

}  // namespace
}  // namespace simtest
