// SPDX-License-Identifier: MIT
#include "exec/executor.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <optional>

#include "cli/natural_sort.hpp"
#include "cli/options.hpp"
#include "cli/pipeline.hpp"
#include "interface_spelling.hpp"
#include "qdcli/platform.h"
#include "qdcli/wire.h"
#include "qdsim/sim.h"

namespace qdsh {

namespace {

using PinfoHandler = std::int32_t (*)(cmd_paraminfo *);
using IfNameHandler = std::int32_t (*)(cmd_paraminfo *, std::uint32_t, const char *);
using StreamHandler = std::int32_t (*)(cmd_rsp *);
using PlainHandler = std::int32_t (*)();
using HelpCallback = char *(*)(void *, void *);
using RecordCallback = std::int32_t (*)(void *, void *, std::uint32_t *);

void out(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

// JSON text for a terminal: the dump escapes C0 controls already; DEL and
// the C1 controls (U+0080-U+009F, only ever inside strings) become \u
// escapes as well, so the text stays the same JSON.
std::string terminal_json(const std::string &dump) {
    std::string out;
    out.reserve(dump.size());
    for (std::size_t i = 0; i < dump.size(); ++i) {
        const auto b = static_cast<unsigned char>(dump[i]);
        if (b == 0x7f) {
            out += "\\u007f";
        } else if (b == 0xc2 && i + 1 < dump.size() && static_cast<unsigned char>(dump[i + 1]) <= 0x9f &&
                   static_cast<unsigned char>(dump[i + 1]) >= 0x80) {
            static constexpr char kHex[] = "0123456789abcdef";
            const auto c = static_cast<unsigned char>(dump[++i]);
            out += "\\u00";
            out += kHex[c >> 4];
            out += kHex[c & 0xf];
        } else {
            out += static_cast<char>(b);
        }
    }
    return out;
}

std::string canonical_name(std::uint32_t if_index) {
    for (const qdsim::InterfaceInfo &i : qdsim::interfaces())
        if (i.if_index == if_index) return i.name;
    return {};
}

// Everything one handler call points into: the parameter-info record and
// its argument records and values, alive until the handler returns.
struct Invocation {
    cmd_paraminfo pinfo{};
    std::array<cmd_param_arg, 256> records{};
    std::deque<std::uint32_t> words;
    std::deque<std::uint8_t> bytes;
    std::vector<qdsim::Attribute> attributes;
    std::uint32_t if_index = 0;  // the interface handed to a three-argument handler
    std::string if_name;         // its canonical name, whole

    bool add(std::uint32_t param_type, std::uint32_t param_id, void *value) {
        if (pinfo.argc == 255) return false;
        const int i = pinfo.argc + 1;
        records[i].param_type = param_type;
        records[i].param_id = param_id;
        records[i].value = value;
        pinfo.args[i] = &records[i];
        pinfo.argc = static_cast<std::uint8_t>(i);
        return true;
    }
    bool add_byte(std::uint32_t param_type, std::uint8_t v) {
        bytes.push_back(v);
        return add(param_type, 0, &bytes.back());
    }
    bool add_word(std::uint32_t param_type, std::uint32_t param_id, std::uint32_t v) {
        words.push_back(v);
        return add(param_type, param_id, &words.back());
    }
};

std::string status_text(std::int32_t status) {
    std::string s = std::to_string(status);
    if (status > 255 || status < -255) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%08x", static_cast<unsigned>(status));
        s += std::string(" (") + hex + ")";
    }
    return s;
}

const char *type_name(std::uint8_t type) {
    switch (type) {
    case IF_TYPE_ETH: return "ethernet";
    case IF_TYPE_ETH_ALT: return "front-panel";
    case IF_TYPE_HIF: return "host-interface";
    default: return "other";
    }
}

// Interface names that complete `partial`, spelled as a person may spell
// an interface ("eth1/" completes to every "Ethernet1/...").
std::vector<std::string> interface_completions(const std::string &partial) {
    const std::string wanted = qdsim::expand_interface_name(partial);
    std::vector<std::string> names;
    for (const qdsim::InterfaceInfo &i : qdsim::interfaces())
        if (qdsim::fold_interface_name(i.name).starts_with(wanted)) names.push_back(i.name);
    natural_sort(names);
    return names;
}

}  // namespace

namespace {
std::function<void(const std::string &)> g_error_listener;
}  // namespace

void set_error_listener(std::function<void(const std::string &)> listener) { g_error_listener = std::move(listener); }

void report_error(const std::string &message) {
    if (g_error_listener) g_error_listener(message);
    write_error(message);
}

void write_error(const std::string &message) {
    std::fflush(stdout);
    // Written whole, whatever it holds: a NUL from piped input does not cut
    // it short, and no byte of a line echoed back, a scenario or a reply can
    // drive the terminal (controls, C1 and bytes that are not UTF-8 are
    // shown as \xNN). A % is text.
    std::string text = "qdsh: " + qdsim::terminal_safe(message);
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

bool Executor::run(std::string_view line, Executed &executed) {
    // A command run by a handler (vsh_system2) runs inside another: each
    // tells its own caller.
    Executed *const outer = executed_;
    executed_ = &executed;
    executed.ok = run_line(line);
    executed_ = outer;
    return executed.ok;
}

bool Executor::run_line(std::string_view line) {
    std::size_t first = 0;
    while (first < line.size() && std::isspace(static_cast<unsigned char>(line[first]))) ++first;
    if (first == line.size() || line[first] == '#') return true;  // blank line or comment

    std::string_view trimmed = line;
    while (!trimmed.empty() && std::isspace(static_cast<unsigned char>(trimmed.back()))) trimmed.remove_suffix(1);
    // "?" asks for help as a word of its own ("show ?"), or glued to the
    // start of a command word ("show wrr?" lists the words so begun). Glued
    // to anything else ("sim set /platform/type 3?") it is part of that
    // value, which is then refused or taken as typed, never silently turned
    // into help.
    if (trimmed.back() == '?') {
        const std::string_view before = trimmed.substr(0, trimmed.size() - 1);
        if (question_asks_help(before)) return show_help(before);
    }

    const MatchResult m = match_line(line);
    if (!m.ok) {
        report_error(m.error);
        return false;
    }
    return execute(m.match);
}

int Executor::run_nested(std::string_view line) {
    const MatchResult m = match_line(line);
    if (!m.ok) return qdsim::run_platform_command(std::string(line));
    Executed executed;
    Executed *const outer = executed_;
    executed_ = &executed;
    executed.ok = execute(m.match);
    executed_ = outer;
    return executed.ok ? 0 : 1;
}

bool Executor::execute(const Match &match) {
    executed_->command = match.command;
    if (!resolve(match)) return false;
    return match.command->call == Call::builtin ? run_builtin(match) : call_handler(match);
}

// Resolves the interfaces the line names, before anything is sent.
bool Executor::resolve(const Match &match) {
    const auto find = [](const std::string &spelling) { return qdsim::find_interface(spelling); };
    for (const Match::Param &p : match.params) {
        const ParamKind kind = p.element->kind;
        const bool one = kind == ParamKind::interface || (kind == ParamKind::if_or_number && p.numbers.empty());
        if (p.element->is_word || (!one && kind != ParamKind::interface_list)) continue;
        InterfaceListResult r = one ? resolve_interface(p.values.at(0), find) : resolve_interface_list(p.values, find);
        if (!r.ok()) {
            report_error(r.error);
            return false;
        }
        for (ResolvedInterface &i : r.interfaces) {
            i.name = canonical_name(i.if_index);
            executed_->interfaces.push_back(std::move(i));
        }
    }
    return true;
}

namespace {

std::string help_row(std::string_view name, std::string_view help) {
    char row[256];
    std::snprintf(row, sizeof row, "  %-24.*s %.*s\n", static_cast<int>(name.size()), name.data(), static_cast<int>(help.size()),
                  help.data());
    return row;
}

constexpr std::string_view kWatchHelp = "Re-run a command: deltas and rates of its counters";
constexpr std::string_view kBarHelp = "Filter the output, or show it as JSON or XML";

}  // namespace

bool Executor::question_asks_help(std::string_view before) const {
    if (std::count(before.begin(), before.end(), '"') % 2 == 1) return false;  // inside quotes
    const LineContext context = line_context(before);
    if (context.part == LineContext::Part::command) {
        // A JSON value or file name takes the rest of the line: once begun,
        // a "?" is part of it.
        const MatchResult m = match_line(before.substr(std::min(context.command_begin, before.size())));
        if (m.ok && !m.match.params.empty()) {
            const Match::Param &last = m.match.params.back();
            if ((last.element->kind == ParamKind::json_text || last.element->kind == ParamKind::file) &&
                !last.values.empty() && !last.values[0].empty())
                return false;
        }
    }
    if (before.empty() || std::isspace(static_cast<unsigned char>(before.back()))) return true;
    for (const Candidate &c : candidates(before))
        if (c.is_word && c.text != "<cr>") return true;
    return false;
}

bool Executor::show_help(std::string_view before) const {
    // Watch's options and the filters after a "|" are qdsh's own, ahead of
    // the command grammar.
    const LineContext context = line_context(before);
    switch (context.part) {
    case LineContext::Part::filter_name: out(filter_help()); return true;
    case LineContext::Part::filter_pattern:
        out(help_row("REGEX", "A regular expression (in double quotes to hold \"|\" or blanks)"));
        return true;
    case LineContext::Part::filter_end: out(help_row("<cr>", "Run the command") + help_row("|", kBarHelp)); return true;
    case LineContext::Part::watch_option:
    case LineContext::Part::watch_value: out(cli::kWatchUsage); return true;
    case LineContext::Part::command: break;
    }
    const std::string_view command = before.substr(context.command_begin);
    const std::vector<Candidate> list = candidates(command);
    if (list.empty()) {
        const MatchResult m = match_line(command);
        report_error(m.ok ? "nothing may follow " + quoted(command) : m.error);
        return false;
    }
    std::string text;
    for (const Candidate &c : list) {
        std::string help;
        if (c.text == "<cr>")
            help = "Run the command";
        else if (c.is_word)
            help = word_help(c.text);
        else if (c.element != nullptr && c.element->kind == ParamKind::queue_limit)
            help = queue_limit_help();
        else
            help = param_help(c.text);
        text += help_row(c.text, help);
        if (c.text == "<cr>") text += help_row("|", kBarHelp);
    }
    if (context.line_start) text += help_row("watch", kWatchHelp);
    out(text);
    std::fflush(stdout);
    return true;
}

std::vector<std::string> Executor::complete(std::string_view line, std::size_t start) const {
    const std::string partial(line.substr(std::min(start, line.size())));
    const std::string_view typed = line.substr(0, std::min(start, line.size()));
    const LineContext context = line_context(typed);
    std::vector<std::string> out_list;
    auto add = [&](const std::string &s) {
        if (std::find(out_list.begin(), out_list.end(), s) == out_list.end()) out_list.push_back(s);
    };
    switch (context.part) {
    case LineContext::Part::filter_name: return filter_completions(partial);
    case LineContext::Part::filter_pattern:
    case LineContext::Part::filter_end:
    case LineContext::Part::watch_value: return {};
    case LineContext::Part::watch_option:
        // The next word is an option or the first word of the command.
        for (const std::string &o : cli::option_completions(cli::Scope::watch, partial)) add(o);
        break;
    case LineContext::Part::command: break;
    }
    std::string before(typed.substr(std::min(context.command_begin, typed.size())));
    before += ' ';
    for (const Candidate &c : candidates(before)) {
        if (c.text == "<cr>") continue;
        if (c.is_word) {
            if (c.text.starts_with(partial)) add(c.text);
        } else if (c.element != nullptr &&
                   (c.element->kind == ParamKind::interface || c.element->kind == ParamKind::interface_list ||
                    c.element->kind == ParamKind::if_or_number)) {
            for (const std::string &name : interface_completions(partial)) add(name);
        }
    }
    if (context.line_start && std::string_view("watch").starts_with(partial)) add("watch");
    return out_list;
}

bool Executor::call_handler(const Match &match) {
    const Command &c = *match.command;
    // Everything the user typed is checked before anything is sent.
    auto inv = std::make_unique<Invocation>();
    bool room = true;
    for (const Match::Param &p : match.params) {
        const Element &e = *p.element;
        if (e.is_word) {
            room = room && inv->add_byte(e.arg_type, 1);
            continue;
        }
        switch (e.kind) {
        case ParamKind::queue:
        case ParamKind::cos_list:
            for (const std::uint32_t n : p.numbers) room = room && inv->add_byte(e.arg_type, static_cast<std::uint8_t>(n));
            break;
        case ParamKind::number:
        case ParamKind::if_or_number:
            if (!p.numbers.empty()) {
                room = room && inv->add_word(e.arg_type, 0, p.numbers[0]);
                break;
            }
            [[fallthrough]];
        case ParamKind::interface: {
            const ResolvedInterface &i = executed_->interfaces.at(0);
            if (c.call == Call::pinfo_if_name) {
                inv->if_index = i.if_index;
                inv->if_name = i.name;
            } else {
                room = room && inv->add_word(1, PARAM_ID_IF_INDEX, i.if_index);
            }
            break;
        }
        case ParamKind::interface_list:
            for (const ResolvedInterface &i : executed_->interfaces) {
                qdsim::Attribute a;
                a.id = ATTR_IF_INDEX;
                a.value.resize(sizeof i.if_index);
                std::memcpy(a.value.data(), &i.if_index, sizeof i.if_index);
                inv->attributes.push_back(std::move(a));
            }
            break;
        default:
            break;
        }
    }
    if (!room) {
        report_error("too many arguments (at most 255)");
        return false;
    }

    const std::string name(c.handler);
    void *symbol = library_.symbol(name);
    if (symbol == nullptr) {
        report_error("handler " + name + " is not available in " + library_.path());
        return false;
    }

    inv->pinfo.no_form = c.no_form() ? 1 : 0;
    inv->pinfo.cmd_id = c.cmd_id;
    const std::uint32_t handle = qdsim::open_command();
    inv->pinfo.mts_handle = handle;
    std::int32_t status = 0;
    switch (c.call) {
    case Call::pinfo:
        qdsim::set_request_attributes(inv->attributes);
        status = reinterpret_cast<PinfoHandler>(symbol)(&inv->pinfo);
        break;
    case Call::pinfo_if_name:
        status = reinterpret_cast<IfNameHandler>(symbol)(&inv->pinfo, inv->if_index, inv->if_name.c_str());
        break;
    case Call::stream: {
        cmd_rsp rsp{};
        qdsim::open_switch_stream(&rsp, handle);
        status = reinterpret_cast<StreamHandler>(symbol)(&rsp);
        break;
    }
    case Call::none:
        status = reinterpret_cast<PlainHandler>(symbol)();
        break;
    case Call::builtin:
        break;
    }
    qdsim::close_command(handle);

    const bool ok = c.success == Success::stream_end ? (status == -1 || status == 0) : status == 0;
    // A failure the library told has been reported with its own words.
    if (!ok && executed_->failures_told == 0)
        report_error(quoted(c.pattern) + " failed with status " + status_text(status));
    return ok;
}

bool Executor::run_builtin(const Match &match) {
    switch (match.command->builtin) {
    case Builtin::help: {
        std::string text = "Commands (a word may be shortened while it stays unique; \"?\" after a word lists what may follow):\n";
        for (const Command &c : commands()) {
            char row[256];
            std::snprintf(row, sizeof row, "  %-52s %s\n", std::string(c.pattern).c_str(), std::string(c.help).c_str());
            text += row;
        }
        // Handled before the grammar: watch, and filters at the end of a line.
        for (const LineForm &f : line_forms()) {
            char row[256];
            std::snprintf(row, sizeof row, "  %-52s %s\n", std::string(f.pattern).c_str(), std::string(f.help).c_str());
            text += row;
        }
        out(text);
        std::fflush(stdout);
        return true;
    }
    case Builtin::exit:
        exit_requested_ = true;
        return true;
    case Builtin::queue_limit: return queue_limit(match);
    case Builtin::clear_pfc: return clear_pfc();
    case Builtin::sim_show: return sim_show(match);
    case Builtin::sim_set: return sim_set(match);
    case Builtin::sim_load: return sim_load(match);
    case Builtin::sim_interfaces:
        sim_interfaces();
        return true;
    case Builtin::sim_help:
        out("The sim commands look at and change the simulated switch; they send nothing.\n"
            "  sim show                      the whole model as JSON\n"
            "  sim show JSON-POINTER         one part of it, e.g. sim show /platform/type; a / inside a\n"
            "                                name is written ~1: sim show /interfaces/Ethernet1~11\n"
            "  sim set JSON-POINTER VALUE    replace one value; VALUE is JSON text (\"text\", 12, true, {...}),\n"
            "                                e.g. sim set /cos_map/2 3\n"
            "  sim load FILE                 replace the switch with a scenario file\n"
            "  sim interfaces                names, indexes and types of the interfaces\n");
        std::fflush(stdout);
        return true;
    case Builtin::none: break;
    }
    return false;
}

std::string Executor::queue_limit_help() const {
    auto help = reinterpret_cast<HelpCallback>(library_.symbol("qdcli_interface_qoslimit_help_get"));
    auto range = reinterpret_cast<RecordCallback>(library_.symbol("qdcli_interface_qoslimit_range_get"));
    auto def = reinterpret_cast<RecordCallback>(library_.symbol("qdcli_pdcli_cmd_qd_def_get"));
    std::string text;
    if (help != nullptr) {
        char *h = help(nullptr, nullptr);
        if (h != nullptr) text = h;
        std::free(h);
    }
    if (text.empty()) text = std::string(param_help("BYTES"));
    if (range != nullptr) {
        std::uint32_t r[2] = {0, 0};
        range(nullptr, nullptr, r);
        text += " (" + std::to_string(r[0]) + "-" + std::to_string(r[1]);
        if (def != nullptr) {
            std::uint32_t d[2] = {0, 0};
            def(nullptr, nullptr, d);
            text += ", default " + std::to_string(d[1]);
        }
        text += ")";
    }
    return text;
}

bool Executor::queue_limit(const Match &match) {
    auto range = reinterpret_cast<RecordCallback>(library_.symbol("qdcli_interface_qoslimit_range_get"));
    if (range == nullptr) {
        report_error("handler qdcli_interface_qoslimit_range_get is not available in " + library_.path());
        return false;
    }
    const Match::Param &limit = match.params.at(0);
    const std::string &text = limit.values.at(0);
    // The grammar lets a number too large for 32 bits through, as no number.
    std::uint32_t r[2] = {0, 0};
    range(nullptr, nullptr, r);
    if (limit.numbers.empty() || limit.numbers[0] < r[0] || limit.numbers[0] > r[1]) {
        report_error("queue-limit " + text + " is out of range: expected " + std::to_string(r[0]) +
                     " to " + std::to_string(r[1]));
        return false;
    }
    // The simulated switch keeps no queue limit: the value is checked
    // against the line card's range and goes nowhere.
    return true;
}

bool Executor::clear_pfc() {
    // The pause counters are the platform's: the simulator clears them with
    // its own command line, one interface (the switch's name) or all.
    std::string line = "clear interface priority-flow-control";
    if (!executed_->interfaces.empty()) line += " " + executed_->interfaces[0].name;
    const int status = qdsim::run_platform_command(line);
    if (status != 0) {
        report_error(quoted(line) + " failed with status " + status_text(status));
        return false;
    }
    return true;
}

bool Executor::sim_show(const Match &match) {
    // The simulator looks the pointer up itself: a small part of a large
    // chassis costs what it holds, not the whole state.
    const std::string pointer = match.params.empty() ? std::string{} : match.params[0].values.at(0);
    std::string value, error;
    if (!qdsim::get_state_value(pointer, value, error)) {
        report_error(error.starts_with("nothing at") ? "sim show: no value at " + quoted(pointer) : "sim show: " + error);
        return false;
    }
    out(terminal_json(value) + "\n");
    std::fflush(stdout);
    return true;
}

bool Executor::sim_set(const Match &match) {
    const std::string &pointer = match.params.at(0).values.at(0);
    const std::string &value = match.params.at(1).values.at(0);
    std::string error;
    if (!qdsim::set_state_value(pointer, value, error)) {
        report_error("sim set " + pointer + ": " + error);
        return false;
    }
    warn_platform_type_kept();
    return true;
}

void Executor::warn_platform_type_kept() const {
    const std::int32_t told = qdsim::platform_type_told();
    const std::int32_t now = qdsim::platform_type();
    if (told == 0 || told == now) return;
    write_error("note: the switch is now platform type " + std::to_string(now) + ", but " + library_.path() +
                 " keeps platform type " + std::to_string(told) +
                 ", which it was told first, until qdsh restarts (qdsh --scenario FILE starts with another type)");
}

bool Executor::sim_load(const Match &match) {
    qdsim::ScenarioError error;
    if (!qdsim::load_scenario_file(match.params.at(0).values.at(0), error)) {
        report_error(error.message());
        return false;
    }
    warn_platform_type_kept();
    return true;
}

void Executor::sim_interfaces() const {
    std::string text = "Interface                 Index       Type\n";
    std::vector<qdsim::InterfaceInfo> list = qdsim::interfaces();
    std::stable_sort(list.begin(), list.end(),
                     [](const qdsim::InterfaceInfo &a, const qdsim::InterfaceInfo &b) { return natural_less(a.name, b.name); });
    for (const qdsim::InterfaceInfo &i : list) {
        // A name of any length: padded to 25, never cut.
        std::string name = qdsim::terminal_safe(i.name);
        if (name.size() < 25) name.resize(25, ' ');
        char rest[64];
        std::snprintf(rest, sizeof rest, " 0x%08x  %u %s%s\n", i.if_index, i.type, type_name(i.type),
                      i.sub_intf ? ", sub-interface" : "");
        text += name + rest;
    }
    out(text);
    std::fflush(stdout);
}

}  // namespace qdsh
