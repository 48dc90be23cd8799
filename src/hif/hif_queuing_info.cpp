// SPDX-License-Identifier: MIT
#include "hif/hif_queuing_info.hpp"

#include "qdcli/wire.h"

namespace qdcli::hif {
namespace {

// Offsets in hif_queuing_info.
constexpr std::size_t kIbCount = 0;
constexpr std::size_t kQueueCount = 4;
constexpr std::size_t kStatsFormat = 8;
constexpr std::size_t kInputBufferBase = 12;
constexpr std::size_t kInputBufferSize = 20;
constexpr std::size_t kQueueBase = 172;
constexpr std::size_t kQueueSize = 8;
constexpr std::size_t kRxDrop = 236;
constexpr std::size_t kRxMcastDrop = 244;
constexpr std::size_t kRxError = 252;
constexpr std::size_t kTxDrop = 260;
constexpr std::size_t kMuxOvflowFlags = 268;
constexpr std::size_t kMuxOvflowPorts = 272;
constexpr std::size_t kQueueStatsBase = 276;
constexpr std::size_t kQueueStatsSize = 76;
constexpr std::size_t kPfcEnabled = 1076;
constexpr std::size_t kPfcRxMask = 1077;
constexpr std::size_t kCosQosGroupMap = 1078;
constexpr std::size_t kPauseRx = 1088;
constexpr std::size_t kPauseTx = 1092;
constexpr std::size_t kBufferThreshold = 1096;
constexpr std::size_t kQueueLimit = 1100;
constexpr std::size_t kQueueLimitRx = 1104;

static_assert(kInputBufferBase + kInputBufferSlots * kInputBufferSize == kQueueBase);
static_assert(kQueueBase + kQueueSlots * kQueueSize == kRxDrop);
static_assert(kQueueStatsBase + kQueueStatsSlots * kQueueStatsSize == 1036);
static_assert(kQueueLimitRx + 4 == HIF_QUEUING_INFO_SIZE);

InputBuffer input_buffer_at(const PayloadReader &r, std::size_t at) {
    InputBuffer b;
    b.frh = r.u8(at + 0);
    b.no_drop = r.u8(at + 1);
    b.qos_group_map = r.u8(at + 2);
    b.qos_group_hw_map = r.u8(at + 3);
    b.ctrl = r.u8(at + 5);
    b.cos_map = r.u8(at + 6);
    b.xon = r.be32(at + 8);
    b.xoff = r.be32(at + 12);
    b.buffer_size = r.be32(at + 16);
    return b;
}

Queue queue_at(const PayloadReader &r, std::size_t at) {
    Queue q;
    q.queue_id = r.u8(at + 0);
    q.qos_group_map = r.u8(at + 1);
    q.qos_group_hw_map = r.u8(at + 2);
    q.cos_map = r.u8(at + 3);
    q.sched = r.u8(at + 4);
    q.flags = r.u8(at + 5);
    q.mtu = r.be16(at + 6);
    return q;
}

QueueStats queue_stats_at(const PayloadReader &r, std::size_t at) {
    QueueStats s;
    s.queue_num = r.u8(at + 0);
    s.flags = r.u8(at + 2);
    s.rx_count = r.be64_low_first(at + 4);
    s.tx_count = r.be64_low_first(at + 12);
    s.tail_drop_tx = r.be64_low_first(at + 20);
    s.tail_drop_rx = r.be64_low_first(at + 28);
    s.no_buffer_tx = r.be64_low_first(at + 36);
    s.no_buffer_rx = r.be64_low_first(at + 44);
    s.mac_error_tx = r.be64_low_first(at + 52);
    s.mac_error_rx = r.be64_low_first(at + 60);
    s.mcast_tail_drop = r.be64_low_first(at + 68);
    return s;
}

}  // namespace

HifDecodeResult decode_hif_queuing_info(const PayloadReader &body, HifQueuingInfo &info) {
    info = HifQueuingInfo{};
    if (!body.covers(0, HIF_QUEUING_INFO_SIZE)) return {HifDamage::truncated, 0};

    // The counts and the queue ids index fixed slots of the body: a value
    // beyond its slots would make the reports read records that are not
    // there, so such a reply is refused as a whole.
    info.ib_count = body.be32(kIbCount);
    if (info.ib_count > kInputBufferSlots) return {HifDamage::too_many_buffers, info.ib_count};
    info.queue_count = body.be32(kQueueCount);
    if (info.queue_count > kQueueSlots) return {HifDamage::too_many_queues, info.queue_count};
    info.stats_format = body.u8(kStatsFormat);

    for (std::size_t i = 0; i < kInputBufferSlots; ++i)
        info.input_buffers[i] = input_buffer_at(body, kInputBufferBase + i * kInputBufferSize);
    for (std::size_t j = 0; j < kQueueSlots; ++j) info.queues[j] = queue_at(body, kQueueBase + j * kQueueSize);
    // Every listed queue is visited by the statistics table, which reads the
    // record of its id; the slots past queue_count are never looked at.
    for (std::size_t j = 0; j < info.queue_count; ++j)
        if (info.queues[j].queue_id >= kQueueStatsSlots) return {HifDamage::queue_id_range, info.queues[j].queue_id};

    info.rx_drop = body.be64_low_first(kRxDrop);
    info.rx_mcast_drop = body.be64_low_first(kRxMcastDrop);
    info.rx_error = body.be64_low_first(kRxError);
    info.tx_drop = body.be64_low_first(kTxDrop);
    info.mux_ovflow_flags = body.be32(kMuxOvflowFlags);
    info.mux_ovflow_ports = body.be32(kMuxOvflowPorts);
    for (std::size_t q = 0; q < kQueueStatsSlots; ++q)
        info.stats[q] = queue_stats_at(body, kQueueStatsBase + q * kQueueStatsSize);
    info.pfc_enabled = body.u8(kPfcEnabled);
    info.pfc_rx_mask = body.u8(kPfcRxMask);
    for (std::size_t k = 0; k < kCosWithGroupMap; ++k) info.cos_qos_group_map[k] = body.u8(kCosQosGroupMap + k);
    info.pause_rx = body.be32(kPauseRx);
    info.pause_tx = body.be32(kPauseTx);
    info.buffer_threshold = body.be32(kBufferThreshold);
    info.queue_limit = body.be32(kQueueLimit);
    info.queue_limit_rx = body.be32(kQueueLimitRx);
    return {};
}

}  // namespace qdcli::hif
