// SPDX-License-Identifier: MIT
// Where the switch's output goes: printer flushes to the host's flush sink
// when it set one, else their text (and every other text) to the output
// sink, standard output by default.
#pragma once

#include <string>

#include "qdsim/sim.h"

namespace qdsim::printer {

void deliver(const std::string &text);
void deliver_flush(PrinterFlush flush);

}  // namespace qdsim::printer
