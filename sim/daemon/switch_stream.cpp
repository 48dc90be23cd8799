// SPDX-License-Identifier: MIT
// The daemon's switch-wide attribute stream (what qdsim::open_switch_stream
// hands the switch-wide report), produced from the model at that moment.
//
// Ethernet part: every Ethernet interface (types 26 and 1, sub-interfaces
// left out) in ascending index order that has a queuing report (a `queuing`
// section that does not say "supported": false, as command 17 answers), as
//
//   0x0cff00b7 index;
//   per qos-group, ascending by number (group 0 first): 0x14ff00b8 group,
//     0x02ff00b9 priority, 0x14ff00ba bandwidth;
//   0x15ff00bb the multicast tail drops of the egress ASIC;
//   per qos-group, ascending: 0x14ff00bc group to 0x02ff00cb, in ID order;
//   0x14ff00cc the multicast packets received from the cross-bar, of the
//     first group as written (the port total, as the Ethernet report takes
//     it from the first record of command 17).
//
// An MTU left out is 1500, a hardware MTU left out the configured one.
//
// Host part, last (the report hands the rest of the stream over at the first
// host interface and keeps that interface's name): ONE host interface, the
// one the top-level `switch_report` section names, or else the first host
// interface with a queuing report (a `hif_queuing` section that does not say
// "supported": false):
//
//   "switch_report": {"host_interface": "Ethernet101/1/1", "full_report": true}
//
// "host_interface": null leaves the host part out; "full_report": true ends
// the stream with attribute 58, which runs the host-interface report of that
// interface. A named interface whose queuing report is not supported gives
// no host part either. The host attributes follow the host-interface report
// as the library shows an interface that was not named on the command line:
// input buffers with frh 1 are left out, and so are control buffers when the
// stats format is not 0, control queues, the statistics rows of control
// queues, and unsupported qos-groups.
//
//   0x0cff00b7 index, 0x14ff00cd slot, 0x14ff00ce index;
//   per input buffer: 0x14ff00cf per qos-group, 0x14ff00d0 frh, 0x02ff00d1
//     drop type, 0x14ff00d2 per cos, 0x14ff00d3 xon, d4 xoff, d5 size;
//   per queue: 0x14ff00d6 queue, 0x11ff00d7 per qos-group (-1, "n/a", for
//     the control queues 0 and 1 and for a queue with no qos-group),
//     0x14ff00d8 per cos (8 for a queue with none), d9 priority,
//     da bandwidth, db MTU;
//   0x14ff00dc buffer threshold, when there is one;
//   stats format 4: 0x14ff00de transmit limit, 0x14ff00df receive limit and
//     per queue the receive row 0x14ff00e5-e9 and the transmit row
//     0x14ff00ea-ef; any other format: 0x14ff00dd limit, then per queue
//     0x14ff00e2 queue number, e3 received, e4 transmitted;
//   except in stats format 4 (which has none): port statistics
//     0x14ff00f0-f3 and 0x02ff00f4 (overflow flags word, then port word);
//   0x02ff00f5 PFC enabled, then per cos 0 to 7: 0x14ff00f6 cos,
//     0x11ff00f7 qos-group (-1 for none), 0x02ff00f8-fa rx, tx, masked rx.
//
// Values are in host order with the widths the report reads: one byte for
// its u8 attributes, two for MTUs, four for its 32-bit ones (the pause
// states 0x02ff00ca/cb and the row cells 0x11ff00d7/0x14ff00d8 included),
// eight for 64-bit counters. 32-bit counters carry the low 32 bits of the
// model's counters, as command 17 does.
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "attribute_ids.hpp"
#include "core/wire_writer.hpp"
#include "model/sections.hpp"
#include "qdcli/wire.h"
#include "printer/streams.hpp"

