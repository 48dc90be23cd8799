// SPDX-License-Identifier: MIT
// Counters of a command's document, as an operator watches them: every
// value the catalogue calls a counter or a gauge, with the identifiers of
// the rows around it as labels; deltas and rates between two samples; and
// the Prometheus / OpenMetrics text exposition.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "render/counters.hpp"
#include "render/document.hpp"
#include "qdcli/attributes.h"

namespace qdsh {

// The name lookup of the loaded library (qdcli_attr_find_name).
using NameLookup = const qdcli_attr_info *(*)(const char *);

using Labels = std::vector<std::pair<std::string, std::string>>;

// One sample of a document: a counter, a gauge, or the _info series of a
// row's configuration.
struct Sample {
    const qdcli_attr_info *info = nullptr;  // its catalogue entry (for _info: the row's first configuration value)
    Labels labels;                          // identity (interface, qos_group, queue, extender...), constants, configuration
    std::uint64_t value = 0;                // raw; 1 for _info
    unsigned width_bits = 0;                // where it wraps: the catalogue's, or the row's "NAME_bits"
    std::string row;                        // JSON pointer of the object that holds it
    std::string family() const;             // "qdcli_" and the catalogue's metric name
    std::string key() const;                // family and labels: the same series in every sample
    bool is_counter() const { return info != nullptr && info->metric_type == QDCLI_METRIC_COUNTER; }
};

// Every sample of `document`, in document order, as the catalogue's metric
// columns say: a member whose metric type is counter or gauge and whose
// value is a non-negative integer is a sample, labelled with the identity
// labels of the objects around it and its own constant labels; the
// configuration values of an object (metric type info) make one _info
// sample of that object per family.
std::vector<Sample> collect_samples(const Document &document, NameLookup lookup);

// The series (Sample::key) that more than one sample of `samples` gives, each
// once: within one command's samples, a row the labels fail to tell apart.
std::vector<std::string> repeated_series(const std::vector<Sample> &samples);

// Replaces the value of every counter by the monotonic count `state` keeps
// for its series across wraps, and ends the round of readings.
void carry_counters(std::vector<Sample> &samples, CounterState &state);

// How one command of a collection went, from its document: the errors by
// kind (an error with no kind is "unknown"; a failed command with none
// counts once as "failed"), and the subjects it does not support here (not
// errors).
struct CommandHealth {
    bool ok = true;
    std::map<std::string, long> errors;  // kind -> count
    long unsupported = 0;
};
CommandHealth command_health(const Document &document, bool outcome_ok);

// Leaves out of every table the rows whose counters are all zero (rows with
// no counter at all are kept): "--nonzero".
void drop_zero_rows(Document &document, NameLookup lookup);

// Deltas and rates of the counters of successive samples of one command.
class DeltaTracker {
public:
    struct Reading {
        bool known = false;  // false in the first sample, and for a new series
        Delta delta;
        double rate = 0;     // per second
    };
    // Readings for `samples` taken at `seconds` (any monotonic origin), in
    // the same order. Only counters get deltas; a gauge's reading is never
    // known.
    std::vector<Reading> update(const std::vector<Sample> &samples, double seconds);
    // Seconds between the last two updates (0 before the second).
    double interval() const { return interval_; }

private:
    CounterState state_;
    double last_ = 0;
    double interval_ = 0;
    bool started_ = false;
};

// A metric family of the exposition that does not come from a document
// (the exporter's own): name, TYPE (counter or gauge), HELP and samples.
struct ExtraFamily {
    std::string name;  // without "_total" (and with the unit as its last word)
    bool counter = false;
    std::string help;
    std::vector<std::pair<Labels, std::string>> samples;  // value as text
};

enum class Exposition {
    openmetrics,  // OpenMetrics 1.0: families named without "_total", ends with "# EOF"
    prometheus,   // Prometheus text 0.0.4: HELP and TYPE name the "_total" sample
};

// Families "qdcli_METRIC" (samples "qdcli_METRIC_total" for counters,
// "qdcli_METRIC_info" for configuration), HELP, and in OpenMetrics UNIT,
// from the catalogue; one sample per label set (the first wins when two
// commands give the same series), then `extra`.
std::string write_exposition(const std::vector<Sample> &samples, const std::vector<ExtraFamily> &extra,
                             Exposition dialect);

// The metrics reference: every family of a catalogue as a Markdown table
// (metric, type, unit, labels, meaning), in catalogue order. The labels are
// those of the rows its table sits in, its constants and, for _info, its
// configuration; a value of an interface's report has `interface` as well.
std::string metric_names_table(const qdcli_attr_info *entries, std::size_t count);

// One text screen of a sample: a header line and one row per counter.
std::string render_watch_text(const std::string &header, const std::vector<Sample> &samples,
                              const std::vector<DeltaTracker::Reading> &readings, bool highlight);

// The sample's document: `document` with "timestamp", "interval" and
// "sample" in front, and beside the counters of each row a "deltas" and a
// "rates" object (and "restarted" listing the counters that were cleared).
Document watch_document(const Document &document, const std::vector<Sample> &samples,
                        const std::vector<DeltaTracker::Reading> &readings, const std::string &timestamp,
                        double interval, long sample);

}  // namespace qdsh
