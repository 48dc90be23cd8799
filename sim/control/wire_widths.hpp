// SPDX-License-Identifier: MIT
// Widths on the wire of the state's values that a reply carries in fewer
// than 64 bits. The model keeps every number in 64 bits (a counter with a
// rate wraps on the wire as the hardware's does); a value given explicitly
// with "sim set" must fit the field that carries it, so that the report
// shows what was set.
#pragma once

#include <string>

#include "model/json_access.hpp"

namespace qdsim {

// Bits of the wire field that carries the value at `pointer` (a JSON
// pointer into the state, defaults included); 64 when no field is narrower.
unsigned wire_width(const std::string &pointer);

// Checks every number in `value`, which is to stand at `pointer`, against
// wire_width. False with `error` naming the value's pointer and the width.
bool check_wire_widths(const std::string &pointer, const Json &value, std::string &error);

}  // namespace qdsim
