// SPDX-License-Identifier: MIT
// qdsh: a command shell for the queuing daemon's command handlers, running
// against the simulated switch.
#include <unistd.h>

#include <cstdio>
#include <string>

#include "cli/options.hpp"
#include "exec/library.hpp"
#include "operator/serve.hpp"
#include "presenter.hpp"
#include "prompt.hpp"
#include "qdsim/sim.h"
#include "render/metrics.hpp"
#include "render/schema.hpp"
#include "term/output_line.hpp"
#include "term/pager.hpp"
#include "term/signals.hpp"

using namespace qdsh;

namespace {

constexpr int kExitFailed = 1;  // a command failed
constexpr int kExitUsage = 2;   // bad options, scenario or library

}  // namespace

int main(int argc, char **argv) {
    track_output_line();
    cli::Arguments options;
    std::string error;
    if (!cli::parse_arguments(argc, argv, options, error)) {
        report_error(error + " (qdsh --help explains the options)");
        return kExitUsage;
    }
    if (options.help) {
        std::fputs(cli::usage().c_str(), stdout);
        return 0;
    }
    if (options.version) {
        std::fputs("qdsh " QDSH_VERSION "\n", stdout);
        return 0;
    }

    Library library;
    const std::string path = find_library(options.lib);
    if (path.empty()) {
        report_error("no handler library found: give one with --lib PATH or QDSH_LIBQDCLI");
        return kExitUsage;
    }
    if (!library.open(path, error)) {
        report_error("cannot load the handler library " + path + ": " + error);
        return kExitUsage;
    }

    if (options.metric_names || !options.schema.empty()) {
        // Both are written from the loaded library's attribute catalogue.
        using Catalogue = const qdcli_attr_info *(*)(std::size_t *);
        const auto catalogue = reinterpret_cast<Catalogue>(library.symbol("qdcli_attr_catalogue"));
        if (catalogue == nullptr) {
            report_error("the handler library " + path + " has no attribute catalogue (qdcli_attr_catalogue)");
            return kExitUsage;
        }
        std::size_t count = 0;
        const qdcli_attr_info *entries = catalogue(&count);
        const auto states = reinterpret_cast<StatesLookup>(library.symbol("qdcli_attr_states"));
        const std::string text = options.metric_names      ? metric_names_table(entries, count)
                                 : options.schema == "json" ? json_schema(entries, count, states)
                                                            : xml_schema(entries, count, states);
        std::fputs(text.c_str(), stdout);
        return 0;
    }

    if (options.scenario.empty()) {
        qdsim::load_default_scenario();
    } else {
        qdsim::ScenarioError scenario_error;
        if (!qdsim::load_scenario_file(options.scenario, scenario_error)) {
            report_error(scenario_error.message());
            qdsim::shutdown();
            return kExitUsage;
        }
    }
    // qdsh renders structured output itself, from the printer's flushes.
    const Format format = options.output == "json" ? Format::json : options.output == "xml" ? Format::xml : Format::text;
    const bool pretty = options.pretty < 0 ? isatty(STDOUT_FILENO) != 0 : options.pretty == 1;
    const auto lookup = reinterpret_cast<AttributeLookup>(library.symbol("qdcli_attr_find"));
    const bool from_terminal = options.commands.empty() && isatty(STDIN_FILENO);

    Executor executor(library);
    // Command lines that handlers run through vsh_system2 take the same path;
    // a line qdsh does not know goes to the platform's own commands.
    qdsim::set_command_runner([&executor](const std::string &line) { return executor.run_nested(line); });
    Presenter::OperatorSettings ops;
    ops.names = reinterpret_cast<NameLookup>(library.symbol("qdcli_attr_find_name"));
    if (options.output == "openmetrics") ops.metrics = Exposition::openmetrics;
    if (options.output == "prometheus") ops.metrics = Exposition::prometheus;
    ops.nonzero = options.nonzero;
    ops.simulated_clock = options.simulated_clock;
    ops.terminal = isatty(STDOUT_FILENO) != 0;
    Presenter presenter(executor, lookup, format, pretty, !from_terminal, ops);

    const Pager pager(options.pager);
    install_signal_handlers(from_terminal);
    bool ok = true;
    if (options.subcommand == "serve") {
        ServeOptions serve;
        serve.nonzero = options.nonzero;
        int status = kExitUsage;
        if (!parse_serve_arguments(options.sub_args, serve, error))
            report_error(error + " (qdsh --help explains the options)");
        else
            status = run_serve(executor, lookup, ops.names, serve);
        qdsim::set_command_runner(nullptr);
        qdsim::shutdown();
        if (termination_signal() != 0) end_by_signal();
        return status;
    }
    if (options.subcommand == "watch") {
        ok = presenter.watch(options.sub_args, format);
    } else if (!options.commands.empty()) {
        for (const std::string &command : options.commands) {
            ok = run_line(presenter, command, pager) && ok;
            if (executor.exit_requested() || termination_signal() != 0) break;
        }
    } else if (from_terminal) {
        run_prompt(executor, presenter, pager);
    } else {
        ok = run_script(executor, presenter, pager);
    }
    presenter.finish();
    end_output_line();
    qdsim::set_command_runner(nullptr);
    qdsim::shutdown();
    if (termination_signal() != 0) end_by_signal();
    return ok ? 0 : kExitFailed;
}
