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

constexpr std::uint32_t kEth1 = 0x1a000000u;
constexpr std::uint32_t kEth2 = 0x1a001000u;
constexpr std::uint32_t kAlt = 0x01000400u;
constexpr std::uint32_t kHif = 0x1f060000u;
constexpr std::uint32_t kOther = 0x05000001u;
constexpr std::uint32_t kSub = 0x1a000001u;
constexpr std::uint32_t kHandle = 0x4d7;

// Ethernet queuing reply: a 48-byte header with group_count 1 (big-endian)
// and status 0, then one zero-filled 152-byte qos-group record.
Bytes eth_reply_complete() {
    Bytes b(200, 0);
    b[3] = 1;
    return b;
}

// Same length, status 0x41f70012 at bytes 4-7 in host (little-endian) order.
Bytes eth_reply_unsupported() {
    Bytes b = eth_reply_complete();
    b[4] = 0x12;
    b[5] = 0x00;
    b[6] = 0xf7;
    b[7] = 0x41;
    return b;
}

Attr if_attr(std::uint32_t if_index) { return Attr{ATTR_IF_INDEX, qdtest::host32_bytes(if_index)}; }

class DispatchTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kEth1, 26, "Ethernet1/1", 0);
        pf().add_interface(kEth2, 26, "Ethernet1/2", 0);
        pf().add_interface(kAlt, 1, "port-alt4", 0, /*sub_intf=*/true);
        pf().add_interface(kHif, 31, "Ethernet101/1/1", 6);
        pf().add_interface(kOther, 5, "mgmt0", 0);
        pf().add_interface(kSub, 26, "Ethernet1/1.7", 0, /*sub_intf=*/true);
        pf().error_texts[0x40aa0001] = "link down";
    }

    // Starts a second scenario in the same test, after checking the first.
    void restart() {
        for (const std::string &error : qdtest::ledger_errors()) ADD_FAILURE() << "message ledger: " << error;
        qdtest::reset();
        SetUp();
    }

    std::int32_t run_interface(cmd_paraminfo *info, std::string &out) {
        std::int32_t rc = -12345;
        out = qdtest::capture_stdout([&] { rc = qd_cli_show_queuing_interface(info); });
        return rc;
    }

    // The daemon request of the Ethernet report for `if_index`.
    static Bytes eth_request(std::uint32_t if_index) {
        Bytes b = {17, 0, 0, 0};
        const Bytes index = qdtest::host32_bytes(if_index);
        b.insert(b.end(), index.begin(), index.end());
        b.insert(b.end(), {0, 0, 0, 0});
        return b;
    }
};

TEST_F(DispatchTest, NamedInterfacesAreReportedInRequestOrderAndTheLastResultIsReturned) {
    qdtest::Command cmd;
    cmd.handle(kHandle);
    pf().request_attrs = {if_attr(kEth1), if_attr(kEth2)};
    pf().replies.push_back(Reply::bytes(eth_reply_complete()));
    pf().replies.push_back(Reply::send_failure(0x40aa0001));
    std::string out;
    EXPECT_EQ(run_interface(cmd.info(), out), 0x40aa0001);
    EXPECT_EQ(out, "");  // no newline after a named interface, whatever its result
    ASSERT_EQ(pf().sent.size(), 2u);
    EXPECT_EQ(pf().sent[0].payload, eth_request(kEth1));
    EXPECT_EQ(pf().sent[1].payload, eth_request(kEth2));
    EXPECT_EQ(pf().sent[0].handle, kHandle);
    EXPECT_EQ(pf().sent[0].node, MTS_NODE_LOCAL);
    EXPECT_EQ(pf().printed.rfind("Ethernet1/1 queuing information:\n", 0), 0u) << pf().printed;
    EXPECT_TRUE(pf().enum_calls.empty());

    // The other way round the second report succeeds, and so does the command.
    restart();
    pf().request_attrs = {if_attr(kEth2), if_attr(kEth1)};
    pf().replies.push_back(Reply::recv_failure(0x40aa0001));
    pf().replies.push_back(Reply::bytes(eth_reply_complete()));
    EXPECT_EQ(run_interface(cmd.info(), out), 0);
    EXPECT_NE(pf().printed.find("Ethernet1/1 queuing information:\n"), std::string::npos);
}

