// Common ground of the Ethernet-side tests: the library's real handlers run
// against the switch, one command at a time, as the shell would run them.
#pragma once

#include <functional>
#include <memory>
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

    // Loads a scenario that must load.
    void load(const std::string &text) {
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(text, "eth.json", e)) << e.message();
        qdcli::platform_type_cache_reset();
    }

    // The interface's index; a spelling the switch does not know fails the test.
    static std::uint32_t index(const std::string &name) {
        const auto i = qdsim::find_interface(name);
        EXPECT_TRUE(i.has_value()) << name;
        return i.value_or(0);
    }

    // Runs one handler as one command with the given command identifier and
    // returns what the switch showed. The command is then closed (the clock
    // ticks) and a new one opened; every message must have been released
    // exactly once, and nothing else may have been diagnosed.
    std::string run(const std::function<std::int32_t(cmd_paraminfo *)> &handler, std::uint32_t cmd_id = 0) {
        auto pinfo = std::make_unique<cmd_paraminfo>();
        pinfo->mts_handle = handle;
        pinfo->cmd_id = cmd_id;
        output.clear();
        status = handler(pinfo.get());
        EXPECT_TRUE(qdsim::check_ledger(handle).empty());
        qdsim::close_command(handle);
        handle = qdsim::open_command();
        const auto diagnostics = qdsim::take_diagnostics();
        EXPECT_TRUE(diagnostics.empty()) << diagnostics.front();
        return output;
    }

    std::string show_queuing(const std::string &name, std::uint32_t cmd_id = CMD_ID_SHOW_QUEUING_IF) {
        return run([&](cmd_paraminfo *p) { return qd_cli_show_queuing_if(p, index(name), name.c_str()); }, cmd_id);
    }
    std::string show_extended(const std::string &name) {
        return run([&](cmd_paraminfo *p) { return qd_cli_show_queuing_if_extend(p, index(name), name.c_str()); });
    }
    std::string show_internal(const std::string &name) {
        return run([&](cmd_paraminfo *p) { return qd_cli_show_internal_stats(p, index(name), name.c_str()); });
    }

    std::int32_t status = 0;  // of the last handler run
};

// The lines of `text` that start with `prefix`, in order.
inline std::vector<std::string> lines_starting(const std::string &text, const std::string &prefix) {
    std::vector<std::string> found;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t end = text.find('\n', at);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(at, end - at);
        if (line.compare(0, prefix.size(), prefix) == 0) found.push_back(line);
        at = end + 1;
    }
    return found;
}

inline bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

}  // namespace simtest
