// SPDX-License-Identifier: MIT
#include "cli/grammar.hpp"

#include <algorithm>
#include <cctype>
#include <set>
#include <stdexcept>

#include "qdcli/commands.h"
#include "qdcli/wire.h"

namespace qdsh {

namespace {

// param_type of argument records the shell makes beyond those the handlers
// test (19 queue, 20 CoS, 2 the memory-statistics detail keyword).
constexpr std::uint32_t kParamTypeInterface = 1;
constexpr std::uint32_t kParamTypeNumber = 3;

struct WordInfo {
    std::string_view word;
    std::string_view help;
    std::uint32_t arg_type = 0;  // the word becomes an argument record of this param_type
};

// Help of every command word, in the order "?" lists them.
const WordInfo kWords[] = {
    {"show", "Show switch state and statistics"},
    {"no", "Negate a command"},
    {"clear", "Reset counters"},
    {"debug", "Daemon debug dumps"},
    {"qos", "QoS configuration"},
    {"wrr-queue", "Multicast WRR queues"},
    {"sim", "Inspect and change the simulated switch"},
    {"help", "List all commands"},
    {"exit", "Leave the shell"},
    {"quit", "Leave the shell"},
    {"cos-map", "CoS to multicast queue map"},
    {"queuing", "Queuing configuration and statistics"},
    {"interface", "One or more interfaces"},
    {"extended", "Ingress queuing of the forwarding ASIC"},
    {"host-interface", "Host interface of a port extender"},
    {"system", "System internals"},
    {"internal", "Internal state"},
    {"qd", "Queuing daemon"},
    {"mem-stats", "Memory statistics of the queuing daemon"},
    {"detail", "Per-allocation detail", PARAM_TYPE_MEMSTATS_DETAIL},
    {"extender-stats", "Internal port statistics of the extender behind an interface"},
    {"logging", "Logs"},
    {"onboard", "Onboard logs"},
    {"flow-control", "Priority-flow-control pause logs"},
    {"pause-count", "Number of pause events per port"},
    {"pause-events", "List of pause events"},
    {"vaq", "Port extenders (VAQ)"},
    {"no-credit-drops", "No-credit drop counters of every extender"},
    {"counters", "Queuing counters"},
    {"statistics", "QoS statistics of host interfaces"},
    {"priority-flow-control", "Priority-flow-control pause counters"},
    {"queue-limit", "Queue limit"},
    {"clear-info", "Clear the daemon's debug information"},
    {"trace-level", "Daemon trace level"},
    {"summary", "Summary"},
    {"global", "Global state"},
    {"sup", "Supervisor state"},
    {"fibre-channel", "Fibre-channel ports"},
    {"ethernet", "Ethernet ports"},
    {"ports", "All ports"},
    {"modules", "All modules"},
    {"qos-groups", "All qos-groups"},
    {"buffers", "Buffer allocation"},
    {"pfc", "Priority-flow-control state"},
    {"mts", "Message transport state"},
    {"timers", "Timers"},
    {"events", "Event history"},
    {"port", "One port"},
    {"module", "One module"},
    {"port-info", "One port, by interface or number"},
    {"qos-group", "One qos-group"},
    {"queue", "One queue"},
    {"set", "Change a value of the model"},
    {"load", "Load a scenario file"},
    {"interfaces", "List the interfaces of the switch"},
};

struct ParamInfo {
    std::string_view name;
    ParamKind kind;
    std::string_view help;
};

const ParamInfo kParams[] = {
    {"QUEUE", ParamKind::queue, "Multicast queue number (0-3)"},
    {"COS...", ParamKind::cos_list, "CoS values (0-7), one or more"},
    {"IF", ParamKind::interface, "Interface, e.g. ethernet1/1"},
    {"IF-LIST", ParamKind::interface_list, "Interfaces: names, ranges (ethernet1/1-4), comma lists"},
    {"NUMBER", ParamKind::number, "Number (decimal or 0x-hex)"},
    {"IF|NUMBER", ParamKind::if_or_number, "Interface or number"},
    {"BYTES", ParamKind::queue_limit, "Queue limit"},
    {"JSON-POINTER", ParamKind::json_pointer, "Path into the model, e.g. /cos_map/2 (a / in a name is ~1)"},
    {"JSON-VALUE", ParamKind::json_text, "JSON text"},
    {"FILE", ParamKind::file, "Scenario file"},
};

// clang-format off
std::vector<Command> build_table() {
    using C = Call;
    using S = Success;
    using B = Builtin;
    std::vector<Command> t = {
        // Multicast WRR queue CoS map
        {"show wrr-queue cos-map", "qd_cli_show_wrrqueue_cosmap", QDCLI_CMD_SHOW_WRRQUEUE_COSMAP, C::pinfo, S::zero, B::none,
         "Show the multicast WRR queue CoS map"},
        {"wrr-queue cos-map QUEUE COS...", "qd_cli_conf_wrrqueue_cosmap", QDCLI_CMD_CONF_WRRQUEUE_COSMAP, C::pinfo, S::zero, B::none,
         "Map CoS values to a multicast queue"},
        {"no wrr-queue cos-map QUEUE COS...", "qd_cli_conf_wrrqueue_cosmap", QDCLI_CMD_CONF_WRRQUEUE_COSMAP, C::pinfo, S::zero, B::none,
         "Remove CoS values from a multicast queue"},

        // Queue limit
        {"qos queue-limit BYTES", "", QDCLI_CMD_QOS_QUEUE_LIMIT, C::builtin, S::zero, B::queue_limit,
         "Queue limit, checked against the line card's range"},

        // Queuing reports
        {"show queuing", "qd_cli_show_queuing_intf_switch", QDCLI_CMD_SHOW_QUEUING_SWITCH, C::stream, S::stream_end, B::none,
         "Switch-wide queuing report"},
        {"show queuing interface", "qd_cli_show_queuing_interface", CMD_ID_UNSUPPORTED_MSG, C::pinfo, S::zero, B::none,
         "Queuing report of every interface"},
        {"show queuing interface IF-LIST", "qd_cli_show_queuing_interface", CMD_ID_UNSUPPORTED_MSG, C::pinfo, S::zero, B::none,
         "Queuing report of the named interfaces"},
        {"show queuing interface IF extended", "qd_cli_show_queuing_intf_extend", QDCLI_CMD_SHOW_QUEUING_EXTENDED, C::pinfo, S::zero, B::none,
         "Extended (ingress) queuing report of an interface"},
        {"show queuing host-interface IF", "qd_cli_show_queuing_hif", QDCLI_CMD_SHOW_QUEUING_HIF, C::pinfo_if_name, S::zero, B::none,
         "Queuing report of a host interface"},
        {"show system internal qd extender-stats interface IF", "qd_cli_show_internal_stats", QDCLI_CMD_SHOW_INTERNAL_STATS, C::pinfo_if_name, S::zero, B::none,
         "Internal port statistics of the extender behind an interface"},

        // Counter clearing
        {"clear queuing counters", "qd_cli_clear_queuing_all", QDCLI_CMD_CLEAR_QUEUING_ALL, C::pinfo, S::zero, B::none,
         "Clear the queuing counters of every interface"},
        {"clear queuing counters interface IF", "qd_cli_clear_queuing_interface", QDCLI_CMD_CLEAR_QUEUING_IF, C::pinfo, S::zero, B::none,
         "Clear the queuing counters of an interface"},
        {"clear qos statistics", "qd_cli_clear_qos_stats_all", QDCLI_CMD_CLEAR_QOS_STATS_ALL, C::pinfo, S::zero, B::none,
         "Clear the QoS statistics of every host interface"},
        {"clear interface priority-flow-control", "", QDCLI_CMD_CLEAR_PFC, C::builtin, S::zero, B::clear_pfc,
         "Clear the pause counters of every interface"},
        {"clear interface priority-flow-control IF", "", QDCLI_CMD_CLEAR_PFC, C::builtin, S::zero, B::clear_pfc,
         "Clear the pause counters of an interface"},

        // Logs and extender drops
        {"show logging onboard flow-control pause-count", "qd_cli_show_logging_onboard_flow_control_td", QDCLI_CMD_SHOW_PAUSE_COUNT, C::none, S::zero, B::none,
         "Number of pause events per port"},
        {"show logging onboard flow-control pause-events", "qd_cli_show_logging_onboard_flow_control_pe", QDCLI_CMD_SHOW_PAUSE_EVENTS, C::none, S::zero, B::none,
         "List of pause events"},
        {"show vaq no-credit-drops", "process_qd_cli_show_vaq_drops_all", QDCLI_CMD_SHOW_VAQ_DROPS, C::pinfo, S::zero, B::none,
         "No-credit drop counters of every extender"},

        // Diagnostics
        {"show system internal qd mem-stats", "qd_cli_show_memstats", QDCLI_CMD_SHOW_MEMSTATS, C::pinfo, S::zero, B::none,
         "Memory statistics of the queuing daemon"},
        {"show system internal qd mem-stats detail", "qd_cli_show_memstats", QDCLI_CMD_SHOW_MEMSTATS, C::pinfo, S::zero, B::none,
         "Memory statistics of the queuing daemon, in detail"},
        {"show system internal qd interface IF", "qd_cli_debug_show_intf", QDCLI_CMD_SHOW_INTERNAL_IF, C::pinfo, S::zero, B::none,
         "The daemon's debug view of an interface"},
        {"debug qd show summary", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_SUMMARY, C::pinfo, S::zero, B::none, "Debug view: summary"},
        {"debug qd show global", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_GLOBAL, C::pinfo, S::zero, B::none, "Debug view: global state"},
        {"debug qd show sup", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_SUP, C::pinfo, S::zero, B::none, "Debug view: supervisor"},
        {"debug qd show fibre-channel", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_FIBRE_CHANNEL, C::pinfo, S::zero, B::none, "Debug view: fibre-channel ports"},
        {"debug qd show ethernet", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_ETHERNET, C::pinfo, S::zero, B::none, "Debug view: Ethernet ports"},
        {"debug qd show ports", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_PORTS, C::pinfo, S::zero, B::none, "Debug view: all ports"},
        {"debug qd show modules", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_MODULES, C::pinfo, S::zero, B::none, "Debug view: all modules"},
        {"debug qd show counters", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_COUNTERS, C::pinfo, S::zero, B::none, "Debug view: counters"},
        {"debug qd show qos-groups", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_QOS_GROUPS, C::pinfo, S::zero, B::none, "Debug view: all qos-groups"},
        {"debug qd show buffers", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_BUFFERS, C::pinfo, S::zero, B::none, "Debug view: buffer allocation"},
        {"debug qd show vaq", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_VAQ, C::pinfo, S::zero, B::none, "Debug view: port extenders"},
        {"debug qd show pfc", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_PFC, C::pinfo, S::zero, B::none, "Debug view: priority flow control"},
        {"debug qd show mts", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_MTS, C::pinfo, S::zero, B::none, "Debug view: message transport"},
        {"debug qd show timers", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_TIMERS, C::pinfo, S::zero, B::none, "Debug view: timers"},
        {"debug qd show events", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_EVENTS, C::pinfo, S::zero, B::none, "Debug view: event history"},
        {"debug qd show port NUMBER", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_PORT, C::pinfo, S::zero, B::none, "Debug view: one port"},
        {"debug qd show module NUMBER", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_MODULE, C::pinfo, S::zero, B::none, "Debug view: one module"},
        {"debug qd show port-info IF|NUMBER", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_PORT_INFO, C::pinfo, S::zero, B::none,
         "Debug view: one port, by interface or number"},
        {"debug qd show qos-group NUMBER", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_QOS_GROUP, C::pinfo, S::zero, B::none, "Debug view: one qos-group"},
        {"debug qd trace-level NUMBER", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_TRACE_LEVEL, C::pinfo, S::zero, B::none, "Set the daemon's trace level"},
        {"no debug qd trace-level", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_TRACE_LEVEL, C::pinfo, S::zero, B::none, "Reset the daemon's trace level"},
        {"debug qd show queue NUMBER", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_QUEUE, C::pinfo, S::zero, B::none, "Debug view: one queue"},
        {"debug qd clear-info", "qd_cli_debug_show_all", QDCLI_CMD_DEBUG_CLEAR_INFO, C::pinfo, S::zero, B::none, "Clear the daemon's debug information"},

        // The simulated switch
        {"sim show", "", 0, C::builtin, S::zero, B::sim_show, "Print the model's state as JSON"},
        {"sim show JSON-POINTER", "", 0, C::builtin, S::zero, B::sim_show, "Print one part of the model's state"},
        {"sim set JSON-POINTER JSON-VALUE", "", 0, C::builtin, S::zero, B::sim_set, "Change a value of the model"},
        {"sim load FILE", "", 0, C::builtin, S::zero, B::sim_load, "Replace the switch with a scenario file"},
        {"sim interfaces", "", 0, C::builtin, S::zero, B::sim_interfaces, "List the interfaces of the switch"},
        {"sim help", "", 0, C::builtin, S::zero, B::sim_help, "Explain the sim commands"},

        // The shell
        {"help", "", 0, C::builtin, S::zero, B::help, "List all commands"},
        {"exit", "", 0, C::builtin, S::zero, B::exit, "Leave the shell"},
        {"quit", "", 0, C::builtin, S::zero, B::exit, "Leave the shell"},
    };
    for (Command &c : t) {
        std::string_view rest = c.pattern;
        while (!rest.empty()) {
            const std::size_t space = rest.find(' ');
            const std::string_view piece = rest.substr(0, space);
            rest = space == std::string_view::npos ? std::string_view{} : rest.substr(space + 1);
            Element e;
            if (std::isupper(static_cast<unsigned char>(piece[0]))) {
                const auto *p = std::find_if(std::begin(kParams), std::end(kParams),
                                             [&](const ParamInfo &i) { return i.name == piece; });
                if (p == std::end(kParams)) throw std::logic_error("qdsh: unknown parameter in pattern");
                e.is_word = false;
                e.text = p->name;
                e.kind = p->kind;
                switch (p->kind) {
                case ParamKind::queue: e.arg_type = PARAM_TYPE_QUEUE; break;
                case ParamKind::cos_list: e.arg_type = PARAM_TYPE_COS; break;
                case ParamKind::interface: e.arg_type = kParamTypeInterface; break;
                case ParamKind::number:
                case ParamKind::if_or_number: e.arg_type = kParamTypeNumber; break;
                default: break;
                }
            } else {
                e.text = piece;
                const auto *w = std::find_if(std::begin(kWords), std::end(kWords),
                                             [&](const WordInfo &i) { return i.word == piece; });
                if (w != std::end(kWords)) e.arg_type = w->arg_type;
            }
            c.elements.push_back(e);
        }
    }
    return t;
}
// clang-format on

bool starts_with_digit(std::string_view s) {
    return !s.empty() && std::isdigit(static_cast<unsigned char>(s[0])) != 0;
}

// One command tried against the tokens of a line: how far it got.
struct Attempt {
    const Command *command = nullptr;
    bool failed = false;
    std::size_t fail_token = 0;   // token where the attempt stopped (tokens.size() when they ran out)
    std::string reason;           // set when a parameter refused the token
    std::size_t elem = 0;         // next element to match
    bool list_open = false;       // the last element taken is a list that may take more
    std::size_t word_count = 0;
    std::vector<std::pair<std::size_t, std::string_view>> words;  // token index, word
    std::vector<std::pair<std::size_t, bool>> word_exact;         // token index, typed in full
    Match match;

