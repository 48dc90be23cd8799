// SPDX-License-Identifier: MIT
// Platform operations answered from the model: interfaces, extenders,
// enumeration, system services, the statistics client, the agents, and
// command lines.
#include <cstdlib>

#include "agent/agent.hpp"
#include "core/cleanup.hpp"
#include "core/errors.hpp"
#include "printer/commands.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

using PlatformTest = SimTest;

TEST_F(PlatformTest, EnumerationWithoutItsArgumentsFails) {
    cmd_paraminfo copy{};
    enum_result result{};
    std::int32_t status = 0;
    EXPECT_LT(invoke_enumeration_function("pmcli_eth", "pm_cli_if_index_enum_func", &copy, &result, &status), 0);
    EXPECT_EQ(status, -1);
    qdsim::take_diagnostics();
}

TEST_F(PlatformTest, SystemServicesAnswerFromTheModel) {
    std::int32_t type = 0;
    sse_req req{};
    req.length = 4;
    req.answer = &type;
    EXPECT_EQ(sse_call(SSE_OP_PLATFORM_TYPE, &req), 0);
    EXPECT_EQ(type, 2);
    req.length = 2;
    EXPECT_EQ(sse_call(SSE_OP_PLATFORM_TYPE, &req), qdsim::kErrBadArgument);
    EXPECT_EQ(sse_call(1, &req), qdsim::kErrUnsupported);
    EXPECT_EQ(sysmgr_vdc_get(), 1u);
    std::uint8_t card[6] = {0xee, 0xee, 0, 0, 0xee, 0xee};
    EXPECT_EQ(get_card_module_info(card), 0);
    std::uint16_t id = 0;
    std::memcpy(&id, card + 2, 2);
    EXPECT_EQ(id, 184);
    EXPECT_EQ(pfm_get_sw_card_id_from_module(), 184u);
}

TEST_F(PlatformTest, AgentsCheckTheRequestAndDecodeItForTheSubCommand) {
    qdsim::agent::Request seen;
    ASSERT_TRUE(qdsim::agent::register_subcommand({200, "test", 2, [&](const qdsim::agent::Request &r, qdsim::Model &) {
                                                       seen = r;
                                                       return qdsim::agent::Reply::ok({1, 2, 3}, 3);
                                                   }}));
    lc_stats_req req = lc_request(200, 2, 0x1a002f00u);
    req.hdr.slot[3] = 33;
    req.hdr.vaq_id[3] = 101;
    Exchange ex = exchange(handle, 0x2202, LC_STATS_SAP, LC_STATS_OPC, &req, sizeof req, 5);
    ASSERT_EQ(ex.payload.size(), 35u);
    EXPECT_EQ(ex.payload[0], 200);
    EXPECT_EQ(ex.payload[1], 2);
    EXPECT_EQ(ex.payload[2], 3);
    EXPECT_EQ(be32(ex.payload, 28), 0u);
    EXPECT_EQ(ex.payload[34], 3);
    EXPECT_EQ(seen.target_if_index, 0x1a002f00u);
    EXPECT_EQ(seen.slot, 33u);
    EXPECT_EQ(seen.vaq_id, 101u);
    ASSERT_NE(seen.extender, nullptr);
    EXPECT_EQ(seen.extender->number, 101);

    req.hdr.variant = 3;  // not the variant the sub-command takes
    ex = exchange(handle, 0x2202, LC_STATS_SAP, LC_STATS_OPC, &req, sizeof req, 5);
    EXPECT_EQ(be32(ex.payload, 28), static_cast<std::uint32_t>(qdsim::kErrBadRequest));
    req.hdr.variant = 2;
    req.hdr.fixed_one[0] = 0;
    req.hdr.fixed_one[3] = 1;  // converted to network order by mistake
    ex = exchange(handle, 0x2202, LC_STATS_SAP, LC_STATS_OPC, &req, sizeof req, 5);
    EXPECT_EQ(be32(ex.payload, 28), static_cast<std::uint32_t>(qdsim::kErrBadRequest));
    ex = exchange(handle, 0x2202, LC_STATS_SAP, LC_STATS_OPC, &req, 32, 5);
    EXPECT_EQ(be32(ex.payload, 28), static_cast<std::uint32_t>(qdsim::kErrBadRequest));
    ex = exchange(handle, 0x2202, LC_STATS_SAP, LC_STATS_OPC, &req, sizeof req, 0);  // daemon's receive options
    EXPECT_EQ(ex.recv_rc, qdsim::kErrBadOptions);
    qdsim::agent::unregister_subcommand(200);
}

TEST_F(PlatformTest, CommandLinesGoToTheRunnerOrThePlatformsCommands) {
    vsh_cmd_req req{};
    req.word0 = 1;
    req.word776 = 2;
    req.word780 = 2;
    // A prefix of its own: the real ones belong to the services that registered them.
    std::strcpy(req.cmd_line, "clear  test-counters Ethernet1/1");
    std::string rest;
    qdsim::printer::register_platform_command("clear test-counters", [&](const std::string &r, qdsim::Model &) {
        rest = r;
        return 0;
    });
    EXPECT_EQ(vsh_system2(&req), 0);
    EXPECT_EQ(rest, "Ethernet1/1");
    EXPECT_NE(qdsim::run_platform_command("clear test-countersx"), 0);

    std::string ran;
    qdsim::set_command_runner([&](const std::string &line) {
        ran = line;
        return 5;
    });
    EXPECT_EQ(vsh_system2(&req), 5);
    EXPECT_EQ(ran, "clear  test-counters Ethernet1/1");
    req.word780 = 0;
    EXPECT_EQ(vsh_system2(&req), qdsim::kErrBadArgument);
    qdsim::printer::unregister_platform_command("clear test-counters");
    qdsim::take_diagnostics();
}

// The daemon's stream of the switch ends, stays ended, and goes with the
// command (request attributes are walked by every golden that names interfaces).
TEST_F(PlatformTest, StreamsAreWalkedToTheEnd) {
    void *value = nullptr;
    std::uint32_t length = 0;
    cmd_rsp rsp{};
    qdsim::open_switch_stream(&rsp, handle);  // the daemon's stream of the switch (sim_stream_*_test)
    EXPECT_EQ(rsp.mts_handle, handle);
    int walked = 0;
    while (walked < 100000 && cmd_rsp_attr_getnext(&rsp, &value, &length) != -1) ++walked;
    EXPECT_GT(walked, 0);
    EXPECT_EQ(cmd_rsp_attr_getnext(&rsp, &value, &length), -1);
    finish();  // the stream goes with the command
    EXPECT_EQ(cmd_rsp_attr_getnext(&rsp, &value, &length), -1);
    EXPECT_TRUE(diagnosed(qdsim::take_diagnostics(), "already released"));
}

TEST_F(PlatformTest, ShutdownRunsTheCleanupsOnceNewestFirst) {
    std::string order;
    qdsim::register_cleanup("a", [&] { order += "a"; });
    qdsim::register_cleanup("b", [&] { order += "b"; });
    qdsim::shutdown();
    qdsim::shutdown();
    EXPECT_EQ(order, "ba");
}

}  // namespace
}  // namespace simtest
