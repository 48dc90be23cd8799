// SPDX-License-Identifier: MIT
// No-credit drop report of the remote port extenders: for every extender
// that has a module, the drop counters of the no-drop class per ASIC and per
// SS, asked from the module's statistics agent with sub-command 27 and
// printed through the shell's printer, flushed once at the end.
#include <cstdint>
#include <cstdio>

#include "catalogue/attribute_ids.hpp"
#include "frame/exchange.hpp"
#include "frame/guard.hpp"
#include "output/observe.hpp"
#include "output/printer.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdcli::PayloadReader;
using qdcli::u32;
namespace attr = qdcli::attr;

constexpr std::uint32_t kFirstVaq = 100;
constexpr std::uint32_t kLastVaq = 199;

// Reply body, offsets from the start of the payload.
constexpr std::size_t kAsicCountAt = 32;
constexpr std::size_t kSsCountAt = 33;   // one byte per ASIC
constexpr std::size_t kDropsAt = 37;     // a row of kMaxSs bytes per ASIC
constexpr std::uint32_t kMaxAsics = 4;   // SS counts fill offsets 33 to 36
constexpr std::uint32_t kMaxSs = 12;

constexpr std::size_t kMessageSize = 80;

std::size_t drops_at(std::uint32_t asic, std::uint32_t ss) { return kDropsAt + kMaxSs * asic + ss; }

// Bytes the report reads from a reply with `asics` ASICs (1 to kMaxAsics):
// the SS counts and, for every ASIC whose SS count fits its row, its drop
// counts. An ASIC with more SS than its row holds is refused on its own and
// its row is not read.
std::size_t bytes_needed(const PayloadReader &payload, std::uint32_t asics) {
    std::size_t needed = kSsCountAt + asics;
    if (!payload.covers(kSsCountAt, asics)) return needed;
    for (std::uint32_t a = 0; a < asics; ++a) {
        const std::uint32_t ss = payload.u8(kSsCountAt + a);
        if (ss != 0 && ss <= kMaxSs && drops_at(a, ss) > needed) needed = drops_at(a, ss);
    }
    return needed;
}

void print_asic(qdcli::Printer &out, const PayloadReader &payload, std::uint32_t vaq, std::uint32_t asic) {
    out.formatted(kMessageSize, "\nStats for Asic %d", static_cast<int>(asic));
    const std::uint32_t ss_count = payload.u8(kSsCountAt + asic);
    const qdcli_subject subject = qdcli::observe::asic(vaq, asic);
    if (ss_count == 0) {
        out.line_untold("\nCommand not supported on vaq %s for asic_id %s", u32(attr::asic_vaq, vaq), u32(attr::asic, asic));
        char message[kMessageSize];
        std::snprintf(message, sizeof message, "\nCommand not supported on vaq %u for asic_id %u", vaq, asic);
        qdcli::observe::failure(QDCLI_FAILURE_NOT_SUPPORTED, message, 0, &subject);
        return;
    }
    if (ss_count > kMaxSs) {
        out.fail(QDCLI_FAILURE_DAMAGED, 0, kMessageSize, "\nInvalid reply from vaq %d for asic_id %d: %u SS, at most %u",
                 static_cast<int>(vaq), static_cast<int>(asic), ss_count, kMaxSs);
        return;
    }
    const qdcli::observe::Row row("asics");
    out.line("\nNo. of SS present in vaq %s for asic %s is = %s", u32(attr::asic_vaq, vaq), u32(attr::asic, asic),
             u32(attr::ss_count, ss_count));
    for (std::uint32_t ss = 0; ss < ss_count; ++ss) {
        const qdcli::observe::Row ss_row("ss");
        out.line("\nNo-credit drop count on 'no-drop class' for SS %s is = %s", u32(attr::ss, ss),
                 u32(attr::no_credit_drops, payload.u8(drops_at(asic, ss))));
    }
}

