// SPDX-License-Identifier: MIT
// Clearing of queuing counters whose exchange with the daemon fails.
#include <gtest/gtest.h>

#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Command;
using qdtest::EnumPass;
using qdtest::Reply;

constexpr std::uint32_t kHif = 0x1f010203u;
constexpr std::int32_t kLinkDown = 0x40aa0011;

class ClearTest : public qdtest::PlatformTest {};

// A failed exchange with the daemon (one interface or all) is told in the
// clear's own words and nothing else is cleared; the ledger (the fixture)
// checks that every message is released. What a clear that succeeds does is
// held by the end-to-end cases, which read the simulated switch's counters.
TEST_F(ClearTest, FailedExchangeStopsBeforeAnythingElseIsCleared) {
    pf().add_interface(kHif, 31, "Ethernet101/1/3");
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

}  // namespace
