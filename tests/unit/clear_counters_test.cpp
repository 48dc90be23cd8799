// SPDX-License-Identifier: MIT
// Clearing of queuing and QoS counters over the scripted platform: refusals,
// failed exchanges, and which interfaces have QoS counters. What a clear
// that succeeds does is held by the end-to-end cases, which read the
// simulated switch's counters.
#include <gtest/gtest.h>

#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Command;
using qdtest::EnumPass;
using qdtest::Reply;

constexpr std::uint32_t kEth = 0x1a001000u;
constexpr std::uint32_t kHif = 0x1f010203u;
constexpr std::int32_t kLinkDown = 0x40aa0011;

class ClearInterfaceTest : public qdtest::PlatformTest {
protected:
    ClearInterfaceTest() : PlatformTest({{kEth, 26, "Ethernet1/7"}, {kHif, 31, "Ethernet101/1/3"}}) {}
    std::int32_t run(Command &command, std::string &out) {
        std::int32_t rc = 0;
        out = qdtest::capture_stdout([&] { rc = qd_cli_clear_queuing_interface(command.info()); });
        return rc;
    }
};

TEST_F(ClearInterfaceTest, FailedExchangeStopsBeforeAnythingElseIsCleared) {
    pf().error_texts[kLinkDown] = "link 100%s down";  // printed literally
    pf().enum_passes = {EnumPass{0, 0, -1, std::vector<std::uint32_t>{kHif}}};
    const struct {
        bool all;
        Reply reply;
        const char *out;
    } cases[] = {
        {false, Reply::send_failure(kLinkDown), "Error in MTS end to QD, link 100%s down\n"},
        {false, Reply::recv_failure(kLinkDown), "link 100%s down\n"},
        {true, Reply::send_failure(kLinkDown), "link 100%s down\n"},
        {true, Reply::recv_failure(kLinkDown), "link 100%s down\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.out);
        pf().replies.push_back(c.reply);
        Command command;
        command.arg_u32(0, kHif, PARAM_ID_IF_INDEX);
        std::int32_t rc = 0;
        const std::string out = qdtest::capture_stdout([&] {
            rc = c.all ? qd_cli_clear_queuing_all(command.info()) : qd_cli_clear_queuing_interface(command.info());
        });
        EXPECT_EQ(rc, kLinkDown);
        EXPECT_EQ(out, c.out);
    }
    EXPECT_EQ(pf().sent.size(), 4u);
    EXPECT_TRUE(pf().enum_calls.empty());
    EXPECT_TRUE(pf().qos_clears.empty());
    EXPECT_TRUE(pf().vsh_commands.empty());
}

TEST_F(ClearInterfaceTest, CommandWithoutAnInterfaceIsRefusedAndClearsNothing) {
    const struct {
        const char *what;
        void (*make)(Command &);
        unsigned value;
    } cases[] = {
        {"a first argument of another kind", [](Command &c) { c.arg_u32(3, 4242, 0x40200002u); }, 4242},
        {"no argument at all", [](Command &) {}, 0},
        {"an interface argument without a value", [](Command &c) { c.arg_null(0, PARAM_ID_IF_INDEX); }, 0},
        {"argc 0 although a record is there",
         [](Command &c) { c.arg_u32(0, kHif, PARAM_ID_IF_INDEX).info()->argc = 0; }, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Command command;
        c.make(command);
        std::string out;
        EXPECT_EQ(run(command, out), 0);
        EXPECT_EQ(out, "Error retrieving CLI interface parameter, value is " + std::to_string(c.value) + "\n");
    }
    EXPECT_EQ(qd_cli_clear_queuing_interface(nullptr), 1);
    EXPECT_TRUE(pf().sent.empty());
    EXPECT_TRUE(pf().qos_clears.empty());
    EXPECT_TRUE(pf().vsh_commands.empty());
}

class ClearQosTest : public qdtest::PlatformTest {};

TEST_F(ClearQosTest, OnlyHostInterfacesAreClearedAndTheirResultPassedOn) {
    pf().add_interface(kEth, 26, "Ethernet1/7");
    pf().add_interface(0x01000001u, 1, "fc1/1");
    pf().add_interface(kHif, 31, "Ethernet101/1/3");
    EXPECT_EQ(qd_cli_clear_qos_stats_ifindex(0), -1);
    EXPECT_EQ(qd_cli_clear_qos_stats_ifindex(kEth), 0);
    EXPECT_EQ(qd_cli_clear_qos_stats_ifindex(0x01000001u), 0);
    EXPECT_EQ(qd_cli_clear_qos_stats_ifindex(0x2a000000u), 0);  // unknown to the platform
    EXPECT_TRUE(pf().qos_clears.empty());

    EXPECT_EQ(qd_cli_clear_qos_stats_ifindex(kHif), 0);
    pf().qos_clear_rc = 0x40bb0003;
    EXPECT_EQ(qd_cli_clear_qos_stats_ifindex(kHif), 0x40bb0003);
    EXPECT_EQ(pf().qos_clears, (std::vector<std::uint32_t>{kHif, kHif}));
}


}  // namespace
