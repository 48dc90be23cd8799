// SPDX-License-Identifier: MIT
#include "hif/hif_report.hpp"

#include <array>
#include <cstring>
#include <span>

#include "catalogue/attribute_ids.hpp"
#include "frame/exchange.hpp"
#include "frame/message.hpp"
#include "output/observe.hpp"
#include "qdcli/wire.h"

namespace qdcli::hif {
namespace {

constexpr std::uint8_t HIF_QUEUING_VARIANT = 3;
constexpr std::uint8_t QUEUE_ID_CTRL_HI = 0;
constexpr std::uint8_t QUEUE_ID_CTRL_LO = 1;
constexpr std::uint8_t SCHED_STRICT_PRIORITY = 0x80;
constexpr std::uint8_t SCHED_BANDWIDTH = 0x7f;
constexpr std::uint32_t PAUSE_ALL_COS = 0x100;  // set: every cos is paused
constexpr std::uint32_t MUX_OVFLOW_PORT_1 = 2;
constexpr std::uint32_t MUX_OVFLOW_PORT_3 = 8;
constexpr std::uint8_t STATS_FORMAT_SINGLE = 0;  // receive-only table, two-column port statistics
constexpr std::uint8_t STATS_FORMAT_ROWS = 4;    // receive and transmit rows, no port statistics
constexpr std::size_t QOS_GROUP_COLUMN = 13;
constexpr std::size_t COS_COLUMN = 15;
constexpr std::size_t QUEUE_NAME_BLANKS = 10;

constexpr std::size_t REPLY_SIZE = LC_STATS_HDR_SIZE + HIF_QUEUING_INFO_SIZE;  // 1140

// The qos-groups a section found unsupported, in the order found (a group
// unsupported in two records is listed twice). The list has room for eight
// numbers, one per qos-group; a reply that names more than eight is
// repeating itself, and the numbers past the eighth are left out of the
// footnote.
class UnsupportedGroups {
public:
    void add(unsigned group) {
        if (count_ < groups_.size()) groups_[count_++] = static_cast<std::uint8_t>(group);
    }
    bool empty() const { return count_ == 0; }
    std::span<const std::uint8_t> groups() const { return {groups_.data(), count_}; }

private:
    std::array<std::uint8_t, 8> groups_{};
    std::size_t count_ = 0;
};

bool bit(std::uint32_t map, unsigned k) { return ((map >> k) & 1u) != 0; }

// The qos-group list of an input buffer, each number followed by a blank. Returns how many numbers
// were printed (unsupported groups are printed, and counted, only when
// detailed).
unsigned input_buffer_groups(const InputBuffer &buffer, bool detailed, UnsupportedGroups &unsupported,
                             HifOutput &out) {
    unsigned printed = 0;
    for (unsigned g = 0; g < 8; ++g) {
        if (!bit(buffer.qos_group_map, g)) continue;
        if (!bit(buffer.qos_group_hw_map, g)) {
            unsupported.add(g);
            if (!detailed) continue;
        }
        if (printed > 0) out.put(" ");
        out.put("%d ", {word(attr::ib_qos_group, g)});
        ++printed;
    }
    return printed;
}

// The qos-group column of a queue, padded to 13 characters on the
// assumption of one-digit numbers.
void queue_groups(const Queue &queue, bool detailed, UnsupportedGroups &unsupported, HifOutput &out) {
    std::size_t width = 0;
    for (unsigned g = 0; g < 8; ++g) {
        if (!bit(queue.qos_group_map, g)) continue;
        if (!bit(queue.qos_group_hw_map, g)) {
            unsupported.add(g);
            if (!detailed) continue;
        }
        if (width > 0) {
            out.put(" ");
            ++width;
        }
        out.put("%d", {word(attr::queue_qos_group, g)});
        ++width;
    }
    for (std::size_t n = width; n < QOS_GROUP_COLUMN; ++n) out.put(" ");
}

// The cos column of a queue, padded to 15 characters.
void queue_cos(const Queue &queue, HifOutput &out) {
    std::size_t width = 0;
    for (unsigned k = 0; k < 8; ++k) {
        if (!bit(queue.cos_map, k)) continue;
        if (width > 0) out.put(" ");
        out.put("%d", {word(attr::queue_cos, k)});
        width = width == 0 ? 1 : width + 2;
    }
    for (std::size_t n = width; n < COS_COLUMN; ++n) out.put(" ");
}

void footnote(const char *opening, const UnsupportedGroups &unsupported, std::uint32_t attr, bool detailed,
              HifOutput &out) {
    if (unsupported.empty()) return;
    out.put(opening);
    for (const std::uint8_t g : unsupported.groups()) out.put("%d ", {word(attr, g)});
    out.put(" unsupported");
    out.put(detailed ? ", merged with other qos-group\n" : "\n");
}

void input_buffers(const HifQueuingInfo &info, bool detailed, HifOutput &out) {
    UnsupportedGroups unsupported;
    out.put("  Input buffer allocation:");
    for (std::uint32_t i = 0; i < info.ib_count; ++i) {
        const InputBuffer &buffer = info.input_buffers[i];
        if (buffer.frh == 1) continue;
        if (buffer.ctrl != 0 && info.stats_format != 0 && !detailed) continue;
        const observe::Row row("input_buffers");
        if (buffer.ctrl != 0 && info.stats_format != 0) {
            out.put("\n  Qos-group: ctrl\n");
        } else {
            out.put("\n  Qos-group: ");
            const unsigned printed = input_buffer_groups(buffer, detailed, unsupported, out);
            out.put(printed >= 2 ? " (shared)\n" : "\n");
        }
        out.put("  frh: %d\n", {word(attr::ib_frh, buffer.frh)});
        out.put("  drop-type: %s\n", {label(attr::ib_drop_type, buffer.no_drop ? "no-drop" : "drop")});
        out.put("  cos: ");
        bool first = true;
        for (unsigned k = 0; k < 8; ++k) {
            if (!bit(buffer.cos_map, k)) continue;
            if (!first) out.put(" ");
            out.put("%d", {word(attr::ib_cos, k)});
            first = false;
        }
        out.put("\n");
        out.put("  xon       xoff      buffer-size\n");
        out.put("  ---------+---------+-----------\n");
        out.put("  %-9d %-9d %-9d\n", {word(attr::ib_xon, buffer.xon), word(attr::ib_xoff, buffer.xoff),
                                       word(attr::ib_buffer_size, buffer.buffer_size)});
    }
    footnote("\n* qos-group ", unsupported, attr::ib_unsupported_qos_group, detailed, out);
}

void queueing(const HifQueuingInfo &info, bool detailed, HifOutput &out) {
    UnsupportedGroups unsupported;
    out.put("\n  Queueing:\n");
    out.put("  queue    qos-group    cos            priority  bandwidth mtu \n");
    out.put("  --------+------------+--------------+---------+---------+----\n");
    for (std::uint32_t j = 0; j < info.queue_count; ++j) {
        const Queue &queue = info.queues[j];
        if (!detailed && (queue.flags & QUEUE_FLAG_CTRL)) continue;
        const observe::Row row("queues");
        if (queue.queue_id == QUEUE_ID_CTRL_HI || queue.queue_id == QUEUE_ID_CTRL_LO) {
            out.tell(word(attr::queue_id, queue.queue_id));
            out.tell(label(attr::queue_name, queue.queue_id == QUEUE_ID_CTRL_HI ? "ctrl-hi" : "ctrl-lo"));
            out.formatted("  %s", queue.queue_id == QUEUE_ID_CTRL_HI ? "ctrl-hi  " : "ctrl-lo  ");
            out.put("n/a");
            for (std::size_t n = 0; n < QUEUE_NAME_BLANKS; ++n) out.put(" ");
        } else {
            out.put("  %d        ", {word(attr::queue_id, queue.queue_id)});
            queue_groups(queue, detailed, unsupported, out);
        }
        queue_cos(queue, out);
        out.put(" %3s     %5d", {label(attr::queue_priority, (queue.sched & SCHED_STRICT_PRIORITY) ? "PRI" : "WRR"),
                                 word(attr::queue_bandwidth, queue.sched & SCHED_BANDWIDTH)});
        out.put("      %4d\n", {word(attr::queue_mtu, queue.mtu)});
    }
    footnote("\n  * qos-group ", unsupported, attr::queue_unsupported_qos_group, detailed, out);
}

void limit(std::uint32_t value, std::uint32_t attr, HifOutput &out) {
    if (value == kNoValue)
        out.put("Disabled\n");
    else
        out.put("%u bytes\n", {word(attr, value)});
}

void flags_column(const QueueStats &stats, HifOutput &out) {
    out.tell(label(attr::stats_flags, (stats.flags & QUEUE_FLAG_CTRL) ? "ctrl" : "data"));
    out.formatted(" %s\n", (stats.flags & QUEUE_FLAG_CTRL) ? " ctrl" : " data");
}

// Calls `row` for the statistics record of every listed queue that the
// report shows: a control queue (by its statistics record's flag) only when
// detailed. Each call is one row of `table` for the observer, unless the
// table is null (the caller tells its own rows).
template <class Row>
void statistics_rows(const HifQueuingInfo &info, bool detailed, const char *table, Row &&row) {
    for (std::uint32_t j = 0; j < info.queue_count; ++j) {
        const QueueStats &stats = info.stats_of(info.queues[j]);
        if (!detailed && (stats.flags & QUEUE_FLAG_CTRL)) continue;
        if (table == nullptr) {
            row(stats);
        } else {
            const observe::Row observed(table);
            row(stats);
        }
    }
}

// The one- and two-column statistics (receive, or receive and transmit).
void statistics_columns(const HifQueuingInfo &info, bool detailed, bool with_tx, HifOutput &out) {
    out.put("\n  Queue limit: ");
    limit(info.queue_limit, attr::queue_limit, out);
    out.put("\n  Queue Statistics:\n");
    out.put(with_tx ? "  queue  rx              tx             " : "  queue  rx              ");
    out.put(detailed ? " flags\n" : "      \n");
    out.put(with_tx ? "  ------+---------------+---------------" : "  ------+---------------");
    out.put(detailed ? "+-----\n" : "      \n");
    statistics_rows(info, detailed, "queue_stats", [&](const QueueStats &s) {
        out.put("  %d      %-15llu", {word(attr::stats_queue, s.queue_num), counter(attr::stats_rx, s.rx_count)});
        if (with_tx) out.put(" %-15llu", {counter(attr::stats_tx, s.tx_count)});
        if (detailed)
            flags_column(s, out);
        else
            out.put("\n");
    });
}

void statistics_rows_format(const HifQueuingInfo &info, bool detailed, HifOutput &out) {
    const char *separator = detailed ? "  ---+----------------+-----------+------------+----------+-----------+-----+\n"
                                     : "  ---+----------------+-----------+------------+----------+-----------+\n";
    out.put("\n  Queue Limit Tx: ");
    limit(info.queue_limit, attr::queue_limit_tx, out);
    out.put("  Queue Limit Rx: ");
    limit(info.queue_limit_rx, attr::queue_limit_rx, out);
    out.put("\n  Queue Statistics:\n");
    out.put(separator);
    if (detailed) {
        out.put("  Que|Received /      |Tail Drop  |No Buffer   |MAC Error |Multicast  |Flags|\n");
        out.put("  No |Transmitted     |           |            |          |Tail Drop  |     |\n");
    } else {
        out.put("  Que|Received /      |Tail Drop  |No Buffer   |MAC Error |Multicast  |\n");
        out.put("  No |Transmitted     |           |            |          |Tail Drop  |\n");
    }
    out.put(separator);
    statistics_rows(info, detailed, nullptr, [&](const QueueStats &s) {
        observe::row_begin("rx_queue_stats");
        out.put("%3urx|%16llu", {word(attr::rx_row_queue, s.queue_num), counter(attr::rx_row_received, s.rx_count)});
        out.put("|%11llu", {counter(attr::rx_row_tail_drop, s.tail_drop_rx)});
        out.put("|%12llu", {counter(attr::rx_row_no_buffer, s.no_buffer_rx)});
        out.put("|%10llu", {counter(attr::rx_row_mac_error, s.mac_error_rx)});
        out.put("|     -     |");
        if (detailed) {
            out.tell(label(attr::row_flags, (s.flags & QUEUE_FLAG_CTRL) ? "ctrl" : "data"));
            out.put((s.flags & QUEUE_FLAG_CTRL) ? " ctrl|\n" : " data|\n");
        } else {
            out.put("\n");
        }
        observe::row_end("rx_queue_stats");
        observe::row_begin("tx_queue_stats");
        out.put("%3utx|%16llu",
                {word(attr::tx_row_queue, s.queue_num), counter(attr::tx_row_transmitted, s.tx_count)});
        out.put("|%11llu", {counter(attr::tx_row_tail_drop, s.tail_drop_tx)});
        out.put("|%12llu", {counter(attr::tx_row_no_buffer, s.no_buffer_tx)});
        out.put("|%10llu", {counter(attr::tx_row_mac_error, s.mac_error_tx)});
        out.put("|%11llu|", {counter(attr::tx_row_mcast_tail_drop, s.mcast_tail_drop)});
        observe::row_end("tx_queue_stats");
        out.put(detailed ? "     |\n" : "\n");
        out.put(separator);
    });
}


void port_statistics(const HifQueuingInfo &info, std::uint64_t tx_queue_drops, HifOutput &out) {
    const char *overflow = (info.mux_ovflow_flags != 0 || info.mux_ovflow_ports != 0) ? "  Active" : "InActive";
    if (info.stats_format == STATS_FORMAT_ROWS) return;
    out.put("\n  Port Statistics:\n");
    if (info.stats_format == STATS_FORMAT_SINGLE) {
        out.put("  tx queue drop   mux ovflow \n");
        out.put("  ---------------+-----------\n");
        out.put("  %-15Lu %8s ", {wide(attr::port_tx_queue_drop, tx_queue_drops),
                                  label(attr::mux_ovflow, overflow)});
        if (info.mux_ovflow_ports == MUX_OVFLOW_PORT_1) out.put("(Port %d)", {word(attr::mux_ovflow_port, 1)});
        if (info.mux_ovflow_ports == MUX_OVFLOW_PORT_3) out.put("(Port %d)", {word(attr::mux_ovflow_port, 3)});
        out.put("\n");
        return;
    }
    out.put("  rx drop         rx mcast drop   rx error        tx drop         mux ovflow    \n");
    out.put("  ---------------+---------------+---------------+---------------+--------------\n");
    out.put("  %-15llu", {counter(attr::port_rx_drop, info.rx_drop)});
    out.put(" %-15llu", {counter(attr::port_rx_mcast_drop, info.rx_mcast_drop)});
    out.put(" %-15llu", {counter(attr::port_rx_error, info.rx_error)});
    out.put(" %-15llu", {counter(attr::port_tx_drop, info.tx_drop)});
    out.overflow_column(label(attr::port_mux_ovflow, overflow));
    out.put("\n");
}

// A pause word whose bit 8 is set pauses every cos.
std::uint32_t pause_state(std::uint32_t word_value) { return (word_value & PAUSE_ALL_COS) ? 0xffu : word_value; }

const char *xoff_or_xon(std::uint32_t state, unsigned k) { return bit(state, k) ? "xoff" : "xon"; }

void flow_control(const HifQueuingInfo &info, bool detailed, HifOutput &out) {
    const std::uint32_t rx = pause_state(info.pause_rx);
    const std::uint32_t tx = pause_state(info.pause_tx);
    const std::uint32_t mask = info.pfc_rx_mask;
    const std::uint32_t masked = mask & rx;
    out.put("\n  Priority-flow-control enabled: %s\n", {label(attr::pfc_enabled, info.pfc_enabled ? "yes" : "no")});
    out.put("  Flow-control status: ");
    if (detailed)
        out.put("rx 0x%x, tx 0x%x, rx_mask 0x%x\n", {word(attr::pause_rx_state, rx), word(attr::pause_tx_state, tx),
                                                     word(attr::pfc_rx_mask, mask)});
    else
        out.put("\n");
    out.put("  cos     qos-group   rx pause  tx pause  masked rx pause\n");
    out.put("  -------+-----------+---------+---------+---------------\n");
    for (unsigned k = 0; k < 8; ++k) {
        const observe::Row row("pause");
        const Field rx_text = label(attr::rx_pause, xoff_or_xon(rx, k));
        const Field tx_text = label(attr::tx_pause, xoff_or_xon(tx, k));
        const Field masked_text = label(attr::masked_rx_pause, xoff_or_xon(masked, k));
        const std::uint8_t groups = k < kCosWithGroupMap ? info.cos_qos_group_map[k] : 0;
        if (groups != 0) {
            const auto lowest = static_cast<std::uint32_t>(__builtin_ctz(groups));
            out.put("  %d       %8d    %-8s  %-8s  %-4s\n",
                    {word(attr::pause_cos, k), word(attr::pause_qos_group, lowest), rx_text, tx_text, masked_text});
        } else {
            out.put("  %d            n/a    %-8s  %-8s  %-4s\n",
                    {word(attr::pause_cos, k), rx_text, tx_text, masked_text});
        }
    }
}

// Tells a reply that cannot be reported, naming what is wrong with it, in
// the report's own style (the typed report flushes it at once); the caller
// then returns and the reply's owner releases it. A reply is refused when it
// is shorter than the 1140 bytes the report reads (header and body), when
// ib_count or queue_count exceeds its 8 record slots, or when a listed
// queue's id exceeds 9, the last of the 10 statistics records:
//   "Reply for NAME truncated: LENGTH of 1140 bytes"
//   "Reply for NAME damaged: COUNT input buffers, room for 8"
//   "Reply for NAME damaged: COUNT queues, room for 8"
//   "Reply for NAME damaged: queue id ID, room for 0 to 9"
void refuse(const HifDecodeResult &damage, std::size_t payload_length, const char *if_name, HifOutput &out) {
    switch (damage.damage) {
    case HifDamage::truncated:
        out.fail(QDCLI_FAILURE_TRUNCATED, 0, "Reply for %s truncated: %zu of %zu bytes\n", if_name, payload_length,
                 REPLY_SIZE);
        break;
    case HifDamage::too_many_buffers:
        out.fail(QDCLI_FAILURE_DAMAGED, 0, "Reply for %s damaged: %u input buffers, room for %zu\n", if_name,
                 damage.value, kInputBufferSlots);
        break;
    case HifDamage::too_many_queues:
        out.fail(QDCLI_FAILURE_DAMAGED, 0, "Reply for %s damaged: %u queues, room for %zu\n", if_name, damage.value,
                 kQueueSlots);
        break;
    case HifDamage::queue_id_range:
        out.fail(QDCLI_FAILURE_DAMAGED, 0, "Reply for %s damaged: queue id %u, room for 0 to %zu\n", if_name,
                 damage.value, kQueueStatsSlots - 1);
        break;
    case HifDamage::none:
        return;
    }
    out.deliver();
}

}  // namespace

void print_hif_queuing(const HifQueuingInfo &info, const ReportContext &context, const char *if_name,
                       HifOutput &out) {
    const bool detailed = context.detailed;
    out.formatted("%s queuing information:\n", if_name);
    input_buffers(info, detailed, out);
    queueing(info, detailed, out);
    if (info.buffer_threshold != kNoValue)
        out.put("\n  Buffer threshold: %u bytes", {word(attr::buffer_threshold, info.buffer_threshold)});
    if (info.stats_format == STATS_FORMAT_ROWS)
        statistics_rows_format(info, detailed, out);
    else
        statistics_columns(info, detailed, info.stats_format != STATS_FORMAT_SINGLE, out);
    out.deliver();
    port_statistics(info, context.tx_queue_drops, out);
    flow_control(info, detailed, out);
}

std::int32_t show_hif_queuing(cmd_paraminfo *pinfo, std::uint32_t if_index, const char *if_name, HifOutput &out) {
    if (if_name == nullptr) if_name = "";
    const observe::Subject subject(observe::interface(if_index, if_name));

    // The slot stays 0 when the platform does not know the interface.
    std::uint8_t slot = 0;
    if_index_get_slot(if_index, &slot);
    out.put("if_slot %d, ifidx 0x%x\n", {word(attr::hif_slot, slot), word(attr::hif_if_index, if_index)});

    lc_stats_req request = make_lc_request(LC_STATS_CMD_HIF_QUEUING, HIF_QUEUING_VARIANT);
    const std::uint32_t target = hton_if_index(if_index);  // already in the agent's byte order
    std::memcpy(request.target_if_index, &target, sizeof target);

    ReceivedMessage reply(pinfo->mts_handle);
    const ExchangeResult exchange = lc_stats_exchange(pinfo->mts_handle, lc_stats_node(slot), request, reply);
    switch (exchange.outcome) {
    case Outcome::send_failed:
        out.fail(QDCLI_FAILURE_SEND, exchange.error, "Cmd send failed for %s with error code %s\n", if_name,
                 error_text(exchange.error));
        out.deliver();
        return 0;
    case Outcome::recv_failed:
        out.fail(QDCLI_FAILURE_RECEIVE, exchange.error, "Cmd recv failed for %s with error code %s\n", if_name,
                 error_text(exchange.error));
        out.deliver();
        return 0;
    case Outcome::empty_payload:
        out.fail(QDCLI_FAILURE_EMPTY, 0, "%s", "mts payload is empty");
        out.deliver();
        return 0;  // the reply is released by its owner
    case Outcome::ok:
        break;
    }

    ReportContext context;
    context.detailed = pinfo->cmd_id == CMD_ID_SHOW_QUEUING_IF;

    // The reply is checked whole before anything of it is printed: first its
    // header (a payload too short for the status is refused as truncated),
    // then its status, then the body.
    const PayloadReader payload = reply.payload();
    if (!payload.covers(0, LC_STATS_HDR_SIZE)) {
        refuse({HifDamage::truncated, 0}, payload.length(), if_name, out);
        return 0;
    }
    if (const std::uint32_t status = lc_reply_status(payload); status != 0) {
        out.fail(QDCLI_FAILURE_NOT_SUPPORTED, static_cast<std::int32_t>(status),
                 "Cmd not supported for %s, error code %s\n", if_name, error_text(static_cast<std::int32_t>(status)));
        out.deliver();
        return 0;
    }
    HifQueuingInfo info;
    if (const HifDecodeResult decoded = decode_hif_queuing_info(payload.from(LC_STATS_HDR_SIZE), info);
        !decoded.ok()) {
        refuse(decoded, payload.length(), if_name, out);
        return 0;
    }

    // A failure here is not told: the block stays zero and format 0 shows
    // no transmit queue drops.
    qos_counter_block counters{};
    statscl_get_qos_counters(0, if_index, 0, &counters);
    context.tx_queue_drops = counters.tx_queue_drops;

    print_hif_queuing(info, context, if_name, out);
    reply.release();
    out.deliver();
    return 0;
}

}  // namespace qdcli::hif
