// SPDX-License-Identifier: MIT
// Decoding of hif_queuing_info from literal body bytes.
#include <gtest/gtest.h>

#include "double/platform_double.hpp"
#include "hif/hif_queuing_info.hpp"

namespace {

using qdcli::PayloadReader;
using qdcli::hif::HifDamage;
using qdcli::hif::HifQueuingInfo;
using qdtest::Bytes;
using qdtest::put_be32;

qdcli::hif::HifDecodeResult decode(const Bytes &body, HifQueuingInfo &info) {
    return qdcli::hif::decode_hif_queuing_info(PayloadReader(body.data(), body.size()), info);
}

void put(Bytes &b, std::size_t at, std::initializer_list<std::uint8_t> bytes) {
    for (const std::uint8_t v : bytes) b[at++] = v;
}

TEST(HifDecode, EveryFieldFromItsOffsetAndByteOrder) {
    Bytes body(1108, 0);
    put(body, 0, {0, 0, 0, 2, 0, 0, 0, 3, 7});
    // input buffer 1 (at 32); bytes 4 and 7 are not read
    put(body, 32, {3, 1, 0x05, 0x04, 0xee, 1, 0x81, 0xee, 0xff, 0xff, 0xff, 0xfe, 0, 0, 0, 7, 0, 1, 0, 9});
    // queue 2 (at 188)
    put(body, 188, {9, 0x30, 0x10, 0x06, 0x85, 0x02, 0x05, 0xdc});
    // statistics of queue id 9 (at 960): the low word of each counter first
    put(body, 960, {9, 0xee, 0x02, 0xee, 0, 0, 0, 5, 0, 0, 0, 1});
    put(body, 972, {0, 0, 0, 6});
    put(body, 1028, {0, 0, 0, 0x63, 0x80, 0, 0, 0});
    put(body, 236, {0, 0, 0, 11, 0, 0, 0, 0, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 13, 0, 0, 0, 0, 0, 0, 0, 14, 0, 0, 0, 2});
    put_be32(body, 268, 1);
    put_be32(body, 272, 8);
    put(body, 1076, {1, 0x0f, 0x01, 0x02, 0x0c, 0, 0x80, 0, 0x40, 0xff});
    put_be32(body, 1088, 0x105);
    put_be32(body, 1092, 0x2);
    put_be32(body, 1096, 65536);
    put_be32(body, 1100, 0xffffffffu);
    put_be32(body, 1104, 4096);

    HifQueuingInfo info;
    ASSERT_TRUE(decode(body, info).ok());
    EXPECT_EQ(info.ib_count, 2u);
    EXPECT_EQ(info.queue_count, 3u);
    EXPECT_EQ(info.stats_format, 7);

    const auto &ib = info.input_buffers[1];
    EXPECT_EQ(ib.frh, 3);
    EXPECT_EQ(ib.no_drop, 1);
    EXPECT_EQ(ib.qos_group_map, 0x05);
    EXPECT_EQ(ib.qos_group_hw_map, 0x04);
    EXPECT_EQ(ib.ctrl, 1);
    EXPECT_EQ(ib.cos_map, 0x81);
    EXPECT_EQ(ib.xon, 0xfffffffeu);
    EXPECT_EQ(ib.xoff, 7u);
    EXPECT_EQ(ib.buffer_size, 0x10009u);

    const auto &q = info.queues[2];
    EXPECT_EQ(q.queue_id, 9);
    EXPECT_EQ(q.qos_group_map, 0x30);
    EXPECT_EQ(q.qos_group_hw_map, 0x10);
    EXPECT_EQ(q.cos_map, 0x06);
    EXPECT_EQ(q.sched, 0x85);
    EXPECT_EQ(q.flags, 0x02);
    EXPECT_EQ(q.mtu, 1500);

    const auto &s = info.stats_of(q);
    EXPECT_EQ(s.queue_num, 9);
    EXPECT_EQ(s.flags, 0x02);
    EXPECT_EQ(s.rx_count, 0x100000005ull);
    EXPECT_EQ(s.tx_count, 6u);
    EXPECT_EQ(s.mcast_tail_drop, 0x8000000000000063ull);

    EXPECT_EQ(info.rx_drop, 11u);
    EXPECT_EQ(info.rx_mcast_drop, 12u);
    EXPECT_EQ(info.rx_error, 13u);
    EXPECT_EQ(info.tx_drop, 0x20000000eull);
    EXPECT_EQ(info.mux_ovflow_flags, 1u);
    EXPECT_EQ(info.mux_ovflow_ports, 8u);
    EXPECT_EQ(info.pfc_enabled, 1);
    EXPECT_EQ(info.pfc_rx_mask, 0x0f);
    const std::array<std::uint8_t, 7> groups = {0x01, 0x02, 0x0c, 0, 0x80, 0, 0x40};
    EXPECT_EQ(info.cos_qos_group_map, groups);
    EXPECT_EQ(info.pause_rx, 0x105u);
    EXPECT_EQ(info.pause_tx, 0x2u);
    EXPECT_EQ(info.buffer_threshold, 65536u);
    EXPECT_EQ(info.queue_limit, 0xffffffffu);
    EXPECT_EQ(info.queue_limit_rx, 4096u);
}

TEST(HifDecode, QueueIdsAreBoundedForListedQueuesOnly) {
    HifQueuingInfo info;
    Bytes body(1108, 0);
    put_be32(body, 4, 3);
    body[172 + 8 * 2] = 9;    // last statistics slot
    body[172 + 8 * 3] = 200;  // past queue_count: never visited
    EXPECT_TRUE(decode(body, info).ok());

    body[172 + 8 * 1] = 10;
    const auto result = decode(body, info);
    EXPECT_EQ(result.damage, HifDamage::queue_id_range);
    EXPECT_EQ(result.value, 10u);
}

}  // namespace