    bool complete() const { return !failed && command != nullptr && elem == command->elements.size(); }
};

// A command word where an interface is expected ("show queuing interface
// extended") is a misplaced word, not an interface of that name.
bool is_command_word(std::string_view s) {
    return std::any_of(std::begin(kWords), std::end(kWords), [&](const WordInfo &w) { return w.word == s; });
}

std::string not_an_interface(std::string_view s) {
    return "expected an interface, not the command word " + quoted(s);
}

std::string check_small(std::string_view text, unsigned max, std::string_view what, std::vector<std::uint32_t> &into) {
    std::uint32_t v = 0;
    if (!parse_u32(text, v) || v > max)
        return "invalid " + std::string(what) + " " + quoted(text) + ": expected 0 to " + std::to_string(max);
    into.push_back(v);
    return {};
}

// Why `text` is not a 32-bit number ("" when it is one, kept in `into`).
std::string check_number(std::string_view text, std::vector<std::uint32_t> &into) {
    std::uint32_t v = 0;
    if (parse_u32(text, v)) {
        into.push_back(v);
        return {};
    }
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
                     std::all_of(text.begin() + 2, text.end(), [](char ch) { return std::isxdigit(static_cast<unsigned char>(ch)) != 0; });
    if (all_digits(text) || hex) return "number " + quoted(text) + " is out of range: expected 0 to 4294967295";
    return "invalid number " + quoted(text);
}

Attempt attempt(const Command &c, const std::vector<Token> &toks, std::string_view line) {
    Attempt w;
    w.command = &c;
    std::size_t t = 0;
    auto fail = [&](std::string reason) {
        w.failed = true;
        w.fail_token = t;
        w.reason = std::move(reason);
    };
    while (t < toks.size()) {
        w.list_open = false;
        if (w.elem >= c.elements.size()) {
            fail({});
            return w;
        }
        const Element &e = c.elements[w.elem];
        const std::string &s = toks[t].text;
        if (e.is_word) {
            const bool exact = s == e.text;
            if (!exact && !e.text.starts_with(s)) {
                fail({});
                return w;
            }
            w.words.emplace_back(t, e.text);
            w.word_exact.emplace_back(t, exact);
            ++w.word_count;
            if (e.arg_type != 0) w.match.params.push_back({&e, {}});
            ++t;
            ++w.elem;
            continue;
        }
        Match::Param p;
        p.element = &e;
        switch (e.kind) {
        case ParamKind::queue:
            if (auto r = check_small(s, 3, "queue", p.numbers); !r.empty()) return fail(r), w;
            p.values.push_back(s);
            ++t;
            break;
        case ParamKind::cos_list:
            for (; t < toks.size(); ++t) {
                std::string_view rest = toks[t].text;
                while (!rest.empty()) {
                    const std::size_t comma = rest.find(',');
                    const std::string_view v = rest.substr(0, comma);
                    rest = comma == std::string_view::npos ? std::string_view{} : rest.substr(comma + 1);
                    if (v.empty()) continue;
                    if (auto r = check_small(v, 7, "CoS value", p.numbers); !r.empty()) return fail(r), w;
                    p.values.emplace_back(v);
                }
            }
            if (p.values.empty()) return fail("missing CoS value"), w;
            w.list_open = true;
            break;
        case ParamKind::number:
        case ParamKind::queue_limit: {
            // A queue limit too large for 32 bits is still a number: the
            // executor tells it is out of the line card's range.
            if (auto r = check_number(s, p.numbers); !r.empty() && !(e.kind == ParamKind::queue_limit && all_digits(s)))
                return fail(r), w;
            p.values.push_back(s);
            ++t;
            break;
        }
        case ParamKind::if_or_number:
            if (looks_numeric(s)) {
                if (auto r = check_number(s, p.numbers); !r.empty()) return fail(r), w;
                p.values.push_back(s);
                ++t;
                break;
            }
            [[fallthrough]];
        case ParamKind::interface:
            // "ethernet 1/1" is one interface written in two words.
            if (is_alpha_word(s) && t + 1 < toks.size() && starts_with_digit(toks[t + 1].text)) {
                p.values.push_back(s + toks[t + 1].text);
                t += 2;
            } else {
                if (is_command_word(s)) return fail(not_an_interface(s)), w;
                p.values.push_back(s);
                ++t;
            }
            break;
        case ParamKind::interface_list:
            for (; t < toks.size(); ++t) {
                const bool joined = is_alpha_word(toks[t].text) && t + 1 < toks.size() && starts_with_digit(toks[t + 1].text);
                if (!joined && is_command_word(toks[t].text)) return fail(not_an_interface(toks[t].text)), w;
                p.values.push_back(toks[t].text);
            }
            w.list_open = true;
            break;
        case ParamKind::json_pointer:
            if (s.empty() || s[0] != '/') return fail("invalid JSON pointer " + quoted(s) + ": it starts with /"), w;
            p.values.push_back(s);
            ++t;
            break;
        case ParamKind::json_text:
        case ParamKind::file: {
            std::string_view raw = line.substr(toks[t].begin);
            while (!raw.empty() && std::isspace(static_cast<unsigned char>(raw.back()))) raw.remove_suffix(1);
            p.values.emplace_back(raw);
            t = toks.size();
            break;
        }
        }
        w.match.params.push_back(std::move(p));
        ++w.elem;
    }
    return w;
}

// Tries every command; a token typed in full as a command word rules out the
// commands that took it as the abbreviation of a longer word.
std::vector<Attempt> attempt_all(std::span<const Command> table, const std::vector<Token> &toks, std::string_view line) {
    std::vector<Attempt> attempts;
    attempts.reserve(table.size());
    for (const Command &c : table) attempts.push_back(attempt(c, toks, line));
    std::set<std::size_t> exact;
    for (const Attempt &w : attempts)
        for (const auto &[t, full] : w.word_exact)
            if (full) exact.insert(t);
    std::erase_if(attempts, [&](const Attempt &w) {
        return std::any_of(w.word_exact.begin(), w.word_exact.end(),
                           [&](const auto &we) { return !we.second && exact.count(we.first) != 0; });
    });
    return attempts;
}

std::string joined(const std::vector<Token> &toks, std::size_t n) {
    std::string s;
    for (std::size_t i = 0; i < n && i < toks.size(); ++i) {
        if (i) s += ' ';
        s += toks[i].text;
    }
    return s;
}

std::string list_of(const std::vector<std::string> &items) {
    std::string s;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i) s += ", ";
        s += items[i];
    }
    return s;
}

