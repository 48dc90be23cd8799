// SPDX-License-Identifier: MIT
// The extended queuing report's entry points: which first argument reaches
// the report (its rows are held by the recorded contract).
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;
using qdtest::Reply;

constexpr std::uint32_t kEth = 0x1a000000u, kAlt = 0x01000400u, kSub = 0x1a000001u;
constexpr std::uint32_t kHif = 0x1f060000u, kOther = 0x05000001u;

// A reply of the right size; what it holds is the recorded contract's.
const Bytes kReply(413, 0);

class ExtendedReportTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kEth, 26, "Ethernet1/1");
        pf().add_interface(kAlt, 1, "port%s4", 0, /*sub_intf=*/true);
        pf().add_interface(kSub, 26, "Ethernet1/1.7", 0, /*sub_intf=*/true);
        pf().add_interface(kHif, 31, "Ethernet101/1/1", 6);
        pf().add_interface(kOther, 5, "mgmt0");
    }
    void restart() {
        for (const std::string &error : qdtest::ledger_errors()) ADD_FAILURE() << "message ledger: " << error;
        qdtest::reset();
        SetUp();
    }
    std::int32_t run(Reply reply) {
        pf().replies.push_back(std::move(reply));
        qdtest::Command cmd;
        cmd.handle(0x2b);
        return qd_cli_show_queuing_if_extend(cmd.info(), kEth, "Ethernet1/1");
    }
};

TEST_F(ExtendedReportTest, EntryTakesTheFirstArgumentAndChecksTheInterface) {
    using Args = std::function<void(qdtest::Command &)>;
    struct Case {
        const char *what;
        Args args;
        const char *told;
        bool reported;
    };
    const Case cases[] = {
        {"Ethernet", [](auto &c) { c.arg_u32(0, kEth, PARAM_ID_IF_INDEX); }, "", true},
        {"type 1, no sub-interface check", [](auto &c) { c.arg_u32(0, kAlt); }, "", true},
        {"index 0", [](auto &c) { c.arg_u32(0, 0); }, "Invalid interface\n", false},
        {"null value", [](auto &c) { c.arg_null(0, PARAM_ID_IF_INDEX); }, "Invalid interface\n", false},
        {"no argument", [](auto &) {}, "Invalid interface\n", false},
        {"sub-interface", [](auto &c) { c.arg_u32(0, kSub); }, "Command not allowed on sub-interface! \n", false},
        {"host interface", [](auto &c) { c.arg_u32(0, kHif); }, "", false},
        {"other type", [](auto &c) { c.arg_u32(0, kOther); }, "", false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        restart();
        qdtest::Command cmd;
        c.args(cmd);
        if (c.reported) pf().replies.push_back(Reply::bytes(kReply));
        std::int32_t rc = -1;
        EXPECT_EQ(qdtest::capture_stdout([&] { rc = qd_cli_show_queuing_intf_extend(cmd.info()); }), c.told);
        EXPECT_EQ(rc, 0);
        EXPECT_EQ(pf().sent.size(), c.reported ? 1u : 0u);
        EXPECT_EQ(pf().printer_calls.empty(), !c.reported);
    }
    // The heading names the interface as the platform does; a '%' in it is text.
    EXPECT_EQ(pf().delivered, "");
    restart();
    qdtest::Command cmd;
    cmd.arg_u32(0, kAlt);
    pf().replies.push_back(Reply::bytes(kReply));
    ASSERT_EQ(qd_cli_show_queuing_intf_extend(cmd.info()), 0);
    EXPECT_EQ(pf().delivered.rfind("port%s4 queuing information extend:\n", 0), 0u);

    EXPECT_EQ(qd_cli_show_queuing_intf_extend(nullptr), 1);
    EXPECT_EQ(qd_cli_show_queuing_ifindex_extend(nullptr, kEth), 1);
    EXPECT_EQ(qd_cli_show_queuing_if_extend(nullptr, kEth, "x"), 1);
}

}  // namespace
