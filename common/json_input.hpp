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

#include <nlohmann/json.hpp>

namespace qdsim {

using Json = nlohmann::json;

// "/a~1b": one token of a JSON pointer, escaped (~ and /).
std::string pointer_token(std::string_view token);

constexpr std::size_t kMaxJsonDepth = 64;
// Fifty times the largest chassis of scripts/gen-chassis (16 cards, 48
// extenders of 48 ports: about 19,000).
constexpr std::size_t kMaxJsonItems = 1000000;
// Far above any real chassis (the default one is about 100 KiB as JSON).
constexpr std::size_t kMaxScenarioBytes = std::size_t{64} << 20;

// Reads the whole regular file at `path` into `text`. False with `error`
// naming the fault ("is a directory", "is not a regular file", "is larger
// than ..."), without the path.
bool read_json_file(const std::string &path, std::string &text, std::string &error);

// Scans `text` for arrays and objects nested deeper than kMaxJsonDepth and
// for more than kMaxJsonItems values (brackets and commas inside strings do
// not count), before a parser builds anything: a text of a million
// interfaces is refused in the time it takes to read it, not after the
// gigabytes a parse of it would take. False with `error` and the 0-based
// byte `offset` where the text went over.
bool check_json_depth(std::string_view text, std::string &error, std::size_t &offset);

// Parses one JSON value by the scenario loader's rules (the depth check
// first, then no duplicate member names, no number too large for a JSON
// number); false with `error` ("nests deeper than 64 levels (at byte N)",
// "is not JSON: REASON (line L, column C)"). No message quotes the text.
bool parse_json_value(std::string_view text, Json &out, std::string &error);

// Every JSON file another part reads (qdsh's --config among them) comes in
// here: read_json_file, then parse_json_value's rules. `error` names the
// fault without the path: "line L, column C: REASON", "is a directory ...".
bool read_json_document(const std::string &path, Json &out, std::string &error);

// A name from the input, quoted for a message: at most 64 bytes of it
// ("..." after the quote when cut), so that no message repeats a whole
// hostile value.
std::string quoted_excerpt(std::string_view text);

// terminal_safe(), the text for a terminal, is in qdsim/sim.h: hosts use it too.

// Whether `text` is valid UTF-8 without control characters of any kind
// (newline and tab included); false with `why` naming the first fault.
bool plain_text(std::string_view text, std::string &why);

}  // namespace qdsim