void add_unique(std::vector<std::string> &v, std::string s) {
    if (std::find(v.begin(), v.end(), s) == v.end()) v.push_back(std::move(s));
}

// The words that different attempts read a token as, when they differ.
std::vector<std::string> readings(const std::vector<const Attempt *> &attempts, std::size_t token) {
    std::vector<std::string> words;
    for (const Attempt *w : attempts)
        for (const auto &[t, word] : w->words)
            if (t == token) add_unique(words, std::string(word));
    return words;
}

}  // namespace

bool Element::greedy() const {
    return !is_word && (kind == ParamKind::cos_list || kind == ParamKind::interface_list ||
                        kind == ParamKind::json_text || kind == ParamKind::file);
}

const std::vector<LineForm> &line_forms() {
    static const std::vector<LineForm> forms = {
        {"watch [-n S] [--count N] [--nonzero] COMMAND", "Re-run COMMAND: deltas and rates of its counters"},
        {"COMMAND | include|exclude|begin REGEX, | count", "Filter the output (\"| ?\" lists the filters)"},
    };
    return forms;
}

const std::vector<Command> &commands() {
    static const std::vector<Command> table = build_table();
    return table;
}

std::string_view word_help(std::string_view word) {
    for (const WordInfo &w : kWords)
        if (w.word == word) return w.help;
    return {};
}

