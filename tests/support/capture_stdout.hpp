// SPDX-License-Identifier: MIT
// What a handler writes to standard output (reports printed with printf,
// puts and putchar rather than through the shell's printer), captured.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>

namespace testsupport {

inline std::string capture_stdout(const std::function<void()> &body) {
    std::fflush(stdout);
    FILE *sink = std::tmpfile();
    const int saved = dup(STDOUT_FILENO);
    dup2(fileno(sink), STDOUT_FILENO);
    body();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    std::string out;
    std::rewind(sink);
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, sink)) > 0;) out.append(buffer, n);
    std::fclose(sink);
    return out;
}

}  // namespace testsupport
