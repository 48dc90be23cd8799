// SPDX-License-Identifier: MIT
// The extenders' no-credit drop counters (sub-command 27) as the drop
// report shows them, against the default switch and small scenarios.
#include "qdcli/handlers.h"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

const std::string kNote = "\n Note: Maximum drop counter value is 15 with no roll-over";

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

    void load(const std::string &text) {
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(text, "drops.json", e)) << e.message();
    }

    std::string refusal(const std::string &text) {
        qdsim::ScenarioError e;
        EXPECT_FALSE(qdsim::load_scenario_text(text, "drops.json", e));
        return e.message();
    }
};

TEST_F(VaqDropsTest, AbsentExtendersPrintNothingAndAnExtenderWithoutAsicsIsNotSupported) {
    load(R"({"line_cards": [{"slot": 1}]})");
    EXPECT_EQ(show(), kNote);

    // The first and the last numbers of the walk, an extender with no data,
    // and four ASICs whose second row starts right after the first.
    load(R"({"ethernet": [{"slot": 1, "ports": "1-3"}],
             "extenders": [
               {"number": 100, "slot": 40, "uplink": "Ethernet1/1", "ports": 1,
                "vaq_drops": {"asics": [{"ss_drops": [1]}, {"ss_drops": [0, 2]}, {"ss_drops": []}, {"ss_drops": [5]}]}},
               {"number": 150, "slot": 41, "uplink": "Ethernet1/2", "ports": 1},
               {"number": 199, "slot": 42, "uplink": "Ethernet1/3", "ports": 1, "vaq_drops": {}}]})");
    EXPECT_EQ(show(), "\nNo. of Asics present in vaq 100 is = 4"
                      "\nStats for Asic 0\nNo. of SS present in vaq 100 for asic 0 is = 1" +
                          drop_line(0, 1) +
                          "\nStats for Asic 1\nNo. of SS present in vaq 100 for asic 1 is = 2" + drop_line(0, 0) +
                          drop_line(1, 2) +
                          "\nStats for Asic 2\nCommand not supported on vaq 100 for asic_id 2"
                          "\nStats for Asic 3\nNo. of SS present in vaq 100 for asic 3 is = 1" +
                          drop_line(0, 5) +
                          "\nCommand not supported on vaq 150"
                          "\nCommand not supported on vaq 199" +
                          kNote);
}

// The default switch, changed counters, and failed exchanges at single
// extenders are the end-to-end cases vaq-drops-*; here: the extender's own
// refusal and a reply cut short.
TEST_F(VaqDropsTest, TheUnsupportedFaultAndAShortReplyStopAtTheirExtender) {
    load(R"({"extends": "default", "faults": [
        {"target": "agent", "command": 27, "extender": 101, "kind": "unsupported", "count": 1},
        {"target": "agent", "command": 27, "extender": 102, "kind": "short_payload", "bytes": 40, "count": 1}]})");
    const std::string text = show();
    EXPECT_EQ(text.rfind("\nCommand not supported on vaq 101\nTruncated reply from vaq 102: 40 bytes, ", 0), 0u) << text;
    EXPECT_EQ(text.substr(text.size() - kNote.size()), kNote);
    EXPECT_EQ(show().rfind("\nNo. of Asics present in vaq 101 is = 2", 0), 0u);
}

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
