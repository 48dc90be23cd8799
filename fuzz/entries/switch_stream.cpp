// SPDX-License-Identifier: MIT
// Switch-wide attribute-stream report, from its start: the input is one
// flags byte (bit 0: platform type 3, whose multicast statistics differ)
// followed by attribute records. An interface record can name the Ethernet
// interface 0x1a000000 or the host interface 0x1f010000, which hands the
// rest of the stream to the host-interface renderer; there the value of
// each attribute 58 is also the line-card reply of the host-interface
// report that the attribute runs.
#include "harness/harness.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {
constexpr std::uint32_t kEth = 0x1a000000u;
constexpr std::uint32_t kHif = 0x1f010000u;
}  // namespace

QDFUZZ_ENTRY(switch_stream) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    session.pf().platform_type = (in.u8() & 1) != 0 ? 3 : 2;
    session.pf().add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1");
    session.pf().add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1", 4);
    session.stream(in, ATTR_RUN_HIF_REPORT);
    cmd_rsp rsp{};
    rsp.mts_handle = 0x77;
    qd_cli_show_queuing_intf_switch(&rsp);
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_switch_stream() {
    qdfuzz::Frames eth;
    eth.raw({0}).attr_u32(0x0cff00b7u, kEth);
    for (std::uint8_t g = 0; g < 3; ++g)
        eth.attr_u8(0x14ff00b8u, g).attr_u8(0x02ff00b9u, g % 2).attr_u8(0x14ff00bau, static_cast<std::uint8_t>(30 * g));
    eth.attr_u64(0x15ff00bbu, 0x123456789ull);
    for (std::uint8_t g = 0; g < 3; ++g) {
        eth.attr_u8(0x14ff00bcu, g).attr_u32(0x14ff00bdu, 0x30000).attr_u32(0x14ff00beu, 0x40000);
        eth.attr_u16(0x14ff00bfu, 9216).attr_u16(0x14ff00c0u, 9000).attr_u8(0x02ff00c1u, g % 2);
        eth.attr_u32(0x14ff00c2u, 100).attr_u32(0x14ff00c3u, 200);
        for (std::uint32_t id = 0x14ff00c4u; id <= 0x14ff00c9u; ++id) eth.attr_u32(id, id & 0xff);
        eth.attr_u32(0x02ff00cau, g % 2).attr_u32(0x02ff00cbu, 1);
    }
    eth.attr_u32(0x14ff00ccu, 77);
    qdfuzz::Bytes eth_type3 = eth.bytes();
    eth_type3[0] = 1;

    qdfuzz::Frames hif;
    hif.raw({0}).attr_u32(0x0cff00b7u, kHif).attr_u8(0x14ff00cdu, 4).attr_u32(0x14ff00ceu, kHif);
    hif.attr_u8(0x14ff00cfu, 1).attr_u8(0x14ff00cfu, 2).attr_u8(0x14ff00d0u, 3).attr_u8(0x02ff00d1u, 1);
    hif.attr_u8(0x14ff00d2u, 0).attr_u8(0x14ff00d2u, 5).attr_u32(0x14ff00d3u, 10).attr_u32(0x14ff00d4u, 20);
    hif.attr_u32(0x14ff00d5u, 30);
    for (std::uint8_t q = 0; q < 4; ++q) {
        hif.attr_u8(0x14ff00d6u, q).attr_u32(0x11ff00d7u, q < 2 ? 0xffffffffu : q).attr_u32(0x11ff00d7u, 7);
        hif.attr_u32(0x14ff00d8u, q == 1 ? 8 : q).attr_u32(0x14ff00d8u, 6).attr_u8(0x14ff00d9u, q % 2);
        hif.attr_u8(0x14ff00dau, 50).attr_u16(0x14ff00dbu, 9216);
    }
    hif.attr_u32(0x14ff00dcu, 4096).attr_u32(0x14ff00ddu, 0xffffffffu);
    hif.attr_u8(0x14ff00e2u, 2).attr_u64(0x14ff00e3u, 5).attr_u64(0x14ff00e4u, 6);
    hif.attr_u32(0x14ff00deu, 1024).attr_u32(0x14ff00dfu, 0xffffffffu);
    hif.attr_u32(0x14ff00e5u, 3);
    for (std::uint32_t id = 0x14ff00e6u; id <= 0x14ff00e9u; ++id) hif.attr_u64(id, id);
    hif.attr_u32(0x14ff00eau, 3);
    for (std::uint32_t id = 0x14ff00ebu; id <= 0x14ff00efu; ++id) hif.attr_u64(id, 0x100000000ull + id);
    hif.attr_u32(0x14ff00e0u, 1).attr_u32(0x14ff00e1u, 2);
    for (std::uint32_t id = 0x14ff00f0u; id <= 0x14ff00f3u; ++id) hif.attr_u64(id, id);
    hif.attr_u64(0x02ff00f4u, 1ull << 60).attr_u8(0x02ff00f5u, 1);
    for (std::uint8_t cos = 0; cos < 8; ++cos) {
        hif.attr_u32(0x14ff00f6u, cos).attr_u32(0x11ff00f7u, cos == 7 ? 0xffffffffu : cos);
        hif.attr_u8(0x02ff00f8u, cos % 2).attr_u8(0x02ff00f9u, 0).attr_u8(0x02ff00fau, 1);
    }
    hif.attr_u32(0x0cff00b7u, kEth).attr(ATTR_RUN_HIF_REPORT, qdfuzz::hif_queuing_reply({}));
    hif.attr(0x14ff00ceu, {1, 2}).attr_u32(0x12345678u, 0);

    return {eth, eth_type3, hif, {}};
}
