// SPDX-License-Identifier: MIT
#include <algorithm>

#include "queuing/ethernet_report.hpp"
#include "qdcli/wire.h"

namespace qdcli::ethernet {
namespace {

// Header offsets.
constexpr std::size_t kGroupCount = 0;
constexpr std::size_t kStatus = 4;
constexpr std::size_t kMcastTailDrops = 8;
constexpr std::size_t kVaqPort = 16;
constexpr std::size_t kVaqBufHidden = 20;
constexpr std::size_t kVaqDropClassBuf = 32;
constexpr std::size_t kVaqUplinkMcastDrops = 36;
constexpr std::size_t kVaqUplinkErrDrops = 40;
constexpr std::size_t kVaqUplinkRxDrops = 44;

// Record offsets, relative to the record's start.
constexpr std::size_t kQosGroup = 0;
constexpr std::size_t kSchedPriority = 1;
constexpr std::size_t kNoDrop = 2;
constexpr std::size_t kOperBandwidth = 3;
constexpr std::size_t kMtuConfigured = 4;
constexpr std::size_t kXon = 6;
constexpr std::size_t kXoff = 10;
constexpr std::size_t kMtuHw = 14;
constexpr std::size_t kQSize = 16;
constexpr std::size_t kQSize40g = 20;
constexpr std::size_t kIngressDiscards16 = 30;
constexpr std::size_t kRxPortPkts = 36;
constexpr std::size_t kUcastToXbar = 40;
constexpr std::size_t kUcastFromXbar = 44;
constexpr std::size_t kTxPortPkts = 52;
constexpr std::size_t kPfcRxActive = 56;
constexpr std::size_t kPfcTxActive = 60;
constexpr std::size_t kIngressDiscards32 = 64;
constexpr std::size_t kMcastToXbar = 68;

}  // namespace

bool queuing_reply_unsupported(const PayloadReader &payload) {
    // The daemon stores this word in its own order; it is compared as such.
    return payload.covers(kStatus, 4) && payload.host32(kStatus) == QD_STATUS_UNSUPPORTED;
}

QueuingReply decode_queuing_reply(const PayloadReader &payload, bool with_mcast_total) {
    QueuingReply reply;
    reply.payload_ = payload;
    if (!payload.covers(0, kHeaderSize)) return reply;  // needed_ stays at the header size

    Header &h = reply.header_;
    // Only the low 8 bits of the count are used: at most 255 records.
    h.group_count = payload.be32(kGroupCount) & 0xffu;

    // The tail-drop counter is one big-endian 64-bit value, most significant
    // word at offset 8 and least significant word at 12, like every other
    // field of this reply. (Line-card replies put the low word first; the
    // daemon's own replies do not.)
    h.mcast_tail_drops = (std::uint64_t{payload.be32(kMcastTailDrops)} << 32) | payload.be32(kMcastTailDrops + 4);
    h.vaq_port = payload.be32(kVaqPort);
    h.vaq_buf_hidden = payload.host32(kVaqBufHidden) != 0;  // only tested against zero
    h.vaq_drop_class_buf = payload.be32(kVaqDropClassBuf);
    // The three uplink counters are the exception to the big-endian rule:
    // the daemon copies them into the reply in its own byte order and the
    // report has always printed them as stored. The daemon is local (same
    // supervisor, same byte order), so host order is unambiguous here.
    h.vaq_uplink_mcast_drops = payload.host32(kVaqUplinkMcastDrops);
    h.vaq_uplink_err_drops = payload.host32(kVaqUplinkErrDrops);
    h.vaq_uplink_rx_drops = payload.host32(kVaqUplinkRxDrops);

    std::size_t needed = kHeaderSize + kRecordSize * h.group_count;
    if (with_mcast_total) needed = std::max(needed, kMcastTotalOffset + 4);
    reply.needed_ = needed;
    if (!payload.covers(0, needed)) return reply;

    // The total is read whenever it arrived, asked for or not: the receive
    // section asks the platform type again and may still want it.
    if (payload.covers(kMcastTotalOffset, 4)) {
        reply.mcast_total_ = payload.be32(kMcastTotalOffset);
        reply.has_mcast_total_ = true;
    }
    reply.complete_ = true;
    return reply;
}

QosGroup QueuingReply::group(unsigned i) const {
    const PayloadReader r = payload_.from(kHeaderSize + kRecordSize * std::size_t{i});
    QosGroup g;
    if (!complete_ || i >= header_.group_count || !r.covers(0, kRecordSize)) return g;
    g.qos_group = r.u8(kQosGroup);
    g.strict_priority = r.u8(kSchedPriority) != 0;
    g.no_drop = r.u8(kNoDrop) != 0;
    g.oper_bandwidth = r.u8(kOperBandwidth);
    g.mtu_configured = r.be16(kMtuConfigured);
    g.xon = r.be32(kXon);
    g.xoff = r.be32(kXoff);
    g.mtu_hw = r.be16(kMtuHw);
    g.q_size = r.be32(kQSize);
    g.q_size_40g = r.be32(kQSize40g);
    g.rx_port_pkts = r.be32(kRxPortPkts);
    g.ucast_to_xbar = r.be32(kUcastToXbar);
    g.ucast_from_xbar = r.be32(kUcastFromXbar);
    g.tx_port_pkts = r.be32(kTxPortPkts);
    g.pfc_rx_active = r.be32(kPfcRxActive) != 0;
    g.pfc_tx_active = r.be32(kPfcTxActive) != 0;
    g.mcast_to_xbar = r.be32(kMcastToXbar);
    const std::uint32_t discards16 = r.be16(kIngressDiscards16);
    g.ingress_discards = discards16 != 0 ? discards16 : r.be32(kIngressDiscards32);
    g.ingress_discards_bits = discards16 != 0 ? 16 : 32;
    return g;
}

}  // namespace qdcli::ethernet
