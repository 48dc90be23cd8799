// The extended queuing report: the daemon's 413-byte host-order reply
// printed as 8 map rows, 8 pass rows and 8 drop rows; its typed arguments;
// the interface checks of its entry points; and every way the exchange can
// fail. Replies are written out byte by byte (this host is little-endian).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;
using qdtest::Reply;

constexpr std::uint32_t kEth = 0x1a000000u;
constexpr std::uint32_t kAlt = 0x01000400u;
constexpr std::uint32_t kSub = 0x1a000001u;
constexpr std::uint32_t kHif = 0x1f060000u;
constexpr std::uint32_t kOther = 0x05000001u;
constexpr std::uint32_t kHandle = 0x2b;

// status 0; queue 7 strict priority at level 7, the others DWRR; drop mode
// bits 0x81; CoS 4 mapped to queue 5; pass_count[0][0] and pass_count[1][3]
// above 2^32, drop_count[2][7] the largest 64-bit value.
const Bytes kReply = {
    0x00, 0x00, 0x00, 0x00,                          // status
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x07,  // sp_level[0..7]
    0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee,  // not read
    0x81,                                            // drop_mode_bits
    0x00, 0x01, 0x02, 0x03, 0x05, 0x05, 0x06, 0x07,  // cos_to_queue[0..7]
    // pass_count[0][0..7] at 29
    0x02, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,
    0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x05, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x07, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    // pass_count[1][0..7] at 93
    0x0a, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x0b, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x0c, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x07, 0x00, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00,
    0x0e, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x0f, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x11, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    // pass_count[2][0..7] at 157
    0x14, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x15, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x16, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x17, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x18, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x19, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x1a, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x1b, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    // drop_count[0][0..7] at 221
    0x64, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x65, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x66, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x67, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x68, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x69, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x6a, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x6b, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    // drop_count[1][0..7] at 285
    0x6e, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x6f, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x70, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x71, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x72, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x73, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x74, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x75, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    // drop_count[2][0..7] at 349
    0x78, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x79, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x7a, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x7b, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x7c, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x7d, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x7e, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
};

const char *const kReport =
    "Ethernet1/1 queuing information extend:\n"
    "Ingress Queuing\n"
    "COS to Queue Map  |  Q#        Type         Drop-mode\n"
    "======================================================\n"
    "COS[0] ===> Q[0]  |  Q[0]      DWRR           YES\n"
    "COS[1] ===> Q[1]  |  Q[1]      DWRR           NO\n"
    "COS[2] ===> Q[2]  |  Q[2]      DWRR           NO\n"
    "COS[3] ===> Q[3]  |  Q[3]      DWRR           NO\n"
    "COS[4] ===> Q[5]  |  Q[4]      DWRR           NO\n"
    "COS[5] ===> Q[5]  |  Q[5]      DWRR           NO\n"
    "COS[6] ===> Q[6]  |  Q[6]      DWRR           NO\n"
    "COS[7] ===> Q[7]  |  Q[7]      SP[7]          YES\n"
    "\nIngress Queue Packet Pass Count:\n"
    " Q#       40G[0]                  40G[1]                  40G[2]\n"
    "=========================================================================\n"
    "[0]           4294967298                      10                      20\n"
    "[1]                    1                      11                      21\n"
    "[2]                    2                      12                      22\n"
    "[3]                    3             21474836487                      23\n"
    "[4]                    4                      14                      24\n"
    "[5]                    5                      15                      25\n"
    "[6]                    6                      16                      26\n"
    "[7]                    7                      17                      27\n"
    "\nIngress Queue Packet Drop Count:\n"
    " Q#       40G[0]                  40G[1]                  40G[2]\n"
    "=========================================================================\n"
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
        pf().add_interface(kAlt, 1, "port-alt4", 0, /*sub_intf=*/true);
        pf().add_interface(kSub, 26, "Ethernet1/1.7", 0, /*sub_intf=*/true);
        pf().add_interface(kHif, 31, "Ethernet101/1/1", 6);
        pf().add_interface(kOther, 5, "mgmt0");
    }

    void restart() {
        for (const std::string &error : qdtest::ledger_errors()) ADD_FAILURE() << "message ledger: " << error;
        qdtest::reset();
        SetUp();
    }

    std::int32_t run(std::uint32_t if_index, const char *name = "Ethernet1/1") {
        qdtest::Command cmd;
        cmd.handle(kHandle);
        return qd_cli_show_queuing_if_extend(cmd.info(), if_index, name);
    }

    // The lines of the report's ingress map (rows 4 to 11 of the output).
    static std::vector<std::string> map_rows(const std::string &report) {
        std::vector<std::string> lines;
        std::size_t at = 0;
        while (at < report.size()) {
            const std::size_t end = report.find('\n', at);
            lines.push_back(report.substr(at, end - at));
            at = end == std::string::npos ? report.size() : end + 1;
        }
        if (lines.size() < 12) return {};
        return {lines.begin() + 4, lines.begin() + 12};
    }
};

