// SPDX-License-Identifier: MIT
// Onboard pause-event counts: the count table asked of the logging service
// (the event list is the fuzz target's, over its own segment calls).
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

const std::string kCountsHeader =
    "\n\nNumber of Pause Events per Port\n"
    "----------------------------\n"
    "Ethernet      Number of\n"
    "Interface     Pause Events\n"
    "----------------------------\n";

std::string run(std::int32_t (*handler)(), std::int32_t &rc) {
    return qdtest::capture_stdout([&] { rc = handler(); });
}

class PauseCountsTest : public qdtest::PlatformTest {
protected:
    // Answers the count query with `counts` (module 1-4, port 1-112).
    void answer(std::map<std::pair<int, int>, std::uint32_t> counts, std::int32_t rc = 0) {
        pf().sse_call2_handler = [counts, rc](std::uint32_t op, void *buffer, std::uint32_t length) {
            EXPECT_EQ(op, 1128u);
            EXPECT_EQ(length, 1796u);
            auto *words = static_cast<std::uint32_t *>(buffer);
            for (const auto &[where, count] : counts) words[1 + 112 * (where.first - 1) + (where.second - 1)] = count;
            return rc;
        };
    }
};

TEST_F(PauseCountsTest, PrintsEveryNonZeroCountInModuleAndPortOrder) {
    answer({{{4, 112}, 9}, {{1, 1}, 5}, {{2, 42}, 0x80000000u}, {{3, 7}, 0xffffffffu}}, 12345);
    std::int32_t rc = 1;
    const std::string out = run(qd_cli_show_logging_onboard_flow_control_td, rc);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(out, kCountsHeader +
                       " 1/1            5 \n"
                       " 2/42            -2147483648 \n"
                       " 3/7            -1 \n"
                       " 4/112            9 \n");
    ASSERT_EQ(pf().sse_call2_requests.size(), 1u);
    const qdtest::Bytes &request = pf().sse_call2_requests[0];
    ASSERT_EQ(request.size(), 1796u);
    EXPECT_EQ(qdtest::get_host32(request, 0), 7u);
    // The rest of the table goes out cleared: stack contents never show as counts.
    for (std::size_t i = 4; i < request.size(); ++i) ASSERT_EQ(request[i], 0) << "byte " << i;
}

TEST_F(PauseCountsTest, NoCountsSaysSoAndAFailureIsToldWithoutNewline) {
    answer({});
    std::int32_t rc = 1;
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_td, rc),
              kCountsHeader + "No Pause Events have occurred on the switch.\n");
    EXPECT_EQ(rc, 0);
    answer({{{1, 1}, 5}}, -1);
    EXPECT_EQ(run(qd_cli_show_logging_onboard_flow_control_td, rc), "There was a problem processing the request.");
    EXPECT_EQ(rc, -1);
}

}  // namespace
