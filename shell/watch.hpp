// SPDX-License-Identifier: MIT
// Watch mode: runs one command again and again and shows, for every
// counter, its value, its delta since the previous sample and its rate per
// second.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "document.hpp"
#include "metrics.hpp"

namespace qdsh {

class Shell;

struct WatchOptions {
    double interval = 2;     // seconds between samples
    long count = 0;          // samples to take; 0: until interrupted
    bool nonzero = false;    // leave out rows whose counters are all zero
    std::string command;     // the command line watched
};

// Parses "[--interval S | -n S] [--count N] [--nonzero] COMMAND..." (the
// words after "watch"); the command is the remaining words joined by
// spaces, or the value of a last "-c COMMAND". False with `error` set when
// they are wrong.
bool parse_watch_arguments(const std::vector<std::string> &words, WatchOptions &options, std::string &error);

// The number of seconds `text` is when it is a number from `low` to `high`.
std::optional<double> seconds_in(const std::string &text, double low, double high);

// What "watch ?" prints.
extern const char kWatchUsage[];

// Splits a command line into words at blanks; "..." groups words.
std::vector<std::string> split_words(const std::string &line);

// Where watch gets its time from. The real clock sleeps between samples
// (the simulated switch then counts in real time); the simulated clock
// moves the simulator's clock by the interval instead, so that a run is
// instant and repeatable.
class WatchClock {
public:
    virtual ~WatchClock() = default;
    virtual void start() = 0;
    virtual double now() = 0;  // seconds since an origin of the clock's own
    // Waits `seconds`; false when interrupted (Ctrl-C).
    virtual bool wait(double seconds) = 0;
    virtual std::string timestamp() = 0;  // RFC 3339, UTC, of the moment now() last read
    virtual void stop() = 0;
};
std::unique_ptr<WatchClock> real_clock();
std::unique_ptr<WatchClock> simulated_clock();

struct WatchOutput {
    Format format = Format::text;
    bool pretty = false;
    bool terminal = false;  // text on a terminal: refresh in place, highlight changes
    bool xml_wrap = true;   // XML: the samples in a <qdsh> element of the watch's own
};

// Runs the watch. Returns false when a sample's command failed (the watch
// goes on; the status tells).
bool run_watch(Shell &shell, AttributeLookup attrs, NameLookup names, const WatchOptions &options,
               const WatchOutput &output, WatchClock &clock);

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
