// SPDX-License-Identifier: MIT
// Output handles of the shell printer. A command's output handle is its
// transport handle with bit 30 set, so the two are never mistaken for each
// other.
#pragma once

#include <cstdint>

namespace qdsim::printer {

constexpr std::uint32_t kOutputHandleBit = 0x40000000u;

inline std::uint32_t output_handle(std::uint32_t mts_handle) { return kOutputHandleBit | (mts_handle & 0x3fffffffu); }
inline bool is_output_handle(std::uint32_t handle) { return (handle & kOutputHandleBit) != 0; }

}  // namespace qdsim::printer
