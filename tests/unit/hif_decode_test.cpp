// SPDX-License-Identifier: MIT
// Decoding of hif_queuing_info from literal body bytes.
#include <gtest/gtest.h>

#include <array>
#include <tuple>

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
    // Each group of fields compared as one tuple: (what was read) == (what the bytes say).
    EXPECT_EQ(std::tie(info.ib_count, info.queue_count, info.stats_format), std::make_tuple(2u, 3u, std::uint8_t{7}));
    const auto &ib = info.input_buffers[1];
    EXPECT_EQ(std::make_tuple(+ib.frh, +ib.no_drop, +ib.qos_group_map, +ib.qos_group_hw_map, +ib.ctrl, +ib.cos_map),
              std::make_tuple(3, 1, 0x05, 0x04, 1, 0x81));
    EXPECT_EQ(std::tie(ib.xon, ib.xoff, ib.buffer_size), std::make_tuple(0xfffffffeu, 7u, 0x10009u));
    const auto &q = info.queues[2];
    EXPECT_EQ(std::make_tuple(+q.queue_id, +q.qos_group_map, +q.qos_group_hw_map, +q.cos_map, +q.sched, +q.flags),
              std::make_tuple(9, 0x30, 0x10, 0x06, 0x85, 0x02));
    EXPECT_EQ(q.mtu, 1500);
    const auto &s = info.stats_of(q);
    EXPECT_EQ(std::make_tuple(+s.queue_num, +s.flags, s.rx_count, s.tx_count, s.mcast_tail_drop),
              std::make_tuple(9, 0x02, 0x100000005ull, std::uint64_t{6}, 0x8000000000000063ull));
    EXPECT_EQ(std::tie(info.rx_drop, info.rx_mcast_drop, info.rx_error, info.tx_drop),
              std::make_tuple(std::uint64_t{11}, std::uint64_t{12}, std::uint64_t{13}, 0x20000000eull));
    EXPECT_EQ(std::tie(info.mux_ovflow_flags, info.mux_ovflow_ports), std::make_tuple(1u, 8u));
    EXPECT_EQ(std::make_tuple(+info.pfc_enabled, +info.pfc_rx_mask), std::make_tuple(1, 0x0f));
    const std::array<std::uint8_t, 7> groups = {0x01, 0x02, 0x0c, 0, 0x80, 0, 0x40};
    EXPECT_EQ(info.cos_qos_group_map, groups);
    EXPECT_EQ(std::tie(info.pause_rx, info.pause_tx, info.buffer_threshold, info.queue_limit, info.queue_limit_rx),
              std::make_tuple(0x105u, 0x2u, 65536u, 0xffffffffu, 4096u));
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
