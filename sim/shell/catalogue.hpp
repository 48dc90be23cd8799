// SPDX-License-Identifier: MIT
// The attribute catalogue: every attribute ID the command handlers print,
// request or read from a stream, with its name (the element or member name
// of structured output) and the kind of value it holds.
//
// The kind, not the type byte, decides: 0x14ff00aa and 0x14ff00ae hold text
// under the type byte of unsigned integers. An ID outside the catalogue is
// still rendered, from its type byte and the value's length.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qdsim::shell {

enum class AttrKind {
    u8,        // one byte
    u16,       // 16-bit unsigned
    u32,       // 32-bit unsigned
    u64,       // 64-bit unsigned (counters)
    i32,       // signed 32-bit; -1 where a value does not apply
    if_index,  // 32-bit interface index
    text,      // NUL-terminated text
    flags8,    // eight bytes tested as one flag (any byte non-zero)
    marker,    // no value: the attribute itself is the instruction
};

struct AttributeInfo {
    std::uint32_t id;
    const char *name;
    AttrKind kind;
};

const std::vector<AttributeInfo> &attribute_catalogue();
const AttributeInfo *find_attribute(std::uint32_t id);
// The catalogue name, or "attr_0x14ff1234" for an ID outside it.
std::string attribute_name(std::uint32_t id);
// Value length the kind expects (0: any length, texts and markers).
std::uint32_t expected_length(AttrKind kind);
const char *kind_name(AttrKind kind);

}  // namespace qdsim::shell
