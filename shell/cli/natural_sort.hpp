// SPDX-License-Identifier: MIT
// Natural order of names: runs of digits compare by their value, so
// Ethernet1/2 comes before Ethernet1/10 and Ethernet2/1 after both.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qdsh {

// True when `a` comes before `b`. Letters compare without case (a tie is
// broken by the plain byte order, so the order is total); numbers by value,
// then by length (007 after 7).
bool natural_less(std::string_view a, std::string_view b);

// Sorts `names` in natural order.
void natural_sort(std::vector<std::string> &names);

}  // namespace qdsh