// One extender's reply. Nothing of it is printed until the reply is known
// to hold every byte the report reads.
void print_reply(qdcli::Printer &out, const PayloadReader &payload, std::uint32_t vaq) {
    if (!payload.covers(kAsicCountAt, 1)) {
        out.fail(QDCLI_FAILURE_TRUNCATED, 0, kMessageSize, "\nTruncated reply from vaq %d: %u bytes, %u needed",
                 static_cast<int>(vaq), static_cast<unsigned>(payload.length()), static_cast<unsigned>(kAsicCountAt + 1));
        return;
    }
    const std::uint32_t asics = payload.u8(kAsicCountAt);
    if (asics == 0) {
        out.fail(QDCLI_FAILURE_NOT_SUPPORTED, 0, kMessageSize, "\nCommand not supported on vaq %d", static_cast<int>(vaq));
        return;
    }
    if (asics > kMaxAsics) {
        out.fail(QDCLI_FAILURE_DAMAGED, 0, kMessageSize, "\nInvalid reply from vaq %d: %u asics, at most %u",
                 static_cast<int>(vaq), asics, kMaxAsics);
        return;
    }
    const std::size_t needed = bytes_needed(payload, asics);
    if (!payload.covers(0, needed)) {
        out.fail(QDCLI_FAILURE_TRUNCATED, 0, kMessageSize, "\nTruncated reply from vaq %d: %u bytes, %u needed",
                 static_cast<int>(vaq), static_cast<unsigned>(payload.length()), static_cast<unsigned>(needed));
        return;
    }
    out.line("\nNo. of Asics present in vaq %s is = %s", u32(attr::vaq, vaq), u32(attr::asic_count, asics));
    for (std::uint32_t a = 0; a < asics; ++a) print_asic(out, payload, vaq, a);
}

void report_vaq(qdcli::Printer &out, std::uint32_t mts_handle, const lc_stats_req &request, std::uint32_t vaq) {
    // The slot starts at 0 for every extender and is used only when the
    // lookup succeeded: a failed lookup means the extender is absent, and
    // no slot of an earlier extender is ever reused.
    std::uint8_t slot = 0;
    if (if_index_sat_get_slot_from_sat_mod(vaq - 1, 0, &slot) != 0) return;
    satmgr_module_info info{};
    if (satmgr_get_module_info(slot, &info) != 0) return;

    const qdcli::observe::Subject subject(qdcli::observe::extender(vaq));
    qdcli::ReceivedMessage reply(mts_handle);
    const qdcli::ExchangeResult result = qdcli::lc_stats_exchange(mts_handle, info.node, request, reply);
    switch (result.outcome) {
    case qdcli::Outcome::send_failed:
    case qdcli::Outcome::recv_failed:
        out.fail(result.outcome == qdcli::Outcome::send_failed ? QDCLI_FAILURE_SEND : QDCLI_FAILURE_RECEIVE,
                 result.error, kMessageSize, "\n Cmd recv failed for vaq %d with error code %s\n",
                 static_cast<int>(vaq), qdcli::error_text(result.error));
        return;
    case qdcli::Outcome::empty_payload:
        reply.release();
        out.fail_literal(QDCLI_FAILURE_EMPTY, 0, "mts payload is empty");
        return;
    case qdcli::Outcome::ok:
        break;
    }
    print_reply(out, reply.payload(), vaq);
}

}  // namespace

extern "C" std::int32_t process_qd_cli_show_vaq_drops_all(cmd_paraminfo *pinfo) {
    return qdcli::guarded(
        [&]() -> std::int32_t {
            // Without the shell's record there is neither an output channel
            // nor a transport handle: refuse, as the other handlers do.
            if (pinfo == nullptr) return 1;
            qdcli::Printer out(pinfo);
            const lc_stats_req request = qdcli::make_lc_request(LC_STATS_CMD_VAQ_DROPS, 0);
            for (std::uint32_t vaq = kFirstVaq; vaq <= kLastVaq; ++vaq) report_vaq(out, pinfo->mts_handle, request, vaq);
            out.line("\n Note: Maximum drop counter value is 15 with no roll-over");
            return cmd_prt_send(out.handle());
        },
        -1);
}
