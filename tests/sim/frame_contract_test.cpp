// SPDX-License-Identifier: MIT
// The library's own frame (exchanges, message owner, enumeration, printer,
// platform queries) run against the simulated switch: both sides of the
// platform interface agree.
#include "frame/enumeration.hpp"
#include "frame/exchange.hpp"
#include "frame/platform_query.hpp"
#include "frame/printer.hpp"
#include "model/model.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

class FrameContractTest : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        qdcli::platform_type_cache_reset();
    }
    void TearDown() override {
        EXPECT_TRUE(qdsim::check_ledger(handle).empty() || handle == 0);
        SimTest::TearDown();
    }
};

TEST_F(FrameContractTest, DaemonExchangeReadsTheCosMapAndReleasesBothMessages) {
    qdcli::ReceivedMessage reply(handle);
    const auto result = qdcli::qd_exchange(handle, QD_CLI_CMD_SHOW_WRR_COSMAP, 0, 0, qdcli::Reply::read, reply);
    ASSERT_TRUE(result.ok());
    const qdcli::PayloadReader payload = reply.payload();
    ASSERT_TRUE(payload.covers(4, 8));
    EXPECT_EQ(payload.u8(4 + 7), 3);
    EXPECT_EQ(qdsim::live_messages(), 1u);
    reply.release();
    EXPECT_EQ(qdsim::live_messages(), 0u);
}

TEST_F(FrameContractTest, ConfirmOnlyExchangeChangesTheMap) {
    qdcli::ReceivedMessage reply(handle);
    ASSERT_TRUE(qdcli::qd_exchange(handle, QD_CLI_CMD_CONF_WRR_COSMAP, 0, 0x0281, qdcli::Reply::confirm_only, reply).ok());
    EXPECT_FALSE(reply.held());
    EXPECT_EQ(qdsim::current_model().cos_map()[0], 2);
    EXPECT_EQ(qdsim::current_model().cos_map()[7], 2);
}

TEST_F(FrameContractTest, FaultsSurfaceAsTheFramesOutcomes) {
    qdsim::ScenarioError e;
    ASSERT_TRUE(qdsim::load_scenario_text(R"({"extends": "default", "faults": [
        {"target": "daemon", "command": 20, "kind": "send_failure", "count": 1},
        {"target": "daemon", "command": 20, "kind": "recv_failure", "count": 1},
        {"target": "daemon", "command": 20, "kind": "empty_payload", "count": 1}]})", "f.json", e)) << e.message();
    qdcli::ReceivedMessage reply(handle);
    auto r = qdcli::qd_exchange(handle, QD_CLI_CMD_SHOW_WRR_COSMAP, 0, 0, qdcli::Reply::read, reply);
    EXPECT_EQ(r.outcome, qdcli::Outcome::send_failed);
    EXPECT_STREQ(qdcli::error_text(r.error), "message could not be sent");
    r = qdcli::qd_exchange(handle, QD_CLI_CMD_SHOW_WRR_COSMAP, 0, 0, qdcli::Reply::read, reply);
    EXPECT_EQ(r.outcome, qdcli::Outcome::recv_failed);
    r = qdcli::qd_exchange(handle, QD_CLI_CMD_SHOW_WRR_COSMAP, 0, 0, qdcli::Reply::read, reply);
    EXPECT_EQ(r.outcome, qdcli::Outcome::empty_payload);
    EXPECT_TRUE(reply.held());
    reply.release();
}

TEST_F(FrameContractTest, LineCardExchangeReachesTheExtendersAgentBySlot) {
    const qdsim::Extender *ext = qdsim::current_model().extender(101);
    EXPECT_EQ(qdcli::lc_stats_node(ext->slot), ext->node);
    lc_stats_req request = qdcli::make_lc_request(LC_STATS_CMD_VAQ_DROPS, 0);
    qdcli::ReceivedMessage reply(handle);
    const auto r = qdcli::lc_stats_exchange(handle, qdcli::lc_stats_node(ext->slot), request, reply);
    ASSERT_TRUE(r.ok());
    ASSERT_TRUE(reply.payload().covers(0, 33));
    EXPECT_EQ(qdcli::lc_reply_status(reply.payload()), 0u);
    EXPECT_EQ(reply.payload().u8(32), 2);  // the extender's ASICs
}

TEST_F(FrameContractTest, TheFourPassesVisitEveryInterfaceOnceInOrder) {
    cmd_paraminfo pinfo{};
    pinfo.mts_handle = handle;
    std::vector<std::uint32_t> seen;
    qdcli::for_each_enumerated_interface(&pinfo, [&](std::uint32_t if_index) { seen.push_back(if_index); });
    ASSERT_EQ(seen.size(), 192u);
    EXPECT_EQ(seen.front(), *qdsim::find_interface("Ethernet1/1"));
    EXPECT_EQ(seen[95], *qdsim::find_interface("Ethernet2/48"));
    EXPECT_EQ(seen[96], *qdsim::find_interface("Ethernet101/1/1"));
    EXPECT_TRUE(qdsim::take_diagnostics().empty());
}

TEST_F(FrameContractTest, PlatformQueriesAndInterfaceChecks) {
    EXPECT_EQ(qd_cli_platform_type_get(), 2);
    EXPECT_TRUE(qdcli::in_vdc_one());
    const auto checked = qdcli::check_interface(*qdsim::find_interface("Ethernet102/1/3"));
    EXPECT_TRUE(checked.accepted);
    EXPECT_EQ(checked.type, 31);
    EXPECT_STREQ(checked.name, "Ethernet102/1/3");
}

TEST_F(FrameContractTest, PrinterLinesComeOutOnFlush) {
    cmd_paraminfo pinfo{};
    pinfo.mts_handle = handle;
    qdcli::Printer out(&pinfo);
    out.line("    qos-group %s\n", qdcli::u32(0x14ff003f, 5));
    out.line("%s queuing information:\n", qdcli::text(0x30ff003a, "Ethernet1/1"));
    out.literal("100% literal\n");
    EXPECT_EQ(output, "");
    out.flush();
    EXPECT_EQ(output, "    qos-group 5\nEthernet1/1 queuing information:\n100% literal\n");
    EXPECT_TRUE(qdsim::take_diagnostics().empty());
}

}  // namespace
}  // namespace simtest
