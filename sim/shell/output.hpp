// SPDX-License-Identifier: MIT
// Where the switch's output goes, and how a flush of the printer looks in
// each output mode.
//
//   text: the rendered text as it stands.
//   json: one JSON object per flush, one member per printed value, named
//         from the attribute catalogue in the order printed; a name printed
//         more than once in a flush becomes an array of its values. A flush
//         without values (a message) is {"message": "<text>"}.
//   xml:  one <output> element per flush, one child element per printed
//         value in order; a flush without values is <output><message>.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "qdsim/sim.h"

namespace qdsim::shell {

// One typed value as printed: the attribute and a copy of its bytes.
struct PrintedValue {
    std::uint32_t attr = 0;
    std::vector<std::uint8_t> bytes;
};

struct Flush {
    std::string text;
    std::vector<PrintedValue> values;
};

// Hands text to the host's sink (standard output unless one is set).
void deliver(const std::string &text);
// Hands a flush to the host's flush sink when one is set (true), else
// renders it in the current mode and delivers the text (false).
void deliver_flush(Flush flush);
OutputMode mode();
// What a flush looks like in `mode`; empty when there is nothing to show.
std::string render(const Flush &flush, OutputMode mode);

}  // namespace qdsim::shell
