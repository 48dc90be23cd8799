// SPDX-License-Identifier: MIT
// Host-interface queuing (agent sub-command 16, variant 3).
//
// The agent of an extender answers for its own host interfaces with the
// 1108-byte hif_queuing_info, encoded from the interface's "hif_queuing"
// section:
//
//   "hif_queuing": {
//     "supported": true, "stats_format": 0,
//     "input_buffers": [{"frh": 0, "no_drop": false, "qos_groups": [0], "unsupported_qos_groups": [],
//                        "ctrl": false, "cos": [0, 1, 2], "xon": 0, "xoff": 0, "buffer_size": 0}],
//     "queues": [{"queue_id": 2, "qos_groups": [0], "unsupported_qos_groups": [], "cos": [0, 1, 2],
//                 "priority": false, "bandwidth": 50, "ctrl": false, "mtu": 1500}],
//     "queue_stats": [{"queue_id": 2, "queue_num": 2, "ctrl": false, "counters": {"rx": 0, ...}}],
//     "counters": {"rx_drop": 0, "rx_mcast_drop": 0, "rx_error": 0, "tx_drop": 0},
//     "mux_ovflow_flags": 0, "mux_ovflow_ports": 0,
//     "pfc_enabled": false, "pfc_rx_mask": 0, "cos_qos_group": [1, 1, 2, 2, 4, 4, 8],
//     "pause_rx": 0, "pause_tx": 0,
//     "buffer_threshold": null, "queue_limit": null, "queue_limit_rx": null
//   }
//
// A record's qos-group map holds both of its lists; the hardware map holds
// "qos_groups" only, so a group of "unsupported_qos_groups" is one that uses
// the record but that the hardware does not support. The statistics records
// sit in ten slots indexed by queue id; a listed queue without one of its own
// gets an empty record with its number and its control flag. A record of
// "queue_stats" takes the control flag of the queue with its id unless it
// says otherwise. A null (or absent) threshold or limit is 0xffffffff: none.
//
// An interface that is not a host interface of the agent's extender is
// unknown to it; a host interface without the section (or with a null one,
// which takes away what a template gave), or with "supported" false, is
// answered with status "not supported" and no body.
//
// Every counter sits in a "counters" block, so the QoS clear of a host
// interface (platform/hif_qos_clear.cpp) zeroes them and nothing else.
#include <algorithm>
#include <array>
#include <set>
#include <string>

#include "agent/agent.hpp"
#include "core/errors.hpp"
#include "core/wire_writer.hpp"
#include "model/sections.hpp"
#include "qdcli/wire.h"

