// SPDX-License-Identifier: MIT
// The pager: output of one command goes through $PAGER (default "less -FRX"
// when less is installed) while standard output is a terminal, so a long
// report can be read page by page and a short one prints as usual (-F).
// Never used when standard output is a pipe or a file.
#pragma once

#include <csignal>
#include <cstdio>
#include <string>

namespace qdsh {

class Pager {
public:
    // `enabled` false (--no-pager) turns paging off; so does a $PAGER that
    // is set but empty, or "cat".
    explicit Pager(bool enabled);

    // The command that pages, or "" when output is not paged.
    const std::string &command() const { return command_; }

    // While a Page is alive, standard output goes to a fresh pager process;
    // its destructor flushes, waits for the pager to end and gives standard
    // output back. A pager that cannot start leaves output unpaged.
    class Page {
    public:
        explicit Page(const Pager &pager);
        ~Page();
        Page(const Page &) = delete;
        Page &operator=(const Page &) = delete;

    private:
        std::FILE *pipe_ = nullptr;
        int saved_stdout_ = -1;
        struct sigaction saved_pipe_ {};
    };

private:
    std::string command_;
};

// The pager command from the value of $PAGER (null when unset) and whether
// less is on the PATH: "" means no pager.
std::string choose_pager(const char *pager_env, bool less_available);

}  // namespace qdsh
