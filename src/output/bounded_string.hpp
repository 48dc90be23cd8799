// SPDX-License-Identifier: MIT
// Bounded string operations used to assemble command lines. Each is bounded
// by the destination's size and always leaves it NUL-terminated; a copy or
// append that does not fit is cut to fit (the destination is never emptied).
#pragma once

#include <cstddef>

namespace qdcli {

// Length of `text`, at most `max`.
std::size_t strnlen_s(const char *text, std::size_t max);
// Copies at most `count` characters of `source` into `dest` (size `dest_size`).
// Returns 0, or 1 when the text was cut or an argument was null/zero.
int strncpy_s(char *dest, std::size_t dest_size, const char *source, std::size_t count);
// Appends at most `count` characters of `source` to the text in `dest`.
// Returns 0, or 1 when the text was cut or an argument was null/zero.
int strncat_s(char *dest, std::size_t dest_size, const char *source, std::size_t count);

}  // namespace qdcli
