// SPDX-License-Identifier: MIT
// Platform and seeds shared by the two host-interface report targets.
#pragma once

#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "qdcli/wire.h"

namespace qdfuzz {

inline constexpr std::uint32_t kHifIndex = 0x1f010000u;
inline constexpr const char *kHifName = "Ethernet101/1/1";

inline void hif_platform(Session &session, std::uint8_t flags) {
    session.pf().add_interface(kHifIndex, IF_TYPE_HIF, kHifName, 4);
    session.pf().tx_queue_drops[kHifIndex] = 0x123456789ull;
    session.pf().qos_counters_rc = (flags & 2) != 0 ? -5 : 0;
}

inline std::vector<Bytes> hif_seeds() {
    std::vector<Bytes> seeds;
    for (const std::uint8_t format : {std::uint8_t{0}, std::uint8_t{4}, std::uint8_t{1}}) {
        HifShape shape;
        shape.stats_format = format;
        for (const std::uint8_t flags : {std::uint8_t{0}, std::uint8_t{1}}) {
            Bytes seed{flags};
            const Bytes reply = hif_queuing_reply(shape);
            seed.insert(seed.end(), reply.begin(), reply.end());
            seeds.push_back(seed);
        }
    }
    HifShape plain;
    plain.control = false;
    plain.unsupported = false;
    plain.ib_count = 2;
    plain.queue_count = 3;
    plain.buffer_threshold = 0xffffffffu;
    Bytes seed{2};
    const Bytes reply = hif_queuing_reply(plain);
    seed.insert(seed.end(), reply.begin(), reply.end());
    seeds.push_back(seed);
    Bytes refused{1};
    Bytes header(32, 0);
    put_be32(header, 28, 0x40aa0001u);
    refused.insert(refused.end(), header.begin(), header.end());
    seeds.push_back(refused);
    seeds.push_back(cut(seed, 600));
    return seeds;
}

}  // namespace qdfuzz
