// SPDX-License-Identifier: MIT
// Memory statistics and debug dumps of the queuing daemon.
//
// Each handler fills one 16-byte request and hands it to the daemon's named
// debug function through sdwrap_debug_dump; the dump the user sees comes
// through that call. The handlers print at most one line of their own, to
// standard output, and ignore the result of the dump.
#include <array>
#include <cstdint>
#include <cstdio>

#include "frame/guard.hpp"
#include "inventory/platform_query.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace qdcli {
namespace {

// Status returned if a handler body fails inside the library (it cannot
// throw in practice: nothing here allocates).
constexpr std::int32_t kInternalFailure = 1;

constexpr char kHandlerName[] = "qd_cli_debug_show_all";

// Where the command's first argument goes in the debug request.
enum class ArgUse : std::uint8_t {
    none,                // offset 8 and 12 stay 0
    number,              // offset 8
    number_or_interface, // offset 12 for an interface argument, else offset 8
    number_unless_negated,  // offset 8; 0 in the negated form, without reading the argument
};

struct DebugView {
    std::uint8_t selector;  // 0: the command identifier is refused
    ArgUse arg;
    const char *label;      // printed as "<handler>(<line>): <label>\n" before the dump, or null
    int line;
};

constexpr DebugView kRefused{0, ArgUse::none, nullptr, 0};
constexpr std::size_t kDebugViews = 44;  // command identifiers 0 to 43

// The debug view of each command identifier, dense from 0 to 43.
constexpr std::array<DebugView, kDebugViews> kDebugTable = {{
    /*  0 */ kRefused,
    /*  1 */ kRefused,
    /*  2 */ {1, ArgUse::none, nullptr, 0},
    /*  3 */ {2, ArgUse::none, nullptr, 0},
    /*  4 */ {3, ArgUse::none, "sup", 156},
    /*  5 */ {4, ArgUse::none, "fibre-channel", 162},
    /*  6 */ {5, ArgUse::none, "ethernet", 168},
    /*  7 */ kRefused,
    /*  8 */ {6, ArgUse::none, nullptr, 0},
    /*  9 */ {7, ArgUse::none, nullptr, 0},
    /* 10 */ {8, ArgUse::none, "counters", 184},
    /* 11 */ {9, ArgUse::none, nullptr, 0},
    /* 12 */ {10, ArgUse::none, nullptr, 0},
    /* 13 */ {11, ArgUse::none, nullptr, 0},
    /* 14 */ {12, ArgUse::none, nullptr, 0},
    /* 15 */ {13, ArgUse::none, nullptr, 0},
    /* 16 */ kRefused,
    /* 17 */ kRefused,
    /* 18 */ kRefused,
    /* 19 */ kRefused,
    /* 20 */ kRefused,
    /* 21 */ {14, ArgUse::none, nullptr, 0},
    /* 22 */ {15, ArgUse::none, nullptr, 0},
    /* 23 */ {16, ArgUse::number, nullptr, 0},
    /* 24 */ {17, ArgUse::number, nullptr, 0},
    /* 25 */ {18, ArgUse::number_or_interface, nullptr, 0},
    /* 26 */ kRefused,
    /* 27 */ kRefused,
    /* 28 */ {20, ArgUse::number, nullptr, 0},
    /* 29 */ {21, ArgUse::number_unless_negated, nullptr, 0},
    /* 30 */ {19, ArgUse::number, nullptr, 0},
    /* 31 */ kRefused,
    /* 32 */ kRefused,
    /* 33 */ kRefused,
    /* 34 */ kRefused,
    /* 35 */ kRefused,
    /* 36 */ kRefused,
    /* 37 */ kRefused,
    /* 38 */ kRefused,
    /* 39 */ kRefused,
    /* 40 */ kRefused,
    /* 41 */ kRefused,
    /* 42 */ kRefused,
    /* 43 */ {22, ArgUse::none, "Clearing qd info", 264},
}};

// The first argument of the command, or null when it has none. A command
// without arguments sends 0 where a view expects one.
const cmd_param_arg *first_arg(const cmd_paraminfo &pinfo) {
    return pinfo.argc >= 1 ? command_arg(&pinfo, 1) : nullptr;
}

void send_debug_request(const cmd_paraminfo &pinfo, const void *request, std::uint32_t length,
                        const char *function) {
    // What the handler printed goes out before the daemon's dump.
    std::fflush(stdout);
    sdwrap_debug_dump(pinfo.mts_handle, MTS_NODE_LOCAL, QD_MTS_SAP, request, length, function);
}

std::int32_t show_memstats(const cmd_paraminfo &pinfo) {
    qd_memstats_req request{};
    for (unsigned position = 1; position <= pinfo.argc; ++position) {
        const cmd_param_arg *arg = command_arg(&pinfo, position);
        if (arg != nullptr && arg->param_type == PARAM_TYPE_MEMSTATS_DETAIL) request.detail = 1;
    }
    request.five = 5;
    request.all_ones = 0xffffffffu;
    send_debug_request(pinfo, &request, sizeof request, QD_DEBUG_FUNC_MEMSTATS);
    return 0;
}

std::int32_t debug_show_intf(const cmd_paraminfo &pinfo) {
    qd_debug_req request{};
    request.selector_word = std::uint32_t{9} << 24;
    request.if_index = arg_u32(first_arg(pinfo));
    send_debug_request(pinfo, &request, sizeof request, QD_DEBUG_FUNC_PRINT_ALL);
    return 0;
}

std::int32_t debug_show_all(const cmd_paraminfo &pinfo) {
    qd_debug_req request{};
    const DebugView view = pinfo.cmd_id < kDebugViews ? kDebugTable[pinfo.cmd_id] : kRefused;
    if (view.selector == 0) {
        observe::fail_on_stdout(QDCLI_FAILURE_INVALID, 1, "%s", "error: Unexpected number of parameters");
        return 1;
    }
    request.selector_word = std::uint32_t{view.selector} << 24;
    switch (view.arg) {
    case ArgUse::none:
        break;
    case ArgUse::number:
        request.arg = arg_u32(first_arg(pinfo));
        break;
    case ArgUse::number_or_interface: {
        const cmd_param_arg *arg = first_arg(pinfo);
        if (arg != nullptr && arg->param_id == PARAM_ID_IF_INDEX)
            request.if_index = arg_u32(arg);
        else
            request.arg = arg_u32(arg);
        break;
    }
    case ArgUse::number_unless_negated:
        if (pinfo.no_form == 0) request.arg = arg_u32(first_arg(pinfo));
        break;
    }
    if (view.label != nullptr) std::printf("%s(%d): %s\n", kHandlerName, view.line, view.label);
    send_debug_request(pinfo, &request, sizeof request, QD_DEBUG_FUNC_PRINT_ALL);
    return 0;
}

}  // namespace
}  // namespace qdcli

extern "C" {

QDCLI_EXPORT int32_t qd_cli_show_memstats(cmd_paraminfo *pinfo) {
    return qdcli::guarded_command(
        pinfo, [&]() -> std::int32_t { return qdcli::show_memstats(*pinfo); },
        qdcli::kInternalFailure);
}

QDCLI_EXPORT int32_t qd_cli_debug_show_intf(cmd_paraminfo *pinfo) {
    return qdcli::guarded_command(
        pinfo, [&]() -> std::int32_t { return qdcli::debug_show_intf(*pinfo); },
        qdcli::kInternalFailure);
}

QDCLI_EXPORT int32_t qd_cli_debug_show_all(cmd_paraminfo *pinfo) {
    return qdcli::guarded_command(
        pinfo, [&]() -> std::int32_t { return qdcli::debug_show_all(*pinfo); },
        qdcli::kInternalFailure);
}

}  // extern "C"
