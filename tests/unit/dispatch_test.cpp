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
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kEth1, 26, "Ethernet1/1");
        pf().add_interface(kEth2, 26, "Ethernet1/2");
        pf().add_interface(kSub, 26, "Ethernet1/1.7", 0, /*sub_intf=*/true);
        pf().add_interface(kAlt, 1, "port-alt4", 0, /*sub_intf=*/true);
        pf().add_interface(kHif, 31, "Ethernet101/1/1", 6);
        pf().add_interface(kOther, 5, "mgmt0");
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

TEST_F(DispatchTest, NamedInterfacesAreReportedInOrderAndTheLastResultIsReturned) {
    qdtest::Command cmd;
    cmd.handle(0x4d7);
    std::string out;
    pf().request_attrs = {if_attr(kEth1), if_attr(kEth2)};
    pf().replies.push_back(Reply::bytes(eth_reply()));
    pf().replies.push_back(Reply::send_failure(0x40aa0001));
    EXPECT_EQ(run(cmd, out), 0x40aa0001);
    EXPECT_EQ(out, "");  // no newline after a named interface, whatever its result
    ASSERT_EQ(pf().sent.size(), 2u);
    EXPECT_EQ(pf().sent[0].payload, eth_request(kEth1));
    EXPECT_EQ(pf().sent[1].payload, eth_request(kEth2));
    EXPECT_EQ(pf().sent[0].handle, 0x4d7u);
    EXPECT_EQ(pf().printed.rfind("Ethernet1/1 queuing information:\n", 0), 0u) << pf().printed;
    EXPECT_TRUE(pf().enum_calls.empty());

    restart();
    pf().request_attrs = {if_attr(kEth2), if_attr(kEth1)};
    pf().replies.push_back(Reply::recv_failure(0x40aa0001));
    pf().replies.push_back(Reply::bytes(eth_reply()));
    EXPECT_EQ(run(cmd, out), 0);
}

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

    restart();  // an empty request
    EXPECT_EQ(run(cmd, out), 0);
    EXPECT_EQ(out, "");
    EXPECT_EQ(pf().enum_calls.size(), 4u);
}

TEST_F(DispatchTest, RefusedInterfacesAreToldAndNothingIsAsked) {
    const struct {
        const char *what;
        Attr attr;
        const char *told;
    } cases[] = {
        {"index 0", if_attr(0), "Invalid interface\n"},
        {"no value", Attr{ATTR_IF_INDEX, {}}, "Invalid interface\n"},
        {"short value", Attr{ATTR_IF_INDEX, {0x00, 0x10}}, "Invalid interface\n"},
        {"Ethernet sub-interface", if_attr(kSub), "Command not allowed on sub-interface! \n"},
        {"type without report", if_attr(kOther), ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        restart();
        qdtest::Command cmd;
        std::string out;
        pf().request_attrs = {c.attr};
        EXPECT_EQ(run(cmd, out), 0);
        EXPECT_EQ(out, c.told);
        EXPECT_TRUE(pf().sent.empty());
        EXPECT_TRUE(pf().printer_calls.empty());
        EXPECT_TRUE(pf().enum_calls.empty());  // an interface was named, even if refused
    }
    EXPECT_EQ(qd_cli_show_queuing_interface(nullptr), 1);
    EXPECT_EQ(qd_cli_show_queuing_ifindex(nullptr, kEth1), 1);
    EXPECT_EQ(qd_cli_show_queuing_intf_all(nullptr), 1);
}

TEST_F(DispatchTest, Type1GoesToTheEthernetReportAndType31ToTheHostInterfaceReport) {
    qdtest::Command cmd;
    cmd.handle(0x4d7);
    // Type 1 is reported like Ethernet, without the sub-interface check.
    pf().replies.push_back(Reply::bytes(eth_reply()));
    EXPECT_EQ(qd_cli_show_queuing_ifindex(cmd.info(), kAlt), 0);
    ASSERT_EQ(pf().sent.size(), 1u);
    EXPECT_EQ(pf().sent[0].payload, eth_request(kAlt));
    EXPECT_EQ(pf().printed.rfind("port-alt4 queuing information:\n", 0), 0u) << pf().printed;

    // A host interface: sub-command 16 to the agent of its slot (6: node 0x0702).
    restart();
    pf().replies.push_back(Reply::send_failure(0x40aa0001));
    EXPECT_EQ(qd_cli_show_queuing_ifindex(cmd.info(), kHif), 0);
    ASSERT_EQ(pf().sent.size(), 1u);
    const auto &sent = pf().sent[0];
    EXPECT_EQ(sent.node, 0x0702u);
    EXPECT_EQ(sent.sap, LC_STATS_SAP);
    EXPECT_EQ(sent.handle, 0x4d7u);
    ASSERT_EQ(sent.payload.size(), 40u);
    EXPECT_EQ(sent.payload[0], 16);
    EXPECT_EQ((Bytes{sent.payload.begin() + 32, sent.payload.begin() + 36}), (Bytes{0x1f, 0x06, 0x00, 0x00}));
    EXPECT_NE(pf().printed.find("Cmd send failed for Ethernet101/1/1 with error code link down\n"),
              std::string::npos)
        << pf().printed;
}

}  // namespace
