// SPDX-License-Identifier: MIT
// Queuing report of a front-panel Ethernet interface (command 17), from the
// interface's "queuing" section:
//
//   "queuing": {
//     "supported": true,
//     "vaq_buf_hidden": false, "vaq_drop_class_buf": 0,
//     "counters": {"mcast_tail_drops": 0, "vaq_uplink_rx_drops": 0,
//                  "vaq_uplink_err_drops": 0, "vaq_uplink_mcast_drops": 0},
//     "qos_groups": [
//       {"qos_group": 0, "priority": false, "no_drop": false, "bandwidth": 50,
//        "mtu": 1500, "mtu_hw": 1500, "xon": 0, "xoff": 0, "q_size": 0, "q_size_40g": 0,
//        "pfc_rx_active": false, "pfc_tx_active": false,
//        "counters": {"rx_port_pkts": 0, "ucast_to_xbar": 0, "ucast_from_xbar": 0,
//                     "tx_port_pkts": 0, "ingress_discards16": 0, "ingress_discards32": 0,
//                     "mcast_to_xbar": 0, "mcast_from_xbar": 0}}
//     ]
//   }
//
// Everything is optional: a missing value is 0 (false), "mtu" is 1500 and
// "mtu_hw" the configured "mtu". Up to eight qos-groups, numbered 0 to 7,
// each once; they are reported in the order written.
//
// The reply: a 48-byte header, then one 152-byte record per qos-group,
// always with room for one record (the report reads the port's multicast
// total from the first record whatever the count says; without groups that
// room is zeros). Fields are big-endian except the status word, the
// vaq_buf_hidden word and the three VAQ uplink counters, which the daemon
// keeps in its own (host) order. mcast_tail_drops is one big-endian 64-bit
// value, high word at 8, low word at 12.
//
// The hardware's counters behind the 32-bit fields are 32 bits wide (the
// 16-bit discard count 16 bits): a counter of the model that has grown
// beyond the field shows its low bits, as the register would after wrapping.
//
// "Not supported" (QD_STATUS_UNSUPPORTED at offset 4, no records) for an
// index that is not a main Ethernet interface, and for one without a
// "queuing" section or with "supported": false.
#include <set>
#include <string>

#include "core/wire_writer.hpp"
#include "daemon/daemon.hpp"
#include "model/sections.hpp"
#include "qdcli/wire.h"

