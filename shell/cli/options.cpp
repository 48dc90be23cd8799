// SPDX-License-Identifier: MIT
#include "cli/options.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "cli/pipeline.hpp"

namespace qdsh::cli {

namespace {

using S = Scope;
using V = Value;

constexpr std::string_view kFormats = "text json xml openmetrics prometheus";

const Option kOptions[] = {
    {S::main, "-c", "--command", "COMMAND", V::command, "",
     "run COMMAND; repeat to run several in order in one process"},
    {S::main, "", "--scenario", "FILE", V::file, "", "load the switch from FILE instead of the default chassis"},
    {S::main, "-o", "--output", "FORMAT", V::choice, kFormats,
     "text reports (the default), one JSON or XML document per command (a command may also end in "
     "\"| json\" or \"| xml\"), or the counters and gauges of the commands as metrics "
     "(OpenMetrics 1.0, or the Prometheus text format 0.0.4)"},
    {S::main, "", "--nonzero", "", V::none, "",
     "structured output, metrics and watch leave out the rows whose counters are all zero"},
    {S::main, "", "--simulated-clock", "", V::none, "",
     "watch advances the simulator's clock by the interval instead of waiting (repeatable runs, tests)"},
    {S::main, "", "--pretty", "", V::none, "", "indent structured output (the default on a terminal)"},
    {S::main, "", "--compact", "", V::none, "",
     "print each JSON document on one line (the default when standard output is not a terminal)"},
    {S::main, "", "--lib", "PATH", V::file, "",
     "the handler library (default: $QDSH_LIBQDCLI, then ../lib/libqdcli.so next to qdsh, then the build tree's)"},
    {S::main, "", "--schema", "FORMAT", V::choice, "json xml", "print the schema of the structured output and exit"},
    {S::main, "", "--metric-names", "", V::none, "",
     "print the metric names of -o openmetrics and serve (a Markdown table) and exit"},
    {S::main, "", "--no-pager", "", V::none, "",
     "never page long output (otherwise a terminal's output goes through $PAGER, default less -FRX)"},
    {S::main, "-V", "--version", "", V::none, "", "print the version of qdsh and exit"},
    {S::main, "-h", "--help", "", V::none, "", "show this text and exit"},

    {S::watch, "-n", "--interval", "S", V::number, "", "seconds between samples, 0.1 to 86400 (default 2)"},
    {S::watch, "", "--count", "N", V::number, "", "take N samples, then end (default: until q or Ctrl-C)"},
    {S::watch, "", "--nonzero", "", V::none, "", "leave out the rows whose counters are all zero"},
    {S::watch, "-c", "--command", "COMMAND", V::command, "", "the command to watch, as one word"},

    {S::serve, "", "--listen", "HOST:PORT", V::address, "",
     "the loopback address to listen on (default 127.0.0.1:9477; port 0 takes a free one)"},
    {S::serve, "", "--config", "FILE", V::file, "", "a JSON file naming the commands whose metrics are served"},
    {S::serve, "", "--timeout", "S", V::number, "", "seconds a scrape waits for its collection, 0.1 to 3600 (default 10)"},
    {S::serve, "", "--nonzero", "", V::none, "", "leave out the rows whose counters are all zero"},
};

const Form kForms[] = {
    {"[OPTIONS]", "the prompt on a terminal, or one command per line from standard input"},
    {"[OPTIONS] -c COMMAND [-c COMMAND]...", "run the commands in order and exit"},
    {"[OPTIONS] watch [--interval S | -n S] [--count N] [--nonzero] COMMAND",
     "run COMMAND every S seconds and show every counter with its delta and rate"},
    {"[OPTIONS] serve [--listen HOST:PORT] [--config FILE] [--timeout S] [--nonzero]",
     "serve the counters over HTTP for a time-series system"},
    {"[--lib PATH] --schema json|xml", "print the schema of the structured output"},
    {"[--lib PATH] --metric-names", "print the metric names"},
    {"--version | --help", "print the version or this text"},
};

const ExitStatus kExitStatuses[] = {
    {0, "every command succeeded"},
    {1, "a command was refused or failed (its document lists the errors)"},
    {2, "bad options, a scenario that does not load, or a library that does not load"},
};

// Wraps `text` at `width` columns, each line after the first indented by `indent`.
std::string wrap(std::string_view text, std::size_t indent, std::size_t first_column, std::size_t width = 79) {
    std::string out;
    std::size_t column = first_column;
    while (!text.empty()) {
        const std::size_t space = text.find(' ');
        const std::string_view word = text.substr(0, space);
        text = space == std::string_view::npos ? std::string_view{} : text.substr(space + 1);
        if (column > indent && column + 1 + word.size() > width) {
            out += '\n';
            out.append(indent, ' ');
            column = indent;
        } else if (column > indent) {
            out += ' ';
            ++column;
        }
        out += word;
        column += word.size();
    }
    return out;
}

}  // namespace

const std::string_view kDescription =
    "qdsh runs queuing commands against a simulated switch, calling the handlers of libqdcli.so as the "
    "switch's own shell does. With no -c, it reads commands from the terminal (line editing, history, Tab "
    "completion, ? help) or, when standard input is not a terminal, one command per line.";

const std::string_view kPromptHelp =
    "Type \"help\" in qdsh for the list of commands. Words may be shortened while they stay unique. "
    "? lists what may follow the words before it; typed inside a quoted or JSON value, or glued to the end "
    "of a value, it is part of that value. A command line may end in filters: \"| include REGEX\", "
    "\"| exclude REGEX\", \"| begin REGEX\", \"| count\".";

std::string Option::names() const {
    std::string out(short_name);
    if (!long_name.empty()) out += (out.empty() ? "" : ", ") + std::string(long_name);
    if (value == Value::choice) {
        std::string c(choices);
        std::replace(c.begin(), c.end(), ' ', '|');
        out += " " + c;
    } else if (!value_name.empty()) {
        out += " " + std::string(value_name);
    }
    return out;
}

std::span<const Option> options() { return kOptions; }
std::span<const Form> forms() { return kForms; }
std::span<const ExitStatus> exit_statuses() { return kExitStatuses; }

const Option *find_option(Scope scope, std::string_view name) {
    for (const Option &o : kOptions)
        if (o.scope == scope && o.named(name)) return &o;
    return nullptr;
}

bool is_choice(const Option &option, std::string_view value) {
    std::string_view rest = option.choices;
    while (!rest.empty()) {
        const std::size_t space = rest.find(' ');
        if (rest.substr(0, space) == value) return true;
        rest = space == std::string_view::npos ? std::string_view{} : rest.substr(space + 1);
    }
    return false;
}

std::string choice_list(const Option &option) {
    std::string out;
    std::string_view rest = option.choices;
    while (!rest.empty()) {
        const std::size_t space = rest.find(' ');
        const std::string_view choice = rest.substr(0, space);
        rest = space == std::string_view::npos ? std::string_view{} : rest.substr(space + 1);
        if (!out.empty()) out += rest.empty() ? " or " : ", ";
        out += choice;
    }
    return out;
}

std::string usage() {
    std::string out;
    bool first = true;
    for (const Form &f : kForms) {
        out += (first ? "Usage: qdsh " : "       qdsh ") + std::string(f.words) + "\n";
        first = false;
    }
    out += "\n" + wrap(kDescription, 0, 0) + "\n";
    auto section = [&](Scope scope, std::string_view title) {
        out += "\n" + std::string(title) + ":\n";
        for (const Option &o : kOptions) {
            if (o.scope != scope) continue;
            const std::string names = "  " + o.names();
            out += names;
            if (names.size() + 2 > 26) {
                out += "\n" + std::string(26, ' ');
            } else {
                out.append(26 - names.size(), ' ');
            }
            out += wrap(o.help, 26, 26) + "\n";
        }
    };
    section(Scope::main, "Options");
    section(Scope::watch, "Options of watch (watch ends on q or Ctrl-C)");
    section(Scope::serve, "Options of serve");
    out += "\nExit status:\n";
    for (const ExitStatus &e : kExitStatuses) out += "  " + std::to_string(e.code) + "  " + wrap(e.meaning, 5, 5) + "\n";
    out += "\n" + wrap(kPromptHelp, 0, 0) + "\n";
    return out;
}

std::vector<std::string> option_completions(Scope scope, std::string_view partial) {
    std::vector<std::string> names;
    for (const Option &o : kOptions)
        if (o.scope == scope)
            for (const std::string_view n : {o.short_name, o.long_name})
                if (!n.empty() && n.starts_with(partial)) names.emplace_back(n);
    return names;
}

bool parse_arguments(int argc, char **argv, Arguments &o, std::string &error) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "watch" || arg == "serve") {
            o.subcommand = arg;
            o.sub_args.assign(argv + i + 1, argv + argc);
            break;
        }
        std::string name = arg, value;
        const std::size_t eq = arg.find('=');
        const bool inline_value = arg.starts_with("--") && eq != std::string::npos;
        if (inline_value) {
            name = arg.substr(0, eq);
            value = arg.substr(eq + 1);
        }
        const Option *option = find_option(Scope::main, name);
        if (option == nullptr) {
            error = !arg.empty() && arg[0] == '-' ? "unknown option " + name
                                                 : "unexpected argument \"" + arg + "\" (commands go after -c)";
            return false;
        }
        if (option->value == Value::none) {
            if (inline_value) {
                error = "option " + name + " takes no value";
                return false;
            }
        } else if (!inline_value) {
            if (i + 1 >= argc) {
                error = "option " + name + " needs a value (" + std::string(option->value_name) + ")";
                return false;
            }
            value = argv[++i];
        }
        if (option->value == Value::choice && !is_choice(*option, value)) {
            error = "unknown value \"" + value + "\" for " + name + ": expected " + choice_list(*option);
            return false;
        }
        const std::string_view id = option->long_name;
        if (id == "--command") o.commands.push_back(value);
        else if (id == "--scenario") o.scenario = value;
        else if (id == "--output") o.output = value;
        else if (id == "--lib") o.lib = value;
        else if (id == "--schema") o.schema = value;
        else if (id == "--metric-names") o.metric_names = true;
        else if (id == "--nonzero") o.nonzero = true;
        else if (id == "--simulated-clock") o.simulated_clock = true;
        else if (id == "--pretty") o.pretty = 1;
        else if (id == "--compact") o.pretty = 0;
        else if (id == "--no-pager") o.pager = false;
        else if (id == "--version") o.version = true;
        else if (id == "--help") o.help = true;
    }
    if (!o.subcommand.empty() && !o.commands.empty()) {
        error = o.subcommand + " runs on its own: no -c before it (watch takes its command after it)";
        return false;
    }
    return true;
}

