// SPDX-License-Identifier: MIT
// Complaints of the switch about how it was used: a message released twice,
// printer output never flushed, an argument that does not fit its
// attribute. Each is written to standard error at once and kept until a
// host takes them (qdsim::take_diagnostics).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qdsim {

void diagnostic(const std::string &text);
std::vector<std::string> take_diagnostics();
// Whether diagnostics are echoed to standard error (on by default).
void set_diagnostics_echo(bool echo);

// Numbers in messages: "0x0000001a", and without leading zeros "0x1a".
std::string hex32(std::uint32_t v);
std::string hex(std::uint32_t v);

}  // namespace qdsim
