// SPDX-License-Identifier: MIT
// Common ground of the Ethernet-side tests: the library's real handlers run
// against the switch, one command at a time, as the shell runs them.
#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "frame/platform_query.hpp"
#include "qdcli/handlers.h"
#include "sim_fixture.hpp"

namespace simtest {

class EthernetSimTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        qdcli::platform_type_cache_reset();
    }
    void load(const std::string &text) {
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(text, "eth.json", e)) << e.message();
        qdcli::platform_type_cache_reset();
    }

    // Runs a handler of one interface as one command and returns what the
    // switch showed. Closing the command ticks the clock and checks that
    // every message was released exactly once; nothing may be diagnosed.
    using Handler = std::int32_t (*)(cmd_paraminfo *, std::uint32_t, const char *);
    std::string run(Handler handler, const std::string &name, std::uint32_t cmd_id = CMD_ID_SHOW_QUEUING_IF) {
        auto pinfo = std::make_unique<cmd_paraminfo>();
        pinfo->mts_handle = handle;
        pinfo->cmd_id = cmd_id;
        output.clear();
        status = handler(pinfo.get(), qdsim::find_interface(name).value_or(0), name.c_str());
        qdsim::close_command(handle);
        handle = qdsim::open_command();
        const auto diagnostics = qdsim::take_diagnostics();
        EXPECT_TRUE(diagnostics.empty()) << diagnostics.front();
        return output;
    }
    std::string show_queuing(const std::string &name, std::uint32_t cmd_id = CMD_ID_SHOW_QUEUING_IF) {
        return run(qd_cli_show_queuing_if, name, cmd_id);
    }
    std::string show_extended(const std::string &name) { return run(qd_cli_show_queuing_if_extend, name); }
    std::string show_internal(const std::string &name) { return run(qd_cli_show_internal_stats, name); }

    std::int32_t status = 0;  // of the last handler run
};

// The lines of `text` that start with `prefix`, in order.
inline std::vector<std::string> lines_starting(const std::string &text, const std::string &prefix) {
    std::vector<std::string> found;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (line.rfind(prefix, 0) == 0) found.push_back(line);
    return found;
}

inline bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

}  // namespace simtest
