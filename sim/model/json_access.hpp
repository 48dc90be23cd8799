// SPDX-License-Identifier: MIT
// Reading and changing the state document with defaults.
//
// Services read their sections through these accessors: a missing member,
// or one of another type, gives the fallback instead of throwing, so a
// scenario only has to state what differs from the defaults. Pointers are
// JSON pointers relative to `base` ("" is `base` itself).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "json_input.hpp"

namespace qdsim {

// The value at `pointer`, or null when there is none (or the pointer is malformed).
const Json *find(const Json &base, std::string_view pointer);
Json *find(Json &base, std::string_view pointer);

// Numbers: unsigned or non-negative integers; a "0x..." text is read as hex.
std::uint64_t get_u64(const Json &base, std::string_view pointer, std::uint64_t fallback = 0);
// The low 32 bits of get_u64.
std::uint32_t get_u32(const Json &base, std::string_view pointer, std::uint32_t fallback = 0);
// Booleans; a number counts as true when non-zero.
bool get_bool(const Json &base, std::string_view pointer, bool fallback = false);
std::string get_string(const Json &base, std::string_view pointer, const std::string &fallback = {});

// Reads a number from a value (unsigned, non-negative integer or "0x..."
// text). False when the value is none of these.
bool read_unsigned(const Json &value, std::uint64_t &out);

// Sets every counter under `value` to 0: every unsigned or integer member,
// at any depth, except inside "rates" objects. Booleans and texts stay.
void zero_counters(Json &value);

// Sets every counter inside every object named "counters" under `value`
// (at any depth) to 0, and nothing else: the clear of a section laid out
// by the convention that a record keeps its counters in a "counters"
// object, beside its configuration.
void zero_counter_blocks(Json &value);

// "/3": the token of an array element.
std::string index_token(std::size_t index);

}  // namespace qdsim
