// SPDX-License-Identifier: MIT
#include "term/pager.hpp"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace qdsh {

namespace {

bool on_path(std::string_view program) {
    const char *path = std::getenv("PATH");
    if (path == nullptr) return false;
    std::string_view rest = path;
    while (true) {
        const std::size_t colon = rest.find(':');
        std::string dir(rest.substr(0, colon));
        if (dir.empty()) dir.push_back('.');  // an empty entry is the working directory
        dir += '/';
        dir += program;
        if (access(dir.c_str(), X_OK) == 0) return true;
        if (colon == std::string_view::npos) return false;
        rest.remove_prefix(colon + 1);
    }
}

}  // namespace

std::string choose_pager(const char *pager_env, bool less_available) {
    if (pager_env != nullptr) {
        const std::string_view p = pager_env;
        const std::size_t first = p.find_first_not_of(" \t");
        if (first == std::string_view::npos || p.substr(first) == "cat") return {};
        return std::string(p.substr(first));
    }
    return less_available ? "less -FRX" : std::string{};
}

Pager::Pager(bool enabled) {
    if (enabled && isatty(STDOUT_FILENO) == 1) command_ = choose_pager(std::getenv("PAGER"), on_path("less"));
    // A plain "less" from $PAGER still quits on a short report and keeps
    // colours, unless the user set $LESS.
    if (!command_.empty()) setenv("LESS", "FRX", 0);
}

Pager::Page::Page(const Pager &pager) {
    if (pager.command().empty()) return;
    std::fflush(stdout);
    saved_stdout_ = dup(STDOUT_FILENO);
    if (saved_stdout_ < 0) return;
    pipe_ = popen(pager.command().c_str(), "w");
    if (pipe_ == nullptr || dup2(fileno(pipe_), STDOUT_FILENO) < 0) {
        if (pipe_ != nullptr) pclose(pipe_);
        pipe_ = nullptr;
        close(saved_stdout_);
        saved_stdout_ = -1;
        return;
    }
    // Leaving the pager early closes the pipe: the rest of the command's
    // output is dropped instead of ending qdsh with SIGPIPE.
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    sigaction(SIGPIPE, &ignore, &saved_pipe_);
}

Pager::Page::~Page() {
    if (pipe_ == nullptr) return;
    std::fflush(stdout);
    dup2(saved_stdout_, STDOUT_FILENO);
    close(saved_stdout_);
    pclose(pipe_);
    std::clearerr(stdout);
    sigaction(SIGPIPE, &saved_pipe_, nullptr);
}

}  // namespace qdsh