std::string_view param_help(std::string_view name) {
    for (const ParamInfo &p : kParams)
        if (p.name == name) return p.help;
    return {};
}

std::vector<Token> tokenize(std::string_view line) {
    std::vector<Token> toks;
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && std::isspace(static_cast<unsigned char>(line[i]))) ++i;
        if (i == line.size()) break;
        const std::size_t b = i;
        while (i < line.size() && !std::isspace(static_cast<unsigned char>(line[i]))) ++i;
        toks.push_back({std::string(line.substr(b, i - b)), b, i});
    }
    return toks;
}

bool is_alpha_word(std::string_view s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char ch) { return std::isalpha(static_cast<unsigned char>(ch)) != 0; });
}

bool all_digits(std::string_view s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char ch) { return std::isdigit(static_cast<unsigned char>(ch)) != 0; });
}

std::string quoted(std::string_view s) {
    return "\"" + std::string(s) + "\"";
}

std::string trim(std::string_view s) {
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
    return std::string(s);
}

bool looks_numeric(std::string_view text) {
    return starts_with_digit(text);
}

bool parse_u32(std::string_view text, std::uint32_t &value) {
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.empty() || text.size() > 10) return false;
    std::uint64_t v = 0;
    for (char ch : text) {
        int d;
        if (ch >= '0' && ch <= '9')
            d = ch - '0';
        else if (base == 16 && ch >= 'a' && ch <= 'f')
            d = ch - 'a' + 10;
        else if (base == 16 && ch >= 'A' && ch <= 'F')
            d = ch - 'A' + 10;
        else
            return false;
        v = v * static_cast<unsigned>(base) + static_cast<unsigned>(d);
        if (v > 0xffffffffu) return false;
    }
    value = static_cast<std::uint32_t>(v);
    return true;
}

