// SPDX-License-Identifier: MIT
// qdsh: a command shell for the queuing daemon's command handlers, running
// against the simulated switch.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include <editline/readline.h>

#include "library.hpp"
#include "natural_sort.hpp"
#include "pager.hpp"
#include "qdsim/sim.h"
#include "shell.hpp"

namespace {

constexpr int kExitFailed = 1;  // a command failed
constexpr int kExitUsage = 2;   // bad options, scenario or library

const char kUsage[] =
    "Usage: qdsh [OPTIONS]\n"
    "\n"
    "Runs queuing commands against a simulated switch. With no -c, reads\n"
    "commands from the terminal (line editing, history, tab completion) or,\n"
    "when standard input is not a terminal, one command per line.\n"
    "\n"
    "Options:\n"
    "  -c, --command COMMAND   run COMMAND; repeat to run several in order\n"
    "  --scenario FILE         load the switch from FILE instead of the default chassis\n"
    "  --output text|json|xml  how typed report output is rendered (default text)\n"
    "  --lib PATH              the handler library (default: $QDSH_LIBQDCLI, then\n"
    "                          ../lib/libqdcli.so next to qdsh, then the build tree's)\n"
    "  --no-pager              never page long output (a terminal's output goes\n"
    "                          through $PAGER, default less -FRX, otherwise)\n"
    "  -V, --version           print the version of qdsh and exit\n"
    "  -h, --help              show this text\n"
    "\n"
    "Exit status: 0 when every command succeeded, 1 when one failed, 2 for bad\n"
    "options, an unreadable scenario or a library that does not load.\n"
    "Type \"help\" in qdsh for the list of commands.\n";

struct Options {
    std::vector<std::string> commands;
    std::string scenario;
    std::string output;
    std::string lib;
    bool help = false;
    bool version = false;
    bool pager = true;
};

bool parse_options(int argc, char **argv, Options &o, std::string &error) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](std::string &into) {
            if (i + 1 >= argc) {
                error = "option " + arg + " needs a value";
                return false;
            }
            into = argv[++i];
            return true;
        };
        auto inline_value = [&](std::string_view name, std::string &into) {
            if (arg.size() > name.size() && arg.starts_with(name) && arg[name.size()] == '=') {
                into = arg.substr(name.size() + 1);
                return true;
            }
            return false;
        };
        if (arg == "-c" || arg == "--command") {
            std::string c;
            if (!value(c)) return false;
            o.commands.push_back(c);
        } else if (arg == "--scenario") {
            if (!value(o.scenario)) return false;
        } else if (arg == "--output") {
            if (!value(o.output)) return false;
        } else if (arg == "--lib") {
            if (!value(o.lib)) return false;
        } else if (inline_value("--scenario", o.scenario) || inline_value("--output", o.output) ||
                   inline_value("--lib", o.lib)) {
        } else if (std::string c; inline_value("--command", c)) {
            o.commands.push_back(c);
        } else if (arg == "-h" || arg == "--help") {
            o.help = true;
        } else if (arg == "-V" || arg == "--version") {
            o.version = true;
        } else if (arg == "--no-pager") {
            o.pager = false;
        } else if (!arg.empty() && arg[0] == '-') {
            error = "unknown option " + arg;
            return false;
        } else {
            error = "unexpected argument \"" + arg + "\" (commands go after -c)";
            return false;
        }
    }
    if (!o.output.empty() && o.output != "text" && o.output != "json" && o.output != "xml") {
        error = "unknown output format \"" + o.output + "\": expected text, json or xml";
        return false;
    }
    return true;
}

// Tab completion through the line editor.
qdsh::Shell *g_shell = nullptr;
std::vector<std::string> g_matches;

char *next_match(const char *, int state) {
    static std::size_t next = 0;
    if (state == 0) next = 0;
    if (next >= g_matches.size()) return nullptr;
    return strdup(g_matches[next++].c_str());
}

// Prints completion choices in columns, in the order given.
void show_choices(std::vector<std::string> choices) {
    qdsh::natural_sort(choices);
    std::size_t width = 0;
    for (const std::string &c : choices) width = std::max(width, c.size());
    width += 2;
    const std::size_t columns = std::max<std::size_t>(1, 80 / width);
    const std::size_t rows = (choices.size() + columns - 1) / columns;
    std::string text = "\n";
    for (std::size_t r = 0; r < rows; ++r) {
        for (std::size_t c = 0; c < columns; ++c) {
            const std::size_t i = c * rows + r;
            if (i >= choices.size()) break;
            text += choices[i];
            if (c + 1 < columns && i + rows < choices.size()) text.append(width - choices[i].size(), ' ');
        }
        text += '\n';
    }
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
    rl_on_new_line();
    rl_forced_update_display();
}