TEST_F(ExtendedReportTest, ACompleteReplyPrintsTheWholeReportWithOneFlush) {
    ASSERT_EQ(kReply.size(), 413u);
    pf().replies.push_back(Reply::bytes(kReply));
    EXPECT_EQ(run(kEth), 0);
    EXPECT_EQ(pf().delivered, kReport);
    EXPECT_EQ(pf().flushes, 1u);

    ASSERT_EQ(pf().sent.size(), 1u);
    const auto &sent = pf().sent[0];
    EXPECT_EQ(sent.handle, kHandle);
    EXPECT_EQ(sent.node, MTS_NODE_LOCAL);
    EXPECT_EQ(sent.sap, QD_MTS_SAP);
    EXPECT_EQ(sent.opcode, QD_CLI_OPC);
    EXPECT_EQ(sent.payload, (Bytes{23, 0, 0, 0, 0x00, 0x00, 0x00, 0x1a, 0, 0, 0, 0}));
    for (const auto &call : pf().printer_calls) EXPECT_EQ(call.handle, pf().output_handle);
}

TEST_F(ExtendedReportTest, ValuesAreTypedArgumentsUnderTheirAttributeIds) {
    pf().replies.push_back(Reply::bytes(kReply));
    ASSERT_EQ(run(kEth), 0);
    const auto &calls = pf().printer_calls;
    ASSERT_EQ(calls.size(), 34u);  // heading, 3 map lines, 8 rows, 3 + 8, 3 + 8

    struct Arg {
        std::uint32_t attr, length;
        std::string text;
    };
    auto expect_args = [&](std::size_t call, const std::vector<Arg> &expected) {
        SCOPED_TRACE("printer call " + std::to_string(call) + ": " + calls[call].format);
        ASSERT_EQ(calls[call].args.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(calls[call].args[i].attr, expected[i].attr) << i;
            EXPECT_EQ(calls[call].args[i].length, expected[i].length) << i;
            EXPECT_EQ(calls[call].args[i].text, expected[i].text) << i;
        }
    };
    // The two text values keep the unsigned type byte and carry text lengths.
    expect_args(0, {{0x14ff00aa, 12, "Ethernet1/1"}});
    EXPECT_EQ(calls[0].args[0].value.back(), 0);
    expect_args(4, {{0x14ff00ab, 4, "0"}, {0x14ff00ac, 4, "0"}, {0x14ff00ab, 4, "0"}, {0x14ff00ae, 4, "YES"}});
    expect_args(8, {{0x14ff00ab, 4, "4"}, {0x14ff00ac, 4, "5"}, {0x14ff00ab, 4, "4"}, {0x14ff00ae, 3, "NO"}});
    expect_args(11, {{0x14ff00ab, 4, "7"},
                     {0x14ff00ac, 4, "7"},
                     {0x14ff00ab, 4, "7"},
                     {0x14ff00ad, 4, "7"},
                     {0x14ff00ae, 4, "YES"}});
    expect_args(15, {{0x14ff00af, 4, "0"}, {0x14ff00b0, 8, "4294967298"}, {0x14ff00b1, 8, "10"}, {0x14ff00b2, 8, "20"}});
    expect_args(33, {{0x14ff00b3, 4, "7"},
                     {0x14ff00b4, 8, "107"},
                     {0x14ff00b5, 8, "117"},
                     {0x14ff00b6, 8, "18446744073709551615"}});
    // Fixed lines carry no arguments.
    for (std::size_t fixed : {1u, 2u, 3u, 12u, 13u, 14u, 23u, 24u, 25u}) EXPECT_TRUE(calls[fixed].args.empty());
}

