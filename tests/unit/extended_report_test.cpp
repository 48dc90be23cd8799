// SPDX-License-Identifier: MIT
// The extended queuing report: the daemon's 413-byte host-order reply
// printed as 8 map rows, 8 pass rows and 8 drop rows, and the checks of its
// entry points. Replies are written out byte by byte (this host is
// little-endian).
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <tuple>
#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;
using qdtest::Reply;

constexpr std::uint32_t kEth = 0x1a000000u, kAlt = 0x01000400u, kSub = 0x1a000001u;
constexpr std::uint32_t kHif = 0x1f060000u, kOther = 0x05000001u;

// Queue 7 strict priority at level 7, the others DWRR; drop-mode bits 0x81;
// CoS 4 on queue 5; pass_count[0][0] and [1][3] above 2^32 (low word
// first), drop_count[2][7] the largest 64-bit value.
const Bytes kReply = {
    0, 0, 0, 0,                                      // status
    0, 0, 0, 0, 0, 0, 0, 7,                          // sp_level[0..7]
    0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee,  // not read
    0x81,                                            // drop_mode_bits
    0, 1, 2, 3, 5, 5, 6, 7,                          // cos_to_queue[0..7]
    // pass_count[0][0..7], at 29
    2,0,0,0,1,0,0,0,  1,0,0,0,0,0,0,0,  2,0,0,0,0,0,0,0,  3,0,0,0,0,0,0,0,
    4,0,0,0,0,0,0,0,  5,0,0,0,0,0,0,0,  6,0,0,0,0,0,0,0,  7,0,0,0,0,0,0,0,
    // pass_count[1][0..7], at 93
    10,0,0,0,0,0,0,0,  11,0,0,0,0,0,0,0,  12,0,0,0,0,0,0,0,  7,0,0,0,5,0,0,0,
    14,0,0,0,0,0,0,0,  15,0,0,0,0,0,0,0,  16,0,0,0,0,0,0,0,  17,0,0,0,0,0,0,0,
    // pass_count[2][0..7], at 157
    20,0,0,0,0,0,0,0,  21,0,0,0,0,0,0,0,  22,0,0,0,0,0,0,0,  23,0,0,0,0,0,0,0,
    24,0,0,0,0,0,0,0,  25,0,0,0,0,0,0,0,  26,0,0,0,0,0,0,0,  27,0,0,0,0,0,0,0,
    // drop_count[0][0..7], at 221
    100,0,0,0,0,0,0,0,  101,0,0,0,0,0,0,0,  102,0,0,0,0,0,0,0,  103,0,0,0,0,0,0,0,
    104,0,0,0,0,0,0,0,  105,0,0,0,0,0,0,0,  106,0,0,0,0,0,0,0,  107,0,0,0,0,0,0,0,
    // drop_count[1][0..7], at 285
    110,0,0,0,0,0,0,0,  111,0,0,0,0,0,0,0,  112,0,0,0,0,0,0,0,  113,0,0,0,0,0,0,0,
    114,0,0,0,0,0,0,0,  115,0,0,0,0,0,0,0,  116,0,0,0,0,0,0,0,  117,0,0,0,0,0,0,0,
    // drop_count[2][0..7], at 349
    120,0,0,0,0,0,0,0,  121,0,0,0,0,0,0,0,  122,0,0,0,0,0,0,0,  123,0,0,0,0,0,0,0,
    124,0,0,0,0,0,0,0,  125,0,0,0,0,0,0,0,  126,0,0,0,0,0,0,0,  255,255,255,255,255,255,255,255,
};

const std::string kRows =
    "COS[0] ===> Q[0]  |  Q[0]      DWRR           YES\n"
    "COS[1] ===> Q[1]  |  Q[1]      DWRR           NO\n"
    "COS[2] ===> Q[2]  |  Q[2]      DWRR           NO\n"
    "COS[3] ===> Q[3]  |  Q[3]      DWRR           NO\n"
    "COS[4] ===> Q[5]  |  Q[4]      DWRR           NO\n"
    "COS[5] ===> Q[5]  |  Q[5]      DWRR           NO\n"
    "COS[6] ===> Q[6]  |  Q[6]      DWRR           NO\n"
    "COS[7] ===> Q[7]  |  Q[7]      SP[7]          YES\n";
const std::string kChannels =
    " Q#       40G[0]                  40G[1]                  40G[2]\n"
    "=========================================================================\n";
const std::string kReport =
    "Ethernet1/1 queuing information extend:\n"
    "Ingress Queuing\n"
    "COS to Queue Map  |  Q#        Type         Drop-mode\n"
    "======================================================\n" +
    kRows + "\nIngress Queue Packet Pass Count:\n" + kChannels +
    "[0]           4294967298                      10                      20\n"
    "[1]                    1                      11                      21\n"
    "[2]                    2                      12                      22\n"
    "[3]                    3             21474836487                      23\n"
    "[4]                    4                      14                      24\n"
    "[5]                    5                      15                      25\n"
    "[6]                    6                      16                      26\n"
    "[7]                    7                      17                      27\n"
    "\nIngress Queue Packet Drop Count:\n" + kChannels +
    "[0]                  100                     110                     120\n"
    "[1]                  101                     111                     121\n"
    "[2]                  102                     112                     122\n"
    "[3]                  103                     113                     123\n"
    "[4]                  104                     114                     124\n"
    "[5]                  105                     115                     125\n"
    "[6]                  106                     116                     126\n"
    "[7]                  107                     117    18446744073709551615\n";

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
    EXPECT_EQ(pf().delivered, "port%s4" + kReport.substr(std::string("Ethernet1/1").size()));

    EXPECT_EQ(qd_cli_show_queuing_intf_extend(nullptr), 1);
    EXPECT_EQ(qd_cli_show_queuing_ifindex_extend(nullptr, kEth), 1);
    EXPECT_EQ(qd_cli_show_queuing_if_extend(nullptr, kEth, "x"), 1);
}

}  // namespace
