// SPDX-License-Identifier: MIT
// The smallest host of libqdcli.so: it takes the platform operations from the
// simulated switch (libqdsim.so), builds the shell's parameter-info record,
// calls handlers by name and shows the three ways a handler reports:
//
//   printer          typed arguments through cmd_prt, rendered by the platform
//                    (here as text; the same call renders as JSON or XML)
//   standard output  the handler prints with printf-style calls itself
//   return value     a callback hands its answer back through its arguments
//                    and its status, and prints nothing
//
// A host on a real switch provides the platform operations of
// qdcli/platform.h itself instead of linking libqdsim.so.
//
//   qdcli_example_host               runs the three examples
//   qdcli_example_host printer|stdout|return
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "qdcli/commands.h"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"
#include "qdsim/sim.h"

namespace {

// One command: fresh parameter-info record (all zero but what the handler
// reads), a transport handle for its messages, the handler call, and the
// end of the command, which checks that every message was released.
int run(std::uint32_t cmd_id, std::int32_t (*handler)(cmd_paraminfo *)) {
    static cmd_paraminfo pinfo;  // 6456 bytes: kept off the stack
    std::memset(&pinfo, 0, sizeof pinfo);
    pinfo.cmd_id = cmd_id;
    pinfo.mts_handle = qdsim::open_command();
    const std::int32_t status = handler(&pinfo);
    qdsim::close_command(pinfo.mts_handle);
    return status;
}

int printer_example() {
    std::puts("== show vaq no-credit-drops: through the printer ==");
    const int status = run(QDCLI_CMD_SHOW_VAQ_DROPS, process_qd_cli_show_vaq_drops_all);
    std::printf("\nstatus %d\n", status);  // the report's last line has no newline
    return status;
}

int stdout_example() {
    std::puts("== show wrr-queue cos-map: on standard output ==");
    const int status = run(QDCLI_CMD_SHOW_WRRQUEUE_COSMAP, qd_cli_show_wrrqueue_cosmap);
    std::fflush(stdout);
    std::printf("status %d\n", status);
    return status;
}

int return_value_example() {
    std::puts("== queue-limit callbacks: answers in the return value and arguments ==");
    std::uint32_t range[2] = {0, 0};
    const std::int32_t status = qdcli_interface_qoslimit_range_get(nullptr, nullptr, range);
    std::uint32_t record[2] = {0, 0};
    qdcli_pdcli_cmd_qd_def_get(nullptr, nullptr, record);
    // The help text is the library's malloc'd copy; the host frees it.
    char *help = qdcli_interface_qoslimit_help_get(nullptr, nullptr);
    std::printf("range %u to %u, default %u, help \"%s\"\n", range[0], range[1], record[1],
                help != nullptr ? help : "");
    std::free(help);
    std::printf("callback status %d (1: answered)\n", status);
    return status == 1 ? 0 : 1;  // the callbacks answer 1 when they filled the record
}

}  // namespace

int main(int argc, char **argv) {
    const std::string which = argc > 1 ? argv[1] : "all";
    if (which != "all" && which != "printer" && which != "stdout" && which != "return") {
        std::fprintf(stderr, "usage: %s [printer|stdout|return]\n", argv[0]);
        return 2;
    }
    qdsim::load_default_scenario();
    int failures = 0;
    if (which == "all" || which == "printer") failures += printer_example() != 0;
    if (which == "all" || which == "stdout") failures += stdout_example() != 0;
    if (which == "all" || which == "return") failures += return_value_example() != 0;
    qdsim::shutdown();
    return failures == 0 ? 0 : 1;
}
