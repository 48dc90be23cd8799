// SPDX-License-Identifier: MIT
// The body of the statistics agent's answer to the host-interface queuing
// request (sub-command 16): hif_queuing_info, 1108 bytes from payload offset
// 32 on, decoded into a plain record that both host-interface reports print.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "frame/reader.hpp"

namespace qdcli::hif {

inline constexpr std::size_t kInputBufferSlots = 8;
inline constexpr std::size_t kQueueSlots = 8;
inline constexpr std::size_t kQueueStatsSlots = 10;  // indexed by queue id 0 to 9
inline constexpr std::size_t kCosWithGroupMap = 7;   // cos 0 to 6; cos 7 has no entry
inline constexpr std::uint32_t kNoValue = 0xffffffffu;  // no threshold / limit disabled

// hif_ib_rec: one input buffer.
struct InputBuffer {
    std::uint8_t frh = 0;
    std::uint8_t no_drop = 0;
    std::uint8_t qos_group_map = 0;
    std::uint8_t qos_group_hw_map = 0;
    std::uint8_t ctrl = 0;
    std::uint8_t cos_map = 0;
    std::uint32_t xon = 0;
    std::uint32_t xoff = 0;
    std::uint32_t buffer_size = 0;
};

// hif_queue_rec: one queue.
struct Queue {
    std::uint8_t queue_id = 0;
    std::uint8_t qos_group_map = 0;
    std::uint8_t qos_group_hw_map = 0;
    std::uint8_t cos_map = 0;
    std::uint8_t sched = 0;  // bit 7: strict priority; bits 0-6: bandwidth
    std::uint8_t flags = 0;
    std::uint16_t mtu = 0;
};

// hif_queue_stats: the counters of one queue id.
struct QueueStats {
    std::uint8_t queue_num = 0;
    std::uint8_t flags = 0;
    std::uint64_t rx_count = 0;
    std::uint64_t tx_count = 0;
    std::uint64_t tail_drop_tx = 0;
    std::uint64_t tail_drop_rx = 0;
    std::uint64_t no_buffer_tx = 0;
    std::uint64_t no_buffer_rx = 0;
    std::uint64_t mac_error_tx = 0;
    std::uint64_t mac_error_rx = 0;
    std::uint64_t mcast_tail_drop = 0;
};

struct HifQueuingInfo {
    std::uint32_t ib_count = 0;     // at most kInputBufferSlots once decoded
    std::uint32_t queue_count = 0;  // at most kQueueSlots once decoded
    std::uint8_t stats_format = 0;
    std::array<InputBuffer, kInputBufferSlots> input_buffers{};
    std::array<Queue, kQueueSlots> queues{};
    std::uint64_t rx_drop = 0;
    std::uint64_t rx_mcast_drop = 0;
    std::uint64_t rx_error = 0;
    std::uint64_t tx_drop = 0;
    std::uint32_t mux_ovflow_flags = 0;
    std::uint32_t mux_ovflow_ports = 0;
    std::array<QueueStats, kQueueStatsSlots> stats{};
    std::uint8_t pfc_enabled = 0;
    std::uint8_t pfc_rx_mask = 0;
    std::array<std::uint8_t, kCosWithGroupMap> cos_qos_group_map{};
    std::uint32_t pause_rx = 0;
    std::uint32_t pause_tx = 0;
    std::uint32_t buffer_threshold = kNoValue;
    std::uint32_t queue_limit = kNoValue;
    std::uint32_t queue_limit_rx = kNoValue;

    // The statistics record of a queue; its id was bounded when decoding.
    const QueueStats &stats_of(const Queue &queue) const { return stats[queue.queue_id]; }
};

// What makes a reply unusable. A reply is taken whole or not at all: the
// reports print nothing of a body that fails any of these checks.
enum class HifDamage {
    none,
    truncated,        // the body does not hold its 1108 bytes
    too_many_buffers,  // ib_count above the 8 record slots
    too_many_queues,   // queue_count above the 8 record slots
    queue_id_range,    // a listed queue's id has no statistics slot (above 9)
};

struct HifDecodeResult {
    HifDamage damage = HifDamage::none;
    std::uint32_t value = 0;  // the offending count or queue id
    bool ok() const { return damage == HifDamage::none; }
};

// Decodes the body (the payload from offset 32 on). Every read is bounded
// by the body's length; on damage `info` is not to be printed.
HifDecodeResult decode_hif_queuing_info(const PayloadReader &body, HifQueuingInfo &info);

}  // namespace qdcli::hif
