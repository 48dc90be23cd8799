// SPDX-License-Identifier: MIT
// The queuing daemon: request checks, the CoS map, the registry, the
// debug-dump path.
#include "core/errors.hpp"
#include "daemon/daemon.hpp"
#include "daemon/debug.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

using DaemonTest = SimTest;

Bytes cos_map(std::uint32_t handle) {
    const Exchange ex = daemon(handle, QD_CLI_CMD_SHOW_WRR_COSMAP);
    EXPECT_EQ(ex.payload.size(), 12u);
    if (ex.payload.size() < 12) return {};
    EXPECT_EQ(host32(ex.payload, 0), 0u);
    return Bytes(ex.payload.begin() + 4, ex.payload.end());
}

std::uint32_t cos_value(std::uint8_t queue, std::initializer_list<unsigned> cos) {
    std::uint32_t v = std::uint32_t{queue} << 8;
    for (unsigned c : cos) v |= 1u << (c % 32);
    return v;
}

TEST_F(DaemonTest, AQueueBeyondThreeLeavesTheMapAlone) {
    const Exchange ex = daemon(handle, QD_CLI_CMD_CONF_WRR_COSMAP, 0, cos_value(4, {0}));
    EXPECT_EQ(host32(ex.payload, 0), static_cast<std::uint32_t>(qdsim::kErrBadArgument));
    EXPECT_EQ(cos_map(handle), (Bytes{0, 0, 1, 1, 2, 2, 3, 3}));
}

TEST_F(DaemonTest, MalformedRequestsAreRefusedWithAnErrorStatus) {
    const std::uint8_t eleven[11] = {QD_CLI_CMD_SHOW_WRR_COSMAP};
    Exchange ex = exchange(handle, MTS_NODE_LOCAL, QD_MTS_SAP, QD_CLI_OPC, eleven, sizeof eleven, 0);
    ASSERT_EQ(ex.payload.size(), 8u);
    EXPECT_EQ(host32(ex.payload, 0), static_cast<std::uint32_t>(qdsim::kErrBadRequest));
    EXPECT_EQ(host32(ex.payload, 4), static_cast<std::uint32_t>(qdsim::kErrBadRequest));

    qd_cli_req req{};
    req.command = QD_CLI_CMD_SHOW_WRR_COSMAP;
    req.reserved[1] = 1;
    ex = exchange(handle, MTS_NODE_LOCAL, QD_MTS_SAP, QD_CLI_OPC, &req, sizeof req, 0);
    EXPECT_EQ(host32(ex.payload, 0), static_cast<std::uint32_t>(qdsim::kErrBadRequest));
    ex = daemon(handle, 99);  // a code nobody serves: "not supported" in both status places
    ASSERT_EQ(ex.payload.size(), 8u);
    EXPECT_EQ(host32(ex.payload, 0), QD_STATUS_UNSUPPORTED);
    EXPECT_EQ(host32(ex.payload, 4), QD_STATUS_UNSUPPORTED);
}

TEST_F(DaemonTest, ARegisteredCommandGetsTheDecodedRequestAndTheModel) {
    qdsim::daemon::Request seen;
    ASSERT_TRUE(qdsim::daemon::register_command(
        {99, "test", [&](const qdsim::daemon::Request &r, qdsim::Model &m) {
             seen = r;
             return qdsim::daemon::Reply::status(static_cast<std::uint32_t>(m.interfaces().size()));
         }}));
    EXPECT_FALSE(qdsim::daemon::register_command({99, "again", nullptr}));
    const Exchange ex = daemon(handle, 99, 0x1a000000, 77);
    qdsim::daemon::unregister_command(99);
    EXPECT_EQ(seen.command, 99);
    EXPECT_EQ(seen.if_index, 0x1a000000u);
    EXPECT_EQ(seen.arg, 77u);
    EXPECT_EQ(seen.mts_handle, handle);
    EXPECT_EQ(host32(ex.payload, 0), 192u);
    qdsim::take_diagnostics();
}

TEST_F(DaemonTest, DebugDumpRefusesWhatItCannotDeliver) {
    const qd_debug_req req{0x01000000u, 0, 0, 0};
    EXPECT_EQ(sdwrap_debug_dump(handle, MTS_NODE_LOCAL, QD_MTS_SAP, &req, 12, QD_DEBUG_FUNC_PRINT_ALL), qdsim::kErrBadRequest);
    EXPECT_EQ(sdwrap_debug_dump(handle, MTS_NODE_LOCAL, 613, &req, 16, QD_DEBUG_FUNC_PRINT_ALL), qdsim::kErrNoRoute);
    EXPECT_EQ(sdwrap_debug_dump(handle, MTS_NODE_LOCAL, QD_MTS_SAP, &req, 16, "qd_no_such_function"), qdsim::kErrUnsupported);
    EXPECT_EQ(sdwrap_debug_dump(0x999, MTS_NODE_LOCAL, QD_MTS_SAP, &req, 16, QD_DEBUG_FUNC_PRINT_ALL), qdsim::kErrBadHandle);
    EXPECT_EQ(output, "");
    qdsim::take_diagnostics();
}

TEST_F(DaemonTest, DebugFunctionsCanBeAdded) {
    qdsim::daemon::register_debug_function("qd_test_dump", [](const qdsim::daemon::DebugRequest &r, qdsim::Model &) {
        return "words " + std::to_string(r.word(0)) + " " + std::to_string(r.word(3)) + "\n";
    });
    const std::uint32_t words[4] = {1, 2, 3, 4};
    sdwrap_debug_dump(handle, MTS_NODE_LOCAL, QD_MTS_SAP, words, 16, "qd_test_dump");
    qdsim::daemon::unregister_debug_function("qd_test_dump");
    EXPECT_EQ(output, "words 1 4\n");
}

}  // namespace
}  // namespace simtest
