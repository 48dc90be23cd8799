// SPDX-License-Identifier: MIT
// Switch-wide queuing report, host-interface part: the state words of the
// renderer, every attribute of its table, and attribute 58, which runs the
// host-interface report. Values are host-order byte literals.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "double/fixture.hpp"
#include "frame/exchange.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;

constexpr std::uint32_t kHif = 0x1f010000u;
constexpr const char *kName = "Ethernet101/1/1";

class SwitchStreamHifTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kHif, 31, kName, 4);
    }
    std::string run(std::vector<qdtest::Attr> attrs) {
        pf().response_attrs.insert(pf().response_attrs.end(), attrs.begin(), attrs.end());
        cmd_rsp rsp{};
        rsp.mts_handle = 0x77;
        return qdtest::capture_stdout([&] { result = qd_cli_show_queuing_intf_switch_hif(&rsp, kName, kHif); });
    }
    std::int32_t result = 0;
};

const std::string kHeading = "if_slot 3, ifidx 0x1f010000\nEthernet101/1/1 queuing information:\n  Input buffer allocation:";

// Attribute 58 runs the host-interface report for the handler's interface
// with a blank record carrying only the response's transport handle. Before
// the report is linked in, the stand-in above records the call; with the
// report linked in, what it sends shows the same: a sub-command 16 request
// for this interface to its slot's agent, over the response's handle.
TEST_F(SwitchStreamHifTest, AttributeRunsTheHostInterfaceReportWithABlankRecord) {
    pf().replies.push_back(qdtest::Reply::send_failure(0x40aa0001));
    pf().replies.push_back(qdtest::Reply::send_failure(0x40aa0001));
    const std::string out = run({{0x14ff00cd, {3}}, {0x14ff00ce, {0x00, 0x00, 0x01, 0x1f}}, {ATTR_RUN_HIF_REPORT, {}},
                                 {0x14ff00dc, {5, 0, 0, 0}}, {ATTR_RUN_HIF_REPORT, {1, 2, 3}}});
    EXPECT_EQ(result, -1);  // the report's own status is ignored
    EXPECT_EQ(out.substr(0, kHeading.size()), kHeading);
    const std::string between = "\n  Buffer threshold: 5 bytes";
    ASSERT_NE(out.find(between), std::string::npos);

    ASSERT_EQ(pf().sent.size(), 2u);
    for (const qdtest::SentRequest &sent : pf().sent) {
        EXPECT_EQ(sent.handle, 0x77u);
        EXPECT_EQ(sent.node, qdcli::lc_stats_node(4));
        ASSERT_EQ(sent.payload.size(), 40u);
        EXPECT_EQ(sent.payload[0], LC_STATS_CMD_HIF_QUEUING);
        EXPECT_EQ(Bytes(sent.payload.begin() + 32, sent.payload.begin() + 36), (Bytes{0x1f, 0x01, 0x00, 0x00}));
    }
    EXPECT_EQ(out.find("if_slot 4, ifidx 0x1f010000\n", kHeading.size()), kHeading.size());
    EXPECT_NE(out.find("if_slot 4, ifidx 0x1f010000\n", out.find(between)), std::string::npos);
}

// The host-interface report itself: only the single-interface command (59)
// asks for the detailed form; any other command gets the plain one.
TEST_F(SwitchStreamHifTest, OnlyTheSingleInterfaceCommandGetsTheDetailedReport) {
    const auto report = [&](std::uint32_t cmd_id) {
        Bytes reply(32 + 1108, 0);  // header (status 0) and an empty body
        pf().replies.push_back(qdtest::Reply::bytes(reply));
        qdtest::Command command;
        command.id(cmd_id);
        return qdtest::capture_stdout([&] { qd_cli_show_queuing_hif(command.info(), kHif, kName); });
    };
    const std::string plain = report(0);
    EXPECT_EQ(report(18), plain);
    EXPECT_NE(report(59), plain);
}

}  // namespace
