// SPDX-License-Identifier: MIT
// The command line of qdsh, declared once: its forms, its options and those
// of its subcommands, their values and its exit statuses. The option parser
// of main.cpp, `qdsh --help`, the man page and the bash completion are all
// made from these tables (the last two by qdsh_docgen), so they cannot
// disagree.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace qdsh::cli {

// Where an option is given: before any subcommand, or after "watch" or
// "serve".
enum class Scope { main, watch, serve };

// What an option's value is (for checking it and completing it).
enum class Value {
    none,     // a flag
    command,  // a qdsh command line
    file,     // a path
    choice,   // one of `choices`
    number,   // a number (seconds, a count)
    address,  // HOST:PORT
};

struct Option {
    Scope scope = Scope::main;
    std::string_view short_name;  // "-c", or ""
    std::string_view long_name;   // "--command", or ""
    std::string_view value_name;  // "COMMAND"; "" for a flag
    Value value = Value::none;
    std::string_view choices;     // blank-separated, for Value::choice
    std::string_view help;

    // "-c, --command COMMAND", "--output text|json|..."
    std::string names() const;
    bool named(std::string_view name) const { return !name.empty() && (name == short_name || name == long_name); }
};

std::span<const Option> options();

// The option of `scope` called `name` ("-c", "--command"), or null.
const Option *find_option(Scope scope, std::string_view name);
// Whether `value` is one of the option's choices.
bool is_choice(const Option &option, std::string_view value);
// "text, json, xml, openmetrics or prometheus"
std::string choice_list(const Option &option);

// One way of calling qdsh: the SYNOPSIS of the manual and the usage lines
// of --help.
struct Form {
    std::string_view words;  // after "qdsh"
    std::string_view help;   // what that form does
};
std::span<const Form> forms();

struct ExitStatus {
    int code;
    std::string_view meaning;
};
std::span<const ExitStatus> exit_statuses();

// What qdsh is, in one paragraph.
extern const std::string_view kDescription;
// What qdsh reads at its prompt, in one paragraph.
extern const std::string_view kPromptHelp;

// The text of `qdsh --help`.
std::string usage();

}  // namespace qdsh::cli
