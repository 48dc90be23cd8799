// SPDX-License-Identifier: MIT
// Fuzz targets of the host-interface reports, text and structured, and of
// the switch-wide stream's host-interface part.
#include "entries/targets.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

using namespace qdfuzz;

namespace {

constexpr const char *kHifName = "Ethernet101/1/1";

void hif_platform(Session &session, std::uint8_t flags) {
    session.pf().add_interface(kHif, IF_TYPE_HIF, kHifName, 4);
    session.pf().tx_queue_drops[kHif] = 0x123456789ull;
    session.pf().qos_counters_rc = (flags & 2) != 0 ? -5 : 0;
}

std::vector<Bytes> hif_seeds() {
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


// Host-interface queuing report, text or structured: one flags byte, then
// the line card's reply to sub-command 16 (32-byte header, 1108-byte body).
//   flags bit 0: a single named interface (command 59: detailed report)
//   flags bit 1: the QoS counter query fails
template <class Report>
void hif_report(Session &session, Input &in, Report report) {
    const std::uint8_t flags = in.u8();
    hif_platform(session, flags);
    session.reply(in.rest());
    report(session.command((flags & 1) != 0 ? CMD_ID_SHOW_QUEUING_IF : 0), kHif, kHifName);
}

}  // namespace

void qdfuzz_hif_report(Session &session, Input &in) { hif_report(session, in, qd_cli_show_queuing_hif); }
std::vector<Bytes> qdfuzz_seeds_hif_report() { return hif_seeds(); }

void qdfuzz_hif_xmlized(Session &session, Input &in) { hif_report(session, in, qd_cli_show_queuing_hif_xmlized); }
std::vector<Bytes> qdfuzz_seeds_hif_xmlized() { return hif_seeds(); }

// Switch-wide attribute-stream report, host-interface part, entered
// directly for host interface 0x1f010000: the input is attribute records;
// the value of each attribute 58 is also the line-card reply of the
// host-interface report that the attribute runs.
void qdfuzz_switch_stream_hif(Session &session, Input &in) {
    session.pf().add_interface(kHif, IF_TYPE_HIF, kHifName, 4);
    session.stream(in, ATTR_RUN_HIF_REPORT);
    cmd_rsp rsp{};
    rsp.mts_handle = 0x77;
    qd_cli_show_queuing_intf_switch_hif(&rsp, kHifName, kHif);
}

std::vector<Bytes> qdfuzz_seeds_switch_stream_hif() {
    std::vector<Bytes> seeds;
    // The full stream of the switch_stream seeds, after its interface record.
    Frames queues;
    for (std::uint8_t q = 0; q < 8; ++q) {
        queues.attr_u8(0x14ff00d6u, q);
        for (std::uint32_t g = 0; g <= q; ++g) queues.attr_u32(0x11ff00d7u, q == 0 ? 0xffffffffu : g);
        for (std::uint32_t c = 0; c <= q; ++c) queues.attr_u32(0x14ff00d8u, q == 1 ? 8 : c);
        queues.attr_u8(0x14ff00d9u, q % 2).attr_u8(0x14ff00dau, 12).attr_u16(0x14ff00dbu, 1500);
    }
    seeds.push_back(queues);
    HifShape format4;
    format4.stats_format = 4;
    seeds.push_back(Frames().attr(ATTR_RUN_HIF_REPORT, hif_queuing_reply(format4)).attr(
        ATTR_RUN_HIF_REPORT, hif_queuing_reply({})));
    seeds.push_back(Frames().attr(0x14ff00e3u, {1, 2, 3}).attr(0x02ff00f4u, {1}).attr_u32(0x11ff00f7u, 0xffffffffu));
    return seeds;
}
