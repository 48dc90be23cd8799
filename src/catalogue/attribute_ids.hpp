// SPDX-License-Identifier: MIT
// The attribute IDs by their catalogue names (attr::if_name, attr::q_size,
// ...): the reports and the simulator name an attribute this way, so an ID
// is written once, in its catalogue row (attribute_rows.hpp).
#pragma once

#include <cstdint>

namespace qdcli::attr {
#define QDCLI_ATTRIBUTE(name, id, ...) inline constexpr std::uint32_t name = id;
#include "attribute_rows.hpp"
#undef QDCLI_ATTRIBUTE
}  // namespace qdcli::attr