TEST_F(DispatchTest, NamingAnInterfaceSetsTheSingleInterfaceCommandIdBeforeItsReport) {
    // With command id 18 the Ethernet report tells an unsupported interface;
    // the dispatcher has replaced it with 59 by the time the report runs.
    qdtest::Command cmd;
    cmd.id(CMD_ID_UNSUPPORTED_MSG);
    pf().request_attrs = {if_attr(kEth1)};
    pf().replies.push_back(Reply::bytes(eth_reply_unsupported()));
    std::string out;
    EXPECT_EQ(run_interface(cmd.info(), out), 1);
    EXPECT_EQ(cmd.info()->cmd_id, CMD_ID_SHOW_QUEUING_IF);
    EXPECT_EQ(pf().printed.find("Unsupported interface"), std::string::npos);
    EXPECT_EQ(out, "");

    // Without a named interface the shell's command id is left alone.
    restart();
    qdtest::Command all;
    all.id(CMD_ID_UNSUPPORTED_MSG);
    pf().enum_passes.push_back({0, 0, -1, std::vector<std::uint32_t>{kEth1}});
    pf().replies.push_back(Reply::bytes(eth_reply_unsupported()));
    EXPECT_EQ(run_interface(all.info(), out), 0);
    EXPECT_EQ(all.info()->cmd_id, CMD_ID_UNSUPPORTED_MSG);
    EXPECT_NE(pf().printed.find("Unsupported interface\n"), std::string::npos);
    EXPECT_EQ(out, "");  // result 1: no newline
}

TEST_F(DispatchTest, ForeignAttributesAreToldOneByOneAndTheWalkGoesOn) {
    qdtest::Command cmd;
    pf().request_attrs = {Attr{0x14ff0001u, qdtest::host32_bytes(7)}, if_attr(kEth1),
                          Attr{0x30ff0002u, {'x', 0}}, Attr{0x0cff003au, qdtest::host32_bytes(kEth2)}};
    pf().replies.push_back(Reply::bytes(eth_reply_complete()));
    std::string out;
    EXPECT_EQ(run_interface(cmd.info(), out), 0);
    EXPECT_EQ(out, "Invalid input \nInvalid input \nInvalid input \n");
    ASSERT_EQ(pf().sent.size(), 1u);  // only the interface attribute was reported
    EXPECT_EQ(pf().sent[0].payload, eth_request(kEth1));
    EXPECT_TRUE(pf().enum_calls.empty());
}

TEST_F(DispatchTest, WithoutANamedInterfaceEveryInterfaceIsReported) {
    qdtest::Command cmd;
    pf().request_attrs = {Attr{0x14ff0001u, qdtest::host32_bytes(7)}, Attr{0x02ff0003u, {1}}};
    pf().enum_passes.push_back({0, 0, -1, std::vector<std::uint32_t>{kOther}});
    std::string out;
    EXPECT_EQ(run_interface(cmd.info(), out), 0);
    // The walk's messages first, then the newline of the interface reported with 0.
    EXPECT_EQ(out, "Invalid input \nInvalid input \n\n");
    EXPECT_EQ(pf().enum_calls.size(), 4u);

    // An empty request goes straight to the enumeration.
    restart();
    EXPECT_EQ(run_interface(cmd.info(), out), 0);
    EXPECT_EQ(out, "");
    EXPECT_EQ(pf().enum_calls.size(), 4u);
}

