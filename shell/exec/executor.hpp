// SPDX-License-Identifier: MIT
// The executor: runs command lines against the loaded handler library and
// the simulated switch, and tells what it matched and resolved.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/grammar.hpp"
#include "cli/iflist.hpp"
#include "exec/library.hpp"

namespace qdsh {

// What the executor made of one command line, filled in as it runs (a
// listener of the library's events reads it while the handler runs).
struct Executed {
    const Command *command = nullptr;           // the entry matched; null for a blank line, a comment or "?"
    std::vector<ResolvedInterface> interfaces;  // the interfaces the line named: index and the switch's name
    std::size_t failures_told = 0;              // failures the library told (counted by the caller)
    bool ok = false;                            // false: refused or failed
};

class Executor {
public:
    explicit Executor(const Library &library) : library_(library) {}

    // Runs one command line ("?" help included). Returns executed.ok: false
    // when the line was refused or the command failed; the reason is on
    // standard error: qdsh's own words, unless the library told its failure.
    bool run(std::string_view line, Executed &executed);
    bool run(std::string_view line) {
        Executed executed;
        return run(line, executed);
    }

    // A command line a handler runs (vsh_system2), matched once: a line qdsh
    // does not know goes to the platform's own commands. 0 when it succeeded.
    int run_nested(std::string_view line);

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
    bool execute(const Match &match);
    bool resolve(const Match &match);
    bool call_handler(const Match &match);
    bool run_builtin(const Match &match);
    bool queue_limit(const Match &match);
    bool clear_pfc();
    bool sim_show(const Match &match);
    bool sim_set(const Match &match);
    bool sim_load(const Match &match);
    void sim_interfaces() const;
    void warn_platform_type_kept() const;
    std::string queue_limit_help() const;

    const Library &library_;
    bool exit_requested_ = false;
    Executed *executed_ = nullptr;  // of the command running
};

// Prints "qdsh: MESSAGE" on standard error (and hands MESSAGE to the error
// listener, when one is set).
void report_error(const std::string &message);
// Prints "qdsh: MESSAGE" on standard error, control bytes escaped.
void write_error(const std::string &message);
void set_error_listener(std::function<void(const std::string &)> listener);

}  // namespace qdsh
