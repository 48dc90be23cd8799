// SPDX-License-Identifier: MIT
// Exported entry points of the host-interface queuing reports. Both run the
// same report (hif_report.cpp); only the output differs.
#include "frame/guard.hpp"
#include "hif/hif_output.hpp"
#include "hif/hif_report.hpp"
#include "qdcli/handlers.h"

// A null parameter record carries no transport handle to ask with: nothing
// is printed and the result is 0, like every other outcome of these reports.

extern "C" int32_t qd_cli_show_queuing_hif(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name) {
    return qdcli::guarded(
        [&]() -> std::int32_t {
            if (pinfo == nullptr) return 0;
            qdcli::hif::TextOutput out;
            return qdcli::hif::show_hif_queuing(pinfo, if_index, if_name, out);
        },
        0);
}

extern "C" int32_t qd_cli_show_queuing_hif_xmlized(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name) {
    return qdcli::guarded(
        [&]() -> std::int32_t {
            if (pinfo == nullptr) return 0;
            qdcli::hif::TypedOutput out(pinfo);
            return qdcli::hif::show_hif_queuing(pinfo, if_index, if_name, out);
        },
        0);
}
