// SPDX-License-Identifier: MIT
// The command line of qdsh, declared once: its forms, its options and those
// of its subcommands, their values and its exit statuses. The option parsers
// (qdsh's and watch's), `qdsh --help`, the man page and the bash completion
// are all made from these tables (the last two by tools/qdsh_docgen), so they
// cannot disagree.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qdsh {

// How the output of a command is written.
enum class Format { text, json, xml };

}  // namespace qdsh

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

// The names of the options of `scope` that begin with `partial` (Tab).
std::vector<std::string> option_completions(Scope scope, std::string_view partial);

// qdsh's own command line.
struct Arguments {
    std::vector<std::string> commands;
    std::string scenario;
    std::string output;
    std::string lib;
    bool help = false;
    int pretty = -1;  // -1: on a terminal only
    bool nonzero = false;
    bool simulated_clock = false;
    std::string subcommand;             // "watch" or "serve"
    std::vector<std::string> sub_args;  // the words after it
    std::string schema;
    bool metric_names = false;
    bool version = false;
    bool pager = true;
};
// Reads the options with the table: names, whether a value follows (as the
// next word, or after "=" for a long name) and its choices.
bool parse_arguments(int argc, char **argv, Arguments &arguments, std::string &error);

// The number of seconds `text` is when it is a number from `low` to `high`.
std::optional<double> seconds_in(const std::string &text, double low, double high);

struct WatchOptions {
    double interval = 2;     // seconds between samples
    long count = 0;          // samples to take; 0: until interrupted
    bool nonzero = false;    // leave out rows whose counters are all zero
    std::string command;     // the command line watched
};
// Parses "[--interval S | -n S] [--count N] [--nonzero] COMMAND..." (the
// words after "watch"); the command is the remaining words joined by
// spaces, or the value of a last "-c COMMAND". False with `error` set when
// they are wrong.
bool parse_watch_arguments(const std::vector<std::string> &words, WatchOptions &options, std::string &error);

// What "watch ?" prints.
extern const char kWatchUsage[];

}  // namespace qdsh::cli