namespace qdsim::agent {
namespace {

constexpr std::uint8_t kVariant = 3;
constexpr std::size_t kInputBufferSlots = 8, kQueueSlots = 8, kQueueStatsSlots = 10, kCosWithGroupMap = 7;
constexpr std::uint32_t kNone = 0xffffffffu;

// Offsets in hif_queuing_info.
constexpr std::size_t kIbCount = 0, kQueueCount = 4, kStatsFormat = 8, kInputBufferBase = 12, kInputBufferSize = 20,
                      kQueueBase = 172, kQueueSize = 8, kRxDrop = 236, kRxMcastDrop = 244, kRxError = 252,
                      kTxDrop = 260, kMuxOvflowFlags = 268, kMuxOvflowPorts = 272, kQueueStatsBase = 276,
                      kQueueStatsSize = 76, kPfcEnabled = 1076, kPfcRxMask = 1077, kCosQosGroupMap = 1078,
                      kPauseRx = 1088, kPauseTx = 1092, kBufferThreshold = 1096, kQueueLimit = 1100,
                      kQueueLimitRx = 1104;

static_assert(kInputBufferBase + kInputBufferSlots * kInputBufferSize == kQueueBase);
static_assert(kQueueBase + kQueueSlots * kQueueSize == kRxDrop);
static_assert(kQueueLimitRx + 4 == HIF_QUEUING_INFO_SIZE);

constexpr std::uint8_t kSchedPriority = 0x80;

// Counters of one statistics record, in the record's order.
const std::array<const char *, 9> kQueueCounters = {"rx",          "tx",          "tail_drop_tx",
                                                    "tail_drop_rx", "no_buffer_tx", "no_buffer_rx",
                                                    "mac_error_tx", "mac_error_rx", "mcast_tail_drop"};

const char *const kSection = "hif_queuing";

std::string at(const std::string &list, std::size_t i) { return list + "/" + std::to_string(i); }

// ---- Encoding ----

// Bit k for every number k of the list at `pointer`.
std::uint8_t bits(const Json &record, const char *pointer) {
    std::uint8_t map = 0;
    if (const Json *list = find(record, pointer); list && list->is_array())
        for (const Json &k : *list) map = static_cast<std::uint8_t>(map | (1u << (get_u32(k, "") & 7u)));
    return map;
}

std::uint32_t limit(const Json &section, const char *pointer) {
    const Json *v = find(section, pointer);
    if (v == nullptr || v->is_null()) return kNone;
    return get_u32(*v, "", kNone);
}

const Json *list(const Json &section, const char *pointer) {
    const Json *v = find(section, pointer);
    return v && v->is_array() ? v : nullptr;
}

void put_input_buffer(WireWriter &out, std::size_t base, const Json &ib) {
    const std::uint8_t supported = bits(ib, "/qos_groups");
    const std::uint8_t unsupported = bits(ib, "/unsupported_qos_groups");
    out.put_u8(base + 0, get_u32(ib, "/frh"));
    out.put_u8(base + 1, get_bool(ib, "/no_drop") ? 1 : 0);
    out.put_u8(base + 2, supported | unsupported);
    out.put_u8(base + 3, supported & ~unsupported);
    out.put_u8(base + 5, get_bool(ib, "/ctrl") ? 1 : 0);
    out.put_u8(base + 6, bits(ib, "/cos"));
    out.put_be32(base + 8, get_u32(ib, "/xon"));
    out.put_be32(base + 12, get_u32(ib, "/xoff"));
    out.put_be32(base + 16, get_u32(ib, "/buffer_size"));
}

void put_queue(WireWriter &out, std::size_t base, const Json &q) {
    const std::uint8_t supported = bits(q, "/qos_groups");
    const std::uint8_t unsupported = bits(q, "/unsupported_qos_groups");
    const std::uint32_t bandwidth = get_u32(q, "/bandwidth") & 0x7fu;
    out.put_u8(base + 0, get_u32(q, "/queue_id"));
    out.put_u8(base + 1, supported | unsupported);
    out.put_u8(base + 2, supported & ~unsupported);
    out.put_u8(base + 3, bits(q, "/cos"));
    out.put_u8(base + 4, (get_bool(q, "/priority") ? kSchedPriority : 0) | bandwidth);
    out.put_u8(base + 5, get_bool(q, "/ctrl") ? QUEUE_FLAG_CTRL : 0);
    out.put_be16(base + 6, get_u32(q, "/mtu"));
}

void put_queue_stats(WireWriter &out, std::size_t base, std::uint32_t queue_id, const Json *stats, bool ctrl) {
    out.put_u8(base + 0, stats ? get_u32(*stats, "/queue_num", queue_id) : queue_id);
    out.put_u8(base + 2, (stats ? get_bool(*stats, "/ctrl", ctrl) : ctrl) ? QUEUE_FLAG_CTRL : 0);
    for (std::size_t c = 0; c < kQueueCounters.size(); ++c) {
        const std::uint64_t value = stats ? get_u64(*stats, std::string("/counters/") + kQueueCounters[c]) : 0;
        out.put_be64_low_first(base + 4 + 8 * c, value);
    }
}

std::vector<std::uint8_t> encode(const Json &section) {
    WireWriter out(HIF_QUEUING_INFO_SIZE);
    const Json *buffers = list(section, "/input_buffers");
    const Json *queues = list(section, "/queues");
    const Json *stats = list(section, "/queue_stats");
    const std::size_t ib_count = buffers ? std::min(buffers->size(), kInputBufferSlots) : 0;
    const std::size_t queue_count = queues ? std::min(queues->size(), kQueueSlots) : 0;

    out.put_be32(kIbCount, static_cast<std::uint32_t>(ib_count));
    out.put_be32(kQueueCount, static_cast<std::uint32_t>(queue_count));
    out.put_u8(kStatsFormat, get_u32(section, "/stats_format"));
    for (std::size_t i = 0; i < ib_count; ++i)
        put_input_buffer(out, kInputBufferBase + i * kInputBufferSize, (*buffers)[i]);

    // Every slot of a listed queue gets a record; a record of its own, if
    // there is one, wins.
    std::array<const Json *, kQueueStatsSlots> stats_of{};
    std::array<bool, kQueueStatsSlots> listed{};
    std::array<bool, kQueueStatsSlots> ctrl_of{};
    for (std::size_t j = 0; j < queue_count; ++j) {
        const Json &q = (*queues)[j];
        const std::uint32_t id = get_u32(q, "/queue_id");
        put_queue(out, kQueueBase + j * kQueueSize, q);
        if (id < kQueueStatsSlots) {
            listed[id] = true;
            ctrl_of[id] = get_bool(q, "/ctrl");
        }
    }
    if (stats)
        for (const Json &s : *stats)
            if (const std::uint32_t id = get_u32(s, "/queue_id", kNone); id < kQueueStatsSlots) stats_of[id] = &s;
    for (std::uint32_t id = 0; id < kQueueStatsSlots; ++id)
        if (listed[id] || stats_of[id])
            put_queue_stats(out, kQueueStatsBase + id * kQueueStatsSize, id, stats_of[id], ctrl_of[id]);

    out.put_be64_low_first(kRxDrop, get_u64(section, "/counters/rx_drop"));
    out.put_be64_low_first(kRxMcastDrop, get_u64(section, "/counters/rx_mcast_drop"));
    out.put_be64_low_first(kRxError, get_u64(section, "/counters/rx_error"));
    out.put_be64_low_first(kTxDrop, get_u64(section, "/counters/tx_drop"));
    out.put_be32(kMuxOvflowFlags, get_u32(section, "/mux_ovflow_flags"));
    out.put_be32(kMuxOvflowPorts, get_u32(section, "/mux_ovflow_ports"));

    out.put_u8(kPfcEnabled, get_bool(section, "/pfc_enabled") ? 1 : 0);
    out.put_u8(kPfcRxMask, get_u32(section, "/pfc_rx_mask"));
    if (const Json *map = list(section, "/cos_qos_group"))
        for (std::size_t k = 0; k < map->size() && k < kCosWithGroupMap; ++k)
            out.put_u8(kCosQosGroupMap + k, get_u32((*map)[k], ""));
    out.put_be32(kPauseRx, get_u32(section, "/pause_rx"));
    out.put_be32(kPauseTx, get_u32(section, "/pause_tx"));
    out.put_be32(kBufferThreshold, limit(section, "/buffer_threshold"));
    out.put_be32(kQueueLimit, limit(section, "/queue_limit"));
    out.put_be32(kQueueLimitRx, limit(section, "/queue_limit_rx"));
    return out.take();
}

Reply serve(const Request &request, Model &model) {
    const Interface *target = model.interface(request.target_if_index);
    if (target == nullptr) return Reply::failed(kErrNoInterface);
    if (target->kind != InterfaceKind::host) {
        // A line card knows its own ports, but keeps no such data for them.
        const bool own_port = request.line_card && target->slot == request.line_card->slot;
        return Reply::failed(own_port ? kErrUnsupported : kErrNoInterface);
    }
    if (request.extender == nullptr || target->extender != request.extender->number)
        return Reply::failed(kErrNoInterface);
    const Json *section = find(*target->data, std::string("/") + kSection);
    if (section == nullptr || !section->is_object() || !get_bool(*section, "/supported", true))
        return Reply::failed(kErrUnsupported);
    return Reply::ok(encode(*section), 1);
}

const SubCommandRegistrar hif_queuing{{LC_STATS_CMD_HIF_QUEUING, "host-interface queuing", kVariant, serve}};

// ---- Checking ----

bool has(const Checker &check, const std::string &pointer) { return find(check.value(), pointer) != nullptr; }

// A list of distinct numbers 0 to `max`, naming `what` in its refusals.
std::set<std::uint64_t> number_list(const Checker &check, const std::string &pointer, std::uint64_t max,
                                    const std::string &what) {
    std::set<std::uint64_t> seen;
    if (!has(check, pointer)) return seen;
    const Json &items = check.array(pointer);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::uint64_t v = check.unsigned_value(at(pointer, i), max);
        if (!seen.insert(v).second) check.fail(at(pointer, i), what + " " + std::to_string(v) + " is listed twice");
    }
    return seen;
}

void optional_unsigned(const Checker &check, const std::string &pointer, std::uint64_t max) {
    if (has(check, pointer)) check.unsigned_value(pointer, max);
}

void optional_boolean(const Checker &check, const std::string &pointer) {
    if (has(check, pointer)) check.boolean(pointer);
}

// A threshold or limit: bytes, or null for none.
void optional_limit(const Checker &check, const std::string &pointer) {
    if (!has(check, pointer) || find(check.value(), pointer)->is_null()) return;
    std::uint64_t ignored = 0;
    if (!read_unsigned(*find(check.value(), pointer), ignored))
        check.fail(pointer, "expected a number of bytes, or null for none");
    check.unsigned_value(pointer, UINT32_MAX);
}

// The supported and unsupported qos-groups of a record: 0 to 7, each once.
void qos_groups(const Checker &check, const std::string &record) {
    const auto supported = number_list(check, record + "/qos_groups", 7, "qos-group");
    const auto unsupported = number_list(check, record + "/unsupported_qos_groups", 7, "qos-group");
    if (!has(check, record + "/unsupported_qos_groups")) return;
    const Json &items = *find(check.value(), record + "/unsupported_qos_groups");
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::uint64_t g = get_u64(items[i], "");
        if (supported.count(g))
            check.fail(at(record + "/unsupported_qos_groups", i),
                       "qos-group " + std::to_string(g) + " is listed as supported too");
    }
}

