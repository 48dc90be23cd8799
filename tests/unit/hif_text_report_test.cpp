// SPDX-License-Identifier: MIT
// The host-interface queuing report on standard output.
#include <gtest/gtest.h>

#include "double/fixture.hpp"
#include "hif_reply.hpp"
#include "qdcli/handlers.h"

namespace {

using hiftest::HifReply;
using hiftest::kIfIndex;
using hiftest::kName;
using hiftest::sample_reply;
using qdtest::Reply;

std::string between(const std::string &s, const std::string &from, const std::string &to) {
    const auto begin = s.find(from);
    const auto end = s.find(to, begin == std::string::npos ? 0 : begin + 1);
    if (begin == std::string::npos || end == std::string::npos) return "<missing " + from + " ... " + to + ">";
    return s.substr(begin, end - begin);
}

class HifTextReport : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kIfIndex, 31, kName, hiftest::kSlot);
        pf().tx_queue_drops[kIfIndex] = 8589934595ull;
    }
    std::string run(Reply reply, bool detailed = false, const char *name = kName) {
        pf().replies.push_back(std::move(reply));
        qdtest::Command command;
        command.handle(7).id(detailed ? 59 : 18);  // 18: any other command
        std::int32_t rc = -1;
        const std::string out = qdtest::capture_stdout([&] { rc = qd_cli_show_queuing_hif(command.info(), kIfIndex, name); });
        EXPECT_EQ(rc, 0);
        return out;
    }
    std::string run(const HifReply &reply, bool detailed = false) { return run(Reply::bytes(reply.b), detailed); }
};

TEST_F(HifTextReport, WholeReportInFormatZero) {
    const std::string expected =
        "if_slot 4, ifidx 0x1f640000\n"
        "Ethernet101/1/1 queuing information:\n"
        "  Input buffer allocation:\n"
        "  Qos-group: 1  3  (shared)\n"
        "  frh: 0\n"
        "  drop-type: no-drop\n"
        "  cos: 3\n"
        "  xon       xoff      buffer-size\n"
        "  ---------+---------+-----------\n"
        "  100       200       3000     \n"
        "\n"
        "  Qos-group: 0 \n"
        "  frh: 2\n"
        "  drop-type: drop\n"
        "  cos: 0 1 2 4 5 6 7\n"
        "  xon       xoff      buffer-size\n"
        "  ---------+---------+-----------\n"
        "  10        20        40       \n"
        "\n"
        "  Queueing:\n"
        "  queue    qos-group    cos            priority  bandwidth mtu \n"
        "  --------+------------+--------------+---------+---------+----\n"
        "  2        0            0 1 2           WRR        50      9216\n"
        "  3        1 3          3               WRR        50      1500\n"
        "  ctrl-lo  n/a          6               PRI         0      2240\n"
        "\n"
        "  Buffer threshold: 65536 bytes\n"
        "  Queue limit: Disabled\n"
        "\n"
        "  Queue Statistics:\n"
        "  queue  rx                    \n"
        "  ------+---------------      \n"
        "  0      5              \n"
        "  2      4294967301     \n"
        "  3      12345          \n"
        "\n"
        "  Port Statistics:\n"
        "  tx queue drop   mux ovflow \n"
        "  ---------------+-----------\n"
        "  8589934595        Active (Port 1)\n"
        "\n"
        "  Priority-flow-control enabled: yes\n"
        "  Flow-control status: \n"
        "  cos     qos-group   rx pause  tx pause  masked rx pause\n"
        "  -------+-----------+---------+---------+---------------\n"
        "  0              0    xoff      xoff      xoff\n"
        "  1              1    xon       xoff      xon \n"
        "  2              2    xoff      xoff      xoff\n"
        "  3            n/a    xon       xoff      xon \n"
        "  4              7    xon       xoff      xon \n"
        "  5            n/a    xon       xoff      xon \n"
        "  6              0    xon       xoff      xon \n"
        "  7            n/a    xon       xoff      xon \n";
    EXPECT_EQ(run(sample_reply(0)), expected);

    ASSERT_EQ(pf().sent.size(), 1u);
    const auto &sent = pf().sent[0];
    EXPECT_EQ(sent.handle, 7u);
    EXPECT_EQ(sent.node, 0x0502u);  // slot 4
    EXPECT_EQ(sent.sap, 620u);
    EXPECT_EQ(sent.opcode, 111638u);
    qdtest::Bytes request(40, 0);
    request[0] = 16;
    request[1] = 3;
    request[2] = 1;
    request[24] = 1;
    request[32] = 0x1f;
    request[33] = 0x64;
    EXPECT_EQ(sent.payload, request);
    EXPECT_EQ(sent.recv_opts.word[0], 1u);
    EXPECT_EQ(sent.recv_opts.word[2], 5u);
    EXPECT_EQ(pf().qos_counter_queries, std::vector<std::uint32_t>{kIfIndex});
}

