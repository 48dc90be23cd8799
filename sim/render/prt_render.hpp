// SPDX-License-Identifier: MIT
// Platform side of the shell printer: the argument record that
// cmd_prt_arg_make fills, and the rendering of a cmd_prt format as text.
//
// A format's conversions are %[-][width][.precision]s (one typed argument
// each) and %% (a literal per-cent sign). A typed value renders from its
// attribute ID: type 0x30 as text; 0x14 and 0x15 as unsigned decimal of the
// given length (4 or 8); 0x11 as signed decimal; 0x02 as one unsigned byte;
// 0x0c as an unsigned 32-bit index. IDs 0x14ff00aa and 0x14ff00ae hold text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "qdcli/platform.h"

namespace qdprt {

struct ArgView {
    std::uint32_t attr = 0;
    std::uint32_t length = 0;
    const void *value = nullptr;
};

void encode_arg(cmd_prt_arg *record, std::uint32_t attr, const void *value, std::uint32_t length);
ArgView decode_arg(const cmd_prt_arg *record);

// True when the attribute's value is text.
bool is_text_attr(std::uint32_t attr);
// Text form of one typed value.
std::string value_text(const ArgView &arg);

// Number of %s conversions in `format`.
std::size_t count_conversions(const char *format);
// Renders `format` with `args` (one per %s conversion; missing ones render empty).
std::string render(const char *format, const std::vector<ArgView> &args);

}  // namespace qdprt
