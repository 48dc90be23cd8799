// SPDX-License-Identifier: MIT
// qdsh: a command shell for the queuing daemon's command handlers, running
// against the simulated switch.
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <editline/readline.h>

#include "cli.hpp"
#include "document.hpp"
#include "filters.hpp"
#include "library.hpp"
#include "metrics.hpp"
#include "natural_sort.hpp"
#include "output_line.hpp"
#include "pager.hpp"
#include "schema.hpp"
#include "serve.hpp"
#include "watch.hpp"
#include "qdsim/sim.h"
#include "shell.hpp"
#include "signals.hpp"

namespace {

constexpr int kExitFailed = 1;  // a command failed
constexpr int kExitUsage = 2;   // bad options, scenario or library

struct Options {
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

// Reads the options with the table of cli.hpp: names, whether a value
// follows (as the next word, or after "=" for a long name) and its choices.
bool parse_options(int argc, char **argv, Options &o, std::string &error) {
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
        const qdsh::cli::Option *option = qdsh::cli::find_option(qdsh::cli::Scope::main, name);
        if (option == nullptr) {
            error = !arg.empty() && arg[0] == '-' ? "unknown option " + name
                                                 : "unexpected argument \"" + arg + "\" (commands go after -c)";
            return false;
        }
        if (option->value == qdsh::cli::Value::none) {
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
        if (option->value == qdsh::cli::Value::choice && !qdsh::cli::is_choice(*option, value)) {
            error = "unknown value \"" + value + "\" for " + name + ": expected " + qdsh::cli::choice_list(*option);
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

// Runs command lines and writes what they print: the text as it stands, or
// one document per command. Several JSON documents follow one another (one
// per line when compact: JSON Lines); with --output xml and commands from
// -c or a script, the documents are the children of one <qdsh> element.
class Runner {
public:
    Runner(qdsh::Shell &shell, qdsh::AttributeLookup lookup, qdsh::Format format, bool pretty, bool wrap_xml)
        : shell_(shell), lookup_(lookup), format_(format), pretty_(pretty), wrap_xml_(wrap_xml) {}

    bool run(const std::string &input) {
        std::string line = input;
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#') return true;
        // Filters and "| json" / "| xml" at the end of the line.
        const qdsh::Pipeline pipe = qdsh::split_pipeline(line);
        qdsh::Format format = format_;
        bool metrics = ops_.metrics.has_value();
        for (const qdsh::PipeSegment &segment : pipe.segments) {
            if (segment.kind == qdsh::PipeSegment::Kind::json) format = qdsh::Format::json;
            if (segment.kind == qdsh::PipeSegment::Kind::xml) format = qdsh::Format::xml;
            if (format != format_) metrics = false;
        }
        if (!pipe.ok()) return refuse(line, format, pipe.error);
        if (pipe.help) {
            std::fputs(qdsh::filter_help().c_str(), stdout);
            std::fflush(stdout);
            return true;
        }
        if (!pipe.segments.empty()) line = pipe.command;
        const bool structured = format != qdsh::Format::text || metrics;
        // A filter selects lines of text: a document or an exposition has none to select.
        if (structured && pipe.has_text_filters())
            return refuse(line, format,
                          "| include, | exclude, | begin and | count select lines of text: they do not combine with "
                          "json, xml or metrics output");
        if (const std::vector<std::string> words = qdsh::split_words(line); !words.empty() && words[0] == "watch") {
            if (pipe.has_text_filters()) {
                qdsh::report_error("watch: its output cannot go through filters; watch --nonzero leaves out the rows whose counters are all zero");
                return false;
            }
            // "watch ?", "watch -n 5 show ?": the options, or what may follow in the command.
            if (const std::size_t last = line.find_last_not_of(" \t"); line[last] == '?')
                return shell_.show_help(std::string_view(line).substr(0, last));
            return watch(std::vector<std::string>(words.begin() + 1, words.end()), format);
        }
        if (structured && lookup_ == nullptr) {
            qdsh::report_error("the handler library has no attribute catalogue (qdcli_attr_find): no structured output");
            return false;
        }
        if (!structured) {
            // Text goes out as the handlers print it; through filters, once
            // the command has ended.
            qdsh::RunOptions options;
            options.document = false;
            options.capture_text = pipe.has_text_filters();
            const qdsh::CommandOutcome outcome = qdsh::run_command(shell_, line, lookup_, options);
            if (pipe.has_text_filters()) {
                const std::string out = qdsh::apply_filters(outcome.text, pipe.segments, qdsh::stop_requested);
                std::fwrite(out.data(), 1, out.size(), stdout);
            }
            // The library's messages carry no newline of their own (a switch's
            // prompt follows them): the next output starts on a line of its own.
            qdsh::end_output_line();
            return outcome.ok;
        }
        if (!metrics) return stream_document(line, format);
        const qdsh::CommandOutcome outcome = qdsh::run_command(shell_, line, lookup_);
        if (shell_.exit_requested() && outcome.ok) return true;  // "exit" has no document
        qdsh::Document document = outcome.document;
        if (ops_.nonzero) qdsh::drop_zero_rows(document, ops_.names);
        {
            std::vector<qdsh::Sample> samples = qdsh::collect_samples(document, ops_.names);
            for (const std::string &series : qdsh::repeated_series(samples))
                qdsh::report_error("metrics: the series " + series + " repeats within \"" + line +
                                   "\" (only its first value is kept)");
            // From -c or a script, the metrics of every command make one
            // exposition, written when the run ends; at the prompt each
            // command gets its own.
            if (wrap_xml_) {
                pending_samples_.insert(pending_samples_.end(), samples.begin(), samples.end());
                metrics_pending_ = true;
            } else {
                write(qdsh::write_exposition(samples, {}, *ops_.metrics));
            }
        }
        return outcome.ok;
    }

    // Runs a command with its document written as it is built: each
    // interface as soon as the handlers are done with it.
    bool stream_document(const std::string &line, qdsh::Format format) {
        bool started = false;
        qdsh::DocumentStream stream(format, pretty_, [&](const std::string &text) {
            if (!started) write_prologue(format);
            started = true;
            std::fwrite(text.data(), 1, text.size(), qdsh::command_output());
        });
        stream.begin(line);
        qdsh::RunOptions options;
        options.interface_done = [&](qdsh::Document &object) {
            if (ops_.nonzero) qdsh::drop_zero_rows(object, ops_.names);
            stream.interface(object);
        };
        qdsh::CommandOutcome outcome = qdsh::run_command(shell_, line, lookup_, options);
        if (shell_.exit_requested() && outcome.ok) return true;  // "exit" has no document
        if (ops_.nonzero) qdsh::drop_zero_rows(outcome.document, ops_.names);
        stream.finish(outcome.document);
        qdsh::end_output_line();
        return outcome.ok;
    }

    // What comes before a document: the XML declaration, and the <qdsh>
    // root that holds the documents of a -c or script run.
    void write_prologue(qdsh::Format format) {
        if (format != qdsh::Format::xml) return;
        // Written while the command's own output is captured, maybe.
        std::FILE *out = qdsh::command_output();
        if (wrap_xml_ && format_ == qdsh::Format::xml) {
            if (!xml_open_) std::fputs("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<qdsh>\n", out);
            xml_open_ = true;
        } else {
            std::fputs("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", out);
        }
    }

    // What the operator's options add: metrics output, --nonzero, the clock
    // of watch.
    struct OperatorSettings {
        qdsh::NameLookup names = nullptr;
        std::optional<qdsh::Exposition> metrics;
        bool nonzero = false;
        bool simulated_clock = false;
        bool terminal = false;  // standard output is a terminal
    };
    void set_operator(const OperatorSettings &ops) { ops_ = ops; }

    // "watch [--interval S] [--count N] [--nonzero] COMMAND".
    bool watch(const std::vector<std::string> &words, qdsh::Format format) {
        qdsh::WatchOptions options;
        options.nonzero = ops_.nonzero;
        std::string error;
        if (!qdsh::parse_watch_arguments(words, options, error)) {
            qdsh::report_error(error);
            return false;
        }
        qdsh::WatchOutput output{format, pretty_, ops_.terminal && format == qdsh::Format::text};
        // Inside the <qdsh> element of a -c or script run, the samples are
        // more of its children.
        if (format == qdsh::Format::xml && wrap_xml_ && format_ == qdsh::Format::xml) {
            if (!xml_open_) std::fputs("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<qdsh>\n", stdout);
            xml_open_ = true;
            output.xml_wrap = false;
        }
        const std::unique_ptr<qdsh::WatchClock> clock = ops_.simulated_clock ? qdsh::simulated_clock() : qdsh::real_clock();
        return qdsh::run_watch(shell_, lookup_, ops_.names, options, output, *clock);
    }

    // A line refused before it ran: the error, and in structured output a
    // failed document that says why.
    bool refuse(const std::string &line, qdsh::Format format, const std::string &message) {
        qdsh::report_error(message);
        if (format == qdsh::Format::text) return false;
        qdsh::DocumentBuilder builder(line, lookup_);
        builder.failure({"refused", std::nullopt, message, false});
        write_document(builder.finish("", false), format);
        return false;
    }

    void write(const std::string &out) {
        std::fwrite(out.data(), 1, out.size(), stdout);
        qdsh::end_output_line();
    }

    void write_document(const qdsh::Document &document, qdsh::Format format) {
        write_prologue(format);
        std::string out = format == qdsh::Format::json ? qdsh::to_json(document, pretty_) : qdsh::to_xml(document, pretty_);
        if (format == qdsh::Format::xml && !pretty_) out += "\n";
        write(out);
    }

    // Closes the <qdsh> element; with no command run, it is empty.
    void finish() {
        if (metrics_pending_) {
            std::fputs(qdsh::write_exposition(pending_samples_, {}, *ops_.metrics).c_str(), stdout);
            std::fflush(stdout);
        }
        if (!wrap_xml_ || format_ != qdsh::Format::xml) return;
        std::fputs(xml_open_ ? "</qdsh>\n" : "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<qdsh/>\n", stdout);
        std::fflush(stdout);
    }

private:
    qdsh::Shell &shell_;
    qdsh::AttributeLookup lookup_;
    qdsh::Format format_;
    bool pretty_;
    bool wrap_xml_;
    bool xml_open_ = false;
    OperatorSettings ops_;
    std::vector<qdsh::Sample> pending_samples_;  // metrics of the commands so far
    bool metrics_pending_ = false;
};

// Tab completion through the line editor.
qdsh::Shell *g_shell = nullptr;
std::vector<std::string> g_matches;

char *next_match(const char *, int state) {
    static std::size_t next = 0;
    if (state == 0) next = 0;
    if (next >= g_matches.size()) return nullptr;
    return strdup(g_matches[next++].c_str());
}

// The terminal's size: rows and columns (24 x 80 when it does not say).
std::pair<std::size_t, std::size_t> terminal_size() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0)
        return {size.ws_row, size.ws_col};
    return {24, 80};
}

// Prints completion choices in columns across the terminal's width, in
// natural order. A list longer than the screen is shown only when asked for.
void show_choices(std::vector<std::string> choices) {
    qdsh::natural_sort(choices);
    std::size_t width = 0;
    for (const std::string &c : choices) width = std::max(width, c.size());
    width += 2;
    const auto [screen_rows, screen_columns] = terminal_size();
    const std::size_t columns = std::max<std::size_t>(1, (screen_columns + 1) / width);
    const std::size_t rows = (choices.size() + columns - 1) / columns;
    if (rows + 1 >= screen_rows) {
        std::fprintf(stdout, "\nDisplay all %zu possibilities? (y or n) ", choices.size());
        std::fflush(stdout);
        // The line editor keeps the terminal in raw mode: one key is one read.
        char key = 'n';
        if (read(STDIN_FILENO, &key, 1) != 1) key = 'n';
        if (key != 'y' && key != 'Y' && key != ' ') {
            std::fputc('\n', stdout);
            std::fflush(stdout);
            rl_on_new_line();
            rl_forced_update_display();
            return;
        }
    }
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

// "?" lists what may follow the words before the cursor, at once; inside a
// quoted or JSON value, or glued to a value, it is typed as it is.
int help_key(int, int key) {
    const std::string_view before(rl_line_buffer, static_cast<std::size_t>(rl_point));
    if (!g_shell->question_asks_help(before)) {
        const char text[2] = {static_cast<char>(key), '\0'};
        rl_insert_text(text);
        // The line is drawn again where it stands.
        std::fputs("\r\033[K", rl_outstream);
        std::fflush(rl_outstream);
        rl_forced_update_display();
        return 0;
    }
    std::fputc('\n', stdout);
    g_shell->show_help(before);
    rl_on_new_line();
    rl_forced_update_display();
    return 0;
}

// Watch owns the screen and refreshes it in place: it is never paged.
bool is_watch_line(const std::string &line) {
    const std::vector<std::string> words = qdsh::split_words(line);
    return !words.empty() && words[0] == "watch";
}

// Runs one command line between the marks of a command, so that a Ctrl-C
// while it runs cuts its output and says so.
bool run_line(Runner &runner, const std::string &line, const qdsh::Pager &pager) {
    std::optional<qdsh::Pager::Page> page;
    if (!is_watch_line(line)) page.emplace(pager);
    qdsh::begin_command();
    const bool ok = runner.run(line);
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

bool interactive(qdsh::Shell &shell, Runner &runner, const qdsh::Pager &pager) {
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
        run_line(runner, line, pager);
        if (shell.exit_requested() || qdsh::termination_signal() != 0) break;
    }
    if (!hist.empty()) write_history(hist.c_str());
    return true;
}

bool script(qdsh::Shell &shell, Runner &runner, const qdsh::Pager &pager) {
    bool ok = true;
    std::string line;
    while (std::getline(std::cin, line)) {
        ok = run_line(runner, line, pager) && ok;
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
        std::fputs(qdsh::cli::usage().c_str(), stdout);
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

    if (options.metric_names || !options.schema.empty()) {
        // Both are written from the loaded library's attribute catalogue.
        using Catalogue = const qdcli_attr_info *(*)(std::size_t *);
        const auto catalogue = reinterpret_cast<Catalogue>(library.symbol("qdcli_attr_catalogue"));
        if (catalogue == nullptr) {
            qdsh::report_error("the handler library " + path + " has no attribute catalogue (qdcli_attr_catalogue)");
            return kExitUsage;
        }
        std::size_t count = 0;
        const qdcli_attr_info *entries = catalogue(&count);
        const auto states = reinterpret_cast<qdsh::StatesLookup>(library.symbol("qdcli_attr_states"));
        const std::string text = options.metric_names      ? qdsh::metric_names_table(entries, count)
                                 : options.schema == "json" ? qdsh::json_schema(entries, count, states)
                                                            : qdsh::xml_schema(entries, count, states);
        std::fputs(text.c_str(), stdout);
        return 0;
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
    // qdsh renders structured output itself, from the printer's flushes.
    qdsim::set_output_mode(qdsim::OutputMode::text);
    const qdsh::Format format = options.output == "json"  ? qdsh::Format::json
                                : options.output == "xml" ? qdsh::Format::xml
                                                          : qdsh::Format::text;
    const bool pretty = options.pretty < 0 ? isatty(STDOUT_FILENO) != 0 : options.pretty == 1;
    const auto lookup = reinterpret_cast<qdsh::AttributeLookup>(library.symbol("qdcli_attr_find"));
    const bool from_terminal = options.commands.empty() && isatty(STDIN_FILENO);

    qdsh::Shell shell(library);
    Runner runner(shell, lookup, format, pretty, !from_terminal);
    // Command lines that handlers run through vsh_system2 take the same path;
    // a line qdsh does not know goes to the platform's own commands.
    qdsim::set_command_runner([&shell](const std::string &line) {
        if (!qdsh::match_line(line).ok) return qdsim::run_platform_command(line);
        return shell.run(line) ? 0 : 1;
    });
    Runner::OperatorSettings ops;
    ops.names = reinterpret_cast<qdsh::NameLookup>(library.symbol("qdcli_attr_find_name"));
    if (options.output == "openmetrics") ops.metrics = qdsh::Exposition::openmetrics;
    if (options.output == "prometheus") ops.metrics = qdsh::Exposition::prometheus;
    ops.nonzero = options.nonzero;
    ops.simulated_clock = options.simulated_clock;
    ops.terminal = isatty(STDOUT_FILENO) != 0;
    runner.set_operator(ops);

    const qdsh::Pager pager(options.pager);
    qdsh::install_signal_handlers(from_terminal);
    bool ok = true;
    if (options.subcommand == "serve") {
        qdsh::ServeOptions serve;
        serve.nonzero = options.nonzero;
        int status = kExitUsage;
        if (!qdsh::parse_serve_arguments(options.sub_args, serve, error))
            qdsh::report_error(error + " (qdsh --help explains the options)");
        else
            status = qdsh::run_serve(shell, lookup, ops.names, serve);
        qdsim::set_command_runner(nullptr);
        qdsim::shutdown();
        if (qdsh::termination_signal() != 0) qdsh::end_by_signal();
        return status;
    }
    if (options.subcommand == "watch") {
        ok = runner.watch(options.sub_args, format);
    } else if (!options.commands.empty()) {
        for (const std::string &command : options.commands) {
            ok = run_line(runner, command, pager) && ok;
            if (shell.exit_requested() || qdsh::termination_signal() != 0) break;
        }
    } else if (from_terminal) {
        interactive(shell, runner, pager);
    } else {
        ok = script(shell, runner, pager);
    }
    runner.finish();
    qdsh::end_output_line();
    qdsim::set_command_runner(nullptr);
    qdsim::shutdown();
    if (qdsh::termination_signal() != 0) qdsh::end_by_signal();
    return ok ? 0 : kExitFailed;
}
