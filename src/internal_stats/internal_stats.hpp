// SPDX-License-Identifier: MIT
// qd_cli_show_internal_stats: the internal port statistics of the extender
// behind a front-panel interface.
#pragma once

#include <cstdint>
#include <memory_resource>

#include "qdcli/platform.h"

namespace qdcli::internal_stats {

// The handler's body. The seven working tables are allocated from `tables`
// (the exported handler passes the default heap); when an allocation fails
// the command ends with "Failed to allocate memory!".
std::int32_t show_internal_stats(cmd_paraminfo *pinfo, std::uint32_t if_index, const char *if_name,
                                 std::pmr::memory_resource *tables);

}  // namespace qdcli::internal_stats