const Json &bounded_list(const Checker &check, const std::string &pointer, std::size_t max, const std::string &what) {
    const Json &items = check.array(pointer);
    if (items.size() > max)
        check.fail(pointer, "at most " + std::to_string(max) + " " + what + ", found " + std::to_string(items.size()));
    return items;
}

// Each record of the list at `pointer` (when there is one, of at most `max`),
// by its pointer.
template <class Each>
void each_record(const Checker &check, const std::string &pointer, std::size_t max, const std::string &what, Each each) {
    if (!has(check, pointer)) return;
    const Json &records = bounded_list(check, pointer, max, what);
    for (std::size_t i = 0; i < records.size(); ++i) each(at(pointer, i));
}

void check_input_buffers(const Checker &check) {
    each_record(check, "/input_buffers", kInputBufferSlots, "input buffers", [&](const std::string &r) {
        check.members_among(r, {"frh", "no_drop", "qos_groups", "unsupported_qos_groups", "ctrl", "cos", "xon", "xoff",
                                "buffer_size"});
        optional_unsigned(check, r + "/frh", 255);
        optional_boolean(check, r + "/no_drop");
        optional_boolean(check, r + "/ctrl");
        qos_groups(check, r);
        number_list(check, r + "/cos", 7, "cos");
        for (const char *size : {"/xon", "/xoff", "/buffer_size"}) optional_unsigned(check, r + size, UINT32_MAX);
    });
}

