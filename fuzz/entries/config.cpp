// SPDX-License-Identifier: MIT
// Fuzz targets of the configuration, clearing and diagnostics handlers.
#include <cstdlib>

#include "entries/targets.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

using qdfuzz::Bytes;
using qdfuzz::Frames;

// The clear family: one selector byte, one interface byte, a qos-clear
// result byte, up to four enumeration passes (Session::enum_passes, each
// preceded by a byte that is 1 while passes follow), then exchange frames.
//   selector % 4: 0 qd_cli_clear_queuing_interface (the interface as its
//   argument), 1 qd_cli_clear_queuing_all, 2 qd_cli_clear_qos_stats_ifindex,
//   3 qd_cli_clear_qos_stats_all.
void qdfuzz_clear_family(qdfuzz::Session &session, qdfuzz::Input &in) {
    using namespace qdfuzz;
    static const std::vector<std::uint32_t> pool = {kEth, kHif, kSub, kOther, 0, 0x2a000000u};
    qdtest::Platform &pf = session.pf();
    pf.add_interface(kEth, IF_TYPE_ETH, "Ethernet1/1", 1);
    pf.add_interface(kHif, IF_TYPE_HIF, "Ethernet101/1/1", 4);
    pf.add_interface(kSub, IF_TYPE_ETH, "Ethernet1/1.1", 1, true);
    pf.sat_of_slot[3] = 101;
    const std::uint8_t selector = in.u8();
    const std::uint32_t target = pool[in.u8() % pool.size()];
    pf.qos_clear_rc = static_cast<std::int8_t>(in.u8());
    while (in.u8() == 1) session.enum_passes(in, 1, pool);
    session.replies(in, 8);
    session.pad_listed(8);
    switch (selector % 4) {
    case 0:
        session.arguments().arg_u32(0, target, PARAM_ID_IF_INDEX);
        qd_cli_clear_queuing_interface(session.command());
        break;
    case 1: qd_cli_clear_queuing_all(session.command()); break;
    case 2: qd_cli_clear_qos_stats_ifindex(target); break;
    default: qd_cli_clear_qos_stats_all(session.command()); break;
    }
}

std::vector<Bytes> qdfuzz_seeds_clear_family() {
    Bytes passes = {1};
    const Bytes all = qdfuzz::enum_pass_bytes(0, 0, 3, {0, 1, 2});
    passes.insert(passes.end(), all.begin(), all.end());
    passes.push_back(1);
    const Bytes failing = qdfuzz::enum_pass_bytes(-1, 0, 0, {});
    passes.insert(passes.end(), failing.begin(), failing.end());
    passes.push_back(0);
    auto with = [&](std::uint8_t selector, std::uint8_t target) {
        Bytes b = {selector, target, 0};
        b.insert(b.end(), passes.begin(), passes.end());
        return b;
    };
    return {
        Frames().raw(with(0, 1)).reply({0, 0, 0, 0}),
        Frames().raw(with(0, 0)).reply({0, 0, 0, 0}),
        Frames().raw(with(1, 0)).reply({0, 0, 0, 0}).reply({0, 0, 0, 0}),
        Frames().raw(with(2, 1)),
        Frames().raw(with(3, 0)).reply({0, 0, 0, 0}),
        // Hostile passes: a negative count, then a null array that claims 7.
        Frames().raw({3, 0, 0xfd, 1}).raw(qdfuzz::enum_pass_bytes(0, 0, -5, {1})).raw({1, 0, 0, 7, 0, 0, 0, 255, 0}),
    };
}

// CoS-map configuration: qd_cli_conf_wrrqueue_cosmap and its no form. One
// flags byte (bit 0: the no form, bits 1-2: the platform type 0-3, bit 3:
// the platform-type query fails), the number of arguments, each
// [param_type: 1][value: 1] (param_type 255: no value), then exchange frames.
void qdfuzz_cosmap_config(qdfuzz::Session &session, qdfuzz::Input &in) {
    const std::uint8_t flags = in.u8();
    session.pf().platform_type = (flags >> 1) & 3;
    if ((flags & 8) != 0) session.pf().platform_type_rc = -1;
    const std::size_t args = in.u8() % 16;
    for (std::size_t i = 0; i < args; ++i) {
        const std::uint8_t type = in.u8();
        const std::uint8_t value = in.u8();
        if (type == 255)
            session.arguments().arg_null(type);
        else
            session.arguments().arg_u8(type, value);
    }
    session.exchanges(in, 4);
    if ((flags & 1) != 0) {
        session.arguments().no_form();
        qd_cli_no_wrrqueue_cosmap(session.command());
    } else {
        qd_cli_conf_wrrqueue_cosmap(session.command());
    }
}

