// SPDX-License-Identifier: MIT
// Extender drop report: the input is a sequence of exchange frames, one per
// extender present (extender 100 + i answers with frame i; at most 100).
#include "harness/harness.hpp"
#include "qdcli/handlers.h"

namespace {
constexpr std::size_t kExtenders = 100;
constexpr std::uint32_t kFirstVaq = 100;

// A sub-command 27 reply: header, ASIC count, SS count per ASIC, then a row
// of 12 drop counts per ASIC.
qdfuzz::Bytes drops_reply(const std::vector<std::vector<std::uint8_t>> &asics) {
    qdfuzz::Bytes b(37 + 12 * 4, 0);
    b[32] = static_cast<std::uint8_t>(asics.size());
    for (std::size_t a = 0; a < asics.size() && a < 4; ++a) {
        b[33 + a] = static_cast<std::uint8_t>(asics[a].size());
        for (std::size_t s = 0; s < asics[a].size() && s < 12; ++s) b[37 + 12 * a + s] = asics[a][s];
    }
    return b;
}
}  // namespace

QDFUZZ_ENTRY(vaq_drops) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    const std::size_t present = session.replies(in, kExtenders);
    for (std::size_t i = 0; i < present; ++i) {
        const auto slot = static_cast<std::uint8_t>(i);
        session.pf().slot_of_sat[kFirstVaq + i - 1] = slot;  // asked for k - 1, module 0
        session.pf().module_node[slot] = 0x0100u * (slot + 1u) + 2u;
    }
    process_qd_cli_show_vaq_drops_all(session.command());
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_vaq_drops() {
    const qdfuzz::Bytes one = drops_reply({{3, 15}});
    const qdfuzz::Bytes full = drops_reply({std::vector<std::uint8_t>(12, 15), {}, {1, 2, 3}, {0, 1}});
    qdfuzz::Bytes too_many_asics = drops_reply({{1}});
    too_many_asics[32] = 5;
    qdfuzz::Bytes too_many_ss = drops_reply({{1}, {2}});
    too_many_ss[34] = 13;
    return {
        qdfuzz::Frames().reply(one),
        qdfuzz::Frames().reply(full).reply(drops_reply({})).no_payload().send_failure().recv_failure().reply(one),
        qdfuzz::Frames().reply(too_many_asics).reply(too_many_ss).reply(qdfuzz::cut(full, 40)).reply(
            qdfuzz::cut(one, 32)),
    };
}
