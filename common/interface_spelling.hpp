// SPDX-License-Identifier: MIT
// How a person may spell an interface's name: any case, blanks anywhere,
// and "Ethernet" shortened to any of its leading letters ("e1/3",
// "Eth 101/1/2"). One rule for the simulator's lookups and scenario
// references, and for the shell.
#pragma once

#include <string>
#include <string_view>

namespace qdsim {

// Lower case, blanks and tabs dropped: the key names are compared by.
std::string fold_interface_name(std::string_view name);

// The folded canonical name a spelling stands for: a leading abbreviation
// of "ethernet" followed by a digit is written out ("eth1/3" ->
// "ethernet1/3"); any other spelling only folded ("mgmt0").
std::string expand_interface_name(std::string_view spelling);

}  // namespace qdsim