TEST_F(ExtendedReportTest, SchedulingAndDropModeFollowEachQueue) {
    // Every queue strict priority at its own level; drop mode bits 0x06:
    // queues 1 and 2 only (a reversed bit order would show 5 and 6).
    Bytes reply = kReply;
    for (int q = 0; q < 8; ++q) reply[4 + q] = static_cast<std::uint8_t>(q + 1);
    reply[20] = 0x06;
    pf().replies.push_back(Reply::bytes(reply));
    ASSERT_EQ(run(kEth), 0);
    const std::vector<std::string> expected = {
        "COS[0] ===> Q[0]  |  Q[0]      SP[1]          NO",  "COS[1] ===> Q[1]  |  Q[1]      SP[2]          YES",
        "COS[2] ===> Q[2]  |  Q[2]      SP[3]          YES", "COS[3] ===> Q[3]  |  Q[3]      SP[4]          NO",
        "COS[4] ===> Q[5]  |  Q[4]      SP[5]          NO",  "COS[5] ===> Q[5]  |  Q[5]      SP[6]          NO",
        "COS[6] ===> Q[6]  |  Q[6]      SP[7]          NO",  "COS[7] ===> Q[7]  |  Q[7]      SP[8]          NO",
    };
    EXPECT_EQ(map_rows(pf().delivered), expected);

    // All queues DWRR, no drop mode, every CoS on queue 0.
    restart();
    reply = kReply;
    for (int i = 0; i < 8; ++i) reply[4 + i] = reply[21 + i] = 0;
    reply[20] = 0;
    pf().replies.push_back(Reply::bytes(reply));
    ASSERT_EQ(run(kEth), 0);
    const std::vector<std::string> rows = map_rows(pf().delivered);
    ASSERT_EQ(rows.size(), 8u);
    for (int n = 0; n < 8; ++n)
        EXPECT_EQ(rows[n], "COS[" + std::to_string(n) + "] ===> Q[0]  |  Q[" + std::to_string(n) +
                               "]      DWRR           NO");
}

TEST_F(ExtendedReportTest, UnsupportedInterfaceIsToldWhateverTheCommandId) {
    Bytes reply = kReply;
    reply[0] = 0x12;  // 0x41f70012 in host order
    reply[1] = 0x00;
    reply[2] = 0xf7;
    reply[3] = 0x41;
    for (std::uint32_t id : {0u, CMD_ID_SHOW_QUEUING_IF, CMD_ID_UNSUPPORTED_MSG}) {
        SCOPED_TRACE(id);
        restart();
        pf().replies.push_back(Reply::bytes(reply));
        qdtest::Command cmd;
        cmd.id(id);
        EXPECT_EQ(qd_cli_show_queuing_if_extend(cmd.info(), kEth, "Ethernet1/1"), 1);
        EXPECT_EQ(pf().delivered, "Unsupported interface\n");
    }
    // The status alone is enough to tell it.
    restart();
    pf().replies.push_back(Reply::bytes({0x12, 0x00, 0xf7, 0x41}));
    EXPECT_EQ(run(kEth), 1);
    EXPECT_EQ(pf().delivered, "Unsupported interface\n");
    // The same value in network order is not the status.
    restart();
    reply = kReply;
    reply[0] = 0x41;
    reply[1] = 0xf7;
    reply[2] = 0x00;
    reply[3] = 0x12;
    pf().replies.push_back(Reply::bytes(reply));
    EXPECT_EQ(run(kEth), 0);
    EXPECT_EQ(pf().delivered, kReport);
}

TEST_F(ExtendedReportTest, TransportFailuresAreToldThroughThePrinter) {
    // A failed send: the error text in a 50-byte buffer, so at most 49
    // characters and here no room left for the newline; no receive follows.
    const std::string long_text = "the transport refused the message: queue full on node 0xfe000000";
    pf().error_texts[0x40aa0001] = long_text;
    pf().replies.push_back(Reply::send_failure(0x40aa0001));
    EXPECT_EQ(run(kEth), 0x40aa0001);
    EXPECT_EQ(pf().delivered, long_text.substr(0, 49));
    ASSERT_EQ(pf().sent.size(), 1u);
    EXPECT_FALSE(pf().sent[0].received);

    // A failed receive, with a per-cent sign in the text printed as it stands.
    restart();
    pf().error_texts[0x40aa0002] = "100% busy %s";
    pf().replies.push_back(Reply::recv_failure(0x40aa0002));
    EXPECT_EQ(run(kEth), 0x40aa0002);
    EXPECT_EQ(pf().delivered, "100% busy %s\n");
    EXPECT_EQ(pf().flushes, 1u);

    // A reply without payload.
    restart();
    pf().replies.push_back(Reply::empty());
    EXPECT_EQ(run(kEth), 0);
    EXPECT_EQ(pf().delivered, "mts payload is empty");
    EXPECT_EQ(pf().flushes, 1u);
}

