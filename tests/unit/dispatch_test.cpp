// SPDX-License-Identifier: MIT
// The show-queuing dispatcher: the request walk, the interface checks and
// the routing by interface type. The reports behind it are observed through
// what they send and print first (see dispatch_report_fallbacks.cpp), so
// these tests hold with the library's own reports linked in as well.
#include <gtest/gtest.h>

#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Attr;
using qdtest::Bytes;
using qdtest::Reply;

constexpr std::uint32_t kEth1 = 0x1a000000u, kEth2 = 0x1a001000u, kSub = 0x1a000001u;
constexpr std::uint32_t kAlt = 0x01000400u, kHif = 0x1f060000u, kOther = 0x05000001u;

// Ethernet queuing reply: 48-byte header (group_count 1, big-endian; status
// 0) and one zero-filled 152-byte record; or the same with status 0x41f70012
// at bytes 4-7 in host (little-endian) order.
Bytes eth_reply(bool unsupported = false) {
    Bytes b(200, 0);
    b[3] = 1;
    if (unsupported) b[4] = 0x12, b[6] = 0xf7, b[7] = 0x41;
    return b;
}

Bytes eth_request(std::uint32_t if_index) {
    Bytes b = {17, 0, 0, 0};
    const Bytes index = qdtest::host32_bytes(if_index);
    b.insert(b.end(), index.begin(), index.end());
    b.insert(b.end(), {0, 0, 0, 0});
    return b;
}

Attr if_attr(std::uint32_t if_index) { return Attr{ATTR_IF_INDEX, qdtest::host32_bytes(if_index)}; }

class DispatchTest : public qdtest::PlatformTest {
protected:
    DispatchTest()
        : PlatformTest({{kEth1, 26, "Ethernet1/1"}, {kEth2, 26, "Ethernet1/2"}, {kSub, 26, "Ethernet1/1.7", 0, true},
                        {kAlt, 1, "port-alt4", 0, true}, {kHif, 31, "Ethernet101/1/1", 6}, {kOther, 5, "mgmt0"}}) {}
    void SetUp() override {
        PlatformTest::SetUp();
        pf().error_texts[0x40aa0001] = "link down";
    }
    // A second scenario in the same test, after checking the first.
    void restart() {
        for (const std::string &error : qdtest::ledger_errors()) ADD_FAILURE() << "message ledger: " << error;
        qdtest::reset();
        SetUp();
    }
    std::int32_t run(qdtest::Command &cmd, std::string &out) {
        std::int32_t rc = -12345;
        out = qdtest::capture_stdout([&] { rc = qd_cli_show_queuing_interface(cmd.info()); });
        return rc;
    }
};

TEST_F(DispatchTest, ANamedInterfaceGetsTheSingleInterfaceCommandIdBeforeItsReport) {
    // With command id 18 the Ethernet report tells an unsupported interface;
    // the dispatcher has replaced it with 59 by the time the report runs.
    qdtest::Command cmd;
    cmd.id(CMD_ID_UNSUPPORTED_MSG);
    std::string out;
    pf().request_attrs = {if_attr(kEth1)};
    pf().replies.push_back(Reply::bytes(eth_reply(true)));
    EXPECT_EQ(run(cmd, out), 1);
    EXPECT_EQ(cmd.info()->cmd_id, CMD_ID_SHOW_QUEUING_IF);
    EXPECT_EQ(pf().printed, "");

    // Without a named interface the shell's id is left alone.
    restart();
    qdtest::Command all;
    all.id(CMD_ID_UNSUPPORTED_MSG);
    pf().enum_passes.push_back({0, 0, -1, std::vector<std::uint32_t>{kEth1}});
    pf().replies.push_back(Reply::bytes(eth_reply(true)));
    EXPECT_EQ(run(all, out), 0);
    EXPECT_EQ(all.info()->cmd_id, CMD_ID_UNSUPPORTED_MSG);
    EXPECT_EQ(pf().printed, "Unsupported interface\n");
    EXPECT_EQ(out, "");  // result 1: no newline
}

TEST_F(DispatchTest, ForeignAttributesAreToldAndWithoutAnInterfaceAllAreReported) {
    qdtest::Command cmd;
    std::string out;
    const Attr foreign[] = {{0x14ff0001u, qdtest::host32_bytes(7)}, {0x30ff0002u, {'x', 0}},
                            {0x0cff003au, qdtest::host32_bytes(kEth2)}};
    pf().request_attrs = {foreign[0], if_attr(kEth1), foreign[1], foreign[2]};
    pf().replies.push_back(Reply::bytes(eth_reply()));
    EXPECT_EQ(run(cmd, out), 0);
    EXPECT_EQ(out, "Invalid input \nInvalid input \nInvalid input \n");
    ASSERT_EQ(pf().sent.size(), 1u);
    EXPECT_EQ(pf().sent[0].payload, eth_request(kEth1));
    EXPECT_TRUE(pf().enum_calls.empty());

    // Only foreign attributes: told, then every interface is reported.
    restart();
    pf().request_attrs = {foreign[0], foreign[2]};
    pf().enum_passes.push_back({0, 0, -1, std::vector<std::uint32_t>{kOther}});
    EXPECT_EQ(run(cmd, out), 0);
    EXPECT_EQ(out, "Invalid input \nInvalid input \n\n");
    EXPECT_EQ(pf().enum_calls.size(), 4u);

    // The walk ends at any negative ID, not only at -1.
    restart();
    pf().request_attrs = {Attr{0xfffffffeu, {}}, if_attr(kEth1)};
    EXPECT_EQ(run(cmd, out), 0);
    EXPECT_EQ(out, "");
    EXPECT_TRUE(pf().sent.empty());
    EXPECT_EQ(pf().enum_calls.size(), 4u);

    restart();  // an empty request
    EXPECT_EQ(run(cmd, out), 0);
    EXPECT_EQ(out, "");
    EXPECT_EQ(pf().enum_calls.size(), 4u);
}

}  // namespace