std::vector<Bytes> qdfuzz_seeds_cosmap_config() {
    const Bytes ok = {0, 0, 0, 0};
    return {
        Frames().raw({0, 3, 19, 2, 20, 3, 20, 5}).reply(ok),
        Frames().raw({1, 2, 19, 1, 20, 7}).reply(ok),
        Frames().raw({2, 2, 19, 0, 20, 1}).reply(ok),
        Frames().raw({8, 1, 19, 9}).reply(ok),
        Frames().raw({0, 4, 20, 1, 19, 1, 255, 0, 20, 200}).reply({1, 0, 0, 0}),
    };
}

// Multicast WRR queue CoS map, show form: the input is the daemon's reply to
// command code 20 (byte 4 + v holds the queue of CoS v).
void qdfuzz_cosmap_show(qdfuzz::Session &session, qdfuzz::Input &in) {
    session.pf().platform_type = 2;  // shown from platform type 2 on
    session.reply(in.rest());
    qd_cli_show_wrrqueue_cosmap(session.command());
}

std::vector<Bytes> qdfuzz_seeds_cosmap_show() {
    const Bytes map = {0, 0, 0, 0, 0, 1, 2, 3, 3, 2, 1, 0};
    const Bytes out_of_range = {0xff, 0xff, 0xff, 0xff, 4, 9, 0xff, 0, 1, 2, 3, 200};
    return {map, out_of_range, qdfuzz::cut(map, 11), {}};
}

// Diagnostics: memory statistics and the debug dumps. One selector byte
// (% 3: qd_cli_show_memstats, qd_cli_debug_show_intf, qd_cli_debug_show_all),
// a no-form byte (bit 0), the command id (one byte), then up to three
// arguments, each [param_type: 1][param_id: 4][value: 4] (param_type 255:
// an argument without value); then exchange frames.
void qdfuzz_diagnostics(qdfuzz::Session &session, qdfuzz::Input &in) {
    const std::uint8_t selector = in.u8();
    session.arguments().no_form((in.u8() & 1) != 0);
    const std::uint32_t cmd_id = in.u8();
    session.argument_records(in, in.u8() % 4);
    session.exchanges(in, 4);
    cmd_paraminfo *pinfo = session.command(cmd_id);
    switch (selector % 3) {
    case 0: qd_cli_show_memstats(pinfo); break;
    case 1: qd_cli_debug_show_intf(pinfo); break;
    default: qd_cli_debug_show_all(pinfo); break;
    }
}

std::vector<Bytes> qdfuzz_seeds_diagnostics() {
    using qdfuzz::argument_record;
    Bytes memstats_detail = {0, 0, 0, 1};
    const Bytes detail = argument_record(2, 0, 1);
    memstats_detail.insert(memstats_detail.end(), detail.begin(), detail.end());
    Bytes intf = {1, 0, 5, 1};
    const Bytes if_arg = argument_record(1, 0x40200001u, 0x1a000000u);
    intf.insert(intf.end(), if_arg.begin(), if_arg.end());
    return {
        Frames().raw({0, 0, 0, 0}).reply(Bytes(64, 0x11)),
        Frames().raw(memstats_detail).reply(Bytes(256, 0x22)),
        Frames().raw(intf),
        Frames().raw({2, 0, 30, 0}),
        Frames().raw({2, 1, 43, 0}),
        Frames().raw({2, 0, 200, 0}),
    };
}

// Queue-limit and default-value callbacks: the card query's result (one
// byte, signed), the card id (2 bytes), the software card id (4 bytes), then
// which records are handed over (bit 0: null range record, bit 1: null
// default record). All three callbacks run, in the shell's order.
void qdfuzz_qoslimit(qdfuzz::Session &session, qdfuzz::Input &in) {
    qdtest::Platform &pf = session.pf();
    pf.card_query_rc = static_cast<std::int8_t>(in.u8());
    pf.card_id = in.le16();
    pf.sw_card_id = in.le32();
    const std::uint8_t nulls = in.u8();
    std::free(qdcli_interface_qoslimit_help_get(nullptr, nullptr));
    std::uint32_t range[2] = {0xdeadbeef, 0xdeadbeef};
    qdcli_interface_qoslimit_range_get(nullptr, nullptr, (nulls & 1) != 0 ? nullptr : range);
    std::uint32_t record[2] = {0xdeadbeef, 0xdeadbeef};
    qdcli_pdcli_cmd_qd_def_get(nullptr, nullptr, (nulls & 2) != 0 ? nullptr : record);
}

std::vector<Bytes> qdfuzz_seeds_qoslimit() {
    return {
        {0, 0x34, 0x12, 0, 0, 0, 0, 0},
        {0, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0},
        {0xff, 0, 0, 0, 0, 0, 0, 0},
        {0, 1, 0, 2, 0, 0, 0, 3},
    };
}
