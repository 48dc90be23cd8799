// SPDX-License-Identifier: MIT
// Parsing a scenario text while noting where every value stands, so that a
// fault found later (a duplicate name, a value out of range) can still be
// told with its line and column.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "json_input.hpp"

namespace qdsim {

struct SourcePosition {
    std::string file;
    std::size_t line = 0;    // 1-based; 0 when unknown
    std::size_t column = 0;  // 1-based, in bytes
};

struct PositionEntry {
    SourcePosition value;  // where the value starts
    SourcePosition key;    // where its member name starts (members of objects only)
};

// JSON pointer of each value -> its position.
using PositionMap = std::unordered_map<std::string, PositionEntry>;

struct ParseFailure {
    SourcePosition where;
    std::string reason;
};

// Parses `text`. On success fills `doc` and `positions`; on failure fills
// `failure` (syntax errors and duplicate member names). Comments are not
// allowed.
bool parse_with_positions(std::string_view text, const std::string &file, Json &doc, PositionMap &positions,
                          ParseFailure &failure);

// Position of the value at `pointer`, or of its nearest enclosing value
// that has one; `of_key` asks for the member name's position instead.
SourcePosition position_of(const PositionMap &positions, const std::string &pointer, bool of_key = false);

}  // namespace qdsim