// Queue ids index the ten statistics slots: each queue, and each statistics
// record, has its own.
void check_queue_id(const Checker &check, const std::string &record, std::set<std::uint64_t> &ids) {
    const std::uint64_t id = check.unsigned_value(record + "/queue_id", kQueueStatsSlots - 1);
    if (!ids.insert(id).second) check.fail(record + "/queue_id", "queue id " + std::to_string(id) + " is listed twice");
}

void check_queues(const Checker &check) {
    std::set<std::uint64_t> ids;
    each_record(check, "/queues", kQueueSlots, "queues", [&](const std::string &r) {
        check.members_among(r, {"queue_id", "qos_groups", "unsupported_qos_groups", "cos", "priority", "bandwidth",
                                "ctrl", "mtu"});
        check_queue_id(check, r, ids);
        qos_groups(check, r);
        number_list(check, r + "/cos", 7, "cos");
        optional_boolean(check, r + "/priority");
        optional_unsigned(check, r + "/bandwidth", 100);
        optional_boolean(check, r + "/ctrl");
        optional_unsigned(check, r + "/mtu", 0xffff);
    });
}

void check_queue_stats(const Checker &check) {
    std::set<std::uint64_t> ids;
    each_record(check, "/queue_stats", kQueueStatsSlots, "statistics records", [&](const std::string &r) {
        check.members_among(r, {"queue_id", "queue_num", "ctrl", "counters"});
        check_queue_id(check, r, ids);
        optional_unsigned(check, r + "/queue_num", 255);
        optional_boolean(check, r + "/ctrl");
        if (has(check, r + "/counters")) {
            check.members_among(r + "/counters", {kQueueCounters.begin(), kQueueCounters.end()});
            check.counters(r + "/counters");
        }
    });
}

