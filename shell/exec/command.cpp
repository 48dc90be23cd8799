// SPDX-License-Identifier: MIT
#include "exec/command.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "qdsim/sim.h"

namespace qdsh {
namespace {

// Takes what the process writes with stdio while a command runs: standard
// output becomes a stream in memory, and the stream the command's output
// would have gone to stays at hand for what qdsh writes meanwhile.
class Capture {
public:
    Capture() {
        std::fflush(stdout);
        FILE *memory = open_memstream(&buffer_, &size_);
        if (memory == nullptr) return;
        g_output = saved_ = stdout;
        stdout = memory;
    }
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;
    ~Capture() { finish(); }

    std::string finish() {
        std::string text;
        if (saved_ != nullptr) {
            FILE *memory = stdout;
            stdout = saved_;
            g_output = nullptr;
            saved_ = nullptr;
            std::fclose(memory);
            if (buffer_ != nullptr) text.assign(buffer_, size_);
        }
        std::free(buffer_);
        buffer_ = nullptr;
        return text;
    }

    static FILE *output() { return g_output != nullptr ? g_output : stdout; }

private:
    static inline FILE *g_output = nullptr;
    FILE *saved_ = nullptr;
    char *buffer_ = nullptr;
    std::size_t size_ = 0;
};

const char *kind_name(qdcli_failure_kind kind) {
    switch (kind) {
    case QDCLI_FAILURE_UNSUPPORTED: return "unsupported";
    case QDCLI_FAILURE_NOT_SUPPORTED: return "not_supported";
    case QDCLI_FAILURE_NOT_ALLOWED: return "not_allowed";
    case QDCLI_FAILURE_INVALID: return "invalid";
    case QDCLI_FAILURE_SEND: return "send";
    case QDCLI_FAILURE_RECEIVE: return "receive";
    case QDCLI_FAILURE_EMPTY: return "empty";
    case QDCLI_FAILURE_TRUNCATED: return "truncated";
    case QDCLI_FAILURE_DAMAGED: return "damaged";
    case QDCLI_FAILURE_PLATFORM: return "platform";
    case QDCLI_FAILURE_MEMORY: return "memory";
    case QDCLI_FAILURE_INTERNAL: return "internal";
    }
    return "failed";
}

// What qdsh says of a refusal the library told without printing it.
const char *unprinted_message(qdcli_failure_kind kind) {
    return kind == QDCLI_FAILURE_UNSUPPORTED ? "interface not supported by the queuing daemon" : kind_name(kind);
}

// The command being run: where its events go.
struct Running {
    std::string command;                 // the line, for a failure about no subject
    bool report = true;                  // failures to standard error
    DocumentBuilder *builder = nullptr;  // null: no document
    Executed executed;
    std::vector<SubjectKeys> subjects;  // the open subjects, innermost last
    bool failed = false;                // a failure (not an unsupported entry) was told
};
Running *g_running = nullptr;
int g_depth = 0;

SubjectKeys keys_of(const qdcli_subject &s) {
    SubjectKeys k;
    k.kind = s.kind;
    if (s.fields & QDCLI_SUBJECT_HAS_IF_INDEX) k.if_index = s.if_index;
    if ((s.fields & QDCLI_SUBJECT_HAS_IF_NAME) && s.if_name != nullptr) k.if_name = s.if_name;
    if (s.fields & QDCLI_SUBJECT_HAS_VAQ) k.vaq = s.vaq;
    if (s.fields & QDCLI_SUBJECT_HAS_ASIC) k.asic = s.asic;
    // A refusal before the report named the interface: its name from the switch.
    if (k.kind == QDCLI_SUBJECT_INTERFACE && k.if_name.empty() && k.if_index) {
        char name[32] = "";
        snprintf_if_index(name, sizeof name, *k.if_index);
        name[sizeof name - 1] = '\0';
        k.if_name = name;
    }
    return k;
}

// Whether a refusal of `kind` about `subject` is an unsupported entry: "not
// supported here", about a subject the command did not name.
bool is_unsupported_entry(qdcli_failure_kind kind, const std::optional<SubjectKeys> &subject) {
    if (kind != QDCLI_FAILURE_UNSUPPORTED && kind != QDCLI_FAILURE_NOT_SUPPORTED) return false;
    if (!subject) return false;
    if (subject->kind != QDCLI_SUBJECT_INTERFACE) return true;  // the commands over extenders name none
    const std::vector<ResolvedInterface> &named = g_running->executed.interfaces;
    return !subject->if_index || std::none_of(named.begin(), named.end(), [&](const ResolvedInterface &i) {
               return i.if_index == *subject->if_index;
           });
}

void tell(Failure f) {
    std::string label = f.subject ? f.subject->label() : std::string();
    if (label.empty()) label = g_running->command;
    if (g_running->report) write_error(label + ": " + f.message + (f.unsupported ? " (left out)" : ""));
    if (!f.unsupported) {
        g_running->failed = true;
        ++g_running->executed.failures_told;
    }
    if (g_running->builder != nullptr) g_running->builder->failure(f);
}

void on_subject_begin(void *, const qdcli_subject *s) {
    if (g_running == nullptr || s == nullptr) return;
    g_running->subjects.push_back(keys_of(*s));
    if (g_running->builder != nullptr) g_running->builder->subject_begin(g_running->subjects.back());
}

void on_subject_end(void *, const qdcli_subject *) {
    if (g_running == nullptr || g_running->subjects.empty()) return;
    g_running->subjects.pop_back();
    if (g_running->builder != nullptr) g_running->builder->subject_end();
}

void on_row_begin(void *, const char *table) {
    if (g_running != nullptr && g_running->builder != nullptr) g_running->builder->row_begin(table);
}

void on_row_end(void *, const char *) {
    if (g_running != nullptr && g_running->builder != nullptr) g_running->builder->row_end();
}

void on_value(void *, std::uint32_t attr, const void *value, std::uint32_t length) {
    if (g_running == nullptr || g_running->builder == nullptr || (value == nullptr && length != 0)) return;
    g_running->builder->value(attr, static_cast<const std::uint8_t *>(value), length);
}

void on_failure(void *, const qdcli_failure *f) {
    if (g_running == nullptr || f == nullptr) return;
    Failure out;
    out.kind = kind_name(f->kind);
    if (f->subject != nullptr)
        out.subject = keys_of(*f->subject);
    else if (!g_running->subjects.empty())
        out.subject = g_running->subjects.back();
    out.message = f->message != nullptr ? trim(f->message) : unprinted_message(f->kind);
    if (out.message.empty()) out.message = unprinted_message(f->kind);
    out.unsupported = is_unsupported_entry(f->kind, out.subject);
    tell(std::move(out));
}

const qdcli_observer kObserver = {QDCLI_OBSERVER_VERSION, sizeof(qdcli_observer), nullptr, on_subject_begin,
                                  on_subject_end,         on_row_begin,             on_row_end, on_value,
                                  on_failure};

// Installs `running` for the length of one command, with qdsh's own errors
// told as refusals.
class Observing {
public:
    explicit Observing(Running &running) {
        g_running = &running;
        qdsim::set_observer(&kObserver);
        // The shell's own refusals make the command fail by its result.
        set_error_listener([](const std::string &message) {
            if (g_running == nullptr) return;
            if (g_running->builder != nullptr)
                g_running->builder->failure({"refused", std::nullopt, message, false});
        });
    }
    ~Observing() {
        set_error_listener(nullptr);
        qdsim::set_observer(nullptr);
        g_running = nullptr;
    }
    Observing(const Observing &) = delete;
    Observing &operator=(const Observing &) = delete;
};

}  // namespace

std::FILE *command_output() { return Capture::output(); }

CommandOutcome run_command(Executor &executor, std::string_view line, AttributeLookup lookup, RunOptions options) {
    CommandOutcome outcome;
    if (g_depth > 0) {
        // A command run by a handler: its output and events belong to the outer one.
        outcome.ok = executor.run(line);
        return outcome;
    }
    ++g_depth;
    std::unique_ptr<DocumentBuilder> builder;
    if (options.document) builder = std::make_unique<DocumentBuilder>(line, lookup);
    if (builder && options.interface_done) builder->stream_interfaces(options.interface_done);
    Running running;
    running.command = trim(line);
    running.report = options.report;
    running.builder = builder.get();
    bool handler_ok = true;
    std::string printed;
    {
        Observing observing(running);
        // With a document, the printer's text is not wanted: its values come
        // as events. Standard output is kept for the lines of text reports.
        if (options.document) qdsim::set_flush_sink([](const qdsim::PrinterFlush &) {});
        std::optional<Capture> capture;
        if (options.document || options.capture_text) capture.emplace();
        handler_ok = executor.run(line, running.executed);
        if (capture) printed = capture->finish();
        if (options.document) qdsim::set_flush_sink(nullptr);
    }
    --g_depth;
    outcome.ok = handler_ok && !running.failed;
    if (builder) outcome.document = builder->finish(printed, outcome.ok);
    if (options.capture_text) outcome.text = std::move(printed);
    return outcome;
}

}  // namespace qdsh
