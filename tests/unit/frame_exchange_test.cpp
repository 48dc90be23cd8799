// SPDX-License-Identifier: MIT
// The daemon and line-card exchanges, over the scripted platform.
#include <gtest/gtest.h>

#include "double/fixture.hpp"
#include "frame/exchange.hpp"

namespace {

using qdtest::Bytes;
using qdtest::Reply;

class ExchangeTest : public qdtest::PlatformTest {};

TEST_F(ExchangeTest, DaemonRequestIsTwelveHostOrderBytesToTheDaemon) {
    pf().replies.push_back(Reply::bytes({1, 2, 3, 4}));
    qdcli::ReceivedMessage reply(77);
    const auto result = qdcli::qd_exchange(77, 17, 0x1a001000u, 0x228, qdcli::Reply::read, reply);
    ASSERT_TRUE(result.ok());
    EXPECT_EQ(reply.payload().length(), 4u);
    reply.release();
    ASSERT_EQ(pf().sent.size(), 1u);
    const auto &sent = pf().sent[0];
    EXPECT_EQ(sent.handle, 77u);
    EXPECT_EQ(sent.node, 0xfe000000u);
    EXPECT_EQ(sent.sap, 612u);
    EXPECT_EQ(sent.opcode, 0x20002u);
    const Bytes expected = {17, 0, 0, 0, 0x00, 0x10, 0x00, 0x1a, 0x28, 0x02, 0, 0};
    EXPECT_EQ(sent.payload, expected);
    EXPECT_EQ(sent.recv_opts.word[0], 1u);
    EXPECT_EQ(sent.recv_opts.word[2], 0u);
}

TEST_F(ExchangeTest, FailuresReleaseWhatWasTakenAndNothingElse) {
    pf().replies.push_back(Reply::send_failure(0x40aa0001));
    pf().replies.push_back(Reply::recv_failure(0x40aa0002));
    pf().replies.push_back(Reply::empty());
    for (auto expected : {qdcli::Outcome::send_failed, qdcli::Outcome::recv_failed, qdcli::Outcome::empty_payload}) {
        qdcli::ReceivedMessage reply(1);
        EXPECT_EQ(qdcli::qd_exchange(1, 20, 0, 0, qdcli::Reply::read, reply).outcome, expected);
    }
    EXPECT_EQ(qdtest::live_messages(), 0u);
}

TEST_F(ExchangeTest, LineCardRequestLayoutAndNode) {
    EXPECT_EQ(qdcli::lc_stats_node(0), 0x0102u);
    EXPECT_EQ(qdcli::lc_stats_node(255), 0x0002u);
    auto request = qdcli::make_lc_request(23, 2);
    qdcli::put_be32(request.hdr.slot, 3);
    pf().replies.push_back(Reply::bytes(Bytes(32)));
    qdcli::ReceivedMessage reply(5);
    ASSERT_TRUE(qdcli::lc_stats_exchange(5, qdcli::lc_stats_node(3), request, reply).ok());
    const auto &sent = pf().sent[0];
    EXPECT_EQ(sent.node, 0x0402u);
    EXPECT_EQ(sent.sap, 620u);
    EXPECT_EQ(sent.opcode, 111638u);
    ASSERT_EQ(sent.payload.size(), 40u);
    EXPECT_EQ(sent.payload[0], 23);
    EXPECT_EQ(sent.payload[1], 2);
    EXPECT_EQ(sent.payload[2], 1);
    EXPECT_EQ((Bytes{sent.payload.begin() + 12, sent.payload.begin() + 16}), (Bytes{0, 0, 0, 3}));
    EXPECT_EQ((Bytes{sent.payload.begin() + 24, sent.payload.begin() + 28}), (Bytes{1, 0, 0, 0}));
    EXPECT_EQ(sent.recv_opts.word[2], 5u);
}

}  // namespace
