// SPDX-License-Identifier: MIT
// Queuing report of a front-panel Ethernet interface: the daemon's reply to
// QD_CLI_CMD_SHOW_IF_QUEUING, decoded into plain values before anything of
// it is printed.
//
// Reply layout: a 48-byte header, then one 152-byte record per qos-group.
// Multi-byte fields are big-endian, except the status word (compared as the
// daemon stores it) and the three VAQ uplink counters (see below).
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/reader.hpp"

namespace qdcli::ethernet {

constexpr std::size_t kHeaderSize = 48;
constexpr std::size_t kRecordSize = 152;
// The port-wide multicast total is the first record's mcast_from_xbar,
// read at this payload offset whatever the record count says.
constexpr std::size_t kMcastTotalOffset = 48 + 72;

// One qos-group record, every field widened to 32 bits.
struct QosGroup {
    std::uint32_t qos_group = 0;
    bool strict_priority = false;  // sched-type "priority", else WRR
    bool no_drop = false;
    std::uint32_t oper_bandwidth = 0;
    std::uint32_t mtu_configured = 0;
    std::uint32_t xon = 0;
    std::uint32_t xoff = 0;
    std::uint32_t mtu_hw = 0;
    std::uint32_t q_size = 0;
    std::uint32_t q_size_40g = 0;
    std::uint32_t rx_port_pkts = 0;
    std::uint32_t ucast_to_xbar = 0;
    std::uint32_t ucast_from_xbar = 0;
    std::uint32_t tx_port_pkts = 0;
    bool pfc_rx_active = false;
    bool pfc_tx_active = false;
    std::uint32_t mcast_to_xbar = 0;
    // The 16-bit discard count when it is non-zero, else the 32-bit one.
    std::uint32_t ingress_discards = 0;
    unsigned ingress_discards_bits = 32;  // the width of the field it came from
};

struct Header {
    unsigned group_count = 0;  // low 8 bits of the announced count
    std::uint64_t mcast_tail_drops = 0;
    std::uint32_t vaq_port = 0;
    bool vaq_buf_hidden = false;
    std::uint32_t vaq_drop_class_buf = 0;
    std::uint32_t vaq_uplink_mcast_drops = 0;
    std::uint32_t vaq_uplink_err_drops = 0;
    std::uint32_t vaq_uplink_rx_drops = 0;
};

// A checked reply: the header decoded, the records reachable one by one.
class QueuingReply {
public:
    // True when every byte the report reads is present; otherwise
    // length() of what arrived and needed() bytes that the report reads.
    bool complete() const { return complete_; }
    std::size_t length() const { return payload_.length(); }
    std::size_t needed() const { return needed_; }

    const Header &header() const { return header_; }
    // Record i, 0 <= i < header().group_count.
    QosGroup group(unsigned i) const;
    // The first record's mcast_from_xbar, when the payload holds it
    // (always when the decode was asked for it and is complete).
    std::uint32_t mcast_total() const { return mcast_total_; }
    bool has_mcast_total() const { return has_mcast_total_; }

private:
    friend QueuingReply decode_queuing_reply(const PayloadReader &payload, bool with_mcast_total);
    PayloadReader payload_;
    bool complete_ = false;
    std::size_t needed_ = kHeaderSize;
    Header header_;
    std::uint32_t mcast_total_ = 0;
    bool has_mcast_total_ = false;
};

// True when the reply's status word says the daemon keeps no queuing report
// for the interface (a reply too short to hold the word is not).
bool queuing_reply_unsupported(const PayloadReader &payload);

// Checks that the payload holds the header, every announced record and,
// when `with_mcast_total`, the port-wide multicast total; decodes the header.
QueuingReply decode_queuing_reply(const PayloadReader &payload, bool with_mcast_total);

}  // namespace qdcli::ethernet
