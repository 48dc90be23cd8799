// SPDX-License-Identifier: MIT
// Extended (ingress) queuing report of a front-panel Ethernet interface:
// the daemon's reply to QD_CLI_CMD_SHOW_IF_EXTEND, decoded into a plain
// record before anything of it is printed.
#pragma once

#include <cstdint>
#include <optional>

#include "frame/reader.hpp"

namespace qdcli {

constexpr unsigned kIngressQueues = 8;
constexpr unsigned kIngressChannels = 3;  // the three 40G channels

// Reply layout, host order throughout; the counters are unaligned 64-bit
// values carried low 32-bit word first.
struct ExtendedQueuingLayout {
    static constexpr std::size_t status = 0;
    static constexpr std::size_t sp_level = 4;        // 8 bytes, one per queue
    static constexpr std::size_t drop_mode_bits = 20; // bit q = queue q
    static constexpr std::size_t cos_to_queue = 21;   // 8 bytes, one per CoS
    static constexpr std::size_t pass_count = 29;     // [channel][queue], 8 bytes each
    static constexpr std::size_t drop_count = 221;    // same arrangement
    static constexpr std::size_t size = 413;
};

struct ExtendedQueuing {
    std::uint8_t sp_level[kIngressQueues] = {};
    std::uint8_t drop_mode_bits = 0;
    std::uint8_t cos_to_queue[kIngressQueues] = {};
    std::uint64_t pass_count[kIngressChannels][kIngressQueues] = {};
    std::uint64_t drop_count[kIngressChannels][kIngressQueues] = {};
};

// The whole report, or nothing when the payload is shorter than the record.
// The status word is not part of it: the caller tests it first.
std::optional<ExtendedQueuing> decode_extended_queuing(const PayloadReader &payload);

}  // namespace qdcli
