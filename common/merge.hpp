// SPDX-License-Identifier: MIT
// Deep merge of scenario documents: objects merge member by member, any
// other value (arrays included) replaces what was there.
#pragma once

#include <string>

#include "positions.hpp"

namespace qdsim {

// Merges `overlay` into `base`.
void deep_merge(Json &base, const Json &overlay);

// The same for two parsed documents with their positions: positions of
// values that the overlay replaced are dropped, the overlay's are added.
void deep_merge(Json &base, PositionMap &base_positions, const Json &overlay, const PositionMap &overlay_positions);

}  // namespace qdsim