MatchResult match_line(std::string_view line) {
    return match_line(line, commands());
}

MatchResult match_line(std::string_view line, std::span<const Command> table) {
    MatchResult r;
    const std::vector<Token> toks = tokenize(line);
    if (toks.empty()) {
        r.error = "empty command";
        return r;
    }
    const std::vector<Attempt> attempts = attempt_all(table, toks, line);

    // Complete matches: the one with the most command words wins; words read
    // differently by equally good matches make the line ambiguous.
    std::vector<const Attempt *> complete;
    for (const Attempt &w : attempts)
        if (w.complete()) complete.push_back(&w);
    if (!complete.empty()) {
        std::size_t best = 0;
        for (const Attempt *w : complete) best = std::max(best, w->word_count);
        std::vector<const Attempt *> top;
        for (const Attempt *w : complete)
            if (w->word_count == best) top.push_back(w);
        for (std::size_t i = 1; i < top.size(); ++i) {
            if (top[i]->words == top[0]->words) continue;
            for (std::size_t t = 0; t < toks.size(); ++t) {
                const std::vector<std::string> words = readings(top, t);
                if (words.size() > 1) {
                    r.error = "ambiguous command word " + quoted(toks[t].text) + ": may be " + list_of(words);
                    return r;
                }
            }
        }
        r.ok = true;
        r.match = top[0]->match;
        r.match.command = top[0]->command;
        return r;
    }

    // No match: explain at the furthest token any command reached.
    std::size_t far = 0;
    for (const Attempt &w : attempts) far = std::max(far, w.failed ? w.fail_token : toks.size());
    if (far == 0) {
        r.error = "unknown command " + quoted(toks[0].text) + " (\"help\" lists the commands)";
        return r;
    }
    std::vector<const Attempt *> at;
    for (const Attempt &w : attempts)
        if ((w.failed ? w.fail_token : toks.size()) == far) at.push_back(&w);
    std::vector<std::string> expected;
    std::vector<std::string> reasons;
    for (const Attempt *w : at) {
        if (!w->reason.empty()) add_unique(reasons, w->reason);
        if (w->elem < w->command->elements.size()) add_unique(expected, std::string(w->command->elements[w->elem].text));
    }
    // A token read as two different words before the stop is the first fault.
    std::vector<const Attempt *> reached;
    for (const Attempt &w : attempts) reached.push_back(&w);
    for (std::size_t t = 0; t < far; ++t) {
        std::vector<const Attempt *> through;
        for (const Attempt *w : reached)
            if (!w->failed || w->fail_token > t) through.push_back(w);
        const std::vector<std::string> words = readings(through, t);
        if (words.size() > 1) {
            r.error = "ambiguous command word " + quoted(toks[t].text) + ": may be " + list_of(words);
            return r;
        }
    }
    if (far == toks.size()) {
        r.error = "incomplete command " + quoted(joined(toks, far)) + ": expected " + list_of(expected);
    } else if (reasons.size() == 1) {
        r.error = reasons[0];
    } else if (expected.empty()) {
        r.error = "unexpected " + quoted(toks[far].text) + " after " + quoted(joined(toks, far));
    } else {
        r.error = "unexpected " + quoted(toks[far].text) + " after " + quoted(joined(toks, far)) + ": expected " +
                  list_of(expected);
    }
    return r;
}