TEST_F(DispatchTest, RefusedInterfacesAreToldAndNothingIsAsked) {
    struct Case {
        const char *what;
        Attr attr;
        const char *told;
    };
    const Case cases[] = {
        {"index 0", if_attr(0), "Invalid interface\n"},
        {"no value", Attr{ATTR_IF_INDEX, {}}, "Invalid interface\n"},
        {"short value", Attr{ATTR_IF_INDEX, {0x00, 0x10}}, "Invalid interface\n"},
        {"Ethernet sub-interface", if_attr(kSub), "Command not allowed on sub-interface! \n"},
        {"type without report", if_attr(kOther), ""},
        {"unknown index", if_attr(0x77000000u), ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        restart();
        qdtest::Command cmd;
        pf().request_attrs = {c.attr};
        std::string out;
        EXPECT_EQ(run_interface(cmd.info(), out), 0);
        EXPECT_EQ(out, c.told);
        EXPECT_TRUE(pf().sent.empty());
        EXPECT_TRUE(pf().printer_calls.empty());
        EXPECT_TRUE(pf().enum_calls.empty());  // an interface was named, even if refused
    }
}

TEST_F(DispatchTest, EachInterfaceTypeGoesToItsReport) {
    qdtest::Command cmd;
    cmd.handle(kHandle);
    std::string out;

    // Type 1 is reported like Ethernet and never asked about sub-interfaces.
    pf().replies.push_back(Reply::bytes(eth_reply_complete()));
    out = qdtest::capture_stdout([&] { EXPECT_EQ(qd_cli_show_queuing_ifindex(cmd.info(), kAlt), 0); });
    EXPECT_EQ(out, "");
    ASSERT_EQ(pf().sent.size(), 1u);
    EXPECT_EQ(pf().sent[0].payload, eth_request(kAlt));
    EXPECT_EQ(pf().printed.rfind("port-alt4 queuing information:\n", 0), 0u) << pf().printed;

    // A host interface goes to the structured host-interface report: sub-command
    // 16 to the statistics agent of its slot (6 -> node 0x0702).
    restart();
    pf().replies.push_back(Reply::send_failure(0x40aa0001));
    out = qdtest::capture_stdout([&] { EXPECT_EQ(qd_cli_show_queuing_ifindex(cmd.info(), kHif), 0); });
    EXPECT_EQ(out, "");
    ASSERT_EQ(pf().sent.size(), 1u);
    const auto &sent = pf().sent[0];
    EXPECT_EQ(sent.node, 0x0702u);
    EXPECT_EQ(sent.sap, LC_STATS_SAP);
    EXPECT_EQ(sent.handle, kHandle);
    ASSERT_EQ(sent.payload.size(), 40u);
    EXPECT_EQ(sent.payload[0], 16);
    EXPECT_EQ((Bytes{sent.payload.begin() + 32, sent.payload.begin() + 36}), (Bytes{0x1f, 0x06, 0x00, 0x00}));
    EXPECT_NE(pf().printed.find("Cmd send failed for Ethernet101/1/1 with error code link down\n"),
              std::string::npos)
        << pf().printed;

    // Any other type: no report, no output, 0.
    restart();
    out = qdtest::capture_stdout([&] { EXPECT_EQ(qd_cli_show_queuing_ifindex(cmd.info(), kOther), 0); });
    EXPECT_EQ(out, "");
    EXPECT_TRUE(pf().sent.empty());
    EXPECT_TRUE(pf().printer_calls.empty());
}

TEST_F(DispatchTest, NullParameterInfoIsRefusedWithoutOutput) {
    std::string out = qdtest::capture_stdout([] {
        EXPECT_EQ(qd_cli_show_queuing_interface(nullptr), 1);
        EXPECT_EQ(qd_cli_show_queuing_ifindex(nullptr, kEth1), 1);
        EXPECT_EQ(qd_cli_show_queuing_intf_all(nullptr), 1);
    });
    EXPECT_EQ(out, "");
    EXPECT_TRUE(pf().sent.empty());
    EXPECT_TRUE(pf().enum_calls.empty());
}

}  // namespace
