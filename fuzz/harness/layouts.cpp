// SPDX-License-Identifier: MIT
#include "harness/layouts.hpp"

#include <algorithm>

#include "double/platform_double.hpp"

namespace qdfuzz {
namespace {

// Big-endian and host-order fields, and 64-bit counters as two big-endian
// words, the less significant first.
constexpr auto be16 = qdtest::put_be16;
constexpr auto be32 = qdtest::put_be32;
constexpr auto host32 = qdtest::put_host32;
constexpr auto be64_low_first = qdtest::put_be64_low_first;

constexpr std::size_t kLcHeader = 32;

}  // namespace

Bytes eth_queuing_reply(unsigned groups, bool vaq_port, bool vaq_buf_hidden) {
    constexpr std::size_t kHeader = 48, kRecord = 152;
    Bytes b(kHeader + kRecord * std::max(groups, 1u), 0);
    be32(b, 0, groups);
    host32(b, 4, 0);
    be32(b, 8, 0x12);
    host32(b, 12, 0x345678);
    be32(b, 16, vaq_port ? 1 : 0);
    host32(b, 20, vaq_buf_hidden ? 1 : 0);
    be32(b, 32, 65536);
    host32(b, 36, 11);
    host32(b, 40, 22);
    host32(b, 44, 33);
    for (unsigned i = 0; i < groups; ++i) {
        const std::size_t r = kHeader + kRecord * i;
        b[r + 0] = static_cast<std::uint8_t>(i);
        b[r + 1] = i % 2;
        b[r + 2] = i % 3 == 0;
        b[r + 3] = static_cast<std::uint8_t>(i % 101);
        be16(b, r + 4, 9216);
        be32(b, r + 6, 1000 + i);
        be32(b, r + 10, 2000 + i);
        be16(b, r + 14, 9216);
        be32(b, r + 16, 0x30000 + i);
        be32(b, r + 20, 0x40000 + i);
        be16(b, r + 30, i % 2 ? static_cast<std::uint16_t>(i) : 0);
        be32(b, r + 36, 1000000 + i);
        be32(b, r + 40, 2000000 + i);
        be32(b, r + 44, 3000000 + i);
        be32(b, r + 52, 4000000 + i);
        be32(b, r + 56, i % 2);
        be32(b, r + 60, (i + 1) % 2);
        be32(b, r + 64, 5000000 + i);
        be32(b, r + 68, 6000000 + i);
        be32(b, r + 72, 7000000 + i);
    }
    return b;
}

Bytes hif_queuing_reply(const HifShape &shape) {
    constexpr std::size_t kBody = kLcHeader;
    Bytes b(kLcHeader + 1108, 0);
    b[0] = 16;
    b[1] = 3;
    b[2] = 1;
    be32(b, 28, 0);  // status: success
    be32(b, kBody + 0, shape.ib_count);
    be32(b, kBody + 4, shape.queue_count);
    b[kBody + 8] = shape.stats_format;
    for (std::uint32_t i = 0; i < std::min<std::uint32_t>(shape.ib_count, 8); ++i) {
        const std::size_t r = kBody + 12 + 20 * i;
        b[r + 0] = static_cast<std::uint8_t>(i == 3 ? 1 : i + 2);  // frh 1 hides a buffer
        b[r + 1] = i % 2;
        b[r + 2] = static_cast<std::uint8_t>((1u << i) | (i % 3 == 0 ? 0x80 : 0));
        b[r + 3] = static_cast<std::uint8_t>(shape.unsupported ? (1u << i) : 0xff);
        b[r + 5] = shape.control && i == 0;
        b[r + 6] = static_cast<std::uint8_t>(0x03u << (i % 7));
        be32(b, r + 8, 100 + i);
        be32(b, r + 12, 200 + i);
        be32(b, r + 16, 30000 + i);
    }
    for (std::uint32_t j = 0; j < std::min<std::uint32_t>(shape.queue_count, 8); ++j) {
        const std::size_t r = kBody + 172 + 8 * j;
        const std::uint8_t queue_id = static_cast<std::uint8_t>(shape.control ? j : j + 2);
        b[r + 0] = queue_id;
        b[r + 1] = static_cast<std::uint8_t>((1u << j) | 0x40);
        b[r + 2] = static_cast<std::uint8_t>(shape.unsupported ? (1u << j) : 0xff);
        b[r + 3] = static_cast<std::uint8_t>(1u << j);
        b[r + 4] = static_cast<std::uint8_t>((j % 2 ? 0x80 : 0) | (10 * j));
        b[r + 5] = queue_id < 2 ? 0x02 : 0;
        be16(b, r + 6, 9216);
    }
    be64_low_first(b, kBody + 236, 0x100000001ull);
    be64_low_first(b, kBody + 244, 2);
    be64_low_first(b, kBody + 252, 3);
    be64_low_first(b, kBody + 260, 0xffffffffffull);
    be32(b, kBody + 268, 0);
    be32(b, kBody + 272, 8);
    for (unsigned q = 0; q < 10; ++q) {
        const std::size_t s = kBody + 276 + 76 * q;
        b[s + 0] = static_cast<std::uint8_t>(q);
        b[s + 2] = q < 2 ? 0x02 : 0;
        for (unsigned c = 0; c < 9; ++c) be64_low_first(b, s + 4 + 8 * c, (std::uint64_t{q} << 36) + 1000 * c + q);
    }
    b[kBody + 1076] = 1;
    b[kBody + 1077] = 0x0f;
    for (unsigned k = 0; k < 7; ++k) b[kBody + 1078 + k] = static_cast<std::uint8_t>(k == 2 ? 0 : 1u << k);
    be32(b, kBody + 1088, 0x05);
    be32(b, kBody + 1092, 0x100);
    be32(b, kBody + 1096, shape.buffer_threshold);
    be32(b, kBody + 1100, 0x80000);
    be32(b, kBody + 1104, 0xffffffffu);
    return b;
}

Bytes nif_port_reply(std::uint16_t slot, std::uint32_t nif_if_index) {
    Bytes b(6, 0);
    be16(b, 0, slot);
    be32(b, 2, nif_if_index);
    return b;
}

Bytes port_records_reply(unsigned records) {
    constexpr std::size_t kRecord = 84;
    Bytes b(kLcHeader + kRecord * records, 0);
    b[0] = 23;
    b[1] = 2;
    b[2] = static_cast<std::uint8_t>(records);
    be32(b, 28, 0);
    unsigned per_class[3] = {0, 0, 0};
    for (unsigned i = 0; i < records; ++i) {
        const std::size_t r = kLcHeader + kRecord * i;
        const unsigned cls = i % 3;  // 0 eNIF, 1 iHIF, 2 iNIF
        be16(b, r + 0, static_cast<std::uint16_t>(per_class[cls]++));
        be16(b, r + 4, static_cast<std::uint16_t>(i % 4));
        be16(b, r + 6, cls == 1 ? 1 : 2);
        be16(b, r + 8, static_cast<std::uint16_t>(i + 1));
        be16(b, r + 10, cls == 2 ? 1 : 0);
        for (unsigned c = 0; c < 9; ++c) be64_low_first(b, r + 12 + 8 * c, (std::uint64_t{i} << 33) + c);
    }
    return b;
}

}  // namespace qdfuzz
