// SPDX-License-Identifier: MIT
// The presenter: takes one typed line (filters, "| json", watch), runs it
// and writes what it gives in the format asked for: the text as it stands,
// one document per command, or metrics. Several JSON documents follow one
// another (one per line when compact: JSON Lines); with --output xml and
// commands from -c or a script, the documents are the children of one
// <qdsh> element.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/pipeline.hpp"
#include "exec/executor.hpp"
#include "render/document.hpp"
#include "render/metrics.hpp"

namespace qdsh {

class Presenter {
public:
    // What the operator's options add: metrics output, --nonzero, the clock
    // of watch.
    struct OperatorSettings {
        NameLookup names = nullptr;
        std::optional<Exposition> metrics;
        bool nonzero = false;
        bool simulated_clock = false;
        bool terminal = false;  // standard output is a terminal
    };

    Presenter(Executor &executor, AttributeLookup lookup, Format format, bool pretty, bool wrap_xml,
              const OperatorSettings &ops)
        : executor_(executor), lookup_(lookup), format_(format), pretty_(pretty), wrap_xml_(wrap_xml), ops_(ops) {}

    // Runs one line; false when it was refused or failed.
    bool run(const std::string &line);
    // "watch [--interval S] [--count N] [--nonzero] COMMAND" (the words after watch).
    bool watch(const std::vector<std::string> &words, Format format);
    // Ends the output: the metrics of a -c or script run, the <qdsh> element.
    void finish();

private:
    bool run_text(const std::string &line, const Pipeline &pipe);
    bool run_metrics(const std::string &line);
    bool stream_document(const std::string &line, Format format);
    void open_xml(std::FILE *out, Format format);
    bool refuse(const std::string &line, Format format, const std::string &message);
    void write_document(const Document &document, Format format);

    Executor &executor_;
    AttributeLookup lookup_;
    Format format_;
    bool pretty_;
    bool wrap_xml_;
    OperatorSettings ops_;
    bool xml_open_ = false;
    std::vector<Sample> pending_samples_;  // metrics of the commands so far
    bool metrics_pending_ = false;
};

}  // namespace qdsh