namespace qdsim::daemon {
namespace {

namespace attr = qdcli::attr;

constexpr std::uint32_t kNone32 = 0xffffffffu;  // -1: "n/a", or no limit / threshold
constexpr std::uint32_t kNoCos = 8;
constexpr std::uint32_t kStatsSixColumns = 4;
constexpr std::uint32_t kPauseAll = 0x100;  // a pause word with this bit pauses every cos

class StreamOut {
public:
    void u8(std::uint32_t id, std::uint64_t v) { put(id, WireWriter().u8(static_cast<std::uint32_t>(v))); }
    void u16(std::uint32_t id, std::uint64_t v) { put(id, WireWriter().host16(static_cast<std::uint16_t>(v))); }
    void u32(std::uint32_t id, std::uint64_t v) { put(id, WireWriter().host32(static_cast<std::uint32_t>(v))); }
    void u64(std::uint32_t id, std::uint64_t v) { put(id, WireWriter().host64(v)); }
    void flag(std::uint32_t id, bool v) { u8(id, v ? 1 : 0); }
    void empty(std::uint32_t id) { list_.push_back({id, {}}); }
    void put(std::uint32_t id, WireWriter &value) { list_.push_back({id, value.take()}); }
    std::vector<Attribute> take() { return std::move(list_); }

private:
    std::vector<Attribute> list_;
};

const Json &section_of(const Json *data, const char *name) {
    static const Json none = Json::object();
    const Json *s = data != nullptr ? find(*data, std::string("/") + name) : nullptr;
    return s != nullptr && s->is_object() ? *s : none;
}

// Elements of an array member (none when it is missing or not an array).
std::vector<const Json *> elements(const Json &base, const std::string &pointer) {
    std::vector<const Json *> out;
    if (const Json *a = find(base, pointer); a != nullptr && a->is_array())
        for (const Json &e : *a) out.push_back(&e);
    return out;
}

// A list of qos-group or cos numbers as a bitmap of 0 to 7.
std::uint32_t bits_of(const Json &base, const std::string &pointer) {
    std::uint32_t bits = 0;
    for (const Json *e : elements(base, pointer)) {
        std::uint64_t n = 0;
        if (read_unsigned(*e, n) && n < 8) bits |= 1u << n;
    }
    return bits;
}

std::vector<std::uint32_t> members_of(std::uint32_t bits) {
    std::vector<std::uint32_t> out;
    for (std::uint32_t n = 0; n < 8; ++n)
        if (bits & (1u << n)) out.push_back(n);
    return out;
}

// A limit or threshold: null or missing is "none" (0xffffffff).
std::uint32_t limit_of(const Json &base, const std::string &pointer) { return get_u32(base, pointer, kNone32); }

// ---- Ethernet interfaces ----

constexpr std::uint64_t kDefaultMtu = 1500;

// The `queuing` section of an Ethernet interface that has a queuing report.
const Json *ethernet_queuing(const Interface &i) {
    if (i.kind != InterfaceKind::ethernet || i.sub_intf || i.data == nullptr) return nullptr;
    const Json *s = find(*i.data, "/queuing");
    return s != nullptr && s->is_object() && get_bool(*s, "/supported", true) ? s : nullptr;
}

void ethernet_interface(StreamOut &out, const Interface &i, const Json &queuing) {
    const std::vector<const Json *> written = elements(queuing, "/qos_groups");
    std::vector<const Json *> groups = written;
    std::stable_sort(groups.begin(), groups.end(), [](const Json *a, const Json *b) {
        return get_u64(*a, "/qos_group") < get_u64(*b, "/qos_group");
    });

    out.u32(attr::sw_if_index, i.if_index);
    for (const Json *g : groups) {
        out.u8(attr::sw_tx_qos_group, get_u64(*g, "/qos_group"));
        out.flag(attr::sw_sched_priority, get_bool(*g, "/priority"));
        out.u8(attr::sw_oper_bandwidth, get_u64(*g, "/bandwidth"));
    }
    out.u64(attr::sw_mcast_tail_drops, get_u64(queuing, "/counters/mcast_tail_drops"));
    for (const Json *g : groups) {
        const Json &c = section_of(g, "counters");
        out.u8(attr::sw_rx_qos_group, get_u64(*g, "/qos_group"));
        out.u32(attr::sw_q_size, get_u64(*g, "/q_size"));
        out.u32(attr::sw_q_size_40g, get_u64(*g, "/q_size_40g"));
        const std::uint64_t mtu = get_u64(*g, "/mtu", kDefaultMtu);
        out.u16(attr::sw_mtu_hw, get_u64(*g, "/mtu_hw", mtu));
        out.u16(attr::sw_mtu_configured, mtu);
        out.flag(attr::sw_no_drop, get_bool(*g, "/no_drop"));
        out.u32(attr::sw_xon, get_u64(*g, "/xon"));
        out.u32(attr::sw_xoff, get_u64(*g, "/xoff"));
        out.u32(attr::sw_rx_port_pkts, get_u64(c, "/rx_port_pkts"));
        out.u32(attr::sw_ucast_to_xbar, get_u64(c, "/ucast_to_xbar"));
        out.u32(attr::sw_mcast_to_xbar, get_u64(c, "/mcast_to_xbar"));
        out.u32(attr::sw_ucast_from_xbar, get_u64(c, "/ucast_from_xbar"));
        out.u32(attr::sw_tx_port_pkts, get_u64(c, "/tx_port_pkts"));
        // The 16-bit form of the discards counts when it is not zero, as in
        // the Ethernet report.
        const std::uint32_t discards16 = static_cast<std::uint16_t>(get_u64(c, "/ingress_discards16"));
        out.u32(attr::sw_ingress_discards, discards16 != 0 ? discards16 : get_u64(c, "/ingress_discards32"));
        out.u32(attr::sw_pfc_rx_active, get_bool(*g, "/pfc_rx_active") ? 1 : 0);
        out.u32(attr::sw_pfc_tx_active, get_bool(*g, "/pfc_tx_active") ? 1 : 0);
    }
    const Json *first = written.empty() ? nullptr : written.front();
    out.u32(attr::sw_mcast_from_xbar_total, first ? get_u64(section_of(first, "counters"), "/mcast_from_xbar") : 0);
}

// ---- The host interface ----

void input_buffers(StreamOut &out, const Json &hif, std::uint32_t stats_format) {
    for (const Json *b : elements(hif, "/input_buffers")) {
        if (get_u64(*b, "/frh") == 1) continue;
        if (get_bool(*b, "/ctrl") && stats_format != 0) continue;
        const std::uint32_t shown = bits_of(*b, "/qos_groups") & ~bits_of(*b, "/unsupported_qos_groups");
        for (std::uint32_t g : members_of(shown)) out.u8(attr::sw_ib_qos_group, g);
        out.u8(attr::sw_ib_frh, get_u64(*b, "/frh"));
        out.flag(attr::sw_ib_no_drop, get_bool(*b, "/no_drop"));
        for (std::uint32_t cos : members_of(bits_of(*b, "/cos"))) out.u8(attr::sw_ib_cos, cos);
        out.u32(attr::sw_ib_xon, get_u64(*b, "/xon"));
        out.u32(attr::sw_ib_xoff, get_u64(*b, "/xoff"));
        out.u32(attr::sw_ib_buffer_size, get_u64(*b, "/buffer_size"));
    }
}

void queue_rows(StreamOut &out, const std::vector<const Json *> &queues) {
    for (const Json *q : queues) {
        const std::uint64_t id = get_u64(*q, "/queue_id");
        out.u8(attr::sw_queue_id, id);
        const std::uint32_t shown = bits_of(*q, "/qos_groups") & ~bits_of(*q, "/unsupported_qos_groups");
        if (id <= 1 || shown == 0) out.u32(attr::sw_queue_qos_group, kNone32);
        else
            for (std::uint32_t g : members_of(shown)) out.u32(attr::sw_queue_qos_group, g);
        const std::uint32_t cos = bits_of(*q, "/cos");
        if (cos == 0) out.u32(attr::sw_queue_cos, kNoCos);
        else
            for (std::uint32_t k : members_of(cos)) out.u32(attr::sw_queue_cos, k);
        out.flag(attr::sw_queue_priority, get_bool(*q, "/priority"));
        out.u8(attr::sw_queue_bandwidth, get_u64(*q, "/bandwidth") & 0x7f);
        out.u16(attr::sw_queue_mtu, get_u64(*q, "/mtu"));
    }
}

// The statistics record of a queue; a queue the model gives none has a
// record of zeros numbered like the queue. A record is a control queue's
// when it says so, or else when its queue is one.
struct QueueStats {
    std::uint64_t number = 0;
    bool ctrl = false;
    const Json *counters = nullptr;
    std::uint64_t count(const char *name) const {
        return counters ? get_u64(*counters, std::string("/") + name) : 0;
    }
};

QueueStats stats_of(const Json &hif, const Json &queue) {
    const std::uint64_t queue_id = get_u64(queue, "/queue_id");
    const bool ctrl = get_bool(queue, "/ctrl");
    for (const Json *s : elements(hif, "/queue_stats"))
        if (get_u64(*s, "/queue_id") == queue_id)
            return {get_u64(*s, "/queue_num", queue_id), get_bool(*s, "/ctrl", ctrl), &section_of(s, "counters")};
    return {queue_id, ctrl, nullptr};
}

void queue_statistics(StreamOut &out, const Json &hif, const std::vector<const Json *> &queues,
                      std::uint32_t stats_format) {
    if (stats_format == kStatsSixColumns) {
        out.u32(attr::sw_queue_limit_tx, limit_of(hif, "/queue_limit"));
        out.u32(attr::sw_queue_limit_rx, limit_of(hif, "/queue_limit_rx"));
    } else {
        out.u32(attr::sw_queue_limit, limit_of(hif, "/queue_limit"));
    }
    for (const Json *q : queues) {
        const QueueStats s = stats_of(hif, *q);
        if (s.ctrl) continue;
        if (stats_format == kStatsSixColumns) {
            out.u32(attr::sw_rx_row_queue, s.number);
            out.u64(attr::sw_rx_row_received, s.count("rx"));
            out.u64(attr::sw_rx_row_tail_drop, s.count("tail_drop_rx"));
            out.u64(attr::sw_rx_row_no_buffer, s.count("no_buffer_rx"));
            out.u64(attr::sw_rx_row_mac_error, s.count("mac_error_rx"));
            out.u32(attr::sw_tx_row_queue, s.number);
            out.u64(attr::sw_tx_row_transmitted, s.count("tx"));
            out.u64(attr::sw_tx_row_tail_drop, s.count("tail_drop_tx"));
            out.u64(attr::sw_tx_row_no_buffer, s.count("no_buffer_tx"));
            out.u64(attr::sw_tx_row_mac_error, s.count("mac_error_tx"));
            out.u64(attr::sw_tx_row_mcast_tail_drop, s.count("mcast_tail_drop"));
        } else {
            out.u8(attr::sw_stats_queue, s.number);
            out.u64(attr::sw_stats_rx, s.count("rx"));
            out.u64(attr::sw_stats_tx, s.count("tx"));
        }
    }
}

void port_statistics(StreamOut &out, const Json &hif) {
    const Json &c = section_of(&hif, "counters");
    out.u64(attr::sw_port_rx_drop, get_u64(c, "/rx_drop"));
    out.u64(attr::sw_port_rx_mcast_drop, get_u64(c, "/rx_mcast_drop"));
    out.u64(attr::sw_port_rx_error, get_u64(c, "/rx_error"));
    out.u64(attr::sw_port_tx_drop, get_u64(c, "/tx_drop"));
    WireWriter overflow;
    overflow.host32(get_u32(hif, "/mux_ovflow_flags")).host32(get_u32(hif, "/mux_ovflow_ports"));
    out.put(attr::sw_mux_ovflow, overflow);
}

std::uint32_t pause_word(const Json &hif, const char *pointer) {
    const std::uint32_t w = get_u32(hif, pointer);
    return (w & kPauseAll) != 0 ? 0xffu : w;
}

void flow_control(StreamOut &out, const Json &hif) {
    const std::uint32_t rx = pause_word(hif, "/pause_rx"), tx = pause_word(hif, "/pause_tx");
    const std::uint32_t masked = get_u32(hif, "/pfc_rx_mask") & rx;
    out.flag(attr::sw_pfc_enabled, get_bool(hif, "/pfc_enabled"));
    for (std::uint32_t cos = 0; cos < 8; ++cos) {
        // Cos 7 has no qos-group entry; the lowest bit of an entry is its group.
        const std::uint32_t groups = cos < 7 ? get_u32(hif, "/cos_qos_group/" + std::to_string(cos)) & 0xffu : 0;
        out.u32(attr::sw_pause_cos, cos);
        out.u32(attr::sw_pause_qos_group, groups != 0 ? members_of(groups).front() : kNone32);
        out.flag(attr::sw_rx_pause, (rx >> cos) & 1u);
        out.flag(attr::sw_tx_pause, (tx >> cos) & 1u);
        out.flag(attr::sw_masked_rx_pause, (masked >> cos) & 1u);
    }
}

// A host interface has a queuing report when it has a `hif_queuing` section
// that does not say "supported": false (as its agent answers sub-command 16).
bool hif_supported(const Interface &i) {
    const Json *s = i.data != nullptr ? find(*i.data, "/hif_queuing") : nullptr;
    return s != nullptr && s->is_object() && get_bool(*s, "/supported", true);
}

// The host interface the stream describes, or none.
const Interface *shown_host(const Model &model) {
    const Json &choice = section_of(&model.root(), "switch_report");
    if (const Json *named = find(choice, "/host_interface")) {
        if (!named->is_string()) return nullptr;
        const Interface *i = model.find_interface(named->get<std::string>());
        return i != nullptr && i->kind == InterfaceKind::host && hif_supported(*i) ? i : nullptr;
    }
    for (const Interface &i : model.interfaces())
        if (i.kind == InterfaceKind::host && hif_supported(i)) return &i;
    return nullptr;
}

void host_interface(StreamOut &out, const Interface &i, bool full_report) {
    const Json &hif = section_of(&*i.data, "hif_queuing");
    const std::uint32_t stats_format = get_u32(hif, "/stats_format") & 0xffu;
    // Control queues are left out of the table; their statistics rows go
    // by the control flag of the statistics record.
    const std::vector<const Json *> queues = elements(hif, "/queues");
    std::vector<const Json *> rows;
    for (const Json *q : queues)
        if (!get_bool(*q, "/ctrl")) rows.push_back(q);

    out.u32(attr::sw_if_index, i.if_index);
    out.u8(attr::sw_hif_slot, i.slot);
    out.u32(attr::sw_hif_if_index, i.if_index);
    input_buffers(out, hif, stats_format);
    queue_rows(out, rows);
    if (const std::uint32_t threshold = limit_of(hif, "/buffer_threshold"); threshold != kNone32)
        out.u32(attr::sw_buffer_threshold, threshold);
    queue_statistics(out, hif, queues, stats_format);
    if (stats_format != kStatsSixColumns) port_statistics(out, hif);
    flow_control(out, hif);
    if (full_report) out.empty(ATTR_RUN_HIF_REPORT);
}

std::vector<Attribute> switch_stream(Model &model, std::uint32_t) {
    StreamOut out;
    for (const Interface &i : model.interfaces())
        if (const Json *queuing = ethernet_queuing(i)) ethernet_interface(out, i, *queuing);
    if (const Interface *host = shown_host(model))
        host_interface(out, *host, get_bool(section_of(&model.root(), "switch_report"), "/full_report"));
    return out.take();
}

// ---- The `switch_report` section ----

std::string lower(std::string s) {
    for (char &c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// The declared host interface a spelling names ("Ethernet101/1/1",
// "eth101/1/1", any case: what Model::find_interface accepts for it), or an
// empty text.
std::string declared_host(const Json &declared, const std::string &spelling) {
    std::string key = lower(spelling);
    std::size_t letters = 0;
    while (letters < key.size() && std::isalpha(static_cast<unsigned char>(key[letters]))) ++letters;
    if (letters == 0 || std::string("ethernet").compare(0, letters, key, 0, letters) != 0) return {};
    key = "ethernet" + key.substr(letters);
    const Json *interfaces = find(declared, "/interfaces");
    if (interfaces == nullptr || !interfaces->is_object()) return {};
    for (auto it = interfaces->begin(); it != interfaces->end(); ++it) {
        std::uint64_t index = 0;
        if (lower(it.key()) == key && read_unsigned(it.value().value("if_index", Json()), index) &&
            (index >> 24) == IF_TYPE_HIF)
            return it.key();
    }
    return {};
}

void check_switch_report(const Checker &check) {
    check.members_among("", {"host_interface", "full_report"});
    if (check.value().contains("full_report")) check.boolean("/full_report");
    const Json *named = find(check.value(), "/host_interface");
    if (named == nullptr || named->is_null()) return;
    if (!named->is_string()) check.fail("/host_interface", "expected the name of a host interface, or null");
    if (check.declared() == nullptr || declared_host(*check.declared(), named->get<std::string>()).empty())
        check.fail("/host_interface", "no host interface named \"" + named->get<std::string>() + "\"");
}

const printer::StreamProducerRegistrar producer{switch_stream};
const SectionRegistrar switch_report{Scope::root, "switch_report", check_switch_report};

}  // namespace
}  // namespace qdsim::daemon
