// SPDX-License-Identifier: MIT
#include "presenter.hpp"

#include <cstdio>
#include <memory>

#include "exec/command.hpp"
#include "operator/watch.hpp"
#include "term/output_line.hpp"
#include "term/signals.hpp"

namespace qdsh {

namespace {

constexpr char kXmlDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

void write(const std::string &out) {
    std::fwrite(out.data(), 1, out.size(), stdout);
    end_output_line();
}

}  // namespace

bool Presenter::run(const std::string &input) {
    const std::size_t first = input.find_first_not_of(" \t");
    if (first == std::string::npos || input[first] == '#') return true;
    const Pipeline pipe = split_pipeline(input);
    const Format format = pipe.format(format_);
    // Metrics replace the text; a "| json" or "| xml" asks for a document instead.
    const bool metrics = ops_.metrics.has_value() && format == format_;
    if (!pipe.ok()) return refuse(input, format, pipe.error);
    if (pipe.help) {
        std::fputs(filter_help().c_str(), stdout);
        std::fflush(stdout);
        return true;
    }
    const std::string line = pipe.segments.empty() ? input : pipe.command;
    const bool structured = format != Format::text || metrics;
    // A filter selects lines of text: a document or an exposition has none to select.
    if (structured && pipe.has_text_filters())
        return refuse(line, format,
                      "| include, | exclude, | begin and | count select lines of text: they do not combine with "
                      "json, xml or metrics output");
    if (const std::vector<std::string> words = split_words(line); !words.empty() && words[0] == "watch") {
        if (pipe.has_text_filters()) {
            report_error("watch: its output cannot go through filters; watch --nonzero leaves out the rows whose counters are all zero");
            return false;
        }
        // "watch ?", "watch -n 5 show ?": the options, or what may follow in the command.
        if (const std::size_t last = line.find_last_not_of(" \t"); line[last] == '?')
            return executor_.show_help(std::string_view(line).substr(0, last));
        return watch(std::vector<std::string>(words.begin() + 1, words.end()), format);
    }
    if (structured && lookup_ == nullptr) {
        report_error("the handler library has no attribute catalogue (qdcli_attr_find): no structured output");
        return false;
    }
    if (!structured) return run_text(line, pipe);
    return metrics ? run_metrics(line) : stream_document(line, format);
}

// Text goes out as the handlers print it; through filters, once the command
// has ended.
bool Presenter::run_text(const std::string &line, const Pipeline &pipe) {
    const bool filtered = pipe.has_text_filters();
    RunOptions options;
    options.document = false;
    options.capture_text = filtered;
    const CommandOutcome outcome = run_command(executor_, line, lookup_, options);
    if (filtered) {
        const std::string out = apply_filters(outcome.text, pipe.segments, stop_requested);
        std::fwrite(out.data(), 1, out.size(), stdout);
    }
    // The library's messages carry no newline of their own (a switch's
    // prompt follows them): the next output starts on a line of its own.
    end_output_line();
    return outcome.ok;
}

bool Presenter::run_metrics(const std::string &line) {
    const CommandOutcome outcome = run_command(executor_, line, lookup_);
    if (executor_.exit_requested() && outcome.ok) return true;  // "exit" has no document
    Document document = outcome.document;
    if (ops_.nonzero) drop_zero_rows(document, ops_.names);
    std::vector<Sample> samples = collect_samples(document, ops_.names);
    for (const std::string &series : repeated_series(samples))
        report_error("metrics: the series " + series + " repeats within \"" + line + "\" (only its first value is kept)");
    // From -c or a script, the metrics of every command make one exposition,
    // written when the run ends; at the prompt each command gets its own.
    if (wrap_xml_) {
        pending_samples_.insert(pending_samples_.end(), samples.begin(), samples.end());
        metrics_pending_ = true;
    } else {
        write(write_exposition(samples, {}, *ops_.metrics));
    }
    return outcome.ok;
}

// Runs a command with its document written as it is built: each interface
// as soon as the handlers are done with it.
bool Presenter::stream_document(const std::string &line, Format format) {
    bool started = false;
    DocumentStream stream(format, pretty_, [&](const std::string &text) {
        // Written while the command's own output is captured.
        if (!started) open_xml(command_output(), format);
        started = true;
        std::fwrite(text.data(), 1, text.size(), command_output());
    });
    stream.begin(line);
    RunOptions options;
    options.interface_done = [&](Document &object) {
        if (ops_.nonzero) drop_zero_rows(object, ops_.names);
        stream.interface(object);
    };
    CommandOutcome outcome = run_command(executor_, line, lookup_, options);
    if (executor_.exit_requested() && outcome.ok) return true;  // "exit" has no document
    if (ops_.nonzero) drop_zero_rows(outcome.document, ops_.names);
    stream.finish(outcome.document);
    end_output_line();
    return outcome.ok;
}

// What comes before an XML document: the declaration, and the <qdsh> root
// that holds the documents of a -c or script run.
void Presenter::open_xml(std::FILE *out, Format format) {
    if (format != Format::xml) return;
    if (!wrap_xml_ || format_ != Format::xml) {
        std::fputs(kXmlDeclaration, out);
    } else if (!xml_open_) {
        std::fprintf(out, "%s<qdsh>\n", kXmlDeclaration);
        xml_open_ = true;
    }
}

bool Presenter::watch(const std::vector<std::string> &words, Format format) {
    WatchOptions options;
    options.nonzero = ops_.nonzero;
    std::string error;
    if (!cli::parse_watch_arguments(words, options, error)) {
        report_error(error);
        return false;
    }
    WatchOutput output{format, pretty_, ops_.terminal && format == Format::text};
    // Inside the <qdsh> element of a -c or script run, the samples are more
    // of its children.
    if (format == Format::xml && wrap_xml_ && format_ == Format::xml) {
        open_xml(stdout, format);
        output.xml_wrap = false;
    }
    const std::unique_ptr<WatchClock> clock = ops_.simulated_clock ? simulated_clock() : real_clock();
    return run_watch(executor_, lookup_, ops_.names, options, output, *clock);
}

// A line refused before it ran: the error, and in structured output a
// failed document that says why.
bool Presenter::refuse(const std::string &line, Format format, const std::string &message) {
    report_error(message);
    if (format == Format::text) return false;
    DocumentBuilder builder(line, lookup_);
    builder.failure({"refused", std::nullopt, message, false});
    write_document(builder.finish("", false), format);
    return false;
}

void Presenter::write_document(const Document &document, Format format) {
    open_xml(command_output(), format);
    std::string out = format == Format::json ? to_json(document, pretty_) : to_xml(document, pretty_);
    if (format == Format::xml && !pretty_) out += "\n";
    write(out);
}

void Presenter::finish() {
    if (metrics_pending_) {
        std::fputs(write_exposition(pending_samples_, {}, *ops_.metrics).c_str(), stdout);
        std::fflush(stdout);
    }
    // With no command run, the <qdsh> element is empty.
    if (!wrap_xml_ || format_ != Format::xml) return;
    std::fputs(xml_open_ ? "</qdsh>\n" : "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<qdsh/>\n", stdout);
    std::fflush(stdout);
}

}  // namespace qdsh