char **complete(const char *text, int start, int end) {
    rl_attempted_completion_over = 1;
    const std::string line(rl_line_buffer, static_cast<std::size_t>(end));
    g_matches = g_shell->complete(line, static_cast<std::size_t>(start));
    (void)text;
    if (g_matches.empty()) return nullptr;
    if (g_matches.size() > 1) {
        // The line editor would list the choices sorted as text (1/1, 1/10,
        // 1/11...): list them here in natural order and complete only what
        // they share.
        show_choices(g_matches);
        std::string common = g_matches[0];
        for (const std::string &m : g_matches) {
            std::size_t n = 0;
            while (n < common.size() && n < m.size() && common[n] == m[n]) ++n;
            common.resize(n);
        }
        g_matches = {common.size() >= std::strlen(text) ? common : std::string(text)};
        rl_completion_append_character = '\0';
    } else {
        rl_completion_append_character = ' ';
    }
    return rl_completion_matches(text, next_match);
}

// "?" lists what may follow the words before the cursor, at once.
int help_key(int, int) {
    std::fputc('\n', stdout);
    g_shell->show_help(std::string_view(rl_line_buffer, static_cast<std::size_t>(rl_point)));
    rl_on_new_line();
    rl_forced_update_display();
    return 0;
}

std::string history_file() {
    const char *home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? std::string(home) + "/.qdsh_history" : std::string{};
}

bool interactive(qdsh::Shell &shell, const qdsh::Pager &pager) {
    g_shell = &shell;
    rl_readline_name = "qdsh";
    rl_initialize();
    rl_add_defun("qdsh-help", help_key, '?');
    rl_attempted_completion_function = complete;
    static char breaks[] = " \t,";
    rl_completer_word_break_characters = breaks;
    const std::string hist = history_file();
    if (!hist.empty()) read_history(hist.c_str());
    stifle_history(1000);
    while (char *raw = readline("qdsh# ")) {
        const std::string line(raw);
        std::free(raw);
        if (line.find_first_not_of(" \t") != std::string::npos) add_history(line.c_str());
        const qdsh::Pager::Page page(pager);
        shell.run(line);
        if (shell.exit_requested()) break;
    }
    if (!hist.empty()) write_history(hist.c_str());
    return true;
}

bool script(qdsh::Shell &shell) {
    bool ok = true;
    std::string line;
    while (std::getline(std::cin, line)) {
        ok = shell.run(line) && ok;
        if (shell.exit_requested()) break;
    }
    return ok;
}

}  // namespace

int main(int argc, char **argv) {
    Options options;
    std::string error;
    if (!parse_options(argc, argv, options, error)) {
        qdsh::report_error(error + " (qdsh --help explains the options)");
        return kExitUsage;
    }
    if (options.help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (options.version) {
        std::fputs("qdsh " QDSH_VERSION "\n", stdout);
        return 0;
    }

    qdsh::Library library;
    const std::string path = qdsh::find_library(options.lib);
    if (path.empty()) {
        qdsh::report_error("no handler library found: give one with --lib PATH or QDSH_LIBQDCLI");
        return kExitUsage;
    }
    if (!library.open(path, error)) {
        qdsh::report_error("cannot load the handler library " + path + ": " + error);
        return kExitUsage;
    }

    if (options.scenario.empty()) {
        qdsim::load_default_scenario();
    } else {
        qdsim::ScenarioError scenario_error;
        if (!qdsim::load_scenario_file(options.scenario, scenario_error)) {
            qdsh::report_error(scenario_error.message());
            qdsim::shutdown();
            return kExitUsage;
        }
    }
    if (options.output == "json")
        qdsim::set_output_mode(qdsim::OutputMode::json);
    else if (options.output == "xml")
        qdsim::set_output_mode(qdsim::OutputMode::xml);
    else
        qdsim::set_output_mode(qdsim::OutputMode::text);

    qdsh::Shell shell(library);
    // Command lines that handlers run through vsh_system2 take the same path;
    // a line qdsh does not know goes to the platform's own commands.
    qdsim::set_command_runner([&shell](const std::string &line) {
        if (!qdsh::match_line(line).ok) return qdsim::run_platform_command(line);
        return shell.run(line) ? 0 : 1;
    });

    const qdsh::Pager pager(options.pager);
    bool ok = true;
    if (!options.commands.empty()) {
        for (const std::string &command : options.commands) {
            const qdsh::Pager::Page page(pager);
            ok = shell.run(command) && ok;
            if (shell.exit_requested()) break;
        }
    } else if (isatty(STDIN_FILENO)) {
        interactive(shell, pager);
    } else {
        ok = script(shell);
    }
    std::fflush(stdout);
    qdsim::set_command_runner(nullptr);
    qdsim::shutdown();
    return ok ? 0 : kExitFailed;
}
