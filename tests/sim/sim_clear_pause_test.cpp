// SPDX-License-Identifier: MIT
// The platform's "clear interface priority-flow-control" command line, as
// vsh_system2 and a shell run it, and the checks of the pause section.
#include <cstring>

#include "core/errors.hpp"
#include "model/model.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

class ClearPauseTest : public SimTest {
protected:
    static std::int64_t count(const std::string &name) {
        const qdsim::Json *v = qdsim::find(*qdsim::current_model().find_interface(name)->data, "/pause/counters/events");
        return v ? v->get<std::int64_t>() : -1;
    }
    static std::size_t events(const std::string &name) {
        const qdsim::Json *v = qdsim::find(*qdsim::current_model().find_interface(name)->data, "/pause/events");
        return v ? v->size() : 0;
    }
    static std::int32_t vsh(const std::string &line) {
        vsh_cmd_req req{};
        req.word0 = 1;
        req.word776 = req.word780 = 2;
        std::strncpy(req.cmd_line, line.c_str(), sizeof req.cmd_line - 1);
        return vsh_system2(&req);
    }
};

TEST_F(ClearPauseTest, ClearingOneInterfaceTakesAnySpellingAndLeavesTheOthers) {
    for (const char *spelling : {"Ethernet2/3", "eth2/3", "E2/3"}) {
        SCOPED_TRACE(spelling);
        qdsim::load_default_scenario();
        EXPECT_EQ(qdsim::run_platform_command(std::string("clear  interface priority-flow-control ") + spelling), 0);
        EXPECT_EQ(count("Ethernet2/3"), 0);
        EXPECT_EQ(count("Ethernet1/1"), 3);
        EXPECT_EQ(events("Ethernet2/3"), 4u);
    }
}

TEST_F(ClearPauseTest, InterfacesWithoutPauseCountersAndUnknownNames) {
    const std::string before = qdsim::dump_state_json();
    EXPECT_EQ(vsh("clear interface priority-flow-control Ethernet101/1/3"), 0);  // nothing to clear
    EXPECT_EQ(vsh("clear interface priority-flow-control Ethernet9/9"), qdsim::kErrNoInterface);
    EXPECT_EQ(vsh("clear interface priority-flow-control unknown-0x00000000"), qdsim::kErrNoInterface);
    EXPECT_EQ(qdsim::dump_state_json(), before);
}

TEST_F(ClearPauseTest, PauseSectionsAreChecked) {
    const struct {
        const char *pause;
        const char *refusal;
    } cases[] = {
        {R"({"count": 3})", "at /interfaces/Ethernet1~11/pause/count: unknown member"},
        {R"({"counters": {"events": -1}})", "at /interfaces/Ethernet1~11/pause/counters/events: expected a counter"},
        {R"({"events": [{"time": 5}]})", "pause/events/0/time: expected the event's time stamp"},
        {R"({"events": [{"time": ""}]})", "a time stamp has 1 to 255 characters, not 0"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.pause);
        qdsim::ScenarioError e;
        EXPECT_FALSE(qdsim::load_scenario_text(
            std::string(R"({"extends": "default", "interfaces": {"Ethernet1/1": {"pause": )") + c.pause + "}}}",
            "pause.json", e));
        EXPECT_NE(e.reason.find(c.refusal), std::string::npos) << e.reason;
    }
    std::string error;
    EXPECT_FALSE(qdsim::set_state_value("/interfaces/Ethernet1~11/pause/events/0/time",
                                        "\"" + std::string(256, '9') + "\"", error));
    EXPECT_NE(error.find("not 256"), std::string::npos) << error;
}

}  // namespace
}  // namespace simtest
