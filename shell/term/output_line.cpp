// SPDX-License-Identifier: MIT
#include "term/output_line.hpp"

#include "term/signals.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace qdsh {
namespace {

int g_last_byte = -1;  // -1: nothing written yet
std::FILE *g_untracked = stdout;
bool g_tracking = false;

ssize_t write_out(void *, const char *buffer, std::size_t size) {
    // Output cut by Ctrl-C or a termination signal is taken and dropped.
    if (output_cut()) return static_cast<ssize_t>(size);
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n = write(STDOUT_FILENO, buffer + done, size - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += static_cast<std::size_t>(n);
    }
    if (done > 0) g_last_byte = static_cast<unsigned char>(buffer[done - 1]);
    // A short count tells stdio that the rest was not written (a closed
    // pipe): it marks the stream in error, as it would on the descriptor.
    return done == 0 && size != 0 ? -1 : static_cast<ssize_t>(done);
}

}  // namespace

void track_output_line() {
    if (g_tracking) return;
    cookie_io_functions_t io{};
    io.write = write_out;
    FILE *tracked = fopencookie(nullptr, "w", io);
    if (tracked == nullptr) return;  // untracked: output is only never ended
    std::fflush(stdout);
    g_untracked = stdout;
    setvbuf(tracked, nullptr, isatty(STDOUT_FILENO) ? _IOLBF : _IOFBF, BUFSIZ);
    stdout = tracked;
    g_tracking = true;
}

std::FILE *untracked_output() { return g_untracked; }

void end_output_line() {
    std::fflush(stdout);
    if (g_tracking && g_last_byte != -1 && g_last_byte != '\n') {
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }
}

}  // namespace qdsh
