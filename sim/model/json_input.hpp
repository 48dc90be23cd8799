// SPDX-License-Identifier: MIT
// The gate every JSON text passes through on its way into the simulator:
// scenario files (also those named by "extends" and by "sim load"), scenario
// texts and the values of "sim set".
//
// Files: only regular files are read (a FIFO would block, a device such as
// /dev/zero never ends, a directory is no text), and none over
// kMaxScenarioBytes. Texts: values nest at most kMaxJsonDepth levels, checked
// on the text before anything is built, so a hostile nesting can neither
// exhaust the stack nor the memory of a recursive copy.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "model/json_access.hpp"

namespace qdsim {

constexpr std::size_t kMaxJsonDepth = 64;
// Far above any real chassis (the default one is about 100 KiB as JSON).
constexpr std::size_t kMaxScenarioBytes = std::size_t{64} << 20;

// Reads the whole regular file at `path` into `text`. False with `error`
// naming the fault ("is a directory", "is not a regular file", "is larger
// than ..."), without the path.
bool read_json_file(const std::string &path, std::string &text, std::string &error);

// Scans `text` for arrays and objects nested deeper than kMaxJsonDepth
// (brackets inside strings do not count). False with `error` and the
// 0-based byte `offset` of the first bracket too deep.
bool check_json_depth(std::string_view text, std::string &error, std::size_t &offset);

// Parses one JSON value with the depth check first; false with `error`
// ("nests deeper than 64 levels (at byte N)", "is not JSON: ...").
bool parse_json_value(std::string_view text, Json &out, std::string &error);

}  // namespace qdsim
