// SPDX-License-Identifier: MIT
// Platform queries that gate commands, and access to the shell's records.
#pragma once

#include <cstdint>

#include "qdcli/platform.h"

// Platform type, cached for the life of the library once the platform has
// answered non-zero. -1 when the query failed (never cached).
extern "C" std::int32_t qd_cli_platform_type_get(void);

namespace qdcli {

// Empties the platform-type cache (for tests of the library's own objects).
void platform_type_cache_reset();

// True in VDC 1 (the low 16 bits of sysmgr_vdc_get()).
bool in_vdc_one();

// Argument i (1-based) of the command, or null when absent (beyond argc).
const cmd_param_arg *command_arg(const cmd_paraminfo *pinfo, unsigned position);
// The 32-bit value an argument points at (0 for a null record or value).
std::uint32_t arg_u32(const cmd_param_arg *arg);
// The one-byte value an argument points at (0 for a null record or value).
std::uint8_t arg_u8(const cmd_param_arg *arg);

// Result of the per-interface checks: index 0 and Ethernet sub-interfaces
// are refused on standard output; otherwise the type and the name are known.
struct CheckedInterface {
    bool accepted = false;
    std::uint8_t type = 0;
    char name[32] = {};
};
CheckedInterface check_interface(std::uint32_t if_index);

// Interface name from snprintf_if_index into a buffer of `size` bytes,
// always NUL-terminated.
void interface_name(std::uint32_t if_index, char *buffer, std::size_t size);

}  // namespace qdcli
