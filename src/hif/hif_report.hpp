// SPDX-License-Identifier: MIT
// The host-interface queuing report: the exchange with the interface's
// statistics agent and the walk over the decoded reply, shared by the text
// report and the typed report (they differ only in their HifOutput).
#pragma once

#include <cstdint>

#include "hif/hif_output.hpp"
#include "hif/hif_queuing_info.hpp"
#include "qdcli/platform.h"

namespace qdcli::hif {

struct ReportContext {
    // Single-interface mode (cmd_id CMD_ID_SHOW_QUEUING_IF): control buffers
    // and queues, the flags column, the flow-control status values and the
    // ", merged with other qos-group" remark.
    bool detailed = false;
    // Transmit queue drops of the port from the QoS counters (format 0).
    std::uint64_t tx_queue_drops = 0;
};

// Prints the report of a decoded reply, from the heading to the pause table.
void print_hif_queuing(const HifQueuingInfo &info, const ReportContext &context, const char *if_name,
                       HifOutput &out);

// The whole command: first line, exchange, checks, report, release.
// Failures are told in `out`; the result is always 0.
std::int32_t show_hif_queuing(cmd_paraminfo *pinfo, std::uint32_t if_index, const char *if_name, HifOutput &out);

}  // namespace qdcli::hif
