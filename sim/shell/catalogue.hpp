// SPDX-License-Identifier: MIT
// The attribute catalogue as the shell printer uses it: the library's own
// catalogue (qdcli/attributes.h, compiled in from src/catalogue), so that the
// names of structured output have one source.
//
// The type, not the type byte, decides: 0x14ff00aa and 0x14ff00ae hold text
// under the type byte of unsigned integers. An ID outside the catalogue is
// still rendered, from its type byte and the value's length.
#pragma once

#include <cstdint>
#include <string>

#include "qdcli/attributes.h"

namespace qdsim::shell {

using AttrKind = qdcli_attr_type;
using AttributeInfo = qdcli_attr_info;

inline const AttributeInfo *find_attribute(std::uint32_t id) { return qdcli_attr_find(id); }
// The catalogue name, or "attr_0x14ff1234" for an ID outside it.
std::string attribute_name(std::uint32_t id);
// Value length the type expects (0: any length, texts and markers).
std::uint32_t expected_length(AttrKind kind);
const char *kind_name(AttrKind kind);

}  // namespace qdsim::shell
