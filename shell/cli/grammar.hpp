// SPDX-License-Identifier: MIT
// qdsh command grammar: the command table and the matcher that turns a
// command line into a table entry plus the text of each parameter.
//
// The grammar knows nothing about the switch or the handler library: it
// matches words and checks the shape of parameters (a queue number is 0-3, a
// CoS value 0-7, a number is a 32-bit value). Interfaces are only collected
// here; resolving their names is the executor's job.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qdsh {

// What a parameter slot accepts.
enum class ParamKind {
    queue,         // multicast queue 0-3
    cos_list,      // one or more CoS values 0-7 (rest of the line)
    interface,     // one interface ("eth1/1", "ethernet 1/1")
    interface_list,// interfaces, ranges and comma lists (rest of the line)
    number,        // unsigned 32-bit number, decimal or 0x-hex
    if_or_number,  // an interface or a number
    queue_limit,   // queue-limit size; range checked against the library
    json_pointer,  // one token
    json_text,     // rest of the line, raw
    file,          // rest of the line, raw
};

// How a matched command is carried out.
enum class Call {
    pinfo,          // int32_t handler(cmd_paraminfo *)
    pinfo_if_name,  // int32_t handler(cmd_paraminfo *, uint32_t if_index, const char *name)
    stream,         // int32_t handler(cmd_rsp *) on the switch-wide attribute stream
    none,           // int32_t handler(void)
    builtin,        // carried out by the shell itself
};

// When a handler's status means success.
enum class Success {
    zero,        // 0 succeeds, anything else fails
    stream_end,  // -1 (end of the attribute stream) or 0 succeeds
};

// Commands the shell carries out itself.
enum class Builtin {
    none,
    help,
    exit,
    queue_limit,
    clear_pfc,
    sim_show,
    sim_set,
    sim_load,
    sim_interfaces,
    sim_help,
};

// One element of a command pattern: a command word or a parameter slot.
struct Element {
    bool is_word = true;
    std::string_view text;  // the word, or the parameter's name ("QUEUE")
    ParamKind kind = ParamKind::number;
    std::uint32_t arg_type = 0;  // a word or parameter that becomes an argument record: its param_type
    bool greedy() const;
};

// One command of the table.
struct Command {
    std::string_view pattern;   // "wrr-queue cos-map QUEUE COS..."
    std::string_view handler;   // exported handler name (empty for most built-ins)
    std::uint32_t cmd_id = 0;
    Call call = Call::pinfo;
    Success success = Success::zero;
    Builtin builtin = Builtin::none;
    std::string_view help;      // one line for "help"
    std::vector<Element> elements;  // parsed from the pattern
    bool no_form() const { return !elements.empty() && elements[0].is_word && elements[0].text == "no"; }
};

// The command table (built once).
const std::vector<Command> &commands();

// Forms of a line that qdsh takes before the grammar (watch, and the output
// filters at the end of a line), for "help" and the manual.
struct LineForm {
    std::string_view pattern;
    std::string_view help;
};
const std::vector<LineForm> &line_forms();

// Help line of a command word or parameter name ("" when none).
std::string_view word_help(std::string_view word);
std::string_view param_help(std::string_view name);

// A token of a command line, with its place in the line.
struct Token {
    std::string text;
    std::size_t begin = 0;
    std::size_t end = 0;
};
std::vector<Token> tokenize(std::string_view line);

// A command line matched to a table entry.
struct Match {
    const Command *command = nullptr;
    // For each parameter, and each word that stands for an argument record
    // ("detail"), in the order typed: the text it took. Single-token
    // parameters take one token (an interface written "ethernet 1/1" is
    // joined into "ethernet1/1"); list parameters take one text per token;
    // raw parameters take the rest of the line as typed; words take none.
    struct Param {
        const Element *element = nullptr;
        std::vector<std::string> values;
        // The values of a queue, CoS list, number (an IF|NUMBER given as
        // one) or queue limit, as checked: one per value; none for a queue
        // limit too large for 32 bits.
        std::vector<std::uint32_t> numbers;
    };
    std::vector<Param> params;
};

struct MatchResult {
    bool ok = false;
    Match match;
    std::string error;  // why the line matched no command
};

MatchResult match_line(std::string_view line);
MatchResult match_line(std::string_view line, std::span<const Command> table);

// What may follow a partial command line. `line` is everything typed so far;
// when it does not end in a blank its last word is the partial word.
struct Candidate {
    std::string text;  // a command word, a parameter name ("QUEUE"), or "<cr>"
    bool is_word = true;
    const Element *element = nullptr;
};
std::vector<Candidate> candidates(std::string_view line);
std::vector<Candidate> candidates(std::string_view line, std::span<const Command> table);

// Parsing helpers shared with the interface lists and the executor.
bool parse_u32(std::string_view text, std::uint32_t &value);
// A text that reads as a number (digits, or 0x and hex digits).
bool looks_numeric(std::string_view text);
bool is_alpha_word(std::string_view s);  // letters only, at least one
bool all_digits(std::string_view s);     // digits only, at least one
std::string quoted(std::string_view s);  // "s", for messages
std::string trim(std::string_view s);    // without the blanks around it

}  // namespace qdsh
