// SPDX-License-Identifier: MIT
// Structured output: one document per command, built as a tree while the
// command runs and serialised once, as JSON or XML.
//
// A command's document (nlohmann::ordered_json, members in this order):
//
//   {
//     "command": "show queuing interface ethernet1/1",
//     "status": "ok" | "failed",
//     "text_only": false,        // true: the report is text the library
//                                // printed to standard output; see "lines"
//     "interfaces": [            // one object per interface reported, in order
//       { "if_name": "Ethernet1/1",
//         "mcast_from_xbar_total": 414364,          // values of the report itself
//         "tx_queues": [ {"tx_qos_group": 0, "sched_type": "wrr", "oper_bandwidth": 50}, ... ],
//         "rx_queues": [ {"rx_qos_group": 0, "q_size": 243200, ...}, ... ] } ],
//     "extenders": [ {"vaq": 101, "asic_count": 1,  // tables of a report that is
//                     "asics": [ {"asic": 0, ...,    // not about one interface
//                                 "ss": [ {"ss": 0, "no_credit_drops": 3} ]} ]} ],
//     "lines": [ "..." ],        // text lines outside the typed report (text-only reports)
//     "errors": [ {"interface": "Ethernet1/3", "extender": 102, "message": "..."} ]
//   }
//
// Every member name is the attribute's name in the library's catalogue
// (qdcli/attributes.h). A table is always an array of row objects, even
// with one row; each row holds its index column (qos-group, queue,
// glb_idx...). Tables nest where the catalogue says so (extender, ASIC, SS).
// A value printed once per element (the CoS values of a queue) is always an
// array. Numbers are JSON integers, 64-bit counters exact; a signed value of
// -1 ("does not apply") is left out; texts of a fixed vocabulary are trimmed
// and lower case ("wrr", "inactive", "yes"). "interfaces", "errors" and
// "lines" are always there (possibly empty); an error entry has "message"
// and, where it can be told, the "interface" or the "extender" it is about.
//
// The tree is built from what the handler hands to the shell's printer
// (attribute IDs and value bytes, PrinterFlush) and from what it writes to
// standard output, captured while it runs. Nothing here depends on how the
// platform operations are implemented.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "qdcli/attributes.h"

namespace qdsh {

class Shell;

using Document = nlohmann::ordered_json;

enum class Format { text, json, xml };

// One piece of what a command printed, in the order printed.
struct Segment {
    enum class Kind { standard_output, printer };
    Kind kind = Kind::standard_output;
    std::string text;
    struct Value {
        std::uint32_t attr = 0;
        std::vector<std::uint8_t> bytes;
    };
    std::vector<Value> values;  // printer flushes only
};

// The attribute lookup of the loaded library (qdcli_attr_find).
using AttributeLookup = const qdcli_attr_info *(*)(std::uint32_t);

// What running one command gave.
struct CommandOutcome {
    Document document;
    std::vector<Segment> segments;  // what it printed, for the text rendering
    bool ok = true;                 // false: refused or failed
    int exit_status() const { return ok ? 0 : 1; }
};

// Runs one command line on `shell`, capturing everything it prints, and
// builds its document. Errors qdsh reports itself still go to standard
// error and also become entries of the document. Safe to call with a
// command that runs further commands; not re-entrant across threads.
CommandOutcome run_command(Shell &shell, std::string_view line, AttributeLookup lookup);

// Builds the document of a command from what it printed. `shell_errors`
// are the errors qdsh itself reported; `handler_ok` whether the shell took
// the command as succeeded. `ok` is set to the command's verdict.
// `named_interface`: the interface the command line names, if one (a
// message naming none is about it). `walk`:
// for a command that reports every interface, their names in the order the
// walk visits them (a message that names no interface is about the next one
// of the walk after the last one reported); empty otherwise.
Document build_document(std::string_view command, const std::vector<Segment> &segments,
                        const std::vector<std::string> &shell_errors, bool handler_ok, AttributeLookup lookup,
                        bool &ok, const std::string &named_interface = {},
                        const std::vector<std::string> &walk = {});

// Whether a line of text is one of the library's failure or refusal
// messages ("Unsupported interface", "Cmd recv failed for vaq 102 ...",
// "Truncated queuing reply: ...", "Command not supported on this platform").
bool is_failure_message(std::string_view line);

// Text for XML element content or attribute values: & < > " escaped; the
// control characters XML 1.0 does not allow become '?'.
std::string xml_escape(const std::string &s);

std::string to_json(const Document &document, bool pretty);
// One <document> element (no XML declaration).
std::string to_xml(const Document &document, bool pretty);

}  // namespace qdsh