namespace qdsim::daemon {
namespace {

constexpr std::size_t kHeaderSize = 48;
constexpr std::size_t kRecordSize = 152;
constexpr std::size_t kMaxGroups = 8;

const std::vector<std::string> kSectionMembers = {"supported", "vaq_buf_hidden", "vaq_drop_class_buf", "counters",
                                                  "qos_groups"};
const std::vector<std::string> kPortCounters = {"mcast_tail_drops", "vaq_uplink_rx_drops", "vaq_uplink_err_drops",
                                                "vaq_uplink_mcast_drops"};
const std::vector<std::string> kGroupMembers = {"qos_group", "priority", "no_drop",       "bandwidth",
                                                "mtu",       "mtu_hw",   "xon",           "xoff",
                                                "q_size",    "q_size_40g", "pfc_rx_active", "pfc_tx_active",
                                                "counters"};
const std::vector<std::string> kGroupCounters = {"rx_port_pkts",      "ucast_to_xbar",      "ucast_from_xbar",
                                                 "tx_port_pkts",      "ingress_discards16", "ingress_discards32",
                                                 "mcast_to_xbar",     "mcast_from_xbar"};

Reply unsupported(const Request &, Model &) {
    WireWriter out(kHeaderSize);
    out.put_host32(4, QD_STATUS_UNSUPPORTED);
    return Reply::bytes(out.take());
}

void put_group(WireWriter &out, std::size_t at, const Json &g) {
    const std::uint32_t mtu = get_u32(g, "/mtu", 1500);
    out.put_u8(at + 0, get_u32(g, "/qos_group"));
    out.put_u8(at + 1, get_bool(g, "/priority") ? 1 : 0);
    out.put_u8(at + 2, get_bool(g, "/no_drop") ? 1 : 0);
    out.put_u8(at + 3, get_u32(g, "/bandwidth"));
    out.put_be16(at + 4, mtu);
    out.put_be32(at + 6, get_u32(g, "/xon"));
    out.put_be32(at + 10, get_u32(g, "/xoff"));
    out.put_be16(at + 14, get_u32(g, "/mtu_hw", mtu));
    out.put_be32(at + 16, get_u32(g, "/q_size"));
    out.put_be32(at + 20, get_u32(g, "/q_size_40g"));
    out.put_be16(at + 30, get_u32(g, "/counters/ingress_discards16") & 0xffffu);
    out.put_be32(at + 36, get_u32(g, "/counters/rx_port_pkts"));
    out.put_be32(at + 40, get_u32(g, "/counters/ucast_to_xbar"));
    out.put_be32(at + 44, get_u32(g, "/counters/ucast_from_xbar"));
    out.put_be32(at + 52, get_u32(g, "/counters/tx_port_pkts"));
    out.put_be32(at + 56, get_bool(g, "/pfc_rx_active") ? 1 : 0);
    out.put_be32(at + 60, get_bool(g, "/pfc_tx_active") ? 1 : 0);
    out.put_be32(at + 64, get_u32(g, "/counters/ingress_discards32"));
    out.put_be32(at + 68, get_u32(g, "/counters/mcast_to_xbar"));
    out.put_be32(at + 72, get_u32(g, "/counters/mcast_from_xbar"));
}

Reply show(const Request &request, Model &model) {
    const Interface *i = model.interface(request.if_index);
    const Json *section = served_section(i, "/queuing");
    if (section == nullptr) return unsupported(request, model);
    const Json &q = *section;

    const Json *groups = find(q, "/qos_groups");
    const std::size_t count = groups && groups->is_array() ? groups->size() : 0;
    WireWriter out(kHeaderSize + kRecordSize * (count == 0 ? 1 : count));
    out.put_be32(0, static_cast<std::uint32_t>(count));
    out.put_host32(4, 0);
    const std::uint64_t tail_drops = get_u64(q, "/counters/mcast_tail_drops");
    out.put_be32(8, static_cast<std::uint32_t>(tail_drops >> 32));
    out.put_be32(12, static_cast<std::uint32_t>(tail_drops));
    out.put_be32(16, i->extender != 0 ? 1 : 0);
    out.put_host32(20, get_bool(q, "/vaq_buf_hidden") ? 1 : 0);
    out.put_be32(32, get_u32(q, "/vaq_drop_class_buf"));
    out.put_host32(36, get_u32(q, "/counters/vaq_uplink_mcast_drops"));
    out.put_host32(40, get_u32(q, "/counters/vaq_uplink_err_drops"));
    out.put_host32(44, get_u32(q, "/counters/vaq_uplink_rx_drops"));
    for (std::size_t n = 0; n < count; ++n) put_group(out, kHeaderSize + kRecordSize * n, (*groups)[n]);
    return Reply::bytes(out.take());
}

void optional_unsigned(const Checker &check, const std::string &pointer, std::uint64_t max) {
    if (find(check.value(), pointer)) check.unsigned_value(pointer, max);
}

void optional_boolean(const Checker &check, const std::string &pointer) {
    if (find(check.value(), pointer)) check.boolean(pointer);
}

void counter_block(const Checker &check, const std::string &pointer, const std::vector<std::string> &names) {
    if (!find(check.value(), pointer)) return;
    check.members_among(pointer, names);
    check.counters(pointer);
}

void check_queuing(const Checker &check) {
    check.members_among("", kSectionMembers);
    optional_boolean(check, "/supported");
    optional_boolean(check, "/vaq_buf_hidden");
    optional_unsigned(check, "/vaq_drop_class_buf", UINT32_MAX);
    counter_block(check, "/counters", kPortCounters);
    if (!find(check.value(), "/qos_groups")) return;

    const Json &groups = check.array("/qos_groups");
    if (groups.size() > kMaxGroups)
        check.fail("/qos_groups", "an interface has at most " + std::to_string(kMaxGroups) + " qos-groups, found " +
                                      std::to_string(groups.size()));
    std::set<std::uint64_t> seen;
    for (std::size_t n = 0; n < groups.size(); ++n) {
        const std::string at = "/qos_groups/" + std::to_string(n);
        check.members_among(at, kGroupMembers);
        if (!find(check.value(), at + "/qos_group")) check.fail(at, "a qos-group record names its \"qos_group\"");
        const std::uint64_t number = check.unsigned_value(at + "/qos_group", kMaxGroups - 1);
        if (!seen.insert(number).second)
            check.fail(at + "/qos_group", "qos-group " + std::to_string(number) + " is listed twice");
        for (const char *flag : {"/priority", "/no_drop", "/pfc_rx_active", "/pfc_tx_active"})
            optional_boolean(check, at + flag);
        optional_unsigned(check, at + "/bandwidth", 100);
        optional_unsigned(check, at + "/mtu", UINT16_MAX);
        optional_unsigned(check, at + "/mtu_hw", UINT16_MAX);
        for (const char *size : {"/xon", "/xoff", "/q_size", "/q_size_40g"})
            optional_unsigned(check, at + size, UINT32_MAX);
        counter_block(check, at + "/counters", kGroupCounters);
    }
}

const CommandRegistrar command{{QD_CLI_CMD_SHOW_IF_QUEUING, "show queuing interface", show, unsupported}};
const SectionRegistrar section{Scope::ethernet, "queuing", check_queuing};

}  // namespace
}  // namespace qdsim::daemon
