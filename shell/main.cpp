// qdsh: a command shell for the queuing daemon's command handlers, running
// against the simulated switch.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include <editline/readline.h>

#include "library.hpp"
#include "output_line.hpp"
#include "qdsim/sim.h"
#include "shell.hpp"
#include "signals.hpp"

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

char **complete(const char *text, int start, int end) {
    rl_attempted_completion_over = 1;
    const std::string line(rl_line_buffer, static_cast<std::size_t>(end));
    g_matches = g_shell->complete(line, static_cast<std::size_t>(start));
    (void)text;
    if (g_matches.empty()) return nullptr;
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

// Runs one command line between the marks of a command, so that a Ctrl-C
// while it runs cuts its output and says so.
bool run_command(qdsh::Shell &shell, std::string_view line) {
    qdsh::begin_command();
    const bool ok = shell.run(line);
    qdsh::end_command();
    if (qdsh::take_interrupt()) {
        qdsh::report_error("interrupted: the rest of the output was dropped");
        return false;
    }
    return ok;
}

std::string history_file() {
    const char *home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? std::string(home) + "/.qdsh_history" : std::string{};
}

bool interactive(qdsh::Shell &shell) {
    g_shell = &shell;
    rl_readline_name = "qdsh";
    // qdsh handles its signals itself (Ctrl-C cancels the line).
    rl_catch_signals = 0;
    rl_outstream = qdsh::untracked_output();
    rl_initialize();
    rl_add_defun("qdsh-help", help_key, '?');
    rl_attempted_completion_function = complete;
    static char breaks[] = " \t,";
    rl_completer_word_break_characters = breaks;
    const std::string hist = history_file();
    if (!hist.empty()) read_history(hist.c_str());
    stifle_history(1000);
    for (;;) {
        qdsh::take_interrupt();
        char *raw = readline("qdsh# ");
        if (qdsh::termination_signal() != 0) {
            std::free(raw);
            break;
        }
        if (raw == nullptr) {
            // Ctrl-C at the prompt cancels the line; the end of input ends qdsh.
            if (qdsh::take_interrupt()) {
                std::fputc('\n', stdout);
                std::fflush(stdout);
                continue;
            }
            break;
        }
        const std::string line(raw);
        std::free(raw);
        if (line.find_first_not_of(" \t") != std::string::npos) add_history(line.c_str());
        run_command(shell, line);
        if (shell.exit_requested() || qdsh::termination_signal() != 0) break;
    }
    if (!hist.empty()) write_history(hist.c_str());
    return true;
}

bool script(qdsh::Shell &shell) {
    bool ok = true;
    std::string line;
    while (std::getline(std::cin, line)) {
        ok = run_command(shell, line) && ok;
        if (shell.exit_requested() || qdsh::termination_signal() != 0) break;
    }
    return ok;
}

}  // namespace

int main(int argc, char **argv) {
    qdsh::track_output_line();
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

    const bool at_terminal = options.commands.empty() && isatty(STDIN_FILENO);
    qdsh::install_signal_handlers(at_terminal);
    bool ok = true;
    if (!options.commands.empty()) {
        for (const std::string &command : options.commands) {
            ok = run_command(shell, command) && ok;
            if (shell.exit_requested() || qdsh::termination_signal() != 0) break;
        }
    } else if (at_terminal) {
        interactive(shell);
    } else {
        ok = script(shell);
    }
    qdsh::end_output_line();
    qdsim::set_command_runner(nullptr);
    qdsim::shutdown();
    if (qdsh::termination_signal() != 0) qdsh::end_by_signal();
    return ok ? 0 : kExitFailed;
}
