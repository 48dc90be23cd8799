// SPDX-License-Identifier: MIT
// The switch-wide report run as the shell runs it: the daemon's stream of
// the switch handed to the library's renderer, its standard output captured.
#pragma once

#include <string>

#include "frame/platform_query.hpp"
#include "qdcli/handlers.h"
#include "sim_fixture.hpp"

namespace simtest {

class StreamTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        qdcli::platform_type_cache_reset();
    }
    void TearDown() override {
        qdcli::platform_type_cache_reset();
        SimTest::TearDown();
    }

    std::string show_switch() {
        cmd_rsp rsp{};
        qdsim::open_switch_stream(&rsp, handle);
        ::testing::internal::CaptureStdout();
        const std::int32_t rc = qd_cli_show_queuing_intf_switch(&rsp);
        const std::string text = ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(rc, -1);
        EXPECT_TRUE(qdsim::check_ledger(handle).empty());
        return text;
    }

    // Ends this command (the clock ticks) and starts the next.
    void next_command() {
        finish();
        handle = qdsim::open_command();
    }

    void load(const std::string &text) {
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(text, "stream.json", e)) << e.message();
        qdcli::platform_type_cache_reset();
    }

    void set(const std::string &pointer, const std::string &value) {
        std::string error;
        ASSERT_TRUE(qdsim::set_state_value(pointer, value, error)) << error;
        qdcli::platform_type_cache_reset();
    }
};

inline std::size_t occurrences(const std::string &text, const std::string &what) {
    std::size_t n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

}  // namespace simtest
