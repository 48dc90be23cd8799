// SPDX-License-Identifier: MIT
// Structured output: one document per command, built from the library's
// typed events (qdcli/observer.h) while the command runs, and serialised as
// JSON or XML.
//
// A command's document (nlohmann::ordered_json, members in this order):
//
//   {
//     "command": "show queuing interface ethernet1/1",
//     "interfaces": [            // one object per interface the handlers worked on, in order
//       { "if_name": "Ethernet1/1",
//         "mcast_from_xbar_total": 414364,          // values of the interface itself
//         "tx_queues": [ {"tx_qos_group": 0, "sched_type": "wrr", "oper_bandwidth": 50}, ... ],
//         "rx_queues": [ {"rx_qos_group": 0, "q_size": 243200, ...}, ... ] } ],
//     "extenders": [ {"vaq": 101, "asic_count": 2,  // present when the command worked on extenders
//                     "asics": [ {"asic": 0, ..., "ss": [ {"ss": 0, "no_credit_drops": 3} ]} ]} ],
//     "mcast_queues": [ ... ],   // tables and values about no interface or extender
//     "lines": [ "..." ],        // text the command printed outside typed values
//     "unsupported": [ {"kind": "unsupported", "if_name": "Ethernet2/24", "message": "..."} ],
//     "errors": [ {"kind": "receive", "vaq": 102, "message": "..."} ],
//     "status": "ok" | "failed",
//     "text_only": false         // true: the report is text the daemon or the
//                                // library printed without typed values; see "lines"
//   }
//
// The verdict comes last: a document is written while its command runs,
// interface by interface (DocumentStream), and only its end knows it.
//
// Every member name of a value is the attribute's name in the library's
// catalogue (qdcli/attributes.h); every table is an array of row objects,
// exactly as the library told its rows, each row holding its index column.
// A value told once per element (the CoS values of a queue) is an array.
// Numbers are JSON integers, 64-bit counters exact; a signed value of -1
// ("does not apply") is left out; texts of a fixed vocabulary are trimmed and
// lower case ("wrr", "inactive", "yes").
//
// "unsupported" lists the subjects that a command over many subjects met and
// that are not supported there (an interface the daemon does not support in
// the walk over every interface, an ASIC without the counters): they do not
// make the command fail. "errors" lists every failure; "status" is "failed"
// exactly when it is not empty. An entry has "kind" (unsupported,
// not_supported, not_allowed, invalid, send, receive, empty, truncated,
// damaged, platform, memory, internal, or refused for qdsh's own refusals),
// the subject's keys where it has one (if_name, vaq, asic) and "message".
#pragma once

#include <cstdint>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/options.hpp"
#include "qdcli/attributes.h"
#include "qdcli/observer.h"

namespace qdsh {

using Document = nlohmann::ordered_json;

// The attribute lookup of the loaded library (qdcli_attr_find).
using AttributeLookup = const qdcli_attr_info *(*)(std::uint32_t);

// A subject as qdsh names it: the keys of the library's subject, the
// interface's name resolved where the library gave only its index.
struct SubjectKeys {
    qdcli_subject_kind kind = QDCLI_SUBJECT_INTERFACE;
    std::optional<std::uint32_t> if_index;
    std::string if_name;
    std::optional<std::uint32_t> vaq;
    std::optional<std::uint32_t> asic;

    // "Ethernet1/3", "vaq 101", "vaq 101 asic 1"; empty for none.
    std::string label() const;
};

// One failure or refusal of a command.
struct Failure {
    std::string kind;                   // see above
    std::optional<SubjectKeys> subject;  // none: about the command as a whole
    std::string message;                // as printed, trimmed; qdsh's words when nothing was printed
    bool unsupported = false;           // an "unsupported" entry, not a failure
};

// Builds one command's document from its events.
class DocumentBuilder {
public:
    DocumentBuilder(std::string_view command, AttributeLookup lookup);
    DocumentBuilder(const DocumentBuilder &) = delete;
    DocumentBuilder &operator=(const DocumentBuilder &) = delete;

    // Hands every interface's object, once the handlers are done with it, to
    // `done` instead of keeping it for the document.
    void stream_interfaces(std::function<void(Document &)> done) { interface_done_ = std::move(done); }

    void subject_begin(const SubjectKeys &subject);
    void subject_end();
    void row_begin(const char *table);
    void row_end();
    void value(std::uint32_t attr, const std::uint8_t *bytes, std::uint32_t length);
    void failure(const Failure &failure);

    // The document, with what the command printed outside typed values
    // (standard output while it ran) and its verdict.
    Document finish(std::string_view printed, bool ok);

private:
    Document &container();  // where values and rows go now
    Document &subject_object(const SubjectKeys &subject);

    struct OpenSubject {
        Document *object;
        std::vector<Document *> outer_rows;  // the rows open when it began
        bool interface;
    };

    AttributeLookup lookup_;
    Document root_;
    // Subjects, each kept whole until the document is finished (a deque:
    // an open subject stays where it is while another one is added).
    std::deque<Document> interfaces_;
    std::deque<Document> extenders_;
    std::map<std::string, std::size_t> interface_index_;  // by name
    std::map<std::string, std::size_t> extender_index_;   // by number
    std::vector<OpenSubject> subjects_;  // the open subjects, innermost last
    std::vector<Document *> rows_;      // the open rows, innermost last
    Document unsupported_ = Document::array();
    Document errors_ = Document::array();
    std::vector<std::string> told_messages_;  // failure texts, left out of "lines"
    bool typed_ = false;
    std::function<void(Document &)> interface_done_;
};

// Writes one document as it is built: its command, then each interface as
// it is done, then the rest. The text is what to_json or to_xml would write
// for the whole document.
class DocumentStream {
public:
    DocumentStream(Format format, bool pretty, std::function<void(const std::string &)> write)
        : format_(format), pretty_(pretty), write_(std::move(write)) {}
    void begin(std::string_view command);  // nothing is written before the first interface or finish
    void interface(const Document &object);
    void finish(const Document &document);  // everything but the interfaces already written

private:
    Format format_;
    bool pretty_;
    std::function<void(const std::string &)> write_;
    void write_start();

    std::size_t interfaces_ = 0;
    std::string command_;
    bool begun_ = false;
};

// Text for XML element content or attribute values: & < > " escaped; the
// control characters XML 1.0 does not allow become '?'.
std::string xml_escape(const std::string &s);

std::string to_json(const Document &document, bool pretty);
// One <document> element (no XML declaration).
std::string to_xml(const Document &document, bool pretty);

}  // namespace qdsh