std::vector<Candidate> candidates(std::string_view line) {
    return candidates(line, commands());
}

std::vector<Candidate> candidates(std::string_view line, std::span<const Command> table) {
    std::vector<Token> toks = tokenize(line);
    std::string partial;
    if (!line.empty() && !std::isspace(static_cast<unsigned char>(line.back())) && !toks.empty()) {
        partial = toks.back().text;
        toks.pop_back();
    }
    std::vector<Candidate> out;
    auto add = [&](Candidate c) {
        for (const Candidate &o : out)
            if (o.text == c.text) return;
        out.push_back(std::move(c));
    };
    for (const Attempt &w : attempt_all(table, toks, line.substr(0, toks.empty() ? 0 : toks.back().end))) {
        if (w.failed) continue;
        const auto &els = w.command->elements;
        if (w.elem < els.size()) {
            const Element &e = els[w.elem];
            if (e.is_word) {
                if (e.text.starts_with(partial)) add({std::string(e.text), true, &e});
            } else {
                add({std::string(e.text), false, &e});
            }
        } else {
            if (w.list_open && !w.match.params.empty()) {
                const Element *e = w.match.params.back().element;
                add({std::string(e->text), false, e});
            }
            if (partial.empty()) add({"<cr>", true, nullptr});
        }
    }
    return out;
}

}  // namespace qdsh
