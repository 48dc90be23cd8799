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

#include "document.hpp"
#include "qdcli/attributes.h"

namespace qdsh {

// The name lookup of the loaded library (qdcli_attr_find_name).
using NameLookup = const qdcli_attr_info *(*)(const char *);

using Labels = std::vector<std::pair<std::string, std::string>>;

// One counter or gauge value of a document.
struct Sample {
    const qdcli_attr_info *info = nullptr;  // its catalogue entry (counter or gauge)
    Labels labels;                          // interface, qos_group, queue, direction, extender...
    std::uint64_t value = 0;
    unsigned width_bits = 0;                // where it wraps: the catalogue's width, or the
                                            // row's NAME_bits where the value tells its field
    std::string row;                        // JSON pointer of the object that holds it
    std::string key() const;                // name and labels: the same series in every sample
};

// Every counter and gauge of `document`, in document order. A member is
// taken when the catalogue knows its name as a counter or a gauge and its
// value is a non-negative integer; the identifiers of the enclosing objects
// (not the labels of a state, which change) become its labels.
std::vector<Sample> collect_samples(const Document &document, NameLookup lookup);

// Leaves out of every table the rows whose counters are all zero (rows with
// no counter at all are kept): "--nonzero".
void drop_zero_rows(Document &document, NameLookup lookup);

// What a counter did between two readings of `width_bits` bits. A reading
// below the previous one is a wrap when counting on from the previous value
// through 2^width_bits reaches it in less than half the counter's range
// (64-bit counters never wrap in practice: for them, and for anything
// farther, it is a clear, and the delta starts again from zero: the reading
// itself).
struct Delta {
    std::uint64_t delta = 0;
    bool wrapped = false;
    bool restarted = false;
};
Delta counter_delta(std::uint64_t previous, std::uint64_t current, unsigned width_bits);

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
    std::map<std::string, std::uint64_t> previous_;
    double last_ = 0;
    double interval_ = 0;
    bool started_ = false;
};

// A metric family of the exposition that does not come from a document
// (the exporter's own): name, TYPE (counter or gauge), HELP and samples.
struct ExtraFamily {
    std::string name;  // without "_total"
    bool counter = false;
    std::string help;
    std::vector<std::pair<Labels, std::string>> samples;  // value as text
};

enum class Exposition {
    openmetrics,  // OpenMetrics 1.0: families named without "_total", ends with "# EOF"
    prometheus,   // Prometheus text 0.0.4: HELP and TYPE name the "_total" sample
};

// Families "qdcli_NAME" (samples "qdcli_NAME_total" for counters), HELP from
// the catalogue, one sample per label set (the first wins when two commands
// give the same series), then `extra`.
std::string write_exposition(const std::vector<Sample> &samples, const std::vector<ExtraFamily> &extra,
                             Exposition dialect);

// The metric families of a catalogue as a Markdown table (metric, type,
// unit, meaning), in catalogue order: the README's list of metric names.
std::string metric_names_table(const qdcli_attr_info *entries, std::size_t count);

// The label name an identifier of the catalogue gives (if_name -> interface,
// tx_qos_group -> qos_group with direction="tx", vaq -> extender, ...), and
// the extra label it implies (empty when none).
std::pair<std::string, std::pair<std::string, std::string>> label_for(const std::string &identifier);

}  // namespace qdsh