void check_section(const Checker &check) {
    if (check.value().is_null()) return;  // no data: a host interface the agent does not serve
    check.members_among("", {"description", "supported", "stats_format", "input_buffers", "queues", "queue_stats", "counters",
                             "mux_ovflow_flags", "mux_ovflow_ports", "pfc_enabled", "pfc_rx_mask", "cos_qos_group",
                             "pause_rx", "pause_tx", "buffer_threshold", "queue_limit", "queue_limit_rx"});
    if (has(check, "/description") && !find(check.value(), "/description")->is_string())
        check.fail("/description", "expected a text");
    optional_boolean(check, "/supported");
    optional_unsigned(check, "/stats_format", 255);
    check_input_buffers(check);
    check_queues(check);
    check_queue_stats(check);
    if (has(check, "/counters")) {
        check.members_among("/counters", {"rx_drop", "rx_mcast_drop", "rx_error", "tx_drop"});
        check.counters("/counters");
    }
    optional_unsigned(check, "/mux_ovflow_flags", UINT32_MAX);
    optional_unsigned(check, "/mux_ovflow_ports", UINT32_MAX);
    optional_boolean(check, "/pfc_enabled");
    optional_unsigned(check, "/pfc_rx_mask", 255);
    if (has(check, "/cos_qos_group")) {
        const Json &map = bounded_list(check, "/cos_qos_group", kCosWithGroupMap, "qos-group maps (cos 0 to 6)");
        for (std::size_t k = 0; k < map.size(); ++k) check.unsigned_value(at("/cos_qos_group", k), 255);
    }
    optional_unsigned(check, "/pause_rx", UINT32_MAX);
    optional_unsigned(check, "/pause_tx", UINT32_MAX);
    for (const char *l : {"/buffer_threshold", "/queue_limit", "/queue_limit_rx"}) optional_limit(check, l);
}

const SectionRegistrar section{Scope::host, kSection, check_section};

}  // namespace
}  // namespace qdsim::agent
