// SPDX-License-Identifier: MIT
// Replies of the statistics agent to the host-interface queuing request,
// written byte by byte at the layout's offsets: a 32-byte header (status at
// 28), then hif_queuing_info from offset 32. 64-bit counters are two
// big-endian words, the less significant first.
#pragma once

#include <cstdint>

#include "double/platform_double.hpp"

namespace hiftest {

using qdtest::Bytes;

constexpr std::size_t kBody = 32;

struct HifReply {
    Bytes b = Bytes(1140, 0);

    HifReply() {
        threshold(0xffffffffu);
        limits(0xffffffffu, 0xffffffffu);
    }
    HifReply &status(std::uint32_t v) { return be32(28, v); }
    HifReply &be32(std::size_t payload_offset, std::uint32_t v) {
        qdtest::put_be32(b, payload_offset, v);
        return *this;
    }
    HifReply &byte(std::size_t body_offset, std::uint8_t v) {
        b[kBody + body_offset] = v;
        return *this;
    }
    HifReply &counts(std::uint32_t ib, std::uint32_t queues) { return be32(kBody + 0, ib).be32(kBody + 4, queues); }
    HifReply &format(std::uint8_t f) { return byte(8, f); }
    HifReply &input_buffer(std::size_t i, std::uint8_t frh, std::uint8_t no_drop, std::uint8_t groups,
                           std::uint8_t hw_groups, std::uint8_t ctrl, std::uint8_t cos, std::uint32_t xon,
                           std::uint32_t xoff, std::uint32_t size) {
        const std::size_t at = 12 + 20 * i;
        byte(at, frh).byte(at + 1, no_drop).byte(at + 2, groups).byte(at + 3, hw_groups);
        byte(at + 5, ctrl).byte(at + 6, cos);
        return be32(kBody + at + 8, xon).be32(kBody + at + 12, xoff).be32(kBody + at + 16, size);
    }
    HifReply &queue(std::size_t j, std::uint8_t id, std::uint8_t groups, std::uint8_t hw_groups, std::uint8_t cos,
                    std::uint8_t sched, std::uint8_t flags, std::uint16_t mtu) {
        const std::size_t at = 172 + 8 * j;
        byte(at, id).byte(at + 1, groups).byte(at + 2, hw_groups).byte(at + 3, cos).byte(at + 4, sched);
        byte(at + 5, flags);
        qdtest::put_be16(b, kBody + at + 6, mtu);
        return *this;
    }
    // Counters in the order of the record: rx, tx, tail drop tx/rx,
    // no buffer tx/rx, MAC error tx/rx, multicast tail drop.
    HifReply &stats(std::size_t q, std::uint8_t num, std::uint8_t flags, std::initializer_list<std::uint64_t> c) {
        const std::size_t at = 276 + 76 * q;
        byte(at, num).byte(at + 2, flags);
        std::size_t offset = at + 4;
        for (const std::uint64_t v : c) {
            qdtest::put_be64_low_first(b, kBody + offset, v);
            offset += 8;
        }
        return *this;
    }
    HifReply &port(std::uint64_t rx_drop, std::uint64_t rx_mcast, std::uint64_t rx_error, std::uint64_t tx_drop,
                   std::uint32_t ovflow_flags, std::uint32_t ovflow_ports) {
        qdtest::put_be64_low_first(b, kBody + 236, rx_drop);
        qdtest::put_be64_low_first(b, kBody + 244, rx_mcast);
        qdtest::put_be64_low_first(b, kBody + 252, rx_error);
        qdtest::put_be64_low_first(b, kBody + 260, tx_drop);
        return be32(kBody + 268, ovflow_flags).be32(kBody + 272, ovflow_ports);
    }
    HifReply &pfc(std::uint8_t enabled, std::uint8_t rx_mask, std::initializer_list<std::uint8_t> cos_groups,
                  std::uint32_t pause_rx, std::uint32_t pause_tx) {
        byte(1076, enabled).byte(1077, rx_mask);
        std::size_t k = 0;
        for (const std::uint8_t g : cos_groups) byte(1078 + k++, g);
        return be32(kBody + 1088, pause_rx).be32(kBody + 1092, pause_tx);
    }
    HifReply &threshold(std::uint32_t v) { return be32(kBody + 1096, v); }
    HifReply &limits(std::uint32_t tx, std::uint32_t rx) { return be32(kBody + 1100, tx).be32(kBody + 1104, rx); }
};

// The reply most tests start from: three input buffers (one hidden by frh 1,
// one of control traffic), four queues (a control-flagged ctrl-hi, two data
// queues, a ctrl-lo whose statistics record carries the control flag), port
// overflow on port 1, and a transmit pause word with bit 8 set.
inline HifReply sample_reply(std::uint8_t stats_format) {
    HifReply r;
    r.counts(3, 4).format(stats_format);
    r.input_buffer(0, 0, 1, 0x0a, 0x0a, 0, 0x08, 100, 200, 3000);
    r.input_buffer(1, 1, 0, 0x01, 0x01, 0, 0x01, 1, 2, 3);
    r.input_buffer(2, 2, 0, 0x01, 0x01, 1, 0xf7, 10, 20, 40);
    r.queue(0, 0, 0xff, 0x00, 0x80, 0x80, 0x02, 2240);
    r.queue(1, 2, 0x01, 0x01, 0x07, 0x32, 0x00, 9216);
    r.queue(2, 3, 0x0a, 0x0a, 0x08, 0x32, 0x00, 1500);
    r.queue(3, 1, 0x00, 0x00, 0x40, 0x80, 0x00, 2240);
    r.stats(0, 0, 0x00, {5, 6, 70, 71, 80, 81, 90, 91, 99});
    r.stats(1, 1, 0x02, {7, 8, 0, 0, 0, 0, 0, 0, 0});
    r.stats(2, 2, 0x00, {0x100000005ull, 1000, 1, 2, 3, 4, 5, 6, 7});
    r.stats(3, 3, 0x00, {12345, 54321, 0, 0, 0, 0, 0, 0, 0});
    r.port(11, 12, 13, 14, 0, 2);
    r.pfc(1, 0x0f, {0x01, 0x02, 0x0c, 0x00, 0x80, 0x00, 0x01}, 0x05, 0x102);
    r.threshold(65536).limits(0xffffffffu, 4096);
    return r;
}

constexpr std::uint32_t kIfIndex = 0x1f640000u;
constexpr std::uint8_t kSlot = 4;
inline const char *const kName = "Ethernet101/1/1";

}  // namespace hiftest
