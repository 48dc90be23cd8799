// SPDX-License-Identifier: MIT
// Whether standard output ends a line, so that qdsh can start the next
// output on a line of its own: the handler library prints some messages
// without a newline (on a switch, the prompt follows them).
#pragma once

#include <cstdio>

namespace qdsh {

// Puts standard output (the C stream every part of the process writes with)
// behind a stream that notes the last byte it passes on to descriptor 1.
// Buffering stays as it was: by lines on a terminal, by blocks otherwise.
void track_output_line();

// The stream standard output was before track_output_line: the line editor
// writes its prompt and echo there, which are not output of commands.
std::FILE *untracked_output();

// Flushes standard output and, when the last byte written was not a
// newline, writes one. Nothing when nothing was written.
void end_output_line();

}  // namespace qdsh
