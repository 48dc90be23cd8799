// SPDX-License-Identifier: MIT
// The show-queuing command: the interfaces named in the request, or every
// interface the platform's enumeration finds, each handed to the report of
// its interface type. Messages of the dispatcher itself go to standard
// output; the reports print through the shell's printer.
//
// Choices where the shell leaves room:
//   - The request walk ends at the first negative attribute ID, not only at
//     -1, so a walk can never spin on an error the shell might return.
//   - An interface attribute whose value is missing or shorter than four
//     bytes names interface index 0 and is refused as "Invalid interface".
//   - A null parameter-info record ends a handler with 1 and no output.
#include <cstdint>
#include <cstdio>

#include "inventory/enumeration.hpp"
#include "frame/guard.hpp"
#include "output/observe.hpp"
#include "inventory/platform_query.hpp"
#include "frame/reader.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

using qdcli::guarded_command;

extern "C" int32_t qd_cli_show_queuing_interface(cmd_paraminfo *pinfo) {
    return guarded_command(
        pinfo, [&]() -> std::int32_t {
            const std::uint32_t handle = cmd_paraminfo_to_rxhandle(pinfo);
            bool named = false;
            std::int32_t result = 0;
            for (;;) {
                void *value = nullptr;
                std::uint32_t length = 0;
                const std::int32_t attr = cmd_req_attr_getnext(handle, &value, &length);
                if (attr < 0) break;
                if (static_cast<std::uint32_t>(attr) != ATTR_IF_INDEX) {
                    qdcli::observe::fail_on_stdout(QDCLI_FAILURE_INVALID, 0, "%s\n", "Invalid input ");
                    continue;
                }
                const std::uint32_t if_index = qdcli::PayloadReader(value, length).host32(0);
                // One named interface: the reports print their single-interface
                // extras. The value stays in the shell's record for the command.
                pinfo->cmd_id = CMD_ID_SHOW_QUEUING_IF;
                result = qd_cli_show_queuing_ifindex(pinfo, if_index);
                named = true;
            }
            return named ? result : qd_cli_show_queuing_intf_all(pinfo);
        },
        0);
}

extern "C" int32_t qd_cli_show_queuing_ifindex(cmd_paraminfo *pinfo, uint32_t if_index) {
    return guarded_command(
        pinfo, [&]() -> std::int32_t {
            const qdcli::CheckedInterface checked = qdcli::check_interface(if_index);
            if (!checked.accepted) return 0;
            switch (checked.type) {
            case IF_TYPE_ETH:
            case IF_TYPE_ETH_ALT:
                return qd_cli_show_queuing_if(pinfo, if_index, checked.name);
            case IF_TYPE_HIF:
                return qd_cli_show_queuing_hif_xmlized(pinfo, if_index, checked.name);
            default:
                return 0;  // no queuing report for this kind of interface
            }
        },
        0);
}

extern "C" int32_t qd_cli_show_queuing_intf_all(cmd_paraminfo *pinfo) {
    return guarded_command(
        pinfo, [&]() -> std::int32_t {
            // Each interface reported with 0 is closed by a newline; an
            // unsupported one or a transport failure is not, and none of
            // them stops the walk.
            qdcli::for_each_enumerated_interface(pinfo, [pinfo](std::uint32_t if_index) {
                if (qd_cli_show_queuing_ifindex(pinfo, if_index) == 0) std::putchar('\n');
            });
            return 0;
        },
        0);
}