TEST_F(ExtendedReportTest, AShortReplyIsRefusedWithoutReadingPastItsEnd) {
    // The payload ends at an inaccessible page: a read past it would fault.
    for (std::size_t length : {412u, 28u, 3u}) {
        SCOPED_TRACE(length);
        restart();
        pf().replies.push_back(Reply::bytes(Bytes(kReply.begin(), kReply.begin() + length)));
        EXPECT_EQ(run(kEth), 0);
        EXPECT_EQ(pf().delivered,
                  "Truncated extended queuing reply: " + std::to_string(length) + " of 413 bytes\n");
    }
}

TEST_F(ExtendedReportTest, EntryTakesTheFirstArgumentAndChecksTheInterface) {
    struct Case {
        const char *what;
        std::function<void(qdtest::Command &)> args;
        const char *told;
        bool reported;
    };
    const Case cases[] = {
        {"Ethernet", [](qdtest::Command &c) { c.arg_u32(0, kEth, PARAM_ID_IF_INDEX); }, "", true},
        {"type 1, no sub-interface check", [](qdtest::Command &c) { c.arg_u32(0, kAlt); }, "", true},
        {"index 0", [](qdtest::Command &c) { c.arg_u32(0, 0); }, "Invalid interface\n", false},
        {"null value", [](qdtest::Command &c) { c.arg_null(0, PARAM_ID_IF_INDEX); }, "Invalid interface\n", false},
        {"no argument", [](qdtest::Command &) {}, "Invalid interface\n", false},
        {"sub-interface", [](qdtest::Command &c) { c.arg_u32(0, kSub); }, "Command not allowed on sub-interface! \n",
         false},
        {"host interface", [](qdtest::Command &c) { c.arg_u32(0, kHif); }, "", false},
        {"other type", [](qdtest::Command &c) { c.arg_u32(0, kOther); }, "", false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        restart();
        qdtest::Command cmd;
        c.args(cmd);
        if (c.reported) pf().replies.push_back(Reply::bytes(kReply));
        std::int32_t rc = -1;
        const std::string out = qdtest::capture_stdout([&] { rc = qd_cli_show_queuing_intf_extend(cmd.info()); });
        EXPECT_EQ(rc, 0);
        EXPECT_EQ(out, c.told);
        EXPECT_EQ(pf().sent.size(), c.reported ? 1u : 0u);
        if (!c.reported) {
            EXPECT_TRUE(pf().printer_calls.empty());
        }
    }
    // The name in the heading is the platform's name of the interface.
    EXPECT_EQ(pf().delivered, "");
    restart();
    qdtest::Command cmd;
    cmd.arg_u32(0, kAlt);
    pf().replies.push_back(Reply::bytes(kReply));
    ASSERT_EQ(qd_cli_show_queuing_intf_extend(cmd.info()), 0);
    EXPECT_EQ(pf().delivered.rfind("port-alt4 queuing information extend:\n", 0), 0u);

    EXPECT_EQ(qd_cli_show_queuing_intf_extend(nullptr), 1);
    EXPECT_EQ(qd_cli_show_queuing_ifindex_extend(nullptr, kEth), 1);
    EXPECT_EQ(qd_cli_show_queuing_if_extend(nullptr, kEth, "x"), 1);
}

TEST_F(ExtendedReportTest, ANameWithAPerCentSignPrintsAsItStands) {
    pf().replies.push_back(Reply::bytes(kReply));
    ASSERT_EQ(run(kEth, "Eth%s%n1"), 0);
    EXPECT_EQ(pf().delivered.rfind("Eth%s%n1 queuing information extend:\n", 0), 0u);
}

}  // namespace
