// SPDX-License-Identifier: MIT
// Internal port statistics of an extender (sub-command 23, variant 2), from
// the extender's "internal_ports" section, one record per port:
//
//   "internal_ports": [
//     {"glb_idx": 0, "asic_no": 0, "kind": "enif", "port_id": 1,
//      "counters": {"ctrl_rcvd": 0, "ctrl_sent": 0, "data_rcvd": 0, "data_sent": 0,
//                   "rx_drop": 0, "rx_error": 0, "tx_drop": 0}}
//   ]
//
// "kind" is "enif", "inif" or "ihif". NIF ports (eNIF, iNIF) carry port type
// 2 and are told apart by their NIF class: 0 for an eNIF, "nif_class" (1 to
// 65535, default 1) for an iNIF. iHIF ports carry "port_type" (any value
// but 2, default 1). An extender numbers the ports of each kind from 0
// (glb_idx 0 to count - 1, each once); at most 255 ports. The records are
// reported in the order written; a missing counter is 0.
//
// The request names the extender three ways: its number (vaq_id), its slot,
// and the NIF port that faces the uplink the command came through (the
// uplink's index, at offsets 20 and 32, as command 22 gave it). The agent
// answers only for itself: another number or slot is kErrNoModule, an index
// that is not one of its uplinks kErrNoInterface. A line card's agent keeps
// no extender ports (kErrUnsupported). An extender without the section has
// no ports to report (count 0).
//
// Reply body: `count` records of 84 bytes; 16-bit fields big-endian, each
// 64-bit counter two big-endian words, low word first.
#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <utility>

#include "agent/agent.hpp"
#include "model/json_access.hpp"
#include "core/errors.hpp"
#include "core/wire_writer.hpp"
#include "model/sections.hpp"
#include "qdcli/wire.h"

namespace qdsim::agent {
namespace {

constexpr std::size_t kMaxPorts = 255;
constexpr std::uint32_t kHifPortType = 1;

const std::vector<std::string> kKinds = {"enif", "ihif", "inif"};
const std::vector<std::string> kMembers = {"glb_idx",   "asic_no",   "kind",    "port_id",
                                           "nif_class", "port_type", "counters"};
const std::vector<std::string> kCounters = {"ctrl_rcvd", "ctrl_sent", "data_rcvd", "data_sent",
                                            "rx_drop",   "rx_error",  "tx_drop"};

void put_record(WireWriter &out, const Json &port) {
    const std::string kind = get_string(port, "/kind");
    const bool nif = kind != "ihif";
    out.be16(get_u32(port, "/glb_idx")).be16(0).be16(get_u32(port, "/asic_no"));
    out.be16(nif ? PORT_TYPE_NIF : get_u32(port, "/port_type", kHifPortType));
    out.be16(get_u32(port, "/port_id"));
    out.be16(kind == "inif" ? get_u32(port, "/nif_class", 1) : 0);
    const auto counter = [&](const char *name) { return get_u64(port, std::string("/counters/") + name); };
    out.be64_low_first(counter("ctrl_rcvd")).be64_low_first(counter("ctrl_sent"));
    out.be64_low_first(counter("data_rcvd")).be64_low_first(counter("data_sent"));
    out.be64_low_first(counter("rx_drop")).zeros(8);
    out.be64_low_first(counter("rx_error")).be64_low_first(counter("tx_drop")).zeros(8);
}

Reply serve(const Request &request, Model &) {
    const Extender *e = request.extender;
    if (e == nullptr) return Reply::failed(kErrUnsupported);
    if (request.vaq_id != e->number || request.slot != e->slot) return Reply::failed(kErrNoModule);
    const bool faces_an_uplink = std::find(e->uplinks.begin(), e->uplinks.end(), request.if_index) != e->uplinks.end();
    if (!faces_an_uplink || request.target_if_index != request.if_index) return Reply::failed(kErrNoInterface);

    const Json *ports = e->data ? find(*e->data, "/internal_ports") : nullptr;
    WireWriter out;
    std::size_t count = 0;
    if (ports && ports->is_array()) {
        for (const Json &port : *ports) put_record(out, port);
        count = ports->size();
    }
    return Reply::ok(out.take(), static_cast<std::uint8_t>(count));
}

void check_ports(const Checker &check) {
    const Json &ports = check.array();
    if (ports.size() > kMaxPorts)
        check.fail("", "an extender reports at most " + std::to_string(kMaxPorts) + " internal ports, found " +
                           std::to_string(ports.size()));
    std::array<std::size_t, 3> per_kind{};
    std::vector<std::pair<std::size_t, std::uint64_t>> numbered;  // kind, glb_idx
    for (std::size_t n = 0; n < ports.size(); ++n) {
        const std::string at = index_token(n);
        check.members_among(at, kMembers);
        const Json *kind_value = find(check.value(), at + "/kind");
        const auto kind = kind_value && kind_value->is_string()
                              ? std::find(kKinds.begin(), kKinds.end(), kind_value->get<std::string>())
                              : kKinds.end();
        if (kind == kKinds.end())
            check.fail(kind_value ? at + "/kind" : at, "\"kind\" is \"enif\", \"ihif\" or \"inif\"");
        const std::size_t k = static_cast<std::size_t>(kind - kKinds.begin());
        if (!find(check.value(), at + "/glb_idx")) check.fail(at, "a port record names its \"glb_idx\"");
        numbered.emplace_back(k, check.unsigned_value(at + "/glb_idx", UINT16_MAX));
        ++per_kind[k];
        for (const char *field : {"/asic_no", "/port_id"})
            if (find(check.value(), at + field)) check.unsigned_value(at + field, UINT16_MAX);
        if (find(check.value(), at + "/nif_class")) {
            if (*kind != "inif") check.fail(at + "/nif_class", "only an iNIF port has a NIF class");
            if (check.unsigned_value(at + "/nif_class", UINT16_MAX) == 0)
                check.fail(at + "/nif_class", "an iNIF port's NIF class is not 0 (0 is an eNIF's)");
        }
        if (find(check.value(), at + "/port_type")) {
            if (*kind != "ihif")
                check.fail(at + "/port_type", "only an iHIF port's type is chosen (NIF ports are type 2)");
            if (check.unsigned_value(at + "/port_type", UINT16_MAX) == PORT_TYPE_NIF)
                check.fail(at + "/port_type", "type 2 is a NIF port's, not an iHIF's");
        }
        if (find(check.value(), at + "/counters")) {
            check.members_among(at + "/counters", kCounters);
            check.counters(at + "/counters");
        }
    }
    std::set<std::pair<std::size_t, std::uint64_t>> seen;
    for (std::size_t n = 0; n < numbered.size(); ++n) {
        const auto [k, glb_idx] = numbered[n];
        const std::string at = index_token(n) + "/glb_idx";
        if (glb_idx >= per_kind[k])
            check.fail(at, "glb_idx " + std::to_string(glb_idx) + " of an " + kKinds[k] + " port: the " +
                               std::to_string(per_kind[k]) + " " + kKinds[k] + " ports are numbered 0 to " +
                               std::to_string(per_kind[k] - 1));
        if (!seen.insert(numbered[n]).second)
            check.fail(at, "glb_idx " + std::to_string(glb_idx) + " is given to two " + kKinds[k] + " ports");
    }
}

const SubCommandRegistrar command{{LC_STATS_CMD_INTERNAL_PORTS, "internal port statistics", 2, serve}};
const SectionRegistrar section{Scope::extender, "internal_ports", check_ports};

}  // namespace
}  // namespace qdsim::agent