const char kWatchUsage[] =
    "watch [--interval S | -n S] [--count N] [--nonzero] COMMAND\n"
    "  Runs COMMAND every S seconds (default 2), N times or until q or Ctrl-C, and\n"
    "  shows every counter with its delta since the last sample and its rate per\n"
    "  second. It is never paged: on a terminal it refreshes the screen in place.\n"
    "  --nonzero leaves out the rows whose counters are all zero.\n";

std::optional<double> seconds_in(const std::string &text, double low, double high) {
    char *end = nullptr;
    const double d = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(d >= low && d <= high)) return std::nullopt;
    return d;
}

bool parse_watch_arguments(const std::vector<std::string> &words, WatchOptions &o, std::string &error) {
    std::size_t i = 0;
    for (; i < words.size(); ++i) {
        const std::string &w = words[i];
        auto value = [&](std::string &into) {
            if (i + 1 >= words.size()) {
                error = "watch: " + w + " needs a value";
                return false;
            }
            into = words[++i];
            return true;
        };
        if (w == "--") {
            ++i;
            break;
        }
        const Option *option = find_option(Scope::watch, w);
        if (option == nullptr && !w.empty() && w[0] == '-') {
            error = "watch: unknown option " + w + " (expected --interval S, --count N, --nonzero, -c COMMAND)";
            return false;
        }
        if (option == nullptr) break;  // the command's first word
        std::string v;
        if (option->value != Value::none && !value(v)) return false;
        const std::string_view id = option->long_name;
        if (id == "--interval") {
            const std::optional<double> d = seconds_in(v, 0.1, 86400);
            if (!d) {
                error = "watch: interval \"" + v + "\" is not a number of seconds from 0.1 to 86400";
                return false;
            }
            o.interval = *d;
        } else if (id == "--count") {
            char *end = nullptr;
            const long n = std::strtol(v.c_str(), &end, 10);
            if (v.empty() || *end != '\0' || n < 1 || n > 1000000000) {
                error = "watch: count \"" + v + "\" is not a number of samples from 1 to 1000000000";
                return false;
            }
            o.count = n;
        } else if (id == "--nonzero") {
            o.nonzero = true;
        } else if (id == "--command") {
            o.command = v;
            if (i + 1 < words.size()) {
                error = "watch: nothing may follow " + w + " COMMAND, got \"" + words[i + 1] + "\"";
                return false;
            }
            ++i;
            break;
        }
    }
    for (; i < words.size(); ++i) o.command += (o.command.empty() ? "" : " ") + words[i];
    if (o.command.empty()) {
        error = "watch: which command? (watch [--interval S] [--count N] [--nonzero] COMMAND)";
        return false;
    }
    const std::vector<std::string> inner = split_words(o.command);
    if (!inner.empty() && inner[0] == "watch") {
        error = "watch: a watch cannot watch a watch";
        return false;
    }
    return true;
}

}  // namespace qdsh::cli
