// SPDX-License-Identifier: MIT
// The executor: runs command lines against the loaded handler library and
// the simulated switch.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "grammar.hpp"
#include "library.hpp"

namespace qdsh {

// What the caller of Shell::run learns of the command while it runs.
struct RunInfo {
    std::vector<std::uint32_t> named_interfaces;  // interfaces the command line named, as resolved
    std::size_t failures_told = 0;  // failures the library told (the caller counts them)
};

class Shell {
public:
    explicit Shell(const Library &library) : library_(library) {}

    // Runs one command line ("?" help included). Returns false when the line
    // was refused or the command failed; the reason is on standard error:
    // qdsh's own words, unless the library told its failure (`info`).
    bool run(std::string_view line, RunInfo *info = nullptr);

    bool exit_requested() const { return exit_requested_; }

    // Whether a "?" typed after `before` asks for help: as a word of its own
    // or glued to the start of a command word; not inside double quotes,
    // not inside a JSON value or file name under way, not glued to a value.
    bool question_asks_help(std::string_view before) const;

    // Lists what may follow `before` (the "?" help); false when nothing may.
    bool show_help(std::string_view before) const;

    // Completions of the word that starts at `start` in `line` (tab key).
    std::vector<std::string> complete(std::string_view line, std::size_t start) const;

private:
    bool run_line(std::string_view line);
    bool call_handler(const Match &match);
    bool run_builtin(const Match &match);
    bool queue_limit(const Match &match);
    bool clear_pfc(const Match &match);
    bool sim_show(const Match &match);
    bool sim_set(const Match &match);
    bool sim_load(const Match &match);
    void sim_interfaces() const;
    void warn_platform_type_kept() const;
    std::string queue_limit_help() const;

    const Library &library_;
    bool exit_requested_ = false;
    RunInfo *info_ = nullptr;  // of the command running
};

// Prints "qdsh: MESSAGE" on standard error (and hands MESSAGE to the error
// listener, when one is set).
void report_error(const std::string &message);
// Prints "qdsh: MESSAGE" on standard error, control bytes escaped.
void write_error(const std::string &message);
void set_error_listener(std::function<void(const std::string &)> listener);

}  // namespace qdsh