TEST_F(HifTextReport, FormatFourHasTwoLimitsTwoRowsPerQueueAndNoPortStatistics) {
    const std::string plain = run(sample_reply(4));
    EXPECT_EQ(between(plain, "\n  Queue Limit Tx", "  2rx|"),
              "\n  Queue Limit Tx: Disabled\n"
              "  Queue Limit Rx: 4096 bytes\n"
              "\n"
              "  Queue Statistics:\n"
              "  ---+----------------+-----------+------------+----------+-----------+\n"
              "  Que|Received /      |Tail Drop  |No Buffer   |MAC Error |Multicast  |\n"
              "  No |Transmitted     |           |            |          |Tail Drop  |\n"
              "  ---+----------------+-----------+------------+----------+-----------+\n"
              "  0rx|               5|         71|          81|        91|     -     |\n"
              "  0tx|               6|         70|          80|        90|         99|\n"
              "  ---+----------------+-----------+------------+----------+-----------+\n");
    EXPECT_EQ(between(plain, "  3tx|", "\n  Priority"),
              "  3tx|           54321|          0|           0|         0|          0|\n"
              "  ---+----------------+-----------+------------+----------+-----------+\n");
    // A control buffer is hidden outside single-interface mode once the format is non-zero.
    EXPECT_EQ(plain.find("Qos-group: 0"), std::string::npos);
    EXPECT_EQ(plain.find("Qos-group: ctrl"), std::string::npos);

    const std::string detailed = run(sample_reply(4), true);
    EXPECT_EQ(between(detailed, "\n  Queue Statistics:", "\n  Priority"),
              "\n  Queue Statistics:\n"
              "  ---+----------------+-----------+------------+----------+-----------+-----+\n"
              "  Que|Received /      |Tail Drop  |No Buffer   |MAC Error |Multicast  |Flags|\n"
              "  No |Transmitted     |           |            |          |Tail Drop  |     |\n"
              "  ---+----------------+-----------+------------+----------+-----------+-----+\n"
              "  0rx|               5|         71|          81|        91|     -     | data|\n"
              "  0tx|               6|         70|          80|        90|         99|     |\n"
              "  ---+----------------+-----------+------------+----------+-----------+-----+\n"
              "  2rx|      4294967301|          2|           4|         6|     -     | data|\n"
              "  2tx|            1000|          1|           3|         5|          7|     |\n"
              "  ---+----------------+-----------+------------+----------+-----------+-----+\n"
              "  3rx|           12345|          0|           0|         0|     -     | data|\n"
              "  3tx|           54321|          0|           0|         0|          0|     |\n"
              "  ---+----------------+-----------+------------+----------+-----------+-----+\n"
              "  1rx|               7|          0|           0|         0|     -     | ctrl|\n"
              "  1tx|               8|          0|           0|         0|          0|     |\n"
              "  ---+----------------+-----------+------------+----------+-----------+-----+\n");
    EXPECT_NE(detailed.find("  Input buffer allocation:\n  Qos-group: 1  3  (shared)\n"), std::string::npos);
    EXPECT_NE(detailed.find("\n  Qos-group: ctrl\n  frh: 2\n"), std::string::npos);
}

TEST_F(HifTextReport, FootnoteListsAtMostEightUnsupportedGroups) {
    HifReply r;
    r.counts(8, 0).format(0);
    for (std::size_t i = 0; i < 8; ++i) r.input_buffer(i, 0, 0, 0x03, 0x00, 0, 0, 0, 0, 0);
    EXPECT_NE(run(r).find("\n* qos-group 0 1 0 1 0 1 0 1  unsupported\n"), std::string::npos);
}

TEST_F(HifTextReport, SignedBufferValuesAndPercentInNames) {
    HifReply r;
    r.counts(1, 0).format(0).input_buffer(0, 0, 0, 0, 0, 0, 0, 0xffffffffu, 0x80000000u, 7);
    EXPECT_NE(run(Reply::bytes(r.b), false, "Eth%s%n").find("Eth%s%n queuing information:\n"), std::string::npos);
    EXPECT_NE(run(r).find("  -1        -2147483648 7        \n"), std::string::npos);
}

TEST_F(HifTextReport, FailuresAreToldAndTheReplyReleased) {
    const std::string first = "if_slot 4, ifidx 0x1f640000\n";
    pf().error_texts[0x40bb0001] = "no route";
    EXPECT_EQ(run(Reply::send_failure(0x40bb0001)), first + "Cmd send failed for Ethernet101/1/1 with error code no route\n");
    EXPECT_EQ(run(Reply::recv_failure(0x40bb0001)), first + "Cmd recv failed for Ethernet101/1/1 with error code no route\n");
    EXPECT_EQ(run(Reply::empty()), first + "mts payload is empty");
    EXPECT_EQ(run(sample_reply(0).status(0x40bb0001)),
              first + "Cmd not supported for Ethernet101/1/1, error code no route\n");
    // A status is read from the header alone; the body is not needed.
    auto header_only = HifReply().status(0x40bb0001).b;
    header_only.resize(32);
    EXPECT_EQ(run(Reply::bytes(header_only)), first + "Cmd not supported for Ethernet101/1/1, error code no route\n");

    auto short_reply = sample_reply(0).b;
    short_reply.resize(1139);
    EXPECT_EQ(run(Reply::bytes(short_reply)), first + "Reply for Ethernet101/1/1 truncated: 1139 of 1140 bytes\n");
    short_reply.resize(20);
    EXPECT_EQ(run(Reply::bytes(short_reply)), first + "Reply for Ethernet101/1/1 truncated: 20 of 1140 bytes\n");
    EXPECT_EQ(run(sample_reply(0).counts(9, 4)), first + "Reply for Ethernet101/1/1 damaged: 9 input buffers, room for 8\n");
    EXPECT_EQ(run(sample_reply(0).counts(3, 12)), first + "Reply for Ethernet101/1/1 damaged: 12 queues, room for 8\n");
    EXPECT_EQ(run(sample_reply(0).queue(3, 10, 0, 0, 0, 0, 0, 0)),
              first + "Reply for Ethernet101/1/1 damaged: queue id 10, room for 0 to 9\n");
    EXPECT_TRUE(pf().qos_counter_queries.empty());  // nothing asked for a reply that is not shown
}

}  // namespace
