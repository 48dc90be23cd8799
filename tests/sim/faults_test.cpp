// SPDX-License-Identifier: MIT
// Faults injected from the scenario, per command code, interface,
// extender or platform operation.
#include "agent/agent.hpp"
#include "core/errors.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

class FaultTest : public SimTest {
protected:
    void with_faults(const std::string &faults) {
        qdsim::ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_text(R"({"extends": "default", "faults": )" + faults + "}", "faults.json", e))
            << e.message();
    }
};

TEST_F(FaultTest, RecvFailureLosesTheReplyAfterTheDaemonActed) {
    with_faults(R"([{"target": "daemon", "command": 19, "kind": "recv_failure", "error": "timeout"}])");
    const Exchange ex = daemon(handle, QD_CLI_CMD_CONF_WRR_COSMAP, 0, 0x0301);
    EXPECT_EQ(ex.send_rc, 0);
    EXPECT_EQ(ex.recv_rc, qdsim::kErrTimeout);
    EXPECT_EQ(qdsim::current_model().cos_map()[0], 3);
    EXPECT_EQ(qdsim::live_messages(), 0u);
}

TEST_F(FaultTest, CountedFaultsAreSpentAndTheStateShowsWhatIsLeft) {
    with_faults(R"([{"target": "daemon", "command": 20, "kind": "send_failure", "count": 2}])");
    EXPECT_NE(daemon(handle, QD_CLI_CMD_SHOW_WRR_COSMAP).send_rc, 0);
    EXPECT_EQ(qdsim::current_model().state()["faults"][0]["count"], 1);
    EXPECT_NE(daemon(handle, QD_CLI_CMD_SHOW_WRR_COSMAP).send_rc, 0);
    EXPECT_EQ(daemon(handle, QD_CLI_CMD_SHOW_WRR_COSMAP).send_rc, 0);
}

TEST_F(FaultTest, UnsupportedUsesTheCommandsOwnRefusal) {
    with_faults(R"([{"target": "daemon", "command": 20, "kind": "unsupported"}])");
    const Exchange ex = daemon(handle, QD_CLI_CMD_SHOW_WRR_COSMAP);
    ASSERT_EQ(ex.payload.size(), 12u);
    EXPECT_EQ(host32(ex.payload, 0), QD_STATUS_UNSUPPORTED);
    EXPECT_EQ(ex.payload[4], 0xff);
}

TEST_F(FaultTest, PlatformServiceFaults) {
    with_faults(R"([{"target": "sse", "operation": 1077, "kind": "failure", "count": 1},
                    {"target": "enumeration", "mask": "0x800000", "kind": "bad_status"},
                    {"target": "statscl", "operation": "clear", "kind": "failure", "error": "no_service"},
                    {"target": "card", "operation": "card_module_info", "kind": "failure"}])");
    std::int32_t type = 0;
    sse_req req{};
    req.length = 4;
    req.answer = &type;
    EXPECT_EQ(sse_call(SSE_OP_PLATFORM_TYPE, &req), qdsim::kErrNoService);
    EXPECT_EQ(sse_call(SSE_OP_PLATFORM_TYPE, &req), 0);
    EXPECT_EQ(type, 2);

    cmd_paraminfo source{}, copy{};
    cmd_param_arg arg{};
    if_range range{};
    populate_intf_range(&range, 0, 0, 0);
    pinfo_basic_copy(&copy, &source);
    pinfo_insert_arg(&copy, &arg);
    populate_param_arg(&arg, 2060, 0x40200002, 0, 0x800000, 0, &range);
    enum_result result{};
    std::int32_t status = 0;
    EXPECT_EQ(invoke_enumeration_function("pmcli_eth", "pm_cli_if_index_enum_func", &copy, &result, &status), 0);
    EXPECT_EQ(status, -1);
    EXPECT_EQ(result.indexes, nullptr);

    EXPECT_EQ(statscl_clear_qos_counters(0, *qdsim::find_interface("Ethernet101/1/1"), 0, nullptr), qdsim::kErrNoService);
    std::uint8_t card[6];
    EXPECT_NE(get_card_module_info(card), 0);
}

}  // namespace
}  // namespace simtest
