// SPDX-License-Identifier: MIT
// Extended (ingress) queuing report of a front-panel Ethernet interface
// (command 23), from the interface's "extended" section:
//
//   "extended": {
//     "supported": true,
//     "sp_level": [0, 0, 0, 0, 0, 0, 2, 1],        queue q: 0 DWRR, 1-7 strict priority level
//     "drop_mode_bits": 0,                        bit q: drop mode of queue q ("0x81" is read as hex)
//     "cos_to_queue": [0, 1, 2, 3, 4, 5, 6, 7],    ingress queue of CoS n
//     "counters": {"pass": [[8 counters], [8], [8]], "drop": [[8], [8], [8]]}   per 40G channel, per queue
//   }
//
// Missing values: levels and bits 0, the identity CoS map, counters 0.
//
// The reply is the daemon's 413-byte record in host order: status at 0,
// sp_level at 4, drop_mode_bits at 20, cos_to_queue at 21, then the pass and
// the drop counters, channel-major, each 64-bit counter unaligned and
// written as two host-order words, low word first. "Not supported" is the
// same record with QD_STATUS_UNSUPPORTED at 0 and nothing else: for an index
// that is not a main Ethernet interface, or one without an "extended"
// section or with "supported": false.
#include <string>

#include "core/wire_writer.hpp"
#include "daemon/daemon.hpp"
#include "model/sections.hpp"
#include "qdcli/wire.h"

namespace qdsim::daemon {
namespace {

constexpr std::size_t kSize = 413, kSpLevel = 4, kDropModeBits = 20, kCosToQueue = 21, kPassCount = 29,
                      kDropCount = 221;
constexpr unsigned kQueues = 8, kChannels = 3, kMaxSpLevel = 7;

Reply unsupported(const Request &, Model &) {
    WireWriter out(kSize);
    out.put_host32(0, QD_STATUS_UNSUPPORTED);
    return Reply::bytes(out.take());
}

void put_counters(WireWriter &out, std::size_t at, const Json &section, const char *which) {
    for (unsigned ch = 0; ch < kChannels; ++ch) {
        for (unsigned q = 0; q < kQueues; ++q) {
            const std::uint64_t v = get_u64(
                section, "/counters/" + std::string(which) + "/" + std::to_string(ch) + "/" + std::to_string(q));
            const std::size_t slot = at + 8 * (kQueues * ch + q);
            out.put_host32(slot, static_cast<std::uint32_t>(v));
            out.put_host32(slot + 4, static_cast<std::uint32_t>(v >> 32));
        }
    }
}

Reply show(const Request &request, Model &model) {
    const Json *section = served_section(model.interface(request.if_index), "/extended");
    if (section == nullptr) return unsupported(request, model);
    const Json &e = *section;
    WireWriter out(kSize);
    out.put_host32(0, 0);
    for (unsigned n = 0; n < kQueues; ++n) {
        out.put_u8(kSpLevel + n, get_u32(e, "/sp_level/" + std::to_string(n)));
        out.put_u8(kCosToQueue + n, get_u32(e, "/cos_to_queue/" + std::to_string(n), n));
    }
    out.put_u8(kDropModeBits, get_u32(e, "/drop_mode_bits"));
    put_counters(out, kPassCount, e, "pass");
    put_counters(out, kDropCount, e, "drop");
    return Reply::bytes(out.take());
}

void per_queue(const Checker &check, const std::string &pointer, std::uint64_t max) {
    if (!find(check.value(), pointer)) return;
    check.array(pointer, kQueues);
    for (unsigned n = 0; n < kQueues; ++n) check.unsigned_value(pointer + "/" + std::to_string(n), max);
}

void check_extended(const Checker &check) {
    check.members_among("", {"supported", "sp_level", "drop_mode_bits", "cos_to_queue", "counters"});
    if (find(check.value(), "/supported")) check.boolean("/supported");
    per_queue(check, "/sp_level", kMaxSpLevel);
    per_queue(check, "/cos_to_queue", kQueues - 1);
    if (find(check.value(), "/drop_mode_bits")) check.unsigned_value("/drop_mode_bits", 0xff);
    if (!find(check.value(), "/counters")) return;
    check.members_among("/counters", {"pass", "drop"});
    for (const char *which : {"/counters/pass", "/counters/drop"}) {
        if (!find(check.value(), which)) continue;
        check.array(which, kChannels);
        for (unsigned ch = 0; ch < kChannels; ++ch) {
            const std::string channel = std::string(which) + "/" + std::to_string(ch);
            check.array(channel, kQueues);
            check.counters(channel);
        }
    }
}

const CommandRegistrar command{{QD_CLI_CMD_SHOW_IF_EXTEND, "show queuing interface extended", show, unsupported}};
const SectionRegistrar section{Scope::ethernet, "extended", check_extended};

}  // namespace
}  // namespace qdsim::daemon
