// SPDX-License-Identifier: MIT
// No-credit drop counters of an extender (sub-command 27, variant 0).
//
// The extender's `vaq_drops` section lists its ASICs, and for each ASIC the
// no-credit drop count of the no-drop class of every SS:
//
//   "vaq_drops": {"asics": [{"ss_drops": [3, 15]}, {"ss_drops": []}]}
//
// The body is the fixed record the drop report reads: A (the number of
// ASICs) at offset 0, the SS count of each ASIC at 1 to 4, and a row of 12
// drop bytes per ASIC from offset 5 (ASIC a, SS s at 5 + 12 a + s); bytes
// no ASIC or SS uses are 0. An ASIC with no SS answers SS count 0, "not
// supported for that ASIC"; an extender without `asics` answers A = 0, "not
// supported". The hardware counters saturate at 15 and never roll over: a
// scenario sets them (0 to 15), and a count carried past 15 by a rate
// written outside the section reads as 15.
//
// The header status is not read by the report; it is 0 for an answer and
// `unsupported` for the refusal (a line card's agent, or the "unsupported"
// fault), which still carries A = 0 so that the report says "not supported"
// rather than finding a short reply.
#include <algorithm>
#include <string>

#include "agent/agent.hpp"
#include "model/json_access.hpp"
#include "core/errors.hpp"
#include "core/wire_writer.hpp"
#include "model/sections.hpp"
#include "qdcli/wire.h"

namespace qdsim::agent {
namespace {

constexpr std::size_t kMaxAsics = 4;   // SS counts fill body offsets 1 to 4
constexpr std::size_t kMaxSs = 12;     // drop bytes per ASIC row
constexpr std::uint64_t kMaxDrops = 15;
constexpr std::size_t kSsCountsAt = 1;
constexpr std::size_t kDropsAt = kSsCountsAt + kMaxAsics;
constexpr std::size_t kBodySize = kDropsAt + kMaxAsics * kMaxSs;

std::vector<std::uint8_t> not_supported_body() {
    WireWriter body(kBodySize);
    return body.take();
}

Reply serve(const Request &request, Model &) {
    if (request.extender == nullptr) return {kErrUnsupported, 0, not_supported_body(), true};
    WireWriter body(kBodySize);
    const Json *asics = find(*request.extender->data, "/vaq_drops/asics");
    if (asics == nullptr || !asics->is_array()) return Reply::ok(body.take());
    const std::size_t asic_count = std::min(asics->size(), kMaxAsics);
    body.put_u8(0, static_cast<std::uint32_t>(asic_count));
    for (std::size_t a = 0; a < asic_count; ++a) {
        const Json *drops = find((*asics)[a], "/ss_drops");
        const std::size_t ss_count = drops != nullptr && drops->is_array() ? std::min(drops->size(), kMaxSs) : 0;
        body.put_u8(kSsCountsAt + a, static_cast<std::uint32_t>(ss_count));
        for (std::size_t s = 0; s < ss_count; ++s) {
            const std::uint64_t count = get_u64(*drops, index_token(s));
            body.put_u8(kDropsAt + kMaxSs * a + s, static_cast<std::uint32_t>(std::min(count, kMaxDrops)));
        }
    }
    return Reply::ok(body.take());
}

Reply refuse(const Request &, Model &) { return {kErrUnsupported, 0, not_supported_body(), true}; }

// Counts are refused above 15, and so are rates inside the section: the
// counters saturate, and a rate would carry them past what the hardware
// holds (set them instead). Values past 15 that a rate written elsewhere
// produces still read as 15.
void no_rates(const Checker &check, const std::string &pointer) {
    if (check.object(pointer).contains("rates"))
        check.fail(pointer + "/rates", "the drop counters saturate at 15 and do not grow with the clock; set them");
}

void check(const Checker &check) {
    check.members_among("", {"asics"});
    no_rates(check, "");
    if (!check.value().contains("asics")) return;
    const Json &asics = check.array("/asics");
    if (asics.size() > kMaxAsics)
        check.fail("/asics", std::to_string(asics.size()) + " ASICs, an extender reports at most " +
                                 std::to_string(kMaxAsics));
    for (std::size_t a = 0; a < asics.size(); ++a) {
        const std::string asic = "/asics/" + std::to_string(a);
        check.members_among(asic, {"ss_drops"});
        no_rates(check, asic);
        if (!asics[a].contains("ss_drops"))
            check.fail(asic, "an ASIC lists the drop counts of its SS in \"ss_drops\" ([] for an ASIC without support)");
        const Json &drops = check.array(asic + "/ss_drops");
        if (drops.size() > kMaxSs)
            check.fail(asic + "/ss_drops",
                       std::to_string(drops.size()) + " SS, an ASIC reports at most " + std::to_string(kMaxSs));
        for (std::size_t s = 0; s < drops.size(); ++s)
            check.unsigned_value(asic + "/ss_drops/" + std::to_string(s), kMaxDrops);
    }
}

const SubCommandRegistrar drops{{LC_STATS_CMD_VAQ_DROPS, "extender no-credit drops", 0, serve, refuse}};
const SectionRegistrar section{Scope::extender, "vaq_drops", check};

}  // namespace
}  // namespace qdsim::agent
